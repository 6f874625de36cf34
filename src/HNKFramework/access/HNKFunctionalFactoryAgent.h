#pragma once
// Creates the agent-side implementation of a management module, which serves
// an environment of another node through the agent.
#include <string>

#include <boost/intrusive_ptr.hpp>

#include "HNKAccessProviderPrototype.h"
#include "HNKEID.h"

template <class Ptr>
class HNKFunctionalFactoryAgent {
public:
    virtual ~HNKFunctionalFactoryAgent() = default;

    // An empty pointer on failure.
    virtual Ptr create(const HNKEID& eid, boost::intrusive_ptr<HNKAccessProviderPrototype> provider) const = 0;
    // Extended form, called for the names the multiplexer marks; scratch
    // arrives empty and is discarded afterwards.
    virtual Ptr create(const HNKEID& eid, boost::intrusive_ptr<HNKAccessProviderPrototype> provider,
                       std::string& scratch) const = 0;
};
