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
    m_path = path;
    return true;
}

bool HNRAutoDirectory::remove()
{
    if (m_path.empty())
        return true;
    if (::rmdir(m_path.c_str()) != 0)
        return false;
    m_path.clear();
    return true;
}

} // namespace HNR
