#pragma once
// Parser-factory registries: for each polymorphic base B one registry maps
// the XML type key of an element ("namespace URI:type name") and the
// run-time type name of a class to the factory that reads and writes it.
// Static factory objects register while their library loads and unregister
// when it unloads.
//
// One registry per base across all libraries: the registry is a
// function-local static of a template, kept at default visibility and built
// with -fno-gnu-unique, so the dynamic linker binds every library to one
// copy (and dlclose still runs the destructors that unregister). A base that
// the framework owns instantiates its registry in libHNKFramework with
// HNK_INSTANTIATE_FACTORY_REGISTRY(Base) in one .cpp, so that the copy
// everyone binds to lives in the library that outlives the others.
#include "HNKAssert.h"
#include "HNKDefaultMap.h"
#include "HNKMessageIterator.h"
#include "Logger.h"

#include <boost/shared_ptr.hpp>

#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <typeinfo>

// A registry key "URI:type" (or "type" without a namespace) in its two parts,
// compared with the keys in place so a lookup per element builds no string.
struct HNKTypeKey {
    std::string_view uri, local;

    // <0, 0, >0 as the joined key sorts before, as, after `s`.
    int compare(const std::string& s) const
    {
        const std::string_view pieces[3] = {uri, uri.empty() ? std::string_view() : std::string_view(":"), local};
        size_t at = 0;
        for (const std::string_view& piece : pieces) {
            size_t n = std::min(piece.size(), s.size() - at);
            int c = std::char_traits<char>::compare(piece.data(), s.data() + at, n);
            if (c != 0)
                return c;
            if (n < piece.size())
                return 1;
            at += n;
        }
        return at < s.size() ? -1 : 0;
    }
    friend bool operator<(const HNKTypeKey& k, const std::string& s) { return k.compare(s) < 0; }
    friend bool operator<(const std::string& s, const HNKTypeKey& k) { return k.compare(s) > 0; }
};

template <class B, class BP = B>
class HNKDerivedParserFactory {
public:
    // Ordered by key; lookups by const char* need no temporary string.
    typedef std::map<std::string, HNKDerivedParserFactory*, std::less<>> FactoryMap;

    struct FactoryData {
        FactoryMap factories;                          // XML type key -> factory
        FactoryMap factoriesByType;                    // typeid(Derived).name() -> factory
        HNKDerivedParserFactory* defaultFactory = nullptr; // used when a lookup fails
    };

    virtual ~HNKDerivedParserFactory() {}
    // Creates the record from the element at the cursor; the caller owns `out`.
    virtual int read(const HNKMessageIterator& it, B*& out) = 0;
    // Stamps the element at the cursor with this factory's type and fills it.
    virtual int write(HNKMessageIterator& it, const B* obj) = 0;
    // A new default-constructed record of the factory's class.
    virtual boost::shared_ptr<B> createObject() const = 0;

    static FactoryMap& factories() { return factoryData().factories; }
    static FactoryMap& factoriesByType() { return factoryData().factoriesByType; }
    static HNKDerivedParserFactory* defaultFactory() { return factoryData().defaultFactory; }
    static FactoryData& factoryData() { return *factoryInternalData(); }
    // Created on first use, so registration order across units does not
    // matter; every factory keeps a copy, so it outlives the last factory.
    static const boost::shared_ptr<FactoryData>& factoryInternalData();
};

template <class B, class BP>
const boost::shared_ptr<typename HNKDerivedParserFactory<B, BP>::FactoryData>&
HNKDerivedParserFactory<B, BP>::factoryInternalData()
{
    static const boost::shared_ptr<FactoryData> data(new FactoryData);
    return data;
}

// Places the registry of `Base` (with the parser base equal to it) in the
// library whose .cpp holds this line.
#define HNK_INSTANTIATE_FACTORY_REGISTRY(Base) template class HNKDerivedParserFactory<Base, Base>
// In the base's header, after the class: users bind to that library's copy.
#define HNK_DECLARE_FACTORY_REGISTRY(Base) extern template class HNKDerivedParserFactory<Base, Base>

// Matches registry entries by factory pointer (unregistration never trusts
// the key).
template <class Factory>
class HNKIsFactoryEqual {
public:
    explicit HNKIsFactoryEqual(const Factory* factory) : factory_(factory) {}
    template <class Entry>
    bool operator()(const Entry& entry) const { return entry.second == factory_; }

private:
    const Factory* factory_;
};

// Longest registry key accepted; longer ones are programming errors.
const size_t kHNKMaxFactoryKeyLength = 512;

// The factory of one concrete class. Constructing it registers the class
// under its Writer's XML type key and under its run-time type name (each
// duplicate asserts; a second default factory asserts); destroying it
// unregisters both and clears the default if it was this one.
template <class Derived, class Base, class BaseParser, class Reader, class Writer>
class HNKDerivedParserFactoryT : public HNKDerivedParserFactory<Base, BaseParser> {
public:
    typedef HNKDerivedParserFactory<Base, BaseParser> Factory;
    typedef typename Factory::FactoryData FactoryData;

    explicit HNKDerivedParserFactoryT(bool isDefault = false)
    {
        HNK_ASSERT(Writer::getStrNSID() != nullptr);
        HNK_ASSERT(Writer::getStrTypeID() != nullptr);
        data_ = Factory::factoryInternalData();
        key_ = buildKey();
        HNK_ASSERT(key_.size() <= kHNKMaxFactoryKeyLength);
        FactoryData& d = *data_;
        // Checked before anything is inserted, so a failed registration
        // leaves the registry as it was.
        bool keyIsFree = d.factories.find(key_) == d.factories.end();
        if (!keyIsFree)
            Logger::put(1, "[HNKDerivedParserFactoryT] XML type '%s' registered twice", key_.c_str());
        HNK_ASSERT(keyIsFree);
        const char* typeName = typeid(Derived).name();
        bool classIsFree = d.factoriesByType.find(typeName) == d.factoriesByType.end();
        if (!classIsFree)
            Logger::put(1, "[HNKDerivedParserFactoryT] class '%s' registered twice", typeName);
        HNK_ASSERT(classIsFree);
        bool defaultIsFree = !isDefault || d.defaultFactory == nullptr;
        if (!defaultIsFree)
            Logger::put(1, "[HNKDerivedParserFactoryT] second default factory '%s'", key_.c_str());
        HNK_ASSERT(defaultIsFree);
        d.factories.insert(std::make_pair(key_, this));
        d.factoriesByType.insert(std::make_pair(std::string(typeName), this));
        if (isDefault)
            d.defaultFactory = this;
    }

    ~HNKDerivedParserFactoryT() override
    {
        FactoryData& d = *data_;
        if (d.defaultFactory == this)
            d.defaultFactory = nullptr;
        HNKIsFactoryEqual<Factory> isThis(this);
        auto byKey = std::find_if(d.factories.begin(), d.factories.end(), isThis);
        if (byKey != d.factories.end())
            d.factories.erase(byKey);
        auto byType = std::find_if(d.factoriesByType.begin(), d.factoriesByType.end(), isThis);
        if (byType != d.factoriesByType.end())
            d.factoriesByType.erase(byType);
        data_.reset();
    }

    HNKDerivedParserFactoryT(const HNKDerivedParserFactoryT&) = delete;
    HNKDerivedParserFactoryT& operator=(const HNKDerivedParserFactoryT&) = delete;

    int read(const HNKMessageIterator& it, Base*& out) override { return reader_(it, out); }

    int write(HNKMessageIterator& it, const Base* obj) override { return it.putObject(obj, writer_); }

    boost::shared_ptr<Base> createObject() const override
    {
        return boost::shared_ptr<Base>(HNKObjectCreator<Derived>::create());
    }

    // The XML type key this factory is registered under.
    const std::string& key() const { return key_; }

private:
    // "ns:type" from the string descriptors, else from the numeric ones
    // through HNKDefaultMap; no colon when there is no namespace.
    static std::string buildKey()
    {
        std::string key;
        if (*Writer::getStrTypeID() != '\0') {
            key = Writer::getStrNSID();
            if (!key.empty())
                key += ':';
            key += Writer::getStrTypeID();
        } else {
            const char* ns = HNKDefaultMap::findNSID(Writer::getNSID());
            if (*ns != '\0') {
                key = ns;
                key += ':';
            }
            key += HNKDefaultMap::findTypeID(Writer::getTypeID());
        }
        return key;
    }

    boost::shared_ptr<FactoryData> data_;
    std::string key_;
    HNKReaderPointerDataT<Derived, Reader> reader_;
    HNKWriterPointerDataT<Derived, Writer> writer_;
};

// ---- Polymorphic elements ----

// Reads an element through the registry of Base by its xsi:type key; an
// unknown key falls back to the default factory only when `useDefault`
// (else -1). On 0 `out` holds the new record; on failure it is untouched.
template <class Base, class BaseParser = Base>
class HNKReaderDerived {
public:
    typedef HNKDerivedParserFactory<Base, BaseParser> Factory;

    explicit HNKReaderDerived(bool useDefault = false) : useDefault_(useDefault) {}

    int operator()(const HNKMessageIterator& it, boost::shared_ptr<Base>& out) const
    {
        typename Factory::FactoryData& d = Factory::factoryData();
        Factory* factory = nullptr;
        HNKTypeKey key;
        auto found = it.getTypeName(key.uri, key.local) ? d.factories.find(key) : d.factories.find("");
        if (found != d.factories.end() && found->second)
            factory = found->second;
        else if (useDefault_ && d.defaultFactory)
            factory = d.defaultFactory;
        else
            return -1;
        Base* raw = nullptr;
        int status = factory->read(it, raw);
        if (status == 0)
            out = boost::shared_ptr<Base>(raw);
        return status;
    }

private:
    bool useDefault_;
};

// Writes `*p` through the factory registered for its run-time class, else
// through the default factory (as the base type), else -1. A null `p`
// throws std::bad_typeid: writers never hold null elements.
template <class Factory>
class HNKDerivedWrite {
public:
    template <class Base>
    int operator()(HNKMessageIterator& it, const Base* p) const
    {
        if (!p)
            throw std::bad_typeid();
        typename Factory::FactoryData& d = Factory::factoryData();
        // (measured once, not at every node of the map)
        auto found = d.factoriesByType.find(std::string_view(typeid(*p).name()));
        if (found != d.factoriesByType.end() && found->second)
            return found->second->write(it, p);
        if (d.defaultFactory)
            return d.defaultFactory->write(it, p);
        return -1;
    }
};

// Writes the record a shared pointer (or reference) holds through Write.
template <class Base, class BaseParser = Base,
          class Write = HNKDerivedWrite<HNKDerivedParserFactory<Base, BaseParser>>>
class HNKWriterDerived : public HNKWriterBase {
public:
    int operator()(HNKMessageIterator& it, const boost::shared_ptr<Base>& p) const { return Write()(it, p.get()); }
    int operator()(HNKMessageIterator& it, const Base& obj) const { return Write()(it, &obj); }
};

// A vector of shared pointers to polymorphic records, each item a child with
// the item ID. Constructed with (item ID, flags, useDefault).
template <class ID, class Base, class BaseParser = Base, template <class> class Data = HNKReaderListDataT>
class HNKReaderDerivedList : public HNKReaderListT<ID, HNKReaderDerived<Base, BaseParser>, Data> {
public:
    HNKReaderDerivedList(const ID& itemId, int flags, bool useDefault)
        : HNKReaderListT<ID, HNKReaderDerived<Base, BaseParser>, Data>(
              itemId, flags, HNKReaderDerived<Base, BaseParser>(useDefault))
    {
    }
};

// Writes each record of a vector of shared pointers as a child with the item
// ID, stamped with its own factory's type. Constructed with (item ID).
template <class ID, class Base, class BaseParser = Base, template <class> class Write = HNKDerivedWrite>
class HNKWriterDerivedList
    : public HNKWriterListT<HNKWriterIDT<ID, HNKWriterDerived<Base, BaseParser, Write<HNKDerivedParserFactory<Base, BaseParser>>>>> {
    typedef HNKWriterDerived<Base, BaseParser, Write<HNKDerivedParserFactory<Base, BaseParser>>> ItemWriter;

public:
    explicit HNKWriterDerivedList(const ID& itemId)
        : HNKWriterListT<HNKWriterIDT<ID, ItemWriter>>(HNKWriterIDT<ID, ItemWriter>(ItemWriter(), itemId))
    {
    }
};
