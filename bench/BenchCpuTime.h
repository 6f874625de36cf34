#pragma once
// How the benchmarks compare two pieces of work on a shared, noisy machine:
// process CPU time (time spent descheduled is not the code's), the two timed
// in turns whose order flips every turn, and the median of the per-turn ratios.
#include <algorithm>
#include <ctime>
#include <vector>

namespace HNRBench {

inline double cpuSeconds()
{
    timespec ts;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &ts);
    return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}

inline double median(std::vector<double> v)
{
    if (v.empty())
        return 0;
    std::sort(v.begin(), v.end());
    size_t n = v.size();
    return n % 2 ? v[n / 2] : (v[n / 2 - 1] + v[n / 2]) / 2;
}

// CPU seconds of `first` and `second` (each a callable that does one timed
// piece of work) over `turns` turns, first-then-second on even turns and
// second-then-first on odd ones; ratios[i] = first[i] / second[i].
struct Turns {
    std::vector<double> first, second, ratios;
};

template <class A, class B>
Turns alternate(int turns, A&& first, B&& second)
{
    Turns t;
    const auto timed = [](auto& work) {
        double start = cpuSeconds();
        work();
        return cpuSeconds() - start;
    };
    for (int turn = 0; turn < turns; ++turn) {
        double a, b;
        if (turn % 2 == 0) {
            a = timed(first);
            b = timed(second);
        } else {
            b = timed(second);
            a = timed(first);
        }
        t.first.push_back(a);
        t.second.push_back(b);
        t.ratios.push_back(a / b);
    }
    return t;
}

} // namespace HNRBench
