// Cost of the lexical check every message text passes before it is parsed
// (HNKXmlTextCheck::check), against pugixml parsing (parse_default, copied
// buffer) and saving (format_raw) the same text: the yardstick of the message
// round trip. Process CPU time, the two alternated in one process, median of
// the per-turn ratios.
//
//   bench_xml_text_check [turns] [device counts...]   (default: 31 turns; 11 1000 10000 devices)
//
// Prints one line per size; exits 1 when a benchmark text fails the check.
#include "BenchMessageRoundTrip.h"
#include "BenchCpuTime.h"
#include "BenchMessageText.h"

#include "HNKXmlTextCheck.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

namespace {

using HNRBench::cpuSeconds;
using HNRBench::median;

volatile size_t sink;

double timeCheck(const std::string& text, int repeats)
{
    double start = cpuSeconds();
    for (int i = 0; i < repeats; ++i) {
        HNKXmlTextCheck::Error error;
        if (!HNKXmlTextCheck::check(text.data(), text.size(), error)) {
            std::fprintf(stderr, "benchmark text refused at byte offset %zu: %s\n", error.offset, error.what);
            std::exit(1);
        }
        sink = error.offset;
    }
    return cpuSeconds() - start;
}

double timePugixml(const std::string& text, int repeats)
{
    double start = cpuSeconds();
    for (int i = 0; i < repeats; ++i)
        sink = HNRBench::pugixmlRoundTrip(text).size();
    return cpuSeconds() - start;
}

} // namespace

int main(int argc, char** argv)
{
    int turns = argc > 1 ? std::atoi(argv[1]) : 31;
    if (turns < 1)
        turns = 1;
    std::vector<size_t> sizes;
    for (int i = 2; i < argc; ++i)
        sizes.push_back(std::strtoul(argv[i], nullptr, 10));
    if (sizes.empty())
        sizes = {11, 1000, 10000};

    std::printf("%10s %12s %14s %14s %12s\n", "devices", "text bytes", "check MB/s", "pugixml MB/s", "x_pugixml");
    for (size_t devices : sizes) {
        std::string text = devices == 11 ? HNRBench::readSample() : HNRBench::configurationWithDevices(devices);
        // Each turn runs about 20 ms of pugixml, whatever the size.
        int repeats = std::max(1, static_cast<int>(2000000 / (text.size() + 1)));
        timeCheck(text, repeats); // warm up
        timePugixml(text, repeats);
        const HNRBench::Turns t = HNRBench::alternate(
            turns, [&] { timeCheck(text, repeats); }, [&] { timePugixml(text, repeats); });
        double mb = static_cast<double>(text.size()) * repeats / 1e6;
        std::printf("%10zu %12zu %14.0f %14.0f %12.3f\n", devices, text.size(), mb / median(t.first),
                    mb / median(t.second), median(t.ratios));
    }
    return 0;
}
