// The configuration writer puts the children in the order of their schema
// places, equal places in the order they were written, unknown tags last,
// whatever range the places a derived record gives lie in.
#include "HNKEnvConfig.h"

#include "HNKSerialization.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace {

// A record whose places come from a table the test fills.
class PlacedConfig : public HNKEnvConfig {
public:
    explicit PlacedConfig(std::map<std::string, int> places)
        : HNKEnvConfig(boost::shared_ptr<HNKEnvCoreBasic>()), places_(std::move(places))
    {
    }
    int getPositionOfTheTag(const std::string& tag) const override
    {
        auto found = places_.find(tag);
        return found == places_.end() ? -1 : found->second;
    }

private:
    std::map<std::string, int> places_;
};

// The children's names as the writer puts them out.
std::vector<std::string> writtenOrder(const std::map<std::string, int>& places, const std::vector<std::string>& tags)
{
    PlacedConfig config(places);
    config.initMsg();
    HNKMessageIterator& msg = *config.getMsg();
    int n = 0;
    for (const std::string& tag : tags) { // appended, a repeated tag too
        EXPECT_EQ(0, msg.createChild(tag));
        EXPECT_EQ(0, msg.putValue(0, ++n));
        msg.ascend();
    }
    HNKMessageIterator out("r");
    EXPECT_EQ(0, out.putObject(config, HNKEnvConfig::Writer()));
    std::vector<std::string> names;
    HNKMessageIterator walk(out);
    EXPECT_EQ(0, walk.firstChild());
    do {
        std::string name = walk.currentName();
        int value = 0;
        EXPECT_EQ(0, walk.getValue(0, value));
        names.push_back(name + "=" + std::to_string(value));
    } while (walk.nextSibling() == 0);
    return names;
}

TEST(HNKEnvConfigWriterTest, SmallPlacesSortStablyWithUnknownTagsLast)
{
    const std::map<std::string, int> places{{"a", 2}, {"b", 0}, {"c", 2}, {"d", 1}, {"e", 0}};
    EXPECT_EQ((std::vector<std::string>{"b=2", "e=7", "d=4", "a=1", "c=3", "a=5", "x=6", "y=8"}),
              writtenOrder(places, {"a", "b", "c", "d", "a", "x", "e", "y"}));
}

TEST(HNKEnvConfigWriterTest, LargeAndSmallPlacesTogetherSortAlike)
{
    // Places are counted up to 255; a larger one takes a comparison sort.
    // Either way, and at the edge between them, the order is the same.
    const std::map<std::string, int> places{{"a", 100000}, {"b", 255}, {"c", 256}, {"d", 0}, {"e", 255}};
    EXPECT_EQ((std::vector<std::string>{"d=5", "b=2", "e=6", "c=3", "a=1", "a=4", "x=7"}),
              writtenOrder(places, {"a", "b", "c", "a", "d", "e", "x"}));
    const std::map<std::string, int> shifted{{"a", 4}, {"b", 1}, {"c", 2}, {"d", 0}, {"e", 1}};
    EXPECT_EQ((std::vector<std::string>{"d=5", "b=2", "e=6", "c=3", "a=1", "a=4", "x=7"}),
              writtenOrder(shifted, {"a", "b", "c", "a", "d", "e", "x"}));
    const std::map<std::string, int> edge{{"a", 255}, {"b", 253}, {"c", 254}, {"d", 0}, {"e", 253}};
    EXPECT_EQ((std::vector<std::string>{"d=5", "b=2", "e=6", "c=3", "a=1", "a=4", "x=7"}),
              writtenOrder(edge, {"a", "b", "c", "a", "d", "e", "x"}));
}

TEST(HNKEnvConfigWriterTest, OnlyUnknownTagsKeepTheirOrder)
{
    EXPECT_EQ((std::vector<std::string>{"z=1", "y=2", "z=3"}), writtenOrder({}, {"z", "y", "z"}));
}

} // namespace
