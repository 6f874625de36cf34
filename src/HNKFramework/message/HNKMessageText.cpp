// The message's text form: fromXML (the lexical check, the parse, then,
// unless the lexical check settled them on its way, the checks of the parsed
// tree in one iterative walk: depth, node kinds, namespace declarations and
// prefixed names) and toXML. Every refusal sets the error message with what
// was refused and where.
#include "HNKMessageInternals.h"

#include "HNKErrorMessage.h"
#include "HNKXmlTextCheck.h"

#include <unordered_map>

using namespace hnk_message_detail;

namespace {

// ---- Checks of parsed text, in one iterative walk ----

class NamespaceScope {
public:
    // Pushes the declarations of `el`; false (message set) on a bad one.
    bool enter(xml_node el)
    {
        marks_.push_back(bindings_.size());
        for (xml_attribute a = el.first_attribute(); a; a = a.next_attribute()) {
            const char* name = a.name();
            if (std::strncmp(name, "xmlns", 5) != 0)
                continue;
            const char* uri = a.value();
            // The xml prefix and namespace belong together, xmlns is never
            // declared, and XML 1.0 namespaces cannot undeclare a prefix.
            bool xmlUri = std::strcmp(uri, kXmlURI) == 0;
            bool xmlnsUri = std::strcmp(uri, kXmlnsURI) == 0;
            const char* why = nullptr;
            if (name[5] == '\0') {
                if (xmlUri || xmlnsUri)
                    why = "a reserved namespace cannot be the default";
                else if (!HNKXmlTextCheck::isUriReference(uri))
                    why = "the namespace name is not a URI";
                else
                    bind(std::string_view(), uri);
            } else if (name[5] == ':') {
                std::string_view prefix(name + 6);
                if (prefix.empty() || prefix.find(':') != std::string_view::npos)
                    why = "not a prefix";
                else if (prefix == "xmlns")
                    why = "the xmlns prefix cannot be declared";
                else if (prefix == "xml" ? !xmlUri : xmlUri)
                    why = "the xml prefix is bound to its own namespace only";
                else if (xmlnsUri)
                    why = "the xmlns namespace cannot be bound";
                else if (*uri == '\0')
                    why = "a prefix cannot be undeclared";
                else if (!HNKXmlTextCheck::isUriReference(uri))
                    why = "the namespace name is not a URI";
                else
                    bind(prefix, uri);
            }
            if (why) {
                setErrorMessage("fromXML: invalid namespace declaration '%s' (%s) at byte offset %td", name, why,
                                el.offset_debug());
                return false;
            }
        }
        return true;
    }

    void leave()
    {
        size_t mark = marks_.back();
        marks_.pop_back();
        while (bindings_.size() > mark) {
            const Binding& b = bindings_.back();
            if (b.previous < 0)
                top_.erase(b.prefix);
            else
                top_[b.prefix] = static_cast<size_t>(b.previous);
            bindings_.pop_back();
        }
    }

    // URI of a prefix ("" = default namespace, "" when undeclared); nullptr
    // when a non-empty prefix is unbound.
    const char* resolve(std::string_view prefix) const
    {
        if (prefix == "xml")
            return kXmlURI;
        auto it = top_.find(prefix);
        if (it == top_.end())
            return prefix.empty() ? "" : nullptr;
        return bindings_[it->second].uri;
    }

private:
    struct Binding {
        std::string_view prefix;
        const char* uri;
        long previous;
    };

    void bind(std::string_view prefix, const char* uri)
    {
        auto it = top_.find(prefix);
        long previous = it == top_.end() ? -1 : static_cast<long>(it->second);
        bindings_.push_back(Binding{prefix, uri, previous});
        top_[prefix] = bindings_.size() - 1;
    }

    std::vector<Binding> bindings_;
    std::vector<size_t> marks_;
    std::unordered_map<std::string_view, size_t> top_;
};

// Two prefixed attributes of `el` must differ in namespace or local name once
// their prefixes are resolved (p:a and q:a with p and q bound to one URI
// clash). Only run for elements with two or more prefixed attributes.
bool checkExpandedAttributeNames(xml_node el, const NamespaceScope& scope)
{
    std::vector<std::pair<std::string_view, std::string_view>> names; // (URI, local name)
    for (xml_attribute a = el.first_attribute(); a; a = a.next_attribute()) {
        std::string_view prefix, local;
        const char* name = a.name();
        if ((std::strncmp(name, "xmlns", 5) == 0 && (name[5] == '\0' || name[5] == ':')) ||
            !splitQName(name, prefix, local) || prefix.empty())
            continue;
        names.emplace_back(scope.resolve(prefix), local);
    }
    std::sort(names.begin(), names.end());
    auto twice = std::adjacent_find(names.begin(), names.end());
    if (twice == names.end())
        return true;
    setErrorMessage("fromXML: duplicate attribute {%.*s}%.*s on element '%s' (two prefixes bound to one namespace) "
                    "at byte offset %td",
                    static_cast<int>(twice->first.size()), twice->first.data(), static_cast<int>(twice->second.size()),
                    twice->second.data(), el.name(), el.offset_debug());
    return false;
}

bool checkElementNames(xml_node el, const NamespaceScope& scope, bool& prefixedName)
{
    std::string_view prefix, local;
    if (!splitQName(el.name(), prefix, local)) {
        setErrorMessage("fromXML: invalid element name '%s' at byte offset %td", el.name(), el.offset_debug());
        return false;
    }
    prefixedName = prefixedName || !prefix.empty();
    if (prefix == "xmlns") {
        setErrorMessage("fromXML: invalid element name '%s' (the xmlns prefix is reserved) at byte offset %td",
                        el.name(), el.offset_debug());
        return false;
    }
    if (!prefix.empty() && !scope.resolve(prefix)) {
        setErrorMessage("fromXML: undeclared namespace prefix '%.*s' in element name '%s' at byte offset %td",
                        static_cast<int>(prefix.size()), prefix.data(), el.name(), el.offset_debug());
        return false;
    }
    size_t prefixedAttributes = 0;
    for (xml_attribute a = el.first_attribute(); a; a = a.next_attribute()) {
        const char* name = a.name();
        if (std::strncmp(name, "xmlns", 5) == 0 && (name[5] == '\0' || name[5] == ':'))
            continue;
        if (!splitQName(name, prefix, local)) {
            setErrorMessage("fromXML: invalid attribute name '%s' on element '%s' at byte offset %td", name,
                            el.name(), el.offset_debug());
            return false;
        }
        if (prefix.empty())
            continue;
        const char* uri = scope.resolve(prefix);
        if (!uri) {
            setErrorMessage("fromXML: undeclared namespace prefix '%.*s' in attribute name '%s' at byte offset %td",
                            static_cast<int>(prefix.size()), prefix.data(), name, el.offset_debug());
            return false;
        }
        ++prefixedAttributes;
        if (local != "type" || std::strcmp(uri, kXsiURI) != 0)
            continue;
        std::string_view tprefix, tlocal;
        if (!splitQName(trimBlanks(a.value()), tprefix, tlocal)) {
            setErrorMessage("fromXML: invalid xsi:type value \"%s\" at byte offset %td", a.value(),
                            el.offset_debug());
            return false;
        }
        if (!tprefix.empty() && !scope.resolve(tprefix)) {
            setErrorMessage("fromXML: undeclared namespace prefix '%.*s' in xsi:type=\"%s\" at byte offset %td",
                            static_cast<int>(tprefix.size()), tprefix.data(), a.value(), el.offset_debug());
            return false;
        }
    }
    return prefixedAttributes < 2 || checkExpandedAttributeNames(el, scope);
}

// Depth limit, node kinds and namespaces of the tree under `root`, walked
// without recursion so no document can exhaust the stack. `prefixedNames`
// tells whether any element name carries a prefix; `where` is the byte offset
// of a refused element.
bool checkTree(xml_node root, bool& prefixedNames, ptrdiff_t& where)
{
    NamespaceScope scope;
    xml_node n = root;
    int depth = 1;
    prefixedNames = false;
    if (!scope.enter(n) || !checkElementNames(n, scope, prefixedNames)) {
        where = n.offset_debug();
        return false;
    }
    for (;;) {
        xml_node next = n.first_child();
        if (next) {
            ++depth;
        } else {
            for (;;) {
                if (n.type() == pugi::node_element)
                    scope.leave();
                if (n == root)
                    return true;
                next = n.next_sibling();
                if (next)
                    break;
                n = n.parent();
                --depth;
            }
        }
        n = next;
        switch (n.type()) {
        case pugi::node_element:
            if (depth > HNKMessageIterator::kMaxDepth) {
                setErrorMessage("fromXML: elements nested deeper than %d levels at byte offset %td",
                                HNKMessageIterator::kMaxDepth, n.offset_debug());
                where = n.offset_debug();
                return false;
            }
            if (!scope.enter(n) || !checkElementNames(n, scope, prefixedNames)) {
                where = n.offset_debug();
                return false;
            }
            break;
        case pugi::node_doctype:
            setErrorMessage("fromXML: DOCTYPE declarations are not accepted (byte offset %td)", n.offset_debug());
            where = n.offset_debug();
            return false;
        default:
            break;
        }
    }
}

} // namespace

int HNKMessageIterator::fromXML(const std::string& text)
{
    // Every refusal says what and where: byte offset, line and column.
    auto refuse = [&text](ptrdiff_t offset) {
        size_t line, column;
        HNKXmlTextCheck::position(text.data(), text.size(), static_cast<size_t>(offset), line, column);
        setErrorMessage("%s (line %zu, column %zu)", getErrorMessage().c_str(), line, column);
        return -1;
    };
    const unsigned kParseOptions =
        pugi::parse_default | pugi::parse_doctype | pugi::parse_fragment | pugi::parse_embed_pcdata;
    HNKXmlTextCheck::Error bad;
    HNKXmlTextCheck::Namespaces namespaces;
    if (!HNKXmlTextCheck::check(text.data(), text.size(), bad, &namespaces)) {
        // The lexical pass does not match end tags; where the parser finds an
        // end tag that closes the wrong element earlier, that is the first
        // fault and the one to name. (The parser also calls an element left
        // open at the end a mismatch, placed in its start tag: not that one.)
        const char* what = bad.what;
        size_t offset = bad.offset;
        pugi::xml_document probe;
        pugi::xml_parse_result parsed = probe.load_buffer(text.data(), text.size(), kParseOptions, pugi::encoding_utf8);
        if (parsed.status == pugi::status_end_element_mismatch && parsed.offset >= 0 &&
            static_cast<size_t>(parsed.offset) < offset) {
            size_t tag = text.rfind('<', static_cast<size_t>(parsed.offset));
            if (tag != std::string::npos && tag + 1 < text.size() && text[tag + 1] == '/') {
                what = parsed.description();
                offset = static_cast<size_t>(parsed.offset);
            }
        }
        size_t line, column;
        HNKXmlTextCheck::position(text.data(), text.size(), offset, line, column);
        setErrorMessage("fromXML: malformed XML at byte offset %zu (line %zu, column %zu): %s", offset, line, column,
                        what);
        return -1;
    }
    boost::shared_ptr<Document> doc(new Document);
    // parse_fragment keeps text outside the root so it can be refused;
    // parse_doctype keeps a DOCTYPE so it can be refused (never expanded);
    // parse_embed_pcdata keeps an element's leading text in the element
    // itself instead of a child node: messages are mostly elements holding
    // one value, so the tree has half the nodes (faster to build, copy and
    // write, half the memory). textOf and setTextOf read and write it.
    doc->tree->parsed = true;
    pugi::xml_parse_result result =
        doc->tree->xml.load_buffer(text.data(), text.size(), kParseOptions, pugi::encoding_utf8);
    if (!result) {
        size_t line, column;
        HNKXmlTextCheck::position(text.data(), text.size(), static_cast<size_t>(result.offset), line, column);
        setErrorMessage("fromXML: malformed XML at byte offset %td (line %zu, column %zu): %s", result.offset, line,
                        column, result.description());
        return -1;
    }
    xml_node root;
    for (xml_node n = doc->tree->xml.first_child(); n; n = n.next_sibling()) {
        switch (n.type()) {
        case pugi::node_element:
            if (root) {
                setErrorMessage("fromXML: more than one root element (second at byte offset %td)", n.offset_debug());
                return refuse(n.offset_debug());
            }
            root = n;
            break;
        case pugi::node_doctype:
            setErrorMessage("fromXML: DOCTYPE declarations are not accepted (byte offset %td)", n.offset_debug());
            return refuse(n.offset_debug());
        case pugi::node_pcdata:
        case pugi::node_cdata:
            setErrorMessage("fromXML: text outside the root element at byte offset %td", n.offset_debug());
            return refuse(n.offset_debug());
        default:
            break;
        }
    }
    if (!root) {
        setErrorMessage("fromXML: empty document: no root element");
        return -1;
    }
    // The lexical pass settles plain namespaces and the depth on its way;
    // anything else is for the walk over the tree to judge.
    if (namespaces.settled && namespaces.depth <= static_cast<size_t>(kMaxDepth)) {
        doc->tree->prefixedNames = namespaces.prefixedElements;
    } else {
        ptrdiff_t where = 0;
        if (!checkTree(root, doc->tree->prefixedNames, where))
            return refuse(where);
    }
    attach(doc);
    node_ = root.internal_object();
    namespace_.clear();
    return 0;
}

std::string HNKMessageIterator::toXML() const { return toXML(false); }

std::string HNKMessageIterator::toXML(bool indent) const
{
    if (!doc_)
        return std::string();
    if (!doc_->tree->links.empty() || !doc_->tree->drafts.empty()) {
        if (!indent)
            return linkedXML();
        settled();
        doc_->tree->realizeAll();
    }
    StringWriter w;
    unsigned flags = pugi::format_no_declaration | (indent ? pugi::format_indent : pugi::format_raw);
    doc_->tree->xml.save(w, "  ", flags, pugi::encoding_utf8);
    return std::move(w.out);
}
