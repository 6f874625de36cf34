#pragma once
// Internal to the share client (not installed): what a recursive listing of
// requested share paths says about them, for sizes, downloads and the check
// that every moved file arrived whole.
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace HNR {

class HNRShareLocation;
struct HNRListingBlock;

struct HNRShareRemotePath {
    std::string relative;      // slash form, relative to the location's folder
    bool isDirectory = false;
    std::uint64_t bytes = 0;   // the file, or every file below the folder
    // The same without names beginning with "." and what lies below them.
    std::uint64_t visibleBytes = 0;
    std::vector<std::string> entries; // a folder's own entries, no "." and ".."
    // Every file: ("" for the path itself when it is a file, else its path
    // below the folder in slash form, "sub/f"), size.
    std::vector<std::pair<std::string, std::uint64_t>> files;
};

class HNRShareRemoteTree {
public:
    // Lists every name (relative to loc's folder) recursively, in as few
    // smbclient runs as the argument limit allows (one for most calls).
    // False (message set, logged under function) when a name is refused, a
    // run fails or a name is not listed.
    bool describe(const char* function, const std::vector<std::string>& names, const HNRShareLocation& loc);
    const std::vector<HNRShareRemotePath>& paths() const { return paths_; }
    // smbclient runs the last describe() took.
    int runs() const { return runs_; }
    // Fills path from the block a recursive "ls" of it printed; fromRoot is
    // its name from the share root, slash form. False when the block lists
    // no matched entry.
    static bool readListed(const HNRListingBlock& block, const std::string& fromRoot, HNRShareRemotePath& path);

private:
    std::vector<HNRShareRemotePath> paths_;
    int runs_ = 0;
};

} // namespace HNR
