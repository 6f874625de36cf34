#pragma once
// The host's virtualization layer as management clients see it: what it is
// and can do (HNRVtInfo), server-wide settings for virtual machines
// (HNRVtSettings) with a table of memory recommendations per guest operating
// system (HNRGuestOSMemoryRequirements), and a VM console's screen geometry
// (HNRConsoleInfo). Every step of a reader or writer runs only when the one
// before returned 0; the first non-zero status is the result.
#include "HNKDerivedParserFactory.h"
#include "HNKOptionalProperty.h"
#include "HNKVtInfo.h"
#include "HNKVtSettings.h"
#include "HNKWriterBase.h"
#include "frame/HNRConstants.h"

#include <string>
#include <vector>

class HNKMessageIterator;

namespace HNR {

// One row of the guest-OS memory table, sizes in megabytes. The optimal size
// is output-only: the reader deliberately never reads it.
class HNRGuestOSMemoryRequirements {
public:
    const std::string& getGuestOSPlatform() const { return guestOSPlatform_; }
    void setGuestOSPlatform(const std::string& platform) { guestOSPlatform_ = platform; }
    const std::string& getGuestOSName() const { return guestOSName_; }
    void setGuestOSName(const std::string& name) { guestOSName_ = name; }
    int getOptimalVMMemorySize() const { return optimalVMMemorySize_; }
    void setOptimalVMMemorySize(int size) { optimalVMMemorySize_ = size; }
    int getMinRecommendedVMMemorySize() const { return minRecommendedVMMemorySize_; }
    void setMinRecommendedVMMemorySize(int size) { minRecommendedVMMemorySize_ = size; }
    int getMaxRecommendedVMMemorySize() const { return maxRecommendedVMMemorySize_; }
    void setMaxRecommendedVMMemorySize(int size) { maxRecommendedVMMemorySize_ = size; }
    int getDefaultVideoMemorySize() const { return defaultVideoMemorySize_; }
    void setDefaultVideoMemorySize(int size) { defaultVideoMemorySize_ = size; }

    // Platform, name, minimum, maximum and video size, all required; not the
    // optimal size.
    class Reader {
    public:
        int operator()(const HNKMessageIterator& it, HNRGuestOSMemoryRequirements& row) const;
    };
    // All six values, the optimal size included.
    class Writer : public HNKWriterBase {
    public:
        static const char* getStrNSID() { return kTypesNamespace; }
        static const char* getStrTypeID() { return "guest_os_memory"; }
        int operator()(HNKMessageIterator& it, const HNRGuestOSMemoryRequirements& row) const;
    };

private:
    std::string guestOSPlatform_;
    std::string guestOSName_;
    int optimalVMMemorySize_ = 0;
    int minRecommendedVMMemorySize_ = 0;
    int maxRecommendedVMMemorySize_ = 0;
    int defaultVideoMemorySize_ = 0;
};

typedef std::vector<HNRGuestOSMemoryRequirements> HNRGuestOSMemoryList;

// What the virtualization layer is and can do.
class HNRVtInfo : public HNKVtInfo {
public:
    ~HNRVtInfo() override;

    int getSDKVersion() const { return sdkVersion_; }
    void setSDKVersion(int version) { sdkVersion_ = version; }
    const HNKOptionalProperty<std::string>& getCPUHvt() const { return cpuHvt_; }
    HNKOptionalProperty<std::string>& getCPUHvt() { return cpuHvt_; }
    void setCPUHvt(const std::string& hvt) { cpuHvt_.set(hvt); }
    // Specified (and true) exactly when VT-d is reported: the element's
    // presence is the value.
    const HNKOptionalProperty<bool>& getVTdSupported() const { return vtdSupported_; }
    HNKOptionalProperty<bool>& getVTdSupported() { return vtdSupported_; }
    const std::string& getProductName() const { return productName_; }
    void setProductName(const std::string& name) { productName_ = name; }
    const std::string& getProductVersion() const { return productVersion_; }
    void setProductVersion(const std::string& version) { productVersion_ = version; }

    // "sdk_version" and the two product texts are required, then the
    // framework part; "cpu_hvt" and "vtd_supported" are optional.
    class Reader {
    public:
        int operator()(const HNKMessageIterator& it, HNRVtInfo& info) const;
    };
    class Writer : public HNKWriterBase {
    public:
        static const char* getStrNSID() { return kTypesNamespace; }
        static const char* getStrTypeID() { return "vt_infoType"; }
        int operator()(HNKMessageIterator& it, const HNRVtInfo& info) const;
    };

private:
    int sdkVersion_ = 0;
    HNKOptionalProperty<std::string> cpuHvt_;
    HNKOptionalProperty<bool> vtdSupported_;
    std::string productName_;
    std::string productVersion_;
};

// Server-wide settings for virtual machines; every value is optional.
class HNRVtSettings : public HNKVtSettings {
public:
    ~HNRVtSettings() override;

    const HNKOptionalProperty<std::string>& getDefaultVMFolder() const { return defaultVMFolder_; }
    HNKOptionalProperty<std::string>& getDefaultVMFolder() { return defaultVMFolder_; }
    void setDefaultVMFolder(const std::string& value) { defaultVMFolder_.set(value); }
    const HNKOptionalProperty<std::string>& getDefaultUserVMFolder() const { return defaultUserVMFolder_; }
    HNKOptionalProperty<std::string>& getDefaultUserVMFolder() { return defaultUserVMFolder_; }
    void setDefaultUserVMFolder(const std::string& value) { defaultUserVMFolder_.set(value); }
    const HNKOptionalProperty<std::string>& getVMDirUUID() const { return vmDirUUID_; }
    HNKOptionalProperty<std::string>& getVMDirUUID() { return vmDirUUID_; }
    void setVMDirUUID(const std::string& value) { vmDirUUID_.set(value); }
    const HNKOptionalProperty<bool>& getUseManagementConsole() const { return useManagementConsole_; }
    HNKOptionalProperty<bool>& getUseManagementConsole() { return useManagementConsole_; }
    void setUseManagementConsole(const bool& value) { useManagementConsole_.set(value); }
    const HNKOptionalProperty<bool>& getCanChangeServerSettings() const { return canChangeServerSettings_; }
    HNKOptionalProperty<bool>& getCanChangeServerSettings() { return canChangeServerSettings_; }
    void setCanChangeServerSettings(const bool& value) { canChangeServerSettings_.set(value); }
    const HNKOptionalProperty<bool>& getAutoAdjustReservedVMMemorySize() const { return autoAdjustReservedVMMemorySize_; }
    HNKOptionalProperty<bool>& getAutoAdjustReservedVMMemorySize() { return autoAdjustReservedVMMemorySize_; }
    void setAutoAdjustReservedVMMemorySize(const bool& value) { autoAdjustReservedVMMemorySize_.set(value); }
    const HNKOptionalProperty<int>& getReservedVMMemorySize() const { return reservedVMMemorySize_; }
    HNKOptionalProperty<int>& getReservedVMMemorySize() { return reservedVMMemorySize_; }
    void setReservedVMMemorySize(const int& value) { reservedVMMemorySize_.set(value); }
    const HNKOptionalProperty<int>& getMinVMMemorySize() const { return minVMMemorySize_; }
    HNKOptionalProperty<int>& getMinVMMemorySize() { return minVMMemorySize_; }
    void setMinVMMemorySize(const int& value) { minVMMemorySize_.set(value); }
    const HNKOptionalProperty<int>& getMaxVMMemorySize() const { return maxVMMemorySize_; }
    HNKOptionalProperty<int>& getMaxVMMemorySize() { return maxVMMemorySize_; }
    void setMaxVMMemorySize(const int& value) { maxVMMemorySize_.set(value); }
    const HNKOptionalProperty<int>& getMinReservedMemoryLimit() const { return minReservedMemoryLimit_; }
    HNKOptionalProperty<int>& getMinReservedMemoryLimit() { return minReservedMemoryLimit_; }
    void setMinReservedMemoryLimit(const int& value) { minReservedMemoryLimit_.set(value); }
    const HNKOptionalProperty<int>& getMaxReservedMemoryLimit() const { return maxReservedMemoryLimit_; }
    HNKOptionalProperty<int>& getMaxReservedMemoryLimit() { return maxReservedMemoryLimit_; }
    void setMaxReservedMemoryLimit(const int& value) { maxReservedMemoryLimit_.set(value); }
    const HNKOptionalProperty<int>& getVNCPort() const { return vncPort_; }
    HNKOptionalProperty<int>& getVNCPort() { return vncPort_; }
    void setVNCPort(const int& value) { vncPort_.set(value); }
    const HNKOptionalProperty<int>& getPSPort() const { return psPort_; }
    HNKOptionalProperty<int>& getPSPort() { return psPort_; }
    void setPSPort(const int& value) { psPort_.set(value); }
    const HNKOptionalProperty<std::string>& getVNCNIC() const { return vncNIC_; }
    HNKOptionalProperty<std::string>& getVNCNIC() { return vncNIC_; }
    void setVNCNIC(const std::string& value) { vncNIC_.set(value); }
    // The rows of the guest-OS memory table, one "vm_memory" child each.
    const HNKOptionalProperty<HNRGuestOSMemoryList>& getGuestOSMemory() const { return guestOSMemory_; }
    HNKOptionalProperty<HNRGuestOSMemoryList>& getGuestOSMemory() { return guestOSMemory_; }
    void setGuestOSMemory(const HNRGuestOSMemoryList& rows) { guestOSMemory_.set(rows); }

    // The optional values, then the rows (specified exactly when at least
    // one row is present and all read), then the framework part, whose
    // status is the result.
    class Reader {
    public:
        int operator()(const HNKMessageIterator& it, HNRVtSettings& settings) const;
    };
    // The specified values, the rows if specified, then the framework part.
    class Writer : public HNKWriterBase {
    public:
        static const char* getStrNSID() { return kTypesNamespace; }
        static const char* getStrTypeID() { return "vt_settingsType"; }
        int operator()(HNKMessageIterator& it, const HNRVtSettings& settings) const;
    };

private:
    HNKOptionalProperty<std::string> defaultVMFolder_;
    HNKOptionalProperty<std::string> defaultUserVMFolder_;
    HNKOptionalProperty<std::string> vmDirUUID_;
    HNKOptionalProperty<bool> useManagementConsole_;
    HNKOptionalProperty<bool> canChangeServerSettings_;
    HNKOptionalProperty<bool> autoAdjustReservedVMMemorySize_;
    HNKOptionalProperty<int> reservedVMMemorySize_;
    HNKOptionalProperty<int> minVMMemorySize_;
    HNKOptionalProperty<int> maxVMMemorySize_;
    HNKOptionalProperty<int> minReservedMemoryLimit_;
    HNKOptionalProperty<int> maxReservedMemoryLimit_;
    HNKOptionalProperty<int> vncPort_;
    HNKOptionalProperty<int> psPort_;
    HNKOptionalProperty<std::string> vncNIC_;
    HNKOptionalProperty<HNRGuestOSMemoryList> guestOSMemory_;
};

// Screen geometry of a VM console; all three values required.
class HNRConsoleInfo {
public:
    int getScreenWidth() const { return screenWidth_; }
    void setScreenWidth(int width) { screenWidth_ = width; }
    int getScreenHeight() const { return screenHeight_; }
    void setScreenHeight(int height) { screenHeight_ = height; }
    int getScreenDepth() const { return screenDepth_; }
    void setScreenDepth(int depth) { screenDepth_ = depth; }

    class Reader {
    public:
        int operator()(const HNKMessageIterator& it, HNRConsoleInfo& console) const;
    };
    class Writer : public HNKWriterBase {
    public:
        int operator()(HNKMessageIterator& it, const HNRConsoleInfo& console) const;
    };

private:
    int screenWidth_ = 0;
    int screenHeight_ = 0;
    int screenDepth_ = 0;
};

// The guest-OS memory rows own their registry (this library holds it); their
// factory is its default, so a row of an unknown type reads as a plain row.
typedef HNKDerivedParserFactoryT<HNRGuestOSMemoryRequirements, HNRGuestOSMemoryRequirements,
                                 HNRGuestOSMemoryRequirements, HNRGuestOSMemoryRequirements::Reader,
                                 HNRGuestOSMemoryRequirements::Writer>
    HNRGuestOSMemoryFactory;
typedef HNKDerivedParserFactoryT<HNRVtSettings, HNKVtSettings, HNKVtSettings, HNRVtSettings::Reader,
                                 HNRVtSettings::Writer>
    HNRVtSettingsFactory;
typedef HNKDerivedParserFactoryT<HNRVtInfo, HNKVtInfo, HNKVtInfo, HNRVtInfo::Reader, HNRVtInfo::Writer>
    HNRVtInfoFactory;

extern HNRGuestOSMemoryFactory factoryHNRGuestOSMemory;
extern HNRVtSettingsFactory factoryHNRVtSettings;
extern HNRVtInfoFactory factoryHNRVtInfo;

} // namespace HNR

HNK_DECLARE_FACTORY_REGISTRY(HNR::HNRGuestOSMemoryRequirements);
