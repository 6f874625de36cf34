// Fuzz target for reading a VM configuration from any text: whatever parses
// is wrapped as a configuration, every typed getter and the device and
// offline-service lists are read, and the configuration written through its
// factory serializes to text that parses again, the same before and after its
// linked lists are copied in. No crash, no leak.
#include "model/HNREnvConfig.h"

#include "HNKMessageIterator.h"
#include "HNKSerialization.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

using namespace HNR;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    HNKMessageIterator it;
    if (it.fromXML(std::string(reinterpret_cast<const char*>(data), size)) != 0)
        return 0;
    // Through the registry when the type says so, else wrapped as it is.
    boost::shared_ptr<HNKEnvConfig> read;
    boost::shared_ptr<HNREnvConfig> config;
    if (HNKReaderDerived<HNKEnvConfig>(false)(it, read) == 0)
        config = boost::dynamic_pointer_cast<HNREnvConfig>(read);
    if (!config)
        config.reset(new HNREnvConfig(&it));

    int i = 0;
    bool b = false;
    std::string s;
    const HNREnvConfig& c = *config;
    (void)c.getCPUCount(i), (void)c.getMemorySize(i), (void)c.getVideoMemorySize(i), (void)c.getCPUMode(i);
    (void)c.getCPUUnits(i), (void)c.getCPULimit(i), (void)c.getAutoStart(i), (void)c.getVNCPort(i);
    (void)c.getOfflineManagementEnabled(b), (void)c.getTemplate(b), (void)c.getHostSharingEnabled(b);
    (void)c.getStartUserLogin(s), (void)c.getStartUserPassword(s), (void)c.getHomePath(s), (void)c.getVNCPassword(s);
    HNKOptionalProperty<std::string> name;
    (void)c.getName(name);
    HNKOptionalProperty<std::set<std::string>> services;
    (void)c.getOfflineServices(services);
    HNKOptionalProperty<HNRVMDeviceList> devices;
    if (c.getDevices(devices) == 0 && devices.isSpecified()) {
        for (const boost::shared_ptr<HNRVMDevice>& d : devices.get())
            (void)d->compare(*d);
        boost::shared_ptr<HNREnvConfig> copy(new HNREnvConfig(c));
        (void)copy->setDevices(devices);
        (void)copy->compare(c);
    }
    HNKMessageIterator out("configuration");
    if (out.putObject(boost::shared_ptr<HNKEnvConfig>(config), HNKWriterDerived<HNKEnvConfig>()) == 0) {
        // Written while the lists are still linked to the record's tree, and
        // again once looking inside has copied them in: the same text.
        const std::string linked = out.toXML();
        (void)out.hasChild("device_list");
        if (out.toXML() != linked)
            std::abort();
        HNKMessageIterator again;
        if (again.fromXML(linked) != 0)
            std::abort();
    }
    return 0;
}
