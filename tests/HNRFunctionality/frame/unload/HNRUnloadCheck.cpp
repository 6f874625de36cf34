// Loading the module registers its VM record types and the "tessaline"
// environment factory; unloading it leaves none of them behind, and loading
// it again registers them again. This program links only the framework.
#include "HNKDerivedParserFactory.h"
#include "HNKEnv.h"
#include "HNKEnvConfig.h"
#include "HNKEnvFactory.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <string>

namespace {

const std::string kTypes = "http://www.tessaline.org/webservices/hnr/4.0.0/hnrtypes";

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

} // namespace
