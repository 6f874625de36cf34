#include "model/HNRVMDevice.h"

#include "frame/HNRConstants.h"

#include "Base64.h"
#include "HNKErrorMessage.h"
#include "HNKFramework/XmlLintCheck.h"
#include "HNKSerialization.h"

#include "tools/MessageTestSupport.h"

#include <gtest/gtest.h>

#include <boost/make_shared.hpp>

#include <string>
#include <typeinfo>
#include <vector>

using namespace HNR;

namespace {

typedef HNKDerivedParserFactory<HNRVMDevice> DeviceFactory;

const std::string kNs = kTypesNamespace;

// A device element in the platform namespace, stamped with `type`.
std::string deviceXml(const std::string& type, const std::string& body)
{
    return "<device xmlns:t='" + kNs + "' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xsi:type='t:" +
           type + "'>" + body + "</device>";
}

void fillBase(HNRVMDevice& d, int seed)
{
    d.connected = true;
    d.enabled = false;
    d.emulationType = 3 + seed;
    d.remote = true;
    d.systemName = "/dev/sr" + std::to_string(seed);
    d.friendlyName = "Device " + std::to_string(seed);
    d.description = "a device & its <text>";
    d.summaryInfo = "summary";
    d.bootable = true;
    d.bootInUse = true;
    d.bootSequenceIndex = seed;
    d.userName = "operator";
    d.password = "s3cr3t:pw";
    d.deviceIndex = 10 + seed;
}

// One device of each class with every field set.
std::vector<boost::shared_ptr<HNRVMDevice>> everyClass()
{
    std::vector<boost::shared_ptr<HNRVMDevice>> v;
    v.push_back(boost::make_shared<HNRVMDevice>());
    auto floppy = boost::make_shared<HNRVMFloppyDiskDevice>();
    floppy->createImage = true;
    v.push_back(floppy);
    auto optical = boost::make_shared<HNRVMOpticalDiskDevice>();
    optical->interfaceType = 1;
    optical->stackIndex = 2;
    optical->passthrough = true;
    v.push_back(optical);
    auto hdd = boost::make_shared<HNRVMHardDiskDevice>();
    hdd->interfaceType = 2;
    hdd->stackIndex = 0;
    hdd->passthrough = false;
    hdd->diskType = 1;
    hdd->splitted = true;
    hdd->size = 65536;
    hdd->sizeOnDisk = 1024;
    hdd->createImage = false;
    hdd->valid = true;
    v.push_back(hdd);
    v.push_back(boost::make_shared<HNRVMSCSIDevice>());
    v.push_back(boost::make_shared<HNRVMPCIDevice>());
    auto serial = boost::make_shared<HNRVMSerialPortDevice>();
    serial->socketMode = 1;
    v.push_back(serial);
    v.push_back(boost::make_shared<HNRVMParallelPortDevice>());
    auto net = boost::make_shared<HNRVMNetworkDevice>();
    net->boundAdapterName = "eth0";
    net->boundAdapterIndex = 0;
    net->macAddress = "00:1C:42:AA:BB:CC";
    net->ipAddresses = std::vector<HNKIPAddress>{HNKIPAddress("10.0.0.5", 24), HNKIPAddress("fe80::1", 64)};
    net->dnsServers = std::set<std::string>{"10.0.0.1", "10.0.0.2"};
    net->searchDomains = std::set<std::string>{"example.test"};
    net->configuredWithDhcp = true;
    net->defaultGateway = "10.0.0.254";
    net->virtualNetworkId = "Bridged";
    v.push_back(net);
    auto sound = boost::make_shared<HNRVMSoundDevice>();
    sound->outputDevice = "default";
    sound->mixerDevice = "mixer0";
    v.push_back(sound);
    auto usb = boost::make_shared<HNRVMUSBDevice>();
    usb->autoConnectDevices = 2;
    v.push_back(usb);
    int seed = 0;
    for (auto& d : v)
        fillBase(*d, seed++);
    return v;
}

const char* const kTypeNames[] = {"vm_device",         "vm_floppy_disk_device", "vm_optical_disk_device",
                                  "vm_hard_disk_device", "vm_scsi_device",      "vm_pci_device",
                                  "vm_serial_port_device", "vm_parallel_port_device", "vm_network_device",
                                  "vm_sound_device",   "vm_usb_device"};

TEST(HNRVMDeviceTest, RegistryHoldsElevenTypesWithTheBaseAsDefault)
{
    EXPECT_EQ(11u, DeviceFactory::factories().size());
    EXPECT_EQ(11u, DeviceFactory::factoriesByType().size());
    for (const char* name : kTypeNames)
        EXPECT_EQ(1u, DeviceFactory::factories().count(kNs + ":" + name)) << name;
    auto found = DeviceFactory::factories().find(kNs + ":vm_device");
    ASSERT_NE(DeviceFactory::factories().end(), found);
    EXPECT_EQ(static_cast<DeviceFactory*>(&factoryHNRVMDevice), found->second);
    EXPECT_EQ(static_cast<DeviceFactory*>(&factoryHNRVMDevice), DeviceFactory::defaultFactory());
    EXPECT_EQ(static_cast<DeviceFactory*>(&factoryHNRVMUSBDevice),
              DeviceFactory::factories().find(kNs + ":vm_usb_device")->second);
}

TEST(HNRVMDeviceTest, EveryClassWrittenThroughTheRegistryReadsBackAsTheSameClass)
{
    std::vector<boost::shared_ptr<HNRVMDevice>> devices = everyClass();
    ASSERT_EQ(11u, devices.size());
    for (size_t i = 0; i < devices.size(); ++i) {
        HNKMessageIterator out("device");
        ASSERT_EQ(0, out.putObject(devices[i], HNKWriterDerived<HNRVMDevice>())) << i;
        EXPECT_EQ(kNs + ":" + kTypeNames[i], out.getTypeName());
        EXPECT_EQ("", xmllintProblems(out.toXML()));
        HNKMessageIterator in = parsed(out.toXML());
        boost::shared_ptr<HNRVMDevice> back;
        ASSERT_EQ(0, HNKReaderDerived<HNRVMDevice>(false)(in, back)) << kTypeNames[i];
        ASSERT_TRUE(back);
        EXPECT_EQ(typeid(*devices[i]), typeid(*back)) << kTypeNames[i];
        EXPECT_EQ(0, devices[i]->compare(*back)) << kTypeNames[i] << "\n" << out.toXML();
        EXPECT_EQ(0, back->compare(*devices[i])) << kTypeNames[i];
    }
}

// A class of the family without a factory of its own.
struct HNRTestOnlyDevice : HNRVMDevice {
    int extra = 7;
};

TEST(HNRVMDeviceTest, ClassWithoutItsOwnFactoryIsWrittenAsTheBaseDevice)
{
    HNRTestOnlyDevice d;
    fillBase(d, 1);
    HNKMessageIterator out("device");
    ASSERT_EQ(0, out.putObject(d, HNKWriterDerived<HNRVMDevice>()));
    EXPECT_EQ(kNs + ":vm_device", out.getTypeName());
    boost::shared_ptr<HNRVMDevice> back;
    HNKMessageIterator in = parsed(out.toXML());
    ASSERT_EQ(0, HNKReaderDerived<HNRVMDevice>(false)(in, back));
    EXPECT_EQ(typeid(HNRVMDevice), typeid(*back));
    EXPECT_EQ(0, back->compare(d));
}

TEST(HNRVMDeviceTest, UnknownTypeReadsAsBaseOnlyWithTheDefault)
{
    HNKMessageIterator in = parsed(deviceXml("vm_quantum_device", "<emulation_type>4</emulation_type><qubits>9</qubits>"));
    boost::shared_ptr<HNRVMDevice> d;
    EXPECT_EQ(-1, HNKReaderDerived<HNRVMDevice>(false)(in, d));
    EXPECT_FALSE(d);
    ASSERT_EQ(0, HNKReaderDerived<HNRVMDevice>(true)(in, d));
    EXPECT_EQ(typeid(HNRVMDevice), typeid(*d));
    EXPECT_EQ(4, d->emulationType);
}

TEST(HNRVMDeviceTest, BaseWriterOrderAndPresenceFlags)
{
    HNRVMDevice d;
    fillBase(d, 0);
    HNKMessageIterator out("device");
    ASSERT_EQ(0, out.putObject(d, HNRVMDevice::Writer()));
    std::vector<std::string> expected = {"connected",   "enabled",        "emulation_type",      "remote",
                                         "sys_name",    "friendly_name",  "description",         "summary_info",
                                         "is_bootable", "is_boot_in_use", "boot_sequence_index", "device_index",
                                         "user_name",   "password"};
    EXPECT_EQ(expected, childNames(out));
    EXPECT_NE(std::string::npos, out.toXML().find("<is_bootable/>")) << out.toXML();
    EXPECT_NE(std::string::npos, out.toXML().find("<is_boot_in_use/>")) << out.toXML();
}

TEST(HNRVMDeviceTest, MinimalDeviceWritesOnlyEmulationTypeAndSummary)
{
    HNRVMDevice d;
    HNKMessageIterator out("device");
    ASSERT_EQ(0, out.putObject(d, HNRVMDevice::Writer()));
    EXPECT_EQ((std::vector<std::string>{"emulation_type", "summary_info"}), childNames(out));
}

TEST(HNRVMDeviceTest, BootableFalseWritesNoElementAndReadsBackFalse)
{
    HNRVMDevice d;
    d.bootable = false;
    d.bootInUse = false; // specified but false: no element either
    HNKMessageIterator out("device");
    ASSERT_EQ(0, out.putObject(d, HNRVMDevice::Writer()));
    EXPECT_FALSE(out.hasChild("is_bootable"));
    EXPECT_FALSE(out.hasChild("is_boot_in_use"));
    HNRVMDevice back;
    back.bootable = true;
    ASSERT_EQ(0, HNRVMDevice::Reader()(parsed(out.toXML()), back));
    EXPECT_FALSE(back.bootable);
    EXPECT_FALSE(back.bootInUse.isSpecified());
}

TEST(HNRVMDeviceTest, PresenceFlagsReadAsTrueWhateverTheirText)
{
    HNRVMDevice d;
    ASSERT_EQ(0, HNRVMDevice::Reader()(parsed("<d><emulation_type>1</emulation_type><is_bootable>0</is_bootable>"
                                              "<is_boot_in_use/></d>"),
                                       d));
    EXPECT_TRUE(d.bootable);
    EXPECT_TRUE(d.bootInUse.isSpecified());
    EXPECT_TRUE(d.bootInUse.get());
}

TEST(HNRVMDeviceTest, AbsentBootInUseLeavesTheFieldAsItWas)
{
    HNRVMDevice d;
    d.bootInUse = false;
    ASSERT_EQ(0, HNRVMDevice::Reader()(parsed("<d><emulation_type>1</emulation_type></d>"), d));
    EXPECT_TRUE(d.bootInUse.isSpecified());
    EXPECT_FALSE(d.bootInUse.get());
}

TEST(HNRVMDeviceTest, SummaryInfoIsWrittenButNeverRead)
{
    HNRVMDevice d;
    d.summaryInfo = "2 GB, SATA";
    HNKMessageIterator out("device");
    ASSERT_EQ(0, out.putObject(d, HNRVMDevice::Writer()));
    std::string summary;
    ASSERT_EQ(0, out.getValue("summary_info", summary));
    EXPECT_EQ("2 GB, SATA", summary);
    HNRVMDevice back;
    ASSERT_EQ(0, HNRVMDevice::Reader()(parsed(out.toXML()), back));
    EXPECT_EQ("", back.summaryInfo);
}

TEST(HNRVMDeviceTest, DevicesDifferingOnlyInDeviceIndexOrSummaryCompareEqual)
{
    HNRVMHardDiskDevice a, b;
    fillBase(a, 2);
    fillBase(b, 2);
    b.deviceIndex = 99;
    b.summaryInfo = "other";
    EXPECT_EQ(0, a.compare(b));
    b.deviceIndex.specify(false);
    EXPECT_EQ(0, a.compare(b));
    b.systemName = "/dev/other";
    EXPECT_NE(0, a.compare(b));
}

TEST(HNRVMDeviceTest, UserNameAndPasswordAreBase64OnTheWire)
{
    HNRVMDevice d;
    d.userName = "admin";
    d.password = "pa:ss word";
    HNKMessageIterator out("device");
    ASSERT_EQ(0, out.putObject(d, HNRVMDevice::Writer()));
    std::string rawUser, rawPassword;
    ASSERT_EQ(0, out.getValue("user_name", rawUser));
    ASSERT_EQ(0, out.getValue("password", rawPassword));
    EXPECT_EQ(Base64::encode("admin"), rawUser);
    EXPECT_EQ(Base64::encode("pa:ss word"), rawPassword);
    EXPECT_EQ(std::string::npos, out.toXML().find("pa:ss word"));
    HNRVMDevice back;
    ASSERT_EQ(0, HNRVMDevice::Reader()(parsed(out.toXML()), back));
    EXPECT_EQ("admin", back.userName.get());
    EXPECT_EQ("pa:ss word", back.password.get());
    EXPECT_TRUE(back.password.isSpecified());
}

TEST(HNRVMDeviceTest, MissingEmulationTypeFailsTheRead)
{
    HNRVMDevice d;
    EXPECT_NE(0, HNRVMDevice::Reader()(parsed("<d><connected>1</connected></d>"), d));
    EXPECT_NE(0, HNRVMDevice::Reader()(parsed("<d><emulation_type>x</emulation_type></d>"), d));
    HNRVMSoundDevice s;
    EXPECT_NE(0, HNRVMSoundDevice::Reader()(parsed("<d><output_device>o</output_device></d>"), s));
}

TEST(HNRVMDeviceTest, BaseComparisonOrderAndUnspecifiedSortsFirst)
{
    HNRVMDevice a, b;
    a.emulationType = 1;
    b.emulationType = 2;
    EXPECT_EQ(-1, a.compare(b));
    b.connected = false; // connected comes first and a's is unspecified
    EXPECT_EQ(-1, a.compare(b));
    a.connected = true;
    EXPECT_EQ(1, a.compare(b));
    a.connected = false;
    EXPECT_EQ(-1, a.compare(b)); // emulation type decides again
    b.emulationType = 1;
    a.bootable = true; // bootable is a plain bool: true > false
    EXPECT_EQ(1, a.compare(b));
    b.bootable = true;
    a.password = "x";
    EXPECT_EQ(1, a.compare(b));
    b.userName = "u"; // user name comes before password
    EXPECT_EQ(-1, a.compare(b));
}

TEST(HNRVMDeviceTest, DerivedComparisonChecksTheClassAfterTheBase)
{
    HNRVMSCSIDevice scsi;
    HNRVMPCIDevice pci;
    HNRVMDevice base;
    EXPECT_EQ(-1, scsi.compare(pci));
    EXPECT_EQ(-1, pci.compare(scsi));
    EXPECT_EQ(-1, scsi.compare(base));
    EXPECT_EQ(0, base.compare(scsi)); // the base compares its own fields only
    HNRVMSCSIDevice other;
    EXPECT_EQ(0, scsi.compare(other));
    other.emulationType = -5; // the base part decides first
    EXPECT_EQ(1, scsi.compare(other));
    pci.emulationType = -5; // a differing base part decides before the class test
    EXPECT_EQ(1, scsi.compare(pci));
}

TEST(HNRVMDeviceTest, AddedFieldsCompareInDeclarationOrder)
{
    HNRVMHardDiskDevice a, b;
    a.valid = true;
    b.valid = false;
    EXPECT_EQ(1, a.compare(b));
    b.interfaceType = 1; // first added field: a's unspecified sorts first
    EXPECT_EQ(-1, a.compare(b));
    HNRVMSoundDevice s1, s2;
    s1.outputDevice = "a";
    s2.outputDevice = "b";
    s1.mixerDevice = "z";
    EXPECT_EQ(-1, s1.compare(s2));
}

TEST(HNRVMDeviceTest, NetworkWriterOrderDiffersFromDeclarationOrder)
{
    auto all = everyClass();
    const HNRVMNetworkDevice& net = dynamic_cast<const HNRVMNetworkDevice&>(*all[8]);
    HNKMessageIterator out("device");
    ASSERT_EQ(0, out.putObject(net, HNRVMNetworkDevice::Writer()));
    std::vector<std::string> names = childNames(out);
    std::vector<std::string> tail(names.begin() + 14, names.end());
    std::vector<std::string> expected = {"bound_adapter_name", "bound_adapter_index", "configured_with_dhcp",
                                         "default_gateway",    "virtual_network_id",  "mac_address",
                                         "ip_address",         "ip_address",          "dns_server",
                                         "dns_server",         "search_domain"};
    EXPECT_EQ(expected, tail);
    EXPECT_EQ("password", names[13]);
    EXPECT_EQ(kNs + ":vm_network_device", out.getTypeName());
}

TEST(HNRVMDeviceTest, NetworkListsAbsentReadAsSpecifiedEmptyLists)
{
    HNRVMNetworkDevice d;
    ASSERT_EQ(0, HNRVMNetworkDevice::Reader()(parsed("<d><emulation_type>0</emulation_type></d>"), d));
    EXPECT_TRUE(d.ipAddresses.isSpecified());
    EXPECT_TRUE(d.ipAddresses.get().empty());
    EXPECT_TRUE(d.dnsServers.isSpecified());
    EXPECT_TRUE(d.searchDomains.isSpecified());
    EXPECT_FALSE(d.configuredWithDhcp.isSpecified());
    // So a device whose lists were unspecified does not compare equal after a
    // round trip, while one with specified empty lists does.
    HNRVMNetworkDevice unspecified;
    EXPECT_EQ(-1, unspecified.compare(d));
    HNRVMNetworkDevice empty;
    empty.ipAddresses = std::vector<HNKIPAddress>();
    empty.dnsServers = std::set<std::string>();
    empty.searchDomains = std::set<std::string>();
    EXPECT_EQ(0, empty.compare(d));
}

TEST(HNRVMDeviceTest, NetworkListFailureLeavesTheListUnspecifiedButTheReadSucceeds)
{
    HNRVMNetworkDevice d;
    const std::string body = "<emulation_type>0</emulation_type><mac_address>m</mac_address>"
                             "<ip_address><address>10.0.0.1</address><prefix_length>8</prefix_length></ip_address>"
                             "<ip_address><address>10.0.0.2</address></ip_address>"
                             "<dns_server>1.1.1.1</dns_server><configured_with_dhcp/>";
    ASSERT_EQ(0, HNRVMNetworkDevice::Reader()(parsed("<d>" + body + "</d>"), d));
    EXPECT_FALSE(d.ipAddresses.isSpecified());
    ASSERT_EQ(1u, d.ipAddresses.get().size()); // items before the bad one stay
    EXPECT_EQ("10.0.0.1", d.ipAddresses.get()[0].getAddress());
    EXPECT_TRUE(d.dnsServers.isSpecified());
    EXPECT_EQ(1u, d.dnsServers.get().count("1.1.1.1"));
    EXPECT_TRUE(d.configuredWithDhcp.get());
    EXPECT_EQ("m", d.macAddress.get());
    // The base part failing fails the device.
    HNRVMNetworkDevice e;
    EXPECT_EQ(-1, HNRVMNetworkDevice::Reader()(parsed("<d><mac_address>m</mac_address></d>"), e));
}

TEST(HNRVMDeviceTest, NetworkComparesTheAddressListLast)
{
    HNRVMNetworkDevice a, b;
    a.ipAddresses = std::vector<HNKIPAddress>{HNKIPAddress("10.0.0.9", 8)};
    b.ipAddresses = std::vector<HNKIPAddress>{HNKIPAddress("10.0.0.1", 8)};
    EXPECT_EQ(1, a.compare(b));
    b.virtualNetworkId = "Host-only"; // compared before the address list
    EXPECT_EQ(-1, a.compare(b));
    a.virtualNetworkId = "Host-only";
    a.searchDomains = std::set<std::string>{"b"};
    b.searchDomains = std::set<std::string>{"a"};
    EXPECT_EQ(1, a.compare(b));
}

TEST(HNRVMDeviceTest, PolymorphicListStopsAtABadItemAndKeepsTheEarlierOnes)
{
    HNRVMDeviceList list;
    auto all = everyClass();
    list.push_back(all[1]);
    list.push_back(all[8]);
    HNKMessageIterator out("devices");
    ASSERT_EQ(0, out.putObject(list, HNKWriterDerivedList<int, HNRVMDevice>(1114)));
    EXPECT_EQ((std::vector<std::string>{"device", "device"}), childNames(out));
    EXPECT_EQ("", xmllintProblems(out.toXML()));

    std::string text = out.toXML();
    // Drop the emulation type of the second item only.
    size_t second = text.find("<device ", text.find("<device ") + 1);
    size_t et = text.find("<emulation_type>", second);
    size_t etEnd = text.find("</emulation_type>", et) + std::string("</emulation_type>").size();
    text.erase(et, etEnd - et);
    HNRVMDeviceList back;
    HNKReaderDerivedList<int, HNRVMDevice> reader(1114, HNK_READER_ABSENCE_OK, true);
    EXPECT_EQ(-1, reader(parsed(text), back));
    ASSERT_EQ(1u, back.size());
    EXPECT_EQ(typeid(HNRVMFloppyDiskDevice), typeid(*back[0]));
    EXPECT_EQ(0, all[1]->compare(*back[0]));
}

} // namespace
