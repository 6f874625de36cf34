// A configuration read from a message, the message, copies of either and the
// text written from them behave as independent values, however the storage
// shares trees underneath: each check fails if a change on one side shows on
// the other.
#include "model/HNREnvConfig.h"

#include "HNRFunctionality/model/ConfigTestSupport.h"

#include "HNKErrorMessage.h"
#include "HNKSerialization.h"

#include <gtest/gtest.h>

#include <string>

using namespace HNR;
using namespace HNRTest;

namespace {

HNKMessageIterator parsed()
{
    HNKMessageIterator it;
    EXPECT_EQ(0, it.fromXML(fullSample())) << getErrorMessage();
    return it;
}

std::string writeConfig(const boost::shared_ptr<HNREnvConfig>& c, HNKMessageIterator& out)
{
    out = HNKMessageIterator("configuration");
    if (out.putObject(boost::shared_ptr<HNKEnvConfig>(c), HNKWriterDerived<HNKEnvConfig>()) != 0)
        return "write failed";
    return out.toXML();
}

size_t deviceCount(const HNREnvConfig& c)
{
    HNKOptionalProperty<HNRVMDeviceList> d;
    EXPECT_EQ(0, c.getDevices(d));
    return d.get().size();
}

TEST(HNREnvConfigValueTest, AChangeToTheMessageAfterReadingDoesNotShowInTheRecord)
{
    HNKMessageIterator it = parsed();
    boost::shared_ptr<HNREnvConfig> c = readConfig(it);
    ASSERT_TRUE(c);
    HNKMessageIterator copyOfCursor(it); // a copy of the message cursor moves with it
    ASSERT_EQ(0, copyOfCursor.descend("device_list"));
    EXPECT_EQ(0, it.putValue("cpu_count", 77));
    EXPECT_EQ(0, it.removeChild("icon"));
    int n = 0;
    EXPECT_EQ(0, c->getCPUCount(n));
    EXPECT_EQ(4, n);
    std::string icon;
    EXPECT_EQ(0, c->getIcon(icon));
    EXPECT_EQ(11u, deviceCount(*c));
    // The message sees its own change, through every copy of its cursor.
    EXPECT_EQ(0, it.getValue("cpu_count", n));
    EXPECT_EQ(77, n);
    copyOfCursor.ascend();
    EXPECT_EQ(0, copyOfCursor.getValue("cpu_count", n));
    EXPECT_EQ(77, n);
    EXPECT_FALSE(copyOfCursor.hasChild("icon"));
    EXPECT_EQ(0, it.removeChild("device_list"));
    EXPECT_FALSE(copyOfCursor.hasChild("device_list"));
    EXPECT_EQ(11u, deviceCount(*c));
}

TEST(HNREnvConfigValueTest, AChangeToTheRecordDoesNotShowInTheMessage)
{
    HNKMessageIterator it = parsed();
    const std::string before = it.toXML();
    boost::shared_ptr<HNREnvConfig> c = readConfig(it);
    ASSERT_TRUE(c);
    EXPECT_EQ(0, c->setCPUCount(9));
    EXPECT_EQ(0, c->setDevices(HNKOptionalProperty<HNRVMDeviceList>()));
    int n = 0;
    EXPECT_EQ(0, it.getValue("cpu_count", n));
    EXPECT_EQ(4, n);
    EXPECT_TRUE(it.hasChild("device_list"));
    EXPECT_EQ(before, it.toXML());
    EXPECT_EQ(0, c->getCPUCount(n));
    EXPECT_EQ(9, n);
    // A change through the record's own cursor is the record's too.
    boost::shared_ptr<HNREnvConfig> d = readConfig(it);
    HNKMessageIterator* m = d->getMsg();
    ASSERT_EQ(0, m->descend("device_list"));
    ASSERT_EQ(0, m->firstChild(1114));
    EXPECT_EQ(0, m->putValue("emulation_type", 42));
    m->ascend();
    m->ascend();
    EXPECT_EQ(before, it.toXML());
}

TEST(HNREnvConfigValueTest, CopiesOfARecordAreIndependent)
{
    HNKMessageIterator it = parsed();
    boost::shared_ptr<HNREnvConfig> c = readConfig(it);
    ASSERT_TRUE(c);
    HNREnvConfig copy(*c);
    HNREnvConfig assigned(static_cast<const HNKMessageIterator*>(nullptr));
    assigned = *c;
    EXPECT_EQ(0, c->setIcon("changed"));
    EXPECT_EQ(0, copy.setCPUCount(1));
    EXPECT_EQ(0, assigned.setDevices(HNKOptionalProperty<HNRVMDeviceList>()));
    std::string icon;
    int n = 0;
    EXPECT_EQ(0, copy.getIcon(icon));
    EXPECT_NE("changed", icon);
    EXPECT_EQ(0, assigned.getIcon(icon));
    EXPECT_NE("changed", icon);
    EXPECT_EQ(0, c->getCPUCount(n));
    EXPECT_EQ(4, n);
    EXPECT_EQ(0, assigned.getCPUCount(n));
    EXPECT_EQ(4, n);
    EXPECT_EQ(11u, deviceCount(*c));
    EXPECT_EQ(11u, deviceCount(copy));
    EXPECT_EQ(0u, deviceCount(assigned));
    // A record built on a cursor of the message is a value too.
    HNREnvConfig wrapped(&it);
    EXPECT_EQ(0, wrapped.setCPUCount(2));
    EXPECT_EQ(0, it.getValue("cpu_count", n));
    EXPECT_EQ(4, n);
    EXPECT_EQ(0, it.putValue("cpu_count", 3));
    EXPECT_EQ(0, wrapped.getCPUCount(n));
    EXPECT_EQ(2, n);
}

TEST(HNREnvConfigValueTest, WrittenTextAndTheRecordNeverSeeEachOthersChanges)
{
    HNKMessageIterator it = parsed();
    boost::shared_ptr<HNREnvConfig> in = readConfig(it);
    ASSERT_TRUE(in);
    HNKOptionalProperty<HNRVMDeviceList> d;
    ASSERT_EQ(0, in->getDevices(d));
    boost::shared_ptr<HNREnvConfig> c(new HNREnvConfig(boost::shared_ptr<HNKEnvCoreBasic>()));
    EXPECT_EQ(0, c->setCPUCount(3));
    EXPECT_EQ(0, c->setDevices(d));
    HNKMessageIterator out;
    const std::string before = writeConfig(c, out);
    EXPECT_EQ(0, c->setCPUCount(5));
    c->setDevices(HNKOptionalProperty<HNRVMDeviceList>());
    EXPECT_EQ(before, out.toXML());
    ASSERT_EQ(0, out.descend("device_list"));
    ASSERT_EQ(0, out.firstChild(1114));
    out.removeCurrent();
    out.ascend();
    EXPECT_EQ(0u, deviceCount(*c));
    // Writing the same record twice gives the same text.
    boost::shared_ptr<HNREnvConfig> c2 = readConfig(it);
    HNKMessageIterator o1, o2;
    EXPECT_EQ(writeConfig(c2, o1), writeConfig(c2, o2));
    EXPECT_EQ(11u, deviceCount(*c2));
}

TEST(HNREnvConfigValueTest, ANewMessageOnTheCursorLeavesTheRecordAlone)
{
    HNKMessageIterator it = parsed();
    boost::shared_ptr<HNREnvConfig> c = readConfig(it);
    ASSERT_TRUE(c);
    ASSERT_EQ(0, it.fromXML("<r><cpu_count>1</cpu_count></r>"));
    int n = 0;
    EXPECT_EQ(0, c->getCPUCount(n));
    EXPECT_EQ(4, n);
    EXPECT_EQ(11u, deviceCount(*c));
    it = HNKMessageIterator();
    EXPECT_EQ(0, c->setCPUCount(6)); // the record alone on the tree changes it in place
    EXPECT_EQ(0, c->getCPUCount(n));
    EXPECT_EQ(6, n);
}

} // namespace
