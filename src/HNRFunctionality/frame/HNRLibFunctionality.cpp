#include "frame/HNRLibFunctionality.h"

#include "frame/HNRConstants.h"

namespace HNR {

namespace {
// The module's identity, set while the library loads.
const HNKGUID kModuleGUID(0, 2);
} // namespace

HNRLibFunctionality::HNRLibFunctionality() = default;
HNRLibFunctionality::~HNRLibFunctionality() = default;

const HNKGUID& HNRLibFunctionality::moduleGUID() { return kModuleGUID; }

// Each getter holds its own provider reference for the call and hands the
// multiplexer a further copy; nothing else happens here.
#define HNR_MODULE_GETTERS(Module, member)                                                                \
    boost::shared_ptr<HNR##Module> HNRLibFunctionality::getHNR##Module(                                   \
        const HNKEID& eid, ProviderPtr provider, const std::string& name) const {                         \
        return member.get(eid, provider, name);                                                           \
    }                                                                                                     \
    boost::shared_ptr<HNR##Module> HNRLibFunctionality::getHNR##Module##Agent(                            \
        const HNKEID& eid, ProviderPtr provider, const std::string& name) const {                         \
        return member.getAgent(eid, provider, name);                                                      \
    }                                                                                                     \
    boost::shared_ptr<HNR##Module> HNRLibFunctionality::getHNR##Module##Local(ProviderPtr provider,       \
                                                                              const std::string& name)    \
        const {                                                                                           \
        return member.getLocal(provider, name);                                                           \
    }

HNR_MODULE_GETTERS(EnvM, env_)
HNR_MODULE_GETTERS(ComputerM, computer_)
HNR_MODULE_GETTERS(ProcessMonitor, processMonitor_)
HNR_MODULE_GETTERS(NetworkM, network_)
HNR_MODULE_GETTERS(DevM, dev_)
HNR_MODULE_GETTERS(SampleM, sample_)

#undef HNR_MODULE_GETTERS

} // namespace HNR
