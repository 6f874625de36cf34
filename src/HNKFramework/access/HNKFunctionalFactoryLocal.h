#pragma once
// Creates the local implementation of a management module. Ptr is the
// pointer the module is handed out as, e.g. boost::shared_ptr<M>.
#include <boost/intrusive_ptr.hpp>

#include "HNKAccessProviderPrototype.h"

template <class Ptr>
class HNKFunctionalFactoryLocal {
public:
    virtual ~HNKFunctionalFactoryLocal() = default;

    // An empty pointer on failure.
    virtual Ptr create(boost::intrusive_ptr<HNKAccessProviderPrototype> provider) const = 0;
};
