// The catalogue's VM configuration settings come from the configuration's
// settings table: each scalar setting once, in schema order, secret exactly
// where the written text is masked.
#include "frame/HNRRecordCatalogue.h"

#include "model/HNREnvConfig.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

using namespace HNR;

namespace {

std::vector<std::string> scalarTags()
{
#define HNR_TEST_TAG(arg, kind, Name, T, tag, place, compare, secrecy) HNR_TEST_TAG_##kind(tag)
#define HNR_TEST_TAG_value(tag) tag,
#define HNR_TEST_TAG_custom(tag) tag,
#define HNR_TEST_TAG_base(tag) tag,
#define HNR_TEST_TAG_list(tag)
    return {HNR_ENV_CONFIG_SETTINGS(HNR_TEST_TAG, )};
}

TEST(HNRRecordCatalogue, ListsEveryScalarSettingOfTheTableOnce)
{
    std::multiset<std::string> listed;
    for (const HNRConfigSetting& s : HNRRecordCatalogue::configSettings())
        listed.insert(s.tag);
    std::vector<std::string> tags = scalarTags();
    EXPECT_EQ(std::multiset<std::string>(tags.begin(), tags.end()), listed);
}

TEST(HNRRecordCatalogue, ListsSettingsInTheOrderOfTheirPositions)
{
    HNREnvConfig config(static_cast<const HNKMessageIterator*>(nullptr));
    int last = -1;
    for (const HNRConfigSetting& s : HNRRecordCatalogue::configSettings()) {
        int position = config.getPositionOfTheTag(s.tag);
        if (position < 0)
            continue;
        EXPECT_GT(position, last) << s.tag;
        last = position;
    }
}

TEST(HNRRecordCatalogue, SecretSettingsAreTheOnesMaskedByName)
{
    // The tool hides a setting by the table, an element of written text by
    // its name: the two must agree.
    int secrets = 0;
    for (const HNRConfigSetting& s : HNRRecordCatalogue::configSettings()) {
        EXPECT_EQ(HNRRecordCatalogue::isSecretName(s.tag), s.secret) << s.tag;
        secrets += s.secret ? 1 : 0;
    }
    EXPECT_EQ(2, secrets); // the start user's and the VNC password
}

TEST(HNRRecordCatalogue, SecretSettingValuesReadLikeAnyOther)
{
    HNREnvConfig config(static_cast<const HNKMessageIterator*>(nullptr));
    ASSERT_EQ(0, config.setVNCPassword("vnc-plain"));
    for (const HNRConfigSetting& s : HNRRecordCatalogue::configSettings()) {
        std::string text;
        if (std::string(s.tag) == "vnc_password") {
            EXPECT_EQ(0, s.get(config, text));
            EXPECT_EQ("vnc-plain", text);
        } else {
            EXPECT_NE(0, s.get(config, text)) << s.tag;
        }
    }
}

} // namespace
