#include "model/HNREnvConfig.h"

#include "frame/HNRConstants.h"

#include "HNKEnvCoreBasic.h"
#include "HNKLock.h"
#include "HNKSerialization.h"

#include <array>
#include <atomic>
#include <unordered_map>

namespace HNR {

const char kVMMemoryTag[] = "vm_memory";

namespace {

// Guards the first fill of the tag position map.
HNKLock tagPositionsLock;
// Set (release) once the map is filled; read (acquire) before any lookup.
std::atomic<bool> tagPositionsFilled(false);

// One row of the settings table, as values.
struct SettingRow {
    const char* tag;
    int position;      // index in the tag order table, or -1
    int againAt;       // a second index of the same tag (the later wins), else == position
    int listingKey;    // schema order, rows without a position included
    int compareRank;   // 0: never compared
};

#define HNR_ROW(arg, kind, Name, T, tag, place, compare, secrecy) \
    {tag, HNR_ENV_CONFIG_PLACE_##place, HNR_ENV_CONFIG_RANK_##compare},
constexpr SettingRow kRows[] = {HNR_ENV_CONFIG_SETTINGS(HNR_ROW, )};
#undef HNR_ROW
constexpr int kRowCount = sizeof(kRows) / sizeof(kRows[0]);

enum class Setting {
#define HNR_ENUM(arg, kind, Name, T, tag, place, compare, secrecy) Name,
    HNR_ENV_CONFIG_SETTINGS(HNR_ENUM, )
#undef HNR_ENUM
};

constexpr const char* tagOf(Setting s) { return kRows[static_cast<int>(s)].tag; }

// The schema order of the record's elements, laid out from the rows'
// places. "use_default_answers" is in it twice on purpose (the later index,
// 55, wins; no tag has 54), and "user_shared_folders_enabled" and
// "cpu_limit" are deliberately absent.
constexpr int kTagOrderSize = 58;
typedef std::array<const char*, kTagOrderSize> TagOrder;

constexpr TagOrder buildTagOrder()
{
    TagOrder order{};
    for (const SettingRow& row : kRows) {
        if (row.position >= 0)
            order[row.position] = row.tag;
        if (row.againAt >= 0)
            order[row.againAt] = row.tag;
    }
    return order;
}

// Every index of the table is taken by exactly one row.
constexpr bool tagOrderIsDense()
{
    for (int i = 0; i < kTagOrderSize; ++i) {
        int takers = 0;
        for (const SettingRow& row : kRows)
            takers += (row.position == i || row.againAt == i) ? 1 : 0;
        if (takers != 1)
            return false;
    }
    for (const SettingRow& row : kRows) {
        if (row.position >= kTagOrderSize || row.againAt >= kTagOrderSize)
            return false;
    }
    return true;
}
static_assert(tagOrderIsDense(), "the settings' places fill the 58 entries of the tag order table once each");

constexpr TagOrder kTagOrder = buildTagOrder();

// Hashed: the configuration's writer asks it for every child it writes.
typedef std::unordered_map<std::string, int> TagPositions;

// Created on first use; destroyed at exit (or unload).
TagPositions& tagPositions()
{
    static TagPositions positions;
    return positions;
}

const TagPositions& filledTagPositions()
{
    TagPositions& shared = tagPositions();
    if (!tagPositionsFilled.load(std::memory_order_acquire)) {
        TagPositions local;
        for (int i = 0; i < kTagOrderSize; ++i)
            local[kTagOrder[i]] = i; // a later duplicate overwrites an earlier one
        HNKGuardT<HNKLock> guard(tagPositionsLock);
        if (shared.empty()) {
            shared.swap(local);
            tagPositionsFilled.store(true, std::memory_order_release);
        } // else another thread filled it meanwhile: drop ours
    }
    return shared;
}

const int kOfflineManagementEnabledID = 1647;
const int kOfflineServiceItem = 1747;
const int kDeviceItem = 1114;
const std::string kOfflineServicesTag = tagOf(Setting::OfflineServices);
const std::string kDeviceListTag = tagOf(Setting::Devices);

typedef HNKReaderListT<int, HNKStringReader, HNKReaderSetDataT> OfflineServicesReader;
typedef HNKReaderDerivedList<int, HNRVMDevice> DeviceListReader;
typedef HNKWriterDerivedList<int, HNRVMDevice> DeviceListWriter;

// compare's steps, by rank: compareByMethod over one getter each.
typedef int (*CompareStep)(const HNREnvConfig&, const HNREnvConfig&);

template <class T, class C, int (C::*Getter)(T&) const>
int compareStep(const HNREnvConfig& a, const HNREnvConfig& b)
{
    return compareByMethod<T>(a, b, Getter);
}

// Null for an unranked setting, whose comparison is never instantiated.
template <int Rank, class T, class C, int (C::*Getter)(T&) const>
constexpr CompareStep stepOf()
{
    if constexpr (Rank > 0)
        return &compareStep<T, C, Getter>;
    else
        return nullptr;
}

#define HNR_OWNER_value HNREnvConfig
#define HNR_OWNER_custom HNREnvConfig
#define HNR_OWNER_list HNREnvConfig
#define HNR_OWNER_base HNKEnvConfig
#define HNR_STEP(arg, kind, Name, T, tag, place, compare, secrecy) \
    stepOf<HNR_ENV_CONFIG_RANK_##compare, T, HNR_OWNER_##kind, &HNR_OWNER_##kind::get##Name>(),
constexpr CompareStep kStepsByRow[] = {HNR_ENV_CONFIG_SETTINGS(HNR_STEP, )};
#undef HNR_STEP

constexpr int countRanked()
{
    int n = 0;
    for (const SettingRow& row : kRows)
        n += row.compareRank > 0 ? 1 : 0;
    return n;
}
constexpr int kRankedCount = countRanked();
typedef std::array<CompareStep, kRankedCount> CompareOrder;

constexpr CompareOrder buildCompareOrder()
{
    CompareOrder order{};
    for (int i = 0; i < kRowCount; ++i) {
        if (kRows[i].compareRank > 0)
            order[kRows[i].compareRank - 1] = kStepsByRow[i];
    }
    return order;
}

// Ranks run 1..n, each once.
constexpr bool ranksAreDense()
{
    for (int r = 1; r <= kRankedCount; ++r) {
        int takers = 0;
        for (const SettingRow& row : kRows)
            takers += row.compareRank == r ? 1 : 0;
        if (takers != 1)
            return false;
    }
    return true;
}
static_assert(ranksAreDense(), "the compare ranks run from 1 with no gap and no repeat");

constexpr CompareOrder kCompareOrder = buildCompareOrder();

} // namespace

HNREnvConfig::HNREnvConfig(const HNKMessageIterator* msg) : HNKVEnvConfig(msg) {}
HNREnvConfig::HNREnvConfig(const HNKEnvConfig& config) : HNKVEnvConfig(config) {}
HNREnvConfig::HNREnvConfig(const HNKVEnvConfig& config) : HNKVEnvConfig(config) {}
HNREnvConfig::HNREnvConfig(boost::shared_ptr<HNKEnvCoreBasic> core) : HNKVEnvConfig(core) {}
HNREnvConfig::~HNREnvConfig() {}

const char* HNREnvConfig::Writer::getStrNSID() { return kTypesNamespace; }

// ---- Generic access ----

template <class T>
int HNREnvConfig::getProperty(T& value, const char* tag) const
{
    const HNKMessageIterator* msg = getMsg();
    if (!msg)
        return -1;
    return msg->getValue(tag, value) == 0 ? 0 : -1;
}

template <class T>
int HNREnvConfig::setProperty(T value, const char* tag)
{
    return putElement(value, tag); // one element afterwards; a refused value leaves the old one
}

template int HNREnvConfig::getProperty<bool>(bool&, const char*) const;
template int HNREnvConfig::getProperty<int>(int&, const char*) const;
template int HNREnvConfig::getProperty<std::string>(std::string&, const char*) const;
template int HNREnvConfig::setProperty<bool>(bool, const char*);
template int HNREnvConfig::setProperty<int>(int, const char*);
template int HNREnvConfig::setProperty<std::string>(std::string, const char*);

// The comparison helper, for every value type of the settings: callers
// compare through these, whatever the compiler inlines here.
template int compareByMethod<bool>(const HNREnvConfig&, const HNREnvConfig&, int (HNREnvConfig::*)(bool&) const);
template int compareByMethod<int>(const HNREnvConfig&, const HNREnvConfig&, int (HNREnvConfig::*)(int&) const);
template int compareByMethod<std::string>(const HNREnvConfig&, const HNREnvConfig&,
                                          int (HNREnvConfig::*)(std::string&) const);
template int compareByMethod<HNROfflineServices>(const HNREnvConfig&, const HNREnvConfig&,
                                                 int (HNREnvConfig::*)(HNROfflineServices&) const);
template int compareByMethod<HNROptionalDevices>(const HNREnvConfig&, const HNREnvConfig&,
                                                 int (HNREnvConfig::*)(HNROptionalDevices&) const);

// ---- Typed accessors ----

#define HNR_DEFINE(arg, kind, Name, T, tag, place, compare, secrecy) HNR_DEFINE_##kind(Name, T, tag)
#define HNR_DEFINE_value(Name, T, tag)                                                                 \
    int HNREnvConfig::get##Name(T& value) const { return getProperty<T>(value, tag); }               \
    int HNREnvConfig::set##Name(HNRSettingArg<T> value) { return setProperty<T>(value, tag); }
#define HNR_DEFINE_custom(Name, T, tag) // below, by hand
#define HNR_DEFINE_list(Name, T, tag)   // below, by hand
#define HNR_DEFINE_base(Name, T, tag)   // the framework's
HNR_ENV_CONFIG_SETTINGS(HNR_DEFINE, )
#undef HNR_DEFINE

// ---- The three accessors with their own addressing ----

int HNREnvConfig::getOfflineManagementEnabled(bool& value) const
{
    const HNKMessageIterator* msg = getMsg();
    if (!msg)
        return -1;
    return msg->getValue(kOfflineManagementEnabledID, value);
}

int HNREnvConfig::setOfflineManagementEnabled(bool value)
{
    initMsg();
    HNKMessageIterator& msg = *getMsg();
    while (msg.removeChild(kOfflineManagementEnabledID) == 0) {
    }
    return msg.putValue(kOfflineManagementEnabledID, value);
}

int HNREnvConfig::getOfflineServices(HNKOptionalProperty<std::set<std::string>>& services) const
{
    const HNKMessageIterator* msg = getMsg();
    if (!msg)
        return -1;
    if (!msg->hasChild(kOfflineServicesTag))
        return 0;
    services.specify(true);
    return msg->getObject(services.value(), OfflineServicesReader(kOfflineServiceItem, HNK_READER_ABSENCE_OK),
                          kOfflineServicesTag);
}

int HNREnvConfig::setOfflineServices(const HNKOptionalProperty<std::set<std::string>>& services)
{
    initMsg();
    HNKMessageIterator& msg = *getMsg();
    while (msg.removeChild(kOfflineServicesTag) == 0) {
    }
    if (!services.isSpecified())
        return 0;
    return msg.putObject(services.get(), HNKWriterListOf(HNKStringWriter(), kOfflineServiceItem),
                         kOfflineServicesTag);
}

int HNREnvConfig::getDevices(HNKOptionalProperty<HNRVMDeviceList>& devices) const
{
    const HNKMessageIterator* msg = getMsg();
    if (!msg)
        return -1;
    if (!msg->hasChild(kDeviceListTag))
        return 0;
    devices.specify(true);
    return msg->getObject(devices.value(), DeviceListReader(kDeviceItem, HNK_READER_ABSENCE_OK, true),
                          kDeviceListTag);
}

int HNREnvConfig::setDevices(const HNKOptionalProperty<HNRVMDeviceList>& devices)
{
    initMsg();
    HNKMessageIterator& msg = *getMsg();
    while (msg.removeChild(kDeviceListTag) == 0) {
    }
    if (!devices.isSpecified())
        return 0;
    return msg.putObject(devices.get(), DeviceListWriter(kDeviceItem), kDeviceListTag);
}

// ---- Tag positions and comparison ----

int HNREnvConfig::getPositionOfTheTag(const std::string& tag) const
{
    const TagPositions& positions = filledTagPositions();
    auto found = positions.find(tag);
    return found == positions.end() ? -1 : found->second;
}

int HNREnvConfig::compare(const HNREnvConfig& other) const
{
    int c = HNKEnvConfig::compare(other);
    if (c != 0)
        return c;
    // In the table's compare order. CPU units, CPU limit and the start
    // user's password are unranked on purpose: configurations differing only
    // in them are equal.
    for (CompareStep step : kCompareOrder) {
        if ((c = step(*this, other)) != 0)
            return c;
    }
    return 0;
}

HNREnvConfigFactory factoryHNREnvConfig(false);

} // namespace HNR
