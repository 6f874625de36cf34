// The share client's fault campaign against a real smbd (run inside
// scripts/with-smbd; scripts/soak-share runs the full one, CTest a small one).
//
//   HNRShareSoak [--rounds N] [--mb M] [--files F --folders D]
//
// With --files, first a tree of F files in D folders is put and got back and
// compared byte for byte (scripts/soak-share: 10,000 in 200).
//
// Rounds of a put and of a get whose server side is killed mid-transfer
// (time to return, tool processes left, bytes reported), a local disk that
// fills after the space check, a read-only target, a missing smbclient, 16
// threads on the connection registry and transfers at once, and hostile names.
// Prints the figures; exits 1 when any round broke a promise (true without
// the bytes, a tool left behind, 100 reported on failure, no message).
#include <atomic>
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <sched.h>
#include <set>
#include <string>
#include <sys/mount.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include <boost/filesystem/operations.hpp>

#include "HNKErrorMessage.h"
#include "HNKFramework/ProcessChecks.h"
#include "share/HNRShare.h"
#include "share/HNRStaticConnections.h"
#include "smbd/SmbServer.h"

namespace fs = boost::filesystem;
using Clock = std::chrono::steady_clock;
using HNR::HNRShareConnection;
using HNR::HNRShareParams;

namespace {

int g_failures = 0;

void expect(bool ok, const std::string& what)
{
    if (!ok) {
        ++g_failures;
        std::printf("  VIOLATION: %s\n", what.c_str());
    }
}

std::string env(const char* name)
{
    const char* v = std::getenv(name);
    return v ? v : "";
}

double seconds(Clock::duration d) { return std::chrono::duration<double>(d).count(); }

std::uint64_t fileSize(const std::string& path)
{
    struct stat st;
    return ::stat(path.c_str(), &st) == 0 ? static_cast<std::uint64_t>(st.st_size) : 0;
}



// smbclient processes whose command line names marker (our private folder).
int toolsMentioning(const std::string& marker)
{
    int count = 0;
    DIR* proc = ::opendir("/proc");
    if (!proc)
        return -1;
    while (dirent* entry = ::readdir(proc)) {
        if (std::atoi(entry->d_name) <= 0)
            continue;
        const std::string base = std::string("/proc/") + entry->d_name;
        const std::string cmd = readAll(base + "/cmdline");
        if (cmd.find("smbclient") != 0 || cmd.find(marker) == std::string::npos)
            continue;
        const std::string stat = readAll(base + "/stat");
        std::size_t close = stat.rfind(')');
        if (close != std::string::npos && close + 2 < stat.size() && stat[close + 2] == 'Z')
            continue;
        ++count;
    }
    ::closedir(proc);
    return count;
}

std::size_t countLines(const std::string& path)
{
    const std::string text = readAll(path);
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

void writeBytes(const std::string& path, std::uint64_t size, unsigned seed)
{
    std::ofstream out(path, std::ios::binary);
    std::string block(1 << 20, '\0');
    std::uint32_t x = seed * 2654435761u + 1;
    for (std::uint64_t done = 0; done < size; done += block.size()) {
        for (char& c : block) {
            x ^= x << 13;
            x ^= x >> 17;
            x ^= x << 5;
            c = static_cast<char>(x);
        }
        out.write(block.data(), static_cast<std::streamsize>(std::min<std::uint64_t>(block.size(), size - done)));
    }
}

class LastProgress : public HNRShareConnection::Progress {
public:
    void setProgress(double percent) override
    {
        last = percent;
        if (onProgress)
            onProgress();
    }
    double last = 0.0;
    std::function<void()> onProgress;
};

struct Figures {
    std::vector<double> returnSeconds;
    int trueResults = 0, toolsLeft = 0, reached100 = 0, emptyMessages = 0;
    std::vector<double> reportedShare; // bytes reported / bytes of the file
};

double median(std::vector<double> v)
{
    if (v.empty())
        return 0.0;
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

void printFigures(const char* what, const Figures& f, int rounds)
{
    std::printf("%-24s rounds %3d | return after kill: median %.2f s, max %.2f s | true %d | tools left %d | "
                "100%% reported %d | empty message %d | bytes reported: median %.0f%%, max %.0f%%\n",
                what, rounds, median(f.returnSeconds),
                f.returnSeconds.empty() ? 0.0 : *std::max_element(f.returnSeconds.begin(), f.returnSeconds.end()),
                f.trueResults, f.toolsLeft, f.reached100, f.emptyMessages, 100.0 * median(f.reportedShare),
                f.reportedShare.empty() ? 0.0
                                        : 100.0 * *std::max_element(f.reportedShare.begin(), f.reportedShare.end()));
    expect(f.trueResults == 0, std::string(what) + ": a transfer with its server killed returned true");
    expect(f.toolsLeft == 0, std::string(what) + ": smbclient left running");
    expect(f.reached100 == 0, std::string(what) + ": 100 reported on failure");
    expect(f.emptyMessages == 0, std::string(what) + ": false without a message");
}

struct Campaign {
    std::string share = HNRTest::SmbServer::get().guestShare;
    std::string shareDir = HNRTest::SmbServer::get().guestDir;
    int smbd = HNRTest::SmbServer::get().smbdPid;
    std::string local;
    std::uint64_t bytes;

    // One transfer whose server side is killed once `watched` holds a tenth
    // of the file.
    void killedRound(bool put, int round, Figures& f)
    {
        const std::string name = std::string(put ? "put" : "get") + " victim " + std::to_string(round);
        const std::string localFile = local + "/" + name;
        const std::string remoteFile = shareDir + "/" + name;
        if (put)
            writeBytes(localFile, bytes, static_cast<unsigned>(round));
        else
            writeBytes(remoteFile, bytes, static_cast<unsigned>(round));
        const std::set<int> before = childrenOf(smbd);
        const std::string watched = put ? remoteFile : localFile;
        Clock::time_point killedAt{};
        bool killed = false;
        LastProgress progress;
        progress.onProgress = [&] {
            if (killed)
                return;
            const auto start = Clock::now();
            while (fileSize(watched) < bytes / 10 && Clock::now() - start < std::chrono::seconds(30))
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            for (int child : childrenOf(smbd))
                if (!before.count(child))
                    ::kill(child, SIGKILL);
            killed = true;
            killedAt = Clock::now();
        };
        setErrorMessage("%s", "");
        const HNRShareParams params(share, "", "");
        const bool ok = put ? HNRShareConnection::putFiles({localFile}, params, true, &progress)
                            : HNRShareConnection::getFiles({name}, params, local, true, &progress);
        const auto returned = Clock::now();
        f.returnSeconds.push_back(killed ? seconds(returned - killedAt) : -1.0);
        f.trueResults += ok ? 1 : 0;
        f.toolsLeft += toolsMentioning(local);
        f.reached100 += progress.last >= 100.0 && !ok ? 1 : 0;
        f.emptyMessages += !ok && getErrorMessage().empty() ? 1 : 0;
        f.reportedShare.push_back(progress.last / 100.0);
        if (round == 0)
            std::printf("  %s round 0: %s\n", put ? "put" : "get", getErrorMessage().c_str());
        ::unlink(localFile.c_str());
        ::unlink(remoteFile.c_str());
    }
};

void fullDiskAndReadOnly(Campaign& c)
{
    if (::unshare(CLONE_NEWNS) != 0 || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
        expect(false, std::string("private mount namespace: ") + std::strerror(errno));
        return;
    }
    const std::string small = c.local + "/small";
    ::mkdir(small.c_str(), 0755);
    expect(::mount("tmpfs", small.c_str(), "tmpfs", 0, "size=2m") == 0, "tmpfs for the full disk");
    writeBytes(c.shareDir + "/fills", 1536 * 1024, 7);
    LastProgress progress;
    bool filled = false;
    progress.onProgress = [&] {
        if (filled)
            return;
        filled = true;
        int fd = ::open((small + "/filler").c_str(), O_WRONLY | O_CREAT, 0644);
        static const char block[4096] = {};
        while (fd >= 0 && ::write(fd, block, sizeof block) > 0) {
        }
        if (fd >= 0)
            ::close(fd);
    };
    bool ok = HNRShareConnection::getFiles({"fills"}, HNRShareParams(c.share, "", ""), small, true, &progress);
    std::printf("full disk after the space check: %s, last progress %.0f%%: %s\n", ok ? "TRUE" : "false",
                progress.last, getErrorMessage().c_str());
    expect(!ok && progress.last < 100.0, "full disk: true or 100 reported");
    ::umount2(small.c_str(), MNT_DETACH);

    const std::string ro = c.local + "/ro";
    ::mkdir(ro.c_str(), 0755);
    expect(::mount("tmpfs", ro.c_str(), "tmpfs", MS_RDONLY, "size=1m") == 0, "read-only tmpfs");
    ::mkdir((c.shareDir + "/folder").c_str(), 0777);
    writeBytes(c.shareDir + "/folder/inside", 5000, 8);
    ok = HNRShareConnection::getFiles({"folder"}, HNRShareParams(c.share, "", ""), ro, true, nullptr);
    std::printf("read-only target, keepTopDirs: %s: %s\n", ok ? "TRUE" : "false", getErrorMessage().c_str());
    expect(!ok, "read-only target: true");
    ::umount2(ro.c_str(), MNT_DETACH);
}

void missingTool(Campaign& c)
{
    const std::string path = env("PATH");
    const std::string empty = c.local + "/empty bin";
    ::mkdir(empty.c_str(), 0755);
    ::setenv("PATH", empty.c_str(), 1);
    writeBytes(c.local + "/small file", 100, 9);
    const HNRShareParams params(c.share, "", "");
    std::uint64_t total = 0;
    const std::vector<std::pair<const char*, std::function<bool()>>> ops = {
        {"check", [&] { return HNRShareConnection::check(params); }},
        {"putFiles", [&] { return HNRShareConnection::putFiles({c.local + "/small file"}, params, true, nullptr); }},
        {"getFiles", [&] { return HNRShareConnection::getFiles({"x"}, params, c.local, true, nullptr); }},
        {"size", [&] { return HNRShareConnection::size({"x"}, params, total); }},
    };
    for (const auto& op : ops) {
        const bool ok = op.second();
        std::printf("missing smbclient, %s: %s: %s\n", op.first, ok ? "TRUE" : "false", getErrorMessage().c_str());
        expect(!ok && getErrorMessage().find("Program 'smbclient' not found") != std::string::npos,
               std::string("missing tool: ") + op.first);
    }
    ::setenv("PATH", path.c_str(), 1);
}

// 16 threads: the registry (mount tools played by the test stand-ins) and
// real transfers at once.
void sixteenThreads(Campaign& c, int rounds)
{
    const std::string bin = c.local + "/fake bin";
    ::mkdir(bin.c_str(), 0755);
    for (const char* tool : {"mount", "mount.cifs", "umount.cifs"})
        if (::symlink(HNR_TEST_SCRIPTS_DIR "/fake-smb-tool", (bin + "/" + tool).c_str()) != 0)
            expect(false, "fake tool link");
    const std::string mtab = c.local + "/mtab";
    ::setenv("HNR_FAKE_MTAB", mtab.c_str(), 1);
    const std::string path = env("PATH");
    ::setenv("PATH", (bin + ":" + path).c_str(), 1);
    std::atomic<int> failures{0};
    const auto start = Clock::now();
    std::vector<std::thread> threads;
    for (int t = 0; t < 16; ++t) {
        threads.emplace_back([&, t] {
            const HNRShareParams fake("\\\\srv\\share" + std::to_string(t % 4), "user", "password");
            const std::string mine = c.local + "/thread " + std::to_string(t);
            ::mkdir(mine.c_str(), 0755);
            writeBytes(mine + "/payload", 64 * 1024 + static_cast<std::uint64_t>(t), static_cast<unsigned>(t));
            for (int r = 0; r < rounds; ++r) {
                const std::string key = "key " + std::to_string(t) + " " + std::to_string(r);
                if (!HNR::HNRStaticConnections::add(fake, key) || !HNR::HNRStaticConnections::isExist(key))
                    ++failures;
                const HNRShareParams real(c.share + "\\", "", "");
                if (!HNRShareConnection::createDir("t" + std::to_string(t) + "r" + std::to_string(r), real) ||
                    !HNRShareConnection::putFiles({mine + "/payload"},
                                                  HNRShareParams(c.share + "\\t" + std::to_string(t) + "r" +
                                                                     std::to_string(r), "", ""),
                                                  true, nullptr))
                    ++failures;
                HNR::HNRStaticConnections::remove(key);
                if (HNR::HNRStaticConnections::isExist(key))
                    ++failures;
            }
        });
    }
    for (std::thread& t : threads)
        t.join();
    const std::string left = readAll(mtab);
    std::printf("16 threads x %d rounds (registry add/remove + mkdir + put each): %.1f s, failures %d, "
                "mounts left %zu, mounts %zu, unmounts %zu\n",
                rounds, seconds(Clock::now() - start), failures.load(),
                static_cast<std::size_t>(std::count(left.begin(), left.end(), '\n')),
                countLines(mtab + ".mounts"), countLines(mtab + ".umounts"));
    expect(failures == 0, "16 threads: an operation failed");
    expect(left.empty(), "16 threads: a mount was left");
    ::setenv("PATH", path.c_str(), 1);
    ::unsetenv("HNR_FAKE_MTAB");
}

std::uint64_t checksum(const std::string& path)
{
    const std::string data = readAll(path);
    std::uint64_t h = 1469598103934665603ull;
    for (unsigned char ch : data) {
        h ^= ch;
        h *= 1099511628211ull;
    }
    return h;
}

// Relative name -> checksum of every file below root.
std::map<std::string, std::uint64_t> treeSums(const std::string& root)
{
    std::map<std::string, std::uint64_t> sums;
    for (fs::recursive_directory_iterator it(root), end; it != end; ++it)
        if (fs::is_regular_file(it->path()))
            sums[it->path().string().substr(root.size())] = checksum(it->path().string());
    return sums;
}

class CountingProgress : public HNRShareConnection::Progress {
public:
    void setProgress(double percent) override
    {
        monotonic = monotonic && percent >= last;
        last = percent;
    }
    double last = 0.0;
    bool monotonic = true;
};

void bigTree(Campaign& c, long files, long folders)
{
    const std::string tree = c.local + "/big tree";
    for (long f = 0; f < files; ++f) {
        const std::string folder = tree + "/folder " + std::to_string(f % folders);
        fs::create_directories(folder);
        writeBytes(folder + "/file number " + std::to_string(f), static_cast<std::uint64_t>(f * 131 % 8192),
                   static_cast<unsigned>(f));
    }
    const HNRShareParams params(c.share, "", "");
    CountingProgress put;
    auto start = Clock::now();
    bool ok = HNRShareConnection::putFiles({tree}, params, true, &put);
    const double putSeconds = seconds(Clock::now() - start);
    if (!ok)
        std::printf("  put: %s\n", getErrorMessage().c_str());
    const bool putSame = ok && treeSums(c.shareDir + "/big tree") == treeSums(tree);
    const std::string out = c.local + "/big out";
    fs::create_directories(out);
    CountingProgress get;
    start = Clock::now();
    bool got = HNRShareConnection::getFiles({"big tree"}, params, out, true, &get);
    const double getSeconds = seconds(Clock::now() - start);
    if (!got)
        std::printf("  get: %s\n", getErrorMessage().c_str());
    const bool getSame = got && treeSums(out + "/big tree") == treeSums(tree);
    std::printf("%ld files in %ld folders: put %s in %.1f s (identical: %s, progress monotonic to %.0f: %s), "
                "get %s in %.1f s (identical: %s, progress monotonic to %.0f: %s)\n",
                files, folders, ok ? "true" : "FALSE", putSeconds, putSame ? "yes" : "NO", put.last,
                put.monotonic ? "yes" : "NO", got ? "true" : "FALSE", getSeconds, getSame ? "yes" : "NO", get.last,
                get.monotonic ? "yes" : "NO");
    expect(putSame && getSame && put.monotonic && get.monotonic && put.last == 100.0 && get.last == 100.0,
           "big tree");
    boost::system::error_code ec;
    fs::remove_all(tree, ec);
    fs::remove_all(out, ec);
    fs::remove_all(c.shareDir + "/big tree", ec);
}

void hostileNames(Campaign& c)
{
    const HNRShareParams params(c.share, "", "");
    const std::vector<std::string> names = {
        std::string("a\0.secret", 9), "..\\..\\escape", "a/../../b", "x;rm *", "quote\"d", "line\nbreak",
    };
    int refused = 0;
    for (const std::string& name : names) {
        std::uint64_t total = 0;
        const bool created = HNRShareConnection::createDir(name, params);
        const bool sized = HNRShareConnection::size({name}, params, total);
        const bool fetched = HNRShareConnection::getFiles({name}, params, c.local, true, nullptr);
        refused += (!created && !sized && !fetched) ? 1 : 0;
    }
    std::printf("hostile names refused by createDir, size and getFiles: %d of %zu\n", refused, names.size());
    expect(refused == static_cast<int>(names.size()), "a hostile name was accepted");
    expect(!fs::exists(c.shareDir + "/escape") && !fs::exists(fs::path(c.shareDir).parent_path() / "escape"),
           "'..' escaped");
}

} // namespace

int main(int argc, char** argv)
{
    int rounds = 20;
    long mb = 100;
    long files = 0;
    long folders = 1;
    for (int i = 1; i + 1 < argc; i += 2) {
        if (std::string(argv[i]) == "--rounds")
            rounds = std::atoi(argv[i + 1]);
        else if (std::string(argv[i]) == "--mb")
            mb = std::atol(argv[i + 1]);
        else if (std::string(argv[i]) == "--files")
            files = std::atol(argv[i + 1]);
        else if (std::string(argv[i]) == "--folders")
            folders = std::max(1L, std::atol(argv[i + 1]));
    }
    Campaign c;
    if (c.share.empty() || c.smbd <= 0) {
        std::fprintf(stderr, "run inside scripts/with-smbd\n");
        return 2;
    }
    char pattern[] = "/tmp/hnr-share-soak-XXXXXX";
    if (!::mkdtemp(pattern))
        return 2;
    c.local = pattern;
    c.bytes = static_cast<std::uint64_t>(mb) << 20;

    std::printf("Share fault campaign: %d rounds, %ld MiB per killed transfer\n", rounds, mb);
    if (files > 0)
        bigTree(c, files, folders);
    fullDiskAndReadOnly(c);
    missingTool(c);
    hostileNames(c);
    Figures put, get;
    for (int r = 0; r < rounds; ++r)
        c.killedRound(true, r, put);
    printFigures("server killed mid-put", put, rounds);
    for (int r = 0; r < rounds; ++r)
        c.killedRound(false, r, get);
    printFigures("server killed mid-get", get, rounds);
    sixteenThreads(c, std::max(2, rounds / 4));

    boost::system::error_code ec;
    fs::remove_all(c.local, ec);
    std::printf("%s: %d violation(s)\n", g_failures == 0 ? "PASS" : "FAIL", g_failures);
    return g_failures == 0 ? 0 : 1;
}
