#include "model/HNRBackupOptions.h"

#include "HNKMessageIterator.h"

namespace HNR {

HNRBackupOptions::~HNRBackupOptions() {}

int HNRBackupOptions::Reader::operator()(const HNKMessageIterator& it, HNRBackupOptions& options) const
{
    if (options.target_.read(it) != 0)
        return -1;
    return it.getObject(static_cast<HNKBackupOptions&>(options), HNKBackupOptions::Reader(), std::string());
}

int HNRBackupOptions::Writer::operator()(HNKMessageIterator& it, const HNRBackupOptions& options) const
{
    // Outcomes deliberately ignored: only the framework part decides.
    options.target_.write(it);
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
