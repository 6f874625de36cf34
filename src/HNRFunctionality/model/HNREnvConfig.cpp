#include "model/HNREnvConfig.h"

#include "frame/HNRConstants.h"

#include "HNKEnvCoreBasic.h"
#include "HNKSerialization.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace HNR {

const char kVMMemoryTag[] = "vm_memory";

namespace {

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

// Length and (up to) the first and last eight bytes of a tag, mixed: the
// tags of the table differ there. Computed alike at compile time and at run
// time.
// (At run time the bytes are taken in whole words: `last` holds the last
// bytes in reverse, a byte swap of the word that ends the tag.)
constexpr uint64_t tagKey(const char* tag, size_t length)
{
    uint64_t first = 0, last = 0;
    if (!__builtin_is_constant_evaluated() && length >= 8) {
        std::memcpy(&first, tag, 8);
        std::memcpy(&last, tag + length - 8, 8);
        last = __builtin_bswap64(last);
    } else {
        for (size_t i = 0; i < 8 && i < length; ++i) {
            first |= static_cast<uint64_t>(static_cast<unsigned char>(tag[i])) << (8 * i);
            last |= static_cast<uint64_t>(static_cast<unsigned char>(tag[length - 1 - i])) << (8 * i);
        }
    }
    uint64_t h = (first * 0x9E3779B97F4A7C15ull) ^ (last * 0xC2B2AE3D27D4EB4Full) ^ (length * 0x165667B19E3779F9ull);
    h ^= h >> 29;
    return h * 0xFF51AFD7ED558CCDull;
}

// Lengths and comparisons through char_traits: constexpr.
typedef std::char_traits<char> Chars;

// Whether two strings of `n` bytes are equal: at run time in whole words
// (the last one overlapping), no call for the short tags of the table.
constexpr bool sameTag(const char* a, const char* b, size_t n)
{
    if (__builtin_is_constant_evaluated() || n < 8)
        return Chars::compare(a, b, n) == 0;
    uint64_t x = 0, y = 0;
    for (size_t k = 0; k + 8 < n; k += 8) {
        std::memcpy(&x, a + k, 8);
        std::memcpy(&y, b + k, 8);
        if (x != y)
            return false;
    }
    std::memcpy(&x, a + n - 8, 8);
    std::memcpy(&y, b + n - 8, 8);
    return x == y;
}

// The tag order table by tag, built at compile time (nothing to fill or
// guard at run time): open addressing over a power of two more than twice
// the tags, each slot the position, -1 empty. The configuration's writer
// asks it for every child it writes.
constexpr size_t kPositionSlots = 128;
struct TagPositions {
    std::array<signed char, kPositionSlots> slot{};
    std::array<size_t, kTagOrderSize> length{};
};

constexpr TagPositions buildTagPositions()
{
    TagPositions t{};
    for (signed char& s : t.slot)
        s = -1;
    for (int i = 0; i < kTagOrderSize; ++i)
        t.length[i] = Chars::length(kTagOrder[i]);
    for (int i = 0; i < kTagOrderSize; ++i) {
        const size_t n = t.length[i];
        size_t k = tagKey(kTagOrder[i], n) & (kPositionSlots - 1);
        for (; t.slot[k] >= 0; k = (k + 1) & (kPositionSlots - 1))
            if (t.length[t.slot[k]] == n && sameTag(kTagOrder[t.slot[k]], kTagOrder[i], n))
                break; // a later duplicate takes the place of the earlier one
        t.slot[k] = static_cast<signed char>(i);
    }
    return t;
}

constexpr TagPositions kTagPositions = buildTagPositions();

constexpr int positionOf(const char* tag, size_t length)
{
    for (size_t k = tagKey(tag, length) & (kPositionSlots - 1); kTagPositions.slot[k] >= 0;
         k = (k + 1) & (kPositionSlots - 1)) {
        const int p = kTagPositions.slot[k];
        if (kTagPositions.length[p] == length && sameTag(kTagOrder[p], tag, length))
            return p;
    }
    return -1;
}
static_assert(positionOf("memory_size", 11) == 0 && positionOf("use_default_answers", 19) == 55 &&
                  positionOf("cpu_limit", 9) == -1,
              "the tag positions hold the table, the later place of a duplicate");

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
    return positionOf(tag.data(), tag.size());
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
