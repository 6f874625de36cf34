#include "frame/HNREnvFactory.h"

#include "frame/HNRConstants.h"
#include "model/HNREnvConfig.h"

#include "HNKEnvConfig.h"
#include "HNKEnvCoreBasic.h"
#include "HNKEnvFactory.h"
#include "HNKErrorMessage.h"
#include "HNKFramework/XmlLintCheck.h"
#include "HNKSerialization.h"
#include "HNKVEnvConfig.h"

#include <gtest/gtest.h>

#include <boost/make_shared.hpp>

#include <typeinfo>

using namespace HNR;

namespace {

typedef HNKDerivedParserFactory<HNKEnv> EnvRegistry;

TEST(HNREnvFactoryTest, TessalineIsRegisteredAtLoadAndCreatesThePlatformObjects)
{
    EXPECT_STREQ("tessaline", HNREnv::type.c_str());
    EXPECT_TRUE(HNREnv::type.isSpecified());
    boost::shared_ptr<HNKEnvChildFactory> child = HNKEnvFactory::getInstance()->getChildFactory(HNREnv::type);
    ASSERT_TRUE(child);
    EXPECT_EQ(typeid(HNREnv), typeid(*child->createEnv()));
    auto core = boost::make_shared<HNKEnvCoreBasic>(HNKEID(HNKGUID(5, 6)), "tessaline");
    boost::shared_ptr<HNKEnv> env = child->createEnv(core);
    EXPECT_EQ(typeid(HNREnv), typeid(*env));
    EXPECT_EQ(core, env->getCore());
    EXPECT_EQ(HNKEID(HNKGUID(5, 6)), env->getEID());
    boost::shared_ptr<HNKVEnvConfig> config = child->createVEnvConfig(core);
    EXPECT_EQ(typeid(HNREnvConfig), typeid(*config));
    EXPECT_EQ(core, config->getCore());
    EXPECT_FALSE(config->hasMsg());
    // The record can hand out shared pointers to itself.
    boost::shared_ptr<HNKEnvConfig> self = config->shared_from_this();
    EXPECT_EQ(config.get(), self.get());
    EXPECT_EQ(2, config.use_count());
}

struct OtherEnv : HNKEnv {
    OtherEnv() {}
    explicit OtherEnv(boost::shared_ptr<HNKEnvCoreBasic> core) : HNKEnv(core) {}
};

TEST(HNREnvFactoryTest, ASecondFactoryReplacesTheFirstAndUnregisteringRemovesEither)
{
    HNKEnvFactory* f = HNKEnvFactory::getInstance();
    f->registerEnv(HNREnv::type, boost::make_shared<HNKEnvChildFactoryT<OtherEnv, HNKVEnvConfig>>());
    EXPECT_EQ(typeid(OtherEnv), typeid(*f->getChildFactory(HNREnv::type)->createEnv()));
    {
        // A second registration object: registers again, and removes the key
        // (whichever factory holds it) when it goes.
        HNREnvFactoryInternal again;
        EXPECT_EQ(typeid(HNREnv), typeid(*f->getChildFactory(HNREnv::type)->createEnv()));
    }
    EXPECT_FALSE(f->getChildFactory(HNREnv::type));
    f->registerEnv(HNREnv::type, boost::make_shared<HNKEnvChildFactoryT<OtherEnv, HNKVEnvConfig>>());
    f->unregisterEnv("tessaline");
    EXPECT_FALSE(f->getChildFactory(HNREnv::type));
    // Restore the library's registration for the other tests.
    static HNREnvFactoryInternal restore; // lives until exit, as the library's own does
    EXPECT_TRUE(f->getChildFactory(HNREnv::type));
}

TEST(HNREnvFactoryTest, TitleIsTheConfigurationNameOrEmpty)
{
    EXPECT_EQ("", HNREnv().getTitle()); // no configuration
    auto config = boost::make_shared<HNREnvConfig>(static_cast<const HNKMessageIterator*>(nullptr));
    HNREnv env(HNKEID(HNKGUID(1, 1)), config);
    EXPECT_EQ("", env.getTitle()); // no tree
    config->setMemorySize(512);
    EXPECT_EQ("", env.getTitle()); // no name
    HNKOptionalProperty<std::string> name;
    name = "Windows 11 build box";
    config->setName(name);
    EXPECT_EQ("Windows 11 build box", env.getTitle());
}

TEST(HNREnvFactoryTest, EnvIsWrittenAsTheFrameworkElementStampedEnvAndReadsBack)
{
    auto config = boost::make_shared<HNREnvConfig>(static_cast<const HNKMessageIterator*>(nullptr));
    config->setCPUCount(4);
    config->setMemorySize(4096);
    boost::shared_ptr<HNKEnv> env(new HNREnv(HNKEID(HNKGUID(0x1234, 0x5678)), config));
    HNKMessageIterator out("environment");
    ASSERT_EQ(0, out.putObject(env, HNKWriterDerived<HNKEnv>()));
    EXPECT_EQ(std::string(kTypesNamespace) + ":env", out.getTypeName());
    EXPECT_EQ("", xmllintProblems(out.toXML()));
    HNKMessageIterator config_at(out);
    ASSERT_EQ(0, config_at.descend("config"));
    EXPECT_EQ(std::string(kTypesNamespace) + ":venv_configType", config_at.getTypeName());

    HNKMessageIterator in;
    ASSERT_EQ(0, in.fromXML(out.toXML())) << getErrorMessage();
    boost::shared_ptr<HNKEnv> back;
    ASSERT_EQ(0, HNKReaderDerived<HNKEnv>(false)(in, back));
    ASSERT_EQ(typeid(HNREnv), typeid(*back));
    EXPECT_EQ(env->getEID(), back->getEID());
    ASSERT_EQ(typeid(HNREnvConfig), typeid(*back->getConfig()));
    const HNREnvConfig& backConfig = static_cast<const HNREnvConfig&>(*back->getConfig());
    int cpus = 0, memory = 0;
    EXPECT_EQ(0, backConfig.getCPUCount(cpus));
    EXPECT_EQ(0, backConfig.getMemorySize(memory));
    EXPECT_EQ(4, cpus);
    EXPECT_EQ(4096, memory);
    // Absent settings on both sides compare -1 on purpose, so this is not 0.
    EXPECT_EQ(-1, config->compare(backConfig));

    auto found = EnvRegistry::factories().find(std::string(kTypesNamespace) + ":env");
    ASSERT_NE(EnvRegistry::factories().end(), found);
    EXPECT_EQ(static_cast<EnvRegistry*>(&factoryHNREnv), found->second);
    EXPECT_STREQ("env", HNREnv::Writer::getStrTypeID());
    EXPECT_EQ(0u, HNREnv::Writer::getNSID());
}

} // namespace
