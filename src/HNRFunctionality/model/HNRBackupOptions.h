#pragma once
// The platform's backup and restore options: the framework's backup options
// plus a target host, a target path and operation flags, registered under
// the backup namespace. A restore request carries the same record and
// travels as "backup_optionsType".
//
// Kept asymmetry: the reader requires the three values, the writer never
// fails on them (only the framework part's result decides).
#include "HNKBackupOptions.h"
#include "HNKDerivedParserFactory.h"
#include "HNKWriterBase.h"
#include "frame/HNRConstants.h"
#include "model/HNRTargetValues.h"

#include <string>

class HNKMessageIterator;

namespace HNR {

class HNRBackupOptions : public HNKBackupOptions {
public:
    ~HNRBackupOptions() override;

    // getTargetHost / setTargetHost, getTargetPath / setTargetPath,
    // getOperationFlags / setOperationFlags.
    HNR_TARGET_VALUES_ACCESSORS(target_)

    // Target path, target host, flags (the first missing one is -1), then
    // the framework part, whose status is the result.
    class Reader {
    public:
        int operator()(const HNKMessageIterator& it, HNRBackupOptions& options) const;
    };
    // The three values (outcomes ignored), then the framework part, whose
    // status is the result.
    class Writer : public HNKWriterBase {
    public:
        static const char* getStrNSID() { return kBackupNamespace; }
        static const char* getStrTypeID() { return "backup_optionsType"; }
        int operator()(HNKMessageIterator& it, const HNRBackupOptions& options) const;
    };

private:
    HNRTargetValues target_;
};

// Adds nothing: read and written as the backup options they are.
class HNRRestoreOptions : public HNRBackupOptions {
public:
    ~HNRRestoreOptions() override;

    class Reader {
    public:
        int operator()(const HNKMessageIterator& it, HNRRestoreOptions& options) const;
    };
    // No type name of its own: the backup writer stamps "backup_optionsType".
    class Writer : public HNKWriterBase {
    public:
        int operator()(HNKMessageIterator& it, const HNRRestoreOptions& options) const;
    };
};

typedef HNKDerivedParserFactoryT<HNRBackupOptions, HNKBackupOptions, HNKBackupOptions, HNRBackupOptions::Reader,
                                 HNRBackupOptions::Writer>
    HNRBackupOptionsFactory;

extern HNRBackupOptionsFactory factoryHNRBackupOptions;

} // namespace HNR
