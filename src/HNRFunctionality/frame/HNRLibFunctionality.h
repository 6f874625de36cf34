#pragma once
// The module's entry point for the agent: hands out the platform's six
// management modules, each local or agent-side as the access provider decides
// for the requested environment. Getters return an empty pointer when no
// implementation is registered under the name.
#include <string>

#include <boost/intrusive_ptr.hpp>
#include <boost/shared_ptr.hpp>

#include "HNKAccessProviderPrototype.h"
#include "HNKEID.h"
#include "HNKFunctionalMultiplexer.h"
#include "HNKGUID.h"
#include "frame/HNRComputerM.h"
#include "frame/HNRDevM.h"
#include "frame/HNREnvM.h"
#include "frame/HNRNetworkM.h"
#include "frame/HNRProcessMonitor.h"
#include "frame/HNRSampleM.h"

namespace HNR {

class __attribute__((visibility("default"))) HNRLibFunctionality {
public:
    using ProviderPtr = boost::intrusive_ptr<HNKAccessProviderPrototype>;
    using EnvMultiplexer = HNKFunctionalMultiplexer<boost::shared_ptr<HNREnvM>>;
    using ComputerMultiplexer = HNKFunctionalMultiplexer<boost::shared_ptr<HNRComputerM>>;
    using ProcessMonitorMultiplexer = HNKFunctionalMultiplexer<boost::shared_ptr<HNRProcessMonitor>>;
    using NetworkMultiplexer = HNKFunctionalMultiplexer<boost::shared_ptr<HNRNetworkM>>;
    using DevMultiplexer = HNKFunctionalMultiplexer<boost::shared_ptr<HNRDevM>>;
    using SampleMultiplexer = HNKFunctionalMultiplexer<boost::shared_ptr<HNRSampleM>>;

    HNRLibFunctionality();
    ~HNRLibFunctionality();
    HNRLibFunctionality(const HNRLibFunctionality&) = delete;
    HNRLibFunctionality& operator=(const HNRLibFunctionality&) = delete;

    // The module's identity, fixed at load; never the null GUID.
    static const HNKGUID& moduleGUID();

    // Local or agent-side, as the provider decides for eid.
    boost::shared_ptr<HNREnvM> getHNREnvM(const HNKEID& eid, ProviderPtr provider, const std::string& name) const;
    boost::shared_ptr<HNRComputerM> getHNRComputerM(const HNKEID& eid, ProviderPtr provider,
                                                    const std::string& name) const;
    boost::shared_ptr<HNRProcessMonitor> getHNRProcessMonitor(const HNKEID& eid, ProviderPtr provider,
                                                              const std::string& name) const;
    boost::shared_ptr<HNRNetworkM> getHNRNetworkM(const HNKEID& eid, ProviderPtr provider,
                                                  const std::string& name) const;
    boost::shared_ptr<HNRDevM> getHNRDevM(const HNKEID& eid, ProviderPtr provider, const std::string& name) const;
    boost::shared_ptr<HNRSampleM> getHNRSampleM(const HNKEID& eid, ProviderPtr provider,
                                                const std::string& name) const;

    // Always the agent-side implementation.
    boost::shared_ptr<HNREnvM> getHNREnvMAgent(const HNKEID& eid, ProviderPtr provider,
                                               const std::string& name) const;
    boost::shared_ptr<HNRComputerM> getHNRComputerMAgent(const HNKEID& eid, ProviderPtr provider,
                                                         const std::string& name) const;
    boost::shared_ptr<HNRProcessMonitor> getHNRProcessMonitorAgent(const HNKEID& eid, ProviderPtr provider,
                                                                   const std::string& name) const;
    boost::shared_ptr<HNRNetworkM> getHNRNetworkMAgent(const HNKEID& eid, ProviderPtr provider,
                                                       const std::string& name) const;
    boost::shared_ptr<HNRDevM> getHNRDevMAgent(const HNKEID& eid, ProviderPtr provider,
                                               const std::string& name) const;
    boost::shared_ptr<HNRSampleM> getHNRSampleMAgent(const HNKEID& eid, ProviderPtr provider,
                                                     const std::string& name) const;

    // Always the local implementation.
    boost::shared_ptr<HNREnvM> getHNREnvMLocal(ProviderPtr provider, const std::string& name) const;
    boost::shared_ptr<HNRComputerM> getHNRComputerMLocal(ProviderPtr provider, const std::string& name) const;
    boost::shared_ptr<HNRProcessMonitor> getHNRProcessMonitorLocal(ProviderPtr provider,
                                                                   const std::string& name) const;
    boost::shared_ptr<HNRNetworkM> getHNRNetworkMLocal(ProviderPtr provider, const std::string& name) const;
    boost::shared_ptr<HNRDevM> getHNRDevMLocal(ProviderPtr provider, const std::string& name) const;
    boost::shared_ptr<HNRSampleM> getHNRSampleMLocal(ProviderPtr provider, const std::string& name) const;

    // For the framework, which registers the implementations before the
    // first getter runs; this library never changes them.
    EnvMultiplexer& envMultiplexer() { return env_; }
    ComputerMultiplexer& computerMultiplexer() { return computer_; }
    ProcessMonitorMultiplexer& processMonitorMultiplexer() { return processMonitor_; }
    NetworkMultiplexer& networkMultiplexer() { return network_; }
    DevMultiplexer& devMultiplexer() { return dev_; }
    SampleMultiplexer& sampleMultiplexer() { return sample_; }

private:
    EnvMultiplexer env_;
    ComputerMultiplexer computer_;
    ProcessMonitorMultiplexer processMonitor_;
    NetworkMultiplexer network_;
    DevMultiplexer dev_;
    SampleMultiplexer sample_;
};

} // namespace HNR
