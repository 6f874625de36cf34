#include "HNKVtSettings.h"

#include "HNKMessageIterator.h"

HNK_INSTANTIATE_FACTORY_REGISTRY(HNKVtSettings);

namespace {
const int kRevision = 3021;
const int kServerName = 3022;
} // namespace

HNKVtSettings::~HNKVtSettings() {}

int HNKVtSettings::Reader::operator()(const HNKMessageIterator& it, HNKVtSettings& settings) const
{
    if (it.getValue(kRevision, settings.revision_) != 0)
        return -1;
    if (it.getValue(kServerName, settings.serverName_) != 0)
        return -1;
    return 0;
}

int HNKVtSettings::Writer::operator()(HNKMessageIterator& it, const HNKVtSettings& settings) const
{
    if (it.putValue(kRevision, settings.revision_) != 0)
        return -1;
    if (it.putValue(kServerName, settings.serverName_) != 0)
        return -1;
    return 0;
}
