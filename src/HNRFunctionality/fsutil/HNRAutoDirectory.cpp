#include "fsutil/HNRAutoDirectory.h"

#include <sys/stat.h>
#include <unistd.h>

namespace HNR {

HNRAutoDirectory::~HNRAutoDirectory()
{
    remove();
}

bool HNRAutoDirectory::create(const std::string& path)
{
    if (!remove())
        return false;
    if (::mkdir(path.c_str(), 0777) != 0)
        return false;
    path_ = path;
    return true;
}

bool HNRAutoDirectory::remove()
{
    if (path_.empty())
        return true;
    if (::rmdir(path_.c_str()) != 0)
        return false;
    path_.clear();
    return true;
}

} // namespace HNR
