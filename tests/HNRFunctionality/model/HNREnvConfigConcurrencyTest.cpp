// The tag position map is filled once, on first use, by whichever thread
// gets there first; every thread must see the same complete table.
#include "model/HNREnvConfig.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

using namespace HNR;

namespace {

const char* const kProbes[] = {"memory_size", "use_default_answers", "offline_management_list", "cpu_limit",
                               "device_list", "screen_depth", "vnc_password", "unknown_tag"};
const int kExpected[] = {0, 55, 57, -1, 52, 51, 43, -1};

TEST(HNREnvConfigConcurrencyTest, EightThreadsOnAFreshProcessAgreeOnEveryPosition)
{
    std::atomic<bool> go(false);
    std::vector<std::vector<int>> seen(8);
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t)
        threads.emplace_back([&, t] {
            HNREnvConfig config(static_cast<const HNKMessageIterator*>(nullptr));
            while (!go.load())
                std::this_thread::yield();
            for (int round = 0; round < 200; ++round)
                for (const char* tag : kProbes)
                    seen[t].push_back(config.getPositionOfTheTag(tag));
        });
    go = true;
    for (auto& th : threads)
        th.join();
    for (int t = 0; t < 8; ++t) {
        ASSERT_EQ(200u * 8u, seen[t].size());
        for (size_t i = 0; i < seen[t].size(); ++i)
            ASSERT_EQ(kExpected[i % 8], seen[t][i]) << "thread " << t << " probe " << kProbes[i % 8];
    }
}

} // namespace
