#include "model/HNRMigratorCloneOptions.h"

#include "HNKMessageIterator.h"

namespace HNR {

namespace {
const int kTargetHost = 1687;
const int kOperationFlags = 1704;
const int kTargetPath = 1962;
const int kBandwidthLimit = 2035;
} // namespace

// ---- HNRV2VMigrateOptions ----

HNRV2VMigrateOptions::~HNRV2VMigrateOptions() {}

int HNRV2VMigrateOptions::Reader::operator()(const HNKMessageIterator& it, HNRV2VMigrateOptions& options) const
{
    options.bandwidthLimit_.specify(it.getValue(kBandwidthLimit, options.bandwidthLimit_.value()) == 0);
    if (it.getValue(kTargetPath, options.targetPath_) != 0 ||
        it.getValue(kTargetHost, options.targetHost_) != 0 ||
        it.getValue(kOperationFlags, options.operationFlags_) != 0)
        return -1;
    return it.getObject(static_cast<HNKV2VMigrateOptions&>(options), HNKV2VMigrateOptions::Reader(),
                        std::string());
}

int HNRV2VMigrateOptions::Writer::operator()(HNKMessageIterator& it, const HNRV2VMigrateOptions& options) const
{
    // Outcomes deliberately ignored: only the framework part decides.
    if (options.bandwidthLimit_.isSpecified())
        it.putValue(kBandwidthLimit, options.bandwidthLimit_.get());
    it.putValue(kTargetPath, options.targetPath_);
    it.putValue(kTargetHost, options.targetHost_);
    it.putValue(kOperationFlags, options.operationFlags_);
    return it.putObject(static_cast<const HNKV2VMigrateOptions&>(options), HNKV2VMigrateOptions::Writer(),
                        std::string());
}

// Constructed in this order at load, destroyed in reverse order at unload.
HNRV2VMigrateOptionsFactory factoryHNRV2VMigrateOptions(false);

} // namespace HNR
