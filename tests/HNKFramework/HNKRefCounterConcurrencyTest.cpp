#include "HNKRefCounter.h"

#include <atomic>
#include <thread>
#include <vector>

#include <boost/intrusive_ptr.hpp>
#include <gtest/gtest.h>

namespace {

constexpr int kThreads = 8;
constexpr int kRounds = 100000;

class Counted : public virtual HNKRefCounter {
public:
    explicit Counted(std::atomic<int>* destroyed) : destroyed_(destroyed) {}
    ~Counted() override {
        // Plain reads of every thread's slot: the sanitizer sees a race here
        // unless each release orders that thread's writes before the delete.
        int sum = 0;
        for (int v : slots) sum += v;
        lastSum = sum;
        destroyed_->fetch_add(1);
    }

    int slots[kThreads] = {};
    static inline int lastSum = 0;

private:
    std::atomic<int>* destroyed_;
};

TEST(HNKRefCounterConcurrencyTest, ConcurrentAddRefAndReleaseKeepTheCount) {
    std::atomic<int> destroyed{0};
    boost::intrusive_ptr<Counted> owner(new Counted(&destroyed));
    std::atomic<bool> go{false};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&] {
            while (!go.load()) std::this_thread::yield();
            for (int i = 0; i < kRounds; ++i) {
                owner->addRef();
                owner->addRef();
                owner->release();
                owner->release();
            }
        });
    }
    go = true;
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(owner->refCount(), 1);
    EXPECT_EQ(destroyed.load(), 0);
    owner.reset();
    EXPECT_EQ(destroyed.load(), 1);
}

TEST(HNKRefCounterConcurrencyTest, LastOfManyThreadsDeletesOnce) {
    for (int round = 0; round < 200; ++round) {
        std::atomic<int> destroyed{0};
        std::vector<boost::intrusive_ptr<Counted>> copies;
        {
            boost::intrusive_ptr<Counted> first(new Counted(&destroyed));
            for (int t = 0; t < kThreads; ++t) copies.push_back(first);
        }
        std::atomic<bool> go{false};
        std::vector<std::thread> threads;
        for (int t = 0; t < kThreads; ++t) {
            threads.emplace_back([&, t] {
                while (!go.load()) std::this_thread::yield();
                boost::intrusive_ptr<Counted> mine;
                mine.swap(copies[t]);
                mine->slots[t] = t + 1;
                mine.reset();
            });
        }
        go = true;
        for (auto& thread : threads) thread.join();
        ASSERT_EQ(destroyed.load(), 1) << "round " << round;
        ASSERT_EQ(Counted::lastSum, kThreads * (kThreads + 1) / 2);
    }
}

} // namespace
