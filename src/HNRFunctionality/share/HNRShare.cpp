// Share connections: mounting a share, and the smbclient-script operations
// (check, transfers with progress, folders, sizes).
#include "share/HNRShare.h"

#include <cctype>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <exception>
#include <functional>
#include <string>
#include <sys/stat.h>
#include <vector>

#include <boost/filesystem/operations.hpp>

#include "GenExec.h"
#include "HNKErrorMessage.h"
#include "Logger.h"
#include "fsutil/HNRLocalFiles.h"
#include "share/HNRShareListing.h"
#include "share/HNRSharePaths.h"
#include "share/HNRShareTools.h"

namespace fs = boost::filesystem;

namespace HNR {

namespace {

// What a requested path is, as its listing says.
enum PathProperty { PathOther = 0, PathDirectory = 1 };

const int kMountPoints = 100;
// getsWTimeout units per polling pass: 1.5 s, so progress comes within 2 s.
const int kPollUnits = 6;
const char kUnsafeName[] = "holds ';', '\"', a line break or NUL, which a smbclient script cannot carry";

// Once the caller cancelled, whatever failed failed because of it.
void reportError(const char* function, const std::string& message)
{
    const std::string text = GenExec::stopRequested() ? std::string("cancelled") : message;
    setErrorMessage("%s", text.c_str());
    Logger::put(1, "[%s] %s", function, text.c_str());
}

// Logs a failure whose message a runner has already set, under our own name.
bool failWithCurrentMessage(const char* function)
{
    if (GenExec::stopRequested())
        setErrorMessage("cancelled");
    Logger::put(1, "[%s] %s", function, getErrorMessage().c_str());
    return false;
}

std::string slashesToBackslashes(std::string s)
{
    for (char& c : s)
        if (c == '/')
            c = '\\';
    return s;
}

// The four quoting forms of script paths.
std::string localQuote(const std::string& path) { return "\"" + path + "\""; }
std::string remoteQuote(const std::string& path) { return "\"" + slashesToBackslashes(path) + "\""; }
// The backslash before the closing quote marks a folder.
std::string remoteDirQuote(const std::string& path) { return "\"" + slashesToBackslashes(path) + "\\\""; }
std::string absoluteRemoteDirQuote(const std::string& path) { return remoteDirQuote("/" + path); }

std::string listFragment(const std::string& path) { return "; ls " + remoteQuote(path); }

// Joins two relative share paths with one slash; either may be empty.
std::string joinRelative(const std::string& a, const std::string& b)
{
    if (a.empty())
        return b;
    if (b.empty())
        return a;
    return a + "/" + b;
}

std::string parentOf(const std::string& relative)
{
    std::size_t slash = relative.rfind('/');
    return slash == std::string::npos ? std::string() : relative.substr(0, slash);
}

std::string leafOf(const std::string& relative)
{
    std::size_t slash = relative.rfind('/');
    return slash == std::string::npos ? relative : relative.substr(slash + 1);
}

// A path relative to the folder of params.path, slash form ("a/b"), or ""
// when it names nothing.
std::string canonizeRelative(const std::string& name)
{
    fs::path p = createCanonized(name);
    std::string s = p.string();
    while (!s.empty() && s.front() == '/')
        s.erase(0, 1);
    return s;
}

// The folder of params.path inside its share, slash form without a leading
// slash ("" at the share root).
std::string relativeFolder(const HNRShareParams& params)
{
    return canonizeRelative(getRelativeFromPath(createCanonized(params.path)).string());
}

bool refuseUnsafe(const char* function, const std::string& what, const std::string& name)
{
    if (isSafeForSmbScript(name))
        return false;
    reportError(function, what + " '" + name + "' " + kUnsafeName);
    return true;
}

// The status name in a line of smbclient, with its message when we know it.
std::string explainStatus(const std::string& text)
{
    std::size_t at = text.find("NT_STATUS_");
    if (at == std::string::npos)
        return text;
    std::size_t end = at;
    while (end < text.size() && (std::isalpha(static_cast<unsigned char>(text[end])) || text[end] == '_'))
        ++end;
    const std::string name = text.substr(at, end - at);
    auto it = getSmbStatusTable().find(name);
    return it == getSmbStatusTable().end() ? text : text + " (" + it->second + ")";
}

std::string lastLine(const std::string& text)
{
    std::size_t end = text.find_last_not_of("\r\n");
    if (end == std::string::npos)
        return std::string();
    std::size_t begin = text.rfind('\n', end);
    return text.substr(begin == std::string::npos ? 0 : begin + 1, end - (begin == std::string::npos ? 0 : begin + 1) + 1);
}

// Why a transfer's smbclient ended badly, for a "wait error" message.
std::string waitErrorDetail(const GenExec& runner, const std::string& runnerError)
{
    std::string detail = runnerError;
    std::string err = lastLine(runner.getOutput(GenExec::OUTPUT_STDERR));
    if (!err.empty())
        detail += (detail.empty() ? "" : "; ") + err;
    return detail.empty() ? std::string() : " (" + explainStatus(detail) + ")";
}

// Hands progress on: never backwards, never 100 before success.
class ProgressReporter {
public:
    explicit ProgressReporter(HNRShareConnection::Progress* progress) : m_progress(progress) {}

    bool active() const { return m_progress != nullptr; }
    int period() const { return m_progress && m_progress->period > 1 ? m_progress->period : 1; }

    void update(double percent)
    {
        if (!m_progress)
            return;
        // A measurement at or past the end (or not a number) repeats the last
        // value: 100 is for a finished transfer only.
        if (!(percent < 100.0))
            percent = m_last;
        if (percent < m_last)
            percent = m_last;
        m_last = percent;
        m_progress->setProgress(percent);
    }

    void finish()
    {
        if (m_progress)
            m_progress->setProgress(100.0);
    }

private:
    HNRShareConnection::Progress* m_progress;
    double m_last = 0.0;
};

enum class TransferEnd { Finished, FailureLine, WaitError };

// Polls a started transfer to its end. measure() gives the percentage when a
// computation is due (every period passes). Every standard-output line of
// smbclient is a failure (progress goes to standard error), so the first one
// ends the transfer; the runner's destructor then kills the tool.
TransferEnd pollTransfer(GenExec& runner, ProgressReporter& reporter, const std::function<double()>& measure,
                         std::string& line, std::string& runnerError)
{
    int counter = 0;
    int finished = 1;
    while (finished) {
        if (reporter.active() && counter <= 0) {
            reporter.update(measure());
            counter = reporter.period();
        }
        line = runner.getsWTimeout(kPollUnits, &finished);
        if (!line.empty() && finished)
            return TransferEnd::FailureLine;
        --counter;
    }
    if (runner.wait() != 0) {
        runnerError = getErrorMessage();
        return TransferEnd::WaitError;
    }
    return TransferEnd::Finished;
}

// Runs a listing script whose names may not all exist yet and returns what it
// printed; missing names only leave their blocks out.
bool listTolerant(const HNRShareParams& params, const std::string& command, std::string& output)
{
    HWExec runner;
    std::string unused;
    if (!runShareCommand(params, command, unused, &runner))
        return false;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(kToolTimeout);
    int finished = 1;
    while (finished) {
        runner.getsWTimeout(kPollUnits, &finished);
        if (finished && std::chrono::steady_clock::now() > deadline)
            return false;
    }
    runner.wait();
    output = runner.getOutput(GenExec::OUTPUT_STDOUT);
    return true;
}

// Bytes of the remote files present so far (0 when the listing fails).
std::uint64_t measureRemote(const HNRShareParams& params, const std::vector<std::string>& names)
{
    if (names.empty())
        return 0;
    std::string command = "prompt off";
    for (const std::string& name : names)
        command += listFragment(name);
    std::string output;
    if (!listTolerant(params, command, output))
        return 0;
    std::uint64_t total = 0;
    for (const HNRListingBlock& block : parseListing(output))
        total += block.fileBytes();
    return total;
}

double percentOf(std::uint64_t done, std::uint64_t total)
{
    return total == 0 ? 0.0 : static_cast<double>(done) * 100.0 / static_cast<double>(total);
}

// One recursive listing of every requested path: its kind, its bytes and, for
// a folder, its entries. One smbclient run for all of them.
struct RemotePath {
    std::string relative; // slash form, relative to the folder of params.path
    PathProperty property = PathOther;
    std::uint64_t bytes = 0;
    std::vector<std::string> entries; // a folder's own entries
};

bool describeRemote(const char* function, const std::vector<std::string>& files, const HNRShareParams& params,
                    std::vector<RemotePath>& paths)
{
    paths.clear();
    std::string command = "prompt off; recurse";
    for (const std::string& file : files) {
        RemotePath path;
        path.relative = canonizeRelative(file);
        if (path.relative.empty()) {
            reportError(function, "Can't get path status '" + file + "'");
            return false;
        }
        if (refuseUnsafe(function, "Share path", path.relative))
            return false;
        command += listFragment(path.relative);
        paths.push_back(path);
    }
    if (paths.empty())
        return true;
    std::string output;
    if (!runShareCommand(params, command, output, nullptr))
        return failWithCurrentMessage(function);
    const std::vector<HNRListingBlock> blocks = parseListing(output);
    for (std::size_t i = 0; i < paths.size(); ++i) {
        const HNRListingEntry* entry = i < blocks.size() ? blocks[i].matched() : nullptr;
        if (!entry) {
            reportError(function, "Can't get path status '" + files[i] + "'");
            return false;
        }
        paths[i].property = entry->isDirectory() ? PathDirectory : PathOther;
        paths[i].bytes = blocks[i].fileBytes();
        // A folder is listed first, before anything below it.
        if (paths[i].property == PathDirectory && blocks[i].sections.size() > 1)
            for (const HNRListingEntry& child : blocks[i].sections[1].entries)
                if (!child.isDotEntry())
                    paths[i].entries.push_back(child.name);
    }
    return true;
}

// The put script of one local path, recursively.
struct PutPlan {
    std::string script = "prompt off";
    std::vector<std::string> remoteNames; // every file's target, in script order
    std::vector<std::string> localNames;  // its source
};

bool addPuts(const fs::path& local, const std::string& remoteDir, bool top, bool keepTopDirs, PutPlan& plan)
{
    const std::string name = local.filename().string();
    if (fs::is_directory(local)) {
        std::string below = remoteDir;
        if (!top || keepTopDirs) {
            below = joinRelative(remoteDir, name);
            if (refuseUnsafe("putFiles", "Can't put folder", local.string()))
                return false;
            plan.script += "; mkdir " + remoteDirQuote(below);
        }
        for (fs::directory_iterator it(local), end; it != end; ++it)
            if (!addPuts(it->path(), below, false, keepTopDirs, plan))
                return false;
        return true;
    }
    if (refuseUnsafe("putFiles", "Can't put file", local.string()))
        return false;
    const std::string target = joinRelative(remoteDir, name);
    plan.script += "; put " + localQuote(local.string()) + " " + remoteQuote(target);
    plan.remoteNames.push_back(target);
    plan.localNames.push_back(local.string());
    return true;
}

// The local file a put run was working on: the first one smbclient has not
// yet reported as done ("putting file X as \Y" on standard error).
std::string currentPut(const GenExec& runner, const PutPlan& plan)
{
    const std::string err = runner.getOutput(GenExec::OUTPUT_STDERR);
    std::size_t done = 0;
    for (std::size_t at = err.find("putting file "); at != std::string::npos; at = err.find("putting file ", at + 1))
        ++done;
    return done < plan.localNames.size() ? plan.localNames[done] : std::string();
}

} // namespace

HNRShareConnection::~HNRShareConnection()
{
    disconnect();
}

void HNRShareConnection::clearPaths()
{
    m_sharePath.clear();
    m_connectedSharePath.clear();
}

bool HNRShareConnection::disconnect()
{
    if (!isConnected())
        return true;
    if (!m_mountPoint.getPath().empty() && !unmountApi(m_mountPoint.getPath(), m_sharePath))
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
        const fs::path path = createCanonized(params.path);
        if (!isCorrectShare(path)) {
            reportError(kFunction, "Invalid share path: '" + params.path + "'");
            return false;
        }
        const fs::path sharePath = getShareFromPath(path);
        const std::string share = sharePath.string();
        std::string mountDir;
        if (isMountExist(share, params.login, mountDir)) {
            // Someone else's mount: ours (left from an earlier connection) goes.
            m_mountPoint.remove();
        } else {
            std::string candidate;
            bool created = false;
            for (int n = 0; n < kMountPoints && !created; ++n) {
                candidate = getMountRoot() + std::to_string(n);
                if (pathExists(candidate))
                    continue;
                if (m_mountPoint.create(candidate)) {
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
                m_mountPoint.remove();
                return failWithCurrentMessage(kFunction);
            }
            mountDir = candidate;
        }
        m_sharePath = share;
        m_connectedSharePath = mountDir;

        const fs::path inside = fs::path(mountDir) / getRelativeFromPath(path);
        struct stat st;
        if (::stat(inside.c_str(), &st) == 0)
            return true;
        const int error = errno;
        if (!disconnect())
            return false;
        m_mountPoint.remove();
        reportError(kFunction, "Failed to open file '" + params.path + "' on share '" + getWinPathString(sharePath) +
                                   "':" + std::strerror(error));
        return false;
    } catch (const std::exception& e) {
        reportError(kFunction, "Failed to open file '" + params.path + "' on share:" + e.what());
        return false;
    }
}

bool HNRShareConnection::check(const HNRShareParams& params)
{
    static const char kFunction[] = "check";
    try {
        std::string output;
        if (!runShareCommand(params, "prompt off; ls *.", output, nullptr))
            return failWithCurrentMessage(kFunction);
        if (output.find("NT_STATUS_ACCESS_DENIED") != std::string::npos) {
            reportError(kFunction, "Access is denied");
            return false;
        }
        return true;
    } catch (const std::exception& e) {
        reportError(kFunction, std::string("Can't check connection on share: ") + e.what());
        return false;
    }
}

bool HNRShareConnection::checkFile(const HNRShareParams& params)
{
    static const char kFunction[] = "checkFile";
    try {
        std::string dir, name;
        splitPath(params.path, dir, name);
        if (refuseUnsafe(kFunction, "Can't check file", name))
            return false;
        // Through the constructor: a half credential becomes anonymous.
        const HNRShareParams folder(dir, params.login, params.password);
        std::string output;
        if (!runShareCommand(folder, "prompt off; ls " + remoteQuote(name), output, nullptr))
            return failWithCurrentMessage(kFunction);
        if (output.find("NT_STATUS_ACCESS_DENIED") != std::string::npos) {
            reportError(kFunction, "Access is denied");
            return false;
        }
        return true;
    } catch (const std::exception& e) {
        reportError(kFunction, std::string("Can't check connection on share: ") + e.what());
        return false;
    }
}

bool HNRShareConnection::putFiles(const std::vector<std::string>& files, const HNRShareParams& params,
                                  bool keepTopDirs, Progress* progress)
{
    static const char kFunction[] = "putFiles";
    try {
        if (!checkFilesLocal(files))
            return failWithCurrentMessage(kFunction);
        PutPlan plan;
        for (const std::string& file : files) {
            std::string local = file;
            while (local.size() > 1 && local.back() == '/')
                local.pop_back();
            if (!addPuts(fs::path(local), std::string(), true, keepTopDirs, plan))
                return false;
        }
        std::uint64_t total = 0;
        if (!getSizeRecursiveLocal(files, total))
            return failWithCurrentMessage(kFunction);

        HWExec runner;
        std::string unused;
        if (!runShareCommand(params, plan.script, unused, &runner))
            return failWithCurrentMessage(kFunction);

        ProgressReporter reporter(progress);
        std::string line, runnerError;
        const auto measure = [&] { return percentOf(measureRemote(params, plan.remoteNames), total); };
        switch (pollTransfer(runner, reporter, measure, line, runnerError)) {
        case TransferEnd::FailureLine:
            reportError(kFunction, "Can't put file(s) on share '" + params.path + "': " + explainStatus(line));
            return false;
        case TransferEnd::WaitError: {
            std::string current = currentPut(runner, plan);
            reportError(kFunction, "Can't put file(s) on share '" + params.path + "': wait error" +
                                       (current.empty() ? std::string() : " while putting '" + current + "'") +
                                       waitErrorDetail(runner, runnerError));
            return false;
        }
        case TransferEnd::Finished:
            break;
        }
        reporter.finish();
        return true;
    } catch (const std::exception& e) {
        reportError(kFunction, std::string("Can't put file(s) on share: ") + e.what());
        return false;
    }
}

bool HNRShareConnection::getFiles(const std::vector<std::string>& files, const HNRShareParams& params,
                                  const std::string& localDir, bool keepTopDirs, Progress* progress)
{
    static const char kFunction[] = "getFiles";
    try {
        if (refuseUnsafe(kFunction, "Local folder", localDir))
            return false;
        std::vector<RemotePath> paths;
        if (!describeRemote(kFunction, files, params, paths))
            return false;
        std::uint64_t grandTotal = 0;
        for (const RemotePath& path : paths)
            grandTotal += path.bytes;
        if (grandTotal > getDirFreeSpace(localDir)) {
            reportError(kFunction, "Not enough space on local folder '" + localDir + "'");
            return false;
        }
        // smbclient would fetch into its working directory after a failed lcd.
        if (!fs::is_directory(localDir)) {
            reportError(kFunction, "Local folder '" + localDir + "' is not a directory");
            return false;
        }

        const std::string base = relativeFolder(params);
        const fs::path local(localDir);
        ProgressReporter reporter(progress);
        std::uint64_t doneBytes = 0;
        for (std::size_t i = 0; i < paths.size(); ++i) {
            const RemotePath& path = paths[i];
            const std::string fromRoot = joinRelative(base, path.relative);
            std::string script = "prompt off; recurse; lcd " + localQuote(localDir);
            std::vector<std::string> expected;
            if (path.property == PathDirectory && !keepTopDirs) {
                script += "; cd " + absoluteRemoteDirQuote(fromRoot) + "; mget *";
                for (const std::string& entry : path.entries)
                    expected.push_back((local / entry).string());
            } else {
                script += "; cd " + absoluteRemoteDirQuote(parentOf(fromRoot)) + "; mget " +
                          localQuote(leafOf(fromRoot));
                expected.push_back((local / leafOf(fromRoot)).string());
            }

            HWExec runner;
            std::string unused;
            if (!runShareCommand(params, script, unused, &runner)) {
                reportError(kFunction, "Can't get file from share: " + getErrorMessage());
                return false;
            }
            const auto measure = [&] {
                std::uint64_t current = 0;
                if (!getSizeRecursiveLocal(expected, current))
                    current = 0;
                return percentOf(doneBytes + current, grandTotal);
            };
            std::string line, runnerError;
            const std::string prefix = "Can't get file '" + files[i] + "' to directory '" + localDir + "' from share: ";
            switch (pollTransfer(runner, reporter, measure, line, runnerError)) {
            case TransferEnd::FailureLine:
                reportError(kFunction, prefix + explainStatus(line));
                return false;
            case TransferEnd::WaitError:
                reportError(kFunction, prefix + "wait error" + waitErrorDetail(runner, runnerError));
                return false;
            case TransferEnd::Finished:
                break;
            }
            doneBytes += path.bytes;
        }
        reporter.finish();
        return true;
    } catch (const std::exception& e) {
        reportError(kFunction, std::string("Can't get file(s) on share: ") + e.what());
        return false;
    }
}

bool HNRShareConnection::createDir(const std::string& dir, const HNRShareParams& params)
{
    static const char kFunction[] = "createDir";
    try {
        const std::string relative = canonizeRelative(dir);
        if (refuseUnsafe(kFunction, "Can't create directory", relative))
            return false;
        std::string output;
        if (runShareCommand(params, "prompt off; mkdir " + remoteDirQuote(relative), output, nullptr))
            return true;
        if (output == "NT_STATUS_OBJECT_NAME_COLLISION") {
            reportError(kFunction, "Can't create directory '" + dir + "' on share '" + params.path +
                                       "': directory already exist");
            return false;
        }
        return failWithCurrentMessage(kFunction);
    } catch (const std::exception& e) {
        reportError(kFunction, "Can't create directory '" + dir + "' on share: " + e.what());
        return false;
    }
}

bool HNRShareConnection::removeDir(const std::string& dir, const HNRShareParams& params)
{
    static const char kFunction[] = "removeDir";
    try {
        const std::string relative = canonizeRelative(dir);
        if (refuseUnsafe(kFunction, "Can't remove directory", relative))
            return false;
        std::string output;
        if (!runShareCommand(params, "prompt off; recurse" + listFragment(relative), output, nullptr)) {
            // smbclient names a missing folder NO_SUCH_FILE, a missing parent PATH_NOT_FOUND.
            if (output == "NT_STATUS_OBJECT_NAME_NOT_FOUND" || output == "NT_STATUS_NO_SUCH_FILE" ||
                output == "NT_STATUS_OBJECT_PATH_NOT_FOUND") {
                reportError(kFunction, "Can't get directories from '" + dir + "' on share '" + params.path +
                                           "': directory does not exist");
                return false;
            }
            return failWithCurrentMessage(kFunction);
        }
        // Every folder of the tree, from the share root, in listing order.
        std::vector<HNRListingSection> folders;
        for (const HNRListingBlock& block : parseListing(output))
            for (const HNRListingSection& section : block.sections)
                if (!section.folder.empty())
                    folders.push_back(section);
        if (folders.empty()) {
            reportError(kFunction, "Can't remove directory '" + dir + "' on share '" + params.path +
                                       "': directory does not exist");
            return false;
        }
        std::string script = "prompt off";
        for (auto it = folders.rbegin(); it != folders.rend(); ++it) {
            const std::string folder = createCanonized(it->folder).string();
            if (refuseUnsafe(kFunction, "Can't remove directory", folder))
                return false;
            bool hasFiles = false;
            for (const HNRListingEntry& entry : it->entries)
                hasFiles = hasFiles || (!entry.isDirectory() && !entry.isDotEntry());
            // "rm *" in a folder without files fails the whole script.
            if (hasFiles)
                script += "; cd " + remoteDirQuote(folder) + "; rm *";
            std::string parent = parentOf(folder);
            script += "; cd " + remoteDirQuote(parent.empty() ? "/" : parent) + "; rmdir " +
                      remoteDirQuote(leafOf(folder));
        }
        if (!runShareCommand(params, script, output, nullptr))
            return failWithCurrentMessage(kFunction);
        return true;
    } catch (const std::exception& e) {
        reportError(kFunction, "Can't remove directory '" + dir + "' on share: " + e.what());
        return false;
    }
}

bool HNRShareConnection::list(const HNRShareParams& params, std::vector<HNRShareEntry>& entries)
{
    static const char kFunction[] = "list";
    entries.clear();
    try {
        std::string output;
        if (!runShareCommand(params, "prompt off; ls", output, nullptr))
            return failWithCurrentMessage(kFunction);
        const std::vector<HNRListingBlock> blocks = parseListing(output);
        if (blocks.empty()) {
            reportError(kFunction, "Can't list folder '" + params.path + "' on share: no listing came back");
            return false;
        }
        for (const HNRListingSection& section : blocks.front().sections)
            for (const HNRListingEntry& entry : section.entries)
                if (!entry.isDotEntry())
                    entries.push_back(
                        HNRShareEntry{entry.name, entry.isDirectory(), entry.size, entry.attributes, entry.modified});
        return true;
    } catch (const std::exception& e) {
        entries.clear();
        reportError(kFunction, "Can't list folder '" + params.path + "' on share: " + e.what());
        return false;
    }
}

bool HNRShareConnection::size(const std::vector<std::string>& files, const HNRShareParams& params,
                              std::uint64_t& total)
{
    static const char kFunction[] = "size";
    total = 0;
    try {
        std::vector<RemotePath> paths;
        if (!describeRemote(kFunction, files, params, paths))
            return false;
        for (const RemotePath& path : paths)
            total += path.bytes;
        return true;
    } catch (const std::exception& e) {
        total = 0;
        reportError(kFunction, std::string("Can't get size of files on share: ") + e.what());
        return false;
    }
}

} // namespace HNR
