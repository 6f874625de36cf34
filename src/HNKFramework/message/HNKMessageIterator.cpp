// The message cursor itself: construction and copies, the list of cursors
// sharing a document, finding a child by name (through each cursor's child
// index) and moving about the tree, creating and removing elements. The
// other jobs live beside it: HNKMessageText.cpp, HNKMessageNamespaces.cpp,
// HNKMessageValues.cpp, HNKMessageSubtrees.cpp, HNKMessageDrafts.cpp.
#include "HNKMessageInternals.h"

#include "HNKElementDictionary.h"
#include "HNKErrorMessage.h"

using namespace hnk_message_detail;

namespace {

// Emptied documents kept for reuse, with the page each still holds.
struct SpareDocuments {
    static const size_t kKept = 2;
    // A document is only kept when it has few nodes: removing them is a walk
    // over each, while destroying frees the pages at once.
    static const size_t kMaxNodes = 64;
    std::unique_ptr<pugi::xml_document> docs[kKept];
    size_t count = 0;
    ~SpareDocuments();
};

// Trees may outlive the stock (a static message ending after the thread's
// objects): then they neither take from it nor give back.
thread_local bool sparesGone = false;
thread_local SpareDocuments spares;

SpareDocuments::~SpareDocuments() { sparesGone = true; }

bool fewNodes(xml_node top, size_t& budget)
{
    for (xml_node c = top.first_child(); c; c = c.next_sibling()) {
        if (budget == 0)
            return false;
        --budget;
        if (!fewNodes(c, budget))
            return false;
    }
    return true;
}

} // namespace

std::unique_ptr<pugi::xml_document> HNKMessageIterator::Tree::spareDocument()
{
    if (sparesGone)
        return std::unique_ptr<pugi::xml_document>(new pugi::xml_document);
    SpareDocuments& s = spares;
    if (s.count > 0)
        return std::move(s.docs[--s.count]);
    return std::unique_ptr<pugi::xml_document>(new pugi::xml_document);
}

void HNKMessageIterator::Tree::keepSpare(std::unique_ptr<pugi::xml_document>& doc)
{
    if (sparesGone)
        return;
    SpareDocuments& s = spares;
    size_t budget = SpareDocuments::kMaxNodes;
    if (s.count == SpareDocuments::kKept || !fewNodes(*doc, budget))
        return;
    // pugixml frees every page the removed nodes emptied but the last one,
    // which it keeps for the next nodes.
    doc->remove_children();
    s.docs[s.count++] = std::move(doc);
}

// (findChild's own part, inline in it: its one caller, once per value read)
inline xml_node_struct* HNKMessageIterator::indexedChild(const char* tag) const
{
    const Tree& t = *doc_->tree;
    if (!caches_)
        caches_.reset(new Caches);
    Caches& c = *caches_;
    unsigned k = c.lastIndex;
    if (!c.index[k].holds(t.serial, node_, t.childGen)) {
        k ^= 1;
        c.lastIndex = static_cast<unsigned char>(k);
        Caches::ChildIndex& ix = c.index[k];
        if (!ix.holds(t.serial, node_, t.childGen)) {
            ix.serial = t.serial;
            ix.parent = node_;
            ix.gen = t.childGen;
            ix.clear();
            ix.indexed = true;
            // Each test of a node is a call into pugixml: the node's own
            // pointer serves as the end test too, and its name as the test
            // of its type (a tree holds elements and text, and only
            // elements have names: no comment or instruction is parsed or made).
            for (xml_node ch = nodeOf(node_).first_child();; ch = ch.next_sibling()) {
                xml_node_struct* const n = ch.internal_object();
                if (!n)
                    break;
                const char* name = ch.name();
                if (*name && !ix.add(t.prefixedNames ? localName(name) : name, n))
                    break;
            }
        }
    }
    Caches::ChildIndex& ix = c.index[k];
    if (ix.indexed)
        return ix.find(tag, std::strlen(tag));
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
    // The parent's index (if any) takes the new child; the other one is
    // stale now, as the tree's child generation moved on.
    for (Caches::ChildIndex& ix : caches_->index)
        if (ix.indexed && ix.holds(t.serial, parent, before) &&
            ix.add(nodeOf(child).name(), child)) // created names carry no prefix
            ix.gen = t.childGen;
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

const char* HNKMessageIterator::resolvePrefix(xml_node_struct* at, bool declares, const char* prefix, size_t len) const
{
    xml_node el = nodeOf(at);
    if (declares)
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
    if (doc_->readyForChange())
        return doc_->tree->xml;
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
    if (!doc_ || doc_->tree->allNodes())
        return;
    if (!doc_->tree->drafts.empty())
        doc_->tree->realize(node_);
    settled();
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
        size_t length = stringLength(tag);
        if (!draft_->hasChild(tag, length, Draft::keyOf(tag, length)))
            return nullptr;
        real();
    } else if (!doc_->tree->drafts.empty()) {
        // The same for the host of a draft nobody is writing in: a setter
        // asks for the old element it replaces before it writes the new one.
        auto found = doc_->tree->drafts.find(node_);
        if (found != doc_->tree->drafts.end() && !found->second->writer) {
            size_t length = stringLength(tag);
            if (!found->second->hasChild(tag, length, Draft::keyOf(tag, length)))
                return nullptr;
        }
    }
    if (!doc_->tree->allNodes())
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
    return appendElement(name, std::strlen(name));
}

int HNKMessageIterator::createChild(const char* tag)
{
    if (!node_ || !tag || !*tag)
        return -1;
    changing();
    const size_t length = tagLength(tag);
    if (length == 0) {
        setErrorMessage("HNKMessageIterator: invalid element name '%s'", tag);
        return -1;
    }
    return appendElement(tag, length);
}

int HNKMessageIterator::appendElement(const char* name, size_t length)
{
    if (Draft* d = draftHere()) {
        d->open(name, length);
        d->writer = this;
        draft_ = d;
        return 0;
    }
    xml_node_struct* parent = node_;
    node_ = nodeOf(node_).append_child(name).internal_object();
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
    return removeElement(findChild(id));
}

int HNKMessageIterator::removeChild(const char* tag)
{
    if (!node_)
        return -1;
    changing(true);
    return removeElement(findChild(tag));
}

int HNKMessageIterator::removeElement(xml_node_struct* c)
{
    if (!c)
        return -1;
    doc_->tree->restructured();
    if (!doc_->tree->drafts.empty())
        doc_->tree->forgetDrafts(nodeOf(c));
    nodeOf(node_).remove_child(nodeOf(c));
    return 0;
}
