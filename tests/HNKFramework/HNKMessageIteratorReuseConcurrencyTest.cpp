// Messages built in code reuse the emptied documents of messages dropped
// before them on the same thread. Whatever the dropped one held (elements,
// attributes, namespaces, drafts, a parsed text) must be gone from the next,
// and threads dropping and making messages at once must not share a
// document (this program runs under ThreadSanitizer in scripts/test).
#include "HNKMessageIterator.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace {

// Builds and drops a message with `items` children of several kinds.
void buildAndDrop(int items)
{
    HNKMessageIterator m("old");
    m.setType("urn:old", "oldType");
    for (int i = 0; i < items; ++i) {
        ASSERT_EQ(0, m.putValue(("value" + std::to_string(i)).c_str(), i));
        ASSERT_EQ(0, m.createChild("nested"));
        ASSERT_EQ(0, m.putValue("deep", "text & more"));
        m.ascend();
    }
    // Reading turns the drafts into nodes: the dropped document then holds them.
    if (items > 0) {
        int last = -1;
        ASSERT_EQ(0, m.getValue(("value" + std::to_string(items - 1)).c_str(), last));
        ASSERT_EQ(items - 1, last);
    }
}

} // namespace

TEST(HNKMessageIteratorReuseConcurrencyTest, AMessageMadeAfterAnotherWasDroppedHoldsOnlyItsOwnRoot)
{
    for (int items : {0, 1, 3, 40}) { // 40 items: more nodes than a document kept for reuse may have
        buildAndDrop(items);
        HNKMessageIterator fresh("new");
        EXPECT_EQ("<new/>", fresh.toXML()) << items << " items before";
        EXPECT_FALSE(fresh.hasChild("value0"));
        EXPECT_EQ(0, fresh.putValue("a", 1));
        EXPECT_EQ("<new><a>1</a></new>", fresh.toXML());
    }
}

TEST(HNKMessageIteratorReuseConcurrencyTest, AMessageMadeAfterAParsedOneWasDroppedHoldsOnlyItsOwnRoot)
{
    {
        HNKMessageIterator parsed;
        ASSERT_EQ(0, parsed.fromXML("<p xmlns:x=\"urn:x\"><x:a>1</x:a><b c=\"d\">text</b></p>"));
    }
    HNKMessageIterator fresh("new");
    EXPECT_EQ("<new/>", fresh.toXML());
    HNKMessageIterator again;
    ASSERT_EQ(0, again.fromXML("<q><r>2</r></q>"));
    EXPECT_EQ("<q><r>2</r></q>", again.toXML());
}

TEST(HNKMessageIteratorReuseConcurrencyTest, ManyMessagesAliveAtOnceAreEachTheirOwn)
{
    std::vector<HNKMessageIterator> alive;
    for (int i = 0; i < 6; ++i) {
        alive.emplace_back("m" + std::to_string(i));
        ASSERT_EQ(0, alive.back().putValue("v", i));
    }
    alive.erase(alive.begin(), alive.begin() + 3); // three go back, the others stay
    for (int i = 6; i < 10; ++i) {
        alive.emplace_back("m" + std::to_string(i));
        ASSERT_EQ(0, alive.back().putValue("v", i));
    }
    const int expected[] = {3, 4, 5, 6, 7, 8, 9};
    ASSERT_EQ(7u, alive.size());
    for (size_t k = 0; k < alive.size(); ++k) {
        const std::string n = std::to_string(expected[k]);
        EXPECT_EQ("<m" + n + "><v>" + n + "</v></m" + n + ">", alive[k].toXML());
    }
}

TEST(HNKMessageIteratorReuseConcurrencyTest, ThreadsMakingAndDroppingMessagesShareNoDocument)
{
    std::atomic<int> failures(0);
    // Messages made on one thread and dropped on another: each thread's
    // stock takes documents the others made.
    std::vector<std::vector<HNKMessageIterator>> handed(4);
    for (int t = 0; t < 4; ++t)
        for (int i = 0; i < 20; ++i) {
            handed[t].emplace_back("h");
            handed[t].back().putValue("v", i);
        }
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([t, &handed, &failures] {
            handed[t].clear();
            for (int round = 0; round < 300; ++round) {
                HNKMessageIterator m("t" + std::to_string(t));
                if (m.putValue("round", round) != 0 || m.createChild("inner") != 0 || m.putValue("x", t) != 0)
                    ++failures;
                m.ascend();
                const std::string want = "<t" + std::to_string(t) + "><round>" + std::to_string(round) +
                                         "</round><inner><x>" + std::to_string(t) + "</x></inner></t" +
                                         std::to_string(t) + ">";
                if (m.toXML() != want)
                    ++failures;
                int back = -1;
                if (m.getValue("round", back) != 0 || back != round)
                    ++failures;
            }
        });
    for (std::thread& th : threads)
        th.join();
    EXPECT_EQ(0, failures.load());
}
