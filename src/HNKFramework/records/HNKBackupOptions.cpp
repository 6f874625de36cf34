#include "HNKBackupOptions.h"

#include "HNKMessageIterator.h"

HNK_INSTANTIATE_FACTORY_REGISTRY(HNKBackupOptions);

namespace {
const int kDescription = 3061;
const int kArchiveName = 3062;
const int kDisks = 3063;
const int kDisk = 3064;
const int kExcludeList = 3065;
const int kLocation = 3067;
} // namespace

HNKBackupOptions::~HNKBackupOptions() {}

int HNKBackupOptions::Reader::operator()(const HNKMessageIterator& it, HNKBackupOptions& options) const
{
    if (it.getValue(kDescription, options.description_) != 0)
        return -1;
    if (it.getValue(kArchiveName, options.archiveName_) != 0)
        return -1;
    options.disks_.clear();
    HNKReaderListT<int, HNKStringReader> disks(kDisk, HNK_READER_ABSENCE_OK);
    if (HNKReaderID(disks, kDisks, HNK_READER_ABSENCE_OK)(it, options.disks_) != 0)
        return -1;
    options.excludeList_ = HNKExcludeList();
    if (HNKReaderID(HNKExcludeList::Reader(), kExcludeList, HNK_READER_ABSENCE_OK)(it, options.excludeList_) != 0)
        return -1;
    bool hasLocation = it.hasChild(kLocation);
    options.location_.specify(hasLocation);
    if (hasLocation && it.getObject(options.location_.value(), HNKDSLocation::Reader(), kLocation) != 0)
        return -1;
    return 0;
}

int HNKBackupOptions::Writer::operator()(HNKMessageIterator& it, const HNKBackupOptions& options) const
{
    if (it.putValue(kDescription, options.description_) != 0)
        return -1;
    if (it.putValue(kArchiveName, options.archiveName_) != 0)
        return -1;
    if (it.putObject(options.disks_, HNKWriterListOf(HNKStringWriter(), kDisk), kDisks) != 0)
        return -1;
    if (it.putObject(options.excludeList_, HNKExcludeList::Writer(), kExcludeList) != 0)
        return -1;
    if (options.location_.isSpecified() &&
        it.putObject(options.location_.get(), HNKDSLocation::Writer(), kLocation) != 0)
        return -1;
    return 0;
}
