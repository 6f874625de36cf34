#include "HNKGUID.h"

#include "HNKMessageIterator.h"

#include <gtest/gtest.h>

namespace {

TEST(HNKGUIDTest, DefaultIsNull) {
    HNKGUID guid;
    EXPECT_TRUE(guid.isNull());
    EXPECT_EQ(guid.toString(), "00000000-0000-0000-0000-000000000000");
}

TEST(HNKGUIDTest, HalvesZeroAndTwoAreNotNull) {
    HNKGUID guid(0, 2);
    EXPECT_FALSE(guid.isNull());
    EXPECT_NE(guid, HNKGUID());
    EXPECT_EQ(guid.getHigh(), 0);
    EXPECT_EQ(guid.getLow(), 2);
    EXPECT_EQ(guid.toString(), "00000000-0000-0000-0000-000000000002");
}

TEST(HNKGUIDTest, TextPutsHighHalfFirstInLowerCase) {
    HNKGUID guid(static_cast<int64_t>(0x0123456789ABCDEFull), static_cast<int64_t>(0xFEDCBA9876543210ull));
    EXPECT_EQ(guid.toString(), "01234567-89ab-cdef-fedc-ba9876543210");
    EXPECT_EQ(HNKGUID(-1, -1).toString(), "ffffffff-ffff-ffff-ffff-ffffffffffff");
}

TEST(HNKGUIDTest, StringRoundTrip) {
    const HNKGUID samples[] = {HNKGUID(), HNKGUID(0, 2), HNKGUID(-1, -1), HNKGUID(INT64_MIN, INT64_MAX),
                               HNKGUID(0x7a3c, -42), HNKGUID(123456789012345, -987654321)};
    for (const HNKGUID& guid : samples) {
        HNKGUID back(5, 5);
        ASSERT_TRUE(back.fromString(guid.toString())) << guid.toString();
        EXPECT_EQ(back, guid) << guid.toString();
        EXPECT_EQ(back.getHigh(), guid.getHigh());
        EXPECT_EQ(back.getLow(), guid.getLow());
    }
}

TEST(HNKGUIDTest, ParsesUpperCase) {
    HNKGUID guid;
    ASSERT_TRUE(guid.fromString("01234567-89AB-CDEF-FEDC-BA9876543210"));
    EXPECT_EQ(guid.toString(), "01234567-89ab-cdef-fedc-ba9876543210");
}

TEST(HNKGUIDTest, RejectsMalformedTextAndKeepsValue) {
    const char* bad[] = {
        "",
        "00000000-0000-0000-0000-00000000000",    // short
        "00000000-0000-0000-0000-0000000000022",  // long
        "00000000-0000-0000-0000-00000000000g",   // not hex
        "000000000-000-0000-0000-000000000002",   // dash moved
        "00000000_0000_0000_0000_000000000002",   // wrong separator
        "{0000000-0000-0000-0000-000000000002}",
        "00000000-0000-0000-0000 000000000002",
        "0x000000-0000-0000-0000-000000000002",
    };
    for (const char* text : bad) {
        HNKGUID guid(7, 9);
        EXPECT_FALSE(guid.fromString(text)) << text;
        EXPECT_EQ(guid, HNKGUID(7, 9)) << text;
    }
}

TEST(HNKGUIDTest, OrderFollowsTheText) {
    // Halves compare unsigned, high first: the order of the canonical strings.
    const HNKGUID ordered[] = {HNKGUID(), HNKGUID(0, 2), HNKGUID(0, -1), HNKGUID(1, 0),
                               HNKGUID(INT64_MAX, 0), HNKGUID(INT64_MIN, 0), HNKGUID(-1, -1)};
    const size_t n = sizeof(ordered) / sizeof(ordered[0]);
    for (size_t i = 0; i < n; ++i) {
        for (size_t j = 0; j < n; ++j) {
            const int c = ordered[i].compare(ordered[j]);
            const int expected = i < j ? -1 : (i > j ? 1 : 0);
            EXPECT_EQ(c, expected) << i << " " << j;
            const int textOrder = ordered[i].toString().compare(ordered[j].toString());
            EXPECT_EQ(c < 0, textOrder < 0);
            EXPECT_EQ(ordered[i] < ordered[j], i < j);
            EXPECT_EQ(ordered[i] > ordered[j], i > j);
            EXPECT_EQ(ordered[i] <= ordered[j], i <= j);
            EXPECT_EQ(ordered[i] >= ordered[j], i >= j);
            EXPECT_EQ(ordered[i] == ordered[j], i == j);
            EXPECT_EQ(ordered[i] != ordered[j], i != j);
        }
    }
}

TEST(HNKGUIDTest, WriterPutsCanonicalTextAndReaderTakesItBack) {
    HNKGUID guid(0x3f2504e04f8911d3LL, static_cast<int64_t>(0x9a0c0305e82c3301ULL));
    HNKMessageIterator out("r");
    ASSERT_EQ(0, out.putObject(guid, HNKGUID::Writer(), std::string("uuid")));
    EXPECT_EQ("<r><uuid>3f2504e0-4f89-11d3-9a0c-0305e82c3301</uuid></r>", out.toXML());
    HNKGUID back;
    ASSERT_EQ(0, out.getObject(back, HNKGUID::Reader(), std::string("uuid")));
    EXPECT_EQ(guid, back);
}

TEST(HNKGUIDTest, ReaderRefusesMissingOrMalformedTextAndKeepsTheValue) {
    HNKMessageIterator it;
    ASSERT_EQ(0, it.fromXML("<r><uuid>not-a-guid</uuid><empty/></r>"));
    HNKGUID guid(1, 2);
    EXPECT_EQ(-1, it.getObject(guid, HNKGUID::Reader(), std::string("uuid")));
    EXPECT_EQ(-1, it.getObject(guid, HNKGUID::Reader(), std::string("empty")));
    EXPECT_EQ(-1, it.getObject(guid, HNKGUID::Reader(), std::string("missing")));
    EXPECT_EQ(HNKGUID(1, 2), guid);
}

} // namespace
