// Sample messages in tests/data: each reads through the registry, writes
// back, reads again and compares equal, and its written text is stable.
#include "model/HNREnvConfig.h"

#include "HNRFunctionality/model/ConfigTestSupport.h"

#include "frame/HNRConstants.h"

#include "HNKErrorMessage.h"
#include "HNKFramework/XmlLintCheck.h"
#include "HNKSerialization.h"

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>

using namespace HNR;

namespace {

// Reads the configuration at the root of `text` through the framework's
// configuration registry; null on failure.
boost::shared_ptr<HNREnvConfig> readConfig(const std::string& text)
{
    HNKMessageIterator it;
    EXPECT_EQ(0, it.fromXML(text)) << getErrorMessage();
    boost::shared_ptr<HNKEnvConfig> config;
    EXPECT_EQ(0, HNKReaderDerived<HNKEnvConfig>(false)(it, config));
    EXPECT_TRUE(config && typeid(*config) == typeid(HNREnvConfig));
    return boost::dynamic_pointer_cast<HNREnvConfig>(config);
}

std::string writeConfig(const boost::shared_ptr<HNREnvConfig>& config)
{
    HNKMessageIterator out("configuration");
    EXPECT_EQ(0, out.putObject(boost::shared_ptr<HNKEnvConfig>(config), HNKWriterDerived<HNKEnvConfig>()));
    return out.toXML();
}

HNKOptionalProperty<HNRVMDeviceList> devicesOf(const HNREnvConfig& c, int expectedStatus = 0)
{
    HNKOptionalProperty<HNRVMDeviceList> devices;
    EXPECT_EQ(expectedStatus, c.getDevices(devices));
    return devices;
}

// Round trip: written text is namespace-well-formed, writing twice gives the
// same bytes, and reading the written text and writing it again too.
void checkRoundTrip(const std::string& file, bool allSettingsPresent, int devicesStatus = 0)
{
    SCOPED_TRACE(file);
    boost::shared_ptr<HNREnvConfig> first = readConfig(HNRTest::dataFile(file));
    ASSERT_TRUE(first);
    std::string written = writeConfig(first);
    EXPECT_EQ("", xmllintProblems(written)) << written;
    EXPECT_EQ(written, writeConfig(first));
    boost::shared_ptr<HNREnvConfig> second = readConfig(written);
    ASSERT_TRUE(second);
    EXPECT_EQ(written, writeConfig(second));
    EXPECT_EQ(0, first->HNKEnvConfig::compare(*second));
    EXPECT_EQ(0, ::compare(devicesOf(*first, devicesStatus), devicesOf(*second, devicesStatus)));
    // With a setting absent on both sides the comparison is -1 by design.
    EXPECT_EQ(allSettingsPresent ? 0 : -1, first->compare(*second));
}

TEST(HNREnvConfigGoldenTest, FullConfigurationWithEveryDeviceType)
{
    checkRoundTrip("vmconfig_full.xml", true);
    boost::shared_ptr<HNREnvConfig> c = readConfig(HNRTest::dataFile("vmconfig_full.xml"));
    ASSERT_TRUE(c);
    HNKOptionalProperty<HNRVMDeviceList> devices = devicesOf(*c);
    ASSERT_TRUE(devices.isSpecified());
    ASSERT_EQ(11u, devices.get().size());
    const std::type_info* expected[] = {&typeid(HNRVMDevice),           &typeid(HNRVMFloppyDiskDevice),
                                        &typeid(HNRVMOpticalDiskDevice), &typeid(HNRVMHardDiskDevice),
                                        &typeid(HNRVMSCSIDevice),        &typeid(HNRVMPCIDevice),
                                        &typeid(HNRVMSerialPortDevice),  &typeid(HNRVMParallelPortDevice),
                                        &typeid(HNRVMNetworkDevice),     &typeid(HNRVMSoundDevice),
                                        &typeid(HNRVMUSBDevice)};
    for (size_t i = 0; i < 11; ++i) {
        EXPECT_EQ(*expected[i], typeid(*devices.get()[i])) << i;
        EXPECT_EQ(static_cast<int>(i), devices.get()[i]->emulationType);
        EXPECT_EQ("user" + std::to_string(i), devices.get()[i]->userName.get());
        EXPECT_EQ("", devices.get()[i]->summaryInfo);
    }
    const HNRVMNetworkDevice& net = dynamic_cast<const HNRVMNetworkDevice&>(*devices.get()[8]);
    EXPECT_EQ(2u, net.ipAddresses.get().size());
    EXPECT_EQ(2u, net.dnsServers.get().size());
    EXPECT_TRUE(net.configuredWithDhcp.get());
    const HNRVMHardDiskDevice& hdd = dynamic_cast<const HNRVMHardDiskDevice&>(*devices.get()[3]);
    EXPECT_EQ(65536, hdd.size.get());
    int port = 0;
    EXPECT_EQ(0, c->getVNCPort(port));
    EXPECT_EQ(5901, port);
    bool offline = false;
    EXPECT_EQ(0, c->getOfflineManagementEnabled(offline));
    EXPECT_TRUE(offline);
    HNKOptionalProperty<std::set<std::string>> services;
    EXPECT_EQ(0, c->getOfflineServices(services));
    EXPECT_EQ((std::set<std::string>{"backup-agent", "sshd"}), services.get());

    // Every typed read of the devices writes back to an equal list.
    boost::shared_ptr<HNREnvConfig> rewritten(new HNREnvConfig(*c));
    ASSERT_EQ(0, rewritten->setDevices(devices));
    EXPECT_EQ(0, c->compare(*rewritten));
    // The output is in schema order: memory_size first, offline list last of the known ones.
    std::string text = writeConfig(c);
    EXPECT_LT(text.find("<memory_size>"), text.find("<video_memory_size>"));
    EXPECT_LT(text.find("<device_list "), text.find("<is_template>"));
    EXPECT_LT(text.find("<offline_management_list>"), text.find("<user_shared_folders_enabled>"));
    // Tags without a position follow, in the order the message had them.
    EXPECT_LT(text.find("<name>"), text.find("<cpu_limit>"));
    EXPECT_LT(text.find("<cpu_limit>"), text.find("<user_shared_folders_enabled>"));
    EXPECT_LT(text.find("<user_shared_folders_enabled>"), text.find("<offline_management_enabled>"));
    // Only the device list names the client's prefix (in its items' types).
    size_t binding = text.find("xmlns:hnr=");
    EXPECT_EQ(text.find("<device_list ") + 13, binding) << text;
    EXPECT_EQ(std::string::npos, text.find("xmlns:hnr=", binding + 1));
}

TEST(HNREnvConfigGoldenTest, MinimalConfigurationRoundTripsWithOneDeviceAndNoSettings)
{
    checkRoundTrip("vmconfig_minimal.xml", false);
    boost::shared_ptr<HNREnvConfig> c = readConfig(HNRTest::dataFile("vmconfig_minimal.xml"));
    ASSERT_TRUE(c);
    ASSERT_EQ(1u, devicesOf(*c).get().size());
    int cpus = 0;
    EXPECT_EQ(-1, c->getCPUCount(cpus));
}

TEST(HNREnvConfigGoldenTest, UnknownDeviceTypeReadsAsTheBaseDevice)
{
    checkRoundTrip("vmconfig_unknown_device.xml", false);
    boost::shared_ptr<HNREnvConfig> c = readConfig(HNRTest::dataFile("vmconfig_unknown_device.xml"));
    ASSERT_TRUE(c);
    HNKOptionalProperty<HNRVMDeviceList> devices = devicesOf(*c);
    ASSERT_EQ(2u, devices.get().size());
    EXPECT_EQ(typeid(HNRVMUSBDevice), typeid(*devices.get()[0]));
    EXPECT_EQ(typeid(HNRVMDevice), typeid(*devices.get()[1]));
    EXPECT_EQ(7, devices.get()[1]->emulationType);
    EXPECT_EQ("Hologram", devices.get()[1]->friendlyName.get());
    // Written through the registry it becomes a plain "vm_device".
    boost::shared_ptr<HNREnvConfig> copy(new HNREnvConfig(*c));
    ASSERT_EQ(0, copy->setDevices(devices));
    std::string text = writeConfig(copy);
    EXPECT_EQ(std::string::npos, text.find("vm_holographic_display_device"));
    EXPECT_NE(std::string::npos, text.find(":vm_device\"")) << text;
    EXPECT_EQ("", xmllintProblems(text));
}

TEST(HNREnvConfigGoldenTest, DeviceWithoutEmulationTypeStopsTheListAndKeepsTheEarlierOnes)
{
    checkRoundTrip("vmconfig_device_without_emulation_type.xml", false, -1);
    boost::shared_ptr<HNREnvConfig> c = readConfig(HNRTest::dataFile("vmconfig_device_without_emulation_type.xml"));
    ASSERT_TRUE(c);
    HNKOptionalProperty<HNRVMDeviceList> devices = devicesOf(*c, -1);
    EXPECT_TRUE(devices.isSpecified());
    ASSERT_EQ(2u, devices.get().size());
    EXPECT_EQ(typeid(HNRVMHardDiskDevice), typeid(*devices.get()[0]));
    EXPECT_EQ(typeid(HNRVMSoundDevice), typeid(*devices.get()[1]));
}

} // namespace
