#pragma once
// One message round trip as the agent does it: parse, read the VM
// configuration through the registry, read every setting and device with the
// typed accessors, write a new configuration with the typed setters, write it
// through its factory and serialize. And the same text through pugixml alone.
#include "model/HNREnvConfig.h"

#include "HNKMessageIterator.h"
#include "HNKSerialization.h"

#include <pugixml.hpp>

#include <memory>
#include <set>
#include <stdexcept>
#include <string>

namespace HNRBench {

// Every setting the round trip copies: X(getter, setter, value type).
#define HNR_BENCH_SETTINGS(X) \
    X(getName, setName, HNKOptionalProperty<std::string>) \
    X(getDisabled, setDisabled, bool) \
    X(getCPUHvt, setCPUHvt, bool) \
    X(getVtdSupported, setVtdSupported, bool) \
    X(getPsPort, setPsPort, int) \
    X(getScreenWidth, setScreenWidth, int) \
    X(getScreenHeight, setScreenHeight, int) \
    X(getScreenDepth, setScreenDepth, int) \
    X(getToolsAutoUpdateEnabled, setToolsAutoUpdateEnabled, bool) \
    X(getUseDefaultAnswers, setUseDefaultAnswers, bool) \
    X(getUserSharedFoldersEnabled, setUserSharedFoldersEnabled, bool) \
    X(getOfflineManagementEnabled, setOfflineManagementEnabled, bool) \
    X(getCPUCount, setCPUCount, int) \
    X(getMemorySize, setMemorySize, int) \
    X(getVideoMemorySize, setVideoMemorySize, int) \
    X(getCPUMode, setCPUMode, int) \
    X(getCPUUnits, setCPUUnits, int) \
    X(getCPULimit, setCPULimit, int) \
    X(getCPUAccelLevel, setCPUAccelLevel, int) \
    X(getAutoStart, setAutoStart, int) \
    X(getAutoStartDelay, setAutoStartDelay, int) \
    X(getStartLoginMode, setStartLoginMode, int) \
    X(getStartUserLogin, setStartUserLogin, std::string) \
    X(getStartUserPassword, setStartUserPassword, std::string) \
    X(getAutoStop, setAutoStop, int) \
    X(getWindowMode, setWindowMode, int) \
    X(getLastModifiedDate, setLastModifiedDate, std::string) \
    X(getLastModifierName, setLastModifierName, std::string) \
    X(getGuestSharingEnabled, setGuestSharingEnabled, bool) \
    X(getGuestSharingAutoMount, setGuestSharingAutoMount, bool) \
    X(getHostSharingEnabled, setHostSharingEnabled, bool) \
    X(getHostSharingLocal, setHostSharingLocal, bool) \
    X(getHostSharingGlobal, setHostSharingGlobal, bool) \
    X(getDiskCacheWriteBack, setDiskCacheWriteBack, bool) \
    X(getCloseAppOnShutdown, setCloseAppOnShutdown, bool) \
    X(getSystemFlags, setSystemFlags, std::string) \
    X(getForegroundPriority, setForegroundPriority, int) \
    X(getBackgroundPriority, setBackgroundPriority, int) \
    X(getIoPriority, setIoPriority, int) \
    X(getServerHostName, setServerHostName, std::string) \
    X(getHomePath, setHomePath, std::string) \
    X(getIcon, setIcon, std::string) \
    X(getShowTaskBar, setShowTaskBar, bool) \
    X(getRelocateTaskBar, setRelocateTaskBar, bool) \
    X(getExcludeDock, setExcludeDock, bool) \
    X(getMultiDisplay, setMultiDisplay, bool) \
    X(getTemplate, setTemplate, bool) \
    X(getAdditionalScreenResolutionsEnabled, setAdditionalScreenResolutionsEnabled, bool) \
    X(getOSScreenResolutionInFullScreenModeEnabled, setOSScreenResolutionInFullScreenModeEnabled, bool) \
    X(getAppInDockMode, setAppInDockMode, int) \
    X(getDockIconType, setDockIconType, int) \
    X(getVNCMode, setVNCMode, int) \
    X(getVNCPort, setVNCPort, int) \
    X(getVNCNetworkInterface, setVNCNetworkInterface, std::string) \
    X(getVNCPassword, setVNCPassword, std::string) \
    X(getOriginSample, setOriginSample, std::string) \
    X(getToolsStatus, setToolsStatus, int) \
    X(getVNCStarted, setVNCStarted, bool) \
    X(getAccessForOthers, setAccessForOthers, int)

// What the round trip reads from the request before it writes the answer.
struct RequestValues {
#define HNR_FIELD(Get, Set, T) T Get##Value = T(); int Get##Status = -1;
    HNR_BENCH_SETTINGS(HNR_FIELD)
#undef HNR_FIELD
    HNKOptionalProperty<std::set<std::string>> services;
    int servicesStatus = -1;
    HNKOptionalProperty<HNR::HNRVMDeviceList> devices;
};

// Returns the serialized text; throws on any failed step. With
// `releaseRequest` the request (message and record read from it) is dropped
// once everything has been read, before the answer is built, as a caller that
// no longer needs it would.
inline std::string roundTrip(const std::string& text, bool releaseRequest = false)
{
    using namespace HNR;
    std::unique_ptr<HNKMessageIterator> it(new HNKMessageIterator);
    if (it->fromXML(text) != 0)
        throw std::runtime_error("parse");
    boost::shared_ptr<HNKEnvConfig> base;
    if (HNKReaderDerived<HNKEnvConfig>(false)(*it, base) != 0)
        throw std::runtime_error("read");
    const HNREnvConfig& in = dynamic_cast<const HNREnvConfig&>(*base);

    RequestValues v;
#define HNR_GET(Get, Set, T) v.Get##Status = in.Get(v.Get##Value);
    HNR_BENCH_SETTINGS(HNR_GET)
#undef HNR_GET
    v.servicesStatus = in.getOfflineServices(v.services);
    if (in.getDevices(v.devices) != 0)
        throw std::runtime_error("devices");
    if (releaseRequest) {
        base.reset();
        it.reset();
    }

    boost::shared_ptr<HNREnvConfig> out(new HNREnvConfig(boost::shared_ptr<HNKEnvCoreBasic>()));
#define HNR_SET(Get, Set, T) \
    if (v.Get##Status == 0)  \
        out->Set(v.Get##Value);
    HNR_BENCH_SETTINGS(HNR_SET)
#undef HNR_SET
    if (v.servicesStatus == 0)
        out->setOfflineServices(v.services);
    if (out->setDevices(v.devices) != 0)
        throw std::runtime_error("set devices");

    HNKMessageIterator written("configuration");
    if (written.putObject(boost::shared_ptr<HNKEnvConfig>(out), HNKWriterDerived<HNKEnvConfig>()) != 0)
        throw std::runtime_error("write");
    return written.toXML();
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
