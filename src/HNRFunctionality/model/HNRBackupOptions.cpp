#include "model/HNRBackupOptions.h"

#include "HNKMessageIterator.h"

namespace HNR {

namespace {
const int kTargetHost = 1687;
const int kOperationFlags = 1704;
const int kTargetPath = 1962;
} // namespace

HNRBackupOptions::~HNRBackupOptions() {}

int HNRBackupOptions::Reader::operator()(const HNKMessageIterator& it, HNRBackupOptions& options) const
{
    if (it.getValue(kTargetPath, options.targetPath_) != 0 ||
        it.getValue(kTargetHost, options.targetHost_) != 0 ||
        it.getValue(kOperationFlags, options.operationFlags_) != 0)
        return -1;
    return it.getObject(static_cast<HNKBackupOptions&>(options), HNKBackupOptions::Reader(), std::string());
}

int HNRBackupOptions::Writer::operator()(HNKMessageIterator& it, const HNRBackupOptions& options) const
{
    // Outcomes deliberately ignored: only the framework part decides.
    it.putValue(kTargetPath, options.targetPath_);
    it.putValue(kTargetHost, options.targetHost_);
    it.putValue(kOperationFlags, options.operationFlags_);
    return it.putObject(static_cast<const HNKBackupOptions&>(options), HNKBackupOptions::Writer(), std::string());
}

HNRRestoreOptions::~HNRRestoreOptions() {}

int HNRRestoreOptions::Reader::operator()(const HNKMessageIterator& it, HNRRestoreOptions& options) const
{
    return it.getObject(static_cast<HNRBackupOptions&>(options), HNRBackupOptions::Reader(), std::string());
}

int HNRRestoreOptions::Writer::operator()(HNKMessageIterator& it, const HNRRestoreOptions& options) const
{
    return it.putObject(static_cast<const HNRBackupOptions&>(options), HNRBackupOptions::Writer(), std::string());
}

HNRBackupOptionsFactory factoryHNRBackupOptions(false);

} // namespace HNR
