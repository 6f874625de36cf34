// Copies of subtrees between documents: cloneSubtree, shareSubtree (one tree
// read by several documents), appendCopy, appendLinked (content copied in
// only when first looked at), appendChildrenCopy and appendChildrenLinked
// (in a given order; a draft's children spliced as written), each carrying
// the namespace bindings the copy needs; the names of an element's children
// (childNames); and the text of a tree whose linked elements or drafts are
// still pending.
#include "HNKMessageInternals.h"

using namespace hnk_message_detail;

namespace {

bool isPlainBlankText(const char* text)
{
    for (; *text; ++text)
        if (!isXmlBlank(*text))
            return false;
    return true;
}

} // namespace

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
    size_t drafted = 0;
    for (const auto& d : drafts)
        drafted += d.second->textBytes;
    w.out.reserve(drafted + 256); // and the elements around the drafts
    // A start tag and text exactly as pugixml writes them: names as they
    // stand, values through the escape table asked of pugixml itself (as a
    // draft writes its own), with no document made for them.
    const EscapeTable& esc = escapes();
    auto startTag = [&](xml_node n) {
        w.out += '<';
        w.out += n.name();
        for (xml_attribute a = n.first_attribute(); a; a = a.next_attribute()) {
            w.out += ' ';
            w.out += a.name();
            w.out += "=\"";
            const char* v = a.value();
            appendEscaped(w.out, v, std::strlen(v), esc.attribute);
            w.out += '"';
        }
        w.out += '>';
    };
    auto text = [&](const char* value) {
        if (*value)
            appendEscaped(w.out, value, std::strlen(value), esc.text);
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

int HNKMessageIterator::childNames(std::vector<std::string_view>& names) const
{
    names.clear();
    if (!node_)
        return -1;
    real();
    const Tree& t = *doc_->tree;
    if (!t.drafts.empty()) {
        auto found = t.drafts.find(node_);
        if (found != t.drafts.end()) {
            const Draft& d = *found->second;
            names.reserve(d.tops.size());
            for (const auto& top : d.tops) {
                const size_t name = top.first + Draft::kNameFrom;
                names.emplace_back(d.ops.data() + name, d.lengthAt(name - 1));
            }
            return 0;
        }
    }
    settled();
    for (xml_node c = nodeOf(node_).first_child(); c; c = c.next_sibling())
        if (c.type() == pugi::node_element)
            names.emplace_back(localName(c.name()));
    return 0;
}

namespace {

// True when `order` holds each of 0 .. n-1 once.
bool isPermutation(const std::vector<size_t>& order, size_t n)
{
    if (order.size() != n)
        return false;
    uint64_t few[4] = {}; // a record's children: no allocation
    std::vector<uint64_t> many(n > 256 ? (n + 63) / 64 : 0);
    uint64_t* seen = n > 256 ? many.data() : few;
    for (size_t k : order) {
        if (k >= n)
            return false;
        const uint64_t bit = uint64_t(1) << (k & 63);
        if (seen[k >> 6] & bit)
            return false;
        seen[k >> 6] |= bit;
    }
    return true;
}

} // namespace

bool HNKMessageIterator::spliceDraft(const HNKMessageIterator& source, const std::vector<size_t>& order)
{
    if (draft_ || source.draft_ || doc_ == source.doc_)
        return false;
    const Tree& st = *source.doc_->tree;
    if (st.drafts.empty())
        return false;
    auto found = st.drafts.find(source.node_);
    if (found == st.drafts.end())
        return false;
    const Draft& from = *found->second;
    if (from.writer || from.depth != 1 || !draftable() ||
        (!doc_->tree->drafts.empty() && doc_->tree->drafts.count(node_)))
        return false; // (a fresh draft here: its list of names is the source's)
    const xml_node src = nodeOf(source.node_), dst = nodeOf(node_);
    if (std::strcmp(lookupPrefix(src, "", 0), lookupPrefix(dst, "", 0)) != 0)
        return false; // written names carry no prefix: the default namespace must agree
    // Only elements at the top (a host's own text is not a child), and
    // every prefix the attributes name bound alike on both sides (a
    // declaration inside is left to the element copies).
    if (from.hostText)
        return false;
    for (const std::string& prefix : from.prefixes) {
        if (prefix == "xmlns")
            return false;
        const char* a = lookupPrefix(src, prefix.data(), prefix.size());
        const char* b = lookupPrefix(dst, prefix.data(), prefix.size());
        if (!a || !b || std::strcmp(a, b) != 0)
            return false;
    }
    const std::vector<std::pair<size_t, size_t>>& children = from.tops; // [begin, end) in from.ops
    const char* base = from.ops.data();
    if (!isPermutation(order, children.size()))
        return false;
    changing();
    std::unique_ptr<Draft>& d = doc_->tree->drafts[node_];
    d.reset(new Draft);
    Draft& to = *d;
    to.ops.reserve(from.ops.size());
    // The source's list holds each top-level name once, at its first child
    // of that name; the copy keeps those entries, moved with their children.
    // `listed` is the entry's place in the source's list, plus one (0: none).
    const Draft::Level& fromTop = from.levels[0];
    // Both lists are in log order: one walk pairs them.
    std::vector<size_t> listed(children.size());
    for (size_t i = 0, c = 0; i < fromTop.names.size(); ++i) {
        const size_t at = fromTop.names[i] - Draft::kNameFrom;
        while (c < children.size() && children[c].first < at)
            ++c;
        if (c < children.size() && children[c].first == at)
            listed[c] = i + 1;
    }
    Draft::Level& level = to.levels[0];
    level.filter = fromTop.filter;
    level.names.reserve(fromTop.names.size());
    to.tops.reserve(children.size());
    std::vector<size_t> movedTo(fromTop.names.size()); // a source list entry's place in the copy's
    for (size_t k : order) {
        const auto& child = children[k];
        if (listed[k]) {
            movedTo[listed[k] - 1] = level.names.size();
            level.names.push_back(to.ops.size() + Draft::kNameFrom);
        }
        to.tops.emplace_back(to.ops.size(), to.ops.size() + (child.second - child.first));
        to.ops.append(base + child.first, child.second - child.first);
    }
    level.startOpen = false;
    // The names are the same, so their table is too, with each entry's
    // place in the list renumbered.
    if (level.names.size() == fromTop.names.size() && !fromTop.slots.empty()) {
        level.slots = fromTop.slots;
        for (size_t& slot : level.slots)
            if (slot != 0)
                slot = movedTo[slot - 1] + 1;
    } else if (level.names.size() > Draft::kIndexFrom) {
        to.reindex(level);
    }
    to.prefixes = from.prefixes;
    to.textBytes = from.textBytes;
    return true;
}

int HNKMessageIterator::appendChildrenLinked(const HNKMessageIterator& source, const std::vector<size_t>& order)
{
    if (!node_ || !source.node_)
        return -1;
    if (spliceDraft(source, order))
        return 0;
    std::vector<xml_node_struct*> children;
    HNKMessageIterator child(source);
    if (child.firstChild() == 0) {
        do
            children.push_back(child.node_);
        while (child.nextSibling() == 0);
    }
    if (!isPermutation(order, children.size()))
        return -1;
    for (size_t k : order) {
        child.node_ = children[k];
        if (appendCopy(child, true) != 0)
            return -1;
    }
    return 0;
}
