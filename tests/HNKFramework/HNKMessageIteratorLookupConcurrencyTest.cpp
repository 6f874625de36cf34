// Cursors over one shared tree on several threads at once: each fills its own
// child index and prefix cache while reading, while another document that
// shared the tree changes it (and so takes a copy of its own). The readers
// must keep seeing the tree as it was, and the caches must be free of data
// races (this program runs under ThreadSanitizer in scripts/test).
#include "HNKMessageIterator.h"
#include "HNKSerialization.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace {

std::string message(int items)
{
    std::string text = "<r xmlns:t=\"urn:t\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\">";
    for (int i = 0; i < items; ++i)
        text += "<item xsi:type=\"t:itemType\"><a>" + std::to_string(i) + "</a><b>x</b><c>" + std::to_string(2 * i) +
                "</c></item>";
    return text + "</r>";
}

} // namespace

TEST(HNKMessageIteratorLookupConcurrencyTest, ReadersOfASharedTreeKeepTheirViewWhileAWriterCopiesIt)
{
    const int kItems = 200;
    HNKMessageIterator parsed;
    ASSERT_EQ(0, parsed.fromXML(message(kItems)));
    const std::string before = parsed.toXML();

    std::vector<HNKMessageIterator> readers;
    for (int t = 0; t < 3; ++t)
        readers.push_back(parsed.shareSubtree());
    HNKMessageIterator writer = parsed.shareSubtree();

    std::atomic<int> failures(0);
    std::vector<std::thread> threads;
    for (HNKMessageIterator& r : readers)
        threads.emplace_back([&r, &failures] {
            for (int round = 0; round < 5; ++round) {
                int i = 0;
                if (r.firstChild("item") != 0) {
                    ++failures;
                    return;
                }
                do {
                    int a = -1, c = -1;
                    std::string b;
                    if (r.getValue("c", c) != 0 || r.getValue("a", a) != 0 || r.getValue("b", b) != 0 ||
                        a != i || c != 2 * i || b != "x" || r.getTypeName() != "urn:t:itemType" ||
                        r.hasChild("d"))
                        ++failures;
                    ++i;
                } while (r.nextSibling("item") == 0);
                r.ascend();
                if (i != kItems)
                    ++failures;
            }
        });
    threads.emplace_back([&writer] {
        for (int round = 0; round < 5; ++round) {
            writer.firstChild("item");
            do {
                writer.putValue("d", round);
                writer.removeChild("b");
                writer.putValue("a", -1);
            } while (writer.nextSibling("item") == 0);
            writer.ascend();
        }
    });
    for (std::thread& t : threads)
        t.join();
    EXPECT_EQ(0, failures.load());
    EXPECT_EQ(before, parsed.toXML());
    for (const HNKMessageIterator& r : readers)
        EXPECT_EQ(before, r.toXML());
    int d = -1;
    writer.firstChild("item");
    EXPECT_EQ(0, writer.getValue("d", d));
    EXPECT_EQ(4, d);
    EXPECT_FALSE(writer.hasChild("b"));
}

TEST(HNKMessageIteratorLookupConcurrencyTest, CopiesOfAWrittenTreeAreUsedOnThreadsOfTheirOwn)
{
    // Written content stays a draft until looked at; copies taken from it
    // (carrying the drafts, or sharing the tree once they are nodes) go to
    // threads that read and write them while the original writes on.
    HNKMessageIterator written("r");
    ASSERT_EQ(0, written.createChild("list"));
    for (int i = 0; i < 100; ++i) {
        ASSERT_EQ(0, written.createChild("item"));
        written.setType("itemType", "urn:t");
        ASSERT_EQ(0, written.putValue("a", i));
        written.ascend();
    }
    const std::string before = written.toXML();
    std::vector<HNKMessageIterator> copies;
    copies.push_back(written.cloneSubtree());
    copies.push_back(written.root().shareSubtree());
    copies.push_back(written.root().shareSubtree());
    copies.push_back(written.cloneSubtree());
    std::atomic<int> failures(0);
    std::vector<std::thread> threads;
    for (HNKMessageIterator& c : copies)
        threads.emplace_back([&c, &failures] {
            HNKMessageIterator at = c.root();
            if (std::string(at.currentName()) == "r" && at.descend("list") != 0)
                ++failures;
            int n = 0;
            if (at.firstChild("item") == 0)
                do {
                    int a = -1;
                    if (at.getValue("a", a) != 0 || a != n++ || at.getTypeName() != "urn:t:itemType")
                        ++failures;
                    at.putValue("b", a);
                } while (at.nextSibling("item") == 0);
            if (n != 100)
                ++failures;
        });
    for (int i = 0; i < 50; ++i) {
        ASSERT_EQ(0, written.createChild("item"));
        ASSERT_EQ(0, written.putValue("a", -i));
        written.ascend();
    }
    for (std::thread& t : threads)
        t.join();
    EXPECT_EQ(0, failures.load());
    EXPECT_NE(before, written.toXML());
    for (HNKMessageIterator& c : copies)
        EXPECT_EQ(std::string::npos, c.toXML().find("<a>-1</a>"));
}
