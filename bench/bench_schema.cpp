// Schema validation of a message against reading it through the registries,
// for the 10,000-device configuration (process CPU time, one process,
// alternating turns, medians). Usage: bench_schema [devices] [turns]
#include <vector> // before BenchMessageText.h, which uses it

#include "BenchCpuTime.h"
#include "BenchMessageText.h"

#include "HnrctlSchemaValidator.h"

#include "model/HNREnvConfig.h"

#include "HNKDerivedParserFactory.h"
#include "HNKMessageIterator.h"
#include "HNKSerialization.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

namespace {

using HNRBench::median;

// Parse, read the configuration through its registry and every device
// through the device registry; the device count read.
size_t readThroughRegistries(const std::string& text)
{
    HNKMessageIterator it;
    if (it.fromXML(text) != 0)
        std::abort();
    boost::shared_ptr<HNKEnvConfig> config;
    if (HNKReaderDerived<HNKEnvConfig>(false)(it, config) != 0)
        std::abort();
    HNKOptionalProperty<HNR::HNRVMDeviceList> devices;
    if (static_cast<HNR::HNREnvConfig&>(*config).getDevices(devices) != 0)
        std::abort();
    return devices.get().size();
}

} // namespace

int main(int argc, char** argv)
{
    size_t devices = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 10000;
    int turns = argc > 2 ? std::atoi(argv[2]) : 11;
    std::string text = HNRBench::configurationWithDevices(devices);
    hnrctl::HnrctlSchemaValidator validator(HNR_SCHEMA_SOURCE_DIR);
    std::vector<hnrctl::HnrctlSchemaViolation> violations;
    std::string error;
    // Warm-up: compiles the schema once (cached per root name) and checks
    // that the message is valid.
    if (!validator.validate(text, violations, error) || readThroughRegistries(text) != devices) {
        std::fprintf(stderr, "bench_schema: the message is not valid or does not read (%s)\n", error.c_str());
        return 1;
    }
    const HNRBench::Turns t = HNRBench::alternate(
        turns, [&] { validator.validate(text, violations, error); }, [&] { readThroughRegistries(text); });
    const std::vector<double>& validate = t.first;
    const std::vector<double>& read = t.second;
    const std::vector<double>& ratio = t.ratios;
    std::printf("devices %zu, text %zu bytes, %d turns\n", devices, text.size(), turns);
    std::printf("schema validation      %8.1f ms CPU (median)\n", median(validate) * 1e3);
    std::printf("read via registries    %8.1f ms CPU (median)\n", median(read) * 1e3);
    std::printf("validation / read      %8.2f (median of per-turn ratios)\n", median(ratio));
    return 0;
}
