#include "model/HNRNetNIC.h"

#include "HNKMessageIterator.h"

HNK_INSTANTIATE_FACTORY_REGISTRY(HNR::HNRNetworkServiceInfo);

namespace HNR {

namespace {
const int kVirtualNICIndex = 1007;
const int kNetworkServiceState = 1192;
const int kRealNICIndex = 1421;
} // namespace

// ---- HNRVirtualNetNIC ----

HNRVirtualNetNIC::~HNRVirtualNetNIC() {}

int HNRVirtualNetNIC::Reader::operator()(const HNKMessageIterator& it, HNRVirtualNetNIC& nic) const
{
    if (it.getObject(static_cast<HNKNetNIC&>(nic), HNKNetNIC::Reader(), std::string()) != 0)
        return -1;
    // Optional on input: a missing or unreadable value leaves its field as it was.
    it.getValue(kVirtualNICIndex, nic.index_);
    it.getValue("friendly_name", nic.friendlyName_);
    it.getObject(nic.uuid_, HNKGUID::Reader(), std::string("uuid"));
    it.getValue("dhcp_start_ip", nic.dhcpStartIP_);
    it.getValue("dhcp_end_ip", nic.dhcpEndIP_);
    it.getValue("dhcp_mask", nic.dhcpMask_);
    return 0;
}

int HNRVirtualNetNIC::Writer::operator()(HNKMessageIterator& it, const HNRVirtualNetNIC& nic) const
{
    if (it.putObject(static_cast<const HNKNetNIC&>(nic), HNKNetNIC::Writer(), std::string()) != 0 ||
        it.putValue(kVirtualNICIndex, nic.index_) != 0 ||
        it.putValue("friendly_name", nic.friendlyName_) != 0 ||
        it.putObject(nic.uuid_, HNKGUID::Writer(), std::string("uuid")) != 0 ||
        it.putValue("dhcp_start_ip", nic.dhcpStartIP_) != 0 ||
        it.putValue("dhcp_end_ip", nic.dhcpEndIP_) != 0 ||
        it.putValue("dhcp_mask", nic.dhcpMask_) != 0)
        return -1;
    return 0;
}

// ---- HNRRealNetNIC ----

HNRRealNetNIC::~HNRRealNetNIC() {}

int HNRRealNetNIC::Reader::operator()(const HNKMessageIterator& it, HNRRealNetNIC& nic) const
{
    if (it.getObject(static_cast<HNKNetNIC&>(nic), HNKNetNIC::Reader(), std::string()) != 0)
        return -1;
    it.getValue("friendly_name", nic.friendlyName_);
    it.getValue(kRealNICIndex, nic.index_);
    return 0;
}

int HNRRealNetNIC::Writer::operator()(HNKMessageIterator& it, const HNRRealNetNIC& nic) const
{
    if (it.putObject(static_cast<const HNKNetNIC&>(nic), HNKNetNIC::Writer(), std::string()) != 0 ||
        it.putValue("friendly_name", nic.friendlyName_) != 0 ||
        it.putValue(kRealNICIndex, nic.index_) != 0)
        return -1;
    return 0;
}

// ---- HNRNetworkServiceInfo ----

int HNRNetworkServiceInfo::Reader::operator()(const HNKMessageIterator& it, HNRNetworkServiceInfo& info) const
{
    return it.getValue(kNetworkServiceState, info.state_) == 0 ? 0 : -1;
}

int HNRNetworkServiceInfo::Writer::operator()(HNKMessageIterator& it, const HNRNetworkServiceInfo& info) const
{
    return it.putValue(kNetworkServiceState, info.state_) == 0 ? 0 : -1;
}

// Constructed in this order at load, destroyed in reverse order at unload.
HNRVirtualNetNICFactory factoryHNRVirtualNetNIC(false);
HNRRealNetNICFactory factoryHNRRealNetNIC(false);
HNRNetworkServiceInfoFactory factoryHNRNetworkServiceInfo(true);

} // namespace HNR
