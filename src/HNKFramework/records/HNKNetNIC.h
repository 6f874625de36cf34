#pragma once
// The framework's network adapter: a network device with a MAC address and
// an enabled flag. Adapters are registered under HNKNetDevice.
#include "HNKNetDevice.h"
#include "HNKWriterBase.h"

#include <string>

class HNKMessageIterator;

class HNKNetNIC : public HNKNetDevice {
public:
    HNKNetNIC() = default;
    HNKNetNIC(const HNKNetNIC&) = default;
    HNKNetNIC& operator=(const HNKNetNIC&) = default;
    ~HNKNetNIC() override;

    const std::string& getMacAddress() const { return macAddress_; }
    void setMacAddress(const std::string& mac) { macAddress_ = mac; }
    bool isEnabled() const { return enabled_; }
    void setEnabled(bool enabled) { enabled_ = enabled; }

    // The device part, then the MAC address and the flag; all required.
    class Reader {
    public:
        int operator()(const HNKMessageIterator& it, HNKNetNIC& nic) const;
    };
    // Stamps the framework's own adapter type (292/167).
    class Writer : public HNKWriterBase {
    public:
        static unsigned getNSID() { return HNK_NS_TYPES; }
        static unsigned getTypeID() { return HNK_TYPE_NET_NIC; }
        int operator()(HNKMessageIterator& it, const HNKNetNIC& nic) const;
    };

private:
    std::string macAddress_;
    bool enabled_ = false;
};
