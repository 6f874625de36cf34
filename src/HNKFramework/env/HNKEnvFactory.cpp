#include "HNKEnvFactory.h"

#include "HNKAssert.h"

HNKEnvFactory* HNKEnvFactory::getInstance()
{
    // Never destroyed: modules unregister from their own static destructors,
    // which may run after this library's at process exit.
    static HNKEnvFactory* instance = new HNKEnvFactory;
    return instance;
}

void HNKEnvFactory::registerEnv(const HNKEnvTypeKey& key, boost::shared_ptr<HNKEnvChildFactory> factory)
{
    HNK_ASSERT(factory.get() != nullptr);
    HNKGuardT<HNKLock> guard(lock_);
    factories_[key] = factory;
}

void HNKEnvFactory::unregisterEnv(const HNKEnvTypeKey& key)
{
    boost::shared_ptr<HNKEnvChildFactory> dropped; // destroyed outside the lock
    HNKGuardT<HNKLock> guard(lock_);
    auto found = factories_.find(key);
    if (found != factories_.end()) {
        dropped.swap(found->second);
        factories_.erase(found);
    }
}

boost::shared_ptr<HNKEnvChildFactory> HNKEnvFactory::getChildFactory(const HNKEnvTypeKey& key) const
{
    HNKGuardT<HNKLock> guard(lock_);
    auto found = factories_.find(key);
    return found == factories_.end() ? boost::shared_ptr<HNKEnvChildFactory>() : found->second;
}

std::vector<HNKEnvTypeKey> HNKEnvFactory::getKeys() const
{
    HNKGuardT<HNKLock> guard(lock_);
    std::vector<HNKEnvTypeKey> keys;
    for (const auto& entry : factories_)
        keys.push_back(entry.first);
    return keys;
}
