#pragma once
// The configuration of one virtual machine of the platform, XML type
// "venv_configType". A property bag: no member fields; every setting is a
// child element of the message tree held by the framework base, and each
// accessor reads or writes one element by tag.
//
// API, by group:
// - Typed accessors (table below): getters return 0, or -1 (argument
//   untouched) without a tree, without the element or on a bad value;
//   setters leave exactly one element of the tag, appended with the new
//   value, and return 0; a string XML cannot carry is refused (-1) with the
//   old element left in place.
// - getProperty / setProperty<T> (bool, int, std::string): the generic pair
//   behind every typed accessor.
// - Offline management flag: element ID 1647, no tag of its own.
// - Offline services and devices: optional lists under "offline_management_list"
//   (items ID 1747) and "device_list" (items ID 1114). Getters: -1 without a
//   tree; 0 and the argument untouched without the list element; else the
//   argument is marked specified and the list reader's status is returned.
//   Setters remove every list element of the tag and write one again only
//   when specified.
// - getPositionOfTheTag: the schema position of a tag (one process-wide
//   table of 58 tags), used by the framework to order the output.
// - compare: the framework's comparison, then compareByMethod over the
//   getters in a fixed order; CPU units, CPU limit and the start user's
//   password never take part.
// - Framework-owned settings ("disabled", "cpu_hvt", "ps_port", "screen_*",
//   "name"...) are the base's (HNKEnvConfig).
#include "model/HNRVMDevice.h"

#include "HNKCompare.h"
#include "HNKDerivedParserFactory.h"
#include "HNKVEnvConfig.h"

#include <boost/shared_ptr.hpp>

#include <set>
#include <string>

class HNKEnvCoreBasic;

namespace HNR {

class HNREnvConfig : public HNKVEnvConfig {
public:
    // Each forwards to the HNKVEnvConfig constructor and sets nothing: the
    // configuration holds exactly the elements of its source, or none.
    // (There is no default constructor: pass a null message pointer or an
    // empty core.)
    explicit HNREnvConfig(const HNKMessageIterator* msg);
    explicit HNREnvConfig(const HNKEnvConfig& config);
    HNREnvConfig(const HNKVEnvConfig& config);
    explicit HNREnvConfig(boost::shared_ptr<HNKEnvCoreBasic> core);
    ~HNREnvConfig() override;

    // -1 without a tree or element, or when the text is not a T.
    template <class T>
    int getProperty(T& value, const char* tag) const;
    // Creates the tree if needed, appends child `tag` with the value, then
    // removes every older child `tag`. 0; -1 only for a string that XML
    // cannot carry (nothing changed then).
    template <class T>
    int setProperty(T value, const char* tag);

    int getToolsAutoUpdateEnabled(bool& value) const; // "tools_autoupdate_enabled"
    int setToolsAutoUpdateEnabled(bool value);
    int getUseDefaultAnswers(bool& value) const; // "use_default_answers"
    int setUseDefaultAnswers(bool value);
    int getUserSharedFoldersEnabled(bool& value) const; // "user_shared_folders_enabled"
    int setUserSharedFoldersEnabled(bool value);
    int getOfflineManagementEnabled(bool& value) const;                  // element ID 1647
    int setOfflineManagementEnabled(bool value);
    int getOfflineServices(HNKOptionalProperty<std::set<std::string>>& services) const; // "offline_management_list", items ID 1747
    int setOfflineServices(const HNKOptionalProperty<std::set<std::string>>& services);
    int getCPUCount(int& value) const; // "cpu_count"
    int setCPUCount(int value);
    int getMemorySize(int& value) const; // "memory_size"
    int setMemorySize(int value);
    int getVideoMemorySize(int& value) const; // "video_memory_size"
    int setVideoMemorySize(int value);
    int getCPUMode(int& value) const; // "cpu_mode"
    int setCPUMode(int value);
    int getCPUUnits(int& value) const; // "cpu_units"
    int setCPUUnits(int value);
    int getCPULimit(int& value) const; // "cpu_limit"
    int setCPULimit(int value);
    int getCPUAccelLevel(int& value) const; // "cpu_accel_level"
    int setCPUAccelLevel(int value);
    int getAutoStart(int& value) const; // "auto_start"
    int setAutoStart(int value);
    int getAutoStartDelay(int& value) const; // "auto_start_delay"
    int setAutoStartDelay(int value);
    int getStartLoginMode(int& value) const; // "start_login_mode"
    int setStartLoginMode(int value);
    int getStartUserLogin(std::string& value) const; // "start_user_login"
    int setStartUserLogin(const std::string& value);
    int getStartUserPassword(std::string& value) const; // "start_user_password"
    int setStartUserPassword(const std::string& value);
    int getAutoStop(int& value) const; // "auto_stop"
    int setAutoStop(int value);
    int getWindowMode(int& value) const; // "window_mode"
    int setWindowMode(int value);
    int getLastModifiedDate(std::string& value) const; // "last_modified_date"
    int setLastModifiedDate(const std::string& value);
    int getLastModifierName(std::string& value) const; // "last_modifier_name"
    int setLastModifierName(const std::string& value);
    int getGuestSharingEnabled(bool& value) const; // "guest_sharing_enabled"
    int setGuestSharingEnabled(bool value);
    int getGuestSharingAutoMount(bool& value) const; // "guest_sharing_auto_mount"
    int setGuestSharingAutoMount(bool value);
    int getHostSharingEnabled(bool& value) const; // "host_sharing_enabled"
    int setHostSharingEnabled(bool value);
    int getHostSharingLocal(bool& value) const; // "host_sharing_local"
    int setHostSharingLocal(bool value);
    int getHostSharingGlobal(bool& value) const; // "host_sharing_global"
    int setHostSharingGlobal(bool value);
    int getDiskCacheWriteBack(bool& value) const; // "disk_cache_write_back"
    int setDiskCacheWriteBack(bool value);
    int getCloseAppOnShutdown(bool& value) const; // "close_app_on_shutdown"
    int setCloseAppOnShutdown(bool value);
    int getSystemFlags(std::string& value) const; // "system_flags"
    int setSystemFlags(const std::string& value);
    int getForegroundPriority(int& value) const; // "foreground_priority"
    int setForegroundPriority(int value);
    int getBackgroundPriority(int& value) const; // "background_priority"
    int setBackgroundPriority(int value);
    int getIoPriority(int& value) const; // "io_priority"
    int setIoPriority(int value);
    int getServerHostName(std::string& value) const; // "server_host_name"
    int setServerHostName(const std::string& value);
    int getHomePath(std::string& value) const; // "home_path"
    int setHomePath(const std::string& value);
    int getIcon(std::string& value) const; // "icon"
    int setIcon(const std::string& value);
    int getShowTaskBar(bool& value) const; // "show_task_bar"
    int setShowTaskBar(bool value);
    int getRelocateTaskBar(bool& value) const; // "relocate_task_bar"
    int setRelocateTaskBar(bool value);
    int getExcludeDock(bool& value) const; // "exclude_dock"
    int setExcludeDock(bool value);
    int getMultiDisplay(bool& value) const; // "multi_display"
    int setMultiDisplay(bool value);
    int getTemplate(bool& value) const; // "is_template"
    int setTemplate(bool value);
    int getAdditionalScreenResolutionsEnabled(bool& value) const; // "additional_screen_resolutions_enabled"
    int setAdditionalScreenResolutionsEnabled(bool value);
    int getOSScreenResolutionInFullScreenModeEnabled(bool& value) const; // "os_screen_resolution_in_full_screen_mode_enabled"
    int setOSScreenResolutionInFullScreenModeEnabled(bool value);
    int getAppInDockMode(int& value) const; // "app_in_dock_mode"
    int setAppInDockMode(int value);
    int getDockIconType(int& value) const; // "dock_icon_type"
    int setDockIconType(int value);
    int getVNCMode(int& value) const; // "vnc_mode"
    int setVNCMode(int value);
    int getVNCPort(int& value) const; // "vnc_port"
    int setVNCPort(int value);
    int getVNCNetworkInterface(std::string& value) const; // "vnc_nic"
    int setVNCNetworkInterface(const std::string& value);
    int getVNCPassword(std::string& value) const; // "vnc_password"
    int setVNCPassword(const std::string& value);
    int getDevices(HNKOptionalProperty<HNRVMDeviceList>& devices) const; // "device_list", items ID 1114
    int setDevices(const HNKOptionalProperty<HNRVMDeviceList>& devices);
    int getOriginSample(std::string& value) const; // "origin_sample"
    int setOriginSample(const std::string& value);
    int getToolsStatus(int& value) const; // "tools_status"
    int setToolsStatus(int value);
    int getVNCStarted(bool& value) const; // "vnc_started"
    int setVNCStarted(bool value);
    int getAccessForOthers(int& value) const; // "access_for_others"
    int setAccessForOthers(int value);

    // Index of `tag` in the tag order table, or -1.
    int getPositionOfTheTag(const std::string& tag) const override;

    // First non-zero of the framework comparison and compareByMethod over
    // the getters in the order of the .cpp.
    int compare(const HNREnvConfig& other) const;

    // Type identity only: the elements are written by the framework base.
    struct Writer : HNKVEnvConfig::Writer {
        static const char* getStrNSID();
        static const char* getStrTypeID() { return "venv_configType"; }
        static unsigned getNSID() { return 0; }
        static unsigned getTypeID() { return 0; }
    };
};

// -1 when a's getter fails (whatever b holds: absent on both sides is -1,
// not 0, on purpose), 1 when only b's fails, else the framework's compare.
template <class T>
int compareByMethod(const HNREnvConfig& a, const HNREnvConfig& b, int (HNREnvConfig::*getter)(T&) const)
{
    T x = T();
    if ((a.*getter)(x) != 0)
        return -1;
    T y = T();
    if ((b.*getter)(y) != 0)
        return 1;
    return ::compare(x, y);
}

} // namespace HNR

// Records created by the framework's factories start from an empty core.
template <>
struct HNKObjectCreator<HNR::HNREnvConfig> {
    static HNR::HNREnvConfig* create() { return new HNR::HNREnvConfig(boost::shared_ptr<HNKEnvCoreBasic>()); }
};

namespace HNR {

typedef HNKDerivedParserFactoryT<HNREnvConfig, HNKEnvConfig, HNKEnvConfig, HNKEnvConfig::Reader,
                                 HNREnvConfig::Writer>
    HNREnvConfigFactory;
extern HNREnvConfigFactory factoryHNREnvConfig;

// Tag of the rows of the guest-OS memory table.
extern const char kVMMemoryTag[]; // "vm_memory"

} // namespace HNR
