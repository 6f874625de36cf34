#pragma once
// The host's devices as the agent sees them: the framework's host-device
// record plus the device's system name, and eight kinds that add no data and
// exist so that each travels under its own XML type name. All of them are
// read and written polymorphically through the HNKCommonDevice registry.
#include "HNKCommonDevice.h"
#include "HNKWriterBase.h"
#include "frame/HNRConstants.h"

#include <string>

class HNKMessageIterator;

namespace HNR {

class HNRCommonDevice : public HNKCommonDevice {
public:
    HNRCommonDevice() = default;
    HNRCommonDevice(const HNRCommonDevice&) = default;
    HNRCommonDevice& operator=(const HNRCommonDevice&) = default;

    // An equal copy: base fields and system name.
    HNRCommonDevice* clone() const override;
    ~HNRCommonDevice() override;

    const std::string& getSysName() const { return sysName_; }
    void setSysName(const std::string& name) { sysName_ = name; }

    // Shared by all nine types: the base part must read; a missing
    // "sys_name" is tolerated and leaves the system name as it was.
    class Reader {
    public:
        int operator()(const HNKMessageIterator& it, HNRCommonDevice& device) const;
    };
    // The base part, then "sys_name", always (empty too).
    class Writer : public HNKWriterBase {
    public:
        static const char* getStrNSID() { return kTypesNamespace; }
        static const char* getStrTypeID() { return "common_device"; }
        int operator()(HNKMessageIterator& it, const HNRCommonDevice& device) const;
    };

private:
    std::string sysName_;
};

// The eight kinds. Each clone deliberately returns a fresh, default-
// constructed object of the kind, not a copy. Each writer takes the common
// record and hands it to the common writer through putObject; the kind's own
// type name comes from the polymorphic write around it. The numeric IDs are
// the framework writer base's defaults.
#define HNR_HOST_DEVICE_KIND(Class, typeName)                                              \
    Class* clone() const override;                                                         \
    ~Class() override;                                                                     \
    class Writer : public HNKWriterBase {                                                  \
    public:                                                                                \
        static const char* getStrNSID() { return kTypesNamespace; }                        \
        static const char* getStrTypeID() { return typeName; }                             \
        static unsigned getNSID() { return HNKWriterBase::getNSID(); }                     \
        static unsigned getTypeID() { return HNKWriterBase::getTypeID(); }                 \
        int operator()(HNKMessageIterator& it, const HNRCommonDevice& device) const;       \
    }

class HNRSerialPortDevice : public HNRCommonDevice {
public:
    HNR_HOST_DEVICE_KIND(HNRSerialPortDevice, "serial_port_device");
};

class HNRParallelPortDevice : public HNRCommonDevice {
public:
    HNR_HOST_DEVICE_KIND(HNRParallelPortDevice, "parallel_port_device");
};

class HNRPrinterDevice : public HNRCommonDevice {
public:
    HNR_HOST_DEVICE_KIND(HNRPrinterDevice, "printer_device");
};

class HNROpticalDiskDevice : public HNRCommonDevice {
public:
    HNR_HOST_DEVICE_KIND(HNROpticalDiskDevice, "optical_disk_device");
};

class HNRHardDiskDevice : public HNRCommonDevice {
public:
    HNR_HOST_DEVICE_KIND(HNRHardDiskDevice, "hard_disk_device");
};

class HNRFloppyDiskDevice : public HNRCommonDevice {
public:
    HNR_HOST_DEVICE_KIND(HNRFloppyDiskDevice, "floppy_disk_device");
};

class HNRSoundOutputDevice : public HNRCommonDevice {
public:
    HNR_HOST_DEVICE_KIND(HNRSoundOutputDevice, "sound_output_device");
};

class HNRSoundMixerDevice : public HNRCommonDevice {
public:
    HNR_HOST_DEVICE_KIND(HNRSoundMixerDevice, "sound_mixer_device");
};

// The factory objects, registered under the types namespace and each type
// name while the library loads, none of them the registry's default.
template <class Device>
using HNRHostDeviceFactory = HNKDerivedParserFactoryT<Device, HNKCommonDevice, HNKCommonDevice,
                                                      HNRCommonDevice::Reader, typename Device::Writer>;

extern HNRHostDeviceFactory<HNRCommonDevice> factoryHNRCommonDevice;
extern HNRHostDeviceFactory<HNRSerialPortDevice> factoryHNRSerialPortDevice;
extern HNRHostDeviceFactory<HNRParallelPortDevice> factoryHNRParallelPortDevice;
extern HNRHostDeviceFactory<HNRHardDiskDevice> factoryHNRHardDiskDevice;
extern HNRHostDeviceFactory<HNROpticalDiskDevice> factoryHNROpticalDiskDevice;
extern HNRHostDeviceFactory<HNRFloppyDiskDevice> factoryHNRFloppyDiskDevice;
extern HNRHostDeviceFactory<HNRPrinterDevice> factoryHNRPrinterDevice;
extern HNRHostDeviceFactory<HNRSoundOutputDevice> factoryHNRSoundOutputDevice;
extern HNRHostDeviceFactory<HNRSoundMixerDevice> factoryHNRSoundMixerDevice;

} // namespace HNR
