// Transfers through the share client against raw smbclient runs moving the
// same file, on a real smbd (run inside scripts/with-smbd). The file size is
// HNR_BENCH_TRANSFER_MB (default 200). Counters:
//   smbclient_runs  smbclient processes started per operation (every run
//                   goes through a counting wrapper first on PATH, for the
//                   raw runs as well, so both pay the same small cost);
//   progress_calls  progress reports per operation (0 for raw runs).
// Trees: HNR_BENCH_TREE_FILES files of 4 KiB (default 3000) in
// HNR_BENCH_TREE_FOLDERS folders (default 60), put and got by the module with
// keepTopDirs against raw "recurse on" mput / mget of the same tree.
// scripts/bench divides the module's throughput by the raw one.
#include "share/HNRShare.h"

#include "GenExec.h"
#include "HNKErrorMessage.h"

#include <benchmark/benchmark.h>

#include <boost/filesystem.hpp>

#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>

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

void finish(benchmark::State& state, long runsBefore, long progressCalls, bool tree = false)
{
    Setup& s = setup();
    double n = static_cast<double>(state.iterations());
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                            static_cast<int64_t>(tree ? s.treeBytes : s.bytes));
    state.counters["smbclient_runs"] = static_cast<double>(s.runs() - runsBefore) / n;
    // Every run carries every counter (the CSV report needs it): raw runs report 0.
    state.counters["progress_calls"] = static_cast<double>(progressCalls) / n;
}

void BM_ModulePutFiles(benchmark::State& state)
{
    Setup& s = setup();
    long before = s.runs(), calls = 0;
    for (auto _ : state) {
        CountingProgress progress;
        if (!HNRShareConnection::putFiles({s.payload.string()}, s.benchFolder(), false, &progress) ||
            progress.last != 100.0) {
            state.SkipWithError(getErrorMessage().c_str());
            return;
        }
        calls += progress.calls;
    }
    finish(state, before, calls);
}

void BM_RawSmbclientPut(benchmark::State& state)
{
    Setup& s = setup();
    long before = s.runs();
    for (auto _ : state) {
        if (!s.raw("put \"" + s.payload.string() + "\" \"payload.bin\"")) {
            state.SkipWithError("smbclient put failed");
            return;
        }
    }
    finish(state, before, 0);
}

void BM_ModuleGetFiles(benchmark::State& state)
{
    Setup& s = setup();
    long before = s.runs(), calls = 0;
    for (auto _ : state) {
        CountingProgress progress;
        if (!HNRShareConnection::getFiles({"payload.bin"}, s.benchFolder(), (s.dir / "got").string(), false,
                                          &progress) ||
            progress.last != 100.0) {
            state.SkipWithError(getErrorMessage().c_str());
            return;
        }
        calls += progress.calls;
        state.PauseTiming();
        fs::remove(s.dir / "got" / "payload.bin");
        state.ResumeTiming();
    }
    finish(state, before, calls);
}

void BM_RawSmbclientGet(benchmark::State& state)
{
    Setup& s = setup();
    long before = s.runs();
    for (auto _ : state) {
        if (!s.raw("get \"payload.bin\" \"" + (s.dir / "got" / "payload.bin").string() + "\"")) {
            state.SkipWithError("smbclient get failed");
            return;
        }
        state.PauseTiming();
        fs::remove(s.dir / "got" / "payload.bin");
        state.ResumeTiming();
    }
    finish(state, before, 0);
}

// The share's copy of the tree goes between turns: a put makes its folders.
void removeRemoteTree(benchmark::State& state)
{
    state.PauseTiming();
    boost::system::error_code ec;
    fs::remove_all(setup().shareDir / "tree", ec);
    state.ResumeTiming();
}

void BM_ModulePutTree(benchmark::State& state)
{
    Setup& s = setup();
    long before = s.runs(), calls = 0;
    for (auto _ : state) {
        removeRemoteTree(state);
        CountingProgress progress;
        if (!HNRShareConnection::putFiles({s.tree.string()}, s.benchFolder(), true, &progress) ||
            progress.last != 100.0) {
            state.SkipWithError(getErrorMessage().c_str());
            return;
        }
        calls += progress.calls;
    }
    finish(state, before, calls, true);
}

void BM_RawSmbclientPutTree(benchmark::State& state)
{
    Setup& s = setup();
    long before = s.runs();
    for (auto _ : state) {
        removeRemoteTree(state);
        if (!s.raw("prompt off; recurse on; lcd \"" + s.tree.parent_path().string() + "\"; mput tree")) {
            state.SkipWithError("smbclient mput failed");
            return;
        }
    }
    finish(state, before, 0, true);
}

void removeLocalTree(benchmark::State& state)
{
    state.PauseTiming();
    fs::remove_all(setup().dir / "got" / "tree");
    state.ResumeTiming();
}

void BM_ModuleGetTree(benchmark::State& state)
{
    Setup& s = setup();
    long before = s.runs(), calls = 0;
    for (auto _ : state) {
        CountingProgress progress;
        if (!HNRShareConnection::getFiles({"tree"}, s.benchFolder(), (s.dir / "got").string(), true, &progress) ||
            progress.last != 100.0) {
            state.SkipWithError(getErrorMessage().c_str());
            return;
        }
        calls += progress.calls;
        removeLocalTree(state);
    }
    finish(state, before, calls, true);
}

void BM_RawSmbclientGetTree(benchmark::State& state)
{
    Setup& s = setup();
    long before = s.runs();
    for (auto _ : state) {
        if (!s.raw("prompt off; recurse on; lcd \"" + (s.dir / "got").string() + "\"; mget tree")) {
            state.SkipWithError("smbclient mget failed");
            return;
        }
        removeLocalTree(state);
    }
    finish(state, before, 0, true);
}

} // namespace

// Put first: the gets read the file the puts left on the share.
BENCHMARK(BM_RawSmbclientPut)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_ModulePutFiles)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_RawSmbclientGet)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_ModuleGetFiles)->Unit(benchmark::kMillisecond)->UseRealTime();
// Alternating turns would be fairer still; each pair runs back to back.
BENCHMARK(BM_RawSmbclientPutTree)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_ModulePutTree)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_RawSmbclientGetTree)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_ModuleGetTree)->Unit(benchmark::kMillisecond)->UseRealTime();

BENCHMARK_MAIN();
