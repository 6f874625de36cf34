// 16 threads add and remove registry keys at once; the mount table the
// recording stand-ins keep must match what the registry holds.
#include "share/HNRStaticConnections.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "HNKErrorMessage.h"
#include "HNRFunctionality/share/ShareFakeTools.h"

namespace {

using HNR::HNRGetConnections;
using HNR::HNRShareParams;
using HNR::HNRStaticConnections;

class HNRStaticConnectionsConcurrencyTest : public HNRTest::FakeToolsTest {};

TEST_F(HNRStaticConnectionsConcurrencyTest, SixteenThreadsAddAndRemove)
{
    const int kThreads = 16;
    const int kRounds = 3;
    const char* const kShares[] = {"\\\\srv\\one", "\\\\srv\\two\\", "\\\\SRV2\\three"};
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            for (int round = 0; round < kRounds; ++round) {
                const std::string key = "key" + std::to_string(t) + "-" + std::to_string(round);
                const HNRShareParams params(kShares[(t + round) % 3], "user", kPassword);
                std::string local;
                if (!HNRStaticConnections::add(params, key, &local) || local.empty())
                    ++failures;
                if (!HNRStaticConnections::isExist(key))
                    ++failures;
                // Half of the keys stay until the end.
                if (t % 2 == 0) {
                    HNRStaticConnections::remove(key);
                    if (HNRStaticConnections::isExist(key))
                        ++failures;
                }
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(failures.load(), 0) << getErrorMessage();

    // The kept keys hold one connection per share, each mounted once.
    {
        HNRGetConnections registry;
        EXPECT_EQ(registry->size(), static_cast<std::size_t>(kThreads / 2 * kRounds));
    }
    EXPECT_EQ(table().size(), 3u);
    EXPECT_EQ(mounts().size() - umounts().size(), 3u);

    for (int t = 1; t < kThreads; t += 2)
        for (int round = 0; round < kRounds; ++round)
            HNRStaticConnections::remove("key" + std::to_string(t) + "-" + std::to_string(round));
    EXPECT_TRUE(table().empty());
    EXPECT_EQ(mounts().size(), umounts().size());
    for (int n = 0; n < 100; ++n)
        EXPECT_FALSE(HNRTest::isDir(mountRoot() + std::to_string(n))) << n;
}

} // namespace
