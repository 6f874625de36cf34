// Share locations parsed once per operation.
#include "share/HNRShareLocation.h"

#include "share/HNRSharePaths.h"
#include "share/HNRShareScript.h"
#include "share/HNRShareTools.h"

namespace HNR {

namespace {

bool hasLineBreakOrNul(const std::string& text)
{
    return text.find_first_of(std::string("\n\r\0", 3)) != std::string::npos;
}

} // namespace

bool credentialsCarried(const char* function, const HNRShareParams& params)
{
    // smbclient splits "-U user%password" at the first '%'.
    if (params.login.find('%') != std::string::npos || hasLineBreakOrNul(params.login)) {
        reportError(function, "Can't run smbclient as '" + printableName(params.login) +
                                  "': the login holds '%', a line break or NUL");
        return false;
    }
    if (hasLineBreakOrNul(params.password)) {
        reportError(function, "Can't run smbclient: the password holds a line break or NUL");
        return false;
    }
    return true;
}

bool HNRShareLocation::parse(const char* function, const HNRShareParams& params)
{
    params_ = params;
    if (!HNRShareScript::staysInside(function, "Share path", params.path) || !credentialsCarried(function, params))
        return false;
    path_ = createCanonized(params.path);
    folder_ = relative(getRelativeFromPath(path_).string());
    return true;
}

bool HNRShareLocation::run(const std::string& command, std::string& output, GenExec* runner) const
{
    return smbclientApi(path_, params_.login, params_.password, command, output, runner);
}

std::string HNRShareLocation::relative(const std::string& name)
{
    std::string s = createCanonized(name).string();
    while (!s.empty() && s.front() == '/')
        s.erase(0, 1);
    return s;
}

std::string HNRShareLocation::join(const std::string& a, const std::string& b)
{
    if (a.empty())
        return b;
    if (b.empty())
        return a;
    return a + "/" + b;
}

std::string HNRShareLocation::parentOf(const std::string& relative)
{
    std::size_t slash = relative.rfind('/');
    return slash == std::string::npos ? std::string() : relative.substr(0, slash);
}

std::string HNRShareLocation::leafOf(const std::string& relative)
{
    std::size_t slash = relative.rfind('/');
    return slash == std::string::npos ? relative : relative.substr(slash + 1);
}

} // namespace HNR
