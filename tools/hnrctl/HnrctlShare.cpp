#include "HnrctlShare.h"

#include "Hnrctl.h"
#include "HnrctlCommandLine.h"
#include "HnrctlProgress.h"

#include "share/HNRShare.h"

#include "HNKErrorMessage.h"

#include <boost/filesystem/operations.hpp>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <fstream>

#include <fnmatch.h>
#include <iostream>
#include <sstream>

using namespace HNR;

namespace hnrctl {

namespace {

const char kPasswordHint[] = "set HNR_SMB_PASSWORD or use --password-file FILE or -A FILE";

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

std::string trim(const std::string& text)
{
    size_t begin = text.find_first_not_of(" \t\r");
    if (begin == std::string::npos)
        return std::string();
    size_t end = text.find_last_not_of(" \t\r");
    return text.substr(begin, end - begin + 1);
}

// smbclient's authentication file: "username = U", "password = P",
// "domain = D", one a line. False with why; the password is never quoted.
bool readAuthenticationFile(const std::string& file, std::string& user, std::string& password,
                            std::string& domain, std::string& why)
{
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        why = "cannot read the authentication file '" + file + "'";
        return false;
    }
    std::string line;
    int number = 0;
    while (std::getline(in, line)) {
        ++number;
        std::string text = trim(line);
        if (text.empty() || text[0] == '#' || text[0] == ';')
            continue;
        size_t eq = text.find('=');
        std::string key = eq == std::string::npos ? text : trim(text.substr(0, eq));
        std::string value = eq == std::string::npos ? std::string() : trim(text.substr(eq + 1));
        if (eq == std::string::npos || (key != "username" && key != "password" && key != "domain")) {
            why = "the authentication file '" + file + "' does not read at line " + std::to_string(number) +
                  ": expected 'username = ...', 'password = ...' or 'domain = ...'";
            return false;
        }
        (key == "username" ? user : key == "password" ? password : domain) = value;
    }
    if (in.bad()) {
        why = "cannot read the authentication file '" + file + "'";
        return false;
    }
    if (user.empty()) {
        why = "the authentication file '" + file + "' names no username";
        return false;
    }
    return true;
}

// params for path with the credentials of -U or -A, the password from -A,
// HNR_SMB_PASSWORD, --password-file or a prompt; guest without -U and -A.
Prepared credentials(const HnrctlCommandLine& line, HnrctlContext& context, const std::string& command,
                     const std::string& path, HNRShareParams& params)
{
    std::string login, password, domain;
    bool havePassword = false;
    if (line.has("--authentication-file")) {
        std::string why;
        if (!readAuthenticationFile(line.value("--authentication-file"), login, password, domain, why))
            return stop(reportFailure(context, command, why));
        havePassword = !password.empty();
    }
    if (!line.has("--user") && login.empty()) {
        params = HNRShareParams(path, "", "");
        return Prepared();
    }
    if (line.has("--user"))
        login = line.value("--user");
    if (login.empty())
        return stop(reportUsage(context, command, "-U needs a user name"));
    if (login.find('%') != std::string::npos) {
        // smbclient's "user%password" form: the text after '%' is not repeated here.
        return stop(reportUsage(context, command,
                                std::string("-U takes the user name only (no '%'); for the password ") +
                                    kPasswordHint));
    }
    if (!domain.empty() && login.find_first_of("\\/@") == std::string::npos)
        login = domain + "\\" + login;
    if (havePassword) {
        // from -A
    } else if (line.has("--password-file")) {
        std::string file = line.value("--password-file");
        if (!readPasswordFile(file, password))
            return stop(reportFailure(context, command, "cannot read the password file '" + file + "'"));
    } else if (context.hasPasswordEnv) {
        password = context.passwordEnv;
    } else if (!context.promptPassword || !context.promptPassword(login, password)) {
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

// The parts of a share path in slash form: server, share, path inside.
struct ShareParts {
    std::string server, share, inside;
};

// Splits a path of any form: UNC, slash or smb:// URL (without credentials).
bool splitShare(const std::string& operand, ShareParts& parts)
{
    std::string path = operand;
    if (path.compare(0, 6, "smb://") == 0) {
        path = "//" + path.substr(6);
    } else if (path.find_first_not_of("\\/") == std::string::npos) {
        return false; // only separators
    }
    for (char& c : path) {
        if (c == '\\')
            c = '/';
    }
    if (path.compare(0, 2, "//") != 0 || path.size() < 3 || path[2] == '/')
        return false;
    size_t serverEnd = path.find('/', 2);
    if (serverEnd == std::string::npos)
        return false;
    parts.server = path.substr(2, serverEnd - 2);
    size_t shareStart = path.find_first_not_of('/', serverEnd);
    if (shareStart == std::string::npos)
        return false;
    size_t shareEnd = path.find('/', shareStart);
    parts.share = path.substr(shareStart, shareEnd == std::string::npos ? std::string::npos : shareEnd - shareStart);
    std::string inside;
    if (shareEnd != std::string::npos) {
        // Collapse repeated separators; drop trailing ones.
        for (size_t i = shareEnd; i < path.size(); ++i) {
            if (path[i] == '/' && (inside.empty() || inside.back() == '/'))
                continue;
            inside += path[i];
        }
        while (!inside.empty() && inside.back() == '/')
            inside.pop_back();
    }
    parts.inside = inside;
    return true;
}

std::string uncOf(const ShareParts& p)
{
    std::string unc = "\\\\" + p.server + "\\" + p.share;
    if (!p.inside.empty()) {
        std::string inside = p.inside;
        std::replace(inside.begin(), inside.end(), '/', '\\');
        unc += "\\" + inside;
    }
    return unc;
}

// A path of any form that names at least a server and a share, in the UNC
// form the library takes.
Prepared checkSharePath(HnrctlContext& context, const std::string& command, const std::string& operand,
                        std::string* unc = nullptr, ShareParts* partsOut = nullptr)
{
    if (operand.compare(0, 6, "smb://") == 0) {
        HNRShareParams fromUrl = HNRShareConnection::convertFromSamba(operand);
        if (!fromUrl.isAnonymous() || (fromUrl.isEmpty() && operand.find('@') != std::string::npos)) {
            return stop(reportUsage(context, command,
                                    "'smb://...' with credentials is not taken on the command line: give -U USER "
                                    "and the password as usual"));
        }
    }
    ShareParts parts;
    if (!splitShare(operand, parts))
        return stop(reportUsage(context, command,
                                "'" + operand + "' is not a share path (\\\\server\\share[\\folder], "
                                "//server/share[/folder] or smb://server/share[/folder])"));
    if (unc)
        *unc = uncOf(parts);
    if (partsOut)
        *partsOut = parts;
    return Prepared();
}

// PATH [NAME...]: the folder the library works in and the names inside it.
// Without NAMEs, PATH is split into its folder and its last element.
Prepared resolveTargets(const HnrctlCommandLine& line, HnrctlContext& context, const std::string& command,
                        std::string& folder, std::vector<std::string>& names, bool allowShareRoot)
{
    const std::vector<std::string>& ops = line.operands();
    std::string unc;
    ShareParts parts;
    Prepared p = checkSharePath(context, command, ops[0], &unc, &parts);
    if (!p.ok)
        return p;
    if (ops.size() > 1) {
        folder = unc;
        names.assign(ops.begin() + 1, ops.end());
        return Prepared();
    }
    if (parts.inside.empty()) {
        if (allowShareRoot) {
            folder = unc;
            names.clear();
            return Prepared();
        }
        return stop(reportUsage(context, command,
                                "'" + ops[0] + "' is the share itself: name a file or folder inside it"));
    }
    std::string name;
    HNRShareConnection::splitPath(unc, folder, name);
    names.assign(1, name);
    return Prepared();
}

// The folder and names of the operands, then the credentials for the folder.
Prepared resolveTargetsAndCredentials(const HnrctlCommandLine& line, HnrctlContext& context,
                                      const std::string& command, std::string& folder,
                                      std::vector<std::string>& names, HNRShareParams& params,
                                      bool allowShareRoot = false)
{
    Prepared p = resolveTargets(line, context, command, folder, names, allowShareRoot);
    if (p.ok)
        p = credentials(line, context, command, folder, params);
    return p;
}

// The library names paths in UNC or slash form; a user reads them back in
// the form they wrote: UNC, slash path or URL.
std::string inUsersForm(const std::string& message, const std::string& operand)
{
    ShareParts parts;
    if (!splitShare(operand, parts))
        return message;
    bool url = operand.compare(0, 6, "smb://") == 0;
    bool slash = !url && operand.compare(0, 2, "//") == 0;
    const std::string roots[] = {"\\\\" + parts.server + "\\" + parts.share, "//" + parts.server + "/" + parts.share};
    std::string result;
    size_t pos = 0;
    for (;;) {
        size_t at = std::string::npos;
        for (const std::string& root : roots)
            at = std::min(at, message.find(root, pos));
        if (at == std::string::npos) {
            result += message.substr(pos);
            return result;
        }
        result += message.substr(pos, at - pos);
        size_t end = message.find_first_of("'\"", at);
        if (end == std::string::npos)
            end = message.size();
        std::string path = message.substr(at + 2, end - at - 2);
        if (url || slash) {
            std::replace(path.begin(), path.end(), '\\', '/');
            result += (url ? "smb://" : "//") + path;
        } else {
            std::replace(path.begin(), path.end(), '/', '\\');
            result += "\\\\" + path;
        }
        pos = end;
    }
}

int failed(HnrctlContext& context, const std::string& command, const std::string& operand)
{
    std::string message = getErrorMessage();
    if (message.empty())
        message = "failed";
    if (!context.verbose) {
        // The first line says what and why; what follows (tool output) only with -v.
        size_t lineEnd = message.find('\n');
        if (lineEnd != std::string::npos)
            message = message.substr(0, lineEnd);
        // "Failed execute command 'SCRIPT' on share 'X': WHY": the script is a
        // detail; the user's own path and the reason are what counts.
        const std::string head = "Failed execute command '";
        const std::string onShare = "' on share '";
        size_t on = message.find(onShare);
        if (message.compare(0, head.size(), head) == 0 && on != std::string::npos) {
            size_t why = message.find("': ", on + onShare.size());
            if (why != std::string::npos)
                return reportFailure(context, command, operand + ": " + message.substr(why + 3));
        }
    }
    return reportFailure(context, command, inUsersForm(message, operand));
}

void printJson(std::ostream& out, const nlohmann::json& j)
{
    out << j.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << "\n";
}

// The entries of the folder of params matching pattern (smbclient's
// wildcards, case-insensitive as the server), sorted by name.
bool listFolder(const HNRShareParams& params, const std::string& pattern, std::vector<HNRShareEntry>& entries)
{
    std::vector<HNRShareEntry> all;
    if (!HNRShareConnection::list(params, all))
        return false;
    for (HNRShareEntry& e : all) {
        if (pattern == "*" || ::fnmatch(pattern.c_str(), e.name.c_str(), FNM_CASEFOLD) == 0)
            entries.push_back(std::move(e));
    }
    std::sort(entries.begin(), entries.end(),
              [](const HNRShareEntry& a, const HNRShareEntry& b) { return a.name < b.name; });
    return true;
}

// What an smbclient script could not carry; refused as it was when the
// pattern went into one.
bool isSafePattern(const std::string& pattern)
{
    return pattern.find_first_of(std::string(";\"\r\n\0", 5)) == std::string::npos;
}

// Total bytes of local files and folders, for progress.
std::uint64_t localSize(const std::vector<std::string>& locals)
{
    namespace fs = boost::filesystem;
    std::uint64_t total = 0;
    boost::system::error_code ec;
    for (const std::string& local : locals) {
        if (fs::is_regular_file(local, ec)) {
            total += fs::file_size(local, ec);
            continue;
        }
        if (!fs::is_directory(local, ec))
            continue;
        for (fs::recursive_directory_iterator it(local, ec), end; !ec && it != end; it.increment(ec)) {
            boost::system::error_code sizeError;
            if (fs::is_regular_file(it->path(), sizeError)) {
                std::uint64_t size = fs::file_size(it->path(), sizeError);
                if (!sizeError)
                    total += size;
            }
        }
    }
    return total;
}

} // namespace

int runShareCheck(const HnrctlCommandLine& line, HnrctlContext& context)
{
    const std::string command = "share check";
    const std::string& path = line.operands()[0];
    std::string unc;
    Prepared p = checkSharePath(context, command, path, &unc);
    HNRShareParams params;
    if (p.ok)
        p = credentials(line, context, command, unc, params);
    if (!p.ok)
        return p.status;
    bool file = line.has("--file");
    if (!(file ? HNRShareConnection::checkFile(params) : HNRShareConnection::check(params)))
        return failed(context, command, path);
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
    if (!isSafePattern(pattern))
        return reportUsage(context, command, "PATTERN must not hold ';', '\"' or a line break");
    std::string unc;
    Prepared p = checkSharePath(context, command, path, &unc);
    HNRShareParams params;
    if (p.ok)
        p = credentials(line, context, command, unc, params);
    if (!p.ok)
        return p.status;
    std::vector<HNRShareEntry> entries;
    if (!listFolder(params, pattern, entries))
        return failed(context, command, path);
    if (line.has("--json")) {
        nlohmann::json list = nlohmann::json::array();
        for (const HNRShareEntry& e : entries) {
            list.push_back({{"name", e.name},
                            {"type", e.isDirectory ? "directory" : "file"},
                            {"size", e.size},
                            {"attributes", e.attributes}});
        }
        printJson(*context.out, {{"path", path}, {"entries", list}});
        return kExitOk;
    }
    size_t files = 0, folders = 0;
    std::uint64_t bytes = 0;
    char row[64];
    for (const HNRShareEntry& e : entries) {
        std::snprintf(row, sizeof row, "%c %14" PRIu64 "  ", e.isDirectory ? 'd' : '-', e.size);
        *context.out << row << e.name << "\n";
        if (e.isDirectory) {
            ++folders;
        } else {
            ++files;
            bytes += e.size;
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
    std::string unc;
    Prepared p = checkSharePath(context, command, path, &unc);
    HNRShareParams params;
    if (p.ok)
        p = credentials(line, context, command, unc, params);
    if (!p.ok)
        return p.status;
    bool quiet = line.has("--quiet");
    std::ostringstream discard;
    HnrctlProgress progress(quiet ? discard : *context.err, "put", context.errIsTerminal && !quiet,
                            localSize(locals));
    progress.start();
    bool ok = HNRShareConnection::putFiles(locals, params, !line.has("--contents"), &progress);
    progress.finish();
    if (!ok)
        return failed(context, command, path);
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
    bool quiet = line.has("--quiet");
    // The total for progress costs one listing run; a failure there shows in the transfer.
    std::uint64_t total = 0;
    if (!quiet && !HNRShareConnection::size(names, params, total))
        total = 0;
    std::ostringstream discard;
    HnrctlProgress progress(quiet ? discard : *context.err, "get", context.errIsTerminal && !quiet, total);
    progress.start();
    bool ok = HNRShareConnection::getFiles(names, params, localDir, !line.has("--contents"), &progress);
    progress.finish();
    if (!ok)
        return failed(context, command, line.operands()[0]);
    *context.out << "got " << names.size() << " item(s) into " << localDir << "\n";
    return kExitOk;
}

int runShareSize(const HnrctlCommandLine& line, HnrctlContext& context)
{
    const std::string command = "share size";
    std::string folder;
    std::vector<std::string> names;
    HNRShareParams params;
    Prepared p = resolveTargetsAndCredentials(line, context, command, folder, names, params, true);
    if (!p.ok)
        return p.status;
    std::uint64_t total = 0;
    if (names.empty()) {
        // The share root: everything in it, names beginning with "." left out as size does.
        std::vector<HNRShareEntry> entries;
        if (!listFolder(params, "*", entries))
            return failed(context, command, line.operands()[0]);
        for (const HNRShareEntry& e : entries) {
            if (e.name[0] != '.')
                names.push_back(e.name);
        }
    }
    if (!names.empty() && !HNRShareConnection::size(names, params, total))
        return failed(context, command, line.operands()[0]);
    if (line.has("--json"))
        printJson(*context.out, {{"path", line.operands()[0]}, {"bytes", total}});
    else
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
    std::string target = HNRShareConnection::combinePath(folder, name);
    std::string shown = line.operands().size() > 1 ? line.operands()[0] + "/" + name : line.operands()[0];
    if (create && line.has("--parents")) {
        // Every missing folder from the share root down; an existing one is fine.
        ShareParts parts;
        splitShare(target, parts);
        std::string at = "\\\\" + parts.server + "\\" + parts.share;
        size_t pos = 0;
        while (pos <= parts.inside.size()) {
            size_t end = parts.inside.find('/', pos);
            if (end == std::string::npos)
                end = parts.inside.size();
            std::string part = parts.inside.substr(pos, end - pos);
            pos = end + 1;
            if (part.empty())
                continue;
            HNRShareParams here(HNRShareConnection::combinePath(at, part), params.login, params.password);
            HNRShareParams parent(at, params.login, params.password);
            if (!HNRShareConnection::checkFile(here) && !HNRShareConnection::createDir(part, parent))
                return failed(context, command, line.operands()[0]);
            at = here.path;
        }
        *context.out << "created " << shown << "\n";
        return kExitOk;
    }
    bool ok = create ? HNRShareConnection::createDir(name, params) : HNRShareConnection::removeDir(name, params);
    if (!ok)
        return failed(context, command, line.operands()[0]);
    *context.out << (create ? "created " : "removed ") << shown << "\n";
    return kExitOk;
}

} // namespace

int runShareMkdir(const HnrctlCommandLine& line, HnrctlContext& context) { return runDirCommand(line, context, true); }

int runShareRmdir(const HnrctlCommandLine& line, HnrctlContext& context) { return runDirCommand(line, context, false); }

int runShareUrl(const HnrctlCommandLine& line, HnrctlContext& context)
{
    const std::string command = "share url";
    const std::string& path = line.operands()[0];
    // The conversion takes the first two characters for the leading
    // backslashes without looking: hand it the UNC form.
    std::string unc;
    Prepared p = checkSharePath(context, command, path, &unc);
    if (!p.ok)
        return p.status;
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
