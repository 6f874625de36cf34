// Every message the writers produce validates against the schema: every
// record type, every device class, each minimal (nothing optional set) and
// full (every field set).
#include "HNRFunctionality/model/MessageRecords.h"
#include "schema/SchemaTestSupport.h"

#include "HNKAuthName.h"
#include "HNKDSLocation.h"
#include "HNKEID.h"
#include "HNKExcludeList.h"
#include "HNKGUID.h"
#include "HNKIPAddress.h"

#include <gtest/gtest.h>

#include <string>

using namespace HNR;

namespace {

template <class Base>
std::string written(const boost::shared_ptr<Base>& record, const char* root = "message")
{
    HNKMessageIterator out(root);
    EXPECT_EQ(0, out.putObject(record, HNKWriterDerived<Base>()));
    return out.toXML(true);
}

// Valid, and it reads back through the registries.
template <class Base>
void expectValid(const boost::shared_ptr<Base>& record, const std::string& what)
{
    SCOPED_TRACE(what);
    std::string text = written(record);
    EXPECT_EQ("", schemaProblems(text)) << text;
    HNKMessageIterator in;
    ASSERT_EQ(0, in.fromXML(text));
    hnr_test::AnyRecord again;
    EXPECT_EQ(0, hnr_test::readAnyRecord(in, again)) << text;
}

// Restore options have no factory: their writer stamps the backup type.
void expectValidRestore(const HNRRestoreOptions& options, const std::string& what)
{
    SCOPED_TRACE(what);
    HNKMessageIterator out("message");
    ASSERT_EQ(0, out.putObject(options, HNRRestoreOptions::Writer()));
    std::string text = out.toXML(true);
    EXPECT_EQ("", schemaProblems(text)) << text;
    HNKMessageIterator in;
    ASSERT_EQ(0, in.fromXML(text));
    hnr_test::AnyRecord again;
    EXPECT_EQ(0, hnr_test::readAnyRecord(in, again)) << text;
}

void fillDevice(HNRVMDevice& d, int i)
{
    d.connected.set(true);
    d.enabled.set(false);
    d.emulationType = i;
    d.remote.set(true);
    d.systemName.set("/dev/dev" + std::to_string(i));
    d.friendlyName.set("Device <" + std::to_string(i) + "> & co");
    d.description.set("");
    d.summaryInfo = "summary";
    d.bootable = true;
    d.bootInUse.set(true);
    d.bootSequenceIndex.set(-3);
    d.deviceIndex.set(2147483647);
    d.userName.set(std::string("user\0\xff", 6));
    d.password.set("pw");
}

std::vector<boost::shared_ptr<HNRVMDevice>> everyDevice(bool full)
{
    std::vector<boost::shared_ptr<HNRVMDevice>> devices;
    devices.emplace_back(new HNRVMDevice);
    auto* floppy = new HNRVMFloppyDiskDevice;
    devices.emplace_back(floppy);
    auto* cd = new HNRVMOpticalDiskDevice;
    devices.emplace_back(cd);
    auto* hdd = new HNRVMHardDiskDevice;
    devices.emplace_back(hdd);
    devices.emplace_back(new HNRVMSCSIDevice);
    devices.emplace_back(new HNRVMPCIDevice);
    auto* serial = new HNRVMSerialPortDevice;
    devices.emplace_back(serial);
    devices.emplace_back(new HNRVMParallelPortDevice);
    auto* net = new HNRVMNetworkDevice;
    devices.emplace_back(net);
    auto* sound = new HNRVMSoundDevice;
    devices.emplace_back(sound);
    auto* usb = new HNRVMUSBDevice;
    devices.emplace_back(usb);
    if (!full)
        return devices;
    for (size_t i = 0; i < devices.size(); ++i)
        fillDevice(*devices[i], static_cast<int>(i));
    floppy->createImage.set(true);
    cd->interfaceType.set(1);
    cd->stackIndex.set(2);
    cd->passthrough.set(false);
    hdd->interfaceType.set(2);
    hdd->stackIndex.set(0);
    hdd->passthrough.set(true);
    hdd->diskType.set(1);
    hdd->splitted.set(false);
    hdd->size.set(65536);
    hdd->sizeOnDisk.set(-2147483647 - 1);
    hdd->createImage.set(false);
    hdd->valid.set(true);
    serial->socketMode.set(1);
    net->boundAdapterName.set("eth0");
    net->boundAdapterIndex.set(0);
    net->configuredWithDhcp.set(true);
    net->defaultGateway.set("10.0.0.254");
    net->virtualNetworkId.set("Bridged");
    net->macAddress.set("00:1C:42:AA:BB:CC");
    HNKIPAddress ip;
    ip.setAddress("10.0.0.5");
    ip.setPrefixLength(24);
    net->ipAddresses.set({ip, ip});
    net->dnsServers.set({"10.0.0.1", "10.0.0.2"});
    net->searchDomains.set({"example.test"});
    sound->outputDevice.set("default");
    sound->mixerDevice.set("Master");
    usb->autoConnectDevices.set(2);
    return devices;
}

boost::shared_ptr<HNREnvConfig> fullConfig()
{
    boost::shared_ptr<HNREnvConfig> c(new HNREnvConfig(static_cast<const HNKMessageIterator*>(nullptr)));
    HNKOptionalProperty<std::string> name;
    name.set("Build Box");
    c->setName(name);
    c->setDisabled(false);
    c->setCPUHvt(true);
    c->setVtdSupported(false);
    c->setPsPort(64000);
    c->setScreenWidth(1920);
    c->setScreenHeight(1080);
    c->setScreenDepth(32);
    c->setToolsAutoUpdateEnabled(true);
    c->setUseDefaultAnswers(false);
    c->setUserSharedFoldersEnabled(true);
    c->setOfflineManagementEnabled(true);
    HNKOptionalProperty<std::set<std::string>> services;
    services.set({"sshd", "backup-agent"});
    c->setOfflineServices(services);
    c->setCPUCount(4);
    c->setMemorySize(4096);
    c->setVideoMemorySize(64);
    c->setCPUMode(1);
    c->setCPUUnits(1000);
    c->setCPULimit(80);
    c->setCPUAccelLevel(2);
    c->setAutoStart(1);
    c->setAutoStartDelay(30);
    c->setStartLoginMode(0);
    c->setStartUserLogin("builder");
    c->setStartUserPassword("secret");
    c->setAutoStop(2);
    c->setWindowMode(1);
    c->setLastModifiedDate("2024-11-20 23:12:02");
    c->setLastModifierName("Ada");
    c->setGuestSharingEnabled(true);
    c->setGuestSharingAutoMount(false);
    c->setHostSharingEnabled(true);
    c->setHostSharingLocal(true);
    c->setHostSharingGlobal(false);
    c->setDiskCacheWriteBack(true);
    c->setCloseAppOnShutdown(false);
    c->setSystemFlags("vm.flags=3");
    c->setForegroundPriority(1);
    c->setBackgroundPriority(2);
    c->setIoPriority(4);
    c->setServerHostName("build-01");
    c->setHomePath("/var/vms/Build Box.tvm");
    c->setIcon("win.png");
    c->setShowTaskBar(true);
    c->setRelocateTaskBar(false);
    c->setExcludeDock(false);
    c->setMultiDisplay(true);
    c->setTemplate(false);
    c->setAdditionalScreenResolutionsEnabled(true);
    c->setOSScreenResolutionInFullScreenModeEnabled(false);
    c->setAppInDockMode(1);
    c->setDockIconType(2);
    c->setVNCMode(1);
    c->setVNCPort(5901);
    c->setVNCNetworkInterface("eth0");
    c->setVNCPassword("vnc");
    HNKOptionalProperty<HNRVMDeviceList> devices;
    std::vector<boost::shared_ptr<HNRVMDevice>> all = everyDevice(true);
    std::vector<boost::shared_ptr<HNRVMDevice>> bare = everyDevice(false);
    all.insert(all.end(), bare.begin(), bare.end());
    devices.set(HNRVMDeviceList(all.begin(), all.end()));
    c->setDevices(devices);
    c->setOriginSample("sample");
    c->setToolsStatus(3);
    c->setVNCStarted(false);
    c->setAccessForOthers(1);
    return c;
}

TEST(SchemaWriterAgreementTest, VMConfigurationsAndEnvironments)
{
    expectValid(boost::shared_ptr<HNKEnvConfig>(new HNREnvConfig(static_cast<const HNKMessageIterator*>(nullptr))),
                "empty configuration");
    boost::shared_ptr<HNREnvConfig> full = fullConfig();
    expectValid(boost::shared_ptr<HNKEnvConfig>(full), "full configuration");
    // Every setting present exactly once in the output.
    EXPECT_EQ(std::string::npos, written(boost::shared_ptr<HNKEnvConfig>(full)).find("<message/>"));

    boost::shared_ptr<HNKEnv> env(new HNREnv(HNKEID(HNKGUID(1, 2)), boost::shared_ptr<HNREnvConfig>()));
    expectValid(env, "environment without configuration");
    expectValid(boost::shared_ptr<HNKEnv>(new HNREnv(HNKEID(HNKGUID(-1, 7)), full)), "environment");
}

TEST(SchemaWriterAgreementTest, EveryVMDeviceClassMinimalAndFull)
{
    for (bool full : {false, true}) {
        for (const boost::shared_ptr<HNRVMDevice>& d : everyDevice(full))
            expectValid(d, std::string(full ? "full " : "minimal ") + typeid(*d).name());
    }
}

template <class Device>
void hostDevice(bool full)
{
    boost::shared_ptr<Device> d(new Device);
    if (full) {
        d->setName("Disk 0");
        d->setDescription("SSD & co");
        d->setSysName("/dev/sda");
    }
    expectValid(boost::shared_ptr<HNKCommonDevice>(d), typeid(Device).name());
}

TEST(SchemaWriterAgreementTest, EveryHostDeviceClassMinimalAndFull)
{
    for (bool full : {false, true}) {
        hostDevice<HNRCommonDevice>(full);
        hostDevice<HNRSerialPortDevice>(full);
        hostDevice<HNRParallelPortDevice>(full);
        hostDevice<HNRHardDiskDevice>(full);
        hostDevice<HNROpticalDiskDevice>(full);
        hostDevice<HNRFloppyDiskDevice>(full);
        hostDevice<HNRPrinterDevice>(full);
        hostDevice<HNRSoundOutputDevice>(full);
        hostDevice<HNRSoundMixerDevice>(full);
    }
}

TEST(SchemaWriterAgreementTest, NetworkAdaptersAndService)
{
    expectValid(boost::shared_ptr<HNKNetDevice>(new HNRVirtualNetNIC), "minimal virtual adapter");
    expectValid(boost::shared_ptr<HNKNetDevice>(new HNRRealNetNIC), "minimal real adapter");
    boost::shared_ptr<HNRVirtualNetNIC> v(new HNRVirtualNetNIC);
    v->setName("vnic0");
    v->setMacAddress("00:1C:42:7E:0A:13");
    v->setEnabled(true);
    v->setIndex(3);
    v->setFriendlyName("Host-Only");
    v->setUUID(HNKGUID(0x3f2504e04f8911d3LL, -1));
    v->setDHCPStartIP("10.37.129.1");
    v->setDHCPEndIP("10.37.129.254");
    v->setDHCPMask("255.255.255.0");
    expectValid(boost::shared_ptr<HNKNetDevice>(v), "full virtual adapter");
    boost::shared_ptr<HNRRealNetNIC> r(new HNRRealNetNIC);
    r->setName("enp3s0");
    r->setMacAddress("A4:BB:6D:12:90:EF");
    r->setFriendlyName("Intel");
    r->setIndex(-2);
    expectValid(boost::shared_ptr<HNKNetDevice>(r), "full real adapter");
    expectValid(boost::shared_ptr<HNRNetworkServiceInfo>(new HNRNetworkServiceInfo), "service");
    boost::shared_ptr<HNRNetworkServiceInfo> s(new HNRNetworkServiceInfo);
    s->setState(2);
    expectValid(s, "service with state");
}

HNRGuestOSMemoryRequirements row(const std::string& name)
{
    HNRGuestOSMemoryRequirements r;
    r.setGuestOSPlatform("linux");
    r.setGuestOSName(name);
    r.setOptimalVMMemorySize(2048);
    r.setMinRecommendedVMMemorySize(512);
    r.setMaxRecommendedVMMemorySize(8192);
    r.setDefaultVideoMemorySize(32);
    return r;
}

TEST(SchemaWriterAgreementTest, VirtualizationInfoSettingsAndMemory)
{
    expectValid(boost::shared_ptr<HNKVtInfo>(new HNRVtInfo), "minimal info");
    boost::shared_ptr<HNRVtInfo> info(new HNRVtInfo);
    info->setLayerType("hypervisor");
    info->setMaxRunningVMs(64);
    info->setSDKVersion(40012);
    info->setCPUHvt("VT-x");
    info->getVTdSupported().set(true);
    info->setProductName("tessaline");
    info->setProductVersion("4.0.0");
    expectValid(boost::shared_ptr<HNKVtInfo>(info), "full info");

    expectValid(boost::shared_ptr<HNKVtSettings>(new HNRVtSettings), "minimal settings");
    boost::shared_ptr<HNRVtSettings> s(new HNRVtSettings);
    s->setRevision(17);
    s->setServerName("rack4");
    s->setDefaultVMFolder("/var/lib/vms");
    s->setDefaultUserVMFolder("~/vms");
    s->setVMDirUUID("6f1c2b9e");
    s->setUseManagementConsole(true);
    s->setCanChangeServerSettings(false);
    s->setAutoAdjustReservedVMMemorySize(true);
    s->setReservedVMMemorySize(12288);
    s->setMinVMMemorySize(4);
    s->setMaxVMMemorySize(65536);
    s->setMinReservedMemoryLimit(256);
    s->setMaxReservedMemoryLimit(15360);
    s->setVNCPort(5900);
    s->setPSPort(64000);
    s->setVNCNIC("eth0");
    s->setGuestOSMemory({row("Debian 12"), row("Windows")});
    expectValid(boost::shared_ptr<HNKVtSettings>(s), "full settings");
    boost::shared_ptr<HNRVtSettings> noRows(new HNRVtSettings);
    noRows->setGuestOSMemory({});
    expectValid(boost::shared_ptr<HNKVtSettings>(noRows), "settings with an empty table");

    expectValid(boost::shared_ptr<HNRGuestOSMemoryRequirements>(new HNRGuestOSMemoryRequirements), "minimal row");
    expectValid(boost::shared_ptr<HNRGuestOSMemoryRequirements>(new HNRGuestOSMemoryRequirements(row("x"))),
                "full row");
}

TEST(SchemaWriterAgreementTest, CloneMigrateBackupAndRestoreOptions)
{
    expectValid(boost::shared_ptr<HNKMigratorCloneOptions>(new HNRMigratorCloneOptions), "minimal clone");
    boost::shared_ptr<HNRMigratorCloneOptions> clone(new HNRMigratorCloneOptions);
    clone->setCloneName("Build Box (clone)");
    clone->setConfiguration(fullConfig());
    clone->setLinkedClone(true);
    clone->setTargetFolder("/var/vms/clones");
    clone->setCopyMode(1);
    expectValid(boost::shared_ptr<HNKMigratorCloneOptions>(clone), "full clone");
    boost::shared_ptr<HNRMigratorCloneOptions> unlinked(new HNRMigratorCloneOptions);
    unlinked->setLinkedClone(false);
    expectValid(boost::shared_ptr<HNKMigratorCloneOptions>(unlinked), "unlinked clone");

    expectValid(boost::shared_ptr<HNKV2VMigrateOptions>(new HNRV2VMigrateOptions), "minimal migrate");
    boost::shared_ptr<HNRV2VMigrateOptions> migrate(new HNRV2VMigrateOptions);
    migrate->setBandwidthLimit(125000);
    migrate->setTargetPath("/srv/vms");
    migrate->setTargetHost("node7");
    migrate->setOperationFlags(5);
    migrate->setSourceHost("node2");
    migrate->setMode(1);
    expectValid(boost::shared_ptr<HNKV2VMigrateOptions>(migrate), "full migrate");

    expectValid(boost::shared_ptr<HNKBackupOptions>(new HNRBackupOptions), "minimal backup");
    for (bool restore : {false, true}) {
        boost::shared_ptr<HNRBackupOptions> b(restore ? new HNRRestoreOptions : new HNRBackupOptions);
        if (restore)
            expectValidRestore(static_cast<const HNRRestoreOptions&>(*b), "minimal restore");
        b->setTargetPath("\\\\backup01\\vms");
        b->setTargetHost("backup01");
        b->setOperationFlags(3);
        b->setDescription("Nightly");
        b->setArchiveName("web01.tar");
        b->setDisks({"hdd0", "hdd1"});
        HNKExcludeList exclude;
        exclude.addPattern("*.tmp");
        b->setExcludeList(exclude);
        HNKAuthName auth;
        auth.setUser("svc");
        auth.setDomain("EXAMPLE");
        HNKDSLocation location;
        location.setPath("smb://backup01/vms");
        location.setAuthName(auth);
        b->setLocation(location);
        if (restore)
            expectValidRestore(static_cast<const HNRRestoreOptions&>(*b), "full restore");
        else
            expectValid(boost::shared_ptr<HNKBackupOptions>(b), "full backup");
    }
}

} // namespace
