#pragma once
// One message round trip as the agent does it: parse, read the VM
// configuration through the registry, read every setting and device with the
// typed accessors, write a new configuration with the typed setters, write it
// through its factory and serialize. And the same text through pugixml alone.
#include "model/HNREnvConfig.h"

#include "HNKMessageIterator.h"
#include "HNKSerialization.h"

#include <pugixml.hpp>

#include <stdexcept>
#include <string>

namespace HNRBench {

// Returns the serialized text; throws on any failed step.
inline std::string roundTrip(const std::string& text)
{
    using namespace HNR;
    HNKMessageIterator it;
    if (it.fromXML(text) != 0)
        throw std::runtime_error("parse");
    boost::shared_ptr<HNKEnvConfig> base;
    if (HNKReaderDerived<HNKEnvConfig>(false)(it, base) != 0)
        throw std::runtime_error("read");
    const HNREnvConfig& in = dynamic_cast<const HNREnvConfig&>(*base);

    boost::shared_ptr<HNREnvConfig> out(new HNREnvConfig(boost::shared_ptr<HNKEnvCoreBasic>()));
    int i = 0;
    bool b = false;
    std::string s;
    HNKOptionalProperty<std::string> name;
#define HNR_COPY(Get, Set, var)     \
    if (in.Get(var) == 0)           \
        out->Set(var);
    HNR_COPY(getName, setName, name)
    HNR_COPY(getDisabled, setDisabled, b)
    HNR_COPY(getCPUHvt, setCPUHvt, b)
    HNR_COPY(getVtdSupported, setVtdSupported, b)
    HNR_COPY(getPsPort, setPsPort, i)
    HNR_COPY(getScreenWidth, setScreenWidth, i)
    HNR_COPY(getScreenHeight, setScreenHeight, i)
    HNR_COPY(getScreenDepth, setScreenDepth, i)
    HNR_COPY(getToolsAutoUpdateEnabled, setToolsAutoUpdateEnabled, b)
    HNR_COPY(getUseDefaultAnswers, setUseDefaultAnswers, b)
    HNR_COPY(getUserSharedFoldersEnabled, setUserSharedFoldersEnabled, b)
    HNR_COPY(getOfflineManagementEnabled, setOfflineManagementEnabled, b)
    HNR_COPY(getCPUCount, setCPUCount, i)
    HNR_COPY(getMemorySize, setMemorySize, i)
    HNR_COPY(getVideoMemorySize, setVideoMemorySize, i)
    HNR_COPY(getCPUMode, setCPUMode, i)
    HNR_COPY(getCPUUnits, setCPUUnits, i)
    HNR_COPY(getCPULimit, setCPULimit, i)
    HNR_COPY(getCPUAccelLevel, setCPUAccelLevel, i)
    HNR_COPY(getAutoStart, setAutoStart, i)
    HNR_COPY(getAutoStartDelay, setAutoStartDelay, i)
    HNR_COPY(getStartLoginMode, setStartLoginMode, i)
    HNR_COPY(getStartUserLogin, setStartUserLogin, s)
    HNR_COPY(getStartUserPassword, setStartUserPassword, s)
    HNR_COPY(getAutoStop, setAutoStop, i)
    HNR_COPY(getWindowMode, setWindowMode, i)
    HNR_COPY(getLastModifiedDate, setLastModifiedDate, s)
    HNR_COPY(getLastModifierName, setLastModifierName, s)
    HNR_COPY(getGuestSharingEnabled, setGuestSharingEnabled, b)
    HNR_COPY(getGuestSharingAutoMount, setGuestSharingAutoMount, b)
    HNR_COPY(getHostSharingEnabled, setHostSharingEnabled, b)
    HNR_COPY(getHostSharingLocal, setHostSharingLocal, b)
    HNR_COPY(getHostSharingGlobal, setHostSharingGlobal, b)
    HNR_COPY(getDiskCacheWriteBack, setDiskCacheWriteBack, b)
    HNR_COPY(getCloseAppOnShutdown, setCloseAppOnShutdown, b)
    HNR_COPY(getSystemFlags, setSystemFlags, s)
    HNR_COPY(getForegroundPriority, setForegroundPriority, i)
    HNR_COPY(getBackgroundPriority, setBackgroundPriority, i)
    HNR_COPY(getIoPriority, setIoPriority, i)
    HNR_COPY(getServerHostName, setServerHostName, s)
    HNR_COPY(getHomePath, setHomePath, s)
    HNR_COPY(getIcon, setIcon, s)
    HNR_COPY(getShowTaskBar, setShowTaskBar, b)
    HNR_COPY(getRelocateTaskBar, setRelocateTaskBar, b)
    HNR_COPY(getExcludeDock, setExcludeDock, b)
    HNR_COPY(getMultiDisplay, setMultiDisplay, b)
    HNR_COPY(getTemplate, setTemplate, b)
    HNR_COPY(getAdditionalScreenResolutionsEnabled, setAdditionalScreenResolutionsEnabled, b)
    HNR_COPY(getOSScreenResolutionInFullScreenModeEnabled, setOSScreenResolutionInFullScreenModeEnabled, b)
    HNR_COPY(getAppInDockMode, setAppInDockMode, i)
    HNR_COPY(getDockIconType, setDockIconType, i)
    HNR_COPY(getVNCMode, setVNCMode, i)
    HNR_COPY(getVNCPort, setVNCPort, i)
    HNR_COPY(getVNCNetworkInterface, setVNCNetworkInterface, s)
    HNR_COPY(getVNCPassword, setVNCPassword, s)
    HNR_COPY(getOriginSample, setOriginSample, s)
    HNR_COPY(getToolsStatus, setToolsStatus, i)
    HNR_COPY(getVNCStarted, setVNCStarted, b)
    HNR_COPY(getAccessForOthers, setAccessForOthers, i)
#undef HNR_COPY
    HNKOptionalProperty<std::set<std::string>> services;
    if (in.getOfflineServices(services) == 0)
        out->setOfflineServices(services);
    HNKOptionalProperty<HNRVMDeviceList> devices;
    if (in.getDevices(devices) != 0)
        throw std::runtime_error("devices");
    if (out->setDevices(devices) != 0)
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
