#pragma once
// The configuration of one virtual machine of the platform, XML type
// "venv_configType". A property bag: no member fields; every setting is a
// child element of the message tree held by the framework base, and each
// accessor reads or writes one element by tag.
//
// Every setting is written once, in HNR_ENV_CONFIG_SETTINGS below; the
// accessors' declarations and definitions, getPositionOfTheTag, compare, the
// record catalogue (what hnrctl prints and hides) and the benchmark's copy
// list are all expanded from it.
//
// API, by group:
// - Typed accessors (the table's value rows): getters return 0, or -1
//   (argument untouched) without a tree, without the element or on a bad
//   value; setters leave exactly one element of the tag, appended with the
//   new value, and return 0; a string XML cannot carry is refused (-1) with
//   the old element left in place.
// - getProperty / setProperty<T> (bool, int, std::string): the generic pair
//   behind every typed accessor.
// - Offline management flag (custom row): element ID 1647, no tag of its own.
// - Offline services and devices (list rows): optional lists under
//   "offline_management_list" (items ID 1747) and "device_list" (items ID
//   1114). Getters: -1 without a tree; 0 and the argument untouched without
//   the list element; else the argument is marked specified and the list
//   reader's status is returned. Setters remove every list element of the
//   tag and write one again only when specified.
// - getPositionOfTheTag: the schema position of a tag (one process-wide
//   table of 58 tags), used by the framework to order the output.
// - compare: the framework's comparison, then compareByMethod over the
//   getters in the table's compare order; CPU units, CPU limit and the start
//   user's password never take part.
// - Framework-owned settings (base rows: "disabled", "cpu_hvt", "ps_port",
//   "screen_*", "name"...) are the base's (HNKEnvConfig); they are in the
//   table for their position, comparison and listing.
#include "model/HNRVMDevice.h"

#include "HNKCompare.h"
#include "HNKDerivedParserFactory.h"
#include "HNKVEnvConfig.h"

#include <boost/shared_ptr.hpp>

#include <set>
#include <string>
#include <type_traits>

class HNKEnvCoreBasic;

// The settings of a VM configuration, one row each:
//   ROW(arg, kind, Name, type, tag, place, compare, secrecy)
// arg     passed through to every ROW unchanged.
// kind    value:  HNREnvConfig's accessor pair, getProperty/setProperty by tag;
//         custom: HNREnvConfig's pair with its own addressing (element ID);
//         list:   HNREnvConfig's pair reading and writing an optional list;
//         base:   the framework base's pair (HNKEnvConfig).
// Name    the accessors are get<Name> and set<Name>.
// place   the tag's place in the schema order, which getPositionOfTheTag
//         gives and the framework writes in: at(n); twice(a, b), the tag is
//         in the order table at a and again at b, the later wins, so no tag
//         has position a; after(n), no position (-1), listed after position
//         n; first, no position, listed before all.
// compare rank(n): nth getter compared by compare; unranked: never compared.
// secrecy secret: a password, hidden by hnrctl unless asked; plain.
// Rows are in the order the accessors are declared (the framework's first):
// the order a caller setting them all appends the elements without a
// position in.
#define HNR_ENV_CONFIG_SETTINGS(ROW, arg) \
    ROW(arg, base, Name, HNKOptionalProperty<std::string>, "name", first, unranked, plain) \
    ROW(arg, base, Disabled, bool, "disabled", at(45), rank(47), plain) \
    ROW(arg, base, CPUHvt, bool, "cpu_hvt", at(4), unranked, plain) \
    ROW(arg, base, VtdSupported, bool, "vtd_supported", at(5), unranked, plain) \
    ROW(arg, base, PsPort, int, "ps_port", at(41), unranked, plain) \
    ROW(arg, base, ScreenWidth, int, "screen_width", at(49), unranked, plain) \
    ROW(arg, base, ScreenHeight, int, "screen_height", at(50), unranked, plain) \
    ROW(arg, base, ScreenDepth, int, "screen_depth", at(51), unranked, plain) \
    ROW(arg, value, ToolsAutoUpdateEnabled, bool, "tools_autoupdate_enabled", at(56), rank(3), plain) \
    ROW(arg, value, UseDefaultAnswers, bool, "use_default_answers", twice(54, 55), rank(4), plain) \
    ROW(arg, value, UserSharedFoldersEnabled, bool, "user_shared_folders_enabled", after(55), rank(5), plain) \
    ROW(arg, custom, OfflineManagementEnabled, bool, "offline_management_enabled", after(57), rank(2), plain) \
    ROW(arg, list, OfflineServices, HNR::HNROfflineServices, "offline_management_list", at(57), rank(6), plain) \
    ROW(arg, value, CPUCount, int, "cpu_count", at(2), rank(8), plain) \
    ROW(arg, value, MemorySize, int, "memory_size", at(0), rank(1), plain) \
    ROW(arg, value, VideoMemorySize, int, "video_memory_size", at(1), rank(7), plain) \
    ROW(arg, value, CPUMode, int, "cpu_mode", at(3), rank(9), plain) \
    ROW(arg, value, CPUUnits, int, "cpu_units", at(6), unranked, plain) \
    ROW(arg, value, CPULimit, int, "cpu_limit", after(6), unranked, plain) \
    ROW(arg, value, CPUAccelLevel, int, "cpu_accel_level", at(7), rank(10), plain) \
    ROW(arg, value, AutoStart, int, "auto_start", at(8), rank(11), plain) \
    ROW(arg, value, AutoStartDelay, int, "auto_start_delay", at(9), rank(12), plain) \
    ROW(arg, value, StartLoginMode, int, "start_login_mode", at(10), rank(13), plain) \
    ROW(arg, value, StartUserLogin, std::string, "start_user_login", at(11), rank(14), plain) \
    ROW(arg, value, StartUserPassword, std::string, "start_user_password", at(12), unranked, secret) \
    ROW(arg, value, AutoStop, int, "auto_stop", at(13), rank(15), plain) \
    ROW(arg, value, WindowMode, int, "window_mode", at(14), rank(16), plain) \
    ROW(arg, value, LastModifiedDate, std::string, "last_modified_date", at(15), rank(17), plain) \
    ROW(arg, value, LastModifierName, std::string, "last_modifier_name", at(16), rank(18), plain) \
    ROW(arg, value, GuestSharingEnabled, bool, "guest_sharing_enabled", at(17), rank(19), plain) \
    ROW(arg, value, GuestSharingAutoMount, bool, "guest_sharing_auto_mount", at(18), rank(20), plain) \
    ROW(arg, value, HostSharingEnabled, bool, "host_sharing_enabled", at(19), rank(21), plain) \
    ROW(arg, value, HostSharingLocal, bool, "host_sharing_local", at(20), rank(22), plain) \
    ROW(arg, value, HostSharingGlobal, bool, "host_sharing_global", at(21), rank(23), plain) \
    ROW(arg, value, DiskCacheWriteBack, bool, "disk_cache_write_back", at(22), rank(24), plain) \
    ROW(arg, value, CloseAppOnShutdown, bool, "close_app_on_shutdown", at(23), rank(25), plain) \
    ROW(arg, value, SystemFlags, std::string, "system_flags", at(24), rank(26), plain) \
    ROW(arg, value, ForegroundPriority, int, "foreground_priority", at(25), rank(27), plain) \
    ROW(arg, value, BackgroundPriority, int, "background_priority", at(26), rank(28), plain) \
    ROW(arg, value, IoPriority, int, "io_priority", at(27), rank(29), plain) \
    ROW(arg, value, ServerHostName, std::string, "server_host_name", at(28), rank(30), plain) \
    ROW(arg, value, HomePath, std::string, "home_path", at(29), rank(31), plain) \
    ROW(arg, value, Icon, std::string, "icon", at(30), rank(32), plain) \
    ROW(arg, value, ShowTaskBar, bool, "show_task_bar", at(31), rank(33), plain) \
    ROW(arg, value, RelocateTaskBar, bool, "relocate_task_bar", at(32), rank(34), plain) \
    ROW(arg, value, ExcludeDock, bool, "exclude_dock", at(33), rank(35), plain) \
    ROW(arg, value, MultiDisplay, bool, "multi_display", at(34), rank(36), plain) \
    ROW(arg, value, Template, bool, "is_template", at(53), rank(37), plain) \
    ROW(arg, value, AdditionalScreenResolutionsEnabled, bool, "additional_screen_resolutions_enabled", at(35), rank(38), plain) \
    ROW(arg, value, OSScreenResolutionInFullScreenModeEnabled, bool, "os_screen_resolution_in_full_screen_mode_enabled", at(36), rank(39), plain) \
    ROW(arg, value, AppInDockMode, int, "app_in_dock_mode", at(37), rank(40), plain) \
    ROW(arg, value, DockIconType, int, "dock_icon_type", at(38), rank(41), plain) \
    ROW(arg, value, VNCMode, int, "vnc_mode", at(39), rank(42), plain) \
    ROW(arg, value, VNCPort, int, "vnc_port", at(40), rank(44), plain) \
    ROW(arg, value, VNCNetworkInterface, std::string, "vnc_nic", at(42), rank(45), plain) \
    ROW(arg, value, VNCPassword, std::string, "vnc_password", at(43), rank(46), secret) \
    ROW(arg, list, Devices, HNR::HNROptionalDevices, "device_list", at(52), rank(51), plain) \
    ROW(arg, value, OriginSample, std::string, "origin_sample", at(46), rank(48), plain) \
    ROW(arg, value, ToolsStatus, int, "tools_status", at(47), rank(49), plain) \
    ROW(arg, value, VNCStarted, bool, "vnc_started", at(44), rank(43), plain) \
    ROW(arg, value, AccessForOthers, int, "access_for_others", at(48), rank(50), plain)

// The columns' words, for the expansions: HNR_ENV_CONFIG_PLACE_##place gives
// "first position, second position, listing key" (-1 for no position; the
// key orders rows as the schema does, an after(n) row just behind n),
// HNR_ENV_CONFIG_RANK_##compare the rank (0: never compared) and
// HNR_ENV_CONFIG_SECRET_##secrecy the flag.
#define HNR_ENV_CONFIG_PLACE_at(n) n, n, 2 * (n)
#define HNR_ENV_CONFIG_PLACE_twice(a, b) a, b, 2 * (b)
#define HNR_ENV_CONFIG_PLACE_after(n) -1, -1, 2 * (n) + 1
#define HNR_ENV_CONFIG_PLACE_first -1, -1, -1
#define HNR_ENV_CONFIG_RANK_rank(n) n
#define HNR_ENV_CONFIG_RANK_unranked 0
#define HNR_ENV_CONFIG_SECRET_secret true
#define HNR_ENV_CONFIG_SECRET_plain false

// The class's own accessor declarations.
#define HNR_ENV_CONFIG_DECLARE(arg, kind, Name, T, tag, place, compare, secrecy) \
    HNR_ENV_CONFIG_DECLARE_##kind(Name, T)
#define HNR_ENV_CONFIG_DECLARE_value(Name, T) \
    int get##Name(T& value) const;             \
    int set##Name(HNR::HNRSettingArg<T> value);
#define HNR_ENV_CONFIG_DECLARE_custom HNR_ENV_CONFIG_DECLARE_value
#define HNR_ENV_CONFIG_DECLARE_list HNR_ENV_CONFIG_DECLARE_value
#define HNR_ENV_CONFIG_DECLARE_base(Name, T)

namespace HNR {

typedef HNKOptionalProperty<std::set<std::string>> HNROfflineServices;
typedef HNKOptionalProperty<HNRVMDeviceList> HNROptionalDevices;
// What a setter takes: numbers and flags by value, the rest by const reference.
template <class T>
using HNRSettingArg = typename std::conditional<std::is_scalar<T>::value, T, const T&>::type;

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

    // The typed accessors: one pair per row of HNR_ENV_CONFIG_SETTINGS of
    // kind value, custom or list, e.g. for CPUAccelLevel:
    //   int getCPUAccelLevel(int& value) const;
    //   int setCPUAccelLevel(int value);
    // (a setter takes a string or list by const reference).
    HNR_ENV_CONFIG_SETTINGS(HNR_ENV_CONFIG_DECLARE, )

    // Index of `tag` in the tag order table, or -1.
    int getPositionOfTheTag(const std::string& tag) const override;

    // First non-zero of the framework comparison and compareByMethod over
    // the getters in the table's compare ranks.
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
