#include "HNKNetNIC.h"

#include "HNKMessageIterator.h"

namespace {
const int kMacAddress = 3032;
const int kEnabled = 3033;
} // namespace

HNKNetNIC::~HNKNetNIC() {}

int HNKNetNIC::Reader::operator()(const HNKMessageIterator& it, HNKNetNIC& nic) const
{
    if (it.getObject(static_cast<HNKNetDevice&>(nic), HNKNetDevice::Reader()) != 0)
        return -1;
    if (it.getValue(kMacAddress, nic.macAddress_) != 0)
        return -1;
    if (it.getValue(kEnabled, nic.enabled_) != 0)
        return -1;
    return 0;
}

int HNKNetNIC::Writer::operator()(HNKMessageIterator& it, const HNKNetNIC& nic) const
{
    if (it.putObject(static_cast<const HNKNetDevice&>(nic), HNKNetDevice::Writer()) != 0)
        return -1;
    if (it.putValue(kMacAddress, nic.macAddress_) != 0)
        return -1;
    if (it.putValue(kEnabled, nic.enabled_) != 0)
        return -1;
    return 0;
}
