#include "model/HNREnvConfig.h"

#include "frame/HNRConstants.h"

#include "HNKElementDictionary.h"
#include "HNKEnvCoreBasic.h"
#include "HNKErrorMessage.h"
#include "HNKFramework/XmlLintCheck.h"
#include "HNKSerialization.h"

#include "tools/MessageTestSupport.h"

#include <gtest/gtest.h>

#include <boost/make_shared.hpp>

#include <string>
#include <typeinfo>
#include <vector>

using namespace HNR;

namespace {

typedef HNKDerivedParserFactory<HNKEnvConfig> ConfigFactory;

HNREnvConfig emptyConfig() { return HNREnvConfig(static_cast<const HNKMessageIterator*>(nullptr)); }

typedef int (HNREnvConfig::*IntGet)(int&) const;
typedef int (HNREnvConfig::*IntSet)(int);
typedef int (HNREnvConfig::*BoolGet)(bool&) const;
typedef int (HNREnvConfig::*BoolSet)(bool);
typedef int (HNREnvConfig::*StrGet)(std::string&) const;
typedef int (HNREnvConfig::*StrSet)(const std::string&);

struct IntPair { IntGet get; IntSet set; const char* tag; };
struct BoolPair { BoolGet get; BoolSet set; const char* tag; };
struct StrPair { StrGet get; StrSet set; const char* tag; };

#define HNR_PAIR(Name, tag) {&HNREnvConfig::get##Name, &HNREnvConfig::set##Name, tag}

const IntPair kIntPairs[] = {
    HNR_PAIR(CPUCount, "cpu_count"), HNR_PAIR(MemorySize, "memory_size"),
    HNR_PAIR(VideoMemorySize, "video_memory_size"), HNR_PAIR(CPUMode, "cpu_mode"), HNR_PAIR(CPUUnits, "cpu_units"),
    HNR_PAIR(CPULimit, "cpu_limit"), HNR_PAIR(CPUAccelLevel, "cpu_accel_level"), HNR_PAIR(AutoStart, "auto_start"),
    HNR_PAIR(AutoStartDelay, "auto_start_delay"), HNR_PAIR(StartLoginMode, "start_login_mode"),
    HNR_PAIR(AutoStop, "auto_stop"), HNR_PAIR(WindowMode, "window_mode"),
    HNR_PAIR(ForegroundPriority, "foreground_priority"), HNR_PAIR(BackgroundPriority, "background_priority"),
    HNR_PAIR(IoPriority, "io_priority"), HNR_PAIR(AppInDockMode, "app_in_dock_mode"),
    HNR_PAIR(DockIconType, "dock_icon_type"), HNR_PAIR(VNCMode, "vnc_mode"), HNR_PAIR(VNCPort, "vnc_port"),
    HNR_PAIR(ToolsStatus, "tools_status"), HNR_PAIR(AccessForOthers, "access_for_others"),
};
const BoolPair kBoolPairs[] = {
    HNR_PAIR(ToolsAutoUpdateEnabled, "tools_autoupdate_enabled"), HNR_PAIR(UseDefaultAnswers, "use_default_answers"),
    HNR_PAIR(UserSharedFoldersEnabled, "user_shared_folders_enabled"),
    HNR_PAIR(GuestSharingEnabled, "guest_sharing_enabled"), HNR_PAIR(GuestSharingAutoMount, "guest_sharing_auto_mount"),
    HNR_PAIR(HostSharingEnabled, "host_sharing_enabled"), HNR_PAIR(HostSharingLocal, "host_sharing_local"),
    HNR_PAIR(HostSharingGlobal, "host_sharing_global"), HNR_PAIR(DiskCacheWriteBack, "disk_cache_write_back"),
    HNR_PAIR(CloseAppOnShutdown, "close_app_on_shutdown"), HNR_PAIR(ShowTaskBar, "show_task_bar"),
    HNR_PAIR(RelocateTaskBar, "relocate_task_bar"), HNR_PAIR(ExcludeDock, "exclude_dock"),
    HNR_PAIR(MultiDisplay, "multi_display"), HNR_PAIR(Template, "is_template"),
    HNR_PAIR(AdditionalScreenResolutionsEnabled, "additional_screen_resolutions_enabled"),
    HNR_PAIR(OSScreenResolutionInFullScreenModeEnabled, "os_screen_resolution_in_full_screen_mode_enabled"),
    HNR_PAIR(VNCStarted, "vnc_started"),
};
const StrPair kStrPairs[] = {
    HNR_PAIR(StartUserLogin, "start_user_login"), HNR_PAIR(StartUserPassword, "start_user_password"),
    HNR_PAIR(LastModifiedDate, "last_modified_date"), HNR_PAIR(LastModifierName, "last_modifier_name"),
    HNR_PAIR(SystemFlags, "system_flags"), HNR_PAIR(ServerHostName, "server_host_name"),
    HNR_PAIR(HomePath, "home_path"), HNR_PAIR(Icon, "icon"), HNR_PAIR(VNCNetworkInterface, "vnc_nic"),
    HNR_PAIR(VNCPassword, "vnc_password"), HNR_PAIR(OriginSample, "origin_sample"),
};

TEST(HNREnvConfigTest, EveryAccessorPairAddressesItsTag)
{
    HNREnvConfig c = emptyConfig();
    int n = 100;
    for (const IntPair& p : kIntPairs) {
        EXPECT_EQ(0, (c.*p.set)(n)) << p.tag;
        int raw = 0, got = 0;
        EXPECT_EQ(0, c.getMsg()->getValue(p.tag, raw)) << p.tag;
        EXPECT_EQ(n, raw) << p.tag;
        EXPECT_EQ(0, (c.*p.get)(got)) << p.tag;
        EXPECT_EQ(n, got) << p.tag;
        EXPECT_EQ(0, c.getProperty(got, p.tag));
        ++n;
    }
    for (const BoolPair& p : kBoolPairs) {
        EXPECT_EQ(0, (c.*p.set)(true)) << p.tag;
        bool got = false;
        EXPECT_TRUE(c.getMsg()->hasChild(p.tag)) << p.tag;
        EXPECT_EQ(0, (c.*p.get)(got)) << p.tag;
        EXPECT_TRUE(got) << p.tag;
    }
    for (const StrPair& p : kStrPairs) {
        EXPECT_EQ(0, (c.*p.set)(std::string("v-") + p.tag)) << p.tag;
        std::string raw, got;
        EXPECT_EQ(0, c.getMsg()->getValue(p.tag, raw)) << p.tag;
        EXPECT_EQ(std::string("v-") + p.tag, raw) << p.tag;
        EXPECT_EQ(0, (c.*p.get)(got)) << p.tag;
        EXPECT_EQ(raw, got);
    }
    // The VNC password is plain text, not Base64.
    std::string raw;
    c.getMsg()->getValue("vnc_password", raw);
    EXPECT_EQ("v-vnc_password", raw);
}

TEST(HNREnvConfigTest, WithoutTreeEveryGetterFailsAndListsSucceedOnceATreeExists)
{
    HNREnvConfig c = emptyConfig();
    EXPECT_FALSE(c.hasMsg());
    int i = 42;
    bool b = true;
    std::string s = "keep";
    for (const IntPair& p : kIntPairs)
        EXPECT_EQ(-1, (c.*p.get)(i)) << p.tag;
    for (const BoolPair& p : kBoolPairs)
        EXPECT_EQ(-1, (c.*p.get)(b)) << p.tag;
    for (const StrPair& p : kStrPairs)
        EXPECT_EQ(-1, (c.*p.get)(s)) << p.tag;
    EXPECT_EQ(42, i);
    EXPECT_EQ("keep", s);
    EXPECT_EQ(-1, c.getOfflineManagementEnabled(b));
    EXPECT_EQ(-1, c.getDisabled(b));
    HNKOptionalProperty<std::set<std::string>> services;
    HNKOptionalProperty<HNRVMDeviceList> devices;
    EXPECT_EQ(-1, c.getOfflineServices(services));
    EXPECT_EQ(-1, c.getDevices(devices));
    EXPECT_EQ(-1, c.getProperty(i, "memory_size"));

    EXPECT_EQ(0, c.setIcon("vm.png"));
    EXPECT_TRUE(c.hasMsg());
    EXPECT_EQ(0, c.getOfflineServices(services));
    EXPECT_EQ(0, c.getDevices(devices));
    EXPECT_FALSE(services.isSpecified());
    EXPECT_FALSE(devices.isSpecified());
    EXPECT_EQ(-1, c.getMemorySize(i)); // still absent
}

TEST(HNREnvConfigTest, BadValueFailsTheGetterAndLeavesTheArgument)
{
    HNKMessageIterator msg = parsed("<c><cpu_count>many</cpu_count><is_template>yes</is_template></c>");
    HNREnvConfig c(&msg);
    int n = 3;
    bool t = false;
    EXPECT_EQ(-1, c.getCPUCount(n));
    EXPECT_EQ(3, n);
    EXPECT_EQ(-1, c.getTemplate(t));
}

TEST(HNREnvConfigTest, SettingTwiceLeavesOneElementWithTheSecondValue)
{
    HNREnvConfig c = emptyConfig();
    EXPECT_EQ(0, c.setCPUCount(2));
    EXPECT_EQ(0, c.setMemorySize(1024));
    EXPECT_EQ(0, c.setCPUCount(4));
    EXPECT_EQ(1, countChildren(*c.getMsg(), "cpu_count"));
    int n = 0;
    EXPECT_EQ(0, c.getCPUCount(n));
    EXPECT_EQ(4, n);
    // A set moves the element to the end of the tree.
    EXPECT_EQ((std::vector<std::string>{"memory_size", "cpu_count"}), childNames(*c.getMsg()));
}

TEST(HNREnvConfigTest, StringXmlCannotCarryIsRefusedLeavingThePreviousValue)
{
    HNREnvConfig c = emptyConfig();
    EXPECT_EQ(0, c.setHomePath("/old"));
    EXPECT_EQ(-1, c.setHomePath(std::string("bad\0nul", 7)));
    std::string s;
    EXPECT_EQ(0, c.getHomePath(s));
    EXPECT_EQ("/old", s);
    EXPECT_EQ(1, countChildren(*c.getMsg(), "home_path"));
}

TEST(HNREnvConfigTest, OfflineManagementFlagIsAddressedByElementID)
{
    HNREnvConfig c = emptyConfig();
    EXPECT_EQ(0, c.setOfflineManagementEnabled(true));
    EXPECT_EQ(0, c.setOfflineManagementEnabled(false));
    bool v = true;
    EXPECT_EQ(0, c.getOfflineManagementEnabled(v));
    EXPECT_FALSE(v);
    EXPECT_EQ(1, countChildren(*c.getMsg(), HNKElementDictionary::findName(1647)));
    EXPECT_TRUE(c.getMsg()->hasChild(1647));
}

TEST(HNREnvConfigTest, OfflineServicesAreASetUnderTheirListElement)
{
    HNREnvConfig c = emptyConfig();
    HNKOptionalProperty<std::set<std::string>> services;
    services = std::set<std::string>{"sshd", "backup", "agent"};
    EXPECT_EQ(0, c.setOfflineServices(services));
    HNKMessageIterator list(*c.getMsg());
    ASSERT_EQ(0, list.descend("offline_management_list"));
    std::vector<std::string> items = childNames(list);
    EXPECT_EQ(3u, items.size());
    EXPECT_EQ(HNKElementDictionary::findName(1747), items[0]);
    std::string first;
    ASSERT_EQ(0, list.getValue(1747, first));
    EXPECT_EQ("agent", first); // set order

    HNKOptionalProperty<std::set<std::string>> back;
    EXPECT_EQ(0, c.getOfflineServices(back));
    EXPECT_TRUE(back.isSpecified());
    EXPECT_EQ(services.get(), back.get());

    // An empty list element reads as a specified empty set.
    HNKOptionalProperty<std::set<std::string>> none;
    none = std::set<std::string>();
    EXPECT_EQ(0, c.setOfflineServices(none));
    HNKOptionalProperty<std::set<std::string>> empty;
    EXPECT_EQ(0, c.getOfflineServices(empty));
    EXPECT_TRUE(empty.isSpecified());
    EXPECT_TRUE(empty.get().empty());

    // Unspecified removes the element.
    EXPECT_EQ(0, c.setOfflineServices(HNKOptionalProperty<std::set<std::string>>()));
    EXPECT_FALSE(c.getMsg()->hasChild("offline_management_list"));
}

TEST(HNREnvConfigTest, SetDevicesUnspecifiedRemovesTheDeviceList)
{
    HNREnvConfig c = emptyConfig();
    HNKOptionalProperty<HNRVMDeviceList> devices;
    devices = HNRVMDeviceList{boost::make_shared<HNRVMUSBDevice>(), boost::make_shared<HNRVMDevice>()};
    EXPECT_EQ(0, c.setDevices(devices));
    EXPECT_TRUE(c.getMsg()->hasChild("device_list"));
    EXPECT_EQ(0, c.setDevices(devices)); // replaced, not added
    EXPECT_EQ(1, countChildren(*c.getMsg(), "device_list"));
    HNKOptionalProperty<HNRVMDeviceList> back;
    EXPECT_EQ(0, c.getDevices(back));
    ASSERT_EQ(2u, back.get().size());
    EXPECT_EQ(typeid(HNRVMUSBDevice), typeid(*back.get()[0]));
    EXPECT_EQ(0, ::compare(devices, back));

    EXPECT_EQ(0, c.setDevices(HNKOptionalProperty<HNRVMDeviceList>()));
    EXPECT_FALSE(c.getMsg()->hasChild("device_list"));
    HNKOptionalProperty<HNRVMDeviceList> none;
    EXPECT_EQ(0, c.getDevices(none));
    EXPECT_FALSE(none.isSpecified());
}

TEST(HNREnvConfigTest, TagPositionsFollowTheTableWithTheDuplicate)
{
    HNREnvConfig c = emptyConfig();
    EXPECT_EQ(55, c.getPositionOfTheTag("use_default_answers"));
    EXPECT_EQ(-1, c.getPositionOfTheTag("user_shared_folders_enabled"));
    EXPECT_EQ(-1, c.getPositionOfTheTag("cpu_limit"));
    EXPECT_EQ(0, c.getPositionOfTheTag("memory_size"));
    EXPECT_EQ(57, c.getPositionOfTheTag("offline_management_list"));
    EXPECT_EQ(52, c.getPositionOfTheTag("device_list"));
    EXPECT_EQ(45, c.getPositionOfTheTag("disabled"));
    EXPECT_EQ(56, c.getPositionOfTheTag("tools_autoupdate_enabled"));
    EXPECT_EQ(-1, c.getPositionOfTheTag(""));
    // Near misses: a prefix, a longer name, an embedded NUL, and a name that
    // shares its length and first and last eight bytes with a tag.
    EXPECT_EQ(-1, c.getPositionOfTheTag("memory_siz"));
    EXPECT_EQ(-1, c.getPositionOfTheTag("memory_sizes"));
    EXPECT_EQ(-1, c.getPositionOfTheTag(std::string("memory_size\0", 12)));
    EXPECT_EQ(-1, c.getPositionOfTheTag("use_defaXlt_answers"));
    EXPECT_EQ(-1, c.getPositionOfTheTag("name"));
    // No tag has position 54.
    for (const char* tag : {"memory_size", "is_template", "use_default_answers", "tools_autoupdate_enabled"})
        EXPECT_NE(54, c.getPositionOfTheTag(tag));
    // The base knows no positions.
    EXPECT_EQ(-1, static_cast<const HNKEnvConfig&>(HNKEnvConfig()).getPositionOfTheTag("memory_size"));
}

HNREnvConfig fullConfig()
{
    HNREnvConfig c = emptyConfig();
    int n = 1;
    for (const IntPair& p : kIntPairs)
        (c.*p.set)(n++);
    for (const BoolPair& p : kBoolPairs)
        (c.*p.set)(true);
    for (const StrPair& p : kStrPairs)
        (c.*p.set)(p.tag);
    c.setOfflineManagementEnabled(true);
    c.setDisabled(false);
    HNKOptionalProperty<std::set<std::string>> services;
    services = std::set<std::string>{"a"};
    c.setOfflineServices(services);
    HNKOptionalProperty<HNRVMDeviceList> devices;
    devices = HNRVMDeviceList{boost::make_shared<HNRVMSoundDevice>()};
    c.setDevices(devices);
    return c;
}

TEST(HNREnvConfigTest, AbsentMemorySizeMakesAConfigurationCompareBelowItself)
{
    HNREnvConfig c = emptyConfig();
    c.setCPUCount(2);
    EXPECT_EQ(0, c.HNKEnvConfig::compare(c));
    EXPECT_EQ(-1, c.compare(c));
    HNREnvConfig full = fullConfig();
    EXPECT_EQ(0, full.compare(full));
    HNREnvConfig copy(full);
    EXPECT_EQ(0, full.compare(copy));
    EXPECT_EQ(-1, emptyConfig().compare(emptyConfig())); // no tree at all
}

TEST(HNREnvConfigTest, CPUUnitsCPULimitAndStartPasswordNeverTakePart)
{
    HNREnvConfig a = fullConfig();
    HNREnvConfig b = fullConfig();
    b.setCPUUnits(9999);
    b.setCPULimit(1);
    b.setStartUserPassword("other secret");
    EXPECT_EQ(0, a.compare(b));
    EXPECT_EQ(0, b.compare(a));
    b.setIcon("different");
    EXPECT_NE(0, a.compare(b));
}

TEST(HNREnvConfigTest, CompareByMethodIsAsymmetricOnPurpose)
{
    HNREnvConfig has = emptyConfig(), lacks = emptyConfig();
    has.setMemorySize(512);
    lacks.setIcon("x");
    EXPECT_EQ(1, compareByMethod<int>(has, lacks, &HNREnvConfig::getMemorySize));
    EXPECT_EQ(-1, compareByMethod<int>(lacks, has, &HNREnvConfig::getMemorySize));
    EXPECT_EQ(-1, compareByMethod<int>(lacks, lacks, &HNREnvConfig::getMemorySize));
    HNREnvConfig more = emptyConfig();
    more.setMemorySize(1024);
    EXPECT_EQ(-1, compareByMethod<int>(has, more, &HNREnvConfig::getMemorySize));
    EXPECT_EQ(0, compareByMethod<int>(has, has, &HNREnvConfig::getMemorySize));
    // The list getters succeed when the list is absent; their optionals compare.
    typedef HNKOptionalProperty<HNRVMDeviceList> Devices;
    EXPECT_EQ(0, compareByMethod<Devices>(has, lacks, &HNREnvConfig::getDevices));
    HNKOptionalProperty<HNRVMDeviceList> one;
    one = HNRVMDeviceList{boost::make_shared<HNRVMDevice>()};
    has.setDevices(one);
    EXPECT_EQ(1, compareByMethod<Devices>(has, lacks, &HNREnvConfig::getDevices));
    EXPECT_EQ(0, compareByMethod<bool>(fullConfig(), fullConfig(), &HNKEnvConfig::getDisabled));
}

TEST(HNREnvConfigTest, ComparisonOrderDecidesByTheFirstDifference)
{
    HNREnvConfig a = fullConfig(), b = fullConfig();
    // memory_size (place 1) before video_memory_size (place 7).
    a.setVideoMemorySize(1);
    b.setVideoMemorySize(2);
    a.setMemorySize(10);
    b.setMemorySize(5);
    EXPECT_EQ(1, a.compare(b));
    b.setMemorySize(10);
    EXPECT_EQ(-1, a.compare(b));
    b.setVideoMemorySize(1);
    // vnc_started (place 43) comes before vnc_port (place 44).
    a.setVNCPort(1);
    b.setVNCPort(2);
    a.setVNCStarted(true);
    b.setVNCStarted(false);
    EXPECT_EQ(1, a.compare(b));
    b.setVNCStarted(true);
    EXPECT_EQ(-1, a.compare(b));
    b.setVNCPort(1);
    // The devices come last.
    HNKOptionalProperty<HNRVMDeviceList> devices;
    devices = HNRVMDeviceList{boost::make_shared<HNRVMUSBDevice>()};
    b.setDevices(devices);
    a.setAccessForOthers(77);
    EXPECT_EQ(1, a.compare(b));
}

TEST(HNREnvConfigTest, FrameworkComparisonGoesFirst)
{
    HNREnvConfig a = fullConfig(), b = fullConfig();
    a.setMemorySize(1);
    b.setMemorySize(2);
    HNKOptionalProperty<std::string> name;
    name = "zeta";
    a.setName(name);
    EXPECT_EQ(1, a.compare(b)); // a has a name, b none
    a.setDisabled(true);
    b.setDisabled(false);
    a.setName(HNKOptionalProperty<std::string>());
    EXPECT_EQ(1, a.compare(b));
}

TEST(HNREnvConfigTest, WriterOrdersChildrenByPositionUnknownLastInTheirOrder)
{
    HNREnvConfig c = emptyConfig();
    c.setUserSharedFoldersEnabled(true); // -1
    c.setToolsAutoUpdateEnabled(true);   // 56
    c.setCPULimit(50);                   // -1
    c.setOfflineManagementEnabled(true); // -1 (ID 1647)
    c.setCPUCount(2);                    // 2
    c.setDisabled(false);                // 45
    c.setMemorySize(2048);               // 0
    HNKOptionalProperty<std::string> name;
    name = "vm";
    c.setName(name);                     // -1
    HNKMessageIterator out("config");
    ASSERT_EQ(0, out.putObject(c, HNREnvConfig::Writer()));
    std::vector<std::string> expected = {"memory_size", "cpu_count", "disabled", "tools_autoupdate_enabled",
                                         "user_shared_folders_enabled", "cpu_limit",
                                         HNKElementDictionary::findName(1647), "name"};
    EXPECT_EQ(expected, childNames(out));
    EXPECT_EQ(std::string(kTypesNamespace) + ":venv_configType", out.getTypeName());
    EXPECT_EQ("", xmllintProblems(out.toXML()));
    // The tree itself keeps the order of the sets.
    EXPECT_EQ("user_shared_folders_enabled", childNames(*c.getMsg())[0]);
}

TEST(HNREnvConfigTest, WriterIdentifiesTheTypeByString)
{
    EXPECT_STREQ(kTypesNamespace, HNREnvConfig::Writer::getStrNSID());
    EXPECT_STREQ("venv_configType", HNREnvConfig::Writer::getStrTypeID());
    EXPECT_EQ(0u, HNREnvConfig::Writer::getNSID());
    EXPECT_EQ(0u, HNREnvConfig::Writer::getTypeID());
}

TEST(HNREnvConfigTest, RegisteredWithTheFrameworkRegistryAndReadsBackPolymorphically)
{
    const std::string key = std::string(kTypesNamespace) + ":venv_configType";
    auto found = ConfigFactory::factories().find(key);
    ASSERT_NE(ConfigFactory::factories().end(), found);
    EXPECT_EQ(static_cast<ConfigFactory*>(&factoryHNREnvConfig), found->second);
    EXPECT_NE(static_cast<ConfigFactory*>(&factoryHNREnvConfig), ConfigFactory::defaultFactory());

    boost::shared_ptr<HNKEnvConfig> config(new HNREnvConfig(fullConfig()));
    HNKMessageIterator out("configuration");
    ASSERT_EQ(0, out.putObject(config, HNKWriterDerived<HNKEnvConfig>()));
    EXPECT_EQ(key, out.getTypeName());
    boost::shared_ptr<HNKEnvConfig> back;
    ASSERT_EQ(0, HNKReaderDerived<HNKEnvConfig>(false)(parsed(out.toXML()), back));
    ASSERT_EQ(typeid(HNREnvConfig), typeid(*back));
    EXPECT_EQ(0, fullConfig().compare(static_cast<const HNREnvConfig&>(*back)));
    // A factory-made configuration starts empty, bound to no core.
    boost::shared_ptr<HNKEnvConfig> made = factoryHNREnvConfig.createObject();
    EXPECT_EQ(typeid(HNREnvConfig), typeid(*made));
    EXPECT_FALSE(made->hasMsg());
    EXPECT_FALSE(made->getCore());
}

TEST(HNREnvConfigTest, ConstructorsCopyTheirSourceAndSetNothing)
{
    HNKMessageIterator msg = parsed("<c><memory_size>64</memory_size></c>");
    HNREnvConfig fromMsg(&msg);
    EXPECT_EQ((std::vector<std::string>{"memory_size"}), childNames(*fromMsg.getMsg()));
    fromMsg.setCPUCount(1);
    EXPECT_FALSE(msg.hasChild("cpu_count")); // a copy, not the caller's tree
    HNREnvConfig copy(fromMsg);
    copy.setIcon("i");
    EXPECT_FALSE(fromMsg.getMsg()->hasChild("icon"));
    HNKVEnvConfig base(&msg);
    HNREnvConfig fromBase(base);
    int m = 0;
    EXPECT_EQ(0, fromBase.getMemorySize(m));
    EXPECT_EQ(64, m);
    HNREnvConfig fromEnvConfig(static_cast<const HNKEnvConfig&>(base));
    EXPECT_EQ(0, fromEnvConfig.getMemorySize(m));
    auto core = boost::make_shared<HNKEnvCoreBasic>(HNKEID(HNKGUID(1, 2)), "tessaline");
    HNREnvConfig fromCore(core);
    EXPECT_FALSE(fromCore.hasMsg());
    EXPECT_EQ(core, fromCore.getCore());
}

} // namespace
