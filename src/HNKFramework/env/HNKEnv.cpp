#include "HNKEnv.h"

#include "HNKCompare.h"
#include "HNKDefaultMap.h"
#include "HNKEnvConfig.h"
#include "HNKEnvCoreBasic.h"
#include "HNKSerialization.h"

HNK_INSTANTIATE_FACTORY_REGISTRY(HNKEnv);

namespace {
const std::string kConfigTag = "config";
} // namespace

HNKEnv::HNKEnv() {}

HNKEnv::HNKEnv(const HNKEID& eid, boost::shared_ptr<HNKEnvConfig> config) : eid_(eid), config_(config) {}

HNKEnv::HNKEnv(boost::shared_ptr<HNKEnvCoreBasic> core) : core_(core)
{
    if (core_)
        eid_ = core_->getEID();
}

HNKEnv::~HNKEnv() {}

int HNKEnv::compare(const HNKEnv& other) const
{
    int c = ::compare(eid_, other.eid_);
    if (c != 0)
        return c;
    if (!config_ || !other.config_)
        return config_ ? 1 : (other.config_ ? -1 : 0);
    return ::compare(static_cast<const HNKEnvConfig&>(*config_), static_cast<const HNKEnvConfig&>(*other.config_));
}

int HNKEnv::Reader::operator()(const HNKMessageIterator& it, HNKEnv& env) const
{
    std::string text;
    HNKEID eid;
    if (it.getValue("eid", text) != 0 || !eid.fromString(text))
        return -1;
    env.eid_ = eid;
    if (!it.hasChild(kConfigTag))
        return 0;
    boost::shared_ptr<HNKEnvConfig> config;
    if (it.getObject(config, HNKReaderDerived<HNKEnvConfig>(true), kConfigTag) != 0)
        return -1;
    env.config_ = config;
    return 0;
}

unsigned HNKEnv::Writer::getNSID() { return HNK_NS_TYPES; }
unsigned HNKEnv::Writer::getTypeID() { return HNK_TYPE_ENV; }

int HNKEnv::Writer::operator()(HNKMessageIterator& it, const HNKEnv& env) const
{
    if (it.putValue("eid", env.eid_.toString()) != 0)
        return -1;
    if (!env.config_)
        return 0;
    return it.putObject(env.config_, HNKWriterDerived<HNKEnvConfig>(), kConfigTag);
}

HNKEnvFactoryT factoryHNKEnv(true);
