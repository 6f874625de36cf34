#include "HNKCommonDevice.h"

#include "HNKMessageIterator.h"

HNK_INSTANTIATE_FACTORY_REGISTRY(HNKCommonDevice);

namespace {
const int kDeviceName = 3001;
const int kDeviceDescription = 3002;
} // namespace

HNKCommonDevice* HNKCommonDevice::clone() const
{
    return new HNKCommonDevice(*this);
}

HNKCommonDevice::~HNKCommonDevice() {}

int HNKCommonDevice::Reader::operator()(const HNKMessageIterator& it, HNKCommonDevice& device) const
{
    if (it.getValue(kDeviceName, device.name_) != 0)
        return -1;
    if (it.getValue(kDeviceDescription, device.description_) != 0)
        return -1;
    return 0;
}

int HNKCommonDevice::Writer::operator()(HNKMessageIterator& it, const HNKCommonDevice& device) const
{
    if (it.putValue(kDeviceName, device.name_) != 0)
        return -1;
    if (it.putValue(kDeviceDescription, device.description_) != 0)
        return -1;
    return 0;
}
