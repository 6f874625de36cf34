// Every factory the module registers while it loads, row by row: found in
// the registry of its base under "namespace URI:type name", registered for
// its class, and the registry's default exactly when the row says so.
#include "frame/HNRConstants.h"
#include "frame/HNREnvFactory.h"
#include "model/HNRBackupOptions.h"
#include "model/HNRCommonDevice.h"
#include "model/HNREnvConfig.h"
#include "model/HNRMigratorCloneOptions.h"
#include "model/HNRNetNIC.h"
#include "model/HNRVMDevice.h"
#include "model/HNRVtInfo.h"

#include "HNKDerivedParserFactory.h"
#include "HNKEnv.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string>
#include <typeinfo>
#include <vector>

using namespace HNR;

namespace {

struct Row {
    std::string object;
    const void* factory;
    std::string key;
    bool isDefault;
    std::string registry;                                   // name of the base, for counting
    std::function<const void*(const std::string&)> byKey;   // registry lookup by XML type key
    std::function<const void*()> byClass;                   // registry lookup by the class
    std::function<const void*()> defaultFactory;
    std::function<std::string()> factoryKey;                // the key the factory built
};

template <class Derived, class Base, class Factory>
Row row(const char* object, const Factory& factory, const char* ns, const char* type, bool isDefault,
        const char* registry)
{
    typedef HNKDerivedParserFactory<Base> Registry;
    Row r;
    r.object = object;
    r.factory = static_cast<const Registry*>(&factory);
    r.key = std::string(ns) + ":" + type;
    r.isDefault = isDefault;
    r.registry = registry;
    r.byKey = [](const std::string& key) -> const void* {
        auto found = Registry::factories().find(key);
        return found == Registry::factories().end() ? nullptr : found->second;
    };
    r.byClass = []() -> const void* {
        auto found = Registry::factoriesByType().find(typeid(Derived).name());
        return found == Registry::factoriesByType().end() ? nullptr : found->second;
    };
    r.defaultFactory = []() -> const void* { return Registry::defaultFactory(); };
    const Factory* f = &factory;
    r.factoryKey = [f]() { return f->key(); };
    return r;
}

const char* const T = kTypesNamespace;
const char* const R = kRelocatorNamespace;
const char* const B = kBackupNamespace;

std::vector<Row> table()
{
    return {
        row<HNRCommonDevice, HNKCommonDevice>("factoryHNRCommonDevice", factoryHNRCommonDevice, T, "common_device", false, "HNKCommonDevice"),
        row<HNRSerialPortDevice, HNKCommonDevice>("factoryHNRSerialPortDevice", factoryHNRSerialPortDevice, T, "serial_port_device", false, "HNKCommonDevice"),
        row<HNRParallelPortDevice, HNKCommonDevice>("factoryHNRParallelPortDevice", factoryHNRParallelPortDevice, T, "parallel_port_device", false, "HNKCommonDevice"),
        row<HNRHardDiskDevice, HNKCommonDevice>("factoryHNRHardDiskDevice", factoryHNRHardDiskDevice, T, "hard_disk_device", false, "HNKCommonDevice"),
        row<HNROpticalDiskDevice, HNKCommonDevice>("factoryHNROpticalDiskDevice", factoryHNROpticalDiskDevice, T, "optical_disk_device", false, "HNKCommonDevice"),
        row<HNRFloppyDiskDevice, HNKCommonDevice>("factoryHNRFloppyDiskDevice", factoryHNRFloppyDiskDevice, T, "floppy_disk_device", false, "HNKCommonDevice"),
        row<HNRPrinterDevice, HNKCommonDevice>("factoryHNRPrinterDevice", factoryHNRPrinterDevice, T, "printer_device", false, "HNKCommonDevice"),
        row<HNRSoundOutputDevice, HNKCommonDevice>("factoryHNRSoundOutputDevice", factoryHNRSoundOutputDevice, T, "sound_output_device", false, "HNKCommonDevice"),
        row<HNRSoundMixerDevice, HNKCommonDevice>("factoryHNRSoundMixerDevice", factoryHNRSoundMixerDevice, T, "sound_mixer_device", false, "HNKCommonDevice"),
        row<HNRVMDevice, HNRVMDevice>("factoryHNRVMDevice", factoryHNRVMDevice, T, "vm_device", true, "HNRVMDevice"),
        row<HNRVMFloppyDiskDevice, HNRVMDevice>("factoryHNRVMFloppyDiskDevice", factoryHNRVMFloppyDiskDevice, T, "vm_floppy_disk_device", false, "HNRVMDevice"),
        row<HNRVMOpticalDiskDevice, HNRVMDevice>("factoryHNRVMOpticalDiskDevice", factoryHNRVMOpticalDiskDevice, T, "vm_optical_disk_device", false, "HNRVMDevice"),
        row<HNRVMHardDiskDevice, HNRVMDevice>("factoryHNRVMHardDiskDevice", factoryHNRVMHardDiskDevice, T, "vm_hard_disk_device", false, "HNRVMDevice"),
        row<HNRVMSCSIDevice, HNRVMDevice>("factoryHNRVMSCSIDevice", factoryHNRVMSCSIDevice, T, "vm_scsi_device", false, "HNRVMDevice"),
        row<HNRVMPCIDevice, HNRVMDevice>("factoryHNRVMPCIDevice", factoryHNRVMPCIDevice, T, "vm_pci_device", false, "HNRVMDevice"),
        row<HNRVMSerialPortDevice, HNRVMDevice>("factoryHNRVMSerialPortDevice", factoryHNRVMSerialPortDevice, T, "vm_serial_port_device", false, "HNRVMDevice"),
        row<HNRVMParallelPortDevice, HNRVMDevice>("factoryHNRVMParallelPortDevice", factoryHNRVMParallelPortDevice, T, "vm_parallel_port_device", false, "HNRVMDevice"),
        row<HNRVMNetworkDevice, HNRVMDevice>("factoryHNRVMNetworkDevice", factoryHNRVMNetworkDevice, T, "vm_network_device", false, "HNRVMDevice"),
        row<HNRVMSoundDevice, HNRVMDevice>("factoryHNRVMSoundDevice", factoryHNRVMSoundDevice, T, "vm_sound_device", false, "HNRVMDevice"),
        row<HNRVMUSBDevice, HNRVMDevice>("factoryHNRVMUSBDevice", factoryHNRVMUSBDevice, T, "vm_usb_device", false, "HNRVMDevice"),
        row<HNRGuestOSMemoryRequirements, HNRGuestOSMemoryRequirements>("factoryHNRGuestOSMemory", factoryHNRGuestOSMemory, T, "guest_os_memory", true, "HNRGuestOSMemoryRequirements"),
        row<HNRVtSettings, HNKVtSettings>("factoryHNRVtSettings", factoryHNRVtSettings, T, "vt_settingsType", false, "HNKVtSettings"),
        row<HNRVtInfo, HNKVtInfo>("factoryHNRVtInfo", factoryHNRVtInfo, T, "vt_infoType", false, "HNKVtInfo"),
        row<HNREnvConfig, HNKEnvConfig>("factoryHNREnvConfig", factoryHNREnvConfig, T, "venv_configType", false, "HNKEnvConfig"),
        row<HNREnv, HNKEnv>("factoryHNREnv", factoryHNREnv, T, "env", false, "HNKEnv"),
        row<HNRMigratorCloneOptions, HNKMigratorCloneOptions>("factoryHNRMigratorCloneOptions", factoryHNRMigratorCloneOptions, R, "clone_optionsType", false, "HNKMigratorCloneOptions"),
        row<HNRV2VMigrateOptions, HNKV2VMigrateOptions>("factoryHNRV2VMigrateOptions", factoryHNRV2VMigrateOptions, R, "migrate_optionsType", false, "HNKV2VMigrateOptions"),
        row<HNRVirtualNetNIC, HNKNetDevice>("factoryHNRVirtualNetNIC", factoryHNRVirtualNetNIC, T, "virtual_net_nic", false, "HNKNetDevice"),
        row<HNRRealNetNIC, HNKNetDevice>("factoryHNRRealNetNIC", factoryHNRRealNetNIC, T, "real_net_nic", false, "HNKNetDevice"),
        row<HNRNetworkServiceInfo, HNRNetworkServiceInfo>("factoryHNRNetworkServiceInfo", factoryHNRNetworkServiceInfo, T, "network_service_info", true, "HNRNetworkServiceInfo"),
        row<HNRBackupOptions, HNKBackupOptions>("factoryHNRBackupOptions", factoryHNRBackupOptions, B, "backup_optionsType", false, "HNKBackupOptions"),
    };
}

TEST(HNRFactoryTableTest, TheTableHasThirtyOneRows)
{
    EXPECT_EQ(31u, table().size());
}

TEST(HNRFactoryTableTest, EveryRowIsFoundUnderItsKeyInItsRegistryWithItsDefaultFlag)
{
    for (const Row& r : table()) {
        SCOPED_TRACE(r.object);
        EXPECT_EQ(r.key, r.factoryKey());
        EXPECT_EQ(r.factory, r.byKey(r.key));
        EXPECT_EQ(r.factory, r.byClass());
        if (r.isDefault) {
            EXPECT_EQ(r.factory, r.defaultFactory());
        } else {
            EXPECT_NE(r.factory, r.defaultFactory());
        }
    }
}

TEST(HNRFactoryTableTest, NoRegistryHoldsAModuleKeyOutsideTheTable)
{
    // Per registry: the module's keys (its three namespaces) are exactly the table's rows.
    std::map<std::string, size_t> rows;
    for (const Row& r : table())
        ++rows[r.registry];
    auto moduleKeys = [](const auto& factories) {
        size_t n = 0;
        for (const auto& entry : factories)
            if (entry.first.rfind(kTypesNamespace, 0) == 0 || entry.first.rfind(kRelocatorNamespace, 0) == 0 ||
                entry.first.rfind(kBackupNamespace, 0) == 0)
                ++n;
        return n;
    };
    EXPECT_EQ(rows["HNKCommonDevice"], moduleKeys(HNKDerivedParserFactory<HNKCommonDevice>::factories()));
    EXPECT_EQ(rows["HNRVMDevice"], moduleKeys(HNKDerivedParserFactory<HNRVMDevice>::factories()));
    EXPECT_EQ(rows["HNRGuestOSMemoryRequirements"],
              moduleKeys(HNKDerivedParserFactory<HNRGuestOSMemoryRequirements>::factories()));
    EXPECT_EQ(rows["HNKVtSettings"], moduleKeys(HNKDerivedParserFactory<HNKVtSettings>::factories()));
    EXPECT_EQ(rows["HNKVtInfo"], moduleKeys(HNKDerivedParserFactory<HNKVtInfo>::factories()));
    EXPECT_EQ(rows["HNKEnvConfig"], moduleKeys(HNKDerivedParserFactory<HNKEnvConfig>::factories()));
    EXPECT_EQ(rows["HNKEnv"], moduleKeys(HNKDerivedParserFactory<HNKEnv>::factories()));
    EXPECT_EQ(rows["HNKMigratorCloneOptions"], moduleKeys(HNKDerivedParserFactory<HNKMigratorCloneOptions>::factories()));
    EXPECT_EQ(rows["HNKV2VMigrateOptions"], moduleKeys(HNKDerivedParserFactory<HNKV2VMigrateOptions>::factories()));
    EXPECT_EQ(rows["HNKNetDevice"], moduleKeys(HNKDerivedParserFactory<HNKNetDevice>::factories()));
    EXPECT_EQ(rows["HNRNetworkServiceInfo"], moduleKeys(HNKDerivedParserFactory<HNRNetworkServiceInfo>::factories()));
    EXPECT_EQ(rows["HNKBackupOptions"], moduleKeys(HNKDerivedParserFactory<HNKBackupOptions>::factories()));
    EXPECT_EQ(12u, rows.size());
}

} // namespace
