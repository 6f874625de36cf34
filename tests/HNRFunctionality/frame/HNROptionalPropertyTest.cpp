#include "frame/HNROptionalProperty.h"

#include "HNKErrorMessage.h"
#include "tools/MessageTestSupport.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

TEST(HNROptionalPropertyTest, ReadMarksSpecifiedExactlyWhenTheGetSucceeds)
{
    HNKMessageIterator it = parsed("<r><n>4</n><bad>x</bad><s>text</s><b>true</b></r>");
    HNKOptionalProperty<int> n, bad, missing;
    HNKOptionalProperty<std::string> s;
    HNKOptionalProperty<bool> b;
    missing.set(9);
    EXPECT_EQ(0, HNR::readOptionalProperty(it, n, "n"));
    EXPECT_EQ(0, HNR::readOptionalProperty(it, bad, "bad"));
    EXPECT_EQ(0, HNR::readOptionalProperty(it, missing, "missing"));
    EXPECT_EQ(0, HNR::readOptionalProperty(it, s, "s"));
    EXPECT_EQ(0, HNR::readOptionalProperty(it, b, "b"));
    EXPECT_TRUE(n.isSpecified());
    EXPECT_EQ(4, n.get());
    EXPECT_FALSE(bad.isSpecified());
    EXPECT_FALSE(missing.isSpecified());
    EXPECT_EQ(9, missing.get()); // value untouched
    EXPECT_EQ("text", s.get());
    EXPECT_TRUE(b.get());
}

TEST(HNROptionalPropertyTest, Base64ReadDecodesAndUnreadableTextStaysUnspecified)
{
    HNKMessageIterator it = parsed("<r><pw>c2VjcmV0</pw><junk>**</junk></r>");
    HNKOptionalProperty<std::string> pw, junk;
    EXPECT_EQ(0, HNR::readOptionalPropertyBase64(it, pw, "pw"));
    EXPECT_EQ(0, HNR::readOptionalPropertyBase64(it, junk, "junk"));
    EXPECT_TRUE(pw.isSpecified());
    EXPECT_EQ("secret", pw.get());
    EXPECT_FALSE(junk.isSpecified());
}

TEST(HNROptionalPropertyTest, WriteEmitsOnlySpecifiedValues)
{
    HNKMessageIterator it("r");
    HNKOptionalProperty<int> n;
    HNKOptionalProperty<bool> b;
    HNKOptionalProperty<std::string> s, hidden;
    n = 3;
    b = true;
    s = "v";
    hidden.set("not written");
    hidden.specify(false);
    EXPECT_EQ(0, HNR::writeOptionalProperty(it, n, "n"));
    EXPECT_EQ(0, HNR::writeOptionalProperty(it, b, "b"));
    EXPECT_EQ(0, HNR::writeOptionalProperty(it, s, "s"));
    EXPECT_EQ(0, HNR::writeOptionalProperty(it, hidden, "hidden"));
    EXPECT_EQ("<r><n>3</n><b>1</b><s>v</s></r>", it.toXML());
}

TEST(HNROptionalPropertyTest, WriteReturnsThePutsStatus)
{
    HNKMessageIterator it("r");
    HNKOptionalProperty<std::string> s;
    s = std::string("nul\0inside", 10);
    EXPECT_NE(0, HNR::writeOptionalProperty(it, s, "s"));
    EXPECT_NE(0, HNR::writeOptionalProperty(it, s, "bad tag"));
}

TEST(HNROptionalPropertyTest, Base64WriteEncodesAndRoundTrips)
{
    HNKMessageIterator it("r");
    HNKOptionalProperty<std::string> pw, none;
    pw = std::string("p\0w", 3);
    EXPECT_EQ(0, HNR::writeOptionalPropertyBase64(it, pw, "pw"));
    EXPECT_EQ(0, HNR::writeOptionalPropertyBase64(it, none, "none"));
    EXPECT_EQ("<r><pw>cAB3</pw></r>", it.toXML());
    HNKOptionalProperty<std::string> back;
    HNR::readOptionalPropertyBase64(it, back, "pw");
    EXPECT_EQ(pw.get(), back.get());
}

TEST(HNROptionalPropertyTest, CompareOrdersUnspecifiedFirst)
{
    HNKOptionalProperty<int> a, b;
    EXPECT_EQ(0, HNR::compareOptionalProperties(a, b));
    b = 1;
    EXPECT_EQ(-1, HNR::compareOptionalProperties(a, b));
    EXPECT_EQ(1, HNR::compareOptionalProperties(b, a));
    a = 2;
    EXPECT_GT(HNR::compareOptionalProperties(a, b), 0);
    a = 1;
    EXPECT_EQ(0, HNR::compareOptionalProperties(a, b));

    HNKOptionalProperty<std::string> s1, s2;
    s1 = "a";
    s2 = "b";
    EXPECT_LT(HNR::compareOptionalProperties(s1, s2), 0);
    HNKOptionalProperty<bool> f, t;
    f = false;
    t = true;
    EXPECT_LT(HNR::compareOptionalProperties(f, t), 0);
    HNKOptionalProperty<std::set<std::string>> x, y;
    x = std::set<std::string>{"a"};
    y = std::set<std::string>{"a", "b"};
    EXPECT_LT(HNR::compareOptionalProperties(x, y), 0);
    EXPECT_EQ(0, HNR::compareOptionalProperties(y, y));
}

} // namespace
