#pragma once
// The access provider: tells whether and how an environment is reached from
// this node. Intrusively counted and passed by value through module access.
#include <boost/intrusive_ptr.hpp>

#include "HNKEnvAccessor.h"
#include "HNKRefCounter.h"

class HNKAccessProviderPrototype : public virtual HNKRefCounter {
public:
    HNKAccessProviderPrototype() = default;
    explicit HNKAccessProviderPrototype(boost::intrusive_ptr<HNKEnvAccessor> accessor);
    ~HNKAccessProviderPrototype() override = default;

    // A new reference to the provider's environment accessor; null when the
    // provider has none (every environment then counts as local).
    virtual boost::intrusive_ptr<HNKEnvAccessor> getEnvAccessor() const;
    void setEnvAccessor(boost::intrusive_ptr<HNKEnvAccessor> accessor);

private:
    boost::intrusive_ptr<HNKEnvAccessor> accessor_;
};
