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

// The eight kinds: a fresh object for a clone, the common writer for the
// fields.
#define HNR_HOST_DEVICE_KIND_DEFINITIONS(Class)                                        \
    Class* Class::clone() const { return new Class(); }                                \
    Class::~Class() {}                                                                 \
    int Class::Writer::operator()(HNKMessageIterator& it, const HNRCommonDevice& device) const \
    {                                                                                  \
        return it.putObject(device, HNRCommonDevice::Writer(), std::string());         \
    }

HNR_HOST_DEVICE_KIND_DEFINITIONS(HNRSerialPortDevice)
HNR_HOST_DEVICE_KIND_DEFINITIONS(HNRParallelPortDevice)
HNR_HOST_DEVICE_KIND_DEFINITIONS(HNRPrinterDevice)
HNR_HOST_DEVICE_KIND_DEFINITIONS(HNROpticalDiskDevice)
HNR_HOST_DEVICE_KIND_DEFINITIONS(HNRHardDiskDevice)
HNR_HOST_DEVICE_KIND_DEFINITIONS(HNRFloppyDiskDevice)
HNR_HOST_DEVICE_KIND_DEFINITIONS(HNRSoundOutputDevice)
HNR_HOST_DEVICE_KIND_DEFINITIONS(HNRSoundMixerDevice)

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
