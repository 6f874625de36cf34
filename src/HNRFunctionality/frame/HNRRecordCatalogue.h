#pragma once
// The record catalogue: every parser-factory registry the module reads
// messages through, the type keys registered in each, and reading, writing
// and listing the fields of any record found there. Tools and checks use it
// instead of naming registries and record classes themselves.
#include <boost/shared_ptr.hpp>

#include <cstddef>
#include <functional>
#include <string>
#include <typeinfo>
#include <vector>

class HNKMessageIterator;
class HNKEnvConfig;

namespace HNR {

class HNREnvConfig;

// One element of a record as text: "device_list/device[2]/sys_name".
struct HNRRecordField {
    std::string path;
    std::string value;
    bool secret = false; // a password: shown only on request
};

// One element that does not read, with the reason.
struct HNRReadProblem {
    std::string path; // from the root, e.g. "/configuration/memory_size"
    std::string reason;
};

// A record read through one of the registries.
class HNRRecord {
public:
    std::string registry;  // title of the registry, e.g. "VM configuration (HNKEnvConfig)"
    std::string typeKey;   // "namespace URI:type name" it was read by
    std::string className; // demangled run-time class, e.g. "HNR::HNREnvConfig"

    // The record as its registry's base class, or null when Base is not it.
    template <class Base>
    boost::shared_ptr<Base> as() const
    {
        return base_ && *base_ == typeid(Base) ? boost::static_pointer_cast<Base>(object_)
                                                 : boost::shared_ptr<Base>();
    }
    // Writes the record at the cursor through its own factory; 0 on success.
    // With maskSecrets, the text of every secret element is emptied.
    int write(HNKMessageIterator& it, bool maskSecrets) const;
    // Every element the record writes, in document order; 0 on success.
    // withTypes adds the type name of typed elements to their path segment:
    // "device_list/device[2](vm_usb_device)/auto_connect_devices".
    int fields(std::vector<HNRRecordField>& out, bool withTypes = false) const;

private:
    friend class HNRRecordCatalogue;
    boost::shared_ptr<void> object_;
    const std::type_info* base_ = nullptr;
    std::function<int(HNKMessageIterator&)> write_;
};

// One typed setting of a VM configuration, read through its own getter.
struct HNRConfigSetting {
    const char* tag;
    // The value as text; non-zero when absent or not convertible.
    std::function<int(const HNREnvConfig&, std::string&)> get;
    bool secret = false; // a password: shown only on request
};

class HNRRecordCatalogue {
public:
    // Titles of the registries, in the order a type key is looked up.
    static std::vector<std::string> registries();
    // The type keys registered in the registry titled `title` (sorted).
    static std::vector<std::string> typeKeys(const std::string& title);
    // Title of the registry that knows typeKey exactly; "" when none does.
    static std::string registryOf(const std::string& typeKey);

    // Reads the element at the cursor through the registry that knows its
    // xsi:type (exact key, no default factory). Non-zero with error set
    // when no registry knows it or the factory's read fails.
    static int read(const HNKMessageIterator& it, HNRRecord& record, std::string& error);

    // Every element below the cursor that does not read, each with its path
    // and why: types no registry knows, records whose factory fails, VM
    // configuration settings that do not convert. Empty when all reads.
    static std::vector<HNRReadProblem> diagnose(const HNKMessageIterator& it);

    // The typed settings of a VM configuration (HNR_ENV_CONFIG_SETTINGS), in
    // the order of its tags.
    static const std::vector<HNRConfigSetting>& configSettings();

    // True for element names that hold secrets (passwords).
    static bool isSecretName(const std::string& name);
    // Every element below the cursor as "path = text"; nested records
    // give paths with '/', repeated names an index from 1: ip_address[1].
    static void listFields(const HNKMessageIterator& it, std::vector<HNRRecordField>& out, bool withTypes = false);
};

} // namespace HNR
