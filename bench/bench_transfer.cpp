// Transfers through the share client against raw smbclient runs moving the
// same data, on a real smbd (run inside scripts/with-smbd): one file of
// HNR_BENCH_TRANSFER_MB (default 200), and a tree of HNR_BENCH_TREE_FILES
// files of 4 KiB (default 3000) in HNR_BENCH_TREE_FOLDERS folders (default
// 60), put and got by the module with keepTopDirs against raw "recurse on"
// mput / mget of the same tree.
//
// Each pair runs in alternated turns (module first on even turns, raw first
// on odd ones), timed by the wall clock (the work is in the children and the
// server, not in this process); the figure is the median of the per-turn
// ratios module time / raw time, with its range. Also per operation:
//   cpu_ratio median of module / raw CPU time of this process and its
//             reaped children (smbclient, the wrapper): the client side's
//             cost, steadier than the wall clock on a busy machine;
//   runs      smbclient processes the module started (every run goes through
//             a counting wrapper first on PATH, raw runs too, so both pay its
//             small cost alike);
//   progress  progress reports the module made.
//
//   bench_transfer [--turns N] [--tree-turns M]   (defaults 9 and 5)
#include "share/HNRShare.h"

#include "GenExec.h"
#include "HNKErrorMessage.h"

#include <boost/filesystem.hpp>

#include "BenchCpuTime.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <sys/resource.h>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace fs = boost::filesystem;
using HNR::HNRShareConnection;
using HNR::HNRShareParams;

namespace {

std::string env(const char* name)
{
    const char* v = std::getenv(name);
    return v ? v : "";
}

struct Setup {
    std::string share, shareUnix, user, password;
    fs::path dir, payload, runLog, tree, shareDir;
    uint64_t bytes = 0;
    uint64_t treeBytes = 0;

    Setup()
    {
        share = env("HNR_SMB_AUTH_SHARE");
        user = env("HNR_SMB_USER");
        password = env("HNR_SMB_PASSWORD");
        if (share.empty())
            throw std::runtime_error("run inside scripts/with-smbd");
        shareUnix = HNRShareConnection::canonizePath(share);
        long mb = env("HNR_BENCH_TRANSFER_MB").empty() ? 200 : std::atol(env("HNR_BENCH_TRANSFER_MB").c_str());
        bytes = static_cast<uint64_t>(mb) * 1024 * 1024;
        dir = fs::temp_directory_path() / fs::unique_path("hnr-bench-transfer-%%%%%%");
        fs::create_directories(dir / "bin");
        fs::create_directories(dir / "got");
        payload = dir / "payload.bin";
        std::ofstream out(payload.string(), std::ios::binary);
        std::string block(1 << 20, '\0');
        uint64_t x = 88172645463325252ull;
        for (uint64_t done = 0; done < bytes; done += block.size()) {
            for (size_t i = 0; i < block.size(); i += 8) {
                x ^= x << 13, x ^= x >> 7, x ^= x << 17;
                block.replace(i, 8, reinterpret_cast<const char*>(&x), 8);
            }
            out.write(block.data(), static_cast<std::streamsize>(std::min<uint64_t>(block.size(), bytes - done)));
        }
        out.close();
        // The tree, in a folder of its own so that mput names only it.
        const long files = env("HNR_BENCH_TREE_FILES").empty() ? 3000 : std::atol(env("HNR_BENCH_TREE_FILES").c_str());
        const long folders =
            env("HNR_BENCH_TREE_FOLDERS").empty() ? 60 : std::atol(env("HNR_BENCH_TREE_FOLDERS").c_str());
        tree = dir / "src" / "tree";
        fs::create_directories(tree);
        std::string small(4096, 'x');
        for (long f = 0; f < files; ++f) {
            fs::path folder = tree / ("folder " + std::to_string(f % folders));
            fs::create_directories(folder);
            small[0] = static_cast<char>('a' + f % 26);
            std::ofstream(folder / ("file " + std::to_string(f))) << small;
            treeBytes += small.size();
        }
        shareDir = fs::path(env("HNR_SMB_AUTH_DIR")) / "bench";
        // The counting wrapper: one line per smbclient run.
        runLog = dir / "runs.log";
        std::string real;
        std::string path = env("PATH");
        for (size_t at = 0; at <= path.size();) {
            size_t end = path.find(':', at);
            if (end == std::string::npos)
                end = path.size();
            fs::path candidate = fs::path(path.substr(at, end - at)) / "smbclient";
            if (real.empty() && fs::exists(candidate))
                real = candidate.string();
            at = end + 1;
        }
        if (real.empty())
            throw std::runtime_error("smbclient not found");
        fs::path wrapper = dir / "bin" / "smbclient";
        std::ofstream(wrapper.string()) << "#!/bin/sh\necho run >>'" << runLog.string() << "'\nexec '" << real
                                        << "' \"$@\"\n";
        fs::permissions(wrapper, fs::owner_all);
        setenv("PATH", ((dir / "bin").string() + ":" + path).c_str(), 1);
        HNRShareParams params(share, user, password);
        HNRShareConnection::createDir("bench", params); // may exist from an earlier run
    }
    ~Setup()
    {
        boost::system::error_code ec;
        fs::remove_all(dir, ec);
    }
    HNRShareParams benchFolder() const { return HNRShareParams(share + "\\bench", user, password); }
    long runs() const
    {
        std::ifstream in(runLog.string());
        long n = 0;
        std::string line;
        while (std::getline(in, line))
            ++n;
        return n;
    }
    // smbclient with the module's own argument shape, in the bench folder.
    bool raw(const std::string& command) const
    {
        HWExec exec;
        return exec.execWithError({"smbclient", shareUnix, "-U", user + "%" + password, "-D", "bench", "-c", command},
                                  0, 600000) == 0;
    }
};

Setup& setup()
{
    static Setup s;
    return s;
}

class CountingProgress : public HNRShareConnection::Progress {
public:
    void setProgress(double percent) override
    {
        ++calls;
        last = percent;
    }
    long calls = 0;
    double last = -1;
};

double seconds()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// CPU seconds of this process and of its reaped children (smbclient and the
// counting wrapper): what the client side costs, whatever else the machine runs.
double clientCpuSeconds()
{
    double total = 0;
    for (int who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
        rusage u;
        getrusage(who, &u);
        total += static_cast<double>(u.ru_utime.tv_sec + u.ru_stime.tv_sec) +
                 static_cast<double>(u.ru_utime.tv_usec + u.ru_stime.tv_usec) * 1e-6;
    }
    return total;
}

// One side of a pair: prepare (untimed), then the timed work; false on failure.
struct Side {
    std::function<void()> prepare;
    std::function<bool()> work;
};

struct Pair {
    std::vector<double> module, raw, ratios, cpuRatios;
    long runs = 0, progress = 0;
    bool ok = true;
};

CountingProgress* g_progress = nullptr;

Pair alternate(int turns, const Side& module, const Side& raw)
{
    Setup& s = setup();
    Pair p;
    double cpu = 0;
    const auto timed = [&](const Side& side, bool isModule) {
        side.prepare();
        CountingProgress progress;
        g_progress = &progress;
        const long before = s.runs();
        const double cpuStart = clientCpuSeconds();
        const double start = seconds();
        const bool ok = side.work();
        const double took = seconds() - start;
        cpu = clientCpuSeconds() - cpuStart;
        if (isModule) {
            p.runs += s.runs() - before;
            p.progress += progress.calls;
            if (progress.last != 100.0)
                p.ok = false;
        }
        if (!ok) {
            std::fprintf(stderr, "%s failed: %s\n", isModule ? "module" : "raw smbclient",
                         isModule ? getErrorMessage().c_str() : "see its output");
            p.ok = false;
        }
        return took;
    };
    for (int turn = 0; turn < turns && p.ok; ++turn) {
        double m, r, mCpu, rCpu;
        if (turn % 2 == 0) {
            m = timed(module, true);
            mCpu = cpu;
            r = timed(raw, false);
            rCpu = cpu;
        } else {
            r = timed(raw, false);
            rCpu = cpu;
            m = timed(module, true);
            mCpu = cpu;
        }
        p.module.push_back(m);
        p.raw.push_back(r);
        p.ratios.push_back(m / r);
        p.cpuRatios.push_back(rCpu > 0 ? mCpu / rCpu : 0);
    }
    return p;
}

bool report(const char* name, const Pair& p, bool throughput)
{
    if (!p.ok || p.ratios.empty()) {
        std::printf("%-24s FAILED\n", name);
        std::fflush(stdout);
        return false;
    }
    const double n = static_cast<double>(p.ratios.size());
    // Throughput ratios are raw time / module time: the inverse of each turn's ratio.
    std::vector<double> shown;
    for (double r : p.ratios)
        shown.push_back(throughput ? 1.0 / r : r);
    std::printf("%-24s %9.0f %9.0f %8.3f  %5.3f-%5.3f %9.3f %6.1f %9.1f %6zu\n", name,
                HNRBench::median(p.module) * 1000, HNRBench::median(p.raw) * 1000, HNRBench::median(shown),
                *std::min_element(shown.begin(), shown.end()), *std::max_element(shown.begin(), shown.end()),
                HNRBench::median(p.cpuRatios), static_cast<double>(p.runs) / n, static_cast<double>(p.progress) / n,
                p.ratios.size());
    std::fflush(stdout);
    return true;
}

int intArg(int argc, char** argv, const char* name, int fallback)
{
    for (int i = 1; i + 1 < argc; ++i)
        if (std::strcmp(argv[i], name) == 0)
            return std::max(1, std::atoi(argv[i + 1]));
    return fallback;
}

} // namespace

int main(int argc, char** argv)
{
    try {
        const int turns = intArg(argc, argv, "--turns", 9);
        const int treeTurns = intArg(argc, argv, "--tree-turns", 5);
        Setup& s = setup();
        const fs::path got = s.dir / "got";
        const auto nothing = [] {};
        const auto removeGot = [&] {
            boost::system::error_code ec;
            fs::remove(got / "payload.bin", ec);
            fs::remove_all(got / "tree", ec);
        };
        const auto removeRemoteTree = [&] {
            boost::system::error_code ec;
            fs::remove_all(s.shareDir / "tree", ec);
        };

        std::printf("%-24s %9s %9s %8s  %11s %9s %6s %9s %6s\n", "operation", "module_ms", "raw_ms", "ratio",
                    "range", "cpu_ratio", "runs", "progress", "turns");
        bool ok = true;
        // Put first: the gets read what the puts left on the share.
        ok &= report("put (throughput)",
                     alternate(turns,
                               {nothing,
                                [&] {
                                    return HNRShareConnection::putFiles({s.payload.string()}, s.benchFolder(), false,
                                                                        g_progress);
                                }},
                               {nothing, [&] { return s.raw("put \"" + s.payload.string() + "\" \"payload.bin\""); }}),
                     true);
        ok &= report("get (throughput)",
                     alternate(turns,
                               {removeGot,
                                [&] {
                                    return HNRShareConnection::getFiles({"payload.bin"}, s.benchFolder(),
                                                                        got.string(), false, g_progress);
                                }},
                               {removeGot,
                                [&] { return s.raw("get \"payload.bin\" \"" + (got / "payload.bin").string() + "\""); }}),
                     true);
        ok &= report("tree put (time)",
                     alternate(treeTurns,
                               {removeRemoteTree,
                                [&] {
                                    return HNRShareConnection::putFiles({s.tree.string()}, s.benchFolder(), true,
                                                                        g_progress);
                                }},
                               {removeRemoteTree,
                                [&] {
                                    return s.raw("prompt off; recurse on; lcd \"" + s.tree.parent_path().string() +
                                                 "\"; mput tree");
                                }}),
                     false);
        // The last put turn left the tree on the share (odd turn counts end
        // with the module's put, even ones with raw mput: either will do).
        ok &= report("tree get (time)",
                     alternate(treeTurns,
                               {removeGot,
                                [&] {
                                    return HNRShareConnection::getFiles({"tree"}, s.benchFolder(), got.string(), true,
                                                                        g_progress);
                                }},
                               {removeGot,
                                [&] {
                                    return s.raw("prompt off; recurse on; lcd \"" + got.string() + "\"; mget tree");
                                }}),
                     false);
        std::printf("\nratio: put/get module/raw throughput (target >= 0.9), trees module/raw time (target <= 1.3);\n"
                    "median of per-turn ratios, range = lowest-highest turn; cpu_ratio = module/raw CPU time of\n"
                    "this process and its children (client side only); runs = smbclient runs per module operation "
                    "(raw: 1)\n");
        return ok ? 0 : 1;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "bench_transfer: %s\n", e.what());
        return 1;
    }
}
