#pragma once
// A directory owned for the lifetime of an object (the share client's mount
// points). Only an empty directory is ever removed, so an object can never
// take files with it.
#include <string>

namespace HNR {

class HNRAutoDirectory {
public:
    HNRAutoDirectory() = default;
    HNRAutoDirectory(const HNRAutoDirectory&) = delete;
    HNRAutoDirectory& operator=(const HNRAutoDirectory&) = delete;
    // Tries remove() once more; a directory that is still not empty stays.
    ~HNRAutoDirectory();

    // Gives up the held directory first (false, nothing created, when that
    // fails), then mkdir(path, 0777). On false errno tells why.
    bool create(const std::string& path);
    // True when nothing is held or rmdir succeeded; on false the path is kept
    // so that a later call (or the destructor) tries again. errno tells why.
    bool remove();
    // Empty when no directory is held.
    const std::string& getPath() const { return path_; }

private:
    std::string path_;
};

} // namespace HNR
