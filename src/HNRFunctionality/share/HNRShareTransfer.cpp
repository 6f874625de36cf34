// Transfers with progress: putFiles and getFiles, split into as many
// smbclient runs as the argument limit needs, true only when every moved file
// has, at the end, the size the other side lists.
#include "share/HNRShareTransfer.h"

#include <cctype>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <algorithm>
#include <exception>
#include <map>
#include <strings.h>
#include <sys/stat.h>

#include <boost/filesystem/operations.hpp>

#include "GenExec.h"
#include "HNKErrorMessage.h"
#include "fsutil/HNRLocalFiles.h"
#include "share/HNRShareListing.h"
#include "share/HNRShareLocation.h"
#include "share/HNRShareRemoteTree.h"
#include "share/HNRSharePaths.h"
#include "share/HNRShareScript.h"
#include "share/HNRShareTools.h"

namespace fs = boost::filesystem;

namespace HNR {

namespace {

// getsWTimeout units per polling pass: 1.5 s, so progress comes within 2 s.
const int kPollUnits = 6;
const char kStatusPrefix[] = "NT_STATUS_";

std::string lastLine(const std::string& text)
{
    const std::vector<std::string> lines = splitLines(text);
    for (auto it = lines.rbegin(); it != lines.rend(); ++it)
        if (it->find_first_not_of(" \t\r") != std::string::npos)
            return *it;
    return std::string();
}

// The first line of text that names a status, or "".
std::string statusLine(const std::string& text)
{
    if (text.find(kStatusPrefix) == std::string::npos)
        return std::string();
    for (const std::string& line : splitLines(text))
        if (line.find(kStatusPrefix) != std::string::npos)
            return line;
    return std::string();
}

double percentOf(std::uint64_t done, std::uint64_t total)
{
    return total == 0 ? 0.0 : static_cast<double>(done) * 100.0 / static_cast<double>(total);
}

// Runs a listing whose names may not all exist yet; missing names only leave
// their blocks out.
bool listTolerant(const HNRShareLocation& loc, const std::string& command, std::string& output)
{
    HWExec runner;
    std::string unused;
    if (!loc.run(command, unused, &runner))
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

// A local name the share client can use: no NUL, and a last element that
// names a file or folder of its own (not "." or "..", which would put the
// remote copy outside its folder).
bool localNameUsable(const char* function, const std::string& what, const std::string& name)
{
    if (name.find('\0') != std::string::npos) {
        reportError(function, what + " '" + printableName(name) + "' holds a NUL character, which no tool can carry");
        return false;
    }
    const std::string leaf = fs::path(name).filename().string();
    if (leaf == "." || leaf == "..") {
        reportError(function, what + " '" + name + "' ends in '" + leaf +
                                  "': name the file or folder itself");
        return false;
    }
    return true;
}

// Why a local path cannot be examined, or "" when stat works or finds nothing.
std::string examineLocal(const std::string& path)
{
    struct stat st;
    if (::stat(path.c_str(), &st) == 0 || errno == ENOENT)
        return std::string();
    return std::strerror(errno);
}

// One file of a put: where it comes from, where it goes, its size, its run.
struct PutItem {
    std::string local;
    std::string remote; // relative to the location's folder, slash form
    std::uint64_t size = 0;
    int run = 0;
};

struct PutPlan {
    HNRShareScript script;
    std::vector<PutItem> items;
    std::vector<std::string> tops; // remote names whose recursive listing covers every item
};

bool addPuts(const char* function, const fs::path& local, const std::string& remoteDir, bool top, bool keepTopDirs,
             PutPlan& plan)
{
    const std::string name = local.filename().string();
    boost::system::error_code ec;
    const fs::file_status status = fs::status(local, ec);
    if (ec) {
        reportError(function, "Can't put file(s) on share: can't examine local file '" + local.string() +
                                  "': " + ec.message());
        return false;
    }
    if (fs::is_directory(status)) {
        std::string below = remoteDir;
        if (!top || keepTopDirs) {
            below = HNRShareLocation::join(remoteDir, name);
            if (!HNRShareScript::carries(function, "Can't put folder", local.string()))
                return false;
            if (plan.script.add(function, HNRShareScript::mkdir(below)) < 0)
                return false;
            if (top)
                plan.tops.push_back(below);
        }
        fs::directory_iterator it(local, ec);
        const fs::directory_iterator end;
        for (; !ec && it != end; it.increment(ec)) {
            if (top && !keepTopDirs)
                plan.tops.push_back(HNRShareLocation::join(below, it->path().filename().string()));
            if (!addPuts(function, it->path(), below, false, keepTopDirs, plan))
                return false;
        }
        if (ec) {
            reportError(function, "Can't put file(s) on share: can't read local folder '" + local.string() +
                                      "': " + ec.message());
            return false;
        }
        return true;
    }
    if (!HNRShareScript::carries(function, "Can't put file", local.string()))
        return false;
    PutItem item;
    item.local = local.string();
    item.remote = HNRShareLocation::join(remoteDir, name);
    if (fs::is_regular_file(status)) {
        item.size = fs::file_size(local, ec);
        if (ec) {
            reportError(function, "Can't put file(s) on share: can't examine local file '" + item.local +
                                      "': " + ec.message());
            return false;
        }
    }
    item.run = plan.script.add(function, HNRShareScript::put(item.local, item.remote));
    if (item.run < 0)
        return false;
    if (top)
        plan.tops.push_back(item.remote);
    plan.items.push_back(item);
    return true;
}

// How many files a put run has finished: smbclient reports each one on
// standard error once it is written ("putting file X as \Y (...)").
std::size_t putsReported(const std::string& err)
{
    std::size_t done = 0;
    for (std::size_t at = err.find("putting file "); at != std::string::npos; at = err.find("putting file ", at + 1))
        ++done;
    return done;
}

// True when a status line says the name is not there.
bool saysMissing(const std::string& line)
{
    return line.find("NT_STATUS_NO_SUCH_FILE") != std::string::npos ||
           line.find("NT_STATUS_OBJECT_NAME_NOT_FOUND") != std::string::npos ||
           line.find("NT_STATUS_OBJECT_PATH_NOT_FOUND") != std::string::npos;
}

// Compares every put file with what the listing commands at the end of the
// put printed (output: one result per top, in order).
bool confirmPut(const char* function, const std::string& prefix, const PutPlan& plan, const HNRShareLocation& loc,
                const std::string& output)
{
    const std::vector<HNRListingResult> results = parseListingResults(output);
    if (results.size() != plan.tops.size()) {
        reportError(function, prefix + "can't list what was put: " + std::to_string(results.size()) +
                                  " listings for " + std::to_string(plan.tops.size()) + " names");
        return false;
    }
    std::map<std::string, std::uint64_t> listed;
    for (std::size_t t = 0; t < plan.tops.size(); ++t) {
        const std::string& top = plan.tops[t];
        const HNRListingResult& result = results[t];
        if (!result.failure.empty() && saysMissing(result.failure)) {
            reportError(function, prefix + "'" + top + "' is missing on the share after the put");
            return false;
        }
        const std::string failure = !result.failure.empty() ? result.failure
                                    : result.block.failures.empty() ? std::string()
                                                                    : result.block.failures.front();
        if (!failure.empty()) {
            reportError(function, prefix + "can't list '" + top + "' after the put: " + explainStatus(failure));
            return false;
        }
        HNRShareRemotePath path;
        path.relative = HNRShareLocation::relative(top);
        if (!HNRShareRemoteTree::readListed(result.block, HNRShareLocation::join(loc.folder(), path.relative),
                                            path)) {
            reportError(function, prefix + "'" + top + "' is missing on the share after the put");
            return false;
        }
        for (const auto& file : path.files)
            listed[HNRShareLocation::join(path.relative, file.first)] = file.second;
    }
    for (const PutItem& item : plan.items) {
        auto it = listed.find(HNRShareLocation::relative(item.remote));
        if (it == listed.end()) {
            reportError(function, prefix + "'" + item.remote + "' is missing on the share after the put");
            return false;
        }
        if (it->second != item.size) {
            reportError(function, prefix + "'" + item.remote + "' has " + std::to_string(it->second) + " of " +
                                      std::to_string(item.size) + " bytes on the share");
            return false;
        }
    }
    return true;
}

} // namespace

std::string explainStatus(const std::string& text)
{
    std::size_t at = text.find(kStatusPrefix);
    if (at == std::string::npos)
        return text;
    std::size_t end = at;
    while (end < text.size() && (std::isalpha(static_cast<unsigned char>(text[end])) || text[end] == '_'))
        ++end;
    const std::string name = text.substr(at, end - at);
    auto it = getSmbStatusTable().find(name);
    return it == getSmbStatusTable().end() ? text : text + " (" + it->second + ")";
}

HNRShareTransfer::HNRShareTransfer(HNRShareConnection::Progress* progress, std::uint64_t total)
    : progress_(progress), total_(total)
{
}

void HNRShareTransfer::update(double percent)
{
    if (!progress_)
        return;
    // A measurement at or past the end (or not a number) repeats the last
    // value: 100 is for a finished and checked transfer only.
    if (!(percent < 100.0))
        percent = last_;
    if (percent < last_)
        percent = last_;
    last_ = percent;
    progress_->setProgress(percent);
}

void HNRShareTransfer::finish()
{
    if (progress_)
        progress_->setProgress(100.0);
}

HNRShareTransfer::End HNRShareTransfer::run(const HNRShareLocation& loc, const std::string& script,
                                            const std::function<std::uint64_t(const GenExec&)>& measure,
                                            std::string& detail,
                                            const std::function<bool(const std::string&)>& expected)
{
    using Clock = std::chrono::steady_clock;
    detail.clear();
    stderr_.clear();
    stdout_.clear();
    HWExec runner;
    std::string unused;
    ++runs_;
    if (!loc.run(script, unused, &runner))
        return End::StartError;
    // Computations are due by the clock, not by lines: a listing at the end
    // of a script prints many lines in a few milliseconds.
    const int period = progress_ && progress_->period > 1 ? progress_->period : 1;
    const auto interval = std::chrono::milliseconds(period * kPollUnits * GenExec::kGetsUnitMs);
    Clock::time_point due = Clock::now();
    int finished = 1;
    while (finished) {
        int units = kPollUnits;
        if (progress_) {
            if (Clock::now() >= due) {
                update(percentOf(doneBytes_ + measure(runner), total_));
                due = Clock::now() + interval;
            }
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(due - Clock::now()).count();
            units = static_cast<int>(std::min<long long>(
                kPollUnits, std::max<long long>(1, (left + GenExec::kGetsUnitMs - 1) / GenExec::kGetsUnitMs)));
        }
        std::string line = runner.getsWTimeout(units, &finished);
        // Every other standard-output line of smbclient is a failure; the
        // runner's destructor kills the tool.
        if (!line.empty() && finished && !(expected && expected(line))) {
            detail = line;
            stderr_ = runner.getOutput(GenExec::OUTPUT_STDERR);
            return End::FailureLine;
        }
    }
    const int rc = runner.wait();
    const std::string runnerError = rc != 0 ? getErrorMessage() : std::string();
    stderr_ = runner.getOutput(GenExec::OUTPUT_STDERR);
    stdout_ = runner.getOutput(GenExec::OUTPUT_STDOUT);
    // smbclient exits with the status of its last command: 1 after a last
    // listing that failed, which the caller reads from the listing.
    if (rc != 0 && !(expected && rc == 1 && isListingFailure(lastLine(stdout_)))) {
        std::string why = runnerError;
        const std::string err = lastLine(stderr_);
        if (!err.empty())
            why += (why.empty() ? "" : "; ") + err;
        detail = why.empty() ? std::string() : " (" + explainStatus(why) + ")";
        return End::WaitError;
    }
    // smbclient may exit 0 with the reason only on standard error
    // ("parallel_read returned NT_STATUS_DISK_FULL").
    const std::string status = statusLine(expected ? stderr_ : runner.getOutput(GenExec::OUTPUT_ALL));
    if (!status.empty()) {
        detail = explainStatus(status);
        return End::Status;
    }
    return End::Finished;
}

bool HNRShareConnection::putFiles(const std::vector<std::string>& files, const HNRShareParams& params,
                                  bool keepTopDirs, Progress* progress)
{
    static const char kFunction[] = "putFiles";
    try {
        HNRShareLocation loc;
        if (!loc.parse(kFunction, params))
            return false;
        for (const std::string& file : files) {
            if (!localNameUsable(kFunction, "Can't put file", file))
                return false;
            const std::string why = examineLocal(file);
            if (!why.empty()) {
                reportError(kFunction, "Can't put file(s) on share: can't examine local file '" + file + "': " + why);
                return false;
            }
        }
        if (!checkFilesLocal(files))
            return failWithCurrentMessage(kFunction);
        PutPlan plan;
        for (const std::string& file : files) {
            std::string local = file;
            while (local.size() > 1 && local.back() == '/')
                local.pop_back();
            if (!addPuts(kFunction, fs::path(local), std::string(), true, keepTopDirs, plan))
                return false;
        }
        std::uint64_t total = 0;
        for (const PutItem& item : plan.items)
            total += item.size;
        // The confirming listing rides at the end of the last transfer run:
        // no connection of its own. It spills into a run of its own only
        // when the last script has no room left.
        int firstListRun = -1;
        if (!plan.items.empty()) {
            plan.script.changeHead("prompt off; recurse", "; recurse");
            for (const std::string& top : plan.tops) {
                const int run = plan.script.add(kFunction, HNRShareScript::list(top));
                if (run < 0)
                    return false;
                if (firstListRun < 0)
                    firstListRun = run;
            }
        }
        std::vector<std::string> headers; // "\folder\top" of every top, from the share root
        for (const std::string& top : plan.tops)
            headers.push_back("\\" + toBackslashes(HNRShareLocation::join(loc.folder(), top)));
        const auto listingLine = [&headers](const std::string& line) {
            if (!isListingLine(line))
                return false;
            if (line.empty() || line[0] != '\\')
                return true;
            // Shares compare names without case; the server may spell them its way.
            for (const std::string& header : headers)
                if (line.size() >= header.size() && ::strncasecmp(line.c_str(), header.c_str(), header.size()) == 0 &&
                    (line.size() == header.size() || line[header.size()] == '\\'))
                    return true;
            return false;
        };
        // The file being written is listed for progress only when it can
        // move the figure: small files count when smbclient reports them.
        const std::uint64_t worthListing = std::max<std::uint64_t>(total / 100, 1 << 20);

        HNRShareTransfer transfer(progress, total);
        const std::string prefix = "Can't put file(s) on share '" + params.path + "': ";
        std::string listed; // what the listing commands printed
        std::size_t first = 0; // first item of the current run
        for (std::size_t r = 0; r < plan.script.scripts().size(); ++r) {
            std::size_t last = first;
            while (last < plan.items.size() && plan.items[last].run == static_cast<int>(r))
                ++last;
            // The files smbclient reported done, and what the share holds of
            // the one it is writing (one small listing).
            bool started = false;
            const auto measure = [&](const GenExec& runner) -> std::uint64_t {
                const std::size_t reported = putsReported(runner.getOutput(GenExec::OUTPUT_STDERR));
                std::uint64_t bytes = 0;
                std::size_t i = first;
                for (; i < last && i < first + reported; ++i)
                    bytes += plan.items[i].size;
                // The first computation comes as smbclient starts: nothing is
                // written yet, and a listing would only compete with it.
                const bool look = started;
                started = true;
                std::string output;
                if (look && i < last && plan.items[i].size >= worthListing &&
                    listTolerant(loc, "prompt off" + HNRShareScript::list(plan.items[i].remote), output)) {
                    const std::vector<HNRListingBlock> blocks = parseListing(output);
                    if (!blocks.empty())
                        bytes += std::min(blocks.front().fileBytes(), plan.items[i].size);
                }
                return bytes;
            };
            const bool lists = firstListRun >= 0 && static_cast<int>(r) >= firstListRun;
            std::string detail;
            switch (transfer.run(loc, plan.script.scripts()[r], measure, detail,
                                 lists ? std::function<bool(const std::string&)>(listingLine) : nullptr)) {
            case HNRShareTransfer::End::StartError:
                return failWithCurrentMessage(kFunction);
            case HNRShareTransfer::End::FailureLine:
            case HNRShareTransfer::End::Status:
                reportError(kFunction, prefix + explainStatus(detail));
                return false;
            case HNRShareTransfer::End::WaitError: {
                const std::size_t reported = putsReported(transfer.lastStandardError());
                const std::string current = first + reported < last ? plan.items[first + reported].local : "";
                reportError(kFunction, prefix + "wait error" +
                                           (current.empty() ? std::string() : " while putting '" + current + "'") +
                                           detail);
                return false;
            }
            case HNRShareTransfer::End::Finished:
                break;
            }
            if (lists)
                listed += transfer.lastStandardOutput();
            for (std::size_t i = first; i < last; ++i)
                transfer.done(plan.items[i].size);
            first = last;
        }

        // The share must list every file with the size it has here.
        if (!plan.items.empty() && !confirmPut(kFunction, prefix, plan, loc, listed))
            return false;
        transfer.finish();
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
        HNRShareLocation loc;
        if (!loc.parse(kFunction, params))
            return false;
        if (localDir.find('\0') != std::string::npos) {
            reportError(kFunction, "Local folder '" + printableName(localDir) +
                                       "' holds a NUL character, which no tool can carry");
            return false;
        }
        if (!HNRShareScript::carries(kFunction, "Local folder", localDir))
            return false;
        HNRShareRemoteTree tree;
        if (!tree.describe(kFunction, files, loc))
            return false;
        std::uint64_t grandTotal = 0;
        for (const HNRShareRemotePath& path : tree.paths())
            grandTotal += path.bytes;
        if (grandTotal > getDirFreeSpace(localDir)) {
            reportError(kFunction, "Not enough space on local folder '" + localDir + "'");
            return false;
        }
        // smbclient would fetch into its working directory after a failed lcd.
        boost::system::error_code ec;
        if (!fs::is_directory(localDir, ec)) {
            reportError(kFunction, "Local folder '" + localDir + "' is not a directory" +
                                       (ec && ec != boost::system::errc::no_such_file_or_directory
                                            ? ": " + ec.message()
                                            : std::string()));
            return false;
        }

        // The scripts: one group per requested path, as many per run as fit.
        const fs::path local(localDir);
        HNRShareScript script("prompt off; recurse" + HNRShareScript::lcd(localDir));
        std::vector<int> runOf;
        std::vector<std::vector<std::string>> tops(tree.paths().size()); // local names a path fills
        for (std::size_t i = 0; i < tree.paths().size(); ++i) {
            const HNRShareRemotePath& path = tree.paths()[i];
            const std::string fromRoot = HNRShareLocation::join(loc.folder(), path.relative);
            std::string group;
            if (path.isDirectory && !keepTopDirs) {
                group = HNRShareScript::cdAbsolute(fromRoot) + "; mget *";
                for (const std::string& entry : path.entries)
                    tops[i].push_back((local / entry).string());
            } else {
                const std::string leaf = HNRShareLocation::leafOf(fromRoot);
                group = HNRShareScript::cdAbsolute(HNRShareLocation::parentOf(fromRoot)) + HNRShareScript::mget(leaf);
                tops[i].push_back((local / leaf).string());
            }
            const int run = script.add(kFunction, group);
            if (run < 0)
                return false;
            runOf.push_back(run);
        }

        HNRShareTransfer transfer(progress, grandTotal);
        std::size_t first = 0;
        for (std::size_t r = 0; r < script.scripts().size(); ++r) {
            std::size_t last = first;
            std::vector<std::string> expected;
            while (last < runOf.size() && runOf[last] == static_cast<int>(r)) {
                expected.insert(expected.end(), tops[last].begin(), tops[last].end());
                ++last;
            }
            const auto measure = [&](const GenExec&) -> std::uint64_t {
                std::uint64_t current = 0;
                return getSizeRecursiveLocal(expected, current) ? current : 0;
            };
            std::string detail;
            const HNRShareTransfer::End end = transfer.run(loc, script.scripts()[r], measure, detail);
            if (end == HNRShareTransfer::End::StartError) {
                reportError(kFunction, "Can't get file from share: " + getErrorMessage());
                return false;
            }
            if (end != HNRShareTransfer::End::Finished) {
                // The file a failed run was fetching: the first of the run
                // that is not all there yet.
                std::size_t failed = first;
                while (failed + 1 < last) {
                    std::uint64_t have = 0;
                    if (!getSizeRecursiveLocal(tops[failed], have) || have < tree.paths()[failed].bytes)
                        break;
                    ++failed;
                }
                const std::string prefix =
                    "Can't get file '" + files[failed] + "' to directory '" + localDir + "' from share: ";
                if (end == HNRShareTransfer::End::WaitError)
                    reportError(kFunction, prefix + "wait error" + detail);
                else
                    reportError(kFunction, prefix + explainStatus(detail));
                return false;
            }
            for (std::size_t i = first; i < last; ++i)
                transfer.done(tree.paths()[i].bytes);
            first = last;
        }

        // Every listed file must be here with the size the share lists.
        for (std::size_t i = 0; i < tree.paths().size(); ++i) {
            const HNRShareRemotePath& path = tree.paths()[i];
            const std::string leaf = HNRShareLocation::leafOf(path.relative);
            const fs::path base = path.isDirectory && !keepTopDirs ? local : local / leaf;
            for (const auto& file : path.files) {
                const fs::path target = file.first.empty() ? base : base / file.first;
                struct stat st;
                const std::string prefix =
                    "Can't get file '" + files[i] + "' to directory '" + localDir + "' from share: ";
                if (::stat(target.c_str(), &st) != 0) {
                    reportError(kFunction, prefix + "'" + target.string() + "' is missing after the transfer: " +
                                               std::strerror(errno));
                    return false;
                }
                if (static_cast<std::uint64_t>(st.st_size) != file.second) {
                    reportError(kFunction, prefix + "'" + target.string() + "' has " + std::to_string(st.st_size) +
                                               " of " + std::to_string(file.second) + " bytes");
                    return false;
                }
            }
        }
        transfer.finish();
        return true;
    } catch (const std::exception& e) {
        reportError(kFunction, std::string("Can't get file(s) on share: ") + e.what());
        return false;
    }
}

} // namespace HNR
