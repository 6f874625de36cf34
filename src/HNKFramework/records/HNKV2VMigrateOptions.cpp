#include "HNKV2VMigrateOptions.h"

#include "HNKMessageIterator.h"

HNK_INSTANTIATE_FACTORY_REGISTRY(HNKV2VMigrateOptions);

namespace {
const int kSourceHost = 3051;
const int kMode = 3052;
} // namespace

HNKV2VMigrateOptions::~HNKV2VMigrateOptions() {}

int HNKV2VMigrateOptions::Reader::operator()(const HNKMessageIterator& it, HNKV2VMigrateOptions& options) const
{
    if (it.getValue(kSourceHost, options.sourceHost_) != 0)
        return -1;
    if (it.getValue(kMode, options.mode_) != 0)
        return -1;
    return 0;
}

int HNKV2VMigrateOptions::Writer::operator()(HNKMessageIterator& it, const HNKV2VMigrateOptions& options) const
{
    if (it.putValue(kSourceHost, options.sourceHost_) != 0)
        return -1;
    if (it.putValue(kMode, options.mode_) != 0)
        return -1;
    return 0;
}
