#pragma once
// The framework's process-wide environment factory: one child factory per
// env type key. Modules register theirs while they load and unregister
// when they unload.
#include "HNKEnvChildFactory.h"
#include "HNKLock.h"
#include "limited_length_string.h"

#include <boost/shared_ptr.hpp>

#include <map>
#include <vector>

typedef limited_length_string<16> HNKEnvTypeKey;

class HNKEnvFactory {
public:
    // The one instance; never null, lives until the process ends.
    static HNKEnvFactory* getInstance();

    // Stores `factory` under `key`, replacing silently any earlier one;
    // a null factory asserts.
    void registerEnv(const HNKEnvTypeKey& key, boost::shared_ptr<HNKEnvChildFactory> factory);
    // Erases the key; an absent key is no error.
    void unregisterEnv(const HNKEnvTypeKey& key);

    // The child factory of `key`; empty when none is registered.
    boost::shared_ptr<HNKEnvChildFactory> getChildFactory(const HNKEnvTypeKey& key) const;
    // Registered keys, in key order.
    std::vector<HNKEnvTypeKey> getKeys() const;

private:
    HNKEnvFactory() = default;
    HNKEnvFactory(const HNKEnvFactory&) = delete;
    HNKEnvFactory& operator=(const HNKEnvFactory&) = delete;

    mutable HNKLock lock_;
    std::map<HNKEnvTypeKey, boost::shared_ptr<HNKEnvChildFactory>> factories_;
};
