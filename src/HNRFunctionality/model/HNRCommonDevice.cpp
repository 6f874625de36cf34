#include "model/HNRCommonDevice.h"

#include "HNKMessageIterator.h"

namespace HNR {

namespace {
const char kSysName[] = "sys_name";
} // namespace

HNRCommonDevice* HNRCommonDevice::clone() const
{
    return new HNRCommonDevice(*this);
}

HNRCommonDevice::~HNRCommonDevice() {}

int HNRCommonDevice::Reader::operator()(const HNKMessageIterator& it, HNRCommonDevice& device) const
{
    if (it.getObject(static_cast<HNKCommonDevice&>(device), HNKCommonDevice::Reader(), std::string()) != 0)
        return -1;
    // Optional on input: a missing element leaves the name as it was.
    it.getValue(kSysName, device.sysName_);
    return 0;
}

int HNRCommonDevice::Writer::operator()(HNKMessageIterator& it, const HNRCommonDevice& device) const
{
    if (it.putObject(static_cast<const HNKCommonDevice&>(device), HNKCommonDevice::Writer(), std::string()) != 0)
        return -1;
    if (it.putValue(kSysName, device.sysName_) != 0)
        return -1;
    return 0;
}

HNRSerialPortDevice* HNRSerialPortDevice::clone() const
{
    return new HNRSerialPortDevice();
}

HNRSerialPortDevice::~HNRSerialPortDevice() {}

int HNRSerialPortDevice::Writer::operator()(HNKMessageIterator& it, const HNRCommonDevice& device) const
{
    return it.putObject(device, HNRCommonDevice::Writer(), std::string());
}

HNRParallelPortDevice* HNRParallelPortDevice::clone() const
{
    return new HNRParallelPortDevice();
}

HNRParallelPortDevice::~HNRParallelPortDevice() {}

int HNRParallelPortDevice::Writer::operator()(HNKMessageIterator& it, const HNRCommonDevice& device) const
{
    return it.putObject(device, HNRCommonDevice::Writer(), std::string());
}

HNRPrinterDevice* HNRPrinterDevice::clone() const
{
    return new HNRPrinterDevice();
}

HNRPrinterDevice::~HNRPrinterDevice() {}

int HNRPrinterDevice::Writer::operator()(HNKMessageIterator& it, const HNRCommonDevice& device) const
{
    return it.putObject(device, HNRCommonDevice::Writer(), std::string());
}

HNROpticalDiskDevice* HNROpticalDiskDevice::clone() const
{
    return new HNROpticalDiskDevice();
}

HNROpticalDiskDevice::~HNROpticalDiskDevice() {}

int HNROpticalDiskDevice::Writer::operator()(HNKMessageIterator& it, const HNRCommonDevice& device) const
{
    return it.putObject(device, HNRCommonDevice::Writer(), std::string());
}

HNRHardDiskDevice* HNRHardDiskDevice::clone() const
{
    return new HNRHardDiskDevice();
}

HNRHardDiskDevice::~HNRHardDiskDevice() {}

int HNRHardDiskDevice::Writer::operator()(HNKMessageIterator& it, const HNRCommonDevice& device) const
{
    return it.putObject(device, HNRCommonDevice::Writer(), std::string());
}

HNRFloppyDiskDevice* HNRFloppyDiskDevice::clone() const
{
    return new HNRFloppyDiskDevice();
}

HNRFloppyDiskDevice::~HNRFloppyDiskDevice() {}

int HNRFloppyDiskDevice::Writer::operator()(HNKMessageIterator& it, const HNRCommonDevice& device) const
{
    return it.putObject(device, HNRCommonDevice::Writer(), std::string());
}

HNRSoundOutputDevice* HNRSoundOutputDevice::clone() const
{
    return new HNRSoundOutputDevice();
}

HNRSoundOutputDevice::~HNRSoundOutputDevice() {}

int HNRSoundOutputDevice::Writer::operator()(HNKMessageIterator& it, const HNRCommonDevice& device) const
{
    return it.putObject(device, HNRCommonDevice::Writer(), std::string());
}

HNRSoundMixerDevice* HNRSoundMixerDevice::clone() const
{
    return new HNRSoundMixerDevice();
}

HNRSoundMixerDevice::~HNRSoundMixerDevice() {}

int HNRSoundMixerDevice::Writer::operator()(HNKMessageIterator& it, const HNRCommonDevice& device) const
{
    return it.putObject(device, HNRCommonDevice::Writer(), std::string());
}

// Constructed in this order at load, destroyed in reverse order at unload.
// The common device is deliberately not the default: it must never become
// the fallback of the framework's device registry.
HNRHostDeviceFactory<HNRCommonDevice> factoryHNRCommonDevice(false);
HNRHostDeviceFactory<HNRSerialPortDevice> factoryHNRSerialPortDevice(false);
HNRHostDeviceFactory<HNRParallelPortDevice> factoryHNRParallelPortDevice(false);
HNRHostDeviceFactory<HNRHardDiskDevice> factoryHNRHardDiskDevice(false);
HNRHostDeviceFactory<HNROpticalDiskDevice> factoryHNROpticalDiskDevice(false);
HNRHostDeviceFactory<HNRFloppyDiskDevice> factoryHNRFloppyDiskDevice(false);
HNRHostDeviceFactory<HNRPrinterDevice> factoryHNRPrinterDevice(false);
HNRHostDeviceFactory<HNRSoundOutputDevice> factoryHNRSoundOutputDevice(false);
HNRHostDeviceFactory<HNRSoundMixerDevice> factoryHNRSoundMixerDevice(false);

} // namespace HNR
