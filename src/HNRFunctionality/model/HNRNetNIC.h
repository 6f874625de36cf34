#pragma once
// The platform's network records: a virtual adapter with its DHCP range, a
// real adapter, both read and written polymorphically wherever the framework
// expects an HNKNetDevice, and the one-value network service record, which
// owns its registry (held by this library).
//
// The adapters' readers fail only when the framework part fails: their own
// fields are optional on input. Their writers never skip a field and stop at
// the first that fails. The service reader, unlike them, fails without its
// value.
#include "HNKDerivedParserFactory.h"
#include "HNKGUID.h"
#include "HNKNetNIC.h"
#include "HNKWriterBase.h"
#include "frame/HNRConstants.h"

#include <string>

class HNKMessageIterator;

namespace HNR {

class HNRVirtualNetNIC : public HNKNetNIC {
public:
    ~HNRVirtualNetNIC() override;

    int getIndex() const { return index_; }
    void setIndex(int index) { index_ = index; }
    const std::string& getFriendlyName() const { return friendlyName_; }
    void setFriendlyName(const std::string& name) { friendlyName_ = name; }
    const HNKGUID& getUUID() const { return uuid_; }
    void setUUID(const HNKGUID& uuid) { uuid_ = uuid; }
    const std::string& getDHCPStartIP() const { return dhcpStartIP_; }
    void setDHCPStartIP(const std::string& ip) { dhcpStartIP_ = ip; }
    const std::string& getDHCPEndIP() const { return dhcpEndIP_; }
    void setDHCPEndIP(const std::string& ip) { dhcpEndIP_ = ip; }
    const std::string& getDHCPMask() const { return dhcpMask_; }
    void setDHCPMask(const std::string& mask) { dhcpMask_ = mask; }

    class Reader {
    public:
        int operator()(const HNKMessageIterator& it, HNRVirtualNetNIC& nic) const;
    };
    class Writer : public HNKWriterBase {
    public:
        static const char* getStrNSID() { return kTypesNamespace; }
        static const char* getStrTypeID() { return "virtual_net_nic"; }
        int operator()(HNKMessageIterator& it, const HNRVirtualNetNIC& nic) const;
    };

private:
    int index_ = 0;
    std::string friendlyName_;
    HNKGUID uuid_;
    std::string dhcpStartIP_;
    std::string dhcpEndIP_;
    std::string dhcpMask_;
};

class HNRRealNetNIC : public HNKNetNIC {
public:
    ~HNRRealNetNIC() override;

    const std::string& getFriendlyName() const { return friendlyName_; }
    void setFriendlyName(const std::string& name) { friendlyName_ = name; }
    int getIndex() const { return index_; }
    void setIndex(int index) { index_ = index; }

    class Reader {
    public:
        int operator()(const HNKMessageIterator& it, HNRRealNetNIC& nic) const;
    };
    class Writer : public HNKWriterBase {
    public:
        static const char* getStrNSID() { return kTypesNamespace; }
        static const char* getStrTypeID() { return "real_net_nic"; }
        int operator()(HNKMessageIterator& it, const HNRRealNetNIC& nic) const;
    };

private:
    std::string friendlyName_;
    int index_ = 0;
};

// A plain value: the state of the platform's network service.
class HNRNetworkServiceInfo {
public:
    int getState() const { return state_; }
    void setState(int state) { state_ = state; }

    // The value is required: a missing one is -1.
    class Reader {
    public:
        int operator()(const HNKMessageIterator& it, HNRNetworkServiceInfo& info) const;
    };
    class Writer : public HNKWriterBase {
    public:
        static const char* getStrNSID() { return kTypesNamespace; }
        static const char* getStrTypeID() { return "network_service_info"; }
        int operator()(HNKMessageIterator& it, const HNRNetworkServiceInfo& info) const;
    };

private:
    int state_ = 0;
};

typedef HNKDerivedParserFactoryT<HNRVirtualNetNIC, HNKNetDevice, HNKNetDevice, HNRVirtualNetNIC::Reader,
                                 HNRVirtualNetNIC::Writer>
    HNRVirtualNetNICFactory;
typedef HNKDerivedParserFactoryT<HNRRealNetNIC, HNKNetDevice, HNKNetDevice, HNRRealNetNIC::Reader,
                                 HNRRealNetNIC::Writer>
    HNRRealNetNICFactory;
// The default factory of the service record's own registry.
typedef HNKDerivedParserFactoryT<HNRNetworkServiceInfo, HNRNetworkServiceInfo, HNRNetworkServiceInfo,
                                 HNRNetworkServiceInfo::Reader, HNRNetworkServiceInfo::Writer>
    HNRNetworkServiceInfoFactory;

extern HNRVirtualNetNICFactory factoryHNRVirtualNetNIC;
extern HNRRealNetNICFactory factoryHNRRealNetNIC;
extern HNRNetworkServiceInfoFactory factoryHNRNetworkServiceInfo;

} // namespace HNR

HNK_DECLARE_FACTORY_REGISTRY(HNR::HNRNetworkServiceInfo);
