#pragma once
// Local sizes, existence and free space, as the share client checks them
// before and during transfers. Nothing here throws: filesystem errors become
// a false result with a log line (and an error message where said).
#include <cstdint>
#include <string>
#include <vector>

#include <boost/filesystem/path.hpp>

namespace HNR {

// Free bytes of the filesystem holding path, 0 when statfs fails. Counts the
// blocks reserved for the superuser too: the agent writes as root.
std::uint64_t getDirFreeSpace(const boost::filesystem::path& path);

// total := the summed size of every file or tree (missing ones count 0,
// files their apparent size, trees the regular files met in them, symlinks
// to files their target). False on a filesystem error, with an error message.
bool getSizeRecursiveLocal(const std::vector<std::string>& files, std::uint64_t& total);

// True when every file exists. A missing file sets the error message; a
// filesystem error is only logged.
bool checkFilesLocal(const std::vector<std::string>& files);

// True when stat succeeds (a dangling symlink does not exist).
bool pathExists(const boost::filesystem::path& path);

} // namespace HNR
