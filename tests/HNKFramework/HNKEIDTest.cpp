#include "HNKEID.h"

#include <set>

#include <gtest/gtest.h>

namespace {

TEST(HNKEIDTest, DefaultIsNullAndOneFromAGuidIsNot) {
    EXPECT_TRUE(HNKEID().isNull());
    EXPECT_TRUE(HNKEID().getGUID().isNull());
    EXPECT_FALSE(HNKEID(HNKGUID(0, 2)).isNull());
}

TEST(HNKEIDTest, ComparesByGuid) {
    const HNKEID a(HNKGUID(1, 2));
    const HNKEID b(HNKGUID(1, 3));
    EXPECT_EQ(a.compare(a), 0);
    EXPECT_LT(a.compare(b), 0);
    EXPECT_GT(b.compare(a), 0);
    EXPECT_TRUE(a < b);
    EXPECT_TRUE(a == HNKEID(HNKGUID(1, 2)));
    EXPECT_TRUE(a != b);
    std::set<HNKEID> set{b, a, HNKEID(HNKGUID(1, 2))};
    EXPECT_EQ(set.size(), 2u);
}

TEST(HNKEIDTest, TextFormReadsBackAndBadTextLeavesTheValue) {
    const HNKEID eid(HNKGUID(-5, 77));
    HNKEID back;
    ASSERT_TRUE(back.fromString(eid.toString()));
    EXPECT_EQ(back, eid);
    EXPECT_EQ(eid.toString(), eid.getGUID().toString());
    EXPECT_FALSE(back.fromString("not an eid"));
    EXPECT_EQ(back, eid);
}

} // namespace
