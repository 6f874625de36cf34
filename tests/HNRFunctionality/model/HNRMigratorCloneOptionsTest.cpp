#include "model/HNRMigratorCloneOptions.h"

#include "HNRFunctionality/model/RecordRoundTrip.h"

#include "HNKSerialization.h"

#include <gtest/gtest.h>

#include <boost/shared_ptr.hpp>

#include <string>
#include <typeinfo>

using namespace HNR;

namespace {

typedef HNKDerivedParserFactory<HNKV2VMigrateOptions> MigrateFactory;

const std::string kRelocator = kRelocatorNamespace;
const char kMigrateBase[] = "<migrate_source_host>src</migrate_source_host><migrate_mode>2</migrate_mode>";

void expectSameMigrate(const HNRV2VMigrateOptions& a, const HNRV2VMigrateOptions& b)
{
    ASSERT_EQ(a.getBandwidthLimit().isSpecified(), b.getBandwidthLimit().isSpecified());
    if (a.getBandwidthLimit().isSpecified()) {
        EXPECT_EQ(a.getBandwidthLimit().get(), b.getBandwidthLimit().get());
    }
    EXPECT_EQ(a.getTargetHost(), b.getTargetHost());
    EXPECT_EQ(a.getTargetPath(), b.getTargetPath());
    EXPECT_EQ(a.getOperationFlags(), b.getOperationFlags());
    EXPECT_EQ(a.getSourceHost(), b.getSourceHost());
    EXPECT_EQ(a.getMode(), b.getMode());
}

TEST(HNRMigratorCloneOptionsTest, MigrateSampleSurvivesTheRoundTrip)
{
    RoundTrip<HNKV2VMigrateOptions> trip = roundTripSample<HNKV2VMigrateOptions>("migrate_optionsType.xml");
    ASSERT_TRUE(trip.first && trip.second);
    const HNRV2VMigrateOptions& a = dynamic_cast<const HNRV2VMigrateOptions&>(*trip.first);
    EXPECT_EQ(125000, a.getBandwidthLimit().get());
    EXPECT_EQ("/srv/vms/web01", a.getTargetPath());
    EXPECT_EQ("node7.example.net", a.getTargetHost());
    EXPECT_EQ(5, a.getOperationFlags());
    EXPECT_EQ("node2.example.net", a.getSourceHost());
    EXPECT_EQ(1, a.getMode());
    expectSameMigrate(a, dynamic_cast<const HNRV2VMigrateOptions&>(*trip.second));
}

TEST(HNRMigratorCloneOptionsTest, MigrateWithoutBandwidthLimitReadsUnspecifiedAndWritesNone)
{
    HNRV2VMigrateOptions o;
    o.setBandwidthLimit(10);
    HNKMessageIterator it = parsedMessage(std::string("<m><target_path>p</target_path><target_host>h</target_host>"
                                                      "<operation_flags>1</operation_flags>") +
                                          kMigrateBase + "</m>");
    ASSERT_EQ(0, HNRV2VMigrateOptions::Reader()(it, o));
    EXPECT_FALSE(o.getBandwidthLimit().isSpecified());
    HNKMessageIterator out("m");
    ASSERT_EQ(0, out.putObject(o, HNKWriterDerived<HNKV2VMigrateOptions>()));
    EXPECT_FALSE(out.hasChild("bandwidth_limit")) << out.toXML();
    EXPECT_TRUE(out.hasChild("operation_flags"));
}

TEST(HNRMigratorCloneOptionsTest, MigrateLackingTheFlagsFailsToRead)
{
    HNRV2VMigrateOptions o;
    HNKMessageIterator it = parsedMessage(
        std::string("<m><bandwidth_limit>7</bandwidth_limit><target_path>p</target_path><target_host>h</target_host>") +
        kMigrateBase + "</m>");
    EXPECT_EQ(-1, HNRV2VMigrateOptions::Reader()(it, o));
    EXPECT_EQ(7, o.getBandwidthLimit().get()); // read before the failure
    EXPECT_EQ("h", o.getTargetHost());
    EXPECT_EQ("", o.getSourceHost()); // the framework part was not read
    EXPECT_EQ(0, HNRV2VMigrateOptions().getOperationFlags());
    boost::shared_ptr<HNKV2VMigrateOptions> poly;
    EXPECT_EQ(-1, HNKReaderDerived<HNKV2VMigrateOptions>(false)(it, poly));
}

TEST(HNRMigratorCloneOptionsTest, MigrateReaderNeedsTheTextsAndTheFrameworkPart)
{
    HNRV2VMigrateOptions o;
    EXPECT_EQ(-1, HNRV2VMigrateOptions::Reader()(
                      parsedMessage(std::string("<m><target_host>h</target_host><operation_flags>1</operation_flags>") +
                                    kMigrateBase + "</m>"),
                      o));
    EXPECT_EQ("", o.getTargetHost()); // the path is read first and stopped the read
    EXPECT_EQ(-1, HNRV2VMigrateOptions::Reader()(
                      parsedMessage("<m><target_path>p</target_path><target_host>h</target_host>"
                                    "<operation_flags>1</operation_flags></m>"),
                      o));
}

TEST(HNRMigratorCloneOptionsTest, MigrateWriterIgnoresItsOwnValuesOutcome)
{
    HNRV2VMigrateOptions o;
    o.setTargetPath(std::string("\x01"));
    o.setTargetHost("h");
    o.setSourceHost("s");
    HNKMessageIterator out("m");
    ASSERT_EQ(0, out.putObject(o, HNRV2VMigrateOptions::Writer()));
    EXPECT_FALSE(out.hasChild("target_path"));
    EXPECT_TRUE(out.hasChild("target_host"));
    EXPECT_TRUE(out.hasChild("migrate_source_host"));
    EXPECT_EQ(kRelocator + ":migrate_optionsType", out.getTypeName());
    o.setSourceHost(std::string("\x02"));
    HNKMessageIterator out2("m");
    EXPECT_EQ(-1, out2.putObject(o, HNRV2VMigrateOptions::Writer()));
}

TEST(HNRMigratorCloneOptionsTest, MigrateFactoryRegistersUnderTheRelocatorNamespace)
{
    EXPECT_EQ(&factoryHNRV2VMigrateOptions, MigrateFactory::factories().at(kRelocator + ":migrate_optionsType"));
    EXPECT_EQ(nullptr, MigrateFactory::defaultFactory());
    HNKV2VMigrateOptions base;
    HNKMessageIterator out("m");
    ASSERT_EQ(0, out.putObject(base, HNKV2VMigrateOptions::Writer()));
    EXPECT_EQ(std::string(HNKDefaultMap::findNSID(294)) + ":" + HNKDefaultMap::findTypeID(277), out.getTypeName());
}

} // namespace
