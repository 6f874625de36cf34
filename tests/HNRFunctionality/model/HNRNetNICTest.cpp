#include "model/HNRNetNIC.h"

#include "HNRFunctionality/model/RecordRoundTrip.h"

#include "HNKSerialization.h"

#include <gtest/gtest.h>

#include <boost/shared_ptr.hpp>

#include <string>
#include <typeinfo>

using namespace HNR;

namespace {

typedef HNKDerivedParserFactory<HNKNetDevice> NetFactory;
typedef HNKDerivedParserFactory<HNRNetworkServiceInfo> ServiceFactory;

const std::string kTypes = kTypesNamespace;
const std::string kXsi = "http://www.w3.org/2001/XMLSchema-instance";
const char kNICBase[] = "<net_device_name>vnic1</net_device_name><mac_address>00:1C:42:00:00:01</mac_address>"
                        "<nic_enabled>1</nic_enabled>";

std::string typed(const std::string& type, const std::string& body)
{
    return "<net_device xmlns:t='" + kTypes + "' xmlns:xsi='" + kXsi + "' xsi:type='t:" + type + "'>" + body +
           "</net_device>";
}

void expectSameNICBase(const HNKNetNIC& a, const HNKNetNIC& b)
{
    EXPECT_EQ(a.getName(), b.getName());
    EXPECT_EQ(a.getMacAddress(), b.getMacAddress());
    EXPECT_EQ(a.isEnabled(), b.isEnabled());
}

TEST(HNRNetNICTest, VirtualAdapterSampleSurvivesTheRoundTrip)
{
    RoundTrip<HNKNetDevice> trip = roundTripSample<HNKNetDevice>("virtual_net_nic.xml");
    ASSERT_TRUE(trip.first && trip.second);
    const HNRVirtualNetNIC& a = dynamic_cast<const HNRVirtualNetNIC&>(*trip.first);
    const HNRVirtualNetNIC& b = dynamic_cast<const HNRVirtualNetNIC&>(*trip.second);
    EXPECT_EQ("vnic0", a.getName());
    EXPECT_TRUE(a.isEnabled());
    EXPECT_EQ(3, a.getIndex());
    EXPECT_EQ("Host-Only Network #3", a.getFriendlyName());
    EXPECT_EQ("3f2504e0-4f89-11d3-9a0c-0305e82c3301", a.getUUID().toString());
    EXPECT_EQ("10.37.129.254", a.getDHCPEndIP());
    expectSameNICBase(a, b);
    EXPECT_EQ(a.getIndex(), b.getIndex());
    EXPECT_EQ(a.getFriendlyName(), b.getFriendlyName());
    EXPECT_EQ(a.getUUID(), b.getUUID());
    EXPECT_EQ(a.getDHCPStartIP(), b.getDHCPStartIP());
    EXPECT_EQ(a.getDHCPEndIP(), b.getDHCPEndIP());
    EXPECT_EQ(a.getDHCPMask(), b.getDHCPMask());
}

TEST(HNRNetNICTest, RealAdapterSampleSurvivesTheRoundTrip)
{
    RoundTrip<HNKNetDevice> trip = roundTripSample<HNKNetDevice>("real_net_nic.xml");
    ASSERT_TRUE(trip.first && trip.second);
    const HNRRealNetNIC& a = dynamic_cast<const HNRRealNetNIC&>(*trip.first);
    const HNRRealNetNIC& b = dynamic_cast<const HNRRealNetNIC&>(*trip.second);
    EXPECT_EQ("Intel I219-V Ethernet", a.getFriendlyName());
    EXPECT_EQ(2, a.getIndex());
    EXPECT_EQ("A4:BB:6D:12:90:EF", a.getMacAddress());
    expectSameNICBase(a, b);
    EXPECT_EQ(a.getFriendlyName(), b.getFriendlyName());
    EXPECT_EQ(a.getIndex(), b.getIndex());
}

TEST(HNRNetNICTest, NetworkServiceSampleSurvivesTheRoundTrip)
{
    RoundTrip<HNRNetworkServiceInfo> trip = roundTripSample<HNRNetworkServiceInfo>("network_service_info.xml");
    ASSERT_TRUE(trip.first && trip.second);
    EXPECT_EQ(2, trip.first->getState());
    EXPECT_EQ(trip.first->getState(), trip.second->getState());
}

TEST(HNRNetNICTest, VirtualAdapterWithOnlyTheBasePartKeepsItsDefaults)
{
    HNKMessageIterator it = parsedMessage(typed("virtual_net_nic", kNICBase));
    boost::shared_ptr<HNKNetDevice> dev;
    ASSERT_EQ(0, HNKReaderDerived<HNKNetDevice>(false)(it, dev));
    const HNRVirtualNetNIC& nic = dynamic_cast<const HNRVirtualNetNIC&>(*dev);
    EXPECT_EQ("vnic1", nic.getName());
    EXPECT_EQ(0, nic.getIndex());
    EXPECT_EQ("", nic.getFriendlyName());
    EXPECT_EQ(HNKGUID(), nic.getUUID());
    EXPECT_EQ("", nic.getDHCPStartIP());
    EXPECT_EQ("", nic.getDHCPEndIP());
    EXPECT_EQ("", nic.getDHCPMask());
}

TEST(HNRNetNICTest, UnreadableOwnFieldsAreIgnoredAndLeaveTheirValues)
{
    HNRVirtualNetNIC nic;
    nic.setIndex(9);
    nic.setUUID(HNKGUID(1, 2));
    HNKMessageIterator it = parsedMessage(std::string("<n>") + kNICBase +
                                          "<virtual_nic_index>many</virtual_nic_index><uuid>bad</uuid>"
                                          "<dhcp_mask>255.0.0.0</dhcp_mask></n>");
    ASSERT_EQ(0, HNRVirtualNetNIC::Reader()(it, nic));
    EXPECT_EQ(9, nic.getIndex());
    EXPECT_EQ(HNKGUID(1, 2), nic.getUUID());
    EXPECT_EQ("255.0.0.0", nic.getDHCPMask());
}

TEST(HNRNetNICTest, AdapterWithoutItsBasePartFails)
{
    HNKMessageIterator it = parsedMessage(typed("virtual_net_nic", "<friendly_name>f</friendly_name>"));
    HNRVirtualNetNIC nic;
    EXPECT_EQ(-1, HNRVirtualNetNIC::Reader()(it, nic));
    EXPECT_EQ("", nic.getFriendlyName());
    HNRRealNetNIC real;
    EXPECT_EQ(-1, HNRRealNetNIC::Reader()(it, real));
}

TEST(HNRNetNICTest, EmptyDHCPFieldsAreWrittenAsEmptyElementsInOrderAfterTheUUID)
{
    HNRVirtualNetNIC nic;
    HNKMessageIterator out("net_device");
    ASSERT_EQ(0, out.putObject(nic, HNKWriterDerived<HNKNetDevice>()));
    const std::string xml = out.toXML();
    const size_t uuid = xml.find("<uuid>00000000-0000-0000-0000-000000000000</uuid>");
    const size_t start = xml.find("<dhcp_start_ip></dhcp_start_ip>");
    const size_t end = xml.find("<dhcp_end_ip></dhcp_end_ip>");
    const size_t mask = xml.find("<dhcp_mask></dhcp_mask>");
    ASSERT_NE(std::string::npos, uuid) << xml;
    ASSERT_NE(std::string::npos, start) << xml;
    ASSERT_NE(std::string::npos, end) << xml;
    ASSERT_NE(std::string::npos, mask) << xml;
    EXPECT_LT(uuid, start);
    EXPECT_LT(start, end);
    EXPECT_LT(end, mask);
    // The integer and the friendly name come before the UUID, after the base part.
    EXPECT_LT(xml.find("<nic_enabled>"), xml.find("<virtual_nic_index>0</virtual_nic_index>"));
    EXPECT_LT(xml.find("<virtual_nic_index>"), xml.find("<friendly_name></friendly_name>"));
    EXPECT_LT(xml.find("<friendly_name>"), uuid);
    EXPECT_EQ(kTypes + ":virtual_net_nic", out.getTypeName());
}

TEST(HNRNetNICTest, RealAdapterWithoutItsIndexReadsWithIndexZero)
{
    HNKMessageIterator it = parsedMessage(typed("real_net_nic", std::string(kNICBase) + "<friendly_name>eth</friendly_name>"));
    boost::shared_ptr<HNKNetDevice> dev;
    ASSERT_EQ(0, HNKReaderDerived<HNKNetDevice>(false)(it, dev));
    const HNRRealNetNIC& nic = dynamic_cast<const HNRRealNetNIC&>(*dev);
    EXPECT_EQ(0, nic.getIndex());
    EXPECT_EQ("eth", nic.getFriendlyName());
    EXPECT_EQ(0, HNRRealNetNIC().getIndex());
}

TEST(HNRNetNICTest, NetworkServiceWithoutItsValueFailsAndNoObjectIsHandedOut)
{
    HNKMessageIterator it = parsedMessage(
        "<s xmlns:t='" + kTypes + "' xmlns:xsi='" + kXsi + "' xsi:type='t:network_service_info'/>");
    HNRNetworkServiceInfo info;
    info.setState(4);
    EXPECT_EQ(-1, HNRNetworkServiceInfo::Reader()(it, info));
    EXPECT_EQ(4, info.getState());

    HNRNetworkServiceInfo* raw = nullptr;
    EXPECT_EQ(-1, factoryHNRNetworkServiceInfo.read(it, raw));
    EXPECT_EQ(nullptr, raw);
    boost::shared_ptr<HNRNetworkServiceInfo> out;
    EXPECT_EQ(-1, HNKReaderDerived<HNRNetworkServiceInfo>(true)(it, out));
    EXPECT_FALSE(out);
}

TEST(HNRNetNICTest, NetworkServiceFactoryIsTheDefaultOfItsRegistry)
{
    EXPECT_EQ(&factoryHNRNetworkServiceInfo, ServiceFactory::defaultFactory());
    EXPECT_EQ(0, factoryHNRNetworkServiceInfo.createObject()->getState());
    // An element of an unknown type in this family reads as the service record.
    HNKMessageIterator it = parsedMessage("<s xmlns:t='" + kTypes + "' xmlns:xsi='" + kXsi +
                                          "' xsi:type='t:other_service'><network_service_state>1"
                                          "</network_service_state></s>");
    boost::shared_ptr<HNRNetworkServiceInfo> out;
    ASSERT_EQ(0, HNKReaderDerived<HNRNetworkServiceInfo>(true)(it, out));
    EXPECT_EQ(1, out->getState());
}

TEST(HNRNetNICTest, WritingAVirtualAdapterThroughTheRealFactoryFails)
{
    HNRVirtualNetNIC nic;
    HNKMessageIterator out("net_device");
    EXPECT_EQ(-1, factoryHNRRealNetNIC.write(out, &nic));
    EXPECT_EQ(-1, factoryHNRRealNetNIC.write(out, nullptr));
    EXPECT_EQ(-1, factoryHNRNetworkServiceInfo.write(out, nullptr));
    HNKNetNIC plain; // no factory of its own, and the device registry has no default
    EXPECT_EQ(-1, out.putObject(plain, HNKWriterDerived<HNKNetDevice>()));
}

TEST(HNRNetNICTest, AdapterFactoriesRegisterUnderTheNetDeviceRegistry)
{
    EXPECT_EQ(&factoryHNRVirtualNetNIC, NetFactory::factories().at(kTypes + ":virtual_net_nic"));
    EXPECT_EQ(&factoryHNRRealNetNIC, NetFactory::factories().at(kTypes + ":real_net_nic"));
    EXPECT_EQ(&factoryHNRNetworkServiceInfo, ServiceFactory::factories().at(kTypes + ":network_service_info"));
    EXPECT_EQ(nullptr, NetFactory::defaultFactory());
    EXPECT_EQ(167u, HNKNetNIC::Writer::getTypeID());
    EXPECT_EQ(292u, HNKNetNIC::Writer::getNSID());
    EXPECT_EQ(0u, HNRVirtualNetNIC::Writer::getNSID());
}

} // namespace
