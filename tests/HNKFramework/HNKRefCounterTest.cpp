#include "HNKRefCounter.h"

#include <boost/intrusive_ptr.hpp>
#include <gtest/gtest.h>

#include "HNKAccessProviderPrototype.h"
#include "HNKEnvAccessor.h"

namespace {

class Counted : public virtual HNKRefCounter {
public:
    explicit Counted(int* destroyed) : destroyed_(destroyed) {}
    ~Counted() override { ++*destroyed_; }

private:
    int* destroyed_;
};

TEST(HNKRefCounterTest, StartsAtZeroAndDeletesAtLastRelease) {
    int destroyed = 0;
    Counted* c = new Counted(&destroyed);
    EXPECT_EQ(c->refCount(), 0);
    c->addRef();
    EXPECT_EQ(c->refCount(), 1);
    c->release();
    EXPECT_EQ(destroyed, 1);
}

TEST(HNKRefCounterTest, DeletesExactlyOnceAtLastRelease) {
    int destroyed = 0;
    Counted* c = new Counted(&destroyed);
    c->addRef();
    c->addRef();
    c->addRef();
    c->release();
    c->release();
    EXPECT_EQ(destroyed, 0);
    EXPECT_EQ(c->refCount(), 1);
    c->release();
    EXPECT_EQ(destroyed, 1);
}

TEST(HNKRefCounterTest, IntrusivePtrCopiesCountAndLastOneDeletes) {
    int destroyed = 0;
    boost::intrusive_ptr<Counted> a(new Counted(&destroyed));
    EXPECT_EQ(a->refCount(), 1);
    {
        boost::intrusive_ptr<Counted> b = a;
        boost::intrusive_ptr<HNKRefCounter> base = b;
        EXPECT_EQ(a->refCount(), 3);
    }
    EXPECT_EQ(a->refCount(), 1);
    EXPECT_EQ(destroyed, 0);
    a.reset();
    EXPECT_EQ(destroyed, 1);
}

TEST(HNKRefCounterTest, CopyStartsWithItsOwnCount) {
    int destroyed = 0;
    boost::intrusive_ptr<Counted> a(new Counted(&destroyed));
    boost::intrusive_ptr<Counted> b(new Counted(*a));
    EXPECT_EQ(a->refCount(), 1);
    EXPECT_EQ(b->refCount(), 1);
    *b = *a;
    EXPECT_EQ(b->refCount(), 1);
    b.reset();
    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(a->refCount(), 1);
}

// Provider and accessor in one object: both bases are virtual, so there is
// one count and the object dies once, whichever pointer goes last.
class ProviderAndAccessor : public HNKAccessProviderPrototype, public HNKEnvAccessor {
public:
    explicit ProviderAndAccessor(int* destroyed) : destroyed_(destroyed) {}
    ~ProviderAndAccessor() override { ++*destroyed_; }

private:
    int* destroyed_;
};

TEST(HNKRefCounterTest, VirtualBaseSharesOneCountAcrossInterfaces) {
    int destroyed = 0;
    auto* both = new ProviderAndAccessor(&destroyed);
    boost::intrusive_ptr<HNKAccessProviderPrototype> provider(both);
    boost::intrusive_ptr<HNKEnvAccessor> accessor(both);
    EXPECT_EQ(both->refCount(), 2);
    provider.reset();
    EXPECT_EQ(destroyed, 0);
    EXPECT_EQ(accessor->refCount(), 1);
    accessor.reset();
    EXPECT_EQ(destroyed, 1);
}

} // namespace
