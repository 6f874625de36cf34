#pragma once
// The framework's options of a clone request: the folder the clone goes to
// and how its disks are copied. Platform modules extend it; the registry of
// its parser factories lives in libHNKFramework.
#include "HNKDerivedParserFactory.h"
#include "HNKWriterBase.h"

#include <string>

class HNKMessageIterator;

class HNKMigratorCloneOptions {
public:
    HNKMigratorCloneOptions() = default;
    HNKMigratorCloneOptions(const HNKMigratorCloneOptions&) = default;
    HNKMigratorCloneOptions& operator=(const HNKMigratorCloneOptions&) = default;
    virtual ~HNKMigratorCloneOptions();

    const std::string& getTargetFolder() const { return targetFolder_; }
    void setTargetFolder(const std::string& folder) { targetFolder_ = folder; }
    int getCopyMode() const { return copyMode_; }
    void setCopyMode(int mode) { copyMode_ = mode; }

    // Both values are required: a missing one is -1.
    class Reader {
    public:
        int operator()(const HNKMessageIterator& it, HNKMigratorCloneOptions& options) const;
    };
    // Stamps the framework's own type (294/275).
    class Writer : public HNKWriterBase {
    public:
        static unsigned getNSID() { return HNK_NS_RELOCATOR; }
        static unsigned getTypeID() { return HNK_TYPE_MIGRATOR_CLONE_OPTIONS; }
        int operator()(HNKMessageIterator& it, const HNKMigratorCloneOptions& options) const;
    };

private:
    std::string targetFolder_;
    int copyMode_ = 0;
};

HNK_DECLARE_FACTORY_REGISTRY(HNKMigratorCloneOptions);
