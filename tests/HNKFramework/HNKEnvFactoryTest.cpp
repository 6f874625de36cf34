#include "HNKEnvFactory.h"

#include "HNKEnv.h"
#include "HNKEnvConfig.h"
#include "HNKEnvCoreBasic.h"
#include "HNKErrorMessage.h"
#include "HNKSerialization.h"
#include "HNKVEnvConfig.h"
#include "limited_length_string.h"

#include <gtest/gtest.h>

#include <boost/make_shared.hpp>

#include <typeinfo>

namespace {

typedef limited_length_string<16> Key;

TEST(LimitedLengthStringTest, NullKeysAreEqualAndBelowAnyNonEmptyKey)
{
    Key a(static_cast<const char*>(nullptr)), b(static_cast<const char*>(nullptr));
    EXPECT_FALSE(a.isSpecified());
    EXPECT_EQ(0, a.compare(b));
    EXPECT_EQ(-1, a.compare(Key("x")));
    EXPECT_EQ(1, Key("x").compare(a));
    EXPECT_TRUE(a < Key("tessaline"));
    EXPECT_FALSE(Key("tessaline") < a);
    EXPECT_EQ(0, Key().compare(a));
}

TEST(LimitedLengthStringTest, EmptyStringMarkedSpecifiedComparesAboveUnspecified)
{
    Key empty("");
    EXPECT_TRUE(empty.isSpecified());
    Key unspecified;
    EXPECT_EQ(1, empty.compare(unspecified));
    EXPECT_EQ(-1, unspecified.compare(empty));
    empty.specify(false);
    EXPECT_FALSE(empty.isSpecified());
    EXPECT_EQ(0, empty.compare(unspecified));
    unspecified.specify(true);
    EXPECT_TRUE(unspecified.isSpecified());
    EXPECT_EQ(-1, unspecified.compare(Key("a"))); // "" < "a" byte-wise
    Key value("abc");
    value.specify(false); // a non-empty value stays specified
    EXPECT_TRUE(value.isSpecified());
}

TEST(LimitedLengthStringTest, HoldsFifteenCharactersAndAssertsOnLonger)
{
    Key fifteen("123456789012345");
    EXPECT_STREQ("123456789012345", fifteen.c_str());
    EXPECT_THROW(Key("1234567890123456"), HNKAssertionFailure);
    EXPECT_EQ(-1, Key("abc").compare(Key("abd")));
    EXPECT_EQ(1, Key("b").compare(Key("abc")));
    EXPECT_EQ(0, Key(std::string("tessaline")).compare(Key("tessaline")));
}

struct EnvA : HNKEnv {
    EnvA() {}
    explicit EnvA(boost::shared_ptr<HNKEnvCoreBasic> core) : HNKEnv(core) {}
};
struct EnvB : HNKEnv {
    EnvB() {}
    explicit EnvB(boost::shared_ptr<HNKEnvCoreBasic> core) : HNKEnv(core) {}
};

TEST(HNKEnvFactoryTest, SecondRegistrationReplacesAndUnregisterRemovesTheKey)
{
    HNKEnvFactory* f = HNKEnvFactory::getInstance();
    ASSERT_EQ(f, HNKEnvFactory::getInstance());
    const Key key("test-env");
    f->registerEnv(key, boost::make_shared<HNKEnvChildFactoryT<EnvA, HNKVEnvConfig>>());
    f->registerEnv(key, boost::make_shared<HNKEnvChildFactoryT<EnvB, HNKVEnvConfig>>());
    boost::shared_ptr<HNKEnvChildFactory> child = f->getChildFactory(key);
    ASSERT_TRUE(child);
    boost::shared_ptr<HNKEnv> env = child->createEnv();
    EXPECT_EQ(typeid(EnvB), typeid(*env));
    auto core = boost::make_shared<HNKEnvCoreBasic>(HNKEID(HNKGUID(3, 4)), "test-env");
    EXPECT_EQ(HNKEID(HNKGUID(3, 4)), child->createEnv(core)->getEID());
    boost::shared_ptr<HNKVEnvConfig> config = child->createVEnvConfig(core);
    EXPECT_EQ(core, config->getCore());
    EXPECT_EQ(config.get(), config->shared_from_this().get());
    f->unregisterEnv(key);
    EXPECT_FALSE(f->getChildFactory(key));
    f->unregisterEnv(key); // absent: no error
    EXPECT_THROW(f->registerEnv(key, boost::shared_ptr<HNKEnvChildFactory>()), HNKAssertionFailure);
    EXPECT_FALSE(f->getChildFactory(key));
}

TEST(HNKEnvTest, RoundTripWithItsConfigurationThroughTheRegistries)
{
    auto config = boost::make_shared<HNKVEnvConfig>();
    HNKOptionalProperty<std::string> name;
    name = "build host";
    config->setName(name);
    config->setScreenWidth(1920);
    config->setCPUHvt(true);
    HNKEnv env(HNKEID(HNKGUID(7, 9)), config);
    HNKMessageIterator out("environment");
    ASSERT_EQ(0, out.putObject(env, HNKEnv::Writer()));
    EXPECT_EQ("http://www.tessaline.org/webservices/hnk/4.0.0/hnktypes:env_baseType", out.getTypeName());
    HNKMessageIterator in;
    ASSERT_EQ(0, in.fromXML(out.toXML())) << getErrorMessage();
    HNKEnv back;
    ASSERT_EQ(0, HNKEnv::Reader()(in, back));
    EXPECT_EQ(0, env.compare(back));
    ASSERT_TRUE(back.getConfig());
    EXPECT_EQ(typeid(HNKVEnvConfig), typeid(*back.getConfig()));
    int width = 0;
    EXPECT_EQ(0, back.getConfig()->getScreenWidth(width));
    EXPECT_EQ(1920, width);
    config->setScreenWidth(1024);
    EXPECT_EQ(-1, env.compare(back)); // screen width 1024 < 1920
    HNKEnv noEid;
    ASSERT_EQ(0, in.fromXML("<e><eid>not-a-guid</eid></e>"));
    EXPECT_EQ(-1, HNKEnv::Reader()(in, noEid));
}

TEST(HNKEnvConfigTest, BaseCompareTreatsAbsentSettingsAsEqual)
{
    HNKEnvConfig a, b;
    EXPECT_EQ(0, a.compare(b));
    b.setPsPort(5000);
    EXPECT_EQ(-1, a.compare(b));
    a.setPsPort(6000);
    EXPECT_EQ(1, a.compare(b));
    bool disabled = true;
    EXPECT_EQ(-1, a.getDisabled(disabled));
    a.setDisabled(false);
    EXPECT_EQ(0, a.getDisabled(disabled));
    EXPECT_FALSE(disabled);
    HNKOptionalProperty<std::string> name;
    EXPECT_EQ(-1, HNKEnvConfig().getName(name)); // no tree
    EXPECT_EQ(0, a.getName(name));
    EXPECT_FALSE(name.isSpecified());
}

} // namespace
