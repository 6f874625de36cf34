#include "HNKVtInfo.h"

#include "HNKMessageIterator.h"

HNK_INSTANTIATE_FACTORY_REGISTRY(HNKVtInfo);

namespace {
const int kLayerType = 3011;
const int kMaxRunningVMs = 3012;
} // namespace

HNKVtInfo::~HNKVtInfo() {}

int HNKVtInfo::Reader::operator()(const HNKMessageIterator& it, HNKVtInfo& info) const
{
    if (it.getValue(kLayerType, info.layerType_) != 0)
        return -1;
    if (it.getValue(kMaxRunningVMs, info.maxRunningVMs_) != 0)
        return -1;
    return 0;
}

int HNKVtInfo::Writer::operator()(HNKMessageIterator& it, const HNKVtInfo& info) const
{
    if (it.putValue(kLayerType, info.layerType_) != 0)
        return -1;
    if (it.putValue(kMaxRunningVMs, info.maxRunningVMs_) != 0)
        return -1;
    return 0;
}
