#pragma once
// The framework's options of a backup: a description, the archive's name,
// the disks to back up, the patterns to leave out and, optionally, where the
// archive is stored. Platform modules extend it; the registry of its parser
// factories lives in libHNKFramework.
#include "HNKDSLocation.h"
#include "HNKDerivedParserFactory.h"
#include "HNKExcludeList.h"
#include "HNKOptionalProperty.h"
#include "HNKWriterBase.h"

#include <string>
#include <vector>

class HNKMessageIterator;

class HNKBackupOptions {
public:
    HNKBackupOptions() = default;
    HNKBackupOptions(const HNKBackupOptions&) = default;
    HNKBackupOptions& operator=(const HNKBackupOptions&) = default;
    virtual ~HNKBackupOptions();

    const std::string& getDescription() const { return description_; }
    void setDescription(const std::string& text) { description_ = text; }
    const std::string& getArchiveName() const { return archiveName_; }
    void setArchiveName(const std::string& name) { archiveName_ = name; }
    const std::vector<std::string>& getDisks() const { return disks_; }
    void setDisks(const std::vector<std::string>& disks) { disks_ = disks; }
    const HNKExcludeList& getExcludeList() const { return excludeList_; }
    void setExcludeList(const HNKExcludeList& list) { excludeList_ = list; }
    const HNKOptionalProperty<HNKDSLocation>& getLocation() const { return location_; }
    void setLocation(const HNKDSLocation& location) { location_.set(location); }
    void clearLocation() { location_.specify(false); }

    // Description and archive name are required; the disk list and the
    // exclude list may be missing (empty); the location is specified exactly
    // when its element is present, and a present but bad one is -1.
    class Reader {
    public:
        int operator()(const HNKMessageIterator& it, HNKBackupOptions& options) const;
    };
    // Writes every value, both lists also when empty, the location only when
    // specified. Stamps the framework's own type (282/107).
    class Writer : public HNKWriterBase {
    public:
        static unsigned getNSID() { return HNK_NS_BACKUP; }
        static unsigned getTypeID() { return HNK_TYPE_BACKUP_OPTIONS; }
        int operator()(HNKMessageIterator& it, const HNKBackupOptions& options) const;
    };

private:
    std::string description_;
    std::string archiveName_;
    std::vector<std::string> disks_;
    HNKExcludeList excludeList_;
    HNKOptionalProperty<HNKDSLocation> location_;
};

HNK_DECLARE_FACTORY_REGISTRY(HNKBackupOptions);
