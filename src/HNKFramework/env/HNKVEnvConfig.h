#pragma once
// The framework's configuration of a virtual environment (a virtual
// machine): the property bag of HNKEnvConfig under its own type.
#include "HNKEnvConfig.h"

class HNKVEnvConfig : public HNKEnvConfig {
public:
    HNKVEnvConfig();
    explicit HNKVEnvConfig(const HNKMessageIterator* msg);
    explicit HNKVEnvConfig(const HNKEnvConfig& config);
    HNKVEnvConfig(const HNKVEnvConfig& other);
    explicit HNKVEnvConfig(boost::shared_ptr<HNKEnvCoreBasic> core);
    HNKVEnvConfig& operator=(const HNKVEnvConfig& other) = default;
    ~HNKVEnvConfig() override;

    // The elements are the base's; only the type differs.
    struct Writer : HNKEnvConfig::Writer {
        static unsigned getNSID();
        static unsigned getTypeID();
    };
};

typedef HNKDerivedParserFactoryT<HNKVEnvConfig, HNKEnvConfig, HNKEnvConfig, HNKEnvConfig::Reader,
                                 HNKVEnvConfig::Writer>
    HNKVEnvConfigFactory;
extern HNKVEnvConfigFactory factoryHNKVEnvConfig;
