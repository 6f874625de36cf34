#include "HnrctlRecordPrinter.h"

#include "frame/HNREnvFactory.h"
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

bool isSecretName(const std::string& name) { return name.find("password") != std::string::npos; }

std::string shown(const std::string& tag, const std::string& value)
{
    return isSecretName(tag) ? std::string("(hidden)") : value;
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

// One typed getter of the configuration, rendered as text.
struct Setting {
    const char* tag;
    std::function<bool(const HNREnvConfig&, std::string&)> get;
};

template <class T>
Setting typed(const char* tag, int (HNREnvConfig::*getter)(T&) const)
{
    return {tag, [getter](const HNREnvConfig& c, std::string& text) {
                T value = T();
                if ((c.*getter)(value) != 0)
                    return false;
                std::ostringstream s;
                s << value;
                text = s.str();
                return true;
            }};
}

template <class T>
Setting typedBase(const char* tag, int (HNKEnvConfig::*getter)(T&) const)
{
    return typed<T>(tag, static_cast<int (HNREnvConfig::*)(T&) const>(getter));
}

const std::vector<Setting>& settings()
{
    typedef HNREnvConfig C;
    static const std::vector<Setting> table = {
        {"name",
         [](const C& c, std::string& text) {
             HNKOptionalProperty<std::string> name;
             if (c.getName(name) != 0 || !name.isSpecified())
                 return false;
             text = name.get();
             return true;
         }},
        typed("memory_size", &C::getMemorySize),
        typed("video_memory_size", &C::getVideoMemorySize),
        typed("cpu_count", &C::getCPUCount),
        typed("cpu_mode", &C::getCPUMode),
        typedBase("cpu_hvt", &HNKEnvConfig::getCPUHvt),
        typedBase("vtd_supported", &HNKEnvConfig::getVtdSupported),
        typed("cpu_units", &C::getCPUUnits),
        typed("cpu_limit", &C::getCPULimit),
        typed("cpu_accel_level", &C::getCPUAccelLevel),
        typed("auto_start", &C::getAutoStart),
        typed("auto_start_delay", &C::getAutoStartDelay),
        typed("start_login_mode", &C::getStartLoginMode),
        typed("start_user_login", &C::getStartUserLogin),
        typed("start_user_password", &C::getStartUserPassword),
        typed("auto_stop", &C::getAutoStop),
        typed("window_mode", &C::getWindowMode),
        typed("last_modified_date", &C::getLastModifiedDate),
        typed("last_modifier_name", &C::getLastModifierName),
        typed("guest_sharing_enabled", &C::getGuestSharingEnabled),
        typed("guest_sharing_auto_mount", &C::getGuestSharingAutoMount),
        typed("host_sharing_enabled", &C::getHostSharingEnabled),
        typed("host_sharing_local", &C::getHostSharingLocal),
        typed("host_sharing_global", &C::getHostSharingGlobal),
        typed("disk_cache_write_back", &C::getDiskCacheWriteBack),
        typed("close_app_on_shutdown", &C::getCloseAppOnShutdown),
        typed("system_flags", &C::getSystemFlags),
        typed("foreground_priority", &C::getForegroundPriority),
        typed("background_priority", &C::getBackgroundPriority),
        typed("io_priority", &C::getIoPriority),
        typed("server_host_name", &C::getServerHostName),
        typed("home_path", &C::getHomePath),
        typed("icon", &C::getIcon),
        typed("show_task_bar", &C::getShowTaskBar),
        typed("relocate_task_bar", &C::getRelocateTaskBar),
        typed("exclude_dock", &C::getExcludeDock),
        typed("multi_display", &C::getMultiDisplay),
        typed("additional_screen_resolutions_enabled", &C::getAdditionalScreenResolutionsEnabled),
        typed("os_screen_resolution_in_full_screen_mode_enabled", &C::getOSScreenResolutionInFullScreenModeEnabled),
        typed("app_in_dock_mode", &C::getAppInDockMode),
        typed("dock_icon_type", &C::getDockIconType),
        typed("vnc_mode", &C::getVNCMode),
        typed("vnc_port", &C::getVNCPort),
        typedBase("ps_port", &HNKEnvConfig::getPsPort),
        typed("vnc_nic", &C::getVNCNetworkInterface),
        typed("vnc_password", &C::getVNCPassword),
        typed("vnc_started", &C::getVNCStarted),
        typedBase("disabled", &HNKEnvConfig::getDisabled),
        typed("origin_sample", &C::getOriginSample),
        typed("tools_status", &C::getToolsStatus),
        typed("access_for_others", &C::getAccessForOthers),
        typedBase("screen_width", &HNKEnvConfig::getScreenWidth),
        typedBase("screen_height", &HNKEnvConfig::getScreenHeight),
        typedBase("screen_depth", &HNKEnvConfig::getScreenDepth),
        typed("is_template", &C::getTemplate),
        typed("use_default_answers", &C::getUseDefaultAnswers),
        typed("user_shared_folders_enabled", &C::getUserSharedFoldersEnabled),
        typed("tools_autoupdate_enabled", &C::getToolsAutoUpdateEnabled),
        typed("offline_management_enabled", &C::getOfflineManagementEnabled),
    };
    return table;
}

void printVMConfiguration(std::ostream& out, const HNREnvConfig& config, const std::string& indent)
{
    std::vector<std::pair<std::string, std::string>> set;
    for (const Setting& s : settings()) {
        std::string text;
        if (s.get(config, text))
            set.emplace_back(s.tag, shown(s.tag, text));
    }
    out << indent << "settings (" << set.size() << " of " << settings().size() << " set):\n";
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

// One registry of the module: which keys it knows and how it reads them.
struct Registry {
    std::string title;
    std::function<bool(const std::string&)> knows;
    std::function<int(const HNKMessageIterator&, HnrctlRecord&)> read;
};

template <class Base, class BaseParser = Base>
Registry registry(const std::string& title,
                  std::function<void(std::ostream&, const boost::shared_ptr<Base>&)> printer)
{
    typedef HNKDerivedParserFactory<Base, BaseParser> Factory;
    Registry r;
    r.title = title;
    r.knows = [](const std::string& key) { return Factory::factories().count(key) != 0; };
    r.read = [title, printer](const HNKMessageIterator& it, HnrctlRecord& record) {
        boost::shared_ptr<Base> object;
        int status = HNKReaderDerived<Base, BaseParser>(false)(it, object);
        if (status != 0)
            return status;
        record.registry = title;
        record.className = demangle(typeid(*object).name());
        record.write = [object](HNKMessageIterator& out) {
            return out.putObject(object, HNKWriterDerived<Base, BaseParser>());
        };
        record.print = [object, printer](std::ostream& out) { printer(out, object); };
        return 0;
    };
    return r;
}

template <class Base>
void printGeneric(std::ostream& out, const boost::shared_ptr<Base>& object)
{
    printWrittenFields(out, [object](HNKMessageIterator& it) {
        return it.putObject(object, HNKWriterDerived<Base>());
    });
}

const std::vector<Registry>& registries()
{
    static const std::vector<Registry> table = {
        registry<HNKEnvConfig>("VM configuration (HNKEnvConfig)",
                               [](std::ostream& out, const boost::shared_ptr<HNKEnvConfig>& c) {
                                   printConfiguration(out, c, "");
                               }),
        registry<HNRVMDevice>("VM device (HNRVMDevice)",
                              [](std::ostream& out, const boost::shared_ptr<HNRVMDevice>& d) {
                                  printDeviceTable(out, HNRVMDeviceList(1, d));
                                  printGeneric(out, d);
                              }),
        registry<HNKEnv>("environment (HNKEnv)",
                         [](std::ostream& out, const boost::shared_ptr<HNKEnv>& env) {
                             out << "eid:       " << env->getEID().toString() << "\n";
                             if (auto* hnr = dynamic_cast<const HNREnv*>(env.get()))
                                 out << "title:     " << hnr->getTitle() << "\n";
                             if (!env->getConfig()) {
                                 out << "config:    none\n";
                                 return;
                             }
                             out << "config:    " << demangle(typeid(*env->getConfig()).name()) << "\n";
                             printConfiguration(out, env->getConfig(), "  ");
                         }),
        registry<HNKCommonDevice>("host device (HNKCommonDevice)", printGeneric<HNKCommonDevice>),
        registry<HNKNetDevice>("network device (HNKNetDevice)", printGeneric<HNKNetDevice>),
        registry<HNRNetworkServiceInfo>("network service (HNRNetworkServiceInfo)",
                                        printGeneric<HNRNetworkServiceInfo>),
        registry<HNKVtInfo>("virtualization info (HNKVtInfo)", printGeneric<HNKVtInfo>),
        registry<HNKVtSettings>("virtualization settings (HNKVtSettings)", printGeneric<HNKVtSettings>),
        registry<HNRGuestOSMemoryRequirements>("guest OS memory (HNRGuestOSMemoryRequirements)",
                                               printGeneric<HNRGuestOSMemoryRequirements>),
        registry<HNKMigratorCloneOptions>("clone options (HNKMigratorCloneOptions)",
                                          printGeneric<HNKMigratorCloneOptions>),
        registry<HNKV2VMigrateOptions>("migration options (HNKV2VMigrateOptions)",
                                       printGeneric<HNKV2VMigrateOptions>),
        registry<HNKBackupOptions>("backup options (HNKBackupOptions)", printGeneric<HNKBackupOptions>),
    };
    return table;
}

} // namespace

bool readRecord(const HNKMessageIterator& it, HnrctlRecord& record, std::string& error)
{
    std::string key = it.getTypeName();
    for (const Registry& r : registries()) {
        if (!r.knows(key))
            continue;
        int status = r.read(it, record);
        if (status == 0)
            return true;
        std::string why = getErrorMessage();
        error = "the " + r.title + " factory for '" + key + "' failed to read it (status " + std::to_string(status) +
                ")" + (why.empty() ? std::string() : ": " + why);
        return false;
    }
    error = "no factory is registered for type '" + key + "' (tried:";
    for (const Registry& r : registries())
        error += " " + r.title + ";";
    error.back() = ')';
    return false;
}

std::vector<std::string> registryTitles()
{
    std::vector<std::string> titles;
    for (const Registry& r : registries())
        titles.push_back(r.title);
    return titles;
}

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
