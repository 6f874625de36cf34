#include "model/HNREnvConfig.h"

#include "frame/HNRConstants.h"

#include "HNKEnvCoreBasic.h"
#include "HNKLock.h"
#include "HNKSerialization.h"

#include <atomic>
#include <map>

namespace HNR {

const char kVMMemoryTag[] = "vm_memory";

namespace {

// Guards the first fill of the tag position map.
HNKLock tagPositionsLock;
// Set (release) once the map is filled; read (acquire) before any lookup.
std::atomic<bool> tagPositionsFilled(false);

// The schema order of the record's elements. "use_default_answers" is listed
// twice on purpose (the later index, 55, wins; no tag has 54), and
// "user_shared_folders_enabled" and "cpu_limit" are deliberately absent.
const char* const kTagOrder[] = {
    "memory_size", "video_memory_size", "cpu_count", "cpu_mode", "cpu_hvt", "vtd_supported", "cpu_units",
    "cpu_accel_level", "auto_start", "auto_start_delay", "start_login_mode", "start_user_login",
    "start_user_password", "auto_stop", "window_mode", "last_modified_date", "last_modifier_name",
    "guest_sharing_enabled", "guest_sharing_auto_mount", "host_sharing_enabled", "host_sharing_local",
    "host_sharing_global", "disk_cache_write_back", "close_app_on_shutdown", "system_flags",
    "foreground_priority", "background_priority", "io_priority", "server_host_name", "home_path", "icon",
    "show_task_bar", "relocate_task_bar", "exclude_dock", "multi_display", "additional_screen_resolutions_enabled",
    "os_screen_resolution_in_full_screen_mode_enabled", "app_in_dock_mode", "dock_icon_type", "vnc_mode",
    "vnc_port", "ps_port", "vnc_nic", "vnc_password", "vnc_started", "disabled", "origin_sample", "tools_status",
    "access_for_others", "screen_width", "screen_height", "screen_depth", "device_list", "is_template",
    "use_default_answers", "use_default_answers", "tools_autoupdate_enabled", "offline_management_list",
};
static_assert(sizeof(kTagOrder) / sizeof(kTagOrder[0]) == 58, "the tag order table has 58 entries");

typedef std::map<std::string, int, std::less<>> TagPositions;

// Created on first use; destroyed at exit (or unload).
TagPositions& tagPositions()
{
    static TagPositions positions;
    return positions;
}

const TagPositions& filledTagPositions()
{
    TagPositions& shared = tagPositions();
    if (!tagPositionsFilled.load(std::memory_order_acquire)) {
        TagPositions local;
        for (int i = 0; i < 58; ++i)
            local[kTagOrder[i]] = i; // a later duplicate overwrites an earlier one
        HNKGuardT<HNKLock> guard(tagPositionsLock);
        if (shared.empty()) {
            shared.swap(local);
            tagPositionsFilled.store(true, std::memory_order_release);
        } // else another thread filled it meanwhile: drop ours
    }
    return shared;
}

const int kOfflineManagementEnabledID = 1647;
const int kOfflineServiceItem = 1747;
const int kDeviceItem = 1114;
const std::string kOfflineServicesTag = "offline_management_list";
const std::string kDeviceListTag = "device_list";

typedef HNKReaderListT<int, HNKStringReader, HNKReaderSetDataT> OfflineServicesReader;
typedef HNKReaderDerivedList<int, HNRVMDevice> DeviceListReader;
typedef HNKWriterDerivedList<int, HNRVMDevice> DeviceListWriter;

} // namespace

HNREnvConfig::HNREnvConfig(const HNKMessageIterator* msg) : HNKVEnvConfig(msg) {}
HNREnvConfig::HNREnvConfig(const HNKEnvConfig& config) : HNKVEnvConfig(config) {}
HNREnvConfig::HNREnvConfig(const HNKVEnvConfig& config) : HNKVEnvConfig(config) {}
HNREnvConfig::HNREnvConfig(boost::shared_ptr<HNKEnvCoreBasic> core) : HNKVEnvConfig(core) {}
HNREnvConfig::~HNREnvConfig() {}

const char* HNREnvConfig::Writer::getStrNSID() { return kTypesNamespace; }

// ---- Generic access ----

template <class T>
int HNREnvConfig::getProperty(T& value, const char* tag) const
{
    const HNKMessageIterator* msg = getMsg();
    if (!msg)
        return -1;
    return msg->getValue(tag, value) == 0 ? 0 : -1;
}

template <class T>
int HNREnvConfig::setProperty(T value, const char* tag)
{
    return putElement(value, tag); // one element afterwards; a refused value leaves the old one
}

template int HNREnvConfig::getProperty<bool>(bool&, const char*) const;
template int HNREnvConfig::getProperty<int>(int&, const char*) const;
template int HNREnvConfig::getProperty<std::string>(std::string&, const char*) const;
template int HNREnvConfig::setProperty<bool>(bool, const char*);
template int HNREnvConfig::setProperty<int>(int, const char*);
template int HNREnvConfig::setProperty<std::string>(std::string, const char*);

// ---- Typed accessors ----

int HNREnvConfig::getToolsAutoUpdateEnabled(bool& value) const { return getProperty<bool>(value, "tools_autoupdate_enabled"); }
int HNREnvConfig::setToolsAutoUpdateEnabled(bool value) { return setProperty<bool>(value, "tools_autoupdate_enabled"); }
int HNREnvConfig::getUseDefaultAnswers(bool& value) const { return getProperty<bool>(value, "use_default_answers"); }
int HNREnvConfig::setUseDefaultAnswers(bool value) { return setProperty<bool>(value, "use_default_answers"); }
int HNREnvConfig::getUserSharedFoldersEnabled(bool& value) const { return getProperty<bool>(value, "user_shared_folders_enabled"); }
int HNREnvConfig::setUserSharedFoldersEnabled(bool value) { return setProperty<bool>(value, "user_shared_folders_enabled"); }
int HNREnvConfig::getCPUCount(int& value) const { return getProperty<int>(value, "cpu_count"); }
int HNREnvConfig::setCPUCount(int value) { return setProperty<int>(value, "cpu_count"); }
int HNREnvConfig::getMemorySize(int& value) const { return getProperty<int>(value, "memory_size"); }
int HNREnvConfig::setMemorySize(int value) { return setProperty<int>(value, "memory_size"); }
int HNREnvConfig::getVideoMemorySize(int& value) const { return getProperty<int>(value, "video_memory_size"); }
int HNREnvConfig::setVideoMemorySize(int value) { return setProperty<int>(value, "video_memory_size"); }
int HNREnvConfig::getCPUMode(int& value) const { return getProperty<int>(value, "cpu_mode"); }
int HNREnvConfig::setCPUMode(int value) { return setProperty<int>(value, "cpu_mode"); }
int HNREnvConfig::getCPUUnits(int& value) const { return getProperty<int>(value, "cpu_units"); }
int HNREnvConfig::setCPUUnits(int value) { return setProperty<int>(value, "cpu_units"); }
int HNREnvConfig::getCPULimit(int& value) const { return getProperty<int>(value, "cpu_limit"); }
int HNREnvConfig::setCPULimit(int value) { return setProperty<int>(value, "cpu_limit"); }
int HNREnvConfig::getCPUAccelLevel(int& value) const { return getProperty<int>(value, "cpu_accel_level"); }
int HNREnvConfig::setCPUAccelLevel(int value) { return setProperty<int>(value, "cpu_accel_level"); }
int HNREnvConfig::getAutoStart(int& value) const { return getProperty<int>(value, "auto_start"); }
int HNREnvConfig::setAutoStart(int value) { return setProperty<int>(value, "auto_start"); }
int HNREnvConfig::getAutoStartDelay(int& value) const { return getProperty<int>(value, "auto_start_delay"); }
int HNREnvConfig::setAutoStartDelay(int value) { return setProperty<int>(value, "auto_start_delay"); }
int HNREnvConfig::getStartLoginMode(int& value) const { return getProperty<int>(value, "start_login_mode"); }
int HNREnvConfig::setStartLoginMode(int value) { return setProperty<int>(value, "start_login_mode"); }
int HNREnvConfig::getStartUserLogin(std::string& value) const { return getProperty<std::string>(value, "start_user_login"); }
int HNREnvConfig::setStartUserLogin(const std::string& value) { return setProperty<std::string>(value, "start_user_login"); }
int HNREnvConfig::getStartUserPassword(std::string& value) const { return getProperty<std::string>(value, "start_user_password"); }
int HNREnvConfig::setStartUserPassword(const std::string& value) { return setProperty<std::string>(value, "start_user_password"); }
int HNREnvConfig::getAutoStop(int& value) const { return getProperty<int>(value, "auto_stop"); }
int HNREnvConfig::setAutoStop(int value) { return setProperty<int>(value, "auto_stop"); }
int HNREnvConfig::getWindowMode(int& value) const { return getProperty<int>(value, "window_mode"); }
int HNREnvConfig::setWindowMode(int value) { return setProperty<int>(value, "window_mode"); }
int HNREnvConfig::getLastModifiedDate(std::string& value) const { return getProperty<std::string>(value, "last_modified_date"); }
int HNREnvConfig::setLastModifiedDate(const std::string& value) { return setProperty<std::string>(value, "last_modified_date"); }
int HNREnvConfig::getLastModifierName(std::string& value) const { return getProperty<std::string>(value, "last_modifier_name"); }
int HNREnvConfig::setLastModifierName(const std::string& value) { return setProperty<std::string>(value, "last_modifier_name"); }
int HNREnvConfig::getGuestSharingEnabled(bool& value) const { return getProperty<bool>(value, "guest_sharing_enabled"); }
int HNREnvConfig::setGuestSharingEnabled(bool value) { return setProperty<bool>(value, "guest_sharing_enabled"); }
int HNREnvConfig::getGuestSharingAutoMount(bool& value) const { return getProperty<bool>(value, "guest_sharing_auto_mount"); }
int HNREnvConfig::setGuestSharingAutoMount(bool value) { return setProperty<bool>(value, "guest_sharing_auto_mount"); }
int HNREnvConfig::getHostSharingEnabled(bool& value) const { return getProperty<bool>(value, "host_sharing_enabled"); }
int HNREnvConfig::setHostSharingEnabled(bool value) { return setProperty<bool>(value, "host_sharing_enabled"); }
int HNREnvConfig::getHostSharingLocal(bool& value) const { return getProperty<bool>(value, "host_sharing_local"); }
int HNREnvConfig::setHostSharingLocal(bool value) { return setProperty<bool>(value, "host_sharing_local"); }
int HNREnvConfig::getHostSharingGlobal(bool& value) const { return getProperty<bool>(value, "host_sharing_global"); }
int HNREnvConfig::setHostSharingGlobal(bool value) { return setProperty<bool>(value, "host_sharing_global"); }
int HNREnvConfig::getDiskCacheWriteBack(bool& value) const { return getProperty<bool>(value, "disk_cache_write_back"); }
int HNREnvConfig::setDiskCacheWriteBack(bool value) { return setProperty<bool>(value, "disk_cache_write_back"); }
int HNREnvConfig::getCloseAppOnShutdown(bool& value) const { return getProperty<bool>(value, "close_app_on_shutdown"); }
int HNREnvConfig::setCloseAppOnShutdown(bool value) { return setProperty<bool>(value, "close_app_on_shutdown"); }
int HNREnvConfig::getSystemFlags(std::string& value) const { return getProperty<std::string>(value, "system_flags"); }
int HNREnvConfig::setSystemFlags(const std::string& value) { return setProperty<std::string>(value, "system_flags"); }
int HNREnvConfig::getForegroundPriority(int& value) const { return getProperty<int>(value, "foreground_priority"); }
int HNREnvConfig::setForegroundPriority(int value) { return setProperty<int>(value, "foreground_priority"); }
int HNREnvConfig::getBackgroundPriority(int& value) const { return getProperty<int>(value, "background_priority"); }
int HNREnvConfig::setBackgroundPriority(int value) { return setProperty<int>(value, "background_priority"); }
int HNREnvConfig::getIoPriority(int& value) const { return getProperty<int>(value, "io_priority"); }
int HNREnvConfig::setIoPriority(int value) { return setProperty<int>(value, "io_priority"); }
int HNREnvConfig::getServerHostName(std::string& value) const { return getProperty<std::string>(value, "server_host_name"); }
int HNREnvConfig::setServerHostName(const std::string& value) { return setProperty<std::string>(value, "server_host_name"); }
int HNREnvConfig::getHomePath(std::string& value) const { return getProperty<std::string>(value, "home_path"); }
int HNREnvConfig::setHomePath(const std::string& value) { return setProperty<std::string>(value, "home_path"); }
int HNREnvConfig::getIcon(std::string& value) const { return getProperty<std::string>(value, "icon"); }
int HNREnvConfig::setIcon(const std::string& value) { return setProperty<std::string>(value, "icon"); }
int HNREnvConfig::getShowTaskBar(bool& value) const { return getProperty<bool>(value, "show_task_bar"); }
int HNREnvConfig::setShowTaskBar(bool value) { return setProperty<bool>(value, "show_task_bar"); }
int HNREnvConfig::getRelocateTaskBar(bool& value) const { return getProperty<bool>(value, "relocate_task_bar"); }
int HNREnvConfig::setRelocateTaskBar(bool value) { return setProperty<bool>(value, "relocate_task_bar"); }
int HNREnvConfig::getExcludeDock(bool& value) const { return getProperty<bool>(value, "exclude_dock"); }
int HNREnvConfig::setExcludeDock(bool value) { return setProperty<bool>(value, "exclude_dock"); }
int HNREnvConfig::getMultiDisplay(bool& value) const { return getProperty<bool>(value, "multi_display"); }
int HNREnvConfig::setMultiDisplay(bool value) { return setProperty<bool>(value, "multi_display"); }
int HNREnvConfig::getTemplate(bool& value) const { return getProperty<bool>(value, "is_template"); }
int HNREnvConfig::setTemplate(bool value) { return setProperty<bool>(value, "is_template"); }
int HNREnvConfig::getAdditionalScreenResolutionsEnabled(bool& value) const { return getProperty<bool>(value, "additional_screen_resolutions_enabled"); }
int HNREnvConfig::setAdditionalScreenResolutionsEnabled(bool value) { return setProperty<bool>(value, "additional_screen_resolutions_enabled"); }
int HNREnvConfig::getOSScreenResolutionInFullScreenModeEnabled(bool& value) const { return getProperty<bool>(value, "os_screen_resolution_in_full_screen_mode_enabled"); }
int HNREnvConfig::setOSScreenResolutionInFullScreenModeEnabled(bool value) { return setProperty<bool>(value, "os_screen_resolution_in_full_screen_mode_enabled"); }
int HNREnvConfig::getAppInDockMode(int& value) const { return getProperty<int>(value, "app_in_dock_mode"); }
int HNREnvConfig::setAppInDockMode(int value) { return setProperty<int>(value, "app_in_dock_mode"); }
int HNREnvConfig::getDockIconType(int& value) const { return getProperty<int>(value, "dock_icon_type"); }
int HNREnvConfig::setDockIconType(int value) { return setProperty<int>(value, "dock_icon_type"); }
int HNREnvConfig::getVNCMode(int& value) const { return getProperty<int>(value, "vnc_mode"); }
int HNREnvConfig::setVNCMode(int value) { return setProperty<int>(value, "vnc_mode"); }
int HNREnvConfig::getVNCPort(int& value) const { return getProperty<int>(value, "vnc_port"); }
int HNREnvConfig::setVNCPort(int value) { return setProperty<int>(value, "vnc_port"); }
int HNREnvConfig::getVNCNetworkInterface(std::string& value) const { return getProperty<std::string>(value, "vnc_nic"); }
int HNREnvConfig::setVNCNetworkInterface(const std::string& value) { return setProperty<std::string>(value, "vnc_nic"); }
int HNREnvConfig::getVNCPassword(std::string& value) const { return getProperty<std::string>(value, "vnc_password"); }
int HNREnvConfig::setVNCPassword(const std::string& value) { return setProperty<std::string>(value, "vnc_password"); }
int HNREnvConfig::getOriginSample(std::string& value) const { return getProperty<std::string>(value, "origin_sample"); }
int HNREnvConfig::setOriginSample(const std::string& value) { return setProperty<std::string>(value, "origin_sample"); }
int HNREnvConfig::getToolsStatus(int& value) const { return getProperty<int>(value, "tools_status"); }
int HNREnvConfig::setToolsStatus(int value) { return setProperty<int>(value, "tools_status"); }
int HNREnvConfig::getVNCStarted(bool& value) const { return getProperty<bool>(value, "vnc_started"); }
int HNREnvConfig::setVNCStarted(bool value) { return setProperty<bool>(value, "vnc_started"); }
int HNREnvConfig::getAccessForOthers(int& value) const { return getProperty<int>(value, "access_for_others"); }
int HNREnvConfig::setAccessForOthers(int value) { return setProperty<int>(value, "access_for_others"); }

// ---- The three accessors with their own addressing ----

int HNREnvConfig::getOfflineManagementEnabled(bool& value) const
{
    const HNKMessageIterator* msg = getMsg();
    if (!msg)
        return -1;
    return msg->getValue(kOfflineManagementEnabledID, value);
}

int HNREnvConfig::setOfflineManagementEnabled(bool value)
{
    initMsg();
    HNKMessageIterator& msg = *getMsg();
    while (msg.removeChild(kOfflineManagementEnabledID) == 0) {
    }
    return msg.putValue(kOfflineManagementEnabledID, value);
}

int HNREnvConfig::getOfflineServices(HNKOptionalProperty<std::set<std::string>>& services) const
{
    const HNKMessageIterator* msg = getMsg();
    if (!msg)
        return -1;
    if (!msg->hasChild(kOfflineServicesTag))
        return 0;
    services.specify(true);
    return msg->getObject(services.value(), OfflineServicesReader(kOfflineServiceItem, HNK_READER_ABSENCE_OK),
                          kOfflineServicesTag);
}

int HNREnvConfig::setOfflineServices(const HNKOptionalProperty<std::set<std::string>>& services)
{
    initMsg();
    HNKMessageIterator& msg = *getMsg();
    while (msg.removeChild(kOfflineServicesTag) == 0) {
    }
    if (!services.isSpecified())
        return 0;
    return msg.putObject(services.get(), HNKWriterListOf(HNKStringWriter(), kOfflineServiceItem),
                         kOfflineServicesTag);
}

int HNREnvConfig::getDevices(HNKOptionalProperty<HNRVMDeviceList>& devices) const
{
    const HNKMessageIterator* msg = getMsg();
    if (!msg)
        return -1;
    if (!msg->hasChild(kDeviceListTag))
        return 0;
    devices.specify(true);
    return msg->getObject(devices.value(), DeviceListReader(kDeviceItem, HNK_READER_ABSENCE_OK, true),
                          kDeviceListTag);
}

int HNREnvConfig::setDevices(const HNKOptionalProperty<HNRVMDeviceList>& devices)
{
    initMsg();
    HNKMessageIterator& msg = *getMsg();
    while (msg.removeChild(kDeviceListTag) == 0) {
    }
    if (!devices.isSpecified())
        return 0;
    return msg.putObject(devices.get(), DeviceListWriter(kDeviceItem), kDeviceListTag);
}

// ---- Tag positions and comparison ----

int HNREnvConfig::getPositionOfTheTag(const std::string& tag) const
{
    const TagPositions& positions = filledTagPositions();
    auto found = positions.find(tag);
    return found == positions.end() ? -1 : found->second;
}

int HNREnvConfig::compare(const HNREnvConfig& other) const
{
    int c = HNKEnvConfig::compare(other);
    if (c != 0)
        return c;
    // CPU units, CPU limit and the start user's password are left out on
    // purpose: configurations differing only in them are equal.
    if ((c = compareByMethod<int>(*this, other, &HNREnvConfig::getMemorySize)) != 0) return c;
    if ((c = compareByMethod<bool>(*this, other, &HNREnvConfig::getOfflineManagementEnabled)) != 0) return c;
    if ((c = compareByMethod<bool>(*this, other, &HNREnvConfig::getToolsAutoUpdateEnabled)) != 0) return c;
    if ((c = compareByMethod<bool>(*this, other, &HNREnvConfig::getUseDefaultAnswers)) != 0) return c;
    if ((c = compareByMethod<bool>(*this, other, &HNREnvConfig::getUserSharedFoldersEnabled)) != 0) return c;
    if ((c = compareByMethod<HNKOptionalProperty<std::set<std::string>>>(*this, other, &HNREnvConfig::getOfflineServices)) != 0) return c;
    if ((c = compareByMethod<int>(*this, other, &HNREnvConfig::getVideoMemorySize)) != 0) return c;
    if ((c = compareByMethod<int>(*this, other, &HNREnvConfig::getCPUCount)) != 0) return c;
    if ((c = compareByMethod<int>(*this, other, &HNREnvConfig::getCPUMode)) != 0) return c;
    if ((c = compareByMethod<int>(*this, other, &HNREnvConfig::getCPUAccelLevel)) != 0) return c;
    if ((c = compareByMethod<int>(*this, other, &HNREnvConfig::getAutoStart)) != 0) return c;
    if ((c = compareByMethod<int>(*this, other, &HNREnvConfig::getAutoStartDelay)) != 0) return c;
    if ((c = compareByMethod<int>(*this, other, &HNREnvConfig::getStartLoginMode)) != 0) return c;
    if ((c = compareByMethod<std::string>(*this, other, &HNREnvConfig::getStartUserLogin)) != 0) return c;
    if ((c = compareByMethod<int>(*this, other, &HNREnvConfig::getAutoStop)) != 0) return c;
    if ((c = compareByMethod<int>(*this, other, &HNREnvConfig::getWindowMode)) != 0) return c;
    if ((c = compareByMethod<std::string>(*this, other, &HNREnvConfig::getLastModifiedDate)) != 0) return c;
    if ((c = compareByMethod<std::string>(*this, other, &HNREnvConfig::getLastModifierName)) != 0) return c;
    if ((c = compareByMethod<bool>(*this, other, &HNREnvConfig::getGuestSharingEnabled)) != 0) return c;
    if ((c = compareByMethod<bool>(*this, other, &HNREnvConfig::getGuestSharingAutoMount)) != 0) return c;
    if ((c = compareByMethod<bool>(*this, other, &HNREnvConfig::getHostSharingEnabled)) != 0) return c;
    if ((c = compareByMethod<bool>(*this, other, &HNREnvConfig::getHostSharingLocal)) != 0) return c;
    if ((c = compareByMethod<bool>(*this, other, &HNREnvConfig::getHostSharingGlobal)) != 0) return c;
    if ((c = compareByMethod<bool>(*this, other, &HNREnvConfig::getDiskCacheWriteBack)) != 0) return c;
    if ((c = compareByMethod<bool>(*this, other, &HNREnvConfig::getCloseAppOnShutdown)) != 0) return c;
    if ((c = compareByMethod<std::string>(*this, other, &HNREnvConfig::getSystemFlags)) != 0) return c;
    if ((c = compareByMethod<int>(*this, other, &HNREnvConfig::getForegroundPriority)) != 0) return c;
    if ((c = compareByMethod<int>(*this, other, &HNREnvConfig::getBackgroundPriority)) != 0) return c;
    if ((c = compareByMethod<int>(*this, other, &HNREnvConfig::getIoPriority)) != 0) return c;
    if ((c = compareByMethod<std::string>(*this, other, &HNREnvConfig::getServerHostName)) != 0) return c;
    if ((c = compareByMethod<std::string>(*this, other, &HNREnvConfig::getHomePath)) != 0) return c;
    if ((c = compareByMethod<std::string>(*this, other, &HNREnvConfig::getIcon)) != 0) return c;
    if ((c = compareByMethod<bool>(*this, other, &HNREnvConfig::getShowTaskBar)) != 0) return c;
    if ((c = compareByMethod<bool>(*this, other, &HNREnvConfig::getRelocateTaskBar)) != 0) return c;
    if ((c = compareByMethod<bool>(*this, other, &HNREnvConfig::getExcludeDock)) != 0) return c;
    if ((c = compareByMethod<bool>(*this, other, &HNREnvConfig::getMultiDisplay)) != 0) return c;
    if ((c = compareByMethod<bool>(*this, other, &HNREnvConfig::getTemplate)) != 0) return c;
    if ((c = compareByMethod<bool>(*this, other, &HNREnvConfig::getAdditionalScreenResolutionsEnabled)) != 0) return c;
    if ((c = compareByMethod<bool>(*this, other, &HNREnvConfig::getOSScreenResolutionInFullScreenModeEnabled)) != 0) return c;
    if ((c = compareByMethod<int>(*this, other, &HNREnvConfig::getAppInDockMode)) != 0) return c;
    if ((c = compareByMethod<int>(*this, other, &HNREnvConfig::getDockIconType)) != 0) return c;
    if ((c = compareByMethod<int>(*this, other, &HNREnvConfig::getVNCMode)) != 0) return c;
    if ((c = compareByMethod<bool>(*this, other, &HNREnvConfig::getVNCStarted)) != 0) return c;
    if ((c = compareByMethod<int>(*this, other, &HNREnvConfig::getVNCPort)) != 0) return c;
    if ((c = compareByMethod<std::string>(*this, other, &HNREnvConfig::getVNCNetworkInterface)) != 0) return c;
    if ((c = compareByMethod<std::string>(*this, other, &HNREnvConfig::getVNCPassword)) != 0) return c;
    if ((c = compareByMethod<bool>(*this, other, &HNKEnvConfig::getDisabled)) != 0) return c;
    if ((c = compareByMethod<std::string>(*this, other, &HNREnvConfig::getOriginSample)) != 0) return c;
    if ((c = compareByMethod<int>(*this, other, &HNREnvConfig::getToolsStatus)) != 0) return c;
    if ((c = compareByMethod<int>(*this, other, &HNREnvConfig::getAccessForOthers)) != 0) return c;
    if ((c = compareByMethod<HNKOptionalProperty<HNRVMDeviceList>>(*this, other, &HNREnvConfig::getDevices)) != 0) return c;
    return 0;
}

HNREnvConfigFactory factoryHNREnvConfig(false);

} // namespace HNR
