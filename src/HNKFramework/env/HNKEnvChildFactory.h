#pragma once
// The framework's factory of environment objects of one env type, and its
// template for a pair of environment and configuration classes.
#include <boost/shared_ptr.hpp>

class HNKEnv;
class HNKEnvCoreBasic;
class HNKVEnvConfig;

class HNKEnvChildFactory {
public:
    // A new environment object of the type, default-constructed.
    virtual boost::shared_ptr<HNKEnv> createEnv() const = 0;
    // A new environment object bound to `core`.
    virtual boost::shared_ptr<HNKEnv> createEnv(boost::shared_ptr<HNKEnvCoreBasic> core) const = 0;
    // A new configuration bound to `core`; it can hand out shared pointers
    // to itself (shared_from_this).
    virtual boost::shared_ptr<HNKVEnvConfig> createVEnvConfig(boost::shared_ptr<HNKEnvCoreBasic> core) const = 0;
    virtual ~HNKEnvChildFactory();
};

// Stateless: Env and Config are constructed from nothing or from the core.
template <class Env, class Config>
class HNKEnvChildFactoryT : public HNKEnvChildFactory {
public:
    boost::shared_ptr<HNKEnv> createEnv() const override { return boost::shared_ptr<HNKEnv>(new Env()); }
    boost::shared_ptr<HNKEnv> createEnv(boost::shared_ptr<HNKEnvCoreBasic> core) const override
    {
        return boost::shared_ptr<HNKEnv>(new Env(core));
    }
    boost::shared_ptr<HNKVEnvConfig> createVEnvConfig(boost::shared_ptr<HNKEnvCoreBasic> core) const override
    {
        // Created as a Config so that shared_from_this is enabled on it.
        return boost::shared_ptr<Config>(new Config(core));
    }
};
