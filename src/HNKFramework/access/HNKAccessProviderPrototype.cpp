#include "HNKAccessProviderPrototype.h"

#include <utility>

HNKAccessProviderPrototype::HNKAccessProviderPrototype(boost::intrusive_ptr<HNKEnvAccessor> accessor)
    : accessor_(std::move(accessor)) {}

boost::intrusive_ptr<HNKEnvAccessor> HNKAccessProviderPrototype::getEnvAccessor() const { return accessor_; }

void HNKAccessProviderPrototype::setEnvAccessor(boost::intrusive_ptr<HNKEnvAccessor> accessor) {
    accessor_ = std::move(accessor);
}
