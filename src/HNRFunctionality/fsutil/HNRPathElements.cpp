#include "fsutil/HNRPathElements.h"

#include <iterator>

namespace fs = boost::filesystem;

namespace HNR {

std::size_t getSize(const fs::path& path)
{
    return static_cast<std::size_t>(std::distance(path.begin(), path.end()));
}

fs::path createPath(const fs::path& path)
{
    return createFromBegin(path, getSize(path));
}

fs::path createFromBegin(const fs::path& path, std::size_t n)
{
    fs::path result;
    std::size_t i = 0;
    for (auto it = path.begin(); it != path.end() && i < n; ++it, ++i)
        result /= *it;
    return result;
}

fs::path createToEnd(const fs::path& path, std::size_t n)
{
    fs::path result;
    std::size_t i = 0;
    for (auto it = path.begin(); it != path.end(); ++it, ++i) {
        if (i >= n)
            result /= *it;
    }
    return result;
}

} // namespace HNR
