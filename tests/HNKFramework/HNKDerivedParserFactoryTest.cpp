#include "HNKDerivedParserFactory.h"

#include "HNKCompare.h"
#include "HNKDefaultMap.h"
#include "HNKErrorMessage.h"
#include "HNKFramework/XmlLintCheck.h"
#include "HNKSerialization.h"

#include "tools/MessageTestSupport.h"

#include <gtest/gtest.h>

#include <boost/shared_ptr.hpp>

#include <string>
#include <typeinfo>
#include <vector>

namespace {

const char kNs[] = "urn:test:zoo";

// A small polymorphic family: Animal is its own default; Dog and Grumpy have
// factories; Fish has none and is written as an Animal.
struct Animal {
    virtual ~Animal() {}
    std::string name;
    virtual int compare(const Animal& other) const { return ::compare(name, other.name); }

    struct Reader {
        int operator()(const HNKMessageIterator& it, Animal& a) const { return it.getValue("name", a.name); }
    };
    struct Writer : HNKWriterBase {
        static const char* getStrNSID() { return kNs; }
        static const char* getStrTypeID() { return "animal"; }
        int operator()(HNKMessageIterator& it, const Animal& a) const { return it.putValue("name", a.name); }
    };
};

struct Dog : Animal {
    int barks = 0;
    int compare(const Animal& other) const override
    {
        int c = Animal::compare(other);
        if (c != 0)
            return c;
        const Dog* d = dynamic_cast<const Dog*>(&other);
        return d ? ::compare(barks, d->barks) : -1;
    }

    struct Reader {
        int operator()(const HNKMessageIterator& it, Dog& d) const
        {
            if (it.getObject(static_cast<Animal&>(d), Animal::Reader()) != 0)
                return -1;
            return it.getValue("barks", d.barks);
        }
    };
    struct Writer : HNKWriterBase {
        static const char* getStrNSID() { return kNs; }
        static const char* getStrTypeID() { return "dog"; }
        int operator()(HNKMessageIterator& it, const Dog& d) const
        {
            // The base writer stamps "animal" on the same element: the dog
            // stamp, written first, must stay.
            if (it.putObject(static_cast<const Animal&>(d), Animal::Writer()) != 0)
                return -1;
            return it.putValue("barks", d.barks);
        }
    };
};

struct Grumpy : Animal {
    struct Writer : HNKWriterBase {
        static const char* getStrNSID() { return kNs; }
        static const char* getStrTypeID() { return "grumpy"; }
        int operator()(HNKMessageIterator&, const Grumpy&) const { return -1; }
    };
};

struct Fish : Animal {};

HNKDerivedParserFactoryT<Animal, Animal, Animal, Animal::Reader, Animal::Writer> factoryAnimal(true);
HNKDerivedParserFactoryT<Dog, Animal, Animal, Dog::Reader, Dog::Writer> factoryDog(false);
HNKDerivedParserFactoryT<Grumpy, Animal, Animal, Animal::Reader, Grumpy::Writer> factoryGrumpy(false);

typedef HNKDerivedParserFactory<Animal, Animal> AnimalFactory;
typedef std::vector<boost::shared_ptr<Animal>> AnimalList;

// A family without a default factory.
struct Vehicle {
    virtual ~Vehicle() {}
    struct Reader {
        int operator()(const HNKMessageIterator&, Vehicle&) const { return 0; }
    };
};
struct Car : Vehicle {
    struct Writer : HNKWriterBase {
        static const char* getStrTypeID() { return "car"; } // no namespace
        int operator()(HNKMessageIterator&, const Car&) const { return 0; }
    };
};
struct Bike : Vehicle {};
HNKDerivedParserFactoryT<Car, Vehicle, Vehicle, Vehicle::Reader, Car::Writer> factoryCar(false);

std::string zoo(const std::string& items)
{
    return std::string("<zoo xmlns:z='") + kNs + "' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'>" +
           "<animals>" + items + "</animals></zoo>";
}

boost::shared_ptr<Animal> dog(const std::string& name, int barks)
{
    boost::shared_ptr<Dog> d(new Dog);
    d->name = name;
    d->barks = barks;
    return d;
}

boost::shared_ptr<Animal> animal(const std::string& name)
{
    boost::shared_ptr<Animal> a(new Animal);
    a->name = name;
    return a;
}

// ---- Registration ----

TEST(HNKDerivedParserFactoryTest, StaticFactoriesRegisterUnderNamespaceColonTypeName)
{
    EXPECT_EQ(std::string(kNs) + ":dog", factoryDog.key());
    auto found = AnimalFactory::factories().find(std::string(kNs) + ":dog");
    ASSERT_NE(AnimalFactory::factories().end(), found);
    EXPECT_EQ(&factoryDog, found->second);
    EXPECT_EQ(&factoryDog, AnimalFactory::factoriesByType()[typeid(Dog).name()]);
    EXPECT_EQ(&factoryAnimal, AnimalFactory::defaultFactory());
    EXPECT_EQ(&AnimalFactory::factoryData(), AnimalFactory::factoryInternalData().get());
    EXPECT_EQ(3u, AnimalFactory::factories().size());
}

TEST(HNKDerivedParserFactoryTest, TypeWithoutNamespaceRegistersUnderItsBareName)
{
    EXPECT_EQ("car", factoryCar.key());
    EXPECT_EQ(nullptr, (HNKDerivedParserFactory<Vehicle, Vehicle>::defaultFactory()));
}

struct Gadget {
    virtual ~Gadget() {}
    struct Reader {
        int operator()(const HNKMessageIterator&, Gadget&) const { return 0; }
    };
    struct Writer : HNKWriterBase {
        static unsigned getNSID() { return HNK_NS_DEVICES; }
        static unsigned getTypeID() { return HNK_TYPE_COMMON_DEVICE; }
        int operator()(HNKMessageIterator&, const Gadget&) const { return 0; }
    };
};

TEST(HNKDerivedParserFactoryTest, NumericWriterRegistersUnderDefaultMapNames)
{
    HNKDerivedParserFactoryT<Gadget, Gadget, Gadget, Gadget::Reader, Gadget::Writer> factory(false);
    EXPECT_EQ(std::string(HNKDefaultMap::findNSID(HNK_NS_DEVICES)) + ":" +
                  HNKDefaultMap::findTypeID(HNK_TYPE_COMMON_DEVICE),
              factory.key());
    // Written through the factory, the element carries the same key.
    HNKMessageIterator it("r");
    Gadget g;
    ASSERT_EQ(0, factory.write(it, &g));
    EXPECT_EQ(factory.key(), it.getTypeName());
}

struct Puppy : Dog {};
struct PuppyAsDogWriter : Dog::Writer {}; // claims "dog" again

TEST(HNKDerivedParserFactoryTest, RegisteringTwoFactoriesForOneTypeAssertsAndChangesNothing)
{
    size_t before = AnimalFactory::factories().size();
    typedef HNKDerivedParserFactoryT<Puppy, Animal, Animal, Dog::Reader, PuppyAsDogWriter> Duplicate;
    EXPECT_THROW(Duplicate duplicate(false), HNKAssertionFailure);
    EXPECT_EQ(before, AnimalFactory::factories().size());
    EXPECT_EQ(before, AnimalFactory::factoriesByType().size());
    EXPECT_EQ(&factoryDog, AnimalFactory::factories()[std::string(kNs) + ":dog"]);
    EXPECT_EQ(AnimalFactory::factoriesByType().end(), AnimalFactory::factoriesByType().find(typeid(Puppy).name()));
}

struct DogUnderOtherName : Dog::Writer {
    static const char* getStrTypeID() { return "dog_again"; }
};

TEST(HNKDerivedParserFactoryTest, RegisteringOneClassTwiceAsserts)
{
    size_t before = AnimalFactory::factories().size();
    typedef HNKDerivedParserFactoryT<Dog, Animal, Animal, Dog::Reader, DogUnderOtherName> SecondDog;
    EXPECT_THROW(SecondDog second(false), HNKAssertionFailure);
    EXPECT_EQ(before, AnimalFactory::factories().size());
}

struct Cat : Animal {
    struct Writer : Animal::Writer {
        static const char* getStrTypeID() { return "cat"; }
    };
};

TEST(HNKDerivedParserFactoryTest, SecondDefaultFactoryAsserts)
{
    size_t before = AnimalFactory::factories().size();
    typedef HNKDerivedParserFactoryT<Cat, Animal, Animal, Animal::Reader, Cat::Writer> CatFactory;
    EXPECT_THROW(CatFactory cat(true), HNKAssertionFailure);
    EXPECT_EQ(before, AnimalFactory::factories().size());
    EXPECT_EQ(&factoryAnimal, AnimalFactory::defaultFactory());
}

TEST(HNKDerivedParserFactoryTest, DestroyedFactoryFreesItsKeyAndClass)
{
    const std::string key = std::string(kNs) + ":cat";
    {
        HNKDerivedParserFactoryT<Cat, Animal, Animal, Animal::Reader, Cat::Writer> cat(false);
        EXPECT_EQ(1u, AnimalFactory::factories().count(key));
        EXPECT_EQ(1u, AnimalFactory::factoriesByType().count(typeid(Cat).name()));
    }
    EXPECT_EQ(0u, AnimalFactory::factories().count(key));
    EXPECT_EQ(0u, AnimalFactory::factoriesByType().count(typeid(Cat).name()));
    // The type name is free again.
    HNKDerivedParserFactoryT<Cat, Animal, Animal, Animal::Reader, Cat::Writer> again(false);
    EXPECT_EQ(&again, AnimalFactory::factories()[key]);
}

struct Lone {
    virtual ~Lone() {}
    struct Reader {
        int operator()(const HNKMessageIterator&, Lone&) const { return 0; }
    };
    struct Writer : HNKWriterBase {
        static const char* getStrTypeID() { return "lone"; }
        int operator()(HNKMessageIterator&, const Lone&) const { return 0; }
    };
};

TEST(HNKDerivedParserFactoryTest, DestroyingTheDefaultFactoryClearsTheDefault)
{
    typedef HNKDerivedParserFactory<Lone, Lone> LoneFactory;
    boost::shared_ptr<LoneFactory::FactoryData> registry = LoneFactory::factoryInternalData();
    {
        HNKDerivedParserFactoryT<Lone, Lone, Lone, Lone::Reader, Lone::Writer> lone(true);
        EXPECT_EQ(&lone, LoneFactory::defaultFactory());
    }
    EXPECT_EQ(nullptr, LoneFactory::defaultFactory());
    EXPECT_TRUE(LoneFactory::factories().empty());
    EXPECT_TRUE(LoneFactory::factoriesByType().empty());
}

struct LongName : Animal {
    struct Writer : Animal::Writer {
        static const char* getStrTypeID()
        {
            static const std::string name(600, 'n');
            return name.c_str();
        }
    };
};

TEST(HNKDerivedParserFactoryTest, OverLongKeyAsserts)
{
    typedef HNKDerivedParserFactoryT<LongName, Animal, Animal, Animal::Reader, LongName::Writer> Long;
    EXPECT_THROW(Long f(false), HNKAssertionFailure);
}

TEST(HNKDerivedParserFactoryTest, IsFactoryEqualMatchesByPointer)
{
    HNKIsFactoryEqual<AnimalFactory> isDog(&factoryDog);
    EXPECT_TRUE(isDog(std::make_pair(std::string("any key"), static_cast<AnimalFactory*>(&factoryDog))));
    EXPECT_FALSE(isDog(std::make_pair(std::string(kNs) + ":dog", static_cast<AnimalFactory*>(&factoryAnimal))));
}

TEST(HNKDerivedParserFactoryTest, CreateObjectMakesTheFactorysClass)
{
    boost::shared_ptr<Animal> d = factoryDog.createObject();
    EXPECT_NE(nullptr, dynamic_cast<Dog*>(d.get()));
    boost::shared_ptr<Animal> a = factoryAnimal.createObject();
    EXPECT_EQ(typeid(Animal), typeid(*a));
}

// ---- Polymorphic read and write ----

TEST(HNKDerivedParserFactoryTest, ReadsEachItemAsItsRegisteredClass)
{
    HNKMessageIterator it = parsed(zoo("<device xsi:type='z:dog'><name>rex</name><barks>3</barks></device>"
                                       "<device xsi:type='z:animal'><name>generic</name></device>"));
    AnimalList list;
    ASSERT_EQ(0, it.getObject(list, HNKReaderDerivedList<int, Animal>(1114, 0, false), "animals"));
    ASSERT_EQ(2u, list.size());
    Dog* d = dynamic_cast<Dog*>(list[0].get());
    ASSERT_NE(nullptr, d);
    EXPECT_EQ("rex", d->name);
    EXPECT_EQ(3, d->barks);
    EXPECT_EQ(typeid(Animal), typeid(*list[1]));
}

TEST(HNKDerivedParserFactoryTest, UnregisteredTypeFailsWithoutDefaultAndReadsAsBaseWithIt)
{
    HNKMessageIterator it = parsed(zoo("<device xsi:type='z:unicorn'><name>u</name><horn>1</horn></device>"));
    ASSERT_EQ(0, it.descend("animals"));
    ASSERT_EQ(0, it.descend(1114));
    boost::shared_ptr<Animal> out;
    EXPECT_EQ(-1, HNKReaderDerived<Animal>(false)(it, out));
    EXPECT_EQ(nullptr, out);
    ASSERT_EQ(0, HNKReaderDerived<Animal>(true)(it, out));
    ASSERT_NE(nullptr, out);
    EXPECT_EQ(typeid(Animal), typeid(*out));
    EXPECT_EQ("u", out->name);
}

TEST(HNKDerivedParserFactoryTest, UnstampedElementReadsOnlyThroughTheDefault)
{
    HNKMessageIterator it = parsed("<a><name>plain</name></a>");
    boost::shared_ptr<Animal> out;
    EXPECT_EQ(-1, HNKReaderDerived<Animal>(false)(it, out));
    EXPECT_EQ(0, HNKReaderDerived<Animal>(true)(it, out));
    EXPECT_EQ("plain", out->name);
}

TEST(HNKDerivedParserFactoryTest, UnknownTypeFailsEvenWithUseDefaultWhenNoDefaultIsRegistered)
{
    HNKMessageIterator it = parsed("<v xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xsi:type='truck'/>");
    boost::shared_ptr<Vehicle> out;
    EXPECT_EQ(-1, HNKReaderDerived<Vehicle>(true)(it, out));
    HNKMessageIterator car = parsed("<v xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xsi:type='car'/>");
    EXPECT_EQ(0, HNKReaderDerived<Vehicle>(false)(car, out));
    EXPECT_NE(nullptr, dynamic_cast<Car*>(out.get()));
}

TEST(HNKDerivedParserFactoryTest, BadMiddleItemFailsTheReadAndEarlierItemsStay)
{
    HNKMessageIterator it = parsed(zoo("<device xsi:type='z:dog'><name>a</name><barks>1</barks></device>"
                                       "<device xsi:type='z:dog'><name>b</name></device>"
                                       "<device xsi:type='z:dog'><name>c</name><barks>3</barks></device>"));
    AnimalList list;
    EXPECT_EQ(-1, it.getObject(list, HNKReaderDerivedList<int, Animal>(1114, 0, true), "animals"));
    ASSERT_EQ(1u, list.size());
    EXPECT_EQ("a", list[0]->name);
    EXPECT_STREQ("zoo", it.currentName());
}

TEST(HNKDerivedParserFactoryTest, BadMiddleItemStopsTheWriteWithOneAndEarlierItemsStay)
{
    boost::shared_ptr<Animal> grumpy(new Grumpy);
    AnimalList list{dog("a", 1), grumpy, dog("c", 3)};
    HNKMessageIterator it("zoo");
    EXPECT_EQ(1, it.putObject(list, HNKWriterDerivedList<int, Animal>(1114), "animals"));
    std::string xml = it.toXML();
    EXPECT_NE(std::string::npos, xml.find("<name>a</name>")) << xml;
    EXPECT_EQ(std::string::npos, xml.find("<name>c</name>")) << xml;
    AnimalList back;
    EXPECT_EQ(-1, it.getObject(back, HNKReaderDerivedList<int, Animal>(1114, 0, true), "animals"));
    ASSERT_EQ(1u, back.size());
    EXPECT_EQ(0, back[0]->compare(*list[0]));
}

TEST(HNKDerivedParserFactoryTest, ListRoundTripKeepsClassesAndFieldsWithOutermostStamp)
{
    AnimalList list{dog("rex", 2), animal("cow"), dog("fido", 0)};
    HNKMessageIterator it("zoo");
    ASSERT_EQ(0, it.putObject(list, HNKWriterDerivedList<int, Animal>(1114), "animals"));
    std::string xml = it.toXML();
    EXPECT_TRUE(xmllintAccepts(xml)) << xmllintProblems(xml);
    EXPECT_EQ(std::string::npos, xml.find(":animal\"><name>rex")) << xml;

    HNKMessageIterator back = parsed(xml); // through the text form
    AnimalList read;
    ASSERT_EQ(0, back.getObject(read, HNKReaderDerivedList<int, Animal>(1114, 0, false), "animals"));
    EXPECT_EQ(0, compare(list, read));
    EXPECT_NE(nullptr, dynamic_cast<Dog*>(read[0].get()));
    EXPECT_EQ(typeid(Animal), typeid(*read[1]));
}

TEST(HNKDerivedParserFactoryTest, ClassWithoutFactoryIsWrittenByTheDefaultAsBase)
{
    boost::shared_ptr<Animal> fish(new Fish);
    fish->name = "nemo";
    HNKMessageIterator it("r");
    ASSERT_EQ(0, it.putObject(fish, HNKWriterDerived<Animal>(), "pet"));
    ASSERT_EQ(0, it.descend("pet"));
    EXPECT_EQ(std::string(kNs) + ":animal", it.getTypeName());
    boost::shared_ptr<Animal> back;
    ASSERT_EQ(0, HNKReaderDerived<Animal>(false)(it, back));
    EXPECT_EQ(typeid(Animal), typeid(*back));
    EXPECT_EQ("nemo", back->name);
}

TEST(HNKDerivedParserFactoryTest, ClassWithoutFactoryFailsWhenNoDefaultIsRegistered)
{
    Bike bike;
    HNKMessageIterator it("r");
    typedef HNKDerivedWrite<HNKDerivedParserFactory<Vehicle, Vehicle>> VehicleWrite;
    EXPECT_EQ(-1, VehicleWrite()(it, static_cast<const Vehicle*>(&bike)));
}

TEST(HNKDerivedParserFactoryTest, WritingANullElementThrowsBadTypeid)
{
    HNKMessageIterator it("r");
    AnimalList list{boost::shared_ptr<Animal>()};
    EXPECT_THROW(it.putObject(list, HNKWriterDerivedList<int, Animal>(1114), "animals"), std::bad_typeid);
}

TEST(HNKDerivedParserFactoryTest, FactoryReadHandsOutARawObjectOnlyOnSuccess)
{
    HNKMessageIterator good = parsed("<d><name>x</name><barks>1</barks></d>");
    HNKMessageIterator bad = parsed("<d><name>x</name></d>");
    Animal* raw = nullptr;
    EXPECT_EQ(-1, factoryDog.read(bad, raw));
    EXPECT_EQ(nullptr, raw);
    ASSERT_EQ(0, factoryDog.read(good, raw));
    boost::shared_ptr<Animal> owned(raw);
    EXPECT_NE(nullptr, dynamic_cast<Dog*>(raw));
    HNKMessageIterator out("d");
    Cat cat;
    EXPECT_EQ(-1, factoryDog.write(out, &cat)); // not a Dog
}

TEST(HNKDerivedParserFactoryTest, EmptyDeviceListUnderWrapperReadsWithAbsenceTolerated)
{
    HNKMessageIterator it = parsed("<zoo><animals/></zoo>");
    AnimalList list;
    EXPECT_EQ(0, it.getObject(list, HNKReaderDerivedList<int, Animal>(1114, 0, true), "animals"));
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(-1, it.getObject(list, HNKReaderDerivedList<int, Animal>(1114, 1, true), "animals"));
}

} // namespace
