#include "HnrctlShare.h"

#include "Hnrctl.h"
#include "HnrctlCommandLine.h"
#include "HnrctlProgress.h"

#include "share/HNRShare.h"
#include "share/HNRShareListing.h"
#include "share/HNRSharePaths.h"
#include "share/HNRShareTools.h"

#include "HNKErrorMessage.h"

#include <boost/filesystem/operations.hpp>

#include <cinttypes>
#include <cstdio>
#include <fstream>
#include <iostream>

using namespace HNR;

namespace hnrctl {

namespace {

const char kPasswordHint[] = "set HNR_SMB_PASSWORD or use --password-file FILE";

// Outcome of preparing a command: go on, or stop with this exit status.
struct Prepared {
    bool ok = true;
    int status = kExitOk;
};

Prepared stop(int status)
{
    Prepared p;
    p.ok = false;
    p.status = status;
    return p;
}

// First line of the file, without its line break.
bool readPasswordFile(const std::string& file, std::string& password)
{
    std::ifstream in(file, std::ios::binary);
    if (!in || !std::getline(in, password))
        return false;
    if (!password.empty() && password.back() == '\r')
        password.pop_back();
    return true;
}

// params for path with the credentials of -U and HNR_SMB_PASSWORD or
// --password-file; guest without -U.
Prepared credentials(const HnrctlCommandLine& line, HnrctlContext& context, const std::string& command,
                     const std::string& path, HNRShareParams& params)
{
    if (!line.has("--user")) {
        params = HNRShareParams(path, "", "");
        return Prepared();
    }
    std::string login = line.value("--user");
    if (login.empty())
        return stop(reportUsage(context, command, "-U needs a user name"));
    if (login.find('%') != std::string::npos) {
        // smbclient's "user%password" form: the text after '%' is not repeated here.
        return stop(reportUsage(context, command,
                                std::string("-U takes the user name only (no '%'); for the password ") +
                                    kPasswordHint));
    }
    std::string password;
    if (line.has("--password-file")) {
        std::string file = line.value("--password-file");
        if (!readPasswordFile(file, password))
            return stop(reportFailure(context, command, "cannot read the password file '" + file + "'"));
    } else if (context.hasPasswordEnv) {
        password = context.passwordEnv;
    } else {
        return stop(reportUsage(context, command, std::string("-U ") + login + " needs a password: " + kPasswordHint));
    }
    if (password.empty()) {
        return stop(reportUsage(context, command,
                                "the password is empty; without a password the share is reached as guest: "
                                "leave out -U"));
    }
    params = HNRShareParams(path, login, password);
    return Prepared();
}

// A path that names at least a server and a share.
Prepared checkSharePath(HnrctlContext& context, const std::string& command, const std::string& path)
{
    if (!isCorrectShare(createCanonized(path)))
        return stop(reportUsage(context, command, "'" + path + "' is not a share path (\\\\server\\share[\\folder])"));
    return Prepared();
}

// PATH [NAME...]: the folder the library works in and the names inside it.
// Without NAMEs, PATH is split into its folder and its last element.
Prepared resolveTargets(const HnrctlCommandLine& line, HnrctlContext& context, const std::string& command,
                        std::string& folder, std::vector<std::string>& names)
{
    const std::vector<std::string>& ops = line.operands();
    Prepared p = checkSharePath(context, command, ops[0]);
    if (!p.ok)
        return p;
    if (ops.size() > 1) {
        folder = ops[0];
        names.assign(ops.begin() + 1, ops.end());
        return Prepared();
    }
    if (getRelativeFromPath(createCanonized(ops[0])).empty())
        return stop(reportUsage(context, command,
                                "'" + ops[0] + "' is the share itself: name a file or folder inside it"));
    std::string name;
    HNRShareConnection::splitPath(ops[0], folder, name);
    names.assign(1, name);
    return Prepared();
}

// The folder and names of the operands, then the credentials for the folder.
Prepared resolveTargetsAndCredentials(const HnrctlCommandLine& line, HnrctlContext& context,
                                      const std::string& command, std::string& folder,
                                      std::vector<std::string>& names, HNRShareParams& params)
{
    Prepared p = resolveTargets(line, context, command, folder, names);
    if (p.ok)
        p = credentials(line, context, command, folder, params);
    return p;
}

int failed(HnrctlContext& context, const std::string& command)
{
    std::string message = getErrorMessage();
    return reportFailure(context, command, message.empty() ? std::string("failed") : message);
}

} // namespace

int runShareCheck(const HnrctlCommandLine& line, HnrctlContext& context)
{
    const std::string command = "share check";
    const std::string& path = line.operands()[0];
    Prepared p = checkSharePath(context, command, path);
    HNRShareParams params;
    if (p.ok)
        p = credentials(line, context, command, path, params);
    if (!p.ok)
        return p.status;
    bool file = line.has("--file");
    if (!(file ? HNRShareConnection::checkFile(params) : HNRShareConnection::check(params)))
        return failed(context, command);
    if (file)
        *context.out << "ok: '" << path << "' exists\n";
    else
        *context.out << "ok: the share of '" << path << "' answers\n";
    return kExitOk;
}

int runShareLs(const HnrctlCommandLine& line, HnrctlContext& context)
{
    const std::string command = "share ls";
    const std::string& path = line.operands()[0];
    std::string pattern = line.operands().size() > 1 ? line.operands()[1] : "*";
    if (!isSafeForSmbScript(pattern))
        return reportUsage(context, command, "PATTERN must not hold ';', '\"' or a line break");
    Prepared p = checkSharePath(context, command, path);
    HNRShareParams params;
    if (p.ok)
        p = credentials(line, context, command, path, params);
    if (!p.ok)
        return p.status;
    std::string output;
    if (!runShareCommand(params, "prompt off; ls \"" + pattern + "\"", output, nullptr))
        return failed(context, command);
    std::vector<HNRListingBlock> blocks = parseListing(output);
    if (blocks.empty())
        return reportFailure(context, command, "smbclient printed no listing");
    size_t files = 0, folders = 0;
    std::uint64_t bytes = 0;
    char row[64];
    for (const HNRListingSection& section : blocks[0].sections) {
        for (const HNRListingEntry& e : section.entries) {
            if (e.isDotEntry())
                continue;
            std::snprintf(row, sizeof row, "%c %14" PRIu64 "  ", e.isDirectory() ? 'd' : '-', e.size);
            *context.out << row << e.name << "\n";
            if (e.isDirectory()) {
                ++folders;
            } else {
                ++files;
                bytes += e.size;
            }
        }
    }
    *context.out << files << " file(s), " << folders << " folder(s), " << bytes << " bytes in files\n";
    return kExitOk;
}

int runSharePut(const HnrctlCommandLine& line, HnrctlContext& context)
{
    const std::string command = "share put";
    const std::string& path = line.operands()[0];
    std::vector<std::string> locals(line.operands().begin() + 1, line.operands().end());
    Prepared p = checkSharePath(context, command, path);
    HNRShareParams params;
    if (p.ok)
        p = credentials(line, context, command, path, params);
    if (!p.ok)
        return p.status;
    HnrctlProgress progress(*context.err, "put", context.errIsTerminal);
    bool ok = HNRShareConnection::putFiles(locals, params, !line.has("--contents"), &progress);
    progress.finish();
    if (!ok)
        return failed(context, command);
    *context.out << "put " << locals.size() << " item(s) into " << path << "\n";
    return kExitOk;
}

int runShareGet(const HnrctlCommandLine& line, HnrctlContext& context)
{
    const std::string command = "share get";
    std::string folder;
    std::vector<std::string> names;
    HNRShareParams params;
    Prepared p = resolveTargetsAndCredentials(line, context, command, folder, names, params);
    if (!p.ok)
        return p.status;
    std::string localDir = line.value("--to", ".");
    boost::system::error_code ec;
    boost::filesystem::create_directories(localDir, ec);
    if (ec)
        return reportFailure(context, command, "cannot create local folder '" + localDir + "': " + ec.message());
    HnrctlProgress progress(*context.err, "get", context.errIsTerminal);
    bool ok = HNRShareConnection::getFiles(names, params, localDir, !line.has("--contents"), &progress);
    progress.finish();
    if (!ok)
        return failed(context, command);
    *context.out << "got " << names.size() << " item(s) into " << localDir << "\n";
    return kExitOk;
}

int runShareSize(const HnrctlCommandLine& line, HnrctlContext& context)
{
    const std::string command = "share size";
    std::string folder;
    std::vector<std::string> names;
    HNRShareParams params;
    Prepared p = resolveTargetsAndCredentials(line, context, command, folder, names, params);
    if (!p.ok)
        return p.status;
    std::uint64_t total = 0;
    if (!HNRShareConnection::size(names, params, total))
        return failed(context, command);
    *context.out << total << "\n";
    return kExitOk;
}

namespace {

int runDirCommand(const HnrctlCommandLine& line, HnrctlContext& context, bool create)
{
    const std::string command = create ? "share mkdir" : "share rmdir";
    std::string folder;
    std::vector<std::string> names;
    HNRShareParams params;
    Prepared p = resolveTargetsAndCredentials(line, context, command, folder, names, params);
    if (!p.ok)
        return p.status;
    const std::string& name = names[0];
    bool ok = create ? HNRShareConnection::createDir(name, params) : HNRShareConnection::removeDir(name, params);
    if (!ok)
        return failed(context, command);
    *context.out << (create ? "created " : "removed ") << HNRShareConnection::combinePath(folder, name) << "\n";
    return kExitOk;
}

} // namespace

int runShareMkdir(const HnrctlCommandLine& line, HnrctlContext& context) { return runDirCommand(line, context, true); }

int runShareRmdir(const HnrctlCommandLine& line, HnrctlContext& context) { return runDirCommand(line, context, false); }

int runShareUrl(const HnrctlCommandLine& line, HnrctlContext& context)
{
    const std::string command = "share url";
    const std::string& path = line.operands()[0];
    Prepared p = checkSharePath(context, command, path);
    if (!p.ok)
        return p.status;
    // The conversion takes the first two characters for the leading
    // backslashes without looking: hand it the UNC form.
    std::string unc = HNRShareConnection::canonizePath(path);
    for (char& c : unc) {
        if (c == '/')
            c = '\\';
    }
    HNRShareParams params(unc, "", "");
    bool withCredentials = line.has("--with-credentials");
    if (withCredentials) {
        if (!line.has("--user"))
            return reportUsage(context, command, "--with-credentials needs -U USER (and its password)");
        p = credentials(line, context, command, unc, params);
        if (!p.ok)
            return p.status;
    }
    *context.out << HNRShareConnection::convertToSamba(params) << "\n";
    if (withCredentials) {
        *context.err << "hnrctl: " << command
                     << ": warning: this URL holds the password, only Base64-encoded: anyone who sees it can "
                        "read it\n";
    }
    return kExitOk;
}

int runShareUnc(const HnrctlCommandLine& line, HnrctlContext& context)
{
    const std::string command = "share unc";
    const std::string& url = line.operands()[0];
    if (url.compare(0, 6, "smb://") != 0)
        return reportUsage(context, command, "URL must begin with smb://");
    HNRShareParams params = HNRShareConnection::convertFromSamba(url);
    if (params.isEmpty()) {
        return reportFailure(context, command,
                             "the URL does not read: credentials must be Base64(login) ':' Base64(password) '@'");
    }
    *context.out << params.path << "\n";
    if (!params.isAnonymous()) {
        *context.err << "hnrctl: " << command
                     << ": warning: the URL holds a login and a password, only Base64-encoded: anyone who sees "
                        "it can read them\n";
        if (line.has("--show-login"))
            *context.out << "login: " << params.login << "\n";
    } else if (line.has("--show-login")) {
        *context.out << "login: (none: guest)\n";
    }
    return kExitOk;
}

} // namespace hnrctl
