#pragma once
// Hands out a management module by implementation name: the local
// implementation when the environment is served on this node (or nobody says
// otherwise), the agent-side one when it is not. Ptr is the module pointer,
// e.g. boost::shared_ptr<M>.
//
// The maps are filled by the framework before the first lookup and are not
// locked: lookups may run on any thread, changes may not overlap them.
#include <map>
#include <string>
#include <utility>

#include <boost/intrusive_ptr.hpp>
#include <boost/shared_ptr.hpp>

#include "HNKAccessProviderPrototype.h"
#include "HNKEID.h"
#include "HNKFunctionalFactoryAgent.h"
#include "HNKFunctionalFactoryLocal.h"

template <class Ptr>
class HNKFunctionalMultiplexer {
public:
    using LocalFactory = HNKFunctionalFactoryLocal<Ptr>;
    using AgentFactory = HNKFunctionalFactoryAgent<Ptr>;
    using LocalMap = std::map<std::string, boost::shared_ptr<LocalFactory>>;
    using AgentMap = std::map<std::string, boost::shared_ptr<AgentFactory>>;
    using ExtendedMap = std::map<std::string, std::string>;
    using ProviderPtr = boost::intrusive_ptr<HNKAccessProviderPrototype>;

    // Registration: a name registered again replaces its factory.
    void addLocal(const std::string& name, boost::shared_ptr<LocalFactory> factory) {
        local_[name] = std::move(factory);
    }
    void removeLocal(const std::string& name) { local_.erase(name); }
    void addAgent(const std::string& name, boost::shared_ptr<AgentFactory> factory) {
        agent_[name] = std::move(factory);
    }
    void removeAgent(const std::string& name) { agent_.erase(name); }
    // Names marked here get the extended agent create; the value is the
    // framework's own and is not used in the lookup.
    void addExtended(const std::string& name, const std::string& value) { extended_[name] = value; }
    void removeExtended(const std::string& name) { extended_.erase(name); }

    const LocalMap& localFactories() const { return local_; }
    const AgentMap& agentFactories() const { return agent_; }
    const ExtendedMap& extendedNames() const { return extended_; }

    // The local implementation; empty when no local factory has the name.
    Ptr getLocal(ProviderPtr provider, const std::string& name) const {
        const auto it = local_.find(name);
        if (it == local_.end()) return Ptr();
        return it->second->create(provider);
    }

    // The agent-side implementation; empty when no agent factory has the
    // name, even if a local one has.
    Ptr getAgent(const HNKEID& eid, ProviderPtr provider, const std::string& name) const {
        const auto it = agent_.find(name);
        if (it == agent_.end()) return Ptr();
        if (extended_.count(name) != 0) {
            std::string scratch;
            return it->second->create(eid, provider, scratch);
        }
        return it->second->create(eid, provider);
    }

    // Local or agent-side, as the provider's accessor decides for eid.
    Ptr get(const HNKEID& eid, ProviderPtr provider, const std::string& name) const {
        if (servedLocally(eid, provider)) return getLocal(provider, name);
        return getAgent(eid, provider, name);
    }

private:
    // Each test fetches the accessor anew; the temporaries are released at
    // the end of their condition, before the chosen factory runs.
    static bool servedLocally(const HNKEID& eid, const ProviderPtr& provider) {
        if (!provider) return true;
        if (!provider->getEnvAccessor()) return true;
        if (provider->getEnvAccessor()->isLocal(eid)) return true;
        return false;
    }

    LocalMap local_;
    AgentMap agent_;
    ExtendedMap extended_;
};
