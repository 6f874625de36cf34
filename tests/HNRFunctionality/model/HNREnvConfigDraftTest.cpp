// A configuration written with setDevices keeps its device list as a draft
// (the log of the writes) until someone looks inside it. The record must stay
// a value all the same: copies and the original never see each other's later
// changes, reads give what was set, and the written text is the text of the
// nodes the writes make.
#include "model/HNREnvConfig.h"

#include "HNRFunctionality/model/ConfigTestSupport.h"

#include "HNKErrorMessage.h"
#include "HNKSerialization.h"

#include <gtest/gtest.h>

#include <string>

using namespace HNR;
using namespace HNRTest;

namespace {

HNKOptionalProperty<HNRVMDeviceList> devicesOfSample()
{
    HNKMessageIterator message;
    EXPECT_EQ(0, message.fromXML(fullSample())) << getErrorMessage();
    boost::shared_ptr<HNKEnvConfig> base;
    EXPECT_EQ(0, HNKReaderDerived<HNKEnvConfig>(false)(message, base));
    HNKOptionalProperty<HNRVMDeviceList> devices;
    EXPECT_EQ(0, dynamic_cast<const HNREnvConfig&>(*base).getDevices(devices));
    return devices;
}

} // namespace

TEST(HNREnvConfigDraftTest, AConfigurationWithWrittenDevicesStaysAValue)
{
    const HNKOptionalProperty<HNRVMDeviceList> devices = devicesOfSample();
    ASSERT_EQ(11u, devices.get().size());

    HNREnvConfig original((boost::shared_ptr<HNKEnvCoreBasic>()));
    ASSERT_EQ(0, original.setCPUCount(2));
    ASSERT_EQ(0, original.setDevices(devices));
    const std::string text = written(original); // from the draft
    HNREnvConfig copy(original);
    HNREnvConfig assigned((boost::shared_ptr<HNKEnvCoreBasic>()));
    assigned = original;

    // The original changes its list; the copies keep theirs.
    HNKOptionalProperty<HNRVMDeviceList> fewer;
    fewer.set(HNRVMDeviceList(devices.get().begin(), devices.get().begin() + 3));
    ASSERT_EQ(0, original.setDevices(fewer));
    EXPECT_EQ(text, written(copy));
    EXPECT_EQ(text, written(assigned));
    EXPECT_NE(text, written(original));

    // Reads give what was set, in order and class.
    HNKOptionalProperty<HNRVMDeviceList> back;
    ASSERT_EQ(0, copy.getDevices(back));
    ASSERT_EQ(11u, back.get().size());
    for (size_t i = 0; i < 11; ++i) {
        EXPECT_EQ(typeid(*devices.get()[i]), typeid(*back.get()[i])) << i;
        EXPECT_EQ(0, devices.get()[i]->compare(*back.get()[i])) << i;
    }
    HNKOptionalProperty<HNRVMDeviceList> three; // a read appends to what it is given
    ASSERT_EQ(0, original.getDevices(three));
    EXPECT_EQ(3u, three.get().size());

    // The copy read back (its list now nodes) still writes the same text,
    // and a change of it shows in it alone.
    EXPECT_EQ(text, written(copy));
    ASSERT_EQ(0, copy.setCPUCount(8));
    EXPECT_EQ(text, written(assigned));
}

TEST(HNREnvConfigDraftTest, TheWrittenTextReadsBackToTheSameDevices)
{
    const HNKOptionalProperty<HNRVMDeviceList> devices = devicesOfSample();
    HNREnvConfig config((boost::shared_ptr<HNKEnvCoreBasic>()));
    ASSERT_EQ(0, config.setDevices(devices));
    HNKMessageIterator message;
    ASSERT_EQ(0, message.fromXML(written(config))) << getErrorMessage();
    boost::shared_ptr<HNKEnvConfig> base;
    ASSERT_EQ(0, HNKReaderDerived<HNKEnvConfig>(false)(message, base));
    HNKOptionalProperty<HNRVMDeviceList> back;
    ASSERT_EQ(0, dynamic_cast<const HNREnvConfig&>(*base).getDevices(back));
    ASSERT_EQ(devices.get().size(), back.get().size());
    for (size_t i = 0; i < back.get().size(); ++i)
        EXPECT_EQ(0, devices.get()[i]->compare(*back.get()[i])) << i;
}
