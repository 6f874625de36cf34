#pragma once
// The platform's relocation options, registered under the relocator
// namespace: the migration options add a bandwidth limit, a target host, a
// target path and operation flags to the framework's.
//
// Kept asymmetry: the migration reader requires the target values (not the
// bandwidth limit); its writer never fails on them, only the framework
// part's result decides.
#include "HNKDerivedParserFactory.h"
#include "HNKOptionalProperty.h"
#include "HNKV2VMigrateOptions.h"
#include "HNKWriterBase.h"
#include "frame/HNRConstants.h"

#include <string>

class HNKMessageIterator;

namespace HNR {

class HNRV2VMigrateOptions : public HNKV2VMigrateOptions {
public:
    ~HNRV2VMigrateOptions() override;

    const HNKOptionalProperty<int>& getBandwidthLimit() const { return bandwidthLimit_; }
    HNKOptionalProperty<int>& getBandwidthLimit() { return bandwidthLimit_; }
    void setBandwidthLimit(int limit) { bandwidthLimit_.set(limit); }
    const std::string& getTargetHost() const { return targetHost_; }
    void setTargetHost(const std::string& host) { targetHost_ = host; }
    const std::string& getTargetPath() const { return targetPath_; }
    void setTargetPath(const std::string& path) { targetPath_ = path; }
    int getOperationFlags() const { return operationFlags_; }
    void setOperationFlags(int flags) { operationFlags_ = flags; }

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
    std::string targetHost_;
    std::string targetPath_;
    int operationFlags_ = 0;
};

typedef HNKDerivedParserFactoryT<HNRV2VMigrateOptions, HNKV2VMigrateOptions, HNKV2VMigrateOptions,
                                 HNRV2VMigrateOptions::Reader, HNRV2VMigrateOptions::Writer>
    HNRV2VMigrateOptionsFactory;

extern HNRV2VMigrateOptionsFactory factoryHNRV2VMigrateOptions;

} // namespace HNR
