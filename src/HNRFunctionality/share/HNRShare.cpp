// Mounting a share under a local directory: connect and disconnect.
#include "share/HNRShare.h"

#include <cerrno>
#include <cstring>
#include <exception>
#include <string>
#include <sys/stat.h>

#include <boost/filesystem/path.hpp>

#include "fsutil/HNRLocalFiles.h"
#include "share/HNRShareLocation.h"
#include "share/HNRSharePaths.h"
#include "share/HNRShareScript.h"
#include "share/HNRShareTools.h"

namespace fs = boost::filesystem;

namespace HNR {

namespace {

const int kMountPoints = 100;

} // namespace

HNRShareConnection::~HNRShareConnection()
{
    disconnect();
}

void HNRShareConnection::clearPaths()
{
    sharePath_.clear();
    connectedSharePath_.clear();
}

bool HNRShareConnection::disconnect()
{
    if (!isConnected())
        return true;
    if (!mountPoint_.getPath().empty() && !unmountApi(mountPoint_.getPath(), sharePath_))
        return failWithCurrentMessage("disconnect");
    // The empty mount point stays until the next mount or the destructor.
    clearPaths();
    return true;
}

bool HNRShareConnection::connect(const HNRShareParams& params)
{
    static const char kFunction[] = "connect";
    if (!disconnect())
        return false;
    try {
        if (!HNRShareScript::staysInside(kFunction, "Share path", params.path))
            return false;
        const fs::path path = createCanonized(params.path);
        if (!isCorrectShare(path)) {
            reportError(kFunction, "Invalid share path: '" + params.path + "'");
            return false;
        }
        const fs::path sharePath = getShareFromPath(path);
        const std::string share = sharePath.string();
        // Refused before any tool runs, the mount listing included.
        if (!mountArgumentsCarried(kFunction, share, params.login, params.password))
            return false;
        std::string mountDir;
        if (isMountExist(share, params.login, mountDir)) {
            // Someone else's mount: ours (left from an earlier connection) goes.
            mountPoint_.remove();
        } else {
            std::string candidate;
            bool created = false;
            for (int n = 0; n < kMountPoints && !created; ++n) {
                candidate = getMountRoot() + std::to_string(n);
                if (pathExists(candidate))
                    continue;
                if (mountPoint_.create(candidate)) {
                    created = true;
                } else if (errno != EEXIST) {
                    // Taken between the test and mkdir: try the next one.
                    reportError(kFunction, "Can't create mount point directory '" + candidate +
                                               "': " + std::strerror(errno));
                    return false;
                }
            }
            if (!created) {
                reportError(kFunction, "Can't acquire free mount point for share '" + params.path + "'");
                return false;
            }
            if (!mountApi(candidate, share, params.login, params.password)) {
                // Nothing mounted: the empty mount point goes at once.
                mountPoint_.remove();
                return failWithCurrentMessage(kFunction);
            }
            mountDir = candidate;
        }
        sharePath_ = share;
        connectedSharePath_ = mountDir;

        const fs::path inside = fs::path(mountDir) / getRelativeFromPath(path);
        struct stat st;
        if (::stat(inside.c_str(), &st) == 0)
            return true;
        const int error = errno;
        if (!disconnect())
            return false;
        mountPoint_.remove();
        reportError(kFunction, "Failed to open file '" + params.path + "' on share '" + getWinPathString(sharePath) +
                                   "':" + std::strerror(error));
        return false;
    } catch (const std::exception& e) {
        reportError(kFunction, "Failed to open file '" + params.path + "' on share:" + e.what());
        return false;
    }
}

} // namespace HNR
