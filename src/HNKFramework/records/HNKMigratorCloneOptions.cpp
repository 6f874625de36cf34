#include "HNKMigratorCloneOptions.h"

#include "HNKMessageIterator.h"

HNK_INSTANTIATE_FACTORY_REGISTRY(HNKMigratorCloneOptions);

namespace {
const int kTargetFolder = 3041;
const int kCopyMode = 3042;
} // namespace

HNKMigratorCloneOptions::~HNKMigratorCloneOptions() {}

int HNKMigratorCloneOptions::Reader::operator()(const HNKMessageIterator& it,
                                                HNKMigratorCloneOptions& options) const
{
    if (it.getValue(kTargetFolder, options.targetFolder_) != 0)
        return -1;
    if (it.getValue(kCopyMode, options.copyMode_) != 0)
        return -1;
    return 0;
}

int HNKMigratorCloneOptions::Writer::operator()(HNKMessageIterator& it,
                                                const HNKMigratorCloneOptions& options) const
{
    if (it.putValue(kTargetFolder, options.targetFolder_) != 0)
        return -1;
    if (it.putValue(kCopyMode, options.copyMode_) != 0)
        return -1;
    return 0;
}
