#include "model/HNRVtInfo.h"

#include "HNRFunctionality/model/RecordRoundTrip.h"

#include "HNKSerialization.h"

#include <gtest/gtest.h>

#include <boost/shared_ptr.hpp>

#include <string>
#include <typeinfo>
#include <vector>

using namespace HNR;

namespace {

const std::string kTypes = kTypesNamespace;
const std::string kXsi = "http://www.w3.org/2001/XMLSchema-instance";

template <class T>
void expectSameOptional(const HNKOptionalProperty<T>& a, const HNKOptionalProperty<T>& b, const char* what)
{
    EXPECT_EQ(a.isSpecified(), b.isSpecified()) << what;
    if (a.isSpecified() && b.isSpecified()) {
        EXPECT_EQ(a.get(), b.get()) << what;
    }
}

void expectSameRow(const HNRGuestOSMemoryRequirements& a, const HNRGuestOSMemoryRequirements& b)
{
    EXPECT_EQ(a.getGuestOSPlatform(), b.getGuestOSPlatform());
    EXPECT_EQ(a.getGuestOSName(), b.getGuestOSName());
    EXPECT_EQ(a.getOptimalVMMemorySize(), b.getOptimalVMMemorySize());
    EXPECT_EQ(a.getMinRecommendedVMMemorySize(), b.getMinRecommendedVMMemorySize());
    EXPECT_EQ(a.getMaxRecommendedVMMemorySize(), b.getMaxRecommendedVMMemorySize());
    EXPECT_EQ(a.getDefaultVideoMemorySize(), b.getDefaultVideoMemorySize());
}

void expectSameInfo(const HNRVtInfo& a, const HNRVtInfo& b)
{
    EXPECT_EQ(a.getSDKVersion(), b.getSDKVersion());
    expectSameOptional(a.getCPUHvt(), b.getCPUHvt(), "cpu_hvt");
    expectSameOptional(a.getVTdSupported(), b.getVTdSupported(), "vtd_supported");
    EXPECT_EQ(a.getProductName(), b.getProductName());
    EXPECT_EQ(a.getProductVersion(), b.getProductVersion());
    EXPECT_EQ(a.getLayerType(), b.getLayerType());
    EXPECT_EQ(a.getMaxRunningVMs(), b.getMaxRunningVMs());
}

void expectSameSettings(const HNRVtSettings& a, const HNRVtSettings& b)
{
    expectSameOptional(a.getDefaultVMFolder(), b.getDefaultVMFolder(), "default_vm_folder");
    expectSameOptional(a.getDefaultUserVMFolder(), b.getDefaultUserVMFolder(), "default_user_vm_folder");
    expectSameOptional(a.getVMDirUUID(), b.getVMDirUUID(), "vm_dir_uuid");
    expectSameOptional(a.getUseManagementConsole(), b.getUseManagementConsole(), "use_management_console");
    expectSameOptional(a.getCanChangeServerSettings(), b.getCanChangeServerSettings(), "can_change_server_settings");
    expectSameOptional(a.getAutoAdjustReservedVMMemorySize(), b.getAutoAdjustReservedVMMemorySize(), "auto_adjust");
    expectSameOptional(a.getReservedVMMemorySize(), b.getReservedVMMemorySize(), "reserved_vm_memory_size");
    expectSameOptional(a.getMinVMMemorySize(), b.getMinVMMemorySize(), "min_vm_memory_size");
    expectSameOptional(a.getMaxVMMemorySize(), b.getMaxVMMemorySize(), "max_vm_memory_size");
    expectSameOptional(a.getMinReservedMemoryLimit(), b.getMinReservedMemoryLimit(), "min_reserved_memory_limit");
    expectSameOptional(a.getMaxReservedMemoryLimit(), b.getMaxReservedMemoryLimit(), "max_reserved_memory_limit");
    expectSameOptional(a.getVNCPort(), b.getVNCPort(), "vnc_port");
    expectSameOptional(a.getPSPort(), b.getPSPort(), "ps_port");
    expectSameOptional(a.getVNCNIC(), b.getVNCNIC(), "vnc_nic");
    ASSERT_EQ(a.getGuestOSMemory().isSpecified(), b.getGuestOSMemory().isSpecified());
    ASSERT_EQ(a.getGuestOSMemory().get().size(), b.getGuestOSMemory().get().size());
    for (size_t i = 0; i < a.getGuestOSMemory().get().size(); ++i)
        expectSameRow(a.getGuestOSMemory().get()[i], b.getGuestOSMemory().get()[i]);
    EXPECT_EQ(a.getRevision(), b.getRevision());
    EXPECT_EQ(a.getServerName(), b.getServerName());
}

std::string typed(const std::string& root, const std::string& type, const std::string& body)
{
    return "<" + root + " xmlns:t='" + kTypes + "' xmlns:xsi='" + kXsi + "' xsi:type='t:" + type + "'>" + body +
           "</" + root + ">";
}

const char kRow[] = "<guest_os_platform>linux</guest_os_platform><guest_os_name>Alpine</guest_os_name>"
                    "<optimal_vm_memory_size>768</optimal_vm_memory_size>"
                    "<min_recommended_vm_memory_size>256</min_recommended_vm_memory_size>"
                    "<max_recommended_vm_memory_size>2048</max_recommended_vm_memory_size>"
                    "<default_video_memory_size>8</default_video_memory_size>";
const char kInfoBase[] = "<vt_layer_type>hypervisor</vt_layer_type><max_running_vms>8</max_running_vms>";
const char kSettingsBase[] = "<settings_revision>3</settings_revision><server_name>s</server_name>";

// ---- Samples ----

TEST(HNRVtInfoTest, VtInfoSampleSurvivesTheRoundTrip)
{
    RoundTrip<HNKVtInfo> trip = roundTripSample<HNKVtInfo>("vt_infoType.xml");
    ASSERT_TRUE(trip.first && trip.second);
    const HNRVtInfo& info = dynamic_cast<const HNRVtInfo&>(*trip.first);
    EXPECT_EQ(40012, info.getSDKVersion());
    EXPECT_EQ("VT-x", info.getCPUHvt().get());
    EXPECT_TRUE(info.getVTdSupported().isSpecified());
    EXPECT_TRUE(info.getVTdSupported().get());
    EXPECT_EQ("tessaline hypervisor", info.getProductName());
    EXPECT_EQ("4.0.0-1127", info.getProductVersion());
    EXPECT_EQ("hypervisor", info.getLayerType());
    EXPECT_EQ(64, info.getMaxRunningVMs());
    expectSameInfo(info, dynamic_cast<const HNRVtInfo&>(*trip.second));
}

TEST(HNRVtInfoTest, VtSettingsSampleSurvivesTheRoundTrip)
{
    RoundTrip<HNKVtSettings> trip = roundTripSample<HNKVtSettings>("vt_settingsType.xml");
    ASSERT_TRUE(trip.first && trip.second);
    const HNRVtSettings& s = dynamic_cast<const HNRVtSettings&>(*trip.first);
    EXPECT_EQ("/var/lib/tessaline/vms", s.getDefaultVMFolder().get());
    EXPECT_TRUE(s.getUseManagementConsole().get());
    EXPECT_TRUE(s.getCanChangeServerSettings().isSpecified());
    EXPECT_FALSE(s.getCanChangeServerSettings().get());
    EXPECT_EQ(5900, s.getVNCPort().get());
    EXPECT_EQ("eth0", s.getVNCNIC().get());
    ASSERT_TRUE(s.getGuestOSMemory().isSpecified());
    ASSERT_EQ(2u, s.getGuestOSMemory().get().size());
    EXPECT_EQ("Windows Server 2022", s.getGuestOSMemory().get()[1].getGuestOSName());
    EXPECT_EQ(2048, s.getGuestOSMemory().get()[1].getMinRecommendedVMMemorySize());
    EXPECT_EQ(0, s.getGuestOSMemory().get()[1].getOptimalVMMemorySize()); // output-only
    EXPECT_EQ(17, s.getRevision());
    expectSameSettings(s, dynamic_cast<const HNRVtSettings&>(*trip.second));
    // Each row is its own child, stamped with the row type, in vector order.
    HNKMessageIterator again = parsedMessage(trip.written);
    ASSERT_EQ(0, again.firstChild("vm_memory"));
    EXPECT_EQ(kTypes + ":guest_os_memory", again.getTypeName());
    std::string name;
    EXPECT_EQ(0, again.getValue("guest_os_name", name));
    EXPECT_EQ("Debian 12", name);
}

TEST(HNRVtInfoTest, GuestOSMemorySampleReadsThroughItsOwnRegistry)
{
    RoundTrip<HNRGuestOSMemoryRequirements> trip = roundTripSample<HNRGuestOSMemoryRequirements>("guest_os_memory.xml");
    ASSERT_TRUE(trip.first && trip.second);
    EXPECT_EQ("Ubuntu 22.04 LTS", trip.first->getGuestOSName());
    EXPECT_EQ(1024, trip.first->getMinRecommendedVMMemorySize());
    EXPECT_EQ(16, trip.first->getDefaultVideoMemorySize());
    expectSameRow(*trip.first, *trip.second);
}

// ---- Guest OS memory rows ----

TEST(HNRVtInfoTest, GuestOSMemoryRowLosesItsOptimalSizeOnTheWayBack)
{
    HNRGuestOSMemoryRequirements row;
    row.setGuestOSPlatform("linux");
    row.setGuestOSName("Fedora 40");
    row.setOptimalVMMemorySize(4096);
    row.setMinRecommendedVMMemorySize(1024);
    row.setMaxRecommendedVMMemorySize(8192);
    row.setDefaultVideoMemorySize(32);
    HNKMessageIterator out("vm_memory");
    ASSERT_EQ(0, out.putObject(row, HNRGuestOSMemoryRequirements::Writer()));
    int optimal = 0;
    EXPECT_EQ(0, out.getValue("optimal_vm_memory_size", optimal)); // written...
    EXPECT_EQ(4096, optimal);

    HNRGuestOSMemoryRequirements back;
    ASSERT_EQ(0, HNRGuestOSMemoryRequirements::Reader()(parsedMessage(out.toXML()), back));
    EXPECT_EQ(0, back.getOptimalVMMemorySize()); // ...but never read
    EXPECT_EQ("Fedora 40", back.getGuestOSName());
    EXPECT_EQ(1024, back.getMinRecommendedVMMemorySize());
    EXPECT_EQ(8192, back.getMaxRecommendedVMMemorySize());
    EXPECT_EQ(32, back.getDefaultVideoMemorySize());
}

TEST(HNRVtInfoTest, GuestOSMemoryRowWritesAllSixValuesInOrder)
{
    HNRGuestOSMemoryRequirements row;
    HNKMessageIterator out("vm_memory");
    ASSERT_EQ(0, out.putObject(row, HNRGuestOSMemoryRequirements::Writer()));
    const char* order[] = {"guest_os_platform", "optimal_vm_memory_size", "default_video_memory_size"};
    std::string text = out.toXML();
    EXPECT_LT(text.find(order[0]), text.find(order[1]));
    EXPECT_LT(text.find("guest_os_name"), text.find(order[1]));
    EXPECT_LT(text.find(order[1]), text.find("min_recommended_vm_memory_size"));
    EXPECT_LT(text.find("max_recommended_vm_memory_size"), text.find(order[2]));
}

TEST(HNRVtInfoTest, GuestOSMemoryRowMissingARequiredValueFails)
{
    HNRGuestOSMemoryRequirements row;
    // No default_video_memory_size.
    HNKMessageIterator it = parsedMessage(
        "<r><guest_os_platform>p</guest_os_platform><guest_os_name>n</guest_os_name>"
        "<min_recommended_vm_memory_size>1</min_recommended_vm_memory_size>"
        "<max_recommended_vm_memory_size>2</max_recommended_vm_memory_size></r>");
    EXPECT_EQ(-1, HNRGuestOSMemoryRequirements::Reader()(it, row));
    // The optimal size alone is not needed.
    HNKMessageIterator ok = parsedMessage(std::string("<r>") + kRow + "</r>");
    EXPECT_EQ(0, HNRGuestOSMemoryRequirements::Reader()(ok, row));
}

TEST(HNRVtInfoTest, UnknownRowTypeReadsAsAPlainRowThroughTheDefault)
{
    typedef HNKDerivedParserFactory<HNRGuestOSMemoryRequirements> RowFactory;
    EXPECT_EQ(&factoryHNRGuestOSMemory, RowFactory::defaultFactory());
    HNKMessageIterator it = parsedMessage(typed("vm_memory", "future_memory_row", kRow));
    boost::shared_ptr<HNRGuestOSMemoryRequirements> row;
    EXPECT_EQ(-1, HNKReaderDerived<HNRGuestOSMemoryRequirements>(false)(it, row));
    ASSERT_EQ(0, HNKReaderDerived<HNRGuestOSMemoryRequirements>(true)(it, row));
    EXPECT_EQ("Alpine", row->getGuestOSName());
}

// ---- HNRVtInfo ----

TEST(HNRVtInfoTest, UnspecifiedVTdIsNotWrittenAndReadsBackUnspecified)
{
    HNRVtInfo info;
    info.setSDKVersion(7);
    info.setProductName("p");
    info.setProductVersion("v");
    HNKMessageIterator out("vt_info");
    ASSERT_EQ(0, out.putObject(info, HNKWriterDerived<HNKVtInfo>()));
    EXPECT_FALSE(out.hasChild("vtd_supported")) << out.toXML();
    EXPECT_FALSE(out.hasChild("cpu_hvt")) << out.toXML();

    boost::shared_ptr<HNKVtInfo> back;
    HNKMessageIterator in = parsedMessage(out.toXML());
    ASSERT_EQ(0, HNKReaderDerived<HNKVtInfo>(false)(in, back));
    const HNRVtInfo& r = dynamic_cast<const HNRVtInfo&>(*back);
    EXPECT_FALSE(r.getVTdSupported().isSpecified());
    EXPECT_FALSE(r.getCPUHvt().isSpecified());
    EXPECT_EQ(7, r.getSDKVersion());
}

TEST(HNRVtInfoTest, SpecifiedVTdIsWrittenAsAnEmptyElement)
{
    HNRVtInfo info;
    info.getVTdSupported().set(true);
    HNKMessageIterator out("vt_info");
    ASSERT_EQ(0, out.putObject(info, HNRVtInfo::Writer()));
    std::string text = "x";
    ASSERT_EQ(0, out.getValue("vtd_supported", text));
    EXPECT_EQ("", text);
    // Writer order: sdk_version, (cpu_hvt), vtd_supported, the product texts, the framework part.
    std::string xml = out.toXML();
    EXPECT_LT(xml.find("sdk_version"), xml.find("vtd_supported"));
    EXPECT_LT(xml.find("vtd_supported"), xml.find("vt_product_name"));
    EXPECT_LT(xml.find("vt_product_version"), xml.find("vt_layer_type"));
}

TEST(HNRVtInfoTest, MissingRequiredValuesFailTheRead)
{
    const std::string full = "<sdk_version>1</sdk_version><vt_product_name>n</vt_product_name>"
                             "<vt_product_version>v</vt_product_version>";
    HNRVtInfo info;
    EXPECT_EQ(0, HNRVtInfo::Reader()(parsedMessage("<i>" + full + kInfoBase + "</i>"), info));
    EXPECT_EQ(-1, HNRVtInfo::Reader()(parsedMessage(std::string("<i><vt_product_name>n</vt_product_name>"
                                                                "<vt_product_version>v</vt_product_version>") +
                                                    kInfoBase + "</i>"),
                                      info));
    EXPECT_EQ(-1, HNRVtInfo::Reader()(parsedMessage(std::string("<i><sdk_version>1</sdk_version>"
                                                                "<vt_product_version>v</vt_product_version>") +
                                                    kInfoBase + "</i>"),
                                      info));
    EXPECT_EQ(-1, HNRVtInfo::Reader()(parsedMessage("<i>" + full + "</i>"), info)); // framework part
    EXPECT_EQ(-1, HNRVtInfo::Reader()(parsedMessage("<i>" + full + "<sdk_version>x</sdk_version></i>"), info));
}

// ---- HNRVtSettings ----

TEST(HNRVtInfoTest, SettingsWithoutRowsLeaveTheTableUnspecified)
{
    HNRVtSettings s;
    s.setGuestOSMemory(HNRGuestOSMemoryList(1));
    ASSERT_EQ(0, HNRVtSettings::Reader()(parsedMessage(std::string("<s><vnc_port>5901</vnc_port>") + kSettingsBase +
                                                       "</s>"),
                                         s));
    EXPECT_FALSE(s.getGuestOSMemory().isSpecified());
    EXPECT_EQ(5901, s.getVNCPort().get());
    EXPECT_FALSE(s.getPSPort().isSpecified());
    EXPECT_FALSE(s.getDefaultVMFolder().isSpecified());

    // Unspecified values and an unspecified table write nothing.
    HNKMessageIterator out("s");
    ASSERT_EQ(0, out.putObject(s, HNRVtSettings::Writer()));
    EXPECT_FALSE(out.hasChild("vm_memory"));
    EXPECT_FALSE(out.hasChild("ps_port"));
    EXPECT_TRUE(out.hasChild("vnc_port"));
}

TEST(HNRVtInfoTest, BadRowIsNotAnErrorButLeavesTheTableUnspecified)
{
    HNRVtSettings s;
    std::string body = std::string("<vm_memory>") + kRow + "</vm_memory><vm_memory><guest_os_name>x</guest_os_name>"
                       "</vm_memory>" + kSettingsBase;
    EXPECT_EQ(0, HNRVtSettings::Reader()(parsedMessage("<s>" + body + "</s>"), s));
    EXPECT_FALSE(s.getGuestOSMemory().isSpecified());
}

TEST(HNRVtInfoTest, SettingsResultIsTheFrameworkPartsStatus)
{
    HNRVtSettings s;
    EXPECT_EQ(-1, HNRVtSettings::Reader()(parsedMessage("<s><vnc_port>1</vnc_port></s>"), s));
    EXPECT_EQ(1, s.getVNCPort().get()); // read before the framework part failed
}

TEST(HNRVtInfoTest, SpecifiedEmptyTableWritesNoRowsAndReadsBackUnspecified)
{
    HNRVtSettings s;
    s.setGuestOSMemory(HNRGuestOSMemoryList());
    HNKMessageIterator out("s");
    ASSERT_EQ(0, out.putObject(s, HNKWriterDerived<HNKVtSettings>()));
    EXPECT_FALSE(out.hasChild("vm_memory"));
    HNRVtSettings back;
    ASSERT_EQ(0, HNRVtSettings::Reader()(parsedMessage(out.toXML()), back));
    EXPECT_FALSE(back.getGuestOSMemory().isSpecified());
}

// ---- HNRConsoleInfo ----

TEST(HNRVtInfoTest, ConsoleInfoWritesAndReadsItsThreeValuesInOrder)
{
    HNRConsoleInfo c;
    c.setScreenWidth(1920);
    c.setScreenHeight(1080);
    c.setScreenDepth(32);
    HNKMessageIterator out("console");
    ASSERT_EQ(0, out.putObject(c, HNRConsoleInfo::Writer()));
    EXPECT_EQ("<console><screen_width>1920</screen_width><screen_height>1080</screen_height>"
              "<screen_depth>32</screen_depth></console>",
              out.toXML());
    HNRConsoleInfo back;
    ASSERT_EQ(0, HNRConsoleInfo::Reader()(parsedMessage(out.toXML()), back));
    EXPECT_EQ(1920, back.getScreenWidth());
    EXPECT_EQ(1080, back.getScreenHeight());
    EXPECT_EQ(32, back.getScreenDepth());
    EXPECT_EQ(-1, HNRConsoleInfo::Reader()(
                      parsedMessage("<c><screen_width>1</screen_width><screen_height>2</screen_height></c>"), back));
}

// ---- Registration ----

TEST(HNRVtInfoTest, FactoriesRegisterUnderTheirTypeNames)
{
    typedef HNKDerivedParserFactory<HNKVtInfo> InfoFactory;
    typedef HNKDerivedParserFactory<HNKVtSettings> SettingsFactory;
    typedef HNKDerivedParserFactory<HNRGuestOSMemoryRequirements> RowFactory;
    EXPECT_EQ(&factoryHNRVtInfo, InfoFactory::factories().at(kTypes + ":vt_infoType"));
    EXPECT_EQ(&factoryHNRVtSettings, SettingsFactory::factories().at(kTypes + ":vt_settingsType"));
    EXPECT_EQ(&factoryHNRGuestOSMemory, RowFactory::factories().at(kTypes + ":guest_os_memory"));
    EXPECT_EQ(nullptr, InfoFactory::defaultFactory());
    EXPECT_EQ(nullptr, SettingsFactory::defaultFactory());
    EXPECT_EQ(&factoryHNRGuestOSMemory, RowFactory::defaultFactory());
}

} // namespace
