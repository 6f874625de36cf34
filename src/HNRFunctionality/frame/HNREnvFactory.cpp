#include "frame/HNREnvFactory.h"

#include "frame/HNRConstants.h"
#include "model/HNREnvConfig.h"

#include "HNKEnvChildFactory.h"
#include "HNKEnvConfig.h"
#include "HNKEnvFactory.h"
#include "HNKGUID.h"
#include "HNKSerialization.h"

namespace HNR {

namespace {
// The unit's identity, set while the library loads.
const HNKGUID kEnvFactoryGUID(0, 2);
} // namespace

const limited_length_string<16> HNREnv::type(kEnvTypeKey);

HNREnv::HNREnv() {}

HNREnv::HNREnv(const HNKEID& eid, boost::shared_ptr<HNREnvConfig> config)
    : HNKEnv(eid, boost::shared_ptr<HNKEnvConfig>(config))
{
}

HNREnv::HNREnv(boost::shared_ptr<HNKEnvCoreBasic> core) : HNKEnv(core) {}

HNREnv::~HNREnv() {}

std::string HNREnv::getTitle() const
{
    boost::shared_ptr<HNKEnvConfig> config = getConfig();
    HNKOptionalProperty<std::string> name;
    if (config)
        config->getName(name);
    return name.get();
}

const char* HNREnv::Writer::getStrNSID() { return kTypesNamespace; }

int HNREnv::Writer::operator()(HNKMessageIterator& it, const HNKEnv& env) const
{
    return it.putObject(env, HNKEnv::Writer());
}

HNREnvFactoryInternal::HNREnvFactoryInternal()
{
    boost::shared_ptr<HNKEnvChildFactory> factory(new HNKEnvChildFactoryT<HNREnv, HNREnvConfig>());
    limited_length_string<16> key(kEnvType);
    HNKEnvFactory::getInstance()->registerEnv(key, factory);
}

HNREnvFactoryInternal::~HNREnvFactoryInternal()
{
    limited_length_string<16> key(kEnvType);
    HNKEnvFactory::getInstance()->unregisterEnv(key);
}

// Constructed after the unit's env-type constant, destroyed before it.
HNREnvFactory factoryHNREnv(false);
static HNREnvFactoryInternal envFactoryInternal;

} // namespace HNR
