// Setters never lose a value: a set on a configuration whose message holds
// the same element twice leaves exactly one element with the new value, and a
// value XML cannot carry is refused with the previous value left in place.
#include "model/HNREnvConfig.h"

#include "frame/HNRConstants.h"

#include "HNKElementDictionary.h"
#include "HNKErrorMessage.h"
#include "HNKSerialization.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

using namespace HNR;

namespace {

// A configuration read through the registry from `body` inside the root.
boost::shared_ptr<HNREnvConfig> configFrom(const std::string& body)
{
    HNKMessageIterator it;
    std::string text = std::string("<venv_config xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" xmlns:h=\"") +
                       kTypesNamespace + "\" xsi:type=\"h:venv_configType\">" + body + "</venv_config>";
    EXPECT_EQ(0, it.fromXML(text)) << getErrorMessage();
    boost::shared_ptr<HNKEnvConfig> base;
    EXPECT_EQ(0, HNKReaderDerived<HNKEnvConfig>(false)(it, base));
    return boost::dynamic_pointer_cast<HNREnvConfig>(base);
}

int count(const HNREnvConfig& c, const char* tag)
{
    HNKMessageIterator it(*c.getMsg());
    int n = 0;
    if (it.firstChild(tag) == 0)
        do
            ++n;
        while (it.nextSibling(tag) == 0);
    return n;
}

TEST(HNREnvConfigSetterTest, SetOverADuplicatedElementLeavesOneWithTheNewValue)
{
    boost::shared_ptr<HNREnvConfig> c = configFrom("<cpu_count>2</cpu_count><icon>a</icon><cpu_count>3</cpu_count>");
    ASSERT_TRUE(c);
    EXPECT_EQ(2, count(*c, "cpu_count"));
    EXPECT_EQ(0, c->setCPUCount(8));
    EXPECT_EQ(1, count(*c, "cpu_count"));
    int n = 0;
    EXPECT_EQ(0, c->getCPUCount(n));
    EXPECT_EQ(8, n);
    // The same for strings, bools and the framework's own settings.
    c = configFrom("<icon>a</icon><icon>b</icon><is_template>1</is_template><is_template>0</is_template>"
                   "<name>x</name><name>y</name><disabled>1</disabled><disabled>1</disabled>");
    ASSERT_TRUE(c);
    EXPECT_EQ(0, c->setIcon("c"));
    EXPECT_EQ(0, c->setTemplate(true));
    HNKOptionalProperty<std::string> name;
    name.set("z");
    EXPECT_EQ(0, c->setName(name));
    EXPECT_EQ(0, c->setDisabled(false));
    for (const char* tag : {"icon", "is_template", "name", "disabled"})
        EXPECT_EQ(1, count(*c, tag)) << tag;
    std::string s;
    bool b = false;
    EXPECT_EQ(0, c->getIcon(s));
    EXPECT_EQ("c", s);
    EXPECT_EQ(0, c->getTemplate(b));
    EXPECT_TRUE(b);
    EXPECT_EQ(0, c->getDisabled(b));
    EXPECT_FALSE(b);
    HNKOptionalProperty<std::string> back;
    EXPECT_EQ(0, c->getName(back));
    EXPECT_EQ("z", back.get());
    // An unspecified name removes every name element.
    c = configFrom("<name>x</name><name>y</name>");
    EXPECT_EQ(0, c->setName(HNKOptionalProperty<std::string>()));
    EXPECT_EQ(0, count(*c, "name"));
}

TEST(HNREnvConfigSetterTest, ListAndFlagSettersReplaceEveryDuplicate)
{
    const char* flag = HNKElementDictionary::findName(1647);
    const char* item = HNKElementDictionary::findName(1747);
    ASSERT_TRUE(flag && item);
    std::string services = std::string("<offline_management_list><") + item + ">a</" + item +
                           "></offline_management_list>";
    boost::shared_ptr<HNREnvConfig> c = configFrom(services + services + "<" + flag + ">1</" + flag + "><" + flag +
                                                   ">1</" + flag + "><device_list/><device_list/>");
    ASSERT_TRUE(c);
    EXPECT_EQ(0, c->setOfflineManagementEnabled(false));
    EXPECT_EQ(1, count(*c, flag));
    bool b = true;
    EXPECT_EQ(0, c->getOfflineManagementEnabled(b));
    EXPECT_FALSE(b);
    HNKOptionalProperty<std::set<std::string>> set;
    set.set({"x", "y"});
    EXPECT_EQ(0, c->setOfflineServices(set));
    EXPECT_EQ(1, count(*c, "offline_management_list"));
    HNKOptionalProperty<std::set<std::string>> setBack;
    EXPECT_EQ(0, c->getOfflineServices(setBack));
    EXPECT_EQ(set.get(), setBack.get());
    EXPECT_EQ(0, c->setDevices(HNKOptionalProperty<HNRVMDeviceList>()));
    EXPECT_EQ(0, count(*c, "device_list"));
}

TEST(HNREnvConfigSetterTest, ValueXmlCannotCarryIsRefusedAndThePreviousValueStays)
{
    boost::shared_ptr<HNREnvConfig> c = configFrom("<home_path>/old</home_path><vnc_password>pw</vnc_password>");
    ASSERT_TRUE(c);
    for (const std::string& bad : {std::string("a\0b", 3), std::string("\x01"), std::string("\xFF\xFE"),
                                   std::string("\xED\xA0\x80")}) {
        EXPECT_EQ(-1, c->setHomePath(bad));
        EXPECT_EQ(-1, c->setVNCPassword(bad));
        std::string s;
        EXPECT_EQ(0, c->getHomePath(s));
        EXPECT_EQ("/old", s);
        EXPECT_EQ(0, c->getVNCPassword(s));
        EXPECT_EQ("pw", s);
        EXPECT_EQ(1, count(*c, "home_path"));
    }
    // Framework-owned string setting: the name.
    HNKOptionalProperty<std::string> name, bad, back;
    name.set("kept");
    EXPECT_EQ(0, c->setName(name));
    bad.set(std::string("\x02"));
    EXPECT_EQ(-1, c->setName(bad));
    EXPECT_EQ(0, c->getName(back));
    EXPECT_EQ("kept", back.get());
    // A refused value on an empty configuration leaves no element behind.
    HNREnvConfig empty(static_cast<const HNKMessageIterator*>(nullptr));
    EXPECT_EQ(-1, empty.setIcon("\x03"));
    std::string s;
    EXPECT_EQ(-1, empty.getIcon(s));
}

TEST(HNREnvConfigSetterTest, SetOfAnAbsentElementOfAReadMessageAppendsItOrLeavesNothing)
{
    boost::shared_ptr<HNREnvConfig> c = configFrom("<icon>a</icon><name>x</name>");
    ASSERT_TRUE(c);
    EXPECT_EQ(-1, c->setHomePath(std::string("\x01")));
    EXPECT_EQ(0, count(*c, "home_path"));
    EXPECT_EQ(0, c->setHomePath("/new"));
    EXPECT_EQ(0, c->setCPUCount(4));
    std::vector<std::string_view> names;
    EXPECT_EQ(0, c->getMsg()->childNames(names));
    EXPECT_EQ((std::vector<std::string_view>{"icon", "name", "home_path", "cpu_count"}), names);
    std::string s;
    EXPECT_EQ(0, c->getHomePath(s));
    EXPECT_EQ("/new", s);
}

} // namespace
