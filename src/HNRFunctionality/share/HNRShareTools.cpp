// Runners of the external SMB tools and the SMB status table.
#include "share/HNRShareTools.h"

#include <vector>

#include "GenExec.h"
#include "HNKErrorMessage.h"
#include "HNKStringUtils.h"
#include "Logger.h"
#include "share/HNRShareListing.h"
#include "share/HNRShareParams.h"
#include "share/HNRShareScript.h"
#include "share/HNRSharePaths.h"

namespace fs = boost::filesystem;

namespace HNR {

namespace {

const char kStatusPrefix[] = "NT_STATUS_";
const char kMountOn[] = " on ";
const char kMountTypeCifs[] = " type cifs";

// Sets the error message and logs it as "[function] message" at error level.
// Hides the password should a tool ever echo it.
std::string scrub(std::string text, const std::string& password)
{
    if (password.empty())
        return text;
    size_t pos = 0;
    while ((pos = text.find(password, pos)) != std::string::npos) {
        text.replace(pos, password.size(), "***");
        pos += 3;
    }
    return text;
}

std::string trimTrailing(std::string text)
{
    size_t end = text.find_last_not_of(" \t\r\n");
    text.erase(end == std::string::npos ? 0 : end + 1);
    return text;
}

// A tool's own text when it printed any, else why the runner failed.
std::string failureText(const std::string& toolText, const std::string& runnerError)
{
    std::string text = trimTrailing(toolText);
    return text.empty() ? runnerError : text;
}

bool hasLineBreakOrNul(const std::string& text)
{
    return text.find_first_of(std::string("\n\r\0", 3)) != std::string::npos;
}

bool isStatusChar(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}

// A ';' between double quotes would still split the script there, and an
// unbalanced quote means a name carried one: either way a name broke out of
// its quotes, which callers must have refused (isSafeForSmbScript).
bool hasBrokenQuoting(const std::string& command)
{
    bool quoted = false;
    for (char c : command) {
        if (c == '"')
            quoted = !quoted;
        else if (c == ';' && quoted)
            return true;
    }
    return quoted;
}

// Both are fixed while the library loads, before any caller can read them.
const bool kLoaded = (getSmbStatusTable(), getMountRoot(), true);

} // namespace

void reportError(const char* function, const std::string& message)
{
    const std::string text = GenExec::stopRequested() ? std::string("cancelled") : message;
    setErrorMessage("%s", text.c_str());
    Logger::put(1, "[%s] %s", function, text.c_str());
}

bool failWithCurrentMessage(const char* function)
{
    if (GenExec::stopRequested())
        setErrorMessage("cancelled");
    Logger::put(1, "[%s] %s", function, getErrorMessage().c_str());
    return false;
}

const std::map<std::string, std::string>& getSmbStatusTable()
{
    // Texts kept as the agent has always shown them ("Path is already exist").
    static const std::map<std::string, std::string> table = {
        {"NT_STATUS_BAD_NETWORK_NAME", "Bad network name"},
        {"NT_STATUS_ACCESS_DENIED", "Access is denied"},
        {"NT_STATUS_LOGON_FAILURE", "Logon failure: unknown user name or bad password"},
        {"NT_STATUS_INVALID_COMPUTER_NAME", "Invalid computer name"},
        {"NT_STATUS_NO_LOGON_SERVERS", "No logon servers"},
        {"NT_STATUS_CANT_ACCESS_DOMAIN_INFO", "Can't access to domain info"},
        {"NT_STATUS_NO_SUCH_USER", "No such user"},
        {"NT_STATUS_END_OF_FILE", "End of file"},
        {"NT_STATUS_HOST_UNREACHABLE", "Host is unreachable"},
        {"NT_STATUS_PROTOCOL_UNREACHABLE", "Protocol is unreachable"},
        {"NT_STATUS_NO_SUCH_FILE", "No such file"},
        {"NT_STATUS_OBJECT_NAME_NOT_FOUND", "Path is not found"},
        {"NT_STATUS_OBJECT_PATH_NOT_FOUND", "Path is not found"},
        {"NT_STATUS_OBJECT_NAME_COLLISION", "Path is already exist"},
    };
    return table;
}

std::string getSmbStatusMessage(const std::string& statusName)
{
    const std::map<std::string, std::string>& table = getSmbStatusTable();
    auto it = table.find(statusName);
    return it != table.end() ? it->second : "Unknown error: " + statusName;
}

const std::string& getMountRoot()
{
    static const std::string root = getTempDir() + "mnt";
    return root;
}

bool isSafeForSmbScript(const std::string& text)
{
    return text.find_first_of(";\"") == std::string::npos && !hasLineBreakOrNul(text);
}

bool isSafeForMountOption(const std::string& text)
{
    return text.find(',') == std::string::npos && !hasLineBreakOrNul(text);
}

bool isMountExist(const std::string& share, const std::string& /*login*/, std::string& mountDir)
{
    HWExec exec;
    if (exec.execWithError({"mount", "-t", "cifs"}, 0, kToolTimeout) != 0) {
        reportError("isMountExist", "Failed to get mount list");
        return false;
    }
    const std::string wanted = toLower(share);
    for (const std::string& line : splitLines(exec.getOutput(GenExec::OUTPUT_STDOUT))) {
        if (line.size() < 2 || line.compare(0, 2, "//") != 0)
            continue;
        size_t on = line.find(kMountOn, 2);
        if (on == std::string::npos || on + sizeof(kMountOn) - 1 >= line.size())
            continue;
        size_t dirStart = on + sizeof(kMountOn) - 1;
        size_t type = line.rfind(kMountTypeCifs);
        if (type == std::string::npos || type < dirStart)
            continue;
        if (toLower(line.substr(0, on)) != wanted)
            continue;
        mountDir = line.substr(dirStart, type - dirStart);
        Logger::put(3, "[%s] Already mounted: %s", "isMountExist", mountDir.c_str());
        return true;
    }
    return false;
}

bool mountArgumentsCarried(const char* function, const std::string& share, const std::string& login,
                           const std::string& password)
{
    if (!isSafeForMountOption(share)) {
        reportError(function, "Can't mount share '" + printableName(share) +
                                  "': its name holds ',', a line break or NUL, which mount.cifs would misread");
        return false;
    }
    if (!isSafeForMountOption(login) || login.find('%') != std::string::npos) {
        reportError(function, "Can't mount share '" + share + "' as '" + printableName(login) +
                                  "': the login holds ',', '%', a line break or NUL, which mount.cifs would misread");
        return false;
    }
    if (!isSafeForMountOption(password)) {
        reportError(function, "Can't mount share '" + share +
                                  "': the password holds ',', a line break or NUL, which mount.cifs would misread");
        return false;
    }
    return true;
}

bool mountApi(const std::string& mountDir, const std::string& share, const std::string& login,
              const std::string& password)
{
    static const char kFunction[] = "mountApi";
    if (!mountArgumentsCarried(kFunction, share, login, password))
        return false;

    std::string user = login;
    canonizeLogin(user);
    for (char& c : user)
        if (c == '\\')
            c = '/';

    Logger::put(3, "[%s] Mounting samba share '%s' to directory '%s'", kFunction, share.c_str(), mountDir.c_str());
    HWExec exec;
    if (exec.execWithOutputError({"mount.cifs", share, mountDir, "-ouser=" + user + "%" + password}, 6,
                                 kToolTimeout) != 0) {
        std::string why = failureText(exec.getOutput(GenExec::OUTPUT_STDERR), getErrorMessage());
        reportError(kFunction, scrub("Failed to connect to network share '" + share + "': " + why, password));
        return false;
    }
    return true;
}

bool unmountApi(const std::string& mountDir, const std::string& share)
{
    HWExec exec;
    if (exec.execWithOutputError({"umount.cifs", mountDir}, 0, kToolTimeout) != 0) {
        std::string why = failureText(exec.getOutput(GenExec::OUTPUT_ALL), getErrorMessage());
        reportError("unmountApi", "Failed to disconnect from network share '" + share + "': " + why);
        return false;
    }
    return true;
}

bool smbclientApi(const fs::path& sharePath, const std::string& login, const std::string& password,
                  const std::string& command, std::string& output, GenExec* runner)
{
    static const char kFunction[] = "smbclientApi";
    if (!isCorrectShare(sharePath)) {
        reportError(kFunction, "Incorrect share path: " + getWinPathString(sharePath));
        return false;
    }
    if (!isSafeForSmbScript(sharePath.string())) {
        reportError(kFunction, "Can't run smbclient on share path '" + getWinPathString(sharePath) +
                                   "': it holds ';', '\"', a line break or NUL");
        return false;
    }
    // smbclient splits "-U user%password" at the first '%'.
    if (login.find('%') != std::string::npos || hasLineBreakOrNul(login)) {
        reportError(kFunction, "Can't run smbclient as '" + login + "': the login holds '%', a line break or NUL");
        return false;
    }
    if (hasLineBreakOrNul(password)) {
        reportError(kFunction, "Can't run smbclient: the password holds a line break or NUL");
        return false;
    }
    if (hasLineBreakOrNul(command)) {
        reportError(kFunction, "Can't run smbclient: the command holds a line break or NUL");
        return false;
    }
    if (hasBrokenQuoting(command)) {
        reportError(kFunction, "Can't run smbclient: a quoted name in command '" + command +
                                   "' holds ';' or '\"'");
        return false;
    }

    const std::string user = login.empty() ? std::string("guest") : login;
    const std::string share = getShareFromPath(sharePath).string();
    std::string relativeDir = getRelativeFromPath(sharePath).string();
    if (relativeDir.empty())
        relativeDir = "\\";
    const std::vector<std::string> argv = {"smbclient", share, "-U", user + "%" + password,
                                           "-D", relativeDir, "-c", command};

    if (runner) {
        if (runner->start(argv, GenExec::REPORT_STDOUT | GenExec::QUIET_STDERR) != 0) {
            reportError(kFunction, scrub("Failed execute command '" + command + "' on share '" + share +
                                             "': " + getErrorMessage(),
                                         password));
            return false;
        }
        return true;
    }

    HWExec exec;
    int rc = exec.execWithOutputError(argv, 0, kToolTimeout);
    std::string runnerError = rc != 0 ? getErrorMessage() : std::string();
    output = exec.getOutput(GenExec::OUTPUT_ALL);

    size_t status = output.find(kStatusPrefix);
    if (status != std::string::npos) {
        size_t end = status + sizeof(kStatusPrefix) - 1;
        while (end < output.size() && isStatusChar(output[end]))
            ++end;
        output = output.substr(status, end - status);
        reportError(kFunction, "Failed execute command '" + command + "' on share '" + share +
                                   "': " + getSmbStatusMessage(output));
        return false;
    }
    if (rc != 0) {
        reportError(kFunction, scrub("Failed execute command '" + command + "' on share '" + share +
                                         "': " + failureText(output, runnerError),
                                     password));
        return false;
    }
    Logger::put(3, "[%s] share '%s', relativeDir '%s', command '%s', output '%s'", kFunction, share.c_str(),
                relativeDir.c_str(), command.c_str(), scrub(output, password).c_str());
    return true;
}

bool runShareCommand(const HNRShareParams& params, const std::string& command, std::string& output,
                     GenExec* runner)
{
    return smbclientApi(createCanonized(params.path), params.login, params.password, command, output, runner);
}

} // namespace HNR
