#include "HNKIPAddress.h"

#include "HNKCompare.h"
#include "HNKErrorMessage.h"
#include "HNKSerialization.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

TEST(HNKIPAddressTest, ComparesAddressTextFirstThenPrefixLength)
{
    EXPECT_EQ(0, HNKIPAddress("10.0.0.1", 8).compare(HNKIPAddress("10.0.0.1", 8)));
    EXPECT_EQ(-1, HNKIPAddress("10.0.0.1", 32).compare(HNKIPAddress("10.0.0.2", 8)));
    EXPECT_EQ(1, HNKIPAddress("10.0.0.1", 24).compare(HNKIPAddress("10.0.0.1", 8)));
    std::vector<HNKIPAddress> a{HNKIPAddress("a", 1)}, b{HNKIPAddress("a", 1), HNKIPAddress("b", 1)};
    EXPECT_EQ(-1, compare(a, b)); // the framework's list compare goes through it
}

TEST(HNKIPAddressTest, ListRoundTripWithoutTypeStamps)
{
    std::vector<HNKIPAddress> ips{HNKIPAddress("192.168.1.10", 24), HNKIPAddress("fe80::1", 64)};
    HNKMessageIterator out("nic");
    ASSERT_EQ(0, out.putObject(ips, HNKWriterListOf(HNKIPAddress::Writer(), 2047)));
    EXPECT_EQ("<nic><ip_address><address>192.168.1.10</address><prefix_length>24</prefix_length></ip_address>"
              "<ip_address><address>fe80::1</address><prefix_length>64</prefix_length></ip_address></nic>",
              out.toXML());
    std::vector<HNKIPAddress> back;
    HNKReaderListT<int, HNKIPAddress::Reader> reader(2047, HNK_READER_ABSENCE_OK);
    ASSERT_EQ(0, out.getObject(back, reader));
    EXPECT_EQ(0, compare(ips, back));
}

TEST(HNKIPAddressTest, AddressAndPrefixAreRequired)
{
    HNKMessageIterator it;
    ASSERT_EQ(0, it.fromXML("<ip><address>1.2.3.4</address><prefix_length>x</prefix_length></ip>"));
    HNKIPAddress ip;
    EXPECT_EQ(-1, HNKIPAddress::Reader()(it, ip));
    ASSERT_EQ(0, it.fromXML("<ip><prefix_length>4</prefix_length></ip>"));
    EXPECT_EQ(-1, HNKIPAddress::Reader()(it, ip));
}

} // namespace
