// Namespaces of a built tree: which prefix is bound to what at an element,
// declaring a fresh prefix where a stamp needs one, and the stamps
// themselves (the cursor's namespace, xsi:type labels, secondary IDs) with
// getTypeName reading them back.
#include "HNKMessageInternals.h"

#include "HNKDefaultMap.h"

using namespace hnk_message_detail;

namespace hnk_message_detail {

// ---- Namespace bindings seen from an element of a built tree ----

// URI bound to `prefix` (length `len`; 0 = default namespace) at element
// `el`, nearest declaration first; nullptr when unbound. The default
// namespace reads "" when undeclared.
const char* lookupPrefix(xml_node el, const char* prefix, size_t len)
{
    if (len == 3 && std::strncmp(prefix, "xml", 3) == 0)
        return kXmlURI;
    for (xml_node n = el; n && n.type() == pugi::node_element; n = n.parent()) {
        for (xml_attribute a = n.first_attribute(); a; a = a.next_attribute()) {
            const char* name = a.name();
            if (!isXmlnsName(name))
                continue;
            if (len == 0 ? name[5] == '\0'
                         : (name[5] == ':' && std::strncmp(name + 6, prefix, len) == 0 && name[6 + len] == '\0'))
                return a.value();
        }
    }
    return len == 0 ? "" : nullptr;
}

// A prefix bound to `uri` in scope at `el` and not shadowed; nullptr if none.
const char* findPrefixFor(xml_node el, const char* uri)
{
    for (xml_node n = el; n && n.type() == pugi::node_element; n = n.parent()) {
        for (xml_attribute a = n.first_attribute(); a; a = a.next_attribute()) {
            const char* name = a.name();
            if (std::strncmp(name, "xmlns:", 6) != 0 || std::strcmp(a.value(), uri) != 0)
                continue;
            const char* p = name + 6;
            const char* seen = lookupPrefix(el, p, std::strlen(p));
            if (seen && std::strcmp(seen, uri) == 0)
                return p;
        }
    }
    return nullptr;
}

// Declares a fresh prefix for `uri` in scope at `el`: `base`, else base1,
// base2, ... the first not bound in scope. The declaration goes on the
// outermost element, so one declaration serves every later stamp in the
// document (a list of devices declares the types namespace once, not once per
// device). That changes no existing name: the prefix is bound nowhere from
// `el` up to the root, and any use of it elsewhere sits under a declaration
// of its own, which shadows this one.
std::string declarePrefix(xml_node el, const std::string& base, const char* uri)
{
    std::string candidate = base;
    for (unsigned n = 1; lookupPrefix(el, candidate.data(), candidate.size()); ++n)
        candidate = base + std::to_string(n);
    xml_node outermost = el;
    while (outermost.parent().type() == pugi::node_element)
        outermost = outermost.parent();
    outermost.append_attribute(("xmlns:" + candidate).c_str()).set_value(uri);
    return candidate;
}

// Readable prefix for a namespace URI: its last path segment when that is a
// plain name ("hnrtypes"), else "ns".
std::string prefixBaseFor(const char* uri)
{
    std::string_view v(uri);
    while (!v.empty() && v.back() == '/')
        v.remove_suffix(1);
    size_t slash = v.find_last_of("/:#");
    std::string seg(slash == std::string_view::npos ? v : v.substr(slash + 1));
    if (seg.empty() || seg.size() > 32 || !isValidTag(seg.c_str()) || seg.find('.') != std::string::npos ||
        (seg.size() >= 3 && (seg[0] == 'x' || seg[0] == 'X') && (seg[1] == 'm' || seg[1] == 'M') &&
         (seg[2] == 'l' || seg[2] == 'L')))
        return "ns";
    return seg;
}

// The xsi:type attribute of `el` (any prefix bound to the XSI URI).
xml_attribute findXsiType(xml_node el)
{
    for (xml_attribute a = el.first_attribute(); a; a = a.next_attribute()) {
        const char* name = a.name();
        const char* colon = typeColon(name);
        if (!colon)
            continue;
        const char* uri = lookupPrefix(el, name, static_cast<size_t>(colon - name));
        if (uri && std::strcmp(uri, kXsiURI) == 0)
            return a;
    }
    return xml_attribute();
}

} // namespace hnk_message_detail

// ---- Namespace and type stamps ----

void HNKMessageIterator::setNamespace(unsigned nsid)
{
    if (nsid == 0)
        namespace_.clear(); // (what ID 0 names; every writer's exit sets it)
    else
        namespace_.assign(HNKDefaultMap::findNSID(nsid));
}

void HNKMessageIterator::setNamespace(const char* ns)
{
    const char* own = namespace_.data();
    const std::less_equal<const char*> atOrBefore;
    if (ns && atOrBefore(own, ns) && atOrBefore(ns, own + namespace_.size())) {
        namespace_.assign(ns); // a piece of itself: assign copies with care
        return;
    }
    namespace_.clear();
    if (ns)
        namespace_.append(ns); // a plain copy
}

void HNKMessageIterator::setType(unsigned nsid, unsigned typeId)
{
    const char* type = HNKDefaultMap::findTypeID(typeId);
    if (!*type)
        return;
    setType(type, nsid ? HNKDefaultMap::findNSID(nsid) : nullptr);
}

void HNKMessageIterator::setType(const char* type, const char* ns)
{
    if (!node_ || !type || !isValidTag(type))
        return;
    changing();
    const char* uri = (ns && *ns) ? ns : namespace_.c_str();
    if (draft_) {
        Draft::Level& level = draft_->top();
        if (level.stamped)
            return; // the outermost writer stamped first; its label stays
        if (*uri && level.startOpen) {
            // A written element declares nothing: its scope is its host's.
            Caches* c = &scopeCache(node_);
            if (c->stampAttribute.empty() || c->stampUri != uri) {
                xml_node host = nodeOf(node_);
                const char* prefix = findPrefixFor(host, uri);
                std::string p = prefix ? std::string(prefix) : declarePrefix(host, prefixBaseFor(uri), uri);
                const char* xsi = findPrefixFor(host, kXsiURI);
                std::string a = xsi ? std::string(xsi) : declarePrefix(host, "xsi", kXsiURI);
                if (!prefix || !xsi)
                    ++doc_->tree->scopeGen;
                Caches& fresh = scopeCache(node_);
                fresh.stampUri.assign(uri);
                fresh.stampPrefix.swap(p);
                fresh.stampAttribute.swap(a.append(":type"));
                c = &fresh;
            }
            draft_->stamp(c->stampAttribute, c->stampPrefix, type, std::strlen(type));
            level.stamped = true;
            return;
        }
        real();
    }
    xml_node el = nodeOf(node_);
    // An element without attributes sees the bindings of its parent: the
    // prefixes found for a sibling's stamp hold while no declaration changes.
    xml_node parent = el.parent();
    const bool cacheable = *uri && !el.first_attribute() && parent.type() == pugi::node_element;
    if (cacheable) {
        Caches& c = scopeCache(parent.internal_object());
        if (!c.stampAttribute.empty() && c.stampUri == uri) {
            c.scratch.assign(c.stampPrefix).append(1, ':').append(type);
            el.append_attribute(c.stampAttribute.c_str()).set_value(c.scratch.c_str());
            return;
        }
    }
    if (findXsiType(el))
        return; // the outermost writer stamped first; its label stays
    std::string value;
    std::string prefix;
    if (*uri) {
        const char* found = findPrefixFor(el, uri);
        if (!found)
            ++doc_->tree->scopeGen;
        prefix = found ? std::string(found) : declarePrefix(el, prefixBaseFor(uri), uri);
        value = prefix;
        value += ':';
    } else if (*lookupPrefix(el, "", 0)) {
        // An unprefixed type would take the default namespace in scope.
        if (el.attribute("xmlns"))
            return;
        ++doc_->tree->scopeGen;
        el.append_attribute("xmlns").set_value("");
    }
    value += type;
    const char* xsi = findPrefixFor(el, kXsiURI);
    if (!xsi)
        ++doc_->tree->scopeGen;
    std::string xsiAttribute = xsi ? std::string(xsi) : declarePrefix(el, "xsi", kXsiURI);
    xsiAttribute += ":type";
    el.append_attribute(xsiAttribute.c_str()).set_value(value.c_str());
    if (cacheable) {
        // Declarations go on the outermost element, in the parent's scope.
        Caches& c = scopeCache(parent.internal_object());
        c.stampUri.assign(uri);
        c.stampPrefix.swap(prefix);
        c.stampAttribute.swap(xsiAttribute);
    }
}

std::string HNKMessageIterator::getTypeName() const
{
    std::string key;
    std::string_view uri, local;
    if (!getTypeName(uri, local))
        return key;
    key.reserve(uri.size() + 1 + local.size());
    if (!uri.empty()) {
        key.assign(uri.data(), uri.size());
        key += ':';
    }
    key.append(local.data(), local.size());
    return key;
}

bool HNKMessageIterator::getTypeName(std::string_view& uri, std::string_view& local) const
{
    if (!node_)
        return false;
    real();
    xml_node el = nodeOf(node_);
    // One look at the attributes first: whether the element declares
    // prefixes itself (else they resolve in its parent's scope, kept at
    // hand), and where the first candidate for its type stands.
    bool declares = false;
    xml_attribute first;
    for (xml_attribute a = el.first_attribute(); a; a = a.next_attribute()) {
        const char* name = a.name();
        if (isXmlnsName(name))
            declares = true; // (a declaration names no type)
        else if (!first && typeColon(name))
            first = a;
    }
    for (xml_attribute a = first; a; a = a.next_attribute()) {
        const char* name = a.name();
        const char* colon = typeColon(name);
        if (!colon)
            continue;
        const char* xsi = resolvePrefix(node_, declares, name, static_cast<size_t>(colon - name));
        if (!xsi || std::strcmp(xsi, kXsiURI) != 0)
            continue;
        std::string_view prefix;
        if (!splitQName(trimBlanks(a.value()), prefix, local))
            return false;
        const char* bound = resolvePrefix(node_, declares, prefix.data(), prefix.size());
        if (!bound)
            return false;
        uri = bound;
        return true;
    }
    return false;
}

void HNKMessageIterator::applySecondaryID(int id)
{
    if (!node_)
        return;
    real();
    changing();
    xml_node el = nodeOf(node_);
    xml_attribute a = el.attribute("secondary_id");
    if (!a)
        a = el.append_attribute("secondary_id");
    a.set_value(id);
}
