// Message round trip of a VM configuration with N devices against pugixml
// parsing and serializing the same text. Counters:
//   ns_per_device  wall time of one round trip divided by N (flat when every
//                  step is linear in the number of devices);
//   x_pugixml      one round trip over one pugixml parse + serialize of the
//                  same text, measured in the same run.
#include "BenchMessageRoundTrip.h"
#include "BenchMessageText.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <map>

namespace {

const std::string& textFor(size_t devices)
{
    static std::map<size_t, std::string> cache;
    auto found = cache.find(devices);
    if (found == cache.end())
        found = cache.emplace(devices, HNRBench::configurationWithDevices(devices)).first;
    return found->second;
}

double secondsOf(const std::chrono::steady_clock::duration& d)
{
    return std::chrono::duration<double>(d).count();
}

// Best of a few pugixml round trips: the yardstick for x_pugixml.
double pugixmlSeconds(const std::string& text)
{
    double best = 1e9;
    for (int i = 0; i < 5; ++i) {
        auto start = std::chrono::steady_clock::now();
        benchmark::DoNotOptimize(HNRBench::pugixmlRoundTrip(text));
        best = std::min(best, secondsOf(std::chrono::steady_clock::now() - start));
    }
    return best;
}

void BM_MessageRoundTrip(benchmark::State& state)
{
    size_t devices = static_cast<size_t>(state.range(0));
    const std::string& text = textFor(devices);
    double yardstick = pugixmlSeconds(text);
    std::chrono::steady_clock::duration spent{};
    for (auto _ : state) {
        auto start = std::chrono::steady_clock::now();
        benchmark::DoNotOptimize(HNRBench::roundTrip(text));
        spent += std::chrono::steady_clock::now() - start;
    }
    double perRun = secondsOf(spent) / static_cast<double>(state.iterations());
    state.counters["ns_per_device"] = perRun * 1e9 / static_cast<double>(devices);
    state.counters["x_pugixml"] = perRun / yardstick;
    state.counters["text_MB"] = static_cast<double>(text.size()) / 1e6;
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(text.size()));
}

void BM_PugixmlRoundTrip(benchmark::State& state)
{
    size_t devices = static_cast<size_t>(state.range(0));
    const std::string& text = textFor(devices);
    for (auto _ : state)
        benchmark::DoNotOptimize(HNRBench::pugixmlRoundTrip(text));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(text.size()));
}

} // namespace

BENCHMARK(BM_MessageRoundTrip)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_PugixmlRoundTrip)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond)->UseRealTime();

BENCHMARK_MAIN();
