// Records read from one message share its tree; they are used on several
// threads at once (each record and cursor by one thread), while the message
// itself is changed on another. No thread may see another's change, and the
// sharing itself must be free of data races (this program runs under
// ThreadSanitizer in scripts/test).
#include "model/HNREnvConfig.h"

#include "HNRFunctionality/model/ConfigTestSupport.h"

#include "HNKErrorMessage.h"
#include "HNKSerialization.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

using namespace HNR;
using namespace HNRTest;

namespace {

TEST(HNREnvConfigSharingConcurrencyTest, RecordsSharingOneTreeStayValuesAcrossThreads)
{
    const int kThreads = 4;
    const int kRounds = 20;
    HNKMessageIterator message;
    ASSERT_EQ(0, message.fromXML(fullSample())) << getErrorMessage();
    boost::shared_ptr<HNREnvConfig> first = readConfig(message);
    ASSERT_TRUE(first);
    const std::string expected = written(*first);

    // Every thread gets its own record over the same tree before any starts.
    std::vector<boost::shared_ptr<HNREnvConfig>> records;
    for (int t = 0; t < kThreads; ++t)
        records.push_back(t % 2 ? readConfig(message) : boost::shared_ptr<HNREnvConfig>(new HNREnvConfig(*first)));
    std::atomic<int> failures{0};
    std::atomic<bool> go{false};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            while (!go.load())
                std::this_thread::yield();
            boost::shared_ptr<HNREnvConfig> mine = records[static_cast<size_t>(t)];
            for (int round = 0; round < kRounds; ++round) {
                // A copy shares the tree again; reading it and writing it
                // out gives the message's text.
                HNREnvConfig copy(*mine);
                HNKOptionalProperty<HNRVMDeviceList> devices;
                int n = 0;
                if (round == 0 && (written(copy) != expected || copy.getDevices(devices) != 0 ||
                                   devices.get().size() != 11))
                    ++failures;
                // Own changes show only here.
                if (copy.setCPUCount(100 + t) != 0 || copy.getCPUCount(n) != 0 || n != 100 + t)
                    ++failures;
                if (mine->getCPUCount(n) != 0 || n != (round == 0 ? 4 : 200 + t))
                    ++failures;
                if (mine->setCPUCount(200 + t) != 0)
                    ++failures;
            }
        });
    }
    go.store(true);
    // Meanwhile the message itself changes, on this thread.
    for (int round = 0; round < kRounds; ++round) {
        EXPECT_EQ(0, message.putValue("cpu_count", 300 + round));
        boost::shared_ptr<HNREnvConfig> again = readConfig(message); // shares the changed tree
        int n = 0;
        EXPECT_EQ(0, again->getCPUCount(n));
        EXPECT_EQ(300 + round, n);
    }
    for (std::thread& th : threads)
        th.join();
    EXPECT_EQ(0, failures.load());
    int n = 0;
    EXPECT_EQ(0, first->getCPUCount(n));
    EXPECT_EQ(4, n);
    EXPECT_EQ(expected, written(*first));
}

} // namespace
