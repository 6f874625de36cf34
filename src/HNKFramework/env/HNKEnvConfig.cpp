#include "HNKEnvConfig.h"

#include "HNKCompare.h"
#include "HNKDefaultMap.h"
#include "HNKEnvCoreBasic.h"
#include "HNKSerialization.h"

#include <algorithm>
#include <climits>
#include <vector>

HNK_INSTANTIATE_FACTORY_REGISTRY(HNKEnvConfig);

namespace {

const char kRootName[] = "venv_config";

// Schema places below this are put in order by counting.
const int kCountedPlaces = 256;

// Copies and reads share the tree until either side changes it (see
// HNKMessageIterator::shareSubtree): to every caller they are deep copies.
HNKMessageIterator copyOf(const HNKMessageIterator& msg)
{
    return msg.isValid() ? msg.root().shareSubtree() : HNKMessageIterator();
}

// A setting as an optional value: specified exactly when it could be read.
template <class T, class Getter>
HNKOptionalProperty<T> optionalOf(const HNKEnvConfig& config, Getter getter)
{
    HNKOptionalProperty<T> p;
    T value = T();
    if ((config.*getter)(value) == 0)
        p.set(value);
    return p;
}

template <class T>
int compareSetting(const HNKEnvConfig& a, const HNKEnvConfig& b, int (HNKEnvConfig::*getter)(T&) const)
{
    return compare(optionalOf<T>(a, getter), optionalOf<T>(b, getter));
}

} // namespace

HNKEnvConfig::HNKEnvConfig() {}

HNKEnvConfig::HNKEnvConfig(const HNKMessageIterator* msg)
{
    if (msg && msg->isValid())
        msg_ = msg->shareSubtree();
}

HNKEnvConfig::HNKEnvConfig(boost::shared_ptr<HNKEnvCoreBasic> core) : core_(core) {}

HNKEnvConfig::HNKEnvConfig(const HNKEnvConfig& other)
    : boost::enable_shared_from_this<HNKEnvConfig>(), msg_(copyOf(other.msg_)), core_(other.core_)
{
}

HNKEnvConfig& HNKEnvConfig::operator=(const HNKEnvConfig& other)
{
    if (this != &other) {
        msg_ = copyOf(other.msg_);
        core_ = other.core_;
    }
    return *this;
}

HNKEnvConfig::~HNKEnvConfig() {}

void HNKEnvConfig::initMsg()
{
    if (!msg_.isValid())
        msg_ = HNKMessageIterator(kRootName);
}

int HNKEnvConfig::getPositionOfTheTag(const std::string&) const { return -1; }

int HNKEnvConfig::getName(HNKOptionalProperty<std::string>& name) const
{
    if (!hasMsg())
        return -1;
    std::string value;
    if (msg_.getValue("name", value) == 0)
        name.set(value);
    return 0;
}

int HNKEnvConfig::setName(const HNKOptionalProperty<std::string>& name)
{
    if (!name.isSpecified()) {
        if (hasMsg())
            while (msg_.removeChild("name") == 0) {
            }
        return 0;
    }
    return putElement(name.get(), "name");
}

int HNKEnvConfig::getDisabled(bool& value) const { return getElement(value, "disabled"); }
int HNKEnvConfig::setDisabled(bool value) { return putElement(value, "disabled"); }
int HNKEnvConfig::getCPUHvt(bool& value) const { return getElement(value, "cpu_hvt"); }
int HNKEnvConfig::setCPUHvt(bool value) { return putElement(value, "cpu_hvt"); }
int HNKEnvConfig::getVtdSupported(bool& value) const { return getElement(value, "vtd_supported"); }
int HNKEnvConfig::setVtdSupported(bool value) { return putElement(value, "vtd_supported"); }
int HNKEnvConfig::getPsPort(int& value) const { return getElement(value, "ps_port"); }
int HNKEnvConfig::setPsPort(int value) { return putElement(value, "ps_port"); }
int HNKEnvConfig::getScreenWidth(int& value) const { return getElement(value, "screen_width"); }
int HNKEnvConfig::setScreenWidth(int value) { return putElement(value, "screen_width"); }
int HNKEnvConfig::getScreenHeight(int& value) const { return getElement(value, "screen_height"); }
int HNKEnvConfig::setScreenHeight(int value) { return putElement(value, "screen_height"); }
int HNKEnvConfig::getScreenDepth(int& value) const { return getElement(value, "screen_depth"); }
int HNKEnvConfig::setScreenDepth(int value) { return putElement(value, "screen_depth"); }

int HNKEnvConfig::compare(const HNKEnvConfig& other) const
{
    HNKOptionalProperty<std::string> name, otherName;
    getName(name);
    other.getName(otherName);
    int c;
    if ((c = ::compare(name, otherName)) != 0) return c;
    if ((c = compareSetting(*this, other, &HNKEnvConfig::getDisabled)) != 0) return c;
    if ((c = compareSetting(*this, other, &HNKEnvConfig::getCPUHvt)) != 0) return c;
    if ((c = compareSetting(*this, other, &HNKEnvConfig::getVtdSupported)) != 0) return c;
    if ((c = compareSetting(*this, other, &HNKEnvConfig::getPsPort)) != 0) return c;
    if ((c = compareSetting(*this, other, &HNKEnvConfig::getScreenWidth)) != 0) return c;
    if ((c = compareSetting(*this, other, &HNKEnvConfig::getScreenHeight)) != 0) return c;
    return compareSetting(*this, other, &HNKEnvConfig::getScreenDepth);
}

int HNKEnvConfig::Reader::operator()(const HNKMessageIterator& it, HNKEnvConfig& config) const
{
    if (!it.isValid())
        return -1;
    config.msg_ = it.shareSubtree();
    return 0;
}

unsigned HNKEnvConfig::Writer::getNSID() { return HNK_NS_TYPES; }
unsigned HNKEnvConfig::Writer::getTypeID() { return HNK_TYPE_ENV_CONFIG; }

int HNKEnvConfig::Writer::operator()(HNKMessageIterator& it, const HNKEnvConfig& config) const
{
    const HNKMessageIterator* msg = config.getMsg();
    if (!msg)
        return 0;
    // Children go out in schema order, stable among equal places (unknown
    // tags last): one call, so a fresh record's children pass on as written,
    // never built as elements.
    const HNKMessageIterator top = msg->root();
    std::vector<std::string_view> names;
    if (top.childNames(names) != 0 || names.empty())
        return 0;
    std::vector<int> positions;
    positions.reserve(names.size());
    std::string name;
    name.reserve(64);
    int highest = -1;
    for (std::string_view n : names) {
        name.clear(); // then appended: a plain copy, where assign guards against overlap
        name.append(n.data(), n.size());
        int position = config.getPositionOfTheTag(name);
        positions.push_back(position < 0 ? INT_MAX : position);
        highest = std::max(highest, position);
    }
    std::vector<size_t> order(names.size());
    if (highest < kCountedPlaces) {
        // Places are a schema table's indexes: counted, not compared. The
        // counts become each place's first slot; equal places keep their
        // order; unknown tags (INT_MAX) go last.
        const int unknown = highest + 1; // the place of the tags without one
        size_t first[kCountedPlaces + 2];
        std::fill(first, first + unknown + 2, size_t(0));
        for (int& p : positions) {
            if (p == INT_MAX)
                p = unknown;
            ++first[p + 1];
        }
        for (int p = 1; p <= unknown; ++p)
            first[p] += first[p - 1];
        for (size_t i = 0; i < positions.size(); ++i)
            order[first[positions[i]]++] = i;
    } else {
        for (size_t i = 0; i < order.size(); ++i)
            order[i] = i;
        std::stable_sort(order.begin(), order.end(),
                         [&positions](size_t a, size_t b) { return positions[a] < positions[b]; });
    }
    return it.appendChildrenLinked(top, order); // a list is copied only if someone looks inside
}

HNKEnvConfigFactory factoryHNKEnvConfig(true);
