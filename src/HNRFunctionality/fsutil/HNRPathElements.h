#pragma once
// Element-wise operations on filesystem paths. Boost splits "//srv/share/d"
// into "//srv", "/", "share", "d": a share path keeps its server at element 0,
// the root at 1, the share name at 2 and the path inside the share from 3 on.
#include <cstddef>

#include <boost/filesystem/path.hpp>

namespace HNR {

// Number of elements of the path.
std::size_t getSize(const boost::filesystem::path& path);
// The path rebuilt element by element: repeated separators collapse.
boost::filesystem::path createPath(const boost::filesystem::path& path);
// The first n elements (the whole path when it has fewer).
boost::filesystem::path createFromBegin(const boost::filesystem::path& path, std::size_t n);
// The elements from index n to the end (empty when it has n or fewer).
boost::filesystem::path createToEnd(const boost::filesystem::path& path, std::size_t n);

} // namespace HNR
