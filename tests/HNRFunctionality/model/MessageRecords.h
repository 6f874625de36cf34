#pragma once
// Test support: a message's root record read through whichever registry of
// the module knows its xsi:type key (exact key, no default factory), written
// back through the same registry, and compared with another such record.
// Used by the golden texts, their generator and the schema agreement tests.
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
#include "HNKCompare.h"
#include "HNKDerivedParserFactory.h"
#include "HNKEnv.h"
#include "HNKEnvConfig.h"
#include "HNKMigratorCloneOptions.h"
#include "HNKNetDevice.h"
#include "HNKSerialization.h"
#include "HNKV2VMigrateOptions.h"
#include "HNKVtInfo.h"
#include "HNKVtSettings.h"
#include "HNKMessageIterator.h"

#include <boost/shared_ptr.hpp>

#include <functional>
#include <string>
#include <typeinfo>
#include <vector>

namespace hnr_test {

struct AnyRecord {
    std::string registry; // the registry base that read it
    const std::type_info* type = nullptr;
    // Writes the record at the cursor through its registry; 0 on success.
    std::function<int(HNKMessageIterator&)> write;
    // The record's own comparison where it has one (0: equal); records
    // without one compare by the text they write.
    std::function<int(const AnyRecord&)> compare;
    boost::shared_ptr<void> object;
};

namespace detail {

// Records with a comparison of their own; the others fall back to text.
inline int recordCompare(const HNR::HNRVMDevice& a, const HNR::HNRVMDevice& b) { return ::compare(a, b); }
inline int recordCompare(const HNKEnv& a, const HNKEnv& b) { return a.compare(b); }
// The configuration's own compare is -1 by design for a setting absent on
// both sides; the framework part and the device list are what must agree.
inline int recordCompare(const HNKEnvConfig& a, const HNKEnvConfig& b)
{
    int c = a.compare(b);
    if (c != 0)
        return c;
    auto* x = dynamic_cast<const HNR::HNREnvConfig*>(&a);
    auto* y = dynamic_cast<const HNR::HNREnvConfig*>(&b);
    if (!x || !y)
        return x ? 1 : (y ? -1 : 0);
    HNKOptionalProperty<HNR::HNRVMDeviceList> dx, dy;
    int sx = x->getDevices(dx), sy = y->getDevices(dy);
    if (sx != sy)
        return sx < sy ? -1 : 1;
    return ::compare(dx, dy);
}
template <class T>
int recordCompare(const T&, const T&)
{
    return 0;
}

template <class Base>
std::string writtenText(const boost::shared_ptr<Base>& object)
{
    HNKMessageIterator out("record");
    if (out.putObject(object, HNKWriterDerived<Base>()) != 0)
        return std::string();
    return out.toXML();
}

template <class Base>
bool tryRegistry(const char* title, const HNKMessageIterator& it, const std::string& key, AnyRecord& record,
                 int& status)
{
    if (HNKDerivedParserFactory<Base, Base>::factories().count(key) == 0)
        return false;
    boost::shared_ptr<Base> object;
    status = HNKReaderDerived<Base>(false)(it, object);
    if (status != 0)
        return true;
    record.registry = title;
    record.type = &typeid(*object);
    record.object = object;
    record.write = [object](HNKMessageIterator& out) { return out.putObject(object, HNKWriterDerived<Base>()); };
    record.compare = [object](const AnyRecord& other) {
        boost::shared_ptr<Base> o = boost::static_pointer_cast<Base>(other.object);
        int c = recordCompare(*object, *o);
        if (c != 0)
            return c;
        return ::compare(writtenText(object), writtenText(o));
    };
    return true;
}

} // namespace detail

// Reads the element at the cursor as a record; -1 when no registry knows its
// type key, else the status of the read.
inline int readAnyRecord(const HNKMessageIterator& it, AnyRecord& record)
{
    using namespace HNR;
    const std::string key = it.getTypeName();
    int status = -1;
    if (detail::tryRegistry<HNKEnvConfig>("HNKEnvConfig", it, key, record, status) ||
        detail::tryRegistry<HNRVMDevice>("HNRVMDevice", it, key, record, status) ||
        detail::tryRegistry<HNKEnv>("HNKEnv", it, key, record, status) ||
        detail::tryRegistry<HNKCommonDevice>("HNKCommonDevice", it, key, record, status) ||
        detail::tryRegistry<HNKNetDevice>("HNKNetDevice", it, key, record, status) ||
        detail::tryRegistry<HNRNetworkServiceInfo>("HNRNetworkServiceInfo", it, key, record, status) ||
        detail::tryRegistry<HNKVtInfo>("HNKVtInfo", it, key, record, status) ||
        detail::tryRegistry<HNKVtSettings>("HNKVtSettings", it, key, record, status) ||
        detail::tryRegistry<HNRGuestOSMemoryRequirements>("HNRGuestOSMemoryRequirements", it, key, record,
                                                          status) ||
        detail::tryRegistry<HNKMigratorCloneOptions>("HNKMigratorCloneOptions", it, key, record, status) ||
        detail::tryRegistry<HNKV2VMigrateOptions>("HNKV2VMigrateOptions", it, key, record, status) ||
        detail::tryRegistry<HNKBackupOptions>("HNKBackupOptions", it, key, record, status))
        return status;
    return -1;
}

// The golden output of a sample: read through its registry, written back
// through its factory under a root of the same name, as toXML() gives it.
// False when the text does not parse or read, or the write fails.
inline bool goldenOutput(const std::string& text, std::string& output)
{
    HNKMessageIterator in;
    if (in.fromXML(text) != 0)
        return false;
    AnyRecord record;
    if (readAnyRecord(in, record) != 0)
        return false;
    HNKMessageIterator out(in.currentName());
    if (record.write(out) != 0)
        return false;
    output = out.toXML();
    return true;
}

} // namespace hnr_test
