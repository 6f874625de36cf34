// The message cursor.
#include "HNKMessageInternals.h"

#include "Base64.h"
#include "HNKDefaultMap.h"
#include "HNKElementDictionary.h"
#include "HNKErrorMessage.h"
#include "HNKXmlTextCheck.h"

#include <charconv>
#include <limits>
#include <type_traits>

using namespace hnk_message_detail;

namespace  {

bool isPlainBlankText(const char* text)
{
    for (; *text; ++text)
        if (!isXmlBlank(*text))
            return false;
    return true;
}

} // namespace

namespace hnk_message_detail {

EscapeTable::EscapeTable()
{
    for (int c = 1; c < 128; ++c) {
        const std::string one(1, static_cast<char>(c));
        pugi::xml_document doc;
        xml_node a = doc.append_child("a");
        a.append_attribute("b").set_value(one.c_str());
        a.append_child(pugi::node_pcdata).set_value(one.c_str());
        StringWriter w;
        doc.save(w, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
        const std::string& t = w.out; // <a b="X">Y</a>
        size_t from = t.find('"') + 1;
        size_t to = t.find('"', from);
        held[c] = t.substr(from, to - from);
        held[128 + c] = t.substr(to + 2, t.size() - 4 - (to + 2));
        if (held[c] != one)
            attribute[c] = held[c].c_str();
        if (held[128 + c] != one)
            text[c] = held[128 + c].c_str();
    }
}

} // namespace hnk_message_detail

xml_node_struct* HNKMessageIterator::indexedChild(const char* tag) const
{
    const Tree& t = *doc_->tree;
    if (!caches_)
        caches_.reset(new Caches);
    Caches& c = *caches_;
    if (c.indexSerial != t.serial || c.indexParent != node_ || c.indexGen != t.childGen) {
        c.indexSerial = t.serial;
        c.indexParent = node_;
        c.indexGen = t.childGen;
        c.clear();
        c.indexed = true;
        for (xml_node ch = nodeOf(node_).first_child(); ch; ch = ch.next_sibling())
            if (ch.type() == pugi::node_element &&
                !c.add(t.prefixedNames ? localName(ch.name()) : ch.name(), ch.internal_object()))
                break;
    }
    if (c.indexed)
        return c.find(tag, std::strlen(tag));
    xml_node parent = nodeOf(node_);
    if (!t.prefixedNames) {
        for (xml_node ch = parent.child(tag); ch; ch = ch.next_sibling(tag))
            if (ch.type() == pugi::node_element)
                return ch.internal_object();
        return nullptr;
    }
    for (xml_node ch = parent.first_child(); ch; ch = ch.next_sibling())
        if (ch.type() == pugi::node_element && nameMatches(ch.name(), tag))
            return ch.internal_object();
    return nullptr;
}

void HNKMessageIterator::noteCreated(xml_node_struct* parent, xml_node_struct* child)
{
    Tree& t = *doc_->tree;
    const unsigned long before = t.childGen++;
    if (!caches_)
        return;
    Caches& c = *caches_;
    if (c.indexed && c.indexSerial == t.serial && c.indexParent == parent && c.indexGen == before &&
        c.add(nodeOf(child).name(), child)) // created names carry no prefix
        c.indexGen = t.childGen;
}

HNKMessageIterator::Caches& HNKMessageIterator::scopeCache(xml_node_struct* scope) const
{
    const Tree& t = *doc_->tree;
    if (!caches_)
        caches_.reset(new Caches);
    Caches& c = *caches_;
    if (c.scopeSerial != t.serial || c.scopeElement != scope || c.scopeGen != t.scopeGen) {
        c.scopeSerial = t.serial;
        c.scopeElement = scope;
        c.scopeGen = t.scopeGen;
        c.prefixes.clear();
        c.stampAttribute.clear();
    }
    return c;
}

const char* HNKMessageIterator::resolvePrefix(xml_node_struct* at, const char* prefix, size_t len) const
{
    xml_node el = nodeOf(at);
    for (xml_attribute a = el.first_attribute(); a; a = a.next_attribute())
        if (std::strncmp(a.name(), "xmlns", 5) == 0)
            return lookupPrefix(el, prefix, len); // declares bindings itself
    xml_node parent = el.parent();
    if (parent.type() != pugi::node_element)
        return lookupPrefix(el, prefix, len);
    Caches& c = scopeCache(parent.internal_object());
    std::string_view p(prefix, len);
    for (const auto& known : c.prefixes)
        if (known.first == p)
            return known.second;
    const char* uri = lookupPrefix(parent, prefix, len);
    c.prefixes.emplace_back(std::string(p), uri);
    return uri;
}

void HNKMessageIterator::attach(const boost::shared_ptr<Document>& doc)
{
    detach();
    doc_ = doc;
    if (!doc_)
        return;
    prevInDoc_ = nullptr;
    nextInDoc_ = doc_->cursors;
    if (nextInDoc_)
        nextInDoc_->prevInDoc_ = this;
    doc_->cursors = this;
}

void HNKMessageIterator::detach()
{
    if (!doc_)
        return;
    leaveDraft();
    if (prevInDoc_)
        prevInDoc_->nextInDoc_ = nextInDoc_;
    else
        doc_->cursors = nextInDoc_;
    if (nextInDoc_)
        nextInDoc_->prevInDoc_ = prevInDoc_;
    prevInDoc_ = nextInDoc_ = nullptr;
    doc_.reset();
}

pugi::xml_document& HNKMessageIterator::changing(bool removal)
{
    // Appending next to a linked element leaves it linked; a change inside
    // one, or a removal that may take one along, settles them first.
    std::vector<Tree::Link>& links = doc_->tree->links;
    if (!links.empty()) {
        bool inside = removal;
        for (size_t i = 0; i < links.size() && !inside; ++i)
            inside = links[i].placeholder == node_;
        if (inside)
            doc_->tree->settle();
    }
    doc_->own();
    return doc_->tree->xml;
}

void HNKMessageIterator::settled() const
{
    if (doc_ && !doc_->tree->links.empty())
        doc_->tree->settle();
}

void HNKMessageIterator::real() const
{
    if (draft_)
        doc_->tree->realize(node_);
}

void HNKMessageIterator::looked() const
{
    if (!doc_)
        return;
    if (!doc_->tree->drafts.empty())
        doc_->tree->realize(node_);
    settled();
}

bool HNKMessageIterator::draftable() const
{
    Tree& t = *doc_->tree;
    if (!t.drafts.empty() && t.drafts.count(node_))
        return true;
    xml_node el = nodeOf(node_);
    return !el.first_child() && !*el.value() && el.parent().type() == pugi::node_element &&
           t.shares.load(std::memory_order_relaxed) == 1;
}

HNKMessageIterator::Draft* HNKMessageIterator::draftHere()
{
    if (draft_)
        return draft_;
    if (!draftable())
        return nullptr;
    std::unique_ptr<Draft>& d = doc_->tree->drafts[node_];
    if (!d)
        d.reset(new Draft);
    if (d->writer) { // another cursor is inside it
        doc_->tree->realize(node_);
        return nullptr;
    }
    return d.get();
}

void HNKMessageIterator::leaveDraft() const
{
    if (!draft_)
        return;
    draft_->ops.append(draft_->depth - 1, 'C');
    draft_->depth = 1;
    draft_->writer = nullptr;
    draft_ = nullptr;
}

HNKMessageIterator::HNKMessageIterator() : node_(nullptr) {}

HNKMessageIterator::HNKMessageIterator(const std::string& rootName) : node_(nullptr)
{
    if (!isValidTag(rootName.c_str())) {
        setErrorMessage("HNKMessageIterator: invalid root element name '%s'", rootName.c_str());
        return;
    }
    attach(boost::shared_ptr<Document>(new Document));
    node_ = doc_->tree->xml.append_child(rootName.c_str()).internal_object();
}

HNKMessageIterator::~HNKMessageIterator() { detach(); }

HNKMessageIterator::HNKMessageIterator(const HNKMessageIterator& other)
    : node_(nullptr), namespace_(other.namespace_)
{
    other.real();
    node_ = other.node_;
    attach(other.doc_);
}

HNKMessageIterator& HNKMessageIterator::operator=(const HNKMessageIterator& other)
{
    if (this != &other) {
        other.real();
        leaveDraft();
        if (doc_ != other.doc_)
            attach(other.doc_);
        node_ = other.node_;
        namespace_ = other.namespace_;
    }
    return *this;
}

bool HNKMessageIterator::isValid() const { return node_ != nullptr; }

HNKMessageIterator HNKMessageIterator::root() const
{
    HNKMessageIterator r(*this);
    if (doc_)
        r.node_ = doc_->tree->xml.document_element().internal_object();
    return r;
}

const char* HNKMessageIterator::currentName() const
{
    real();
    return node_ ? localName(nodeOf(node_).name()) : "";
}

// ---- Lookup ----

xml_node_struct* HNKMessageIterator::findChild(const char* tag) const
{
    if (!node_ || !tag || !*tag)
        return nullptr;
    if (draft_) {
        // Asking a written element for a child it does not have (a writer
        // replacing a child that is not there) needs no nodes.
        size_t length = std::strlen(tag);
        if (!draft_->hasChild(tag, length, Draft::bitOf(tag, length)))
            return nullptr;
        real();
    }
    looked();
    return indexedChild(tag);
}

xml_node_struct* HNKMessageIterator::findChild(int id) const
{
    if (!node_ || id == 0)
        return nullptr;
    const char* name = HNKElementDictionary::findName(id);
    if (!name) {
        setErrorMessage("HNKMessageIterator: unknown element ID %d", id);
        return nullptr;
    }
    return findChild(name);
}

xml_node_struct* HNKMessageIterator::target(int id) const
{
    if (id != 0)
        return findChild(id);
    real();
    looked();
    return node_;
}

xml_node_struct* HNKMessageIterator::target(const char* tag) const
{
    if (tag && *tag)
        return findChild(tag);
    real();
    looked();
    return node_;
}

// ---- Moving ----

int HNKMessageIterator::descend(int id) const
{
    xml_node_struct* c = findChild(id);
    if (!c)
        return -1;
    node_ = c;
    return 0;
}

int HNKMessageIterator::descend(const char* tag) const
{
    xml_node_struct* c = findChild(tag);
    if (!c)
        return -1;
    node_ = c;
    return 0;
}

int HNKMessageIterator::createChild(int id)
{
    if (id == 0 || !node_)
        return -1;
    changing();
    const char* name = HNKElementDictionary::findName(id);
    if (!name) {
        setErrorMessage("HNKMessageIterator: unknown element ID %d", id);
        return -1;
    }
    if (Draft* d = draftHere()) {
        d->open(name, std::strlen(name));
        d->writer = this;
        draft_ = d;
        return 0;
    }
    xml_node_struct* parent = node_;
    node_ = nodeOf(node_).append_child(name).internal_object();
    noteCreated(parent, node_);
    return 0;
}

int HNKMessageIterator::createChild(const char* tag)
{
    if (!node_ || !tag || !*tag)
        return -1;
    changing();
    if (!isValidTag(tag)) {
        setErrorMessage("HNKMessageIterator: invalid element name '%s'", tag);
        return -1;
    }
    if (Draft* d = draftHere()) {
        d->open(tag, std::strlen(tag));
        d->writer = this;
        draft_ = d;
        return 0;
    }
    xml_node_struct* parent = node_;
    node_ = nodeOf(node_).append_child(tag).internal_object();
    noteCreated(parent, node_);
    return 0;
}

void HNKMessageIterator::ascend() const
{
    if (!node_)
        return;
    if (draft_) {
        draft_->close();
        if (draft_->depth == 1) { // back on the host
            draft_->writer = nullptr;
            draft_ = nullptr;
        }
        return;
    }
    xml_node parent = nodeOf(node_).parent();
    if (parent.type() == pugi::node_element)
        node_ = parent.internal_object();
}

void HNKMessageIterator::removeCurrent()
{
    if (!node_)
        return;
    real();
    changing(true);
    xml_node self = nodeOf(node_);
    xml_node parent = self.parent();
    if (parent.type() != pugi::node_element)
        return;
    doc_->tree->restructured();
    if (!doc_->tree->drafts.empty())
        doc_->tree->forgetDrafts(self);
    parent.remove_child(self);
    node_ = parent.internal_object();
}

int HNKMessageIterator::firstChild(int id) const { return descend(id); }

int HNKMessageIterator::firstChild(const char* tag) const { return descend(tag); }

int HNKMessageIterator::nextSibling(const char* tag) const
{
    if (!node_ || !tag || !*tag)
        return -1;
    real();
    xml_node self = nodeOf(node_);
    if (!doc_->tree->prefixedNames) {
        for (xml_node s = self.next_sibling(tag); s; s = s.next_sibling(tag))
            if (s.type() == pugi::node_element) {
                node_ = s.internal_object();
                return 0;
            }
        return -1;
    }
    for (xml_node s = self.next_sibling(); s; s = s.next_sibling())
        if (s.type() == pugi::node_element && nameMatches(s.name(), tag)) {
            node_ = s.internal_object();
            return 0;
        }
    return -1;
}

int HNKMessageIterator::nextSibling(int id) const
{
    if (id == 0)
        return -1;
    const char* name = HNKElementDictionary::findName(id);
    if (!name) {
        setErrorMessage("HNKMessageIterator: unknown element ID %d", id);
        return -1;
    }
    return nextSibling(name);
}

int HNKMessageIterator::firstChild() const
{
    if (!node_)
        return -1;
    real();
    looked();
    for (xml_node c = nodeOf(node_).first_child(); c; c = c.next_sibling())
        if (c.type() == pugi::node_element) {
            node_ = c.internal_object();
            return 0;
        }
    return -1;
}

int HNKMessageIterator::nextSibling() const
{
    if (!node_)
        return -1;
    real();
    for (xml_node s = nodeOf(node_).next_sibling(); s; s = s.next_sibling())
        if (s.type() == pugi::node_element) {
            node_ = s.internal_object();
            return 0;
        }
    return -1;
}

bool HNKMessageIterator::hasChild(int id) const { return findChild(id) != nullptr; }

bool HNKMessageIterator::hasChild(const char* tag) const { return findChild(tag) != nullptr; }

int HNKMessageIterator::removeChild(int id)
{
    if (!node_)
        return -1;
    changing(true);
    xml_node_struct* c = findChild(id);
    if (!c)
        return -1;
    doc_->tree->restructured();
    if (!doc_->tree->drafts.empty())
        doc_->tree->forgetDrafts(nodeOf(c));
    nodeOf(node_).remove_child(nodeOf(c));
    return 0;
}

int HNKMessageIterator::removeChild(const char* tag)
{
    if (!node_)
        return -1;
    changing(true);
    xml_node_struct* c = findChild(tag);
    if (!c)
        return -1;
    doc_->tree->restructured();
    if (!doc_->tree->drafts.empty())
        doc_->tree->forgetDrafts(nodeOf(c));
    nodeOf(node_).remove_child(nodeOf(c));
    return 0;
}

// ---- Subtrees ----

namespace {

// Namespace declarations in scope at `el`, nearest first, shadowed ones left
// out: (attribute name, URI).
std::vector<std::pair<const char*, const char*>> bindingsInScope(xml_node el)
{
    std::vector<std::pair<const char*, const char*>> out;
    for (xml_node n = el; n && n.type() == pugi::node_element; n = n.parent())
        for (xml_attribute a = n.first_attribute(); a; a = a.next_attribute()) {
            const char* name = a.name();
            if (std::strncmp(name, "xmlns", 5) != 0 || (name[5] != '\0' && name[5] != ':'))
                continue;
            bool shadowed = false;
            for (const auto& b : out)
                shadowed = shadowed || std::strcmp(b.first, name) == 0;
            if (!shadowed)
                out.emplace_back(name, a.value());
        }
    return out;
}

// URI that declaration name `xmlnsName` ("xmlns" or "xmlns:p") binds at `el`.
const char* resolveDeclName(xml_node el, const char* xmlnsName)
{
    const char* prefix = xmlnsName[5] == ':' ? xmlnsName + 6 : "";
    return lookupPrefix(el, prefix, std::strlen(prefix));
}

bool isSameOrAncestor(xml_node ancestor, xml_node n)
{
    for (; n; n = n.parent())
        if (n == ancestor)
            return true;
    return false;
}

// Prefixes a subtree names (element and attribute names, xsi:type values):
// the bindings a copy of it needs. Walks without recursion.
std::vector<std::string> prefixesUsed(xml_node top)
{
    std::vector<std::string> used;
    auto note = [&used](const char* qname, size_t length) {
        const char* colon = static_cast<const char*>(std::memchr(qname, ':', length));
        if (!colon)
            return;
        std::string prefix(qname, static_cast<size_t>(colon - qname));
        if (prefix != "xmlns" && std::find(used.begin(), used.end(), prefix) == used.end())
            used.push_back(prefix);
    };
    xml_node n = top;
    while (n) {
        if (n.type() == pugi::node_element) {
            note(n.name(), std::strlen(n.name()));
            for (xml_attribute a = n.first_attribute(); a; a = a.next_attribute())
                note(a.name(), std::strlen(a.name()));
            if (xml_attribute t = findXsiType(n)) {
                std::string_view v = trimBlanks(t.value());
                note(v.data(), v.size());
            }
        }
        if (n.type() == pugi::node_element && n.first_child()) {
            n = n.first_child();
            continue;
        }
        while (n && n != top && !n.next_sibling())
            n = n.parent();
        if (!n || n == top)
            break;
        n = n.next_sibling();
    }
    return used;
}

} // namespace

HNKMessageIterator HNKMessageIterator::cloneSubtree() const
{
    HNKMessageIterator out;
    if (!node_)
        return out;
    real();
    settled();
    xml_node self = nodeOf(node_);
    out.attach(boost::shared_ptr<Document>(new Document));
    out.doc_->tree->prefixedNames = doc_->tree->prefixedNames;
    xml_node copy = out.doc_->tree->xml.append_copy(self);
    Tree::carryDrafts(*doc_->tree, self, *out.doc_->tree, copy);
    for (const auto& b : bindingsInScope(self.parent()))
        if (!copy.attribute(b.first))
            copy.append_attribute(b.first).set_value(b.second);
    out.node_ = copy.internal_object();
    return out;
}

std::string HNKMessageIterator::linkedXML() const
{
    const std::vector<Tree::Link>& links = doc_->tree->links;
    std::unordered_map<xml_node_struct*, const Tree::Link*> placeholders;
    std::unordered_map<xml_node_struct*, bool> onPath; // ancestors of placeholders and drafts
    for (const Tree::Link& l : links) {
        placeholders[l.placeholder] = &l;
        for (xml_node n = xml_node(l.placeholder).parent(); n && n.type() == pugi::node_element; n = n.parent())
            onPath[n.internal_object()] = true;
    }
    const auto& drafts = doc_->tree->drafts;
    for (const auto& d : drafts)
        for (xml_node n = xml_node(d.first).parent(); n && n.type() == pugi::node_element; n = n.parent())
            onPath[n.internal_object()] = true;
    const unsigned flags = pugi::format_raw | pugi::format_no_declaration;
    StringWriter w;
    // A start tag exactly as pugixml writes it: a childless shallow copy
    // prints "<name attributes/>", of which the "/>" becomes ">".
    auto startTag = [&](xml_node n) {
        pugi::xml_document shallow;
        xml_node c = shallow.append_child(n.name());
        for (xml_attribute a = n.first_attribute(); a; a = a.next_attribute())
            c.append_attribute(a.name()).set_value(a.value());
        size_t at = w.out.size();
        c.print(w, "", flags, pugi::encoding_utf8);
        if (w.out.size() >= at + 2 && w.out.compare(w.out.size() - 2, 2, "/>") == 0)
            w.out.resize(w.out.size() - 2);
        w.out += '>';
    };
    auto text = [&](const char* value) {
        if (!*value)
            return;
        pugi::xml_document holder;
        holder.append_child(pugi::node_pcdata).set_value(value);
        holder.print(w, "", flags, pugi::encoding_utf8);
    };
    auto endTag = [&](xml_node n) {
        w.out += "</";
        w.out += n.name();
        w.out += '>';
    };
    // Depth is that of the written tree around the links, not of the text.
    std::function<void(xml_node)> emit = [&](xml_node n) {
        auto link = placeholders.find(n.internal_object());
        if (link != placeholders.end()) {
            xml_node from(link->second->from);
            startTag(n);
            text(from.value());
            for (xml_node c = from.first_child(); c; c = c.next_sibling())
                c.print(w, "", flags, pugi::encoding_utf8);
            endTag(n);
            return;
        }
        auto draft = drafts.empty() ? drafts.end() : drafts.find(n.internal_object());
        if (draft != drafts.end()) {
            startTag(n); // a host holds nothing but its draft
            draft->second->write(w.out);
            endTag(n);
            return;
        }
        if (!onPath.count(n.internal_object())) {
            n.print(w, "", flags, pugi::encoding_utf8);
            return;
        }
        startTag(n);
        text(n.value());
        for (xml_node c = n.first_child(); c; c = c.next_sibling())
            emit(c);
        endTag(n);
    };
    for (xml_node c = doc_->tree->xml.first_child(); c; c = c.next_sibling())
        emit(c);
    return std::move(w.out);
}

HNKMessageIterator HNKMessageIterator::shareSubtree() const
{
    real();
    if (!node_ || node_ != doc_->tree->xml.document_element().internal_object())
        return cloneSubtree();
    settled(); // a shared tree has no links
    doc_->tree->realizeAll(); // nor drafts
    HNKMessageIterator out;
    out.attach(boost::shared_ptr<Document>(new Document(doc_->tree)));
    out.node_ = node_;
    return out;
}

int HNKMessageIterator::appendCopy(const HNKMessageIterator& source) { return appendCopy(source, false); }

int HNKMessageIterator::appendLinked(const HNKMessageIterator& source) { return appendCopy(source, true); }

int HNKMessageIterator::appendCopy(const HNKMessageIterator& source, bool link)
{
    if (!node_ || !source.node_)
        return -1;
    source.real();
    looked(); // its new child goes after the content it has
    changing();
    source.settled();
    xml_node from = nodeOf(source.node_);
    xml_node to = nodeOf(node_);
    if (doc_ == source.doc_ && isSameOrAncestor(from, to))
        return -1;
    doc_->tree->prefixedNames = doc_->tree->prefixedNames || source.doc_->tree->prefixedNames;
    ++doc_->tree->childGen; // declarations go on the new copy only
    // Only an element with element children is worth linking, and only from
    // another tree; its leading text, if any, must need no escaping (toXML
    // writes it through pugixml as a text node, which would escape it alike,
    // but blanks are all a parsed list element holds).
    if (link) {
        link = source.doc_->tree != doc_->tree && from.first_child() && isPlainBlankText(from.value());
        bool elementChild = false;
        for (xml_node c = from.first_child(); link && c && !elementChild; c = c.next_sibling())
            elementChild = c.type() == pugi::node_element;
        link = link && elementChild && source.doc_->tree->drafts.empty();
    }
    xml_node copy;
    if (link) {
        copy = to.append_child(from.name());
        for (xml_attribute a = from.first_attribute(); a; a = a.next_attribute())
            copy.append_attribute(a.name()).set_value(a.value());
        Tree* source_tree = source.doc_->tree;
        source_tree->shares.fetch_add(1, std::memory_order_relaxed); // frozen while linked
        doc_->tree->links.push_back(Tree::Link{copy.internal_object(), source_tree, from.internal_object()});
    } else {
        copy = to.append_copy(from);
        Tree::carryDrafts(*source.doc_->tree, from, *doc_->tree, copy);
    }
    // What the scopes of the source's parent and of this element differ in
    // is the same for every child of one parent copied here (a record
    // writer copies them all): kept while neither scope changes.
    const Tree& st = *source.doc_->tree;
    const Tree& tt = *doc_->tree;
    if (!caches_)
        caches_.reset(new Caches);
    Caches& cc = *caches_;
    xml_node fromParent = from.parent();
    if (cc.copySourceSerial != st.serial || cc.copySourceGen != st.scopeGen ||
        cc.copySourceParent != fromParent.internal_object() || cc.copyTargetSerial != tt.serial ||
        cc.copyTargetGen != tt.scopeGen || cc.copyTarget != node_) {
        cc.copySourceSerial = st.serial;
        cc.copySourceGen = st.scopeGen;
        cc.copySourceParent = fromParent.internal_object();
        cc.copyTargetSerial = tt.serial;
        cc.copyTargetGen = tt.scopeGen;
        cc.copyTarget = node_;
        cc.copyMissing.clear();
        for (const auto& b : bindingsInScope(fromParent)) {
            const char* here = resolveDeclName(to, b.first);
            if (!here || std::strcmp(here, b.second) != 0)
                cc.copyMissing.push_back(b);
        }
        cc.copyTargetDefault = resolveDeclName(to, "xmlns");
        cc.copyParentDefault = fromParent.type() == pugi::node_element ? resolveDeclName(fromParent, "xmlns") : "";
    }
    const std::vector<std::pair<const char*, const char*>>& missing = cc.copyMissing;
    // Only a binding not already in scope here can be needed, so the subtree
    // is searched for the prefixes it names only when there is one.
    if (!missing.empty()) {
        std::vector<std::string> used = prefixesUsed(from);
        for (const auto& d : source.doc_->tree->drafts)
            if (isSameOrAncestor(from, xml_node(d.first)))
                d.second->notePrefixes([&used](const char* qname, size_t length) {
                    const char* colon = static_cast<const char*>(std::memchr(qname, ':', length));
                    std::string prefix(qname, colon ? static_cast<size_t>(colon - qname) : 0);
                    if (colon && prefix != "xmlns" && std::find(used.begin(), used.end(), prefix) == used.end())
                        used.push_back(prefix);
                });
        for (const auto& b : missing) {
            if (b.first[5] == ':' && std::find(used.begin(), used.end(), b.first + 6) == used.end())
                continue; // a binding the copy never names
            if (!copy.attribute(b.first))
                copy.append_attribute(b.first).set_value(b.second);
        }
    }
    // A copy in no namespace must not fall into a default namespace here.
    const char* targetDefault = cc.copyTargetDefault;
    const char* sourceDefault = cc.copyParentDefault;
    if (xml_attribute own = from.attribute("xmlns"))
        sourceDefault = own.value();
    if (targetDefault && *targetDefault && !(sourceDefault && *sourceDefault) && !copy.attribute("xmlns"))
        copy.append_attribute("xmlns").set_value("");
    return 0;
}

int HNKMessageIterator::appendChildrenCopy(const HNKMessageIterator& source)
{
    if (!node_ || !source.node_)
        return -1;
    source.real();
    source.looked();
    looked();
    changing();
    if (doc_ == source.doc_ && isSameOrAncestor(nodeOf(source.node_), nodeOf(node_)))
        return appendChildrenCopy(source.cloneSubtree()); // copying a subtree into itself
    xml_node from = nodeOf(source.node_);
    xml_node to = nodeOf(node_);
    doc_->tree->prefixedNames = doc_->tree->prefixedNames || source.doc_->tree->prefixedNames;
    doc_->tree->restructured();
    std::vector<std::pair<const char*, const char*>> needed;
    for (const auto& b : bindingsInScope(from)) {
        const char* here = resolveDeclName(to, b.first);
        if (!here || std::strcmp(here, b.second) != 0)
            needed.push_back(b);
    }
    if (*from.value()) // leading text the parser kept in the element itself
        to.append_child(pugi::node_pcdata).set_value(from.value());
    for (xml_node c = from.first_child(); c; c = c.next_sibling()) {
        xml_node copy = to.append_copy(c);
        if (copy.type() != pugi::node_element)
            continue;
        Tree::carryDrafts(*source.doc_->tree, c, *doc_->tree, copy);
        for (const auto& b : needed)
            if (!copy.attribute(b.first))
                copy.append_attribute(b.first).set_value(b.second);
    }
    return 0;
}
