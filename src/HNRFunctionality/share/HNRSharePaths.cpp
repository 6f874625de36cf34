// Share path forms: the static path operations of HNRShareConnection and the
// canonical-path helpers behind them.
#include "share/HNRSharePaths.h"

#include <algorithm>

#include "Base64.h"
#include "fsutil/HNRPathElements.h"
#include "share/HNRShare.h"

namespace fs = boost::filesystem;

namespace HNR {

namespace {

const char kSambaPrefix[] = "smb://";
const std::size_t kSambaPrefixLength = sizeof(kSambaPrefix) - 1;
const std::size_t kShareElements = 3;

std::string replaceAll(std::string s, char from, char to)
{
    std::replace(s.begin(), s.end(), from, to);
    return s;
}

} // namespace

fs::path createCanonized(const std::string& s)
{
    std::string slashes = replaceAll(s, '\\', '/');
    if (slashes.find_first_not_of('/') == std::string::npos)
        return fs::path();
    while (slashes.back() == '/')
        slashes.pop_back();
    return createPath(fs::path(slashes));
}

bool isCorrectShare(const fs::path& path)
{
    return getSize(path) > 2;
}

fs::path getShareFromPath(const fs::path& path)
{
    return createFromBegin(path, kShareElements);
}

fs::path getRelativeFromPath(const fs::path& path)
{
    return createToEnd(path, kShareElements);
}

std::string toBackslashes(std::string s)
{
    return replaceAll(std::move(s), '/', '\\');
}

std::string getWinPathString(const fs::path& path)
{
    return toBackslashes(path.string());
}

void canonizeLogin(std::string& login)
{
    std::size_t slash = login.find('/');
    if (slash != std::string::npos)
        login[slash] = '\\';
    if (login.find('\\') != std::string::npos)
        return;
    std::size_t at = login.find('@');
    if (at != std::string::npos)
        login = login.substr(at + 1) + '\\' + login.substr(0, at);
}

bool HNRShareConnection::isSambaPath(const std::string& s)
{
    return s.find(kSambaPrefix) != std::string::npos;
}

bool HNRShareConnection::isUNCPath(const std::string& s)
{
    return s.size() > 2 && s[0] == '\\' && s[1] == '\\';
}

std::string HNRShareConnection::convertToSamba(const HNRShareParams& params)
{
    std::string location = replaceAll(params.path.substr(std::min<std::size_t>(2, params.path.size())), '\\', '/');
    std::string userInfo;
    if (!params.isAnonymous())
        userInfo = Base64::encode(params.login) + ":" + Base64::encode(params.password) + "@";
    return kSambaPrefix + userInfo + location;
}

HNRShareParams HNRShareConnection::convertFromSamba(const std::string& s)
{
    HNRShareParams params;
    std::size_t prefix = s.find(kSambaPrefix);
    if (prefix == std::string::npos)
        return params;
    std::size_t start = prefix + kSambaPrefixLength;
    std::size_t pathStart = start;
    std::size_t colon = s.find(':', start);
    if (colon != std::string::npos) {
        std::size_t at = s.find('@', colon + 1);
        if (at == std::string::npos)
            return params;
        params.login = s.substr(start, colon - start);
        params.password = s.substr(colon + 1, at - colon - 1);
        // A failed decoding leaves the text as it was; the empty path marks the failure.
        if (!Base64::decode(params.login, params.login) || !Base64::decode(params.password, params.password)) {
            params.clear();
            return params;
        }
        pathStart = at + 1;
    }
    // Without a colon a "user@" stays in the server part: credentials are only
    // recognised in the login:password@ form.
    params.path = replaceAll("//" + s.substr(pathStart), '/', '\\');
    return params;
}

void HNRShareConnection::splitPath(const std::string& path, std::string& dir, std::string& name)
{
    fs::path canonized = createCanonized(path);
    dir = getWinPathString(canonized.parent_path());
    name = canonized.filename().string();
}

std::string HNRShareConnection::combinePath(const std::string& dir, const std::string& name)
{
    return getWinPathString(createCanonized(dir) / createCanonized(name));
}

std::string HNRShareConnection::canonizePath(const std::string& s)
{
    return createCanonized(s).string();
}

} // namespace HNR
