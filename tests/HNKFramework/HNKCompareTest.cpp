#include "HNKCompare.h"

#include <gtest/gtest.h>

#include <boost/shared_ptr.hpp>

#include <set>
#include <string>
#include <vector>

namespace {

TEST(HNKCompareTest, ScalarsCompareThreeWay)
{
    EXPECT_EQ(-1, compare(1, 2));
    EXPECT_EQ(0, compare(2, 2));
    EXPECT_EQ(1, compare(3, 2));
    EXPECT_EQ(-1, compare(false, true));
    EXPECT_EQ(0, compare(true, true));
    EXPECT_EQ(1, compare(std::string("b"), std::string("a")));
    EXPECT_EQ(-1, compare(std::string("a"), std::string("ab")));
    EXPECT_EQ(1, compare(5000000000LL, 1LL));
}

TEST(HNKCompareTest, SetsAndVectorsCompareLexicographically)
{
    std::set<std::string> a{"a", "b"}, b{"a", "c"}, prefix{"a"};
    EXPECT_EQ(-1, compare(a, b));
    EXPECT_EQ(1, compare(b, a));
    EXPECT_EQ(0, compare(a, a));
    EXPECT_EQ(-1, compare(prefix, a));
    EXPECT_EQ(1, compare(a, prefix));
    EXPECT_EQ(0, compare(std::vector<int>(), std::vector<int>()));
    EXPECT_EQ(-1, compare(std::vector<int>{1, 2}, std::vector<int>{1, 3}));
    EXPECT_EQ(1, compare(std::vector<int>{2}, std::vector<int>{1, 3}));
}

struct Base {
    explicit Base(int v) : v(v) {}
    virtual ~Base() {}
    virtual int compare(const Base& o) const { return ::compare(v, o.v); }
    int v;
};
struct Derived : Base {
    Derived(int v, int w) : Base(v), w(w) {}
    int compare(const Base& o) const override
    {
        int c = Base::compare(o);
        if (c)
            return c;
        const Derived* d = dynamic_cast<const Derived*>(&o);
        return d ? ::compare(w, d->w) : -1;
    }
    int w;
};

TEST(HNKCompareTest, SharedPointersComparePointeesThroughVirtualCompare)
{
    typedef std::vector<boost::shared_ptr<Base>> List;
    List a{boost::shared_ptr<Base>(new Derived(1, 1))};
    List b{boost::shared_ptr<Base>(new Derived(1, 2))};
    List c{boost::shared_ptr<Base>(new Derived(1, 1))};
    EXPECT_EQ(-1, compare(a, b));
    EXPECT_EQ(0, compare(a, c));
    boost::shared_ptr<Base> null;
    EXPECT_EQ(-1, compare(null, a[0]));
    EXPECT_EQ(1, compare(a[0], null));
    EXPECT_EQ(0, compare(null, null));
}

TEST(HNKCompareTest, OptionalUnspecifiedSortsFirstAndTwoUnspecifiedAreEqual)
{
    HNKOptionalProperty<int> unset1, unset2, one, two;
    unset1.set(5);
    unset1.specify(false);
    one = 1;
    two = 2;
    EXPECT_EQ(0, compare(unset1, unset2)); // values differ, both unspecified
    EXPECT_EQ(-1, compare(unset1, one));
    EXPECT_EQ(1, compare(one, unset2));
    EXPECT_EQ(-1, compare(one, two));
    EXPECT_EQ(0, compare(two, two));
}

} // namespace
