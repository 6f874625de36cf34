#pragma once
// The framework's options of a migration between hosts: the source host and
// the migration mode. Platform modules extend it; the registry of its parser
// factories lives in libHNKFramework.
#include "HNKDerivedParserFactory.h"
#include "HNKWriterBase.h"

#include <string>

class HNKMessageIterator;

class HNKV2VMigrateOptions {
public:
    HNKV2VMigrateOptions() = default;
    HNKV2VMigrateOptions(const HNKV2VMigrateOptions&) = default;
    HNKV2VMigrateOptions& operator=(const HNKV2VMigrateOptions&) = default;
    virtual ~HNKV2VMigrateOptions();

    const std::string& getSourceHost() const { return sourceHost_; }
    void setSourceHost(const std::string& host) { sourceHost_ = host; }
    int getMode() const { return mode_; }
    void setMode(int mode) { mode_ = mode; }

    // Both values are required: a missing one is -1.
    class Reader {
    public:
        int operator()(const HNKMessageIterator& it, HNKV2VMigrateOptions& options) const;
    };
    // Stamps the framework's own type (294/277).
    class Writer : public HNKWriterBase {
    public:
        static unsigned getNSID() { return HNK_NS_RELOCATOR; }
        static unsigned getTypeID() { return HNK_TYPE_V2V_MIGRATE_OPTIONS; }
        int operator()(HNKMessageIterator& it, const HNKV2VMigrateOptions& options) const;
    };

private:
    std::string sourceHost_;
    int mode_ = 0;
};

HNK_DECLARE_FACTORY_REGISTRY(HNKV2VMigrateOptions);
