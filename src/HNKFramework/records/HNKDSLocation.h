#pragma once
// The framework's data-storage location of a backup: a path and the account
// that reaches it.
#include "HNKAuthName.h"
#include "HNKWriterBase.h"

#include <string>

class HNKMessageIterator;

class HNKDSLocation {
public:
    const std::string& getPath() const { return path_; }
    void setPath(const std::string& path) { path_ = path; }
    const HNKAuthName& getAuthName() const { return authName_; }
    HNKAuthName& getAuthName() { return authName_; }
    void setAuthName(const HNKAuthName& name) { authName_ = name; }

    // The path and the account child are required: a missing one is -1.
    class Reader {
    public:
        int operator()(const HNKMessageIterator& it, HNKDSLocation& location) const;
    };
    class Writer : public HNKWriterBase {
    public:
        int operator()(HNKMessageIterator& it, const HNKDSLocation& location) const;
    };

private:
    std::string path_;
    HNKAuthName authName_;
};
