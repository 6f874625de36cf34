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
typedef HNKDerivedParserFactory<HNKMigratorCloneOptions> CloneFactory;

const std::string kRelocator = kRelocatorNamespace;
const char kCloneBase[] = "<clone_target_folder>/c</clone_target_folder><clone_copy_mode>0</clone_copy_mode>";
const char kMigrateBase[] = "<migrate_source_host>src</migrate_source_host><migrate_mode>2</migrate_mode>";

std::string cloneXML(const std::string& body)
{
    return "<clone_options xmlns:rel='" + kRelocator +
           "' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xsi:type='rel:clone_optionsType'>" + body +
           "</clone_options>";
}

boost::shared_ptr<HNREnvConfig> someConfiguration()
{
    boost::shared_ptr<HNREnvConfig> config(new HNREnvConfig(static_cast<const HNKMessageIterator*>(nullptr)));
    config->setCPUCount(2);
    return config;
}

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

// ---- Clone options ----

TEST(HNRMigratorCloneOptionsTest, CloneSampleWithAFullConfigurationSurvivesTheRoundTrip)
{
    RoundTrip<HNKMigratorCloneOptions> trip = roundTripSample<HNKMigratorCloneOptions>("clone_optionsType.xml");
    ASSERT_TRUE(trip.first && trip.second);
    const HNRMigratorCloneOptions& a = dynamic_cast<const HNRMigratorCloneOptions&>(*trip.first);
    const HNRMigratorCloneOptions& b = dynamic_cast<const HNRMigratorCloneOptions&>(*trip.second);
    EXPECT_EQ("Build Box (clone 2)", a.getCloneName());
    EXPECT_TRUE(a.getLinkedClone().isSpecified());
    EXPECT_TRUE(a.getLinkedClone().get());
    EXPECT_EQ("/var/vms/clones", a.getTargetFolder());
    EXPECT_EQ(1, a.getCopyMode());
    ASSERT_TRUE(a.getConfiguration());
    int cpus = 0;
    EXPECT_EQ(0, a.getConfiguration()->getCPUCount(cpus));
    EXPECT_EQ(4, cpus);
    HNKOptionalProperty<HNRVMDeviceList> devices;
    ASSERT_EQ(0, a.getConfiguration()->getDevices(devices));
    ASSERT_EQ(11u, devices.get().size());
    EXPECT_EQ(typeid(HNRVMHardDiskDevice), typeid(*devices.get()[3]));
    EXPECT_EQ(typeid(HNRVMNetworkDevice), typeid(*devices.get()[8]));

    EXPECT_EQ(a.getCloneName(), b.getCloneName());
    EXPECT_EQ(a.getLinkedClone().get(), b.getLinkedClone().get());
    EXPECT_EQ(a.getTargetFolder(), b.getTargetFolder());
    EXPECT_EQ(a.getCopyMode(), b.getCopyMode());
    ASSERT_TRUE(b.getConfiguration());
    // Every setting is present, so the configurations compare equal.
    EXPECT_EQ(0, a.getConfiguration()->compare(*b.getConfiguration()));
    HNKOptionalProperty<HNRVMDeviceList> devicesBack;
    ASSERT_EQ(0, b.getConfiguration()->getDevices(devicesBack));
    EXPECT_EQ(0, ::compare(devices.get(), devicesBack.get()));
    // The configuration travels stamped with its own type.
    HNKMessageIterator written = parsedMessage(trip.written);
    ASSERT_EQ(0, written.descend("vm_configuration"));
    EXPECT_EQ(std::string(kTypesNamespace) + ":venv_configType", written.getTypeName());
}

TEST(HNRMigratorCloneOptionsTest, CloneWithoutItsNameFailsBeforeTheBasePart)
{
    HNRMigratorCloneOptions o;
    o.setTargetFolder("kept");
    o.setConfiguration(someConfiguration());
    EXPECT_EQ(-1, HNRMigratorCloneOptions::Reader()(
                      parsedMessage(cloneXML(std::string("<linked_clone/>") + kCloneBase)), o));
    EXPECT_EQ("kept", o.getTargetFolder());
    EXPECT_TRUE(o.getConfiguration()); // nothing else was touched
    EXPECT_FALSE(o.getLinkedClone().isSpecified());
    boost::shared_ptr<HNKMigratorCloneOptions> poly;
    EXPECT_EQ(-1, HNKReaderDerived<HNKMigratorCloneOptions>(false)(
                      parsedMessage(cloneXML(std::string("<linked_clone/>") + kCloneBase)), poly));
    EXPECT_FALSE(poly);
}

TEST(HNRMigratorCloneOptionsTest, CloneWithoutConfigurationReadsWithANullOne)
{
    HNRMigratorCloneOptions o;
    o.setConfiguration(someConfiguration());
    ASSERT_EQ(0, HNRMigratorCloneOptions::Reader()(
                     parsedMessage(cloneXML(std::string("<clone_name>c</clone_name>") + kCloneBase)), o));
    EXPECT_FALSE(o.getConfiguration());
    EXPECT_EQ("c", o.getCloneName());
    EXPECT_EQ("/c", o.getTargetFolder());
}

TEST(HNRMigratorCloneOptionsTest, CloneReadsIntoTheConfigurationItAlreadyHolds)
{
    HNRMigratorCloneOptions o;
    boost::shared_ptr<HNREnvConfig> held = someConfiguration();
    o.setConfiguration(held);
    ASSERT_EQ(0, HNRMigratorCloneOptions::Reader()(
                     parsedMessage(cloneXML(std::string("<clone_name>c</clone_name><vm_configuration>"
                                                        "<cpu_count>8</cpu_count></vm_configuration>") +
                                            kCloneBase)),
                     o));
    EXPECT_EQ(held, o.getConfiguration());
    int cpus = 0;
    EXPECT_EQ(0, held->getCPUCount(cpus));
    EXPECT_EQ(8, cpus);
}

TEST(HNRMigratorCloneOptionsTest, CloneWithoutTheFlagElementReadsFalseAndWritesNone)
{
    HNRMigratorCloneOptions o;
    ASSERT_EQ(0, HNRMigratorCloneOptions::Reader()(
                     parsedMessage(cloneXML(std::string("<clone_name>c</clone_name>") + kCloneBase)), o));
    EXPECT_TRUE(o.getLinkedClone().isSpecified());
    EXPECT_FALSE(o.getLinkedClone().get());
    HNKMessageIterator out("clone_options");
    ASSERT_EQ(0, out.putObject(o, HNKWriterDerived<HNKMigratorCloneOptions>()));
    EXPECT_FALSE(out.hasChild("linked_clone")) << out.toXML();
    EXPECT_FALSE(out.hasChild("vm_configuration")) << out.toXML();
    EXPECT_EQ(kRelocator + ":clone_optionsType", out.getTypeName());

    o.setLinkedClone(true);
    HNKMessageIterator out2("clone_options");
    ASSERT_EQ(0, out2.putObject(o, HNRMigratorCloneOptions::Writer()));
    std::string text = "x";
    ASSERT_EQ(0, out2.getValue("linked_clone", text));
    EXPECT_EQ("", text);
}

TEST(HNRMigratorCloneOptionsTest, CloneWriterFailsOnlyOnItsNameOrTheBasePart)
{
    HNRMigratorCloneOptions o;
    o.setCloneName(std::string("\x01"));
    HNKMessageIterator out("clone_options");
    EXPECT_EQ(-1, out.putObject(o, HNRMigratorCloneOptions::Writer()));
    EXPECT_FALSE(out.hasChild("clone_target_folder")); // stopped before the base part
    o.setCloneName("c");
    o.setTargetFolder(std::string("\x02"));
    HNKMessageIterator out2("clone_options");
    EXPECT_EQ(-1, out2.putObject(o, HNRMigratorCloneOptions::Writer()));
}

TEST(HNRMigratorCloneOptionsTest, CloneFactoryRegistersUnderTheRelocatorNamespace)
{
    EXPECT_EQ(&factoryHNRMigratorCloneOptions, CloneFactory::factories().at(kRelocator + ":clone_optionsType"));
    EXPECT_EQ(nullptr, CloneFactory::defaultFactory());
    HNKMigratorCloneOptions base;
    HNKMessageIterator out("c");
    ASSERT_EQ(0, out.putObject(base, HNKMigratorCloneOptions::Writer()));
    EXPECT_EQ(std::string(HNKDefaultMap::findNSID(294)) + ":" + HNKDefaultMap::findTypeID(275), out.getTypeName());
}

// ---- Migrate options ----

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
