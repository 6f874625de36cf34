// Loading the module registers its VM record types and the "tessaline"
// environment factory; unloading it leaves none of them behind, and loading
// it again registers them again. This program links only the framework.
#include "HNKBackupOptions.h"
#include "HNKCommonDevice.h"
#include "HNKDerivedParserFactory.h"
#include "HNKEnv.h"
#include "HNKEnvConfig.h"
#include "HNKEnvFactory.h"
#include "HNKMigratorCloneOptions.h"
#include "HNKNetDevice.h"
#include "HNKV2VMigrateOptions.h"
#include "HNKVtInfo.h"
#include "HNKVtSettings.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <functional>
#include <string>
#include <vector>

namespace {

const std::string kTypes = "http://www.tessaline.org/webservices/hnr/4.0.0/hnrtypes";
const std::string kRelocator = "http://www.tessaline.org/webservices/hnr/4.0.0/hnrrelocator";
const std::string kBackup = "http://www.tessaline.org/webservices/hnr/4.0.0/hnrbackupm";

typedef HNKDerivedParserFactory<HNKEnvConfig> ConfigRegistry;
typedef HNKDerivedParserFactory<HNKEnv> EnvRegistry;

bool moduleMapped()
{
    void* h = dlopen(HNR_FUNCTIONALITY_LIB, RTLD_NOW | RTLD_NOLOAD);
    if (h)
        dlclose(h);
    return h != nullptr;
}

// Keys of this module in the registries the framework owns.
void expectModuleRegistered(bool registered)
{
    size_t n = registered ? 1u : 0u;
    EXPECT_EQ(n, ConfigRegistry::factories().count(kTypes + ":venv_configType"));
    EXPECT_EQ(n, EnvRegistry::factories().count(kTypes + ":env"));
    EXPECT_EQ(registered, HNKEnvFactory::getInstance()->getChildFactory("tessaline").get() != nullptr);
    // The framework's own entries stay whatever happens to the module.
    EXPECT_EQ(1u, ConfigRegistry::factories().count(
                      "http://www.tessaline.org/webservices/hnk/4.0.0/hnktypes:env_config_baseType"));
    EXPECT_EQ(registered ? 3u : 2u, ConfigRegistry::factoriesByType().size());
    EXPECT_EQ(registered ? 2u : 1u, EnvRegistry::factoriesByType().size());
}

TEST(HNRUnloadCheck, UnloadLeavesNoTypeKeyAndNoEnvFactoryAndLoadRegistersAgain)
{
    ASSERT_FALSE(moduleMapped());
    expectModuleRegistered(false);
    for (int round = 0; round < 2; ++round) {
        SCOPED_TRACE(round);
        void* h = dlopen(HNR_FUNCTIONALITY_LIB, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(nullptr, h) << dlerror();
        expectModuleRegistered(true);

        // The device registry is the module's own: ask the module itself.
        typedef size_t (*CountKey)(const char*);
        CountKey count = reinterpret_cast<CountKey>(dlsym(h, "hnrVMDeviceTypeKeyCount"));
        ASSERT_NE(nullptr, count) << dlerror();
        EXPECT_EQ(1u, count((kTypes + ":vm_device").c_str()));
        EXPECT_EQ(1u, count((kTypes + ":vm_usb_device").c_str()));
        EXPECT_EQ(0u, count((kTypes + ":vm_nothing").c_str()));

        ASSERT_EQ(0, dlclose(h)) << dlerror();
        EXPECT_FALSE(moduleMapped()) << "the module was not unloaded";
        expectModuleRegistered(false);
    }
}

// The rows of the module's factory table whose registries the framework
// owns, beyond the configuration and environment above: host devices,
// virtualization, network adapters and options. (The registries of the
// module's own bases go away with the module.)
struct FrameworkRow {
    std::string key;
    std::function<size_t(const std::string&)> count; // entries under the key
    std::function<size_t()> classes;                 // entries by class
};

template <class Base>
FrameworkRow frameworkRow(const std::string& ns, const char* type)
{
    typedef HNKDerivedParserFactory<Base> Registry;
    return FrameworkRow{ns + ":" + type, [](const std::string& key) { return Registry::factories().count(key); },
                        []() { return Registry::factoriesByType().size(); }};
}

std::vector<FrameworkRow> frameworkRows()
{
    return {
        frameworkRow<HNKCommonDevice>(kTypes, "common_device"),
        frameworkRow<HNKCommonDevice>(kTypes, "serial_port_device"),
        frameworkRow<HNKCommonDevice>(kTypes, "parallel_port_device"),
        frameworkRow<HNKCommonDevice>(kTypes, "hard_disk_device"),
        frameworkRow<HNKCommonDevice>(kTypes, "optical_disk_device"),
        frameworkRow<HNKCommonDevice>(kTypes, "floppy_disk_device"),
        frameworkRow<HNKCommonDevice>(kTypes, "printer_device"),
        frameworkRow<HNKCommonDevice>(kTypes, "sound_output_device"),
        frameworkRow<HNKCommonDevice>(kTypes, "sound_mixer_device"),
        frameworkRow<HNKVtSettings>(kTypes, "vt_settingsType"),
        frameworkRow<HNKVtInfo>(kTypes, "vt_infoType"),
        frameworkRow<HNKMigratorCloneOptions>(kRelocator, "clone_optionsType"),
        frameworkRow<HNKV2VMigrateOptions>(kRelocator, "migrate_optionsType"),
        frameworkRow<HNKNetDevice>(kTypes, "virtual_net_nic"),
        frameworkRow<HNKNetDevice>(kTypes, "real_net_nic"),
        frameworkRow<HNKBackupOptions>(kBackup, "backup_optionsType"),
    };
}

void expectRecordsRegistered(bool registered)
{
    for (const FrameworkRow& row : frameworkRows())
        EXPECT_EQ(registered ? 1u : 0u, row.count(row.key)) << row.key;
    // No class of the module stays behind either (the framework registers
    // none of its own in these registries).
    EXPECT_EQ(registered ? 9u : 0u, HNKDerivedParserFactory<HNKCommonDevice>::factoriesByType().size());
    EXPECT_EQ(registered ? 2u : 0u, HNKDerivedParserFactory<HNKNetDevice>::factoriesByType().size());
    if (!registered) {
        for (const FrameworkRow& row : frameworkRows())
            EXPECT_EQ(0u, row.classes()) << row.key;
    }
}

TEST(HNRUnloadCheck, RecordFactoriesInFrameworkRegistriesComeAndGoWithTheModule)
{
    ASSERT_FALSE(moduleMapped());
    expectRecordsRegistered(false);
    for (int round = 0; round < 2; ++round) {
        SCOPED_TRACE(round);
        void* h = dlopen(HNR_FUNCTIONALITY_LIB, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(nullptr, h) << dlerror();
        expectRecordsRegistered(true);
        ASSERT_EQ(0, dlclose(h)) << dlerror();
        EXPECT_FALSE(moduleMapped()) << "the module was not unloaded";
        expectRecordsRegistered(false);
    }
}

} // namespace
