#include "HnrctlRecordPrinter.h"

#include "frame/HNREnvFactory.h"
#include "frame/HNRRecordCatalogue.h"
#include "model/HNRBackupOptions.h"
#include "model/HNRCommonDevice.h"
#include "model/HNREnvConfig.h"
#include "model/HNRMigratorCloneOptions.h"
#include "model/HNRNetNIC.h"
#include "model/HNRVMDevice.h"
#include "model/HNRVtInfo.h"

#include "HNKBackupOptions.h"
#include "HNKCommonDevice.h"
#include "HNKDerivedParserFactory.h"
#include "HNKEnv.h"
#include "HNKEnvConfig.h"
#include "HNKMigratorCloneOptions.h"
#include "HNKNetDevice.h"
#include "HNKV2VMigrateOptions.h"
#include "HNKVtInfo.h"
#include "HNKVtSettings.h"
#include "HNKErrorMessage.h"
#include "HNKMessageIterator.h"
#include "HNKSerialization.h"

#include <cxxabi.h>

#include <cstdlib>
#include <iomanip>
#include <map>
#include <memory>
#include <ostream>
#include <sstream>
#include <typeinfo>

using namespace HNR;

namespace hnrctl {

namespace {

std::string demangle(const char* name)
{
    int status = 0;
    std::unique_ptr<char, void (*)(void*)> text(abi::__cxa_demangle(name, nullptr, nullptr, &status), std::free);
    return status == 0 && text ? std::string(text.get()) : std::string(name);
}

// Elements of any record: secret by their name.
std::string shown(const std::string& name, const std::string& value)
{
    return HNRRecordCatalogue::isSecretName(name) ? std::string("(hidden)") : value;
}

// Settings of a VM configuration: secret as the settings table says.
std::string shown(const HNRConfigSetting& setting, const std::string& value)
{
    return setting.secret ? std::string("(hidden)") : value;
}

template <class T>
std::string optional(const HNKOptionalProperty<T>& p)
{
    if (!p.isSpecified())
        return "-";
    std::ostringstream s;
    s << std::boolalpha << p.get();
    return s.str();
}

std::string flag(const HNKOptionalProperty<bool>& p) { return p.isSpecified() ? (p.get() ? "yes" : "no") : "-"; }

// What a device class adds to the base fields, in a few words.
std::string deviceDetails(const HNRVMDevice& d)
{
    std::ostringstream s;
    if (auto* hdd = dynamic_cast<const HNRVMHardDiskDevice*>(&d)) {
        s << "size=" << optional(hdd->size) << " on_disk=" << optional(hdd->sizeOnDisk)
          << " type=" << optional(hdd->diskType) << " iface=" << optional(hdd->interfaceType);
    } else if (auto* cd = dynamic_cast<const HNRVMOpticalDiskDevice*>(&d)) {
        s << "iface=" << optional(cd->interfaceType) << " stack=" << optional(cd->stackIndex)
          << " passthrough=" << flag(cd->passthrough);
    } else if (auto* fd = dynamic_cast<const HNRVMFloppyDiskDevice*>(&d)) {
        s << "create_image=" << flag(fd->createImage);
    } else if (auto* net = dynamic_cast<const HNRVMNetworkDevice*>(&d)) {
        s << "mac=" << optional(net->macAddress) << " net=" << optional(net->virtualNetworkId);
        if (net->ipAddresses.isSpecified()) {
            for (const HNKIPAddress& ip : net->ipAddresses.get())
                s << " " << ip.getAddress() << "/" << ip.getPrefixLength();
        }
        if (net->configuredWithDhcp.isSpecified() && net->configuredWithDhcp.get())
            s << " dhcp";
    } else if (auto* snd = dynamic_cast<const HNRVMSoundDevice*>(&d)) {
        s << "output=" << optional(snd->outputDevice) << " mixer=" << optional(snd->mixerDevice);
    } else if (auto* serial = dynamic_cast<const HNRVMSerialPortDevice*>(&d)) {
        s << "socket_mode=" << optional(serial->socketMode);
    } else if (auto* usb = dynamic_cast<const HNRVMUSBDevice*>(&d)) {
        s << "auto_connect=" << optional(usb->autoConnectDevices);
    }
    return s.str();
}

std::string shortClass(const HNRVMDevice& d)
{
    std::string name = demangle(typeid(d).name());
    return name.compare(0, 5, "HNR::") == 0 ? name.substr(5) : name;
}

void printDeviceTable(std::ostream& out, const HNRVMDeviceList& devices)
{
    out << "  " << std::left << std::setw(3) << "#" << std::setw(24) << "class" << std::setw(6) << "emul"
        << std::setw(5) << "conn" << std::setw(5) << "enab" << std::setw(5) << "boot" << std::setw(12)
        << "sys_name" << std::setw(20) << "friendly_name"
        << "details\n";
    for (size_t i = 0; i < devices.size(); ++i) {
        const HNRVMDevice& d = *devices[i];
        out << "  " << std::left << std::setw(3) << i << std::setw(24) << shortClass(d) << std::setw(6)
            << d.emulationType << std::setw(5) << flag(d.connected) << std::setw(5) << flag(d.enabled)
            << std::setw(5) << (d.bootable ? "yes" : "no") << std::setw(12) << optional(d.systemName) << std::setw(20)
            << optional(d.friendlyName) << deviceDetails(d) << "\n";
    }
    out << std::right;
}

void printVMConfiguration(std::ostream& out, const HNREnvConfig& config, const std::string& indent)
{
    std::vector<std::pair<std::string, std::string>> set;
    const std::vector<HNRConfigSetting>& settings = HNRRecordCatalogue::configSettings();
    for (const HNRConfigSetting& s : settings) {
        std::string text;
        if (s.get(config, text) == 0)
            set.emplace_back(s.tag, shown(s, text));
    }
    out << indent << "settings (" << set.size() << " of " << settings.size() << " set):\n";
    for (const auto& s : set)
        out << indent << "  " << std::left << std::setw(50) << s.first << std::right << s.second << "\n";
    HNKOptionalProperty<std::set<std::string>> services;
    if (config.getOfflineServices(services) == 0 && services.isSpecified()) {
        out << indent << "offline services (" << services.get().size() << "):";
        for (const std::string& service : services.get())
            out << " " << service;
        out << "\n";
    }
    HNKOptionalProperty<HNRVMDeviceList> devices;
    int status = config.getDevices(devices);
    if (status != 0) {
        out << indent << "devices: the device list does not read (status " << status << ")\n";
    } else if (!devices.isSpecified()) {
        out << indent << "devices: none (no device_list)\n";
    } else {
        out << indent << "devices (" << devices.get().size() << "):\n";
        printDeviceTable(out, devices.get());
    }
}

// The fields of any record: written through its own factory into a scratch
// tree, then listed element by element.
void printWrittenFields(std::ostream& out, const std::function<int(HNKMessageIterator&)>& write)
{
    HNKMessageIterator scratch("record");
    if (write(scratch) != 0) {
        out << "fields: (the record does not write back: " << getErrorMessage() << ")\n";
        return;
    }
    out << "fields:\n";
    printElementFields(out, scratch, "  ");
}

void printConfiguration(std::ostream& out, const boost::shared_ptr<HNKEnvConfig>& config, const std::string& indent)
{
    if (auto* vm = dynamic_cast<const HNREnvConfig*>(config.get())) {
        printVMConfiguration(out, *vm, indent);
        return;
    }
    HNKMessageIterator scratch("config");
    if (HNKWriterDerived<HNKEnvConfig>()(scratch, config) == 0)
        printElementFields(out, scratch, indent);
}

void printGeneric(std::ostream& out, const HNRRecord& record)
{
    printWrittenFields(out, [&record](HNKMessageIterator& it) { return record.write(it, false); });
}

void printRecord(std::ostream& out, const HNRRecord& record)
{
    if (auto config = record.as<HNKEnvConfig>()) {
        printConfiguration(out, config, "");
    } else if (auto device = record.as<HNRVMDevice>()) {
        printDeviceTable(out, HNRVMDeviceList(1, device));
        printGeneric(out, record);
    } else if (auto env = record.as<HNKEnv>()) {
        out << "eid:       " << env->getEID().toString() << "\n";
        if (auto* hnr = dynamic_cast<const HNREnv*>(env.get()))
            out << "title:     " << hnr->getTitle() << "\n";
        if (!env->getConfig()) {
            out << "config:    none\n";
            return;
        }
        out << "config:    " << demangle(typeid(*env->getConfig()).name()) << "\n";
        printConfiguration(out, env->getConfig(), "  ");
    } else {
        printGeneric(out, record);
    }
}

} // namespace

bool readRecord(const HNKMessageIterator& it, HnrctlRecord& record, std::string& error)
{
    HNRRecord read;
    if (HNRRecordCatalogue::read(it, read, error) != 0)
        return false;
    record.registry = read.registry;
    record.className = read.className;
    record.print = [read](std::ostream& out) { printRecord(out, read); };
    record.write = [read](HNKMessageIterator& out, bool mask) { return read.write(out, mask); };
    return true;
}

std::vector<std::string> registryTitles() { return HNRRecordCatalogue::registries(); }

void printElementFields(std::ostream& out, const HNKMessageIterator& it, const std::string& indent)
{
    // Repeated names get an index: ip_address[0], ip_address[1].
    std::map<std::string, int> total;
    HNKMessageIterator child(it);
    if (child.firstChild() != 0)
        return;
    do {
        ++total[child.currentName()];
    } while (child.nextSibling() == 0);
    std::map<std::string, int> seen;
    child = it;
    child.firstChild();
    do {
        std::string name = child.currentName();
        std::string label = name;
        if (total[name] > 1)
            label += "[" + std::to_string(seen[name]++) + "]";
        std::string type = child.getTypeName();
        HNKMessageIterator probe(child);
        if (probe.firstChild() == 0) {
            out << indent << label;
            if (!type.empty())
                out << " (" << type.substr(type.rfind(':') + 1) << ")";
            out << ":\n";
            printElementFields(out, child, indent + "  ");
            continue;
        }
        std::string text;
        if (child.getValue(0, text) != 0 || text.empty())
            text = "(present)";
        out << indent << std::left << std::setw(28) << label << std::right << " = " << shown(name, text) << "\n";
    } while (child.nextSibling() == 0);
}

} // namespace hnrctl
