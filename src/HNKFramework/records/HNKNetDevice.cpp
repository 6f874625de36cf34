#include "HNKNetDevice.h"

#include "HNKMessageIterator.h"

HNK_INSTANTIATE_FACTORY_REGISTRY(HNKNetDevice);

namespace {
const int kNetDeviceName = 3031;
} // namespace

HNKNetDevice::~HNKNetDevice() {}

int HNKNetDevice::Reader::operator()(const HNKMessageIterator& it, HNKNetDevice& device) const
{
    return it.getValue(kNetDeviceName, device.name_) == 0 ? 0 : -1;
}

int HNKNetDevice::Writer::operator()(HNKMessageIterator& it, const HNKNetDevice& device) const
{
    return it.putValue(kNetDeviceName, device.name_) == 0 ? 0 : -1;
}
