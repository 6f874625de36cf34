#pragma once
// The framework's cursor over a message tree: a namespaced XML element tree.
//
// A cursor shares its document with its copies; each copy has its own
// position. Readers take the cursor const: the position is mutable state, so
// a reader moves down and must move back up (ascend) before it returns.
// One cursor (and the document behind it) is used by one thread at a time.
// Distinct documents may share one element tree (shareSubtree) and be used
// on different threads: the tree is then read-only, and a document about to
// change it takes a copy of its own first, so neither ever sees the other's
// changes.
//
// Element IDs are either numeric (the framework's element dictionary,
// HNKElementDictionary, gives the element name) or string tags. ID 0 and the
// empty tag address the element under the cursor itself. Child elements are
// matched by local name: a prefix on an element name is ignored.
//
// Status convention: 0 success, -1 failure. Absence is not an error message;
// an unknown numeric ID, an invalid tag or value, a malformed number and a
// parse failure also set getErrorMessage().
#include <boost/shared_ptr.hpp>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace pugi {
struct xml_node_struct;
class xml_document;
} // namespace pugi

class HNKMessageIterator {
public:
    // Deepest element nesting fromXML accepts; deeper text is refused.
    static const int kMaxDepth = 1024;

    // No document: every operation fails until fromXML succeeds.
    HNKMessageIterator();
    // A new document holding one empty root element; the cursor is on it.
    explicit HNKMessageIterator(const std::string& rootName);
    virtual ~HNKMessageIterator();
    // Copies share the document; the copy starts at the same position.
    HNKMessageIterator(const HNKMessageIterator&);
    HNKMessageIterator& operator=(const HNKMessageIterator&);

    // ---- Text form ----
    // Replaces this cursor's document by the parsed text; cursor on the root.
    // -1 (document unchanged, getErrorMessage() says what and where: byte
    // offset, line and column in characters) on text that is not well-formed
    // XML 1.0 with namespaces (HNKXmlTextCheck lists what is refused), an
    // XML declaration other than version 1.0 in UTF-8, an empty document,
    // more than one root, text outside the root, a DOCTYPE, nesting deeper
    // than kMaxDepth, or an undeclared namespace prefix (element or attribute
    // names, xsi:type values). Other cursors keep the old document.
    int fromXML(const std::string& text);
    // The whole document, compact, without XML declaration; "" without one.
    std::string toXML() const;
    // As toXML(), indented by two blanks per level when `indent` is true.
    std::string toXML(bool indent) const;

    // ---- Position ----
    // True when the cursor is on an element of a document.
    bool isValid() const;
    // A new cursor on the root element of the same (shared) document.
    HNKMessageIterator root() const;
    // Local name of the element under the cursor; "" when not valid.
    const char* currentName() const;

    // Moves onto the first child with this ID; 0 if moved, -1 (cursor stays)
    // when there is none. ID 0 / "" never moves and returns -1.
    virtual int descend(int id) const;
    virtual int descend(const char* tag) const;
    int descend(const std::string& tag) const { return descend(tag.c_str()); }
    // Appends a new empty child (O(1)) and moves onto it; -1 for ID 0 / "",
    // an unknown numeric ID or a tag that is not a valid XML name.
    virtual int createChild(int id);
    virtual int createChild(const char* tag);
    int createChild(const std::string& tag) { return createChild(tag.c_str()); }
    // Moves to the parent element; stays on the root element.
    virtual void ascend() const;
    // Deletes the element under the cursor and moves to its parent. The root
    // element is never removed (no-op there).
    virtual void removeCurrent();
    // Moves onto the first child with this ID; 0 if found, -1 otherwise.
    virtual int firstChild(int id) const;
    virtual int firstChild(const char* tag) const;
    int firstChild(const std::string& tag) const { return firstChild(tag.c_str()); }
    // Moves onto the next sibling with this ID; -1 (cursor stays) at the end.
    virtual int nextSibling(int id) const;
    virtual int nextSibling(const char* tag) const;
    int nextSibling(const std::string& tag) const { return nextSibling(tag.c_str()); }
    // Moves onto the first child element / the next sibling element, whatever
    // its name; -1 (cursor stays) when there is none.
    int firstChild() const;
    int nextSibling() const;
    // True when a child with this ID exists; the cursor does not move.
    bool hasChild(int id) const;
    bool hasChild(const char* tag) const;
    bool hasChild(const std::string& tag) const { return hasChild(tag.c_str()); }
    // Removes the first child with this ID: 0 if one was removed, -1 if none.
    int removeChild(int id);
    int removeChild(const char* tag);
    int removeChild(const std::string& tag) { return removeChild(tag.c_str()); }

    // ---- Namespace and type stamps ----
    // The namespace used by setType when it is given none; 0 / null / ""
    // restores the default (no namespace). Element names stay unqualified.
    virtual void setNamespace(unsigned nsid);
    virtual void setNamespace(const char* ns);
    void setNamespace(int nsid) { setNamespace(static_cast<unsigned>(nsid)); } // setNamespace(0)
    const std::string& getNamespace() const { return namespace_; }
    // Stamps the element: xsi:type="p:type" with p bound to the namespace
    // (declared on the element unless a binding is in scope). An element that
    // already has an xsi:type keeps it: the outermost writer's stamp stays.
    // Numeric IDs are named through HNKDefaultMap; nsid 0 / null ns use the
    // current namespace; an empty namespace stamps an unprefixed name.
    virtual void setType(unsigned nsid, unsigned typeId);
    virtual void setType(const char* type, const char* ns);
    // Registry key of the element's xsi:type: "URI:type", with the prefix
    // resolved through in-scope xmlns declarations (so any prefix reads the
    // same). An unprefixed type takes the default namespace when one is in
    // scope, else the key is the bare type name. "" when not stamped.
    virtual std::string getTypeName() const;
    // The same key in its two parts, without building it: `uri` (empty when
    // the key is the bare type name) and `local`, views into the tree valid
    // until it changes. False when not stamped.
    bool getTypeName(std::string_view& uri, std::string_view& local) const;
    // Records a secondary ID as the attribute secondary_id="N" of the element.
    virtual void applySecondaryID(int id);

    // ---- Values ----
    // The text of the child with this ID (ID 0 / "": the element itself), its
    // text and CDATA pieces joined. 0 if present and converted; -1 otherwise,
    // `out` untouched. Numbers must
    // be the whole text (surrounding XML blanks allowed) and in range; bool
    // accepts 0, 1, true and false.
    virtual int getValue(int id, std::string& out) const;
    virtual int getValue(int id, int& out) const;
    virtual int getValue(int id, unsigned& out) const;
    virtual int getValue(int id, long& out) const;
    virtual int getValue(int id, unsigned long& out) const;
    virtual int getValue(int id, long long& out) const;
    virtual int getValue(int id, unsigned long long& out) const;
    virtual int getValue(int id, bool& out) const;
    virtual int getValue(const char* tag, std::string& out) const;
    virtual int getValue(const char* tag, int& out) const;
    virtual int getValue(const char* tag, unsigned& out) const;
    virtual int getValue(const char* tag, long& out) const;
    virtual int getValue(const char* tag, unsigned long& out) const;
    virtual int getValue(const char* tag, long long& out) const;
    virtual int getValue(const char* tag, unsigned long long& out) const;
    virtual int getValue(const char* tag, bool& out) const;
    template <class T>
    int getValue(const std::string& tag, T& out) const { return getValue(tag.c_str(), out); }

    // Makes `value` the whole text of the first child with this ID, appending
    // the child when there is none (ID 0 / "": the element itself). Numbers are written in
    // decimal, bool as 0 or 1. -1 (nothing changed) for an unknown ID, an
    // invalid tag, or a string that is not UTF-8 or holds characters XML 1.0
    // cannot carry (NUL and the other control characters but tab, LF, CR).
    virtual int putValue(int id, const std::string& value);
    virtual int putValue(int id, const char* value); // so a literal never becomes a bool
    virtual int putValue(int id, const int& value);
    virtual int putValue(int id, const unsigned& value);
    virtual int putValue(int id, const long& value);
    virtual int putValue(int id, const unsigned long& value);
    virtual int putValue(int id, const long long& value);
    virtual int putValue(int id, const unsigned long long& value);
    virtual int putValue(int id, const bool& value);
    virtual int putValue(const char* tag, const std::string& value);
    virtual int putValue(const char* tag, const char* value);
    virtual int putValue(const char* tag, const int& value);
    virtual int putValue(const char* tag, const unsigned& value);
    virtual int putValue(const char* tag, const long& value);
    virtual int putValue(const char* tag, const unsigned long& value);
    virtual int putValue(const char* tag, const long long& value);
    virtual int putValue(const char* tag, const unsigned long long& value);
    virtual int putValue(const char* tag, const bool& value);
    template <class T>
    int putValue(const std::string& tag, const T& value) { return putValue(tag.c_str(), value); }

    // The text of the child decoded from Base64; -1 when absent or not Base64.
    virtual int getValueBase64(int id, std::string& out) const;
    virtual int getValueBase64(const char* tag, std::string& out) const;
    int getValueBase64(const std::string& tag, std::string& out) const
    {
        return getValueBase64(tag.c_str(), out);
    }
    // Stores the value Base64-encoded, as putValue does with text.
    virtual int putValueBase64(int id, const std::string& value);
    virtual int putValueBase64(const char* tag, const std::string& value);
    int putValueBase64(const std::string& tag, const std::string& value)
    {
        return putValueBase64(tag.c_str(), value);
    }

    // ---- Subtrees (property bags) ----
    // A new, independent document holding a deep copy of the element under
    // the cursor, with the namespace bindings it inherited declared on its
    // root; the new cursor is on that root. Invalid when this one is.
    HNKMessageIterator cloneSubtree() const;
    // The same as cloneSubtree for every observer, without copying now when
    // the cursor is on the outermost element: the new document shares the
    // tree until either side changes it, and the side that changes it first
    // changes a copy of its own. Elsewhere it is cloneSubtree.
    HNKMessageIterator shareSubtree() const;
    // Appends deep copies of all children of `source`'s current element to
    // the element under this cursor, in order; bindings the copies relied on
    // are declared on them. 0 on success, -1 when either cursor is invalid.
    int appendChildrenCopy(const HNKMessageIterator& source);
    // Appends a deep copy of `source`'s current element (not the root of this
    // cursor's own ancestry) as the last child of the element under this
    // cursor, declaring on the copy the bindings it inherited and that are
    // not in scope here. The cursor does not move. -1 when either is invalid
    // or the source element is this element or one of its ancestors.
    int appendCopy(const HNKMessageIterator& source);
    // The same as appendCopy for every observer, without copying the content
    // of an element with element children from another tree now: the new
    // child holds its name and attributes, and its content is copied in when
    // anyone looks inside this document or changes it; until then toXML
    // writes it straight from the source, whose tree stays unchanged (a
    // change through its own cursors goes to a copy of their own).
    int appendLinked(const HNKMessageIterator& source);
    // appendLinked of every element child of `source`'s current element, in
    // the order `order` gives (indices in childNames order, each once).
    // Children a writer has just made are passed on as written, without
    // being built as elements on either side. -1 as appendLinked, or when
    // `order` is not such a permutation (nothing appended then).
    int appendChildrenLinked(const HNKMessageIterator& source, const std::vector<size_t>& order);
    // The local names of the element children of the element under the
    // cursor, in order, without building written content as elements; the
    // views hold until the document changes. -1 when not valid.
    int childNames(std::vector<std::string_view>& names) const;

    // ---- Typed objects (HNKSerialization.h defines these) ----
    // Runs reader(*this, obj) on the element under the cursor.
    template <class T, class Reader>
    int getObject(T& obj, const Reader& reader) const;
    // Reads the child with this ID with `reader`; -1 when it is missing.
    template <class T, class Reader>
    int getObject(T& obj, const Reader& reader, int id) const;
    template <class T, class Reader>
    int getObject(T& obj, const Reader& reader, const std::string& id) const;
    // Stamps the current element with the writer's type and runs the writer.
    template <class T, class Writer>
    int putObject(const T& obj, const Writer& writer);
    // Replaces the child with this ID (removes an existing one, appends a new
    // one) and writes obj into it, stamped with the writer's type.
    template <class T, class Writer>
    int putObject(const T& obj, const Writer& writer, int id);
    template <class T, class Writer>
    int putObject(const T& obj, const Writer& writer, const std::string& id);
    // Stamps namespace and type of the writer on the current element, runs
    // the writer, then restores the default namespace; the writer's status.
    template <class T, class Writer>
    int putObjectInternal(const T& obj, const Writer& writer);

private:
    pugi::xml_node_struct* findChild(int id) const;
    pugi::xml_node_struct* findChild(const char* tag) const;
    pugi::xml_node_struct* target(int id) const;
    pugi::xml_node_struct* target(const char* tag) const;
    template <class ID, class T>
    int getNumber(ID id, T& out) const;
    // `plain`: the value is known to hold only characters XML carries.
    template <class ID>
    int putText(ID id, const char* value, size_t size, bool plain = false);
    template <class ID, class T>
    int putNumber(ID id, T value);
    template <class ID>
    int getBase64(ID id, std::string& out) const;

    struct Tree;
    struct Document;
    struct Caches;
    struct Draft;
    // A cursor inside a draft (see Draft) is on a written element that has
    // no node yet; every operation but the writes a draft records first
    // turns the draft into nodes (real()). `looked`: before looking inside
    // the element under the cursor.
    void real() const;
    void looked() const;
    // The element under the cursor can take its new content as a draft.
    bool draftable() const;
    // The draft new content under the cursor goes to, or nullptr for nodes.
    Draft* draftHere();
    // This cursor leaves the draft it is in, as if it ascended to its host.
    void leaveDraft() const;
    // The first element child of the current element with this local name,
    // through this cursor's child index.
    pugi::xml_node_struct* indexedChild(const char* tag) const;
    // After this cursor appended element `child` under `parent`.
    void noteCreated(pugi::xml_node_struct* parent, pugi::xml_node_struct* child);
    // createChild's common end: appends element `name` of `length` bytes
    // (checked, the tree already this document's own) to the draft or the
    // nodes and moves there.
    __attribute__((visibility("hidden"))) int appendElement(const char* name, size_t length);
    // removeChild's common end: removes child element `c` (nullptr: -1) of
    // the element under the cursor, the tree already this document's own.
    __attribute__((visibility("hidden"))) int removeElement(pugi::xml_node_struct* c);
    // This cursor's caches, made valid for the scope of element `scope`.
    Caches& scopeCache(pugi::xml_node_struct* scope) const;
    // URI bound to a prefix at element `el` ("" for an undeclared default
    // namespace; nullptr when unbound), through scopeCache unless `el`
    // `declares` prefixes itself.
    const char* resolvePrefix(pugi::xml_node_struct* el, bool declares, const char* prefix, size_t len) const;
    // Joins `doc`'s list of cursors (leaving the one it was on).
    void attach(const boost::shared_ptr<Document>& doc);
    void detach();
    // The tree, made this document's own, before a change (`removal`: one
    // that deletes elements).
    pugi::xml_document& changing(bool removal = false);
    // Copies the content of linked elements in (appendLinked) before anyone
    // looks inside them.
    void settled() const;
    int appendCopy(const HNKMessageIterator& source, bool link);
    // appendChildrenLinked without building anything: the children of a
    // written source element join this element's draft as written. False
    // (nothing done) when that cannot be shown to mean the same.
    __attribute__((visibility("hidden"))) bool spliceDraft(const HNKMessageIterator& source,
                                                            const std::vector<size_t>& order);
    // toXML while linked elements are pending.
    std::string linkedXML() const;

    boost::shared_ptr<Document> doc_;
    mutable pugi::xml_node_struct* node_;
    std::string namespace_;
    // The other cursors of the same document.
    HNKMessageIterator* prevInDoc_ = nullptr;
    HNKMessageIterator* nextInDoc_ = nullptr;
    // Lookup caches of this cursor alone (never copied or shared, so other
    // cursors on other threads never see them); checked against the tree's
    // change counters before each use.
    mutable std::unique_ptr<Caches> caches_;
    mutable Draft* draft_ = nullptr;
};

#include "HNKSerialization.h"
