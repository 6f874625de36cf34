#include "model/HNRVtInfo.h"

#include "HNKMessageIterator.h"
#include "frame/HNROptionalProperty.h"
#include "model/HNREnvConfig.h"

HNK_INSTANTIATE_FACTORY_REGISTRY(HNR::HNRGuestOSMemoryRequirements);

namespace HNR {

namespace {
const int kProductName = 1223;
const int kProductVersion = 1278;
} // namespace

// ---- HNRGuestOSMemoryRequirements ----

int HNRGuestOSMemoryRequirements::Reader::operator()(const HNKMessageIterator& it,
                                                     HNRGuestOSMemoryRequirements& row) const
{
    // "optimal_vm_memory_size" is output-only and deliberately not read.
    if (it.getValue("guest_os_platform", row.guestOSPlatform_) != 0 ||
        it.getValue("guest_os_name", row.guestOSName_) != 0 ||
        it.getValue("min_recommended_vm_memory_size", row.minRecommendedVMMemorySize_) != 0 ||
        it.getValue("max_recommended_vm_memory_size", row.maxRecommendedVMMemorySize_) != 0 ||
        it.getValue("default_video_memory_size", row.defaultVideoMemorySize_) != 0)
        return -1;
    return 0;
}

int HNRGuestOSMemoryRequirements::Writer::operator()(HNKMessageIterator& it,
                                                     const HNRGuestOSMemoryRequirements& row) const
{
    if (it.putValue("guest_os_platform", row.guestOSPlatform_) != 0 ||
        it.putValue("guest_os_name", row.guestOSName_) != 0 ||
        it.putValue("optimal_vm_memory_size", row.optimalVMMemorySize_) != 0 ||
        it.putValue("min_recommended_vm_memory_size", row.minRecommendedVMMemorySize_) != 0 ||
        it.putValue("max_recommended_vm_memory_size", row.maxRecommendedVMMemorySize_) != 0 ||
        it.putValue("default_video_memory_size", row.defaultVideoMemorySize_) != 0)
        return -1;
    return 0;
}

// ---- HNRVtInfo ----

HNRVtInfo::~HNRVtInfo() {}

int HNRVtInfo::Reader::operator()(const HNKMessageIterator& it, HNRVtInfo& info) const
{
    if (it.hasChild("vtd_supported"))
        info.vtdSupported_.set(true);
    else
        info.vtdSupported_.specify(false);
    if (it.getValue("sdk_version", info.sdkVersion_) != 0)
        return -1;
    readOptionalProperty(it, info.cpuHvt_, "cpu_hvt");
    if (it.getValue(kProductName, info.productName_) != 0 ||
        it.getValue(kProductVersion, info.productVersion_) != 0)
        return -1;
    return it.getObject(static_cast<HNKVtInfo&>(info), HNKVtInfo::Reader(), std::string()) == 0 ? 0 : -1;
}

int HNRVtInfo::Writer::operator()(HNKMessageIterator& it, const HNRVtInfo& info) const
{
    if (it.putValue("sdk_version", info.sdkVersion_) != 0)
        return -1;
    if (writeOptionalProperty(it, info.cpuHvt_, "cpu_hvt") != 0)
        return -1;
    if (info.vtdSupported_.isSpecified() && it.putValue("vtd_supported", "") != 0)
        return -1;
    if (it.putValue(kProductName, info.productName_) != 0 ||
        it.putValue(kProductVersion, info.productVersion_) != 0)
        return -1;
    return it.putObject(static_cast<const HNKVtInfo&>(info), HNKVtInfo::Writer(), std::string()) == 0 ? 0 : -1;
}

// ---- HNRVtSettings ----

HNRVtSettings::~HNRVtSettings() {}

int HNRVtSettings::Reader::operator()(const HNKMessageIterator& it, HNRVtSettings& settings) const
{
    // readOptionalProperty never fails: absent values stay unspecified.
    readOptionalProperty(it, settings.defaultVMFolder_, "default_vm_folder");
    readOptionalProperty(it, settings.defaultUserVMFolder_, "default_user_vm_folder");
    readOptionalProperty(it, settings.vmDirUUID_, "vm_dir_uuid");
    readOptionalProperty(it, settings.useManagementConsole_, "use_management_console");
    readOptionalProperty(it, settings.canChangeServerSettings_, "can_change_server_settings");
    readOptionalProperty(it, settings.autoAdjustReservedVMMemorySize_, "auto_adjust_reserved_vm_memory_size");
    readOptionalProperty(it, settings.reservedVMMemorySize_, "reserved_vm_memory_size");
    readOptionalProperty(it, settings.minVMMemorySize_, "min_vm_memory_size");
    readOptionalProperty(it, settings.maxVMMemorySize_, "max_vm_memory_size");
    readOptionalProperty(it, settings.minReservedMemoryLimit_, "min_reserved_memory_limit");
    readOptionalProperty(it, settings.maxReservedMemoryLimit_, "max_reserved_memory_limit");
    readOptionalProperty(it, settings.vncPort_, "vnc_port");
    readOptionalProperty(it, settings.psPort_, "ps_port");
    readOptionalProperty(it, settings.vncNIC_, "vnc_nic");
    // No row (or a bad one) only leaves the table unspecified.
    HNRGuestOSMemoryList& rows = settings.guestOSMemory_.value();
    rows.clear();
    int rowsStatus = it.getObject(rows, HNKReaderListT<std::string, HNRGuestOSMemoryRequirements::Reader>(
                                            kVMMemoryTag, HNK_READER_REQUIRED));
    settings.guestOSMemory_.specify(rowsStatus == 0);
    return it.getObject(static_cast<HNKVtSettings&>(settings), HNKVtSettings::Reader(), std::string());
}

int HNRVtSettings::Writer::operator()(HNKMessageIterator& it, const HNRVtSettings& settings) const
{
    if (writeOptionalProperty(it, settings.defaultVMFolder_, "default_vm_folder") != 0)
        return -1;
    if (writeOptionalProperty(it, settings.defaultUserVMFolder_, "default_user_vm_folder") != 0)
        return -1;
    if (writeOptionalProperty(it, settings.vmDirUUID_, "vm_dir_uuid") != 0)
        return -1;
    if (writeOptionalProperty(it, settings.useManagementConsole_, "use_management_console") != 0)
        return -1;
    if (writeOptionalProperty(it, settings.canChangeServerSettings_, "can_change_server_settings") != 0)
        return -1;
    if (writeOptionalProperty(it, settings.autoAdjustReservedVMMemorySize_, "auto_adjust_reserved_vm_memory_size") != 0)
        return -1;
    if (writeOptionalProperty(it, settings.reservedVMMemorySize_, "reserved_vm_memory_size") != 0)
        return -1;
    if (writeOptionalProperty(it, settings.minVMMemorySize_, "min_vm_memory_size") != 0)
        return -1;
    if (writeOptionalProperty(it, settings.maxVMMemorySize_, "max_vm_memory_size") != 0)
        return -1;
    if (writeOptionalProperty(it, settings.minReservedMemoryLimit_, "min_reserved_memory_limit") != 0)
        return -1;
    if (writeOptionalProperty(it, settings.maxReservedMemoryLimit_, "max_reserved_memory_limit") != 0)
        return -1;
    if (writeOptionalProperty(it, settings.vncPort_, "vnc_port") != 0)
        return -1;
    if (writeOptionalProperty(it, settings.psPort_, "ps_port") != 0)
        return -1;
    if (writeOptionalProperty(it, settings.vncNIC_, "vnc_nic") != 0)
        return -1;
    if (settings.guestOSMemory_.isSpecified() &&
        it.putObject(settings.guestOSMemory_.get(),
                     HNKWriterListOf(HNRGuestOSMemoryRequirements::Writer(), std::string(kVMMemoryTag))) != 0)
        return -1;
    return it.putObject(static_cast<const HNKVtSettings&>(settings), HNKVtSettings::Writer(), std::string());
}

// ---- HNRConsoleInfo ----

int HNRConsoleInfo::Reader::operator()(const HNKMessageIterator& it, HNRConsoleInfo& console) const
{
    if (it.getValue("screen_width", console.screenWidth_) != 0 ||
        it.getValue("screen_height", console.screenHeight_) != 0 ||
        it.getValue("screen_depth", console.screenDepth_) != 0)
        return -1;
    return 0;
}

int HNRConsoleInfo::Writer::operator()(HNKMessageIterator& it, const HNRConsoleInfo& console) const
{
    if (it.putValue("screen_width", console.screenWidth_) != 0 ||
        it.putValue("screen_height", console.screenHeight_) != 0 ||
        it.putValue("screen_depth", console.screenDepth_) != 0)
        return -1;
    return 0;
}

// Constructed in this order at load, destroyed in reverse order at unload.
HNRGuestOSMemoryFactory factoryHNRGuestOSMemory(true);
HNRVtSettingsFactory factoryHNRVtSettings(false);
HNRVtInfoFactory factoryHNRVtInfo(false);

} // namespace HNR
