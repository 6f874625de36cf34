#include "model/HNRMigratorCloneOptions.h"

#include "HNKMessageIterator.h"

namespace HNR {

namespace {
const int kCloneName = 1026;
const int kLinkedClone = 1152;
const int kConfiguration = 1185;
const int kBandwidthLimit = 2035;
} // namespace

// ---- HNRMigratorCloneOptions ----

HNRMigratorCloneOptions::~HNRMigratorCloneOptions() {}

int HNRMigratorCloneOptions::Reader::operator()(const HNKMessageIterator& it, HNRMigratorCloneOptions& options) const
{
    if (it.getValue(kCloneName, options.cloneName_) != 0)
        return -1;
    if (!options.configuration_)
        options.configuration_.reset(new HNREnvConfig(static_cast<const HNKMessageIterator*>(nullptr)));
    // The configuration reads through the framework's reader; a missing or
    // bad child is no error, but never leaves a half-read configuration.
    if (it.getObject(static_cast<HNKEnvConfig&>(*options.configuration_), HNKEnvConfig::Reader(), kConfiguration) != 0)
        options.configuration_.reset();
    options.linkedClone_.set(it.hasChild(kLinkedClone));
    return it.getObject(static_cast<HNKMigratorCloneOptions&>(options), HNKMigratorCloneOptions::Reader(),
                        std::string());
}

int HNRMigratorCloneOptions::Writer::operator()(HNKMessageIterator& it, const HNRMigratorCloneOptions& options) const
{
    if (it.putValue(kCloneName, options.cloneName_) != 0)
        return -1;
    // Outcomes deliberately ignored: only the name and the framework part decide.
    if (options.configuration_)
        it.putObject(*options.configuration_, HNREnvConfig::Writer(), kConfiguration);
    if (options.linkedClone_.isSpecified() && options.linkedClone_.get())
        it.putValue(kLinkedClone, "");
    return it.putObject(static_cast<const HNKMigratorCloneOptions&>(options), HNKMigratorCloneOptions::Writer(),
                        std::string());
}

// ---- HNRV2VMigrateOptions ----

HNRV2VMigrateOptions::~HNRV2VMigrateOptions() {}

int HNRV2VMigrateOptions::Reader::operator()(const HNKMessageIterator& it, HNRV2VMigrateOptions& options) const
{
    options.bandwidthLimit_.specify(it.getValue(kBandwidthLimit, options.bandwidthLimit_.value()) == 0);
    if (options.target_.read(it) != 0)
        return -1;
    return it.getObject(static_cast<HNKV2VMigrateOptions&>(options), HNKV2VMigrateOptions::Reader(),
                        std::string());
}

int HNRV2VMigrateOptions::Writer::operator()(HNKMessageIterator& it, const HNRV2VMigrateOptions& options) const
{
    // Outcomes deliberately ignored: only the framework part decides.
    if (options.bandwidthLimit_.isSpecified())
        it.putValue(kBandwidthLimit, options.bandwidthLimit_.get());
    options.target_.write(it);
    return it.putObject(static_cast<const HNKV2VMigrateOptions&>(options), HNKV2VMigrateOptions::Writer(),
                        std::string());
}

// Constructed in this order at load, destroyed in reverse order at unload.
HNRMigratorCloneOptionsFactory factoryHNRMigratorCloneOptions(false);
HNRV2VMigrateOptionsFactory factoryHNRV2VMigrateOptions(false);

} // namespace HNR
