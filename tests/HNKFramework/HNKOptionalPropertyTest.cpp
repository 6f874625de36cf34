#include "HNKOptionalProperty.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

TEST(HNKOptionalPropertyTest, StartsUnspecifiedWithDefaultValue)
{
    HNKOptionalProperty<int> i;
    HNKOptionalProperty<std::string> s;
    HNKOptionalProperty<bool> b;
    EXPECT_FALSE(i.isSpecified());
    EXPECT_EQ(0, i.get());
    EXPECT_EQ("", s.get());
    EXPECT_FALSE(b.get());
}

TEST(HNKOptionalPropertyTest, SetAndAssignmentStoreAndSpecify)
{
    HNKOptionalProperty<std::string> s;
    s.set("a");
    EXPECT_TRUE(s.isSpecified());
    EXPECT_EQ("a", s.get());
    HNKOptionalProperty<int> i;
    i = 5;
    EXPECT_TRUE(i.isSpecified());
    EXPECT_EQ(5, i.value());
}

TEST(HNKOptionalPropertyTest, SpecifyFalseKeepsTheOldValue)
{
    HNKOptionalProperty<int> i;
    i.set(7);
    i.specify(false);
    EXPECT_FALSE(i.isSpecified());
    EXPECT_EQ(7, i.get());
    i.specify(true);
    EXPECT_TRUE(i.isSpecified());
    EXPECT_EQ(7, i.get());
}

TEST(HNKOptionalPropertyTest, CopyCopiesValueAndFlag)
{
    HNKOptionalProperty<std::set<std::string>> a;
    a.set({"x", "y"});
    HNKOptionalProperty<std::set<std::string>> b(a);
    EXPECT_TRUE(b.isSpecified());
    EXPECT_EQ(2u, b.get().size());
    HNKOptionalProperty<std::set<std::string>> c;
    c = a;
    EXPECT_TRUE(c.isSpecified());
    a.specify(false);
    c = a;
    EXPECT_FALSE(c.isSpecified());
    EXPECT_EQ(2u, c.get().size());
}

TEST(HNKOptionalPropertyTest, PropertyHolderGetsAndSets)
{
    HNKProperty<int> p;
    EXPECT_EQ(0, p.get());
    p.set(3);
    EXPECT_EQ(3, p.value());
    p.value() = 4;
    EXPECT_EQ(4, p.get());
    HNKProperty<std::string> s("v");
    EXPECT_EQ("v", s.get());
}

} // namespace
