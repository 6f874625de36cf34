#include "model/HNRCommonDevice.h"

#include "HNRFunctionality/model/RecordRoundTrip.h"

#include "HNKSerialization.h"

#include <gtest/gtest.h>

#include <boost/shared_ptr.hpp>

#include <memory>
#include <string>
#include <typeinfo>

using namespace HNR;

namespace {

typedef HNKDerivedParserFactory<HNKCommonDevice> DeviceFactory;

const std::string kTypes = kTypesNamespace;

std::string deviceXML(const std::string& type, const std::string& body)
{
    return "<host_device xmlns:hnr='" + kTypes + "' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' "
           "xsi:type='hnr:" + type + "'>" + body + "</host_device>";
}

void expectSameDevice(const HNKCommonDevice& a, const HNKCommonDevice& b)
{
    EXPECT_EQ(typeid(a), typeid(b));
    EXPECT_EQ(a.getName(), b.getName());
    EXPECT_EQ(a.getDescription(), b.getDescription());
    const HNRCommonDevice* ra = dynamic_cast<const HNRCommonDevice*>(&a);
    const HNRCommonDevice* rb = dynamic_cast<const HNRCommonDevice*>(&b);
    ASSERT_TRUE(ra && rb);
    EXPECT_EQ(ra->getSysName(), rb->getSysName());
}

struct Sample {
    const char* type;
    const std::type_info& cls;
    const char* sysName;
};

const Sample kSamples[] = {
    {"common_device", typeid(HNRCommonDevice), "pci0000:00"},
    {"serial_port_device", typeid(HNRSerialPortDevice), "/dev/ttyS0"},
    {"parallel_port_device", typeid(HNRParallelPortDevice), "/dev/parport0"},
    {"hard_disk_device", typeid(HNRHardDiskDevice), "/dev/sda"},
    {"optical_disk_device", typeid(HNROpticalDiskDevice), "/dev/sr0"},
    {"floppy_disk_device", typeid(HNRFloppyDiskDevice), "/dev/fd0"},
    {"printer_device", typeid(HNRPrinterDevice), "/dev/usb/lp0"},
    {"sound_output_device", typeid(HNRSoundOutputDevice), "hw:0,0"},
    {"sound_mixer_device", typeid(HNRSoundMixerDevice), "/dev/snd/controlC0"},
};

TEST(HNRCommonDeviceTest, EverySampleReadsAsItsClassAndSurvivesTheRoundTrip)
{
    for (const Sample& s : kSamples) {
        SCOPED_TRACE(s.type);
        RoundTrip<HNKCommonDevice> trip = roundTripSample<HNKCommonDevice>(std::string(s.type) + ".xml");
        ASSERT_TRUE(trip.first && trip.second);
        EXPECT_EQ(s.cls, typeid(*trip.first));
        const HNRCommonDevice& dev = dynamic_cast<const HNRCommonDevice&>(*trip.first);
        EXPECT_EQ(s.sysName, dev.getSysName());
        EXPECT_FALSE(dev.getName().empty());
        EXPECT_FALSE(dev.getDescription().empty());
        expectSameDevice(*trip.first, *trip.second);
    }
}

TEST(HNRCommonDeviceTest, SpecialCharactersInTextsSurviveTheRoundTrip)
{
    RoundTrip<HNKCommonDevice> trip = roundTripSample<HNKCommonDevice>("printer_device.xml");
    ASSERT_TRUE(trip.second);
    EXPECT_EQ("HP LaserJet M404 & duplex unit", trip.second->getDescription());
    trip = roundTripSample<HNKCommonDevice>("floppy_disk_device.xml");
    ASSERT_TRUE(trip.second);
    EXPECT_EQ("3.5\" 1.44 MB drive", trip.second->getDescription());
}

TEST(HNRCommonDeviceTest, ElementWithoutSysNameReadsWithAnEmptySystemName)
{
    HNKMessageIterator it = parsedMessage(
        deviceXML("serial_port_device", "<device_name>COM2</device_name><device_description>d</device_description>"));
    boost::shared_ptr<HNKCommonDevice> dev;
    ASSERT_EQ(0, HNKReaderDerived<HNKCommonDevice>(false)(it, dev));
    EXPECT_EQ(typeid(HNRSerialPortDevice), typeid(*dev));
    EXPECT_EQ("COM2", dev->getName());
    EXPECT_EQ("", dynamic_cast<HNRCommonDevice&>(*dev).getSysName());

    // Read into an existing record, the missing element leaves the name as it was.
    HNRCommonDevice target;
    target.setSysName("/dev/old");
    EXPECT_EQ(0, HNRCommonDevice::Reader()(it, target));
    EXPECT_EQ("/dev/old", target.getSysName());
}

TEST(HNRCommonDeviceTest, RejectedBasePartFailsAndLeavesTheSystemNameUnchanged)
{
    // The framework part needs its description.
    HNKMessageIterator it = parsedMessage(
        deviceXML("hard_disk_device", "<device_name>Disk</device_name><sys_name>/dev/sdb</sys_name>"));
    HNRHardDiskDevice target;
    target.setSysName("/dev/sda");
    EXPECT_EQ(-1, HNRCommonDevice::Reader()(it, target));
    EXPECT_EQ("/dev/sda", target.getSysName());

    boost::shared_ptr<HNKCommonDevice> dev;
    EXPECT_EQ(-1, HNKReaderDerived<HNKCommonDevice>(false)(it, dev));
    EXPECT_FALSE(dev);
}

TEST(HNRCommonDeviceTest, EmptySystemNameIsWrittenAsAnEmptyElement)
{
    HNRPrinterDevice printer;
    printer.setName("P");
    HNKMessageIterator out("host_device");
    ASSERT_EQ(0, out.putObject(printer, HNKWriterDerived<HNKCommonDevice>()));
    ASSERT_TRUE(out.hasChild("sys_name")) << out.toXML();
    std::string value = "x";
    EXPECT_EQ(0, out.getValue("sys_name", value));
    EXPECT_EQ("", value);
    EXPECT_EQ(kTypes + ":printer_device", out.getTypeName());
    EXPECT_EQ("", xmllintProblems(out.toXML()));
}

TEST(HNRCommonDeviceTest, KindCloneIsFreshButCommonCloneIsACopy)
{
    HNRHardDiskDevice disk;
    disk.setName("Disk 0");
    disk.setDescription("SSD");
    disk.setSysName("/dev/sda");
    std::unique_ptr<HNKCommonDevice> diskClone(static_cast<const HNKCommonDevice&>(disk).clone());
    EXPECT_EQ(typeid(HNRHardDiskDevice), typeid(*diskClone));
    EXPECT_EQ("", dynamic_cast<HNRCommonDevice&>(*diskClone).getSysName());
    EXPECT_EQ("", diskClone->getName());
    EXPECT_EQ("", diskClone->getDescription());

    HNRCommonDevice common;
    common.setName("Bridge");
    common.setDescription("PCI host bridge");
    common.setSysName("pci0000:00");
    std::unique_ptr<HNKCommonDevice> commonClone(static_cast<const HNKCommonDevice&>(common).clone());
    expectSameDevice(common, *commonClone);

    HNKCommonDevice base;
    base.setName("n");
    std::unique_ptr<HNKCommonDevice> baseClone(base.clone());
    EXPECT_EQ(typeid(HNKCommonDevice), typeid(*baseClone));
    EXPECT_EQ("n", baseClone->getName());
}

TEST(HNRCommonDeviceTest, EveryKindClonesToItsOwnClass)
{
    std::unique_ptr<HNKCommonDevice> kinds[] = {
        std::unique_ptr<HNKCommonDevice>(new HNRSerialPortDevice),  std::unique_ptr<HNKCommonDevice>(new HNRParallelPortDevice),
        std::unique_ptr<HNKCommonDevice>(new HNRPrinterDevice),     std::unique_ptr<HNKCommonDevice>(new HNROpticalDiskDevice),
        std::unique_ptr<HNKCommonDevice>(new HNRHardDiskDevice),    std::unique_ptr<HNKCommonDevice>(new HNRFloppyDiskDevice),
        std::unique_ptr<HNKCommonDevice>(new HNRSoundOutputDevice), std::unique_ptr<HNKCommonDevice>(new HNRSoundMixerDevice),
    };
    for (const auto& kind : kinds) {
        dynamic_cast<HNRCommonDevice&>(*kind).setSysName("set");
        std::unique_ptr<HNKCommonDevice> copy(kind->clone());
        EXPECT_EQ(typeid(*kind), typeid(*copy));
        EXPECT_EQ("", dynamic_cast<HNRCommonDevice&>(*copy).getSysName());
    }
}

TEST(HNRCommonDeviceTest, FactoryWriteRefusesNullAndAnotherClass)
{
    HNKMessageIterator out("host_device");
    EXPECT_EQ(-1, factoryHNRCommonDevice.write(out, nullptr));
    EXPECT_EQ(-1, factoryHNRSerialPortDevice.write(out, nullptr));
    HNRCommonDevice common;
    EXPECT_EQ(-1, factoryHNRSerialPortDevice.write(out, &common));
    HNRParallelPortDevice parallel;
    EXPECT_EQ(-1, factoryHNRSerialPortDevice.write(out, &parallel));
    // A kind is an HNRCommonDevice: the common factory writes it (as common_device).
    HNKMessageIterator out2("host_device");
    EXPECT_EQ(0, factoryHNRCommonDevice.write(out2, &parallel));
    EXPECT_EQ(kTypes + ":common_device", out2.getTypeName());
}

TEST(HNRCommonDeviceTest, SoundMixerElementReadsAsSoundMixerDevice)
{
    HNKMessageIterator it = parsedMessage(deviceXML(
        "sound_mixer_device",
        "<device_name>Mixer</device_name><device_description>d</device_description><sys_name>m</sys_name>"));
    boost::shared_ptr<HNKCommonDevice> dev;
    ASSERT_EQ(0, HNKReaderDerived<HNKCommonDevice>(false)(it, dev));
    EXPECT_EQ(typeid(HNRSoundMixerDevice), typeid(*dev));
    EXPECT_EQ("m", dynamic_cast<HNRCommonDevice&>(*dev).getSysName());
}

TEST(HNRCommonDeviceTest, UnknownTypeHasNoFallbackInTheDeviceRegistry)
{
    HNKMessageIterator it = parsedMessage(
        deviceXML("webcam_device", "<device_name>C</device_name><device_description>d</device_description>"));
    boost::shared_ptr<HNKCommonDevice> dev;
    EXPECT_EQ(-1, HNKReaderDerived<HNKCommonDevice>(false)(it, dev));
    EXPECT_EQ(-1, HNKReaderDerived<HNKCommonDevice>(true)(it, dev));
    EXPECT_FALSE(dev);
}

TEST(HNRCommonDeviceTest, NineFactoriesRegisterUnderTypesNamespaceNoneDefault)
{
    const std::pair<const char*, const DeviceFactory*> expected[] = {
        {"common_device", &factoryHNRCommonDevice},
        {"serial_port_device", &factoryHNRSerialPortDevice},
        {"parallel_port_device", &factoryHNRParallelPortDevice},
        {"hard_disk_device", &factoryHNRHardDiskDevice},
        {"optical_disk_device", &factoryHNROpticalDiskDevice},
        {"floppy_disk_device", &factoryHNRFloppyDiskDevice},
        {"printer_device", &factoryHNRPrinterDevice},
        {"sound_output_device", &factoryHNRSoundOutputDevice},
        {"sound_mixer_device", &factoryHNRSoundMixerDevice},
    };
    for (const auto& e : expected) {
        auto found = DeviceFactory::factories().find(kTypes + ":" + e.first);
        ASSERT_NE(DeviceFactory::factories().end(), found) << e.first;
        EXPECT_EQ(e.second, found->second) << e.first;
    }
    EXPECT_EQ(&factoryHNRSoundMixerDevice, DeviceFactory::factoriesByType()[typeid(HNRSoundMixerDevice).name()]);
    EXPECT_EQ(nullptr, DeviceFactory::defaultFactory());
}

TEST(HNRCommonDeviceTest, WritersUseStringDescriptorsAndBaseWriterItsNumbers)
{
    EXPECT_EQ(0u, HNRCommonDevice::Writer::getNSID());
    EXPECT_EQ(50u, HNRCommonDevice::Writer::getTypeID());
    EXPECT_STREQ("common_device", HNRCommonDevice::Writer::getStrTypeID());
    EXPECT_EQ(0u, HNRSoundOutputDevice::Writer::getNSID());
    EXPECT_EQ(50u, HNRSoundOutputDevice::Writer::getTypeID());
    EXPECT_STREQ(kTypesNamespace, HNRSoundOutputDevice::Writer::getStrNSID());
    EXPECT_EQ(278u, HNKCommonDevice::Writer::getNSID());
    EXPECT_EQ(301u, HNKCommonDevice::Writer::getTypeID());

    // Written alone, the framework part carries the framework's own type.
    HNKCommonDevice base;
    HNKMessageIterator out("host_device");
    ASSERT_EQ(0, out.putObject(base, HNKCommonDevice::Writer()));
    EXPECT_EQ(std::string(HNKDefaultMap::findNSID(278)) + ":" + HNKDefaultMap::findTypeID(301), out.getTypeName());
    // The common writer alone stamps common_device (its stamp comes first).
    HNRCommonDevice common;
    HNKMessageIterator out2("host_device");
    ASSERT_EQ(0, out2.putObject(common, HNRCommonDevice::Writer()));
    EXPECT_EQ(kTypes + ":common_device", out2.getTypeName());
}

} // namespace
