#include "HNKVEnvConfig.h"

#include "HNKDefaultMap.h"
#include "HNKEnvCoreBasic.h"

HNKVEnvConfig::HNKVEnvConfig() {}
HNKVEnvConfig::HNKVEnvConfig(const HNKMessageIterator* msg) : HNKEnvConfig(msg) {}
HNKVEnvConfig::HNKVEnvConfig(const HNKEnvConfig& config) : HNKEnvConfig(config) {}
HNKVEnvConfig::HNKVEnvConfig(const HNKVEnvConfig& other) : HNKEnvConfig(other) {}
HNKVEnvConfig::HNKVEnvConfig(boost::shared_ptr<HNKEnvCoreBasic> core) : HNKEnvConfig(core) {}
HNKVEnvConfig::~HNKVEnvConfig() {}

unsigned HNKVEnvConfig::Writer::getNSID() { return HNK_NS_TYPES; }
unsigned HNKVEnvConfig::Writer::getTypeID() { return HNK_TYPE_VENV_CONFIG; }

HNKVEnvConfigFactory factoryHNKVEnvConfig(false);
