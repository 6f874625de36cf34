#pragma once
// One message round trip as the agent does it: parse, read the VM
// configuration through the registry, read every setting and device with the
// typed accessors, write a new configuration with the typed setters, write it
// through its factory and serialize. And the same text through pugixml alone.
#include "BenchCpuTime.h"
#include "model/HNREnvConfig.h"

#include "HNKMessageIterator.h"
#include "HNKSerialization.h"

#include <pugixml.hpp>

#include <memory>
#include <set>
#include <stdexcept>
#include <string>

namespace HNRBench {

// Every setting the round trip copies: X(getter, setter, value type), the
// scalar rows of the configuration's settings table in its order (the lists
// are copied below).
#define HNR_BENCH_SETTINGS(X) HNR_ENV_CONFIG_SETTINGS(HNR_BENCH_ROW, X)
#define HNR_BENCH_ROW(X, kind, Name, T, tag, place, compare, secrecy) HNR_BENCH_ROW_##kind(X, Name, T)
#define HNR_BENCH_ROW_value(X, Name, T) X(get##Name, set##Name, T)
#define HNR_BENCH_ROW_custom HNR_BENCH_ROW_value
#define HNR_BENCH_ROW_base HNR_BENCH_ROW_value
#define HNR_BENCH_ROW_list(X, Name, T)

// What the round trip reads from the request before it writes the answer.
struct RequestValues {
#define HNR_FIELD(Get, Set, T) T Get##Value = T(); int Get##Status = -1;
    HNR_BENCH_SETTINGS(HNR_FIELD)
#undef HNR_FIELD
    HNKOptionalProperty<std::set<std::string>> services;
    int servicesStatus = -1;
    HNKOptionalProperty<HNR::HNRVMDeviceList> devices;
};

// CPU time of each step of the round trip, summed over the runs given it:
// where the time goes, for `bench_message --steps`. The clock is read
// between steps only when asked to.
struct Steps {
    enum Step { Parse, ReadRecord, Settings, Devices, SetSettings, SetDevices, WriteRecord, Serialize, Release, kCount };
    static const char* name(int s)
    {
        static const char* const names[kCount] = {"fromXML (check + parse)", "registry read", "getters",
                                                  "getDevices",              "setters",       "setDevices",
                                                  "registry write",          "toXML",         "release"};
        return names[s];
    }
    double seconds[kCount] = {};
    double last = 0;
    void start() { last = cpuSeconds(); }
    void end(Step s)
    {
        const double now = cpuSeconds();
        seconds[s] += now - last;
        last = now;
    }
};

// Returns the serialized text; throws on any failed step. With
// `releaseRequest` the request (message and record read from it) is dropped
// once everything has been read, before the answer is built, as a caller that
// no longer needs it would. With `steps`, each step's CPU time is added there.
inline std::string roundTrip(const std::string& text, bool releaseRequest = false, Steps* steps = nullptr)
{
    using namespace HNR;
    const auto done = [steps](Steps::Step s) {
        if (steps)
            steps->end(s);
    };
    if (steps)
        steps->start();
    std::unique_ptr<HNKMessageIterator> it(new HNKMessageIterator);
    if (it->fromXML(text) != 0)
        throw std::runtime_error("parse");
    done(Steps::Parse);
    boost::shared_ptr<HNKEnvConfig> base;
    if (HNKReaderDerived<HNKEnvConfig>(false)(*it, base) != 0)
        throw std::runtime_error("read");
    const HNREnvConfig& in = dynamic_cast<const HNREnvConfig&>(*base);
    done(Steps::ReadRecord);

    RequestValues v;
#define HNR_GET(Get, Set, T) v.Get##Status = in.Get(v.Get##Value);
    HNR_BENCH_SETTINGS(HNR_GET)
#undef HNR_GET
    v.servicesStatus = in.getOfflineServices(v.services);
    done(Steps::Settings);
    if (in.getDevices(v.devices) != 0)
        throw std::runtime_error("devices");
    done(Steps::Devices);
    if (releaseRequest) {
        base.reset();
        it.reset();
        done(Steps::Release);
    }

    boost::shared_ptr<HNREnvConfig> out(new HNREnvConfig(boost::shared_ptr<HNKEnvCoreBasic>()));
#define HNR_SET(Get, Set, T) \
    if (v.Get##Status == 0)  \
        out->Set(v.Get##Value);
    HNR_BENCH_SETTINGS(HNR_SET)
#undef HNR_SET
    if (v.servicesStatus == 0)
        out->setOfflineServices(v.services);
    done(Steps::SetSettings);
    if (out->setDevices(v.devices) != 0)
        throw std::runtime_error("set devices");
    done(Steps::SetDevices);

    HNKMessageIterator written("configuration");
    if (written.putObject(boost::shared_ptr<HNKEnvConfig>(out), HNKWriterDerived<HNKEnvConfig>()) != 0)
        throw std::runtime_error("write");
    done(Steps::WriteRecord);
    std::string result = written.toXML();
    done(Steps::Serialize);
    return result;
}

struct StringWriter : pugi::xml_writer {
    std::string text;
    void write(const void* data, size_t size) override { text.append(static_cast<const char*>(data), size); }
};

// pugixml parsing and serializing the same text: the yardstick.
inline std::string pugixmlRoundTrip(const std::string& text)
{
    pugi::xml_document doc;
    if (!doc.load_buffer(text.data(), text.size()))
        throw std::runtime_error("pugixml parse");
    StringWriter out;
    out.text.reserve(text.size());
    doc.save(out, "", pugi::format_raw | pugi::format_no_declaration);
    return out.text;
}

} // namespace HNRBench
