#pragma once
// Tells which environments this node serves itself; the others are reached
// through the agent. Handed out by the access provider.
#include <set>

#include <boost/intrusive_ptr.hpp>

#include "HNKEID.h"
#include "HNKRefCounter.h"

class HNKEnvAccessor : public virtual HNKRefCounter {
public:
    HNKEnvAccessor() = default;
    ~HNKEnvAccessor() override = default;

    // True iff the environment is served on this node.
    virtual bool isLocal(const HNKEID& eid) const;

    // Marks an environment as served on this node. Not synchronised: the
    // framework fills the set before the accessor is shared.
    void addLocal(const HNKEID& eid);
    void removeLocal(const HNKEID& eid);

private:
    std::set<HNKEID> local_;
};
