#include "model/HNRVMDevice.h"

#include "frame/HNRConstants.h"
#include "frame/HNROptionalProperty.h"

#include "HNKCompare.h"
#include "HNKMessageIterator.h"
#include "HNKSerialization.h"

HNK_INSTANTIATE_FACTORY_REGISTRY(HNR::HNRVMDevice);

namespace HNR {

namespace {

// An empty element whose presence is the value true.
int putFlag(HNKMessageIterator& it, const char* tag)
{
    if (it.createChild(tag) != 0)
        return -1;
    it.ascend();
    return 0;
}

// Runs the steps in order; the first non-zero status ends the run.
template <class... Steps>
int firstFailure(Steps&&... steps)
{
    int status = 0;
    ((status == 0 ? (status = steps(), 0) : 0), ...);
    return status;
}

// Three-way results in order; the first non-zero decides.
int firstNonZero(std::initializer_list<int> results)
{
    for (int r : results)
        if (r != 0)
            return r;
    return 0;
}

template <class Device>
const Device* sameClass(const HNRVMDevice& other)
{
    return dynamic_cast<const Device*>(&other);
}

} // namespace

// ---- HNRVMDevice ----

HNRVMDevice::~HNRVMDevice() {}

const char* HNRVMDevice::Writer::getStrNSID() { return kTypesNamespace; }

int HNRVMDevice::compare(const HNRVMDevice& o) const
{
    // Evaluated lazily: the first non-zero field decides.
    int c;
    if ((c = compareOptionalProperties(connected, o.connected)) != 0) return c;
    if ((c = compareOptionalProperties(enabled, o.enabled)) != 0) return c;
    if ((c = ::compare(emulationType, o.emulationType)) != 0) return c;
    if ((c = compareOptionalProperties(remote, o.remote)) != 0) return c;
    if ((c = compareOptionalProperties(systemName, o.systemName)) != 0) return c;
    if ((c = compareOptionalProperties(friendlyName, o.friendlyName)) != 0) return c;
    if ((c = compareOptionalProperties(description, o.description)) != 0) return c;
    if ((c = ::compare(bootable, o.bootable)) != 0) return c;
    if ((c = compareOptionalProperties(bootInUse, o.bootInUse)) != 0) return c;
    if ((c = compareOptionalProperties(bootSequenceIndex, o.bootSequenceIndex)) != 0) return c;
    if ((c = compareOptionalProperties(userName, o.userName)) != 0) return c;
    return compareOptionalProperties(password, o.password);
}

int HNRVMDevice::Reader::operator()(const HNKMessageIterator& it, HNRVMDevice& d) const
{
    // "summary_info" is output only and deliberately not read. Fields are
    // asked for in the order the writer puts them (the flags cannot fail, so
    // where they are read changes no outcome).
    return firstFailure([&] { return readOptionalProperty(it, d.connected, "connected"); },
                        [&] { return readOptionalProperty(it, d.enabled, "enabled"); },
                        [&] { return it.getValue("emulation_type", d.emulationType); },
                        [&] { return readOptionalProperty(it, d.remote, "remote"); },
                        [&] { return readOptionalProperty(it, d.systemName, "sys_name"); },
                        [&] { return readOptionalProperty(it, d.friendlyName, "friendly_name"); },
                        [&] { return readOptionalProperty(it, d.description, "description"); },
                        [&] {
                            d.bootable = it.hasChild("is_bootable");
                            if (it.hasChild("is_boot_in_use"))
                                d.bootInUse.set(true);
                            return 0;
                        },
                        [&] { return readOptionalProperty(it, d.bootSequenceIndex, "boot_sequence_index"); },
                        [&] { return readOptionalPropertyBase64(it, d.userName, "user_name"); },
                        [&] { return readOptionalProperty(it, d.deviceIndex, "device_index"); },
                        [&] { return readOptionalPropertyBase64(it, d.password, "password"); });
}

int HNRVMDevice::Writer::operator()(HNKMessageIterator& it, const HNRVMDevice& d) const
{
    return firstFailure([&] { return writeOptionalProperty(it, d.connected, "connected"); },
                        [&] { return writeOptionalProperty(it, d.enabled, "enabled"); },
                        [&] { return it.putValue("emulation_type", d.emulationType); },
                        [&] { return writeOptionalProperty(it, d.remote, "remote"); },
                        [&] { return writeOptionalProperty(it, d.systemName, "sys_name"); },
                        [&] { return writeOptionalProperty(it, d.friendlyName, "friendly_name"); },
                        [&] { return writeOptionalProperty(it, d.description, "description"); },
                        [&] { return it.putValue("summary_info", d.summaryInfo); },
                        [&] { return d.bootable ? putFlag(it, "is_bootable") : 0; },
                        [&] { return d.bootInUse.isSpecified() && d.bootInUse.get() ? putFlag(it, "is_boot_in_use") : 0; },
                        [&] { return writeOptionalProperty(it, d.bootSequenceIndex, "boot_sequence_index"); },
                        [&] { return writeOptionalProperty(it, d.deviceIndex, "device_index"); },
                        [&] { return writeOptionalPropertyBase64(it, d.userName, "user_name"); },
                        [&] { return writeOptionalPropertyBase64(it, d.password, "password"); });
}

// ---- Derived devices: base part on the same element, then added fields ----

namespace {

int readBase(const HNKMessageIterator& it, HNRVMDevice& d)
{
    return it.getObject(d, HNRVMDevice::Reader());
}

int writeBase(HNKMessageIterator& it, const HNRVMDevice& d)
{
    return it.putObject(d, HNRVMDevice::Writer());
}

} // namespace

// Floppy disk
int HNRVMFloppyDiskDevice::compare(const HNRVMDevice& other) const
{
    int c = HNRVMDevice::compare(other);
    if (c != 0)
        return c;
    const HNRVMFloppyDiskDevice* o = sameClass<HNRVMFloppyDiskDevice>(other);
    if (!o)
        return -1;
    return compareOptionalProperties(createImage, o->createImage);
}

int HNRVMFloppyDiskDevice::Reader::operator()(const HNKMessageIterator& it, HNRVMFloppyDiskDevice& d) const
{
    return firstFailure([&] { return readBase(it, d); },
                        [&] { return readOptionalProperty(it, d.createImage, "create_image"); });
}

int HNRVMFloppyDiskDevice::Writer::operator()(HNKMessageIterator& it, const HNRVMFloppyDiskDevice& d) const
{
    return firstFailure([&] { return writeBase(it, d); },
                        [&] { return writeOptionalProperty(it, d.createImage, "create_image"); });
}

// Optical disk
int HNRVMOpticalDiskDevice::compare(const HNRVMDevice& other) const
{
    int c = HNRVMDevice::compare(other);
    if (c != 0)
        return c;
    const HNRVMOpticalDiskDevice* o = sameClass<HNRVMOpticalDiskDevice>(other);
    if (!o)
        return -1;
    return firstNonZero({compareOptionalProperties(interfaceType, o->interfaceType),
                         compareOptionalProperties(stackIndex, o->stackIndex),
                         compareOptionalProperties(passthrough, o->passthrough)});
}

int HNRVMOpticalDiskDevice::Reader::operator()(const HNKMessageIterator& it, HNRVMOpticalDiskDevice& d) const
{
    return firstFailure([&] { return readBase(it, d); },
                        [&] { return readOptionalProperty(it, d.interfaceType, "interface_type"); },
                        [&] { return readOptionalProperty(it, d.stackIndex, "stack_index"); },
                        [&] { return readOptionalProperty(it, d.passthrough, "passthrough"); });
}

int HNRVMOpticalDiskDevice::Writer::operator()(HNKMessageIterator& it, const HNRVMOpticalDiskDevice& d) const
{
    return firstFailure([&] { return writeBase(it, d); },
                        [&] { return writeOptionalProperty(it, d.interfaceType, "interface_type"); },
                        [&] { return writeOptionalProperty(it, d.stackIndex, "stack_index"); },
                        [&] { return writeOptionalProperty(it, d.passthrough, "passthrough"); });
}

// Hard disk
int HNRVMHardDiskDevice::compare(const HNRVMDevice& other) const
{
    int c = HNRVMDevice::compare(other);
    if (c != 0)
        return c;
    const HNRVMHardDiskDevice* o = sameClass<HNRVMHardDiskDevice>(other);
    if (!o)
        return -1;
    return firstNonZero({compareOptionalProperties(interfaceType, o->interfaceType),
                         compareOptionalProperties(stackIndex, o->stackIndex),
                         compareOptionalProperties(passthrough, o->passthrough),
                         compareOptionalProperties(diskType, o->diskType),
                         compareOptionalProperties(splitted, o->splitted),
                         compareOptionalProperties(size, o->size),
                         compareOptionalProperties(sizeOnDisk, o->sizeOnDisk),
                         compareOptionalProperties(createImage, o->createImage),
                         compareOptionalProperties(valid, o->valid)});
}

int HNRVMHardDiskDevice::Reader::operator()(const HNKMessageIterator& it, HNRVMHardDiskDevice& d) const
{
    return firstFailure([&] { return readBase(it, d); },
                        [&] { return readOptionalProperty(it, d.interfaceType, "interface_type"); },
                        [&] { return readOptionalProperty(it, d.stackIndex, "stack_index"); },
                        [&] { return readOptionalProperty(it, d.passthrough, "passthrough"); },
                        [&] { return readOptionalProperty(it, d.diskType, "disk_type"); },
                        [&] { return readOptionalProperty(it, d.splitted, "splitted"); },
                        [&] { return readOptionalProperty(it, d.size, "size"); },
                        [&] { return readOptionalProperty(it, d.sizeOnDisk, "size_on_disk"); },
                        [&] { return readOptionalProperty(it, d.createImage, "create_image"); },
                        [&] { return readOptionalProperty(it, d.valid, "valid"); });
}

int HNRVMHardDiskDevice::Writer::operator()(HNKMessageIterator& it, const HNRVMHardDiskDevice& d) const
{
    return firstFailure([&] { return writeBase(it, d); },
                        [&] { return writeOptionalProperty(it, d.interfaceType, "interface_type"); },
                        [&] { return writeOptionalProperty(it, d.stackIndex, "stack_index"); },
                        [&] { return writeOptionalProperty(it, d.passthrough, "passthrough"); },
                        [&] { return writeOptionalProperty(it, d.diskType, "disk_type"); },
                        [&] { return writeOptionalProperty(it, d.splitted, "splitted"); },
                        [&] { return writeOptionalProperty(it, d.size, "size"); },
                        [&] { return writeOptionalProperty(it, d.sizeOnDisk, "size_on_disk"); },
                        [&] { return writeOptionalProperty(it, d.createImage, "create_image"); },
                        [&] { return writeOptionalProperty(it, d.valid, "valid"); });
}

// Devices that add nothing: the base part, and the class must match.
#define HNR_BASE_ONLY_DEVICE(Class)                                                          \
    int Class::compare(const HNRVMDevice& other) const                                      \
    {                                                                                        \
        int c = HNRVMDevice::compare(other);                                                \
        if (c != 0)                                                                          \
            return c;                                                                        \
        return sameClass<Class>(other) ? 0 : -1;                                             \
    }                                                                                        \
    int Class::Reader::operator()(const HNKMessageIterator& it, Class& d) const { return readBase(it, d); } \
    int Class::Writer::operator()(HNKMessageIterator& it, const Class& d) const { return writeBase(it, d); }

HNR_BASE_ONLY_DEVICE(HNRVMSCSIDevice)
HNR_BASE_ONLY_DEVICE(HNRVMPCIDevice)
HNR_BASE_ONLY_DEVICE(HNRVMParallelPortDevice)

#undef HNR_BASE_ONLY_DEVICE

// Serial port
int HNRVMSerialPortDevice::compare(const HNRVMDevice& other) const
{
    int c = HNRVMDevice::compare(other);
    if (c != 0)
        return c;
    const HNRVMSerialPortDevice* o = sameClass<HNRVMSerialPortDevice>(other);
    if (!o)
        return -1;
    return compareOptionalProperties(socketMode, o->socketMode);
}

int HNRVMSerialPortDevice::Reader::operator()(const HNKMessageIterator& it, HNRVMSerialPortDevice& d) const
{
    return firstFailure([&] { return readBase(it, d); },
                        [&] { return readOptionalProperty(it, d.socketMode, "socket_mode"); });
}

int HNRVMSerialPortDevice::Writer::operator()(HNKMessageIterator& it, const HNRVMSerialPortDevice& d) const
{
    return firstFailure([&] { return writeBase(it, d); },
                        [&] { return writeOptionalProperty(it, d.socketMode, "socket_mode"); });
}

// Network
namespace {

typedef HNKReaderListT<int, HNKIPAddress::Reader> IPAddressListReader;
typedef HNKReaderListT<int, HNKStringReader, HNKReaderSetDataT> StringSetReader;

const int kIPAddressItem = 2047;
const int kDnsServerItem = 1281;
const int kSearchDomainItem = 1558;

// An absent list reads as empty; the list is specified exactly when its read
// succeeded.
template <class Container, class ListReader>
void readList(const HNKMessageIterator& it, HNKOptionalProperty<Container>& list, const ListReader& reader)
{
    list.specify(it.getObject(list.value(), reader) == 0);
}

template <class Container, class ItemWriter>
int writeList(HNKMessageIterator& it, const HNKOptionalProperty<Container>& list, const ItemWriter& writer,
              int itemId)
{
    if (!list.isSpecified())
        return 0;
    return it.putObject(list.get(), HNKWriterListOf(writer, itemId));
}

} // namespace

int HNRVMNetworkDevice::compare(const HNRVMDevice& other) const
{
    int c = HNRVMDevice::compare(other);
    if (c != 0)
        return c;
    const HNRVMNetworkDevice* o = sameClass<HNRVMNetworkDevice>(other);
    if (!o)
        return -1;
    if ((c = compareOptionalProperties(boundAdapterName, o->boundAdapterName)) != 0) return c;
    if ((c = compareOptionalProperties(boundAdapterIndex, o->boundAdapterIndex)) != 0) return c;
    if ((c = compareOptionalProperties(macAddress, o->macAddress)) != 0) return c;
    if ((c = compareOptionalProperties(dnsServers, o->dnsServers)) != 0) return c;
    if ((c = compareOptionalProperties(searchDomains, o->searchDomains)) != 0) return c;
    if ((c = compareOptionalProperties(configuredWithDhcp, o->configuredWithDhcp)) != 0) return c;
    if ((c = compareOptionalProperties(defaultGateway, o->defaultGateway)) != 0) return c;
    if ((c = compareOptionalProperties(virtualNetworkId, o->virtualNetworkId)) != 0) return c;
    // The address list comes last, through the framework's optional compare.
    return ::compare(ipAddresses, o->ipAddresses);
}

int HNRVMNetworkDevice::Reader::operator()(const HNKMessageIterator& it, HNRVMNetworkDevice& d) const
{
    if (it.hasChild("configured_with_dhcp"))
        d.configuredWithDhcp.set(true);
    int status = firstFailure([&] { return readBase(it, d); },
                              [&] { return readOptionalProperty(it, d.boundAdapterName, "bound_adapter_name"); },
                              [&] { return readOptionalProperty(it, d.defaultGateway, "default_gateway"); },
                              [&] { return readOptionalProperty(it, d.virtualNetworkId, "virtual_network_id"); },
                              [&] { return readOptionalProperty(it, d.boundAdapterIndex, "bound_adapter_index"); },
                              [&] { return readOptionalProperty(it, d.macAddress, "mac_address"); });
    if (status != 0)
        return -1;
    // A list that fails to read only stays unspecified: not a device error.
    readList(it, d.ipAddresses, IPAddressListReader(kIPAddressItem, HNK_READER_ABSENCE_OK));
    readList(it, d.dnsServers, StringSetReader(kDnsServerItem, HNK_READER_ABSENCE_OK));
    readList(it, d.searchDomains, StringSetReader(kSearchDomainItem, HNK_READER_ABSENCE_OK));
    return 0;
}

int HNRVMNetworkDevice::Writer::operator()(HNKMessageIterator& it, const HNRVMNetworkDevice& d) const
{
    // Not the declaration order: the flag and the gateway come before the MAC.
    return firstFailure(
        [&] { return writeBase(it, d); },
        [&] { return writeOptionalProperty(it, d.boundAdapterName, "bound_adapter_name"); },
        [&] { return writeOptionalProperty(it, d.boundAdapterIndex, "bound_adapter_index"); },
        [&] {
            return d.configuredWithDhcp.isSpecified() && d.configuredWithDhcp.get() ? putFlag(it, "configured_with_dhcp")
                                                                                     : 0;
        },
        [&] { return writeOptionalProperty(it, d.defaultGateway, "default_gateway"); },
        [&] { return writeOptionalProperty(it, d.virtualNetworkId, "virtual_network_id"); },
        [&] { return writeOptionalProperty(it, d.macAddress, "mac_address"); },
        [&] { return writeList(it, d.ipAddresses, HNKIPAddress::Writer(), kIPAddressItem); },
        [&] { return writeList(it, d.dnsServers, HNKStringWriter(), kDnsServerItem); },
        [&] { return writeList(it, d.searchDomains, HNKStringWriter(), kSearchDomainItem); });
}

// Sound
int HNRVMSoundDevice::compare(const HNRVMDevice& other) const
{
    int c = HNRVMDevice::compare(other);
    if (c != 0)
        return c;
    const HNRVMSoundDevice* o = sameClass<HNRVMSoundDevice>(other);
    if (!o)
        return -1;
    return firstNonZero({compareOptionalProperties(outputDevice, o->outputDevice),
                         compareOptionalProperties(mixerDevice, o->mixerDevice)});
}

int HNRVMSoundDevice::Reader::operator()(const HNKMessageIterator& it, HNRVMSoundDevice& d) const
{
    return firstFailure([&] { return readBase(it, d); },
                        [&] { return readOptionalProperty(it, d.outputDevice, "output_device"); },
                        [&] { return readOptionalProperty(it, d.mixerDevice, "mixer_device"); });
}

int HNRVMSoundDevice::Writer::operator()(HNKMessageIterator& it, const HNRVMSoundDevice& d) const
{
    return firstFailure([&] { return writeBase(it, d); },
                        [&] { return writeOptionalProperty(it, d.outputDevice, "output_device"); },
                        [&] { return writeOptionalProperty(it, d.mixerDevice, "mixer_device"); });
}

// USB
int HNRVMUSBDevice::compare(const HNRVMDevice& other) const
{
    int c = HNRVMDevice::compare(other);
    if (c != 0)
        return c;
    const HNRVMUSBDevice* o = sameClass<HNRVMUSBDevice>(other);
    if (!o)
        return -1;
    return compareOptionalProperties(autoConnectDevices, o->autoConnectDevices);
}

int HNRVMUSBDevice::Reader::operator()(const HNKMessageIterator& it, HNRVMUSBDevice& d) const
{
    return firstFailure([&] { return readBase(it, d); },
                        [&] { return readOptionalProperty(it, d.autoConnectDevices, "auto_connect_devices"); });
}

int HNRVMUSBDevice::Writer::operator()(HNKMessageIterator& it, const HNRVMUSBDevice& d) const
{
    return firstFailure([&] { return writeBase(it, d); },
                        [&] { return writeOptionalProperty(it, d.autoConnectDevices, "auto_connect_devices"); });
}

// ---- Registration, in the order of the factory table ----

HNRVMDeviceFactoryT<HNRVMDevice> factoryHNRVMDevice(true);
HNRVMDeviceFactoryT<HNRVMFloppyDiskDevice> factoryHNRVMFloppyDiskDevice(false);
HNRVMDeviceFactoryT<HNRVMOpticalDiskDevice> factoryHNRVMOpticalDiskDevice(false);
HNRVMDeviceFactoryT<HNRVMHardDiskDevice> factoryHNRVMHardDiskDevice(false);
HNRVMDeviceFactoryT<HNRVMSCSIDevice> factoryHNRVMSCSIDevice(false);
HNRVMDeviceFactoryT<HNRVMPCIDevice> factoryHNRVMPCIDevice(false);
HNRVMDeviceFactoryT<HNRVMSerialPortDevice> factoryHNRVMSerialPortDevice(false);
HNRVMDeviceFactoryT<HNRVMParallelPortDevice> factoryHNRVMParallelPortDevice(false);
HNRVMDeviceFactoryT<HNRVMNetworkDevice> factoryHNRVMNetworkDevice(false);
HNRVMDeviceFactoryT<HNRVMSoundDevice> factoryHNRVMSoundDevice(false);
HNRVMDeviceFactoryT<HNRVMUSBDevice> factoryHNRVMUSBDevice(false);

} // namespace HNR

// For tools and load checks that reach the module through dlsym: how many
// entries of the device registry carry this XML type key.
extern "C" __attribute__((visibility("default"))) size_t hnrVMDeviceTypeKeyCount(const char* key)
{
    return key ? HNKDerivedParserFactory<HNR::HNRVMDevice>::factories().count(key) : 0;
}
