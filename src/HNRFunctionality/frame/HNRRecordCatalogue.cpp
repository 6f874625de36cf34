#include "frame/HNRRecordCatalogue.h"

#include "frame/HNREnvFactory.h"
#include "model/HNRBackupOptions.h"
#include "model/HNRCommonDevice.h"
#include "model/HNREnvConfig.h"
#include "model/HNRMigratorCloneOptions.h"
#include "model/HNRNetNIC.h"
#include "model/HNRVMDevice.h"
#include "model/HNRVtInfo.h"

#include "HNKBackupOptions.h"
#include "HNKCommonDevice.h"
#include "HNKDerivedParserFactory.h"
#include "HNKEnv.h"
#include "HNKEnvConfig.h"
#include "HNKErrorMessage.h"
#include "HNKMessageIterator.h"
#include "HNKMigratorCloneOptions.h"
#include "HNKNetDevice.h"
#include "HNKSerialization.h"
#include "HNKV2VMigrateOptions.h"
#include "HNKVtInfo.h"
#include "HNKVtSettings.h"

#include <cxxabi.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <memory>
#include <sstream>

namespace HNR {

namespace {

std::string demangle(const char* name)
{
    int status = 0;
    std::unique_ptr<char, void (*)(void*)> text(abi::__cxa_demangle(name, nullptr, nullptr, &status), std::free);
    return status == 0 && text ? std::string(text.get()) : std::string(name);
}

// One registry: which keys it knows and how it reads them into a record.
struct Registry {
    std::string title;
    std::function<std::vector<std::string>()> keys;
    std::function<int(const HNKMessageIterator&, boost::shared_ptr<void>&, std::string&,
                      std::function<int(HNKMessageIterator&)>&)>
        read;
    const std::type_info* base;
};

template <class Base>
Registry registry(const std::string& title)
{
    typedef HNKDerivedParserFactory<Base, Base> Factory;
    Registry r;
    r.title = title;
    r.base = &typeid(Base);
    r.keys = [] {
        std::vector<std::string> keys;
        for (const auto& entry : Factory::factories())
            keys.push_back(entry.first);
        return keys;
    };
    r.read = [](const HNKMessageIterator& it, boost::shared_ptr<void>& object, std::string& className,
                std::function<int(HNKMessageIterator&)>& write) {
        boost::shared_ptr<Base> typed;
        int status = HNKReaderDerived<Base, Base>(false)(it, typed);
        if (status != 0)
            return status;
        if (!typed)
            return -1;
        object = typed;
        className = demangle(typeid(*typed).name());
        write = [typed](HNKMessageIterator& out) { return out.putObject(typed, HNKWriterDerived<Base, Base>()); };
        return 0;
    };
    return r;
}

const std::vector<Registry>& allRegistries()
{
    static const std::vector<Registry> table = {
        registry<HNKEnvConfig>("VM configuration (HNKEnvConfig)"),
        registry<HNRVMDevice>("VM device (HNRVMDevice)"),
        registry<HNKEnv>("environment (HNKEnv)"),
        registry<HNKCommonDevice>("host device (HNKCommonDevice)"),
        registry<HNKNetDevice>("network device (HNKNetDevice)"),
        registry<HNRNetworkServiceInfo>("network service (HNRNetworkServiceInfo)"),
        registry<HNKVtInfo>("virtualization info (HNKVtInfo)"),
        registry<HNKVtSettings>("virtualization settings (HNKVtSettings)"),
        registry<HNRGuestOSMemoryRequirements>("guest OS memory (HNRGuestOSMemoryRequirements)"),
        registry<HNKMigratorCloneOptions>("clone options (HNKMigratorCloneOptions)"),
        registry<HNKV2VMigrateOptions>("migration options (HNKV2VMigrateOptions)"),
        registry<HNKBackupOptions>("backup options (HNKBackupOptions)"),
    };
    return table;
}

const Registry* findRegistry(const std::string& typeKey)
{
    for (const Registry& r : allRegistries()) {
        for (const std::string& key : r.keys()) {
            if (key == typeKey)
                return &r;
        }
    }
    return nullptr;
}

template <class T>
int settingText(const T& value, std::string& text)
{
    std::ostringstream s;
    s << value;
    text = s.str();
    return 0;
}

// "name" reads as absent-but-fine when unspecified: not set, for a listing.
int settingText(const HNKOptionalProperty<std::string>& name, std::string& text)
{
    if (!name.isSpecified())
        return -1;
    text = name.get();
    return 0;
}

template <class T, class C>
HNRConfigSetting typed(const char* tag, int (C::*getter)(T&) const, bool secret)
{
    HNRConfigSetting setting{tag, [getter](const HNREnvConfig& c, std::string& text) {
                                 T value = T();
                                 int status = (c.*getter)(value);
                                 return status != 0 ? status : settingText(value, text);
                             }};
    setting.secret = secret;
    return setting;
}

// A setting with its place in the listing (the schema order).
struct ListedSetting {
    int key;
    HNRConfigSetting setting;
};

// Types of the module's own namespaces: one no registry knows is a mistake
// in the message (the framework's own nested types have their own readers).
bool isModuleType(const std::string& key)
{
    return key.compare(0, 40, "http://www.tessaline.org/webservices/hnr") == 0;
}

// Children of the cursor with their labels: name, and "[n]" (from 1) when
// the name repeats among the siblings.
std::vector<std::pair<std::string, HNKMessageIterator>> labelledChildren(const HNKMessageIterator& it)
{
    std::vector<std::pair<std::string, HNKMessageIterator>> children;
    HNKMessageIterator child(it);
    if (child.firstChild() != 0)
        return children;
    std::map<std::string, int> total;
    do {
        children.emplace_back(child.currentName(), child);
        ++total[child.currentName()];
    } while (child.nextSibling() == 0);
    std::map<std::string, int> seen;
    for (auto& c : children) {
        if (total[c.first] > 1)
            c.first += "[" + std::to_string(++seen[c.first]) + "]";
    }
    return children;
}

void checkSettings(const HNREnvConfig& config, const HNKMessageIterator& it, const std::string& path,
                   std::vector<HNRReadProblem>& problems)
{
    for (const HNRConfigSetting& s : HNRRecordCatalogue::configSettings()) {
        if (!it.hasChild(s.tag))
            continue;
        std::string text;
        if (s.get(config, text) == 0)
            continue;
        std::string raw;
        it.getValue(s.tag, raw);
        problems.push_back({path + "/" + s.tag, "the value '" + (s.secret ? std::string("(hidden)") : raw) +
                                                    "' does not convert to the setting's type"});
    }
}

void diagnoseElement(const HNKMessageIterator& it, const std::string& path, bool isRoot,
                     std::vector<HNRReadProblem>& problems)
{
    std::string key = it.getTypeName();
    if (isRoot && key.empty()) {
        problems.push_back({path, "no xsi:type: no registry can read it"});
        return;
    }
    if (!key.empty()) {
        const Registry* r = findRegistry(key);
        if (!r && (isRoot || isModuleType(key))) {
            problems.push_back({path, "type '" + key + "' is known to no registry" +
                                          (isRoot ? std::string() : ": its fields would be ignored")});
        } else if (r) {
            HNRRecord record;
            std::string error;
            if (HNRRecordCatalogue::read(it, record, error) != 0) {
                problems.push_back({path, error});
            } else if (boost::shared_ptr<HNKEnvConfig> config = record.as<HNKEnvConfig>()) {
                if (auto* vm = dynamic_cast<const HNREnvConfig*>(config.get()))
                    checkSettings(*vm, it, path, problems);
            }
        }
    }
    for (const auto& child : labelledChildren(it))
        diagnoseElement(child.second, path + "/" + child.first, false, problems);
}

void listFieldsBelow(const HNKMessageIterator& it, const std::string& prefix, bool withTypes,
                     std::vector<HNRRecordField>& out)
{
    for (const auto& child : labelledChildren(it)) {
        std::string path = prefix.empty() ? child.first : prefix + "/" + child.first;
        if (withTypes) {
            std::string type = child.second.getTypeName();
            if (!type.empty())
                path += "(" + type.substr(type.rfind(':') + 1) + ")";
        }
        HNKMessageIterator probe(child.second);
        if (probe.firstChild() == 0) {
            listFieldsBelow(child.second, path, withTypes, out);
            continue;
        }
        HNRRecordField field;
        field.path = path;
        child.second.getValue(0, field.value);
        field.secret = HNRRecordCatalogue::isSecretName(child.second.currentName());
        out.push_back(field);
    }
}

void maskSecrets(HNKMessageIterator& it)
{
    HNKMessageIterator child(it);
    if (child.firstChild() != 0)
        return;
    do {
        HNKMessageIterator probe(child);
        if (probe.firstChild() == 0)
            maskSecrets(child);
        else if (HNRRecordCatalogue::isSecretName(child.currentName()))
            child.putValue(0, std::string());
    } while (child.nextSibling() == 0);
}

} // namespace

int HNRRecord::write(HNKMessageIterator& it, bool mask) const
{
    if (!write_)
        return -1;
    int status = write_(it);
    if (status == 0 && mask)
        maskSecrets(it);
    return status;
}

int HNRRecord::fields(std::vector<HNRRecordField>& out, bool withTypes) const
{
    HNKMessageIterator scratch("record");
    int status = write(scratch, false);
    if (status != 0)
        return status;
    HNRRecordCatalogue::listFields(scratch, out, withTypes);
    return 0;
}

std::vector<std::string> HNRRecordCatalogue::registries()
{
    std::vector<std::string> titles;
    for (const Registry& r : allRegistries())
        titles.push_back(r.title);
    return titles;
}

std::vector<std::string> HNRRecordCatalogue::typeKeys(const std::string& title)
{
    for (const Registry& r : allRegistries()) {
        if (r.title == title)
            return r.keys();
    }
    return std::vector<std::string>();
}

std::string HNRRecordCatalogue::registryOf(const std::string& typeKey)
{
    const Registry* r = findRegistry(typeKey);
    return r ? r->title : std::string();
}

int HNRRecordCatalogue::read(const HNKMessageIterator& it, HNRRecord& record, std::string& error)
{
    std::string key = it.getTypeName();
    const Registry* r = findRegistry(key);
    if (!r) {
        error = "no factory is registered for type '" + key + "' (tried:";
        for (const Registry& each : allRegistries())
            error += " " + each.title + ";";
        error.back() = ')';
        return -1;
    }
    HNRRecord result;
    setErrorMessage("%s", "");
    int status = r->read(it, result.object_, result.className, result.write_);
    if (status != 0) {
        std::string why = getErrorMessage();
        error = "the " + r->title + " factory for '" + key + "' failed to read it (status " +
                std::to_string(status) + ")" + (why.empty() ? std::string() : ": " + why);
        return status;
    }
    result.registry = r->title;
    result.typeKey = key;
    result.base_ = r->base;
    record = result;
    return 0;
}

std::vector<HNRReadProblem> HNRRecordCatalogue::diagnose(const HNKMessageIterator& it)
{
    std::vector<HNRReadProblem> problems;
    diagnoseElement(it, std::string("/") + it.currentName(), true, problems);
    return problems;
}

bool HNRRecordCatalogue::isSecretName(const std::string& name) { return name.find("password") != std::string::npos; }

void HNRRecordCatalogue::listFields(const HNKMessageIterator& it, std::vector<HNRRecordField>& out, bool withTypes)
{
    listFieldsBelow(it, "", withTypes, out);
}

// The scalar settings of the table (lists have their own listing), in
// schema order; a setting without a position stands where the table puts it.
#define HNR_LISTED(arg, kind, Name, T, tag, place, compare, secrecy) \
    HNR_LISTED_CALL(HNR_LISTED_##kind, Name, T, tag, HNR_ENV_CONFIG_PLACE_##place, HNR_ENV_CONFIG_SECRET_##secrecy)
#define HNR_LISTED_CALL(m, ...) m(__VA_ARGS__) // the place's three values become three arguments
#define HNR_LISTED_value(Name, T, tag, position, againAt, key, secret) \
    {key, typed<T, HNREnvConfig>(tag, &HNREnvConfig::get##Name, secret)},
#define HNR_LISTED_custom HNR_LISTED_value
#define HNR_LISTED_list(Name, T, tag, position, againAt, key, secret)
#define HNR_LISTED_base(Name, T, tag, position, againAt, key, secret) \
    {key, typed<T, HNKEnvConfig>(tag, &HNKEnvConfig::get##Name, secret)},

const std::vector<HNRConfigSetting>& HNRRecordCatalogue::configSettings()
{
    static const std::vector<HNRConfigSetting> table = [] {
        std::vector<ListedSetting> listed = {HNR_ENV_CONFIG_SETTINGS(HNR_LISTED, )};
        std::stable_sort(listed.begin(), listed.end(),
                         [](const ListedSetting& a, const ListedSetting& b) { return a.key < b.key; });
        // Copied out as one range: the vector is built as a list of settings
        // always was (no other std:: code for the exported type).
        std::unique_ptr<HNRConfigSetting[]> sorted(new HNRConfigSetting[listed.size()]);
        for (size_t i = 0; i < listed.size(); ++i)
            sorted[i] = listed[i].setting;
        const HNRConfigSetting* first = sorted.get();
        return std::vector<HNRConfigSetting>(first, first + listed.size());
    }();
    return table;
}

} // namespace HNR
