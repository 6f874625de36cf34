// Message round trip of a VM configuration with N devices against pugixml
// parsing and serializing the same text.
//
//   bench_message [--turns T] [N...]      (default 11 1000 10000 100000)
//   bench_message --repeat R N            R round trips of N devices, nothing
//                                         else: a steady load for a profiler
//   bench_message --steps [--turns T] [N...]  where the round trip's time
//                                         goes: each step against pugixml's
//                                         whole round trip, measured alike
//
// Method: process CPU time (the machine is shared; time spent descheduled is
// not the code's). Each turn times one batch of pugixml round trips and one
// batch of message round trips of the same text, the order flipping every
// turn, and takes the ratio of the two; the figure is the median of the
// per-turn ratios. A batch repeats the round trip until it has run about
// 50 ms, so small texts are timed over many runs.
#include "BenchCpuTime.h"
#include "BenchMessageRoundTrip.h"
#include "BenchMessageText.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

namespace {

using HNRBench::cpuSeconds;
using HNRBench::median;

volatile size_t sink;

template <class F>
double batchSeconds(F&& f, int runs)
{
    double start = cpuSeconds();
    for (int i = 0; i < runs; ++i)
        sink = f().size();
    return (cpuSeconds() - start) / runs;
}

int defaultTurns(size_t devices) { return devices <= 1000 ? 15 : devices <= 10000 ? 9 : 7; }

// Each step of the round trip as a multiple of pugixml's round trip of the
// same text, per turn, then the median over the turns. "rest" is what the
// steps do not cover: the request and answer going away at the end.
void printSteps(size_t n, int turns)
{
    using HNRBench::Steps;
    const std::string text = HNRBench::configurationWithDevices(n);
    auto pugi = [&text] { return HNRBench::pugixmlRoundTrip(text); };
    double once = batchSeconds([&text] { return HNRBench::roundTrip(text); }, 1);
    int runs = std::max(1, static_cast<int>(0.05 / std::max(once, 1e-7)));
    std::vector<double> share[Steps::kCount + 2]; // the steps, rest, whole
    const int readings = 20000;
    double first = cpuSeconds();
    for (int i = 1; i < readings; ++i)
        cpuSeconds();
    const double clock = (cpuSeconds() - first) / readings; // one reading of the clock
    std::vector<Steps> perTurn;
    const HNRBench::Turns timed = HNRBench::alternate(
        turns,
        [&] {
            perTurn.emplace_back();
            for (int i = 0; i < runs; ++i)
                sink = HNRBench::roundTrip(text, false, &perTurn.back()).size();
        },
        [&] { batchSeconds(pugi, runs); });
    for (int turn = 0; turn < turns; ++turn) {
        Steps& steps = perTurn[static_cast<size_t>(turn)];
        const double pugiSeconds = timed.second[static_cast<size_t>(turn)];
        double whole = timed.first[static_cast<size_t>(turn)];
        // Each step timed also holds one reading of the clock (a system
        // call, not the code's): taken out.
        double covered = 0;
        int marks = 0;
        for (int k = 0; k < Steps::kCount; ++k) {
            if (k == Steps::Release)
                continue;
            steps.seconds[k] -= clock * runs;
            share[k].push_back(steps.seconds[k] / pugiSeconds);
            covered += steps.seconds[k];
            ++marks;
        }
        whole -= (marks + 1) * clock * runs;
        share[Steps::kCount].push_back((whole - covered) / pugiSeconds);
        share[Steps::kCount + 1].push_back(whole / pugiSeconds);
    }
    std::printf("%zu devices, %zu bytes, %d turns: each step in pugixml round trips of the text\n", n, text.size(),
                turns);
    for (int k = 0; k < Steps::kCount + 2; ++k) {
        if (k == Steps::Release)
            continue; // the request is held here, as in the timed round trip
        const char* name = k < Steps::kCount ? Steps::name(k) : k == Steps::kCount ? "rest" : "whole round trip";
        std::printf("  %-26s %6.2f\n", name, median(share[k]));
    }
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv)
{
    int turns = 0;
    int repeat = 0;
    bool steps = false;
    std::vector<size_t> counts;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--turns") == 0 && i + 1 < argc)
            turns = std::atoi(argv[++i]);
        else if (std::strcmp(argv[i], "--repeat") == 0 && i + 1 < argc)
            repeat = std::atoi(argv[++i]);
        else if (std::strcmp(argv[i], "--steps") == 0)
            steps = true;
        else
            counts.push_back(std::strtoul(argv[i], nullptr, 10));
    }
    if (counts.empty())
        counts = {11, 1000, 10000, 100000};
    if (steps) {
        for (size_t n : counts)
            printSteps(n, turns > 0 ? turns : defaultTurns(n));
        return 0;
    }
    if (repeat > 0) {
        for (size_t n : counts) {
            const std::string text = HNRBench::configurationWithDevices(n);
            batchSeconds([&text] { return HNRBench::roundTrip(text); }, repeat);
        }
        return 0;
    }
    std::printf("%8s %11s %6s %12s %12s %10s %10s\n", "devices", "text_bytes", "turns", "pugixml_ms", "message_ms",
                "us/device", "x_pugixml");
    for (size_t n : counts) {
        const std::string text = HNRBench::configurationWithDevices(n);
        auto pugi = [&text] { return HNRBench::pugixmlRoundTrip(text); };
        auto ours = [&text] { return HNRBench::roundTrip(text); };
        // Warm up, and size the batches to about 50 ms of the slower one.
        double once = batchSeconds(ours, 1);
        int runs = std::max(1, static_cast<int>(0.05 / std::max(once, 1e-7)));
        int t = turns > 0 ? turns : defaultTurns(n);
        const HNRBench::Turns turnsTaken = HNRBench::alternate(
            t, [&] { batchSeconds(ours, runs); }, [&] { batchSeconds(pugi, runs); });
        double m = median(turnsTaken.first) / runs;
        std::printf("%8zu %11zu %6d %12.3f %12.3f %10.2f %10.2f\n", n, text.size(), t,
                    median(turnsTaken.second) / runs * 1e3, m * 1e3, m * 1e6 / static_cast<double>(n),
                    median(turnsTaken.ratios));
        std::fflush(stdout);
    }
    return 0;
}
