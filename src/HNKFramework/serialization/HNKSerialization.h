#pragma once
// Serialization templates over the message tree: a Reader or Writer functor
// wrapped to address a child element by ID, simple values as functors, lists
// and sets, heap-allocated records. Polymorphic elements and the parser
// factory registry are in HNKDerivedParserFactory.h.
//
// Functor convention: a Reader is `int operator()(const HNKMessageIterator&, X&) const`,
// a Writer `int operator()(HNKMessageIterator&, const X&) const` with the four
// static type descriptors of HNKWriterBase. Every status: 0 success, -1
// failure (a reader's or writer's own non-zero status is passed up), except
// HNKWriterListT, which returns 1 when it stopped at a failing item.
//
// Record authors, by example:
//   it.getValue("cpu_count", n);  it.putValue("cpu_count", n);        // simple fields
//   it.getObject(rec, X::Reader(), "tag");   it.putObject(rec, X::Writer(), "tag");
//   it.getObject(rec, X::Reader());          it.putObject(rec, X::Writer()); // this element
//   // set of strings under a wrapper, items with ID 1747, absent items tolerated:
//   it.getObject(set, HNKReaderListT<int, HNKStringReader, HNKReaderSetDataT>(1747, HNK_READER_ABSENCE_OK),
//                "offline_management_list");
//   it.putObject(set, HNKWriterListOf(HNKStringWriter(), 1747), "offline_management_list");
//   // records directly under the current element (no wrapper): the empty-ID forms
//   it.getObject(ips, HNKReaderListT<int, HNKIPAddress::Reader>(2047, HNK_READER_ABSENCE_OK));
//   it.putObject(ips, HNKWriterListOf(HNKIPAddress::Writer(), 2047));
//   // string-tag items: HNKReaderListT<std::string, Row::Reader>("vm_memory", HNK_READER_ABSENCE_OK),
//   //                   HNKWriterListOf(Row::Writer(), "vm_memory")
//   // polymorphic lists: HNKReaderDerivedList / HNKWriterDerivedList (HNKDerivedParserFactory.h)
#include "HNKAssert.h"
#include "HNKMessageIterator.h"
#include "HNKWriterBase.h"

#include <memory>
#include <string>
#include <type_traits>
#include <utility>

// Flags of ID readers and list readers. The ID reader keeps the inverted
// meaning (absence acceptable) internally.
enum HNKReaderFlags {
    HNK_READER_ABSENCE_OK = 0, // a missing element reads as 0, target untouched
    HNK_READER_REQUIRED = 1,   // a missing element is -1 (what getObject passes)
};

// Element IDs are numbers (int) or tags (std::string); 0 and "" are empty.
template <class ID>
class HNKIdT {
public:
    static_assert(std::is_same<ID, int>::value || std::is_same<ID, std::string>::value,
                  "element IDs are int or std::string");
    static const ID& getEmptyID()
    {
        static const ID emptyId = ID();
        return emptyId;
    }
    static bool isIdEmpty(const ID& id) { return id == getEmptyID(); }
};

// ---- Read and write a child by ID ----

// Reads the child with the ID through Reader; asserts a non-empty ID.
template <class ID, class Reader>
class HNKReaderIDT : public HNKIdT<ID> {
public:
    HNKReaderIDT(const Reader& reader, const ID& id, int flags = HNK_READER_REQUIRED)
        : reader_(reader), id_(id), absenceOk_(flags == HNK_READER_ABSENCE_OK)
    {
    }

    // Missing child: 0 when absence is acceptable, else -1. Otherwise the
    // reader's status; the cursor is back on the current element either way.
    template <class T>
    int operator()(const HNKMessageIterator& it, T& obj) const
    {
        HNK_ASSERT(!this->isIdEmpty(id_));
        if (it.descend(id_) != 0)
            return absenceOk_ ? 0 : -1;
        int status = reader_(it, obj);
        it.ascend();
        return status;
    }

private:
    Reader reader_;
    ID id_;
    bool absenceOk_;
};

template <class Reader>
HNKReaderIDT<int, Reader> HNKReaderID(const Reader& reader, int id, int flags)
{
    return HNKReaderIDT<int, Reader>(reader, id, flags);
}

template <class Reader>
HNKReaderIDT<std::string, Reader> HNKReaderID(const Reader& reader, const std::string& id, int flags)
{
    return HNKReaderIDT<std::string, Reader>(reader, id, flags);
}

// Appends a child with the ID and writes into it through putObject (so the
// child is stamped with Writer's type); asserts a non-empty ID. A non-empty
// secondary ID is applied to the child; no constructor here sets one.
template <class ID, class Writer, class SecondaryID = int>
class HNKWriterIDT : public HNKIdT<ID>, public HNKWriterBase {
public:
    HNKWriterIDT(const Writer& writer, const ID& id)
        : writer_(writer), id_(id), secondaryId_(HNKIdT<SecondaryID>::getEmptyID())
    {
    }

    template <class T>
    int operator()(HNKMessageIterator& it, const T& obj) const
    {
        HNK_ASSERT(!this->isIdEmpty(id_));
        if (it.createChild(id_) != 0)
            return -1;
        int status = it.putObject(obj, writer_);
        if (!HNKIdT<SecondaryID>::isIdEmpty(secondaryId_))
            it.applySecondaryID(secondaryId_);
        it.ascend();
        return status;
    }

private:
    Writer writer_;
    ID id_;
    SecondaryID secondaryId_;
};

// ---- Simple values ----

// Reads the value of the element under the cursor (ID 0) with Get.
template <class T, int (HNKMessageIterator::*Get)(int, T&) const>
class HNKReaderSimple {
public:
    int operator()(const HNKMessageIterator& it, T& value) const { return (it.*Get)(0, value); }
};

// Writes the value of the element under the cursor (ID 0) with Put; Arg is
// the parameter type of Put, e.g. const std::string&.
template <class Arg, int (HNKMessageIterator::*Put)(int, Arg)>
class HNKWriterSimple : public HNKWriterBase {
public:
    int operator()(HNKMessageIterator& it, Arg value) const { return (it.*Put)(0, value); }
};

typedef HNKReaderSimple<std::string, &HNKMessageIterator::getValue> HNKStringReader;
typedef HNKReaderSimple<std::string, &HNKMessageIterator::getValueBase64> HNKBase64Reader;
typedef HNKReaderSimple<int, &HNKMessageIterator::getValue> HNKIntReader;
typedef HNKReaderSimple<bool, &HNKMessageIterator::getValue> HNKBoolReader;
typedef HNKWriterSimple<const std::string&, &HNKMessageIterator::putValue> HNKStringWriter;
typedef HNKWriterSimple<const std::string&, &HNKMessageIterator::putValueBase64> HNKBase64Writer;
typedef HNKWriterSimple<const int&, &HNKMessageIterator::putValue> HNKIntWriter;
typedef HNKWriterSimple<const bool&, &HNKMessageIterator::putValue> HNKBoolWriter;

// ---- Lists and sets ----

// Item step of a vector: appends an empty element and reads into it in
// place; a failed read removes it again (-1).
template <class ItemReader>
class HNKReaderListDataT {
public:
    explicit HNKReaderListDataT(const ItemReader& reader = ItemReader()) : reader_(reader) {}

    template <class Vector>
    int operator()(const HNKMessageIterator& it, Vector& items) const
    {
        items.emplace_back();
        if (reader_(it, items.back()) != 0) {
            items.pop_back();
            return -1;
        }
        return 0;
    }

private:
    ItemReader reader_;
};

// Item step of a set: reads a fresh value and inserts it; a duplicate
// collapses silently and still succeeds; a failed read is -1.
template <class ItemReader>
class HNKReaderSetDataT {
public:
    explicit HNKReaderSetDataT(const ItemReader& reader = ItemReader()) : reader_(reader) {}

    template <class Set>
    int operator()(const HNKMessageIterator& it, Set& items) const
    {
        typename Set::value_type value;
        if (reader_(it, value) != 0)
            return -1;
        items.insert(std::move(value));
        return 0;
    }

private:
    ItemReader reader_;
};

// Reads every child with the item ID of the current element into a
// container, in document order. No item: 0 when absence is acceptable, else
// -1 (so an empty list under a present wrapper read with getObject and a tag
// fails unless flags are HNK_READER_ABSENCE_OK). The first failing item stops
// the read with its status; items read before it stay.
template <class ID, class ItemReader, template <class> class Data = HNKReaderListDataT>
class HNKReaderListT : public HNKIdT<ID> {
public:
    explicit HNKReaderListT(const ID& itemId, int flags = HNK_READER_REQUIRED,
                            const ItemReader& reader = ItemReader())
        : itemId_(itemId), absenceOk_(flags == HNK_READER_ABSENCE_OK), data_(reader)
    {
    }

    template <class Container>
    int operator()(const HNKMessageIterator& it, Container& items) const
    {
        HNK_ASSERT(!this->isIdEmpty(itemId_));
        if (it.firstChild(itemId_) != 0)
            return absenceOk_ ? 0 : -1;
        int status;
        do {
            status = data_(it, items);
        } while (status == 0 && it.nextSibling(itemId_) == 0);
        it.ascend();
        return status;
    }

private:
    ID itemId_;
    bool absenceOk_;
    Data<ItemReader> data_;
};

// Writes one container element through the item's ID writer.
template <class ItemWriterID>
class HNKWriterListItemT {
public:
    explicit HNKWriterListItemT(const ItemWriterID& writer) : writer_(writer) {}

    template <class T>
    int operator()(HNKMessageIterator& it, const T& item) const { return writer_(it, item); }

private:
    ItemWriterID writer_;
};

// Writes each element of a container, in its order, as a new child through
// an HNKWriterIDT. 0 when all were written (an empty container writes
// nothing); 1 when it stopped at the first failing item, the children
// written before it staying in the tree.
template <class ItemWriterID>
class HNKWriterListT : public HNKWriterBase {
public:
    explicit HNKWriterListT(const ItemWriterID& writer) : item_(writer) {}

    template <class Container>
    int operator()(HNKMessageIterator& it, const Container& items) const
    {
        for (const auto& item : items)
            if (item_(it, item) != 0)
                return 1;
        return 0;
    }

private:
    HNKWriterListItemT<ItemWriterID> item_;
};

// A list writer whose items are written with `writer`, each as a child with
// the item ID.
template <class Writer>
HNKWriterListT<HNKWriterIDT<int, Writer>> HNKWriterListOf(const Writer& writer, int itemId)
{
    return HNKWriterListT<HNKWriterIDT<int, Writer>>(HNKWriterIDT<int, Writer>(writer, itemId));
}

template <class Writer>
HNKWriterListT<HNKWriterIDT<std::string, Writer>> HNKWriterListOf(const Writer& writer, const std::string& itemTag)
{
    return HNKWriterListT<HNKWriterIDT<std::string, Writer>>(HNKWriterIDT<std::string, Writer>(writer, itemTag));
}

// ---- Records on the heap ----

// How HNKReaderPointerDataT and factories create a record; specialise it for
// a record without a default constructor.
template <class Derived>
struct HNKObjectCreator {
    static Derived* create() { return new Derived(); }
};

// Creates a Derived and reads it with Reader: on 0 `out` gets the new object
// (the caller owns it); on failure it is deleted, -1, `out` unchanged.
template <class Derived, class Reader>
class HNKReaderPointerDataT {
public:
    template <class Base>
    int operator()(const HNKMessageIterator& it, Base*& out) const
    {
        std::unique_ptr<Derived> obj(HNKObjectCreator<Derived>::create());
        if (!obj || reader_(it, *obj) != 0)
            return -1;
        out = obj.release();
        return 0;
    }

private:
    Reader reader_;
};

// Writes a Base* that must be a Derived with Writer: -1 for null or for
// another dynamic type; otherwise Writer's status. Carries Writer's type.
template <class Derived, class Writer>
class HNKWriterPointerDataT {
public:
    static const char* getStrNSID() { return Writer::getStrNSID(); }
    static const char* getStrTypeID() { return Writer::getStrTypeID(); }
    static unsigned getNSID() { return Writer::getNSID(); }
    static unsigned getTypeID() { return Writer::getTypeID(); }

    template <class Base>
    int operator()(HNKMessageIterator& it, const Base* obj) const
    {
        const Derived* derived = dynamic_cast<const Derived*>(obj);
        if (!derived)
            return -1;
        return writer_(it, *derived);
    }

private:
    Writer writer_;
};

// ---- Member templates of HNKMessageIterator ----

template <class T, class Reader>
int HNKMessageIterator::getObject(T& obj, const Reader& reader) const
{
    return reader(*this, obj);
}

template <class T, class Reader>
int HNKMessageIterator::getObject(T& obj, const Reader& reader, int id) const
{
    if (HNKIdT<int>::isIdEmpty(id))
        return reader(*this, obj);
    return HNKReaderID(reader, id, HNK_READER_REQUIRED)(*this, obj);
}

template <class T, class Reader>
int HNKMessageIterator::getObject(T& obj, const Reader& reader, const std::string& id) const
{
    if (HNKIdT<std::string>::isIdEmpty(id))
        return reader(*this, obj);
    return HNKReaderID(reader, id, HNK_READER_REQUIRED)(*this, obj);
}

template <class T, class Writer>
int HNKMessageIterator::putObject(const T& obj, const Writer& writer)
{
    return putObjectInternal(obj, writer);
}

template <class T, class Writer>
int HNKMessageIterator::putObject(const T& obj, const Writer& writer, int id)
{
    if (HNKIdT<int>::isIdEmpty(id))
        return putObjectInternal(obj, writer);
    if (descend(id) == 0)
        removeCurrent();
    return HNKWriterIDT<int, Writer>(writer, id)(*this, obj);
}

template <class T, class Writer>
int HNKMessageIterator::putObject(const T& obj, const Writer& writer, const std::string& id)
{
    if (HNKIdT<std::string>::isIdEmpty(id))
        return putObjectInternal(obj, writer);
    if (descend(id) == 0)
        removeCurrent();
    return HNKWriterIDT<std::string, Writer>(writer, id)(*this, obj);
}

template <class T, class Writer>
int HNKMessageIterator::putObjectInternal(const T& obj, const Writer& writer)
{
    HNK_ASSERT(writer.getStrNSID() != nullptr);
    HNK_ASSERT(writer.getStrTypeID() != nullptr);
    bool namespaceSet = false;
    if (writer.getNSID() != 0) {
        setNamespace(writer.getNSID());
        namespaceSet = true;
    } else if (*writer.getStrNSID() != '\0') {
        setNamespace(writer.getStrNSID());
        namespaceSet = true;
    }
    // Numeric type IDs up to 100 are deliberately never stamped by number.
    if (writer.getTypeID() > 100)
        setType(writer.getNSID(), writer.getTypeID());
    else if (*writer.getStrTypeID() != '\0')
        setType(writer.getStrTypeID(), writer.getStrNSID());
    int status = writer(*this, obj);
    if (namespaceSet)
        setNamespace(0u);
    return status;
}
