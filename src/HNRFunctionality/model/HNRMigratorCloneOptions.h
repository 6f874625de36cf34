#pragma once
// The platform's relocation options, registered under the relocator
// namespace. The clone options add the clone's name, a linked-clone flag and
// the configuration of the virtual machine to create; the migration options
// add a bandwidth limit, a target host, a target path and operation flags.
//
// Kept asymmetry: the migration reader requires the target values (not the
// bandwidth limit); its writer never fails on them, only the framework
// part's result decides.
#include "HNKDerivedParserFactory.h"
#include "HNKMigratorCloneOptions.h"
#include "HNKOptionalProperty.h"
#include "HNKV2VMigrateOptions.h"
#include "HNKWriterBase.h"
#include "frame/HNRConstants.h"
#include "model/HNREnvConfig.h"
#include "model/HNRTargetValues.h"

#include <boost/shared_ptr.hpp>

#include <string>

class HNKMessageIterator;

namespace HNR {

class HNRMigratorCloneOptions : public HNKMigratorCloneOptions {
public:
    ~HNRMigratorCloneOptions() override;

    const std::string& getCloneName() const { return cloneName_; }
    void setCloneName(const std::string& name) { cloneName_ = name; }
    // Specified by every read: true exactly when the element is present.
    const HNKOptionalProperty<bool>& getLinkedClone() const { return linkedClone_; }
    HNKOptionalProperty<bool>& getLinkedClone() { return linkedClone_; }
    void setLinkedClone(bool linked) { linkedClone_.set(linked); }
    // Null when the options carry no (readable) configuration.
    const boost::shared_ptr<HNREnvConfig>& getConfiguration() const { return configuration_; }
    void setConfiguration(const boost::shared_ptr<HNREnvConfig>& config) { configuration_ = config; }

    // The clone's name is required (-1 at once, nothing else read); a
    // missing or bad configuration leaves a null pointer, never a half-read
    // one; then the flag; then the framework part, whose status is the
    // result.
    class Reader {
    public:
        int operator()(const HNKMessageIterator& it, HNRMigratorCloneOptions& options) const;
    };
    // The name (its failure is -1), the configuration if any and the flag if
    // true (outcomes ignored), then the framework part, whose status is the
    // result.
    class Writer : public HNKWriterBase {
    public:
        static const char* getStrNSID() { return kRelocatorNamespace; }
        static const char* getStrTypeID() { return "clone_optionsType"; }
        int operator()(HNKMessageIterator& it, const HNRMigratorCloneOptions& options) const;
    };

private:
    std::string cloneName_;
    HNKOptionalProperty<bool> linkedClone_;
    boost::shared_ptr<HNREnvConfig> configuration_;
};

class HNRV2VMigrateOptions : public HNKV2VMigrateOptions {
public:
    ~HNRV2VMigrateOptions() override;

    const HNKOptionalProperty<int>& getBandwidthLimit() const { return bandwidthLimit_; }
    HNKOptionalProperty<int>& getBandwidthLimit() { return bandwidthLimit_; }
    void setBandwidthLimit(int limit) { bandwidthLimit_.set(limit); }
    // getTargetHost / setTargetHost, getTargetPath / setTargetPath,
    // getOperationFlags / setOperationFlags.
    HNR_TARGET_VALUES_ACCESSORS(target_)

    // The bandwidth limit is specified exactly when it reads; then target
    // path, target host, flags (the first missing one is -1); then the
    // framework part, whose status is the result.
    class Reader {
    public:
        int operator()(const HNKMessageIterator& it, HNRV2VMigrateOptions& options) const;
    };
    // The limit if specified, the three values (outcomes ignored), then the
    // framework part, whose status is the result.
    class Writer : public HNKWriterBase {
    public:
        static const char* getStrNSID() { return kRelocatorNamespace; }
        static const char* getStrTypeID() { return "migrate_optionsType"; }
        int operator()(HNKMessageIterator& it, const HNRV2VMigrateOptions& options) const;
    };

private:
    HNKOptionalProperty<int> bandwidthLimit_;
    HNRTargetValues target_;
};

typedef HNKDerivedParserFactoryT<HNRMigratorCloneOptions, HNKMigratorCloneOptions, HNKMigratorCloneOptions,
                                 HNRMigratorCloneOptions::Reader, HNRMigratorCloneOptions::Writer>
    HNRMigratorCloneOptionsFactory;
typedef HNKDerivedParserFactoryT<HNRV2VMigrateOptions, HNKV2VMigrateOptions, HNKV2VMigrateOptions,
                                 HNRV2VMigrateOptions::Reader, HNRV2VMigrateOptions::Writer>
    HNRV2VMigrateOptionsFactory;

extern HNRMigratorCloneOptionsFactory factoryHNRMigratorCloneOptions;
extern HNRV2VMigrateOptionsFactory factoryHNRV2VMigrateOptions;

} // namespace HNR
