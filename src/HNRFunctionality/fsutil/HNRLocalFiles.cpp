#include "fsutil/HNRLocalFiles.h"

#include <sys/stat.h>
#include <sys/statfs.h>

#include <boost/filesystem/operations.hpp>

#include "GenExec.h"
#include "HNKErrorMessage.h"
#include "Logger.h"

namespace fs = boost::filesystem;
using boost::system::error_code;

namespace HNR {

namespace {

const int kLogError = 1;

// Boost sets ec for a missing path too (ENOENT, or ENOTDIR for "file/child");
// only a status it could not classify is an error here.
fs::file_status statusOf(const fs::path& path, error_code& ec)
{
    fs::file_status st = fs::status(path, ec);
    if (st.type() != fs::status_error)
        ec.clear();
    return st;
}

// Size of one local path; false with ec set on a filesystem error.
bool measurePath(const fs::path& path, std::uint64_t& size, error_code& ec)
{
    size = 0;
    fs::file_status st = statusOf(path, ec);
    if (ec)
        return false;
    if (!fs::exists(st))
        return true;
    if (fs::is_regular_file(st)) {
        size = fs::file_size(path, ec);
        return !ec;
    }
    // Devices, fifos and sockets hold no data of their own.
    if (!fs::is_directory(st))
        return true;

    fs::recursive_directory_iterator it(path, ec);
    const fs::recursive_directory_iterator end;
    if (ec)
        return false;
    while (it != end) {
        // A caller's cancellation (HNRCancellationScope) also stops a long walk.
        if (GenExec::stopRequested()) {
            ec = boost::system::errc::make_error_code(boost::system::errc::operation_canceled);
            return false;
        }
        fs::file_status entry = statusOf(it->path(), ec);
        if (ec)
            return false;
        if (fs::is_regular_file(entry)) {
            std::uint64_t n = fs::file_size(it->path(), ec);
            if (ec)
                return false;
            size += n;
        }
        it.increment(ec);
        if (ec)
            return false;
    }
    return true;
}

} // namespace

std::uint64_t getDirFreeSpace(const fs::path& path)
{
    struct statfs64 st;
    if (::statfs64(path.c_str(), &st) != 0)
        return 0;
    return static_cast<std::uint64_t>(st.f_bsize) * static_cast<std::uint64_t>(st.f_bfree);
}

bool getSizeRecursiveLocal(const std::vector<std::string>& files, std::uint64_t& total)
{
    total = 0;
    for (const std::string& file : files) {
        std::uint64_t size = 0;
        error_code ec;
        if (!measurePath(file, size, ec)) {
            if (GenExec::stopRequested())
                setErrorMessage("cancelled");
            else
                setErrorMessage("Can't get path size for '%s': %s", file.c_str(), ec.message().c_str());
            Logger::put(kLogError, "[%s] %s", "getSizeRecursiveLocal", getErrorMessage().c_str());
            return false;
        }
        total += size;
    }
    return true;
}

bool checkFilesLocal(const std::vector<std::string>& files)
{
    for (const std::string& file : files) {
        error_code ec;
        bool exists = fs::exists(statusOf(file, ec));
        if (ec) {
            // Deliberately logged only: the caller's previous message stands.
            Logger::put(kLogError, "[%s] Can't check files locally for '%s': %s", "checkFilesLocal",
                        file.c_str(), ec.message().c_str());
            return false;
        }
        if (!exists) {
            setErrorMessage("File '%s' does not exist", file.c_str());
            Logger::put(kLogError, "[%s] %s", "checkFilesLocal", getErrorMessage().c_str());
            return false;
        }
    }
    return true;
}

bool pathExists(const fs::path& path)
{
    struct stat st;
    return ::stat(path.c_str(), &st) == 0;
}

} // namespace HNR
