#pragma once
// Virtual hardware of one virtual machine: the base device with the fields
// every device has, ten device classes, and the device list a VM
// configuration carries under "device_list". Each class reads and writes
// itself over the message tree and is registered under its own XML type
// name in the platform types namespace, so lists are read and written
// polymorphically; an element of an unknown type reads as HNRVMDevice.
//
// Fields are public: these are plain records. "opt" fields are
// HNKOptionalProperty values, absent from the tree when unspecified.
#include "HNKDerivedParserFactory.h"
#include "HNKIPAddress.h"
#include "HNKOptionalProperty.h"
#include "HNKWriterBase.h"

#include <boost/shared_ptr.hpp>

#include <set>
#include <string>
#include <vector>

class HNKMessageIterator;

namespace HNR {

class HNRVMDevice {
public:
    HNRVMDevice() = default;
    virtual ~HNRVMDevice();

    // First non-zero of: connected, enabled, emulation type, remote, system
    // name, friendly name, description, bootable, boot in use, boot sequence
    // index, user name, password. Summary and device index never count.
    virtual int compare(const HNRVMDevice& other) const;

    HNKOptionalProperty<bool> connected;          // "connected"
    HNKOptionalProperty<bool> enabled;            // "enabled"
    int emulationType = 0;                        // "emulation_type", required on read
    HNKOptionalProperty<bool> remote;             // "remote"
    HNKOptionalProperty<std::string> systemName;  // "sys_name"
    HNKOptionalProperty<std::string> friendlyName; // "friendly_name"
    HNKOptionalProperty<std::string> description; // "description"
    std::string summaryInfo;                      // "summary_info": written, never read
    bool bootable = false;                        // "is_bootable": present means true
    HNKOptionalProperty<bool> bootInUse;          // "is_boot_in_use": present means true
    HNKOptionalProperty<int> bootSequenceIndex;   // "boot_sequence_index"
    HNKOptionalProperty<std::string> userName;    // "user_name", Base64 on the wire
    HNKOptionalProperty<std::string> password;    // "password", Base64 on the wire
    HNKOptionalProperty<int> deviceIndex;         // "device_index", never compared

    // Missing "emulation_type" fails with its status; every other field is
    // optional.
    struct Reader {
        int operator()(const HNKMessageIterator& it, HNRVMDevice& d) const;
    };
    // Stops at the first failing put and returns its status.
    struct Writer : HNKWriterBase {
        static const char* getStrNSID();
        static const char* getStrTypeID() { return "vm_device"; }
        static unsigned getNSID() { return 0; }
        static unsigned getTypeID() { return 0; }
        int operator()(HNKMessageIterator& it, const HNRVMDevice& d) const;
    };
};

// A configuration's devices; items are the children with element ID 1114.
typedef std::vector<boost::shared_ptr<HNRVMDevice>> HNRVMDeviceList;

// Declares a device class: base fields first (base Reader and Writer run on
// the same element), then the added fields in declaration order.
#define HNR_VM_DEVICE_IO(Class, typeName)                                              \
    int compare(const HNRVMDevice& other) const override;                             \
    struct Reader {                                                                    \
        int operator()(const HNKMessageIterator& it, Class& d) const;                 \
    };                                                                                 \
    struct Writer : HNKWriterBase {                                                    \
        static const char* getStrNSID() { return HNRVMDevice::Writer::getStrNSID(); } \
        static const char* getStrTypeID() { return typeName; }                         \
        static unsigned getNSID() { return 0; }                                        \
        static unsigned getTypeID() { return 0; }                                      \
        int operator()(HNKMessageIterator& it, const Class& d) const;                 \
    }

class HNRVMFloppyDiskDevice : public HNRVMDevice {
public:
    HNKOptionalProperty<bool> createImage; // "create_image"
    HNR_VM_DEVICE_IO(HNRVMFloppyDiskDevice, "vm_floppy_disk_device");
};

class HNRVMOpticalDiskDevice : public HNRVMDevice {
public:
    HNKOptionalProperty<int> interfaceType; // "interface_type"
    HNKOptionalProperty<int> stackIndex;    // "stack_index"
    HNKOptionalProperty<bool> passthrough;  // "passthrough"
    HNR_VM_DEVICE_IO(HNRVMOpticalDiskDevice, "vm_optical_disk_device");
};

class HNRVMHardDiskDevice : public HNRVMDevice {
public:
    HNKOptionalProperty<int> interfaceType; // "interface_type"
    HNKOptionalProperty<int> stackIndex;    // "stack_index"
    HNKOptionalProperty<bool> passthrough;  // "passthrough"
    HNKOptionalProperty<int> diskType;      // "disk_type"
    HNKOptionalProperty<bool> splitted;     // "splitted"
    HNKOptionalProperty<int> size;          // "size"
    HNKOptionalProperty<int> sizeOnDisk;    // "size_on_disk"
    HNKOptionalProperty<bool> createImage;  // "create_image"
    HNKOptionalProperty<bool> valid;        // "valid"
    HNR_VM_DEVICE_IO(HNRVMHardDiskDevice, "vm_hard_disk_device");
};

class HNRVMSCSIDevice : public HNRVMDevice {
public:
    HNR_VM_DEVICE_IO(HNRVMSCSIDevice, "vm_scsi_device");
};

class HNRVMPCIDevice : public HNRVMDevice {
public:
    HNR_VM_DEVICE_IO(HNRVMPCIDevice, "vm_pci_device");
};

class HNRVMSerialPortDevice : public HNRVMDevice {
public:
    HNKOptionalProperty<int> socketMode; // "socket_mode"
    HNR_VM_DEVICE_IO(HNRVMSerialPortDevice, "vm_serial_port_device");
};

class HNRVMParallelPortDevice : public HNRVMDevice {
public:
    HNR_VM_DEVICE_IO(HNRVMParallelPortDevice, "vm_parallel_port_device");
};

// The three lists have no wrapper: their items are direct children of the
// device element, told apart by element ID. Reading marks each list
// specified when its read succeeded, so an absent list reads back as a
// specified empty one; a failed list read does not fail the device read.
// The writer's order differs from the declaration order (see the .cpp).
class HNRVMNetworkDevice : public HNRVMDevice {
public:
    HNKOptionalProperty<std::string> boundAdapterName;        // "bound_adapter_name"
    HNKOptionalProperty<int> boundAdapterIndex;               // "bound_adapter_index"
    HNKOptionalProperty<std::string> macAddress;              // "mac_address"
    HNKOptionalProperty<std::vector<HNKIPAddress>> ipAddresses; // items: element ID 2047
    HNKOptionalProperty<std::set<std::string>> dnsServers;    // items: element ID 1281
    HNKOptionalProperty<std::set<std::string>> searchDomains; // items: element ID 1558
    HNKOptionalProperty<bool> configuredWithDhcp;             // "configured_with_dhcp": present means true
    HNKOptionalProperty<std::string> defaultGateway;          // "default_gateway"
    HNKOptionalProperty<std::string> virtualNetworkId;        // "virtual_network_id"
    HNR_VM_DEVICE_IO(HNRVMNetworkDevice, "vm_network_device");
};

class HNRVMSoundDevice : public HNRVMDevice {
public:
    HNKOptionalProperty<std::string> outputDevice; // "output_device"
    HNKOptionalProperty<std::string> mixerDevice;  // "mixer_device"
    HNR_VM_DEVICE_IO(HNRVMSoundDevice, "vm_sound_device");
};

class HNRVMUSBDevice : public HNRVMDevice {
public:
    HNKOptionalProperty<int> autoConnectDevices; // "auto_connect_devices"
    HNR_VM_DEVICE_IO(HNRVMUSBDevice, "vm_usb_device");
};

#undef HNR_VM_DEVICE_IO

// Factories of the device family, constructed in this order while the
// library loads; factoryHNRVMDevice is the default of the registry.
template <class Device>
using HNRVMDeviceFactoryT =
    HNKDerivedParserFactoryT<Device, HNRVMDevice, HNRVMDevice, typename Device::Reader, typename Device::Writer>;

extern HNRVMDeviceFactoryT<HNRVMDevice> factoryHNRVMDevice;
extern HNRVMDeviceFactoryT<HNRVMFloppyDiskDevice> factoryHNRVMFloppyDiskDevice;
extern HNRVMDeviceFactoryT<HNRVMOpticalDiskDevice> factoryHNRVMOpticalDiskDevice;
extern HNRVMDeviceFactoryT<HNRVMHardDiskDevice> factoryHNRVMHardDiskDevice;
extern HNRVMDeviceFactoryT<HNRVMSCSIDevice> factoryHNRVMSCSIDevice;
extern HNRVMDeviceFactoryT<HNRVMPCIDevice> factoryHNRVMPCIDevice;
extern HNRVMDeviceFactoryT<HNRVMSerialPortDevice> factoryHNRVMSerialPortDevice;
extern HNRVMDeviceFactoryT<HNRVMParallelPortDevice> factoryHNRVMParallelPortDevice;
extern HNRVMDeviceFactoryT<HNRVMNetworkDevice> factoryHNRVMNetworkDevice;
extern HNRVMDeviceFactoryT<HNRVMSoundDevice> factoryHNRVMSoundDevice;
extern HNRVMDeviceFactoryT<HNRVMUSBDevice> factoryHNRVMUSBDevice;

} // namespace HNR

// The device registry lives in libHNRFunctionality.
HNK_DECLARE_FACTORY_REGISTRY(HNR::HNRVMDevice);

// Entries of the device registry under this XML type key (0 or 1); a C
// symbol so that a program holding the module through dlopen can ask.
extern "C" size_t hnrVMDeviceTypeKeyCount(const char* key);
