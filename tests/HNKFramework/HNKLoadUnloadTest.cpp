// A library that registers parser factories while it loads must leave the
// shared registries when it unloads, and every library must see one registry
// per base type.
#include "HNKProbeRecord.h"

#include "HNKErrorMessage.h"
#include "HNKSerialization.h"

#include <gtest/gtest.h>

#include <boost/shared_ptr.hpp>

#include <dlfcn.h>
#include <string>

namespace {

typedef HNKDerivedParserFactory<HNKProbeRecord> RecordFactory;
typedef HNKDerivedParserFactory<HNKProbeImplicit> ImplicitFactory;

const std::string kLoadedRecordKey = std::string("urn:test:probe") + ":loaded_record";
const std::string kLoadedImplicitKey = std::string("urn:test:probe") + ":loaded_implicit";

void* load()
{
    void* handle = dlopen(HNK_PROBE_LOADABLE, RTLD_NOW | RTLD_LOCAL);
    EXPECT_NE(nullptr, handle) << dlerror();
    return handle;
}

bool stillMapped()
{
    void* h = dlopen(HNK_PROBE_LOADABLE, RTLD_NOW | RTLD_NOLOAD);
    if (h)
        dlclose(h);
    return h != nullptr;
}

TEST(HNKLoadUnloadTest, OwnerFactoriesAreRegisteredAndTheLoadableOnesAreNot)
{
    EXPECT_EQ(1u, RecordFactory::factories().count("urn:test:probe:probe_record"));
    EXPECT_EQ(1u, ImplicitFactory::factories().count("urn:test:probe:probe_implicit"));
    EXPECT_EQ(0u, RecordFactory::factories().count(kLoadedRecordKey));
    EXPECT_EQ(0u, ImplicitFactory::factories().count(kLoadedImplicitKey));
}

TEST(HNKLoadUnloadTest, EveryLibrarySeesOneRegistryPerBase)
{
    EXPECT_EQ(probeOwnerRecordRegistry(), &RecordFactory::factoryData());
    EXPECT_EQ(probeOwnerImplicitRegistry(), &ImplicitFactory::factoryData());
    void* handle = load();
    ASSERT_NE(nullptr, handle);
    typedef const void* (*View)();
    View record = reinterpret_cast<View>(dlsym(handle, "probeLoadableRecordRegistry"));
    View implicit = reinterpret_cast<View>(dlsym(handle, "probeLoadableImplicitRegistry"));
    ASSERT_NE(nullptr, record);
    ASSERT_NE(nullptr, implicit);
    EXPECT_EQ(&RecordFactory::factoryData(), record());
    EXPECT_EQ(&ImplicitFactory::factoryData(), implicit());
    EXPECT_EQ(0, dlclose(handle));
}

TEST(HNKLoadUnloadTest, LoadRegistersUnloadUnregistersAndLoadAgainRegistersAgain)
{
    for (int round = 0; round < 2; ++round) {
        void* handle = load();
        ASSERT_NE(nullptr, handle);
        EXPECT_EQ(1u, RecordFactory::factories().count(kLoadedRecordKey)) << round;
        EXPECT_EQ(1u, ImplicitFactory::factories().count(kLoadedImplicitKey)) << round;

        // The loaded class reads through the shared registry.
        HNKMessageIterator it;
        ASSERT_EQ(0, it.fromXML("<r xmlns:p='urn:test:probe' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' "
                                "xsi:type='p:loaded_record'><label>L</label><extra>5</extra></r>"))
            << getErrorMessage();
        {
            boost::shared_ptr<HNKProbeRecord> rec;
            ASSERT_EQ(0, HNKReaderDerived<HNKProbeRecord>(false)(it, rec));
            EXPECT_EQ("L", rec->label);
            HNKMessageIterator out("r");
            ASSERT_EQ(0, out.putObject(rec, HNKWriterDerived<HNKProbeRecord>()));
            EXPECT_EQ(kLoadedRecordKey, out.getTypeName());
        } // the record's code lives in the library: drop it before unloading

        EXPECT_EQ(0, dlclose(handle)) << dlerror();
        EXPECT_FALSE(stillMapped()) << "the library was not unloaded";
        EXPECT_EQ(0u, RecordFactory::factories().count(kLoadedRecordKey)) << round;
        EXPECT_EQ(0u, RecordFactory::factoriesByType().size() - 1) << round; // only the owner's
        EXPECT_EQ(0u, ImplicitFactory::factories().count(kLoadedImplicitKey)) << round;
        // After unloading, the type reads as unknown (the owner's default remains).
        boost::shared_ptr<HNKProbeRecord> rec;
        EXPECT_EQ(-1, HNKReaderDerived<HNKProbeRecord>(false)(it, rec));
        ASSERT_EQ(0, HNKReaderDerived<HNKProbeRecord>(true)(it, rec));
        EXPECT_EQ(typeid(HNKProbeRecord), typeid(*rec));
    }
}

} // namespace
