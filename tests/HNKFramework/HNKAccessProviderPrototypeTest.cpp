#include "HNKAccessProviderPrototype.h"

#include <gtest/gtest.h>

#include "HNKFramework/ModuleAccessFakes.h"

namespace {

TEST(HNKAccessProviderPrototypeTest, HasNoAccessorByDefault) {
    boost::intrusive_ptr<HNKAccessProviderPrototype> provider(new HNKAccessProviderPrototype);
    EXPECT_FALSE(provider->getEnvAccessor());
}

TEST(HNKAccessProviderPrototypeTest, HandsOutNewReferencesToItsAccessor) {
    int accessorsDestroyed = 0;
    boost::intrusive_ptr<HNKEnvAccessor> accessor(new fakes::CountingAccessor(&accessorsDestroyed));
    boost::intrusive_ptr<HNKAccessProviderPrototype> provider(new HNKAccessProviderPrototype(accessor));
    EXPECT_EQ(accessor->refCount(), 2);
    {
        boost::intrusive_ptr<HNKEnvAccessor> got = provider->getEnvAccessor();
        EXPECT_EQ(got.get(), accessor.get());
        EXPECT_EQ(accessor->refCount(), 3);
    }
    EXPECT_EQ(accessor->refCount(), 2);
    provider.reset();
    EXPECT_EQ(accessor->refCount(), 1);
    accessor.reset();
    EXPECT_EQ(accessorsDestroyed, 1);
}

TEST(HNKAccessProviderPrototypeTest, AccessorKnowsWhichEnvironmentsAreLocal) {
    const HNKEID here(HNKGUID(1, 1));
    const HNKEID there(HNKGUID(2, 2));
    boost::intrusive_ptr<HNKEnvAccessor> accessor(new HNKEnvAccessor);
    EXPECT_FALSE(accessor->isLocal(here));
    accessor->addLocal(here);
    EXPECT_TRUE(accessor->isLocal(here));
    EXPECT_FALSE(accessor->isLocal(there));
    EXPECT_FALSE(accessor->isLocal(HNKEID()));
    accessor->removeLocal(here);
    EXPECT_FALSE(accessor->isLocal(here));
}

TEST(HNKAccessProviderPrototypeTest, ReplacingTheAccessorReleasesTheOldOne) {
    int destroyed = 0;
    boost::intrusive_ptr<HNKAccessProviderPrototype> provider(
        new HNKAccessProviderPrototype(new fakes::CountingAccessor(&destroyed)));
    provider->setEnvAccessor(nullptr);
    EXPECT_EQ(destroyed, 1);
    EXPECT_FALSE(provider->getEnvAccessor());
}

} // namespace
