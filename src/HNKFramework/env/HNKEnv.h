#pragma once
// The framework's environment object: an environment's identifier and its
// configuration (any HNKEnvConfig, written and read polymorphically).
#include "HNKDerivedParserFactory.h"
#include "HNKEID.h"
#include "HNKWriterBase.h"

#include <boost/shared_ptr.hpp>

class HNKEnvConfig;
class HNKEnvCoreBasic;
class HNKMessageIterator;

class HNKEnv {
public:
    // No identifier, no configuration, no core.
    HNKEnv();
    HNKEnv(const HNKEID& eid, boost::shared_ptr<HNKEnvConfig> config);
    // Takes its identifier from the core (none for an empty core).
    explicit HNKEnv(boost::shared_ptr<HNKEnvCoreBasic> core);
    virtual ~HNKEnv();

    const HNKEID& getEID() const { return eid_; }
    void setEID(const HNKEID& eid) { eid_ = eid; }
    // The configuration; may be empty.
    boost::shared_ptr<HNKEnvConfig> getConfig() const { return config_; }
    void setConfig(boost::shared_ptr<HNKEnvConfig> config) { config_ = config; }
    const boost::shared_ptr<HNKEnvCoreBasic>& getCore() const { return core_; }

    // EID first, then the configurations (none first) by the framework's
    // configuration compare.
    int compare(const HNKEnv& other) const;

    // "eid" (GUID text) required; "config" optional, read through the
    // configuration registry (an unknown type reads as the base record).
    struct Reader {
        int operator()(const HNKMessageIterator& it, HNKEnv& env) const;
    };
    // "eid", then "config" stamped with its own class's type when present.
    struct Writer : HNKWriterBase {
        static unsigned getNSID();
        static unsigned getTypeID();
        int operator()(HNKMessageIterator& it, const HNKEnv& env) const;
    };

private:
    HNKEID eid_;
    boost::shared_ptr<HNKEnvConfig> config_;
    boost::shared_ptr<HNKEnvCoreBasic> core_;
};

HNK_DECLARE_FACTORY_REGISTRY(HNKEnv);

// The framework's own factory of the base record, the registry's default.
typedef HNKDerivedParserFactoryT<HNKEnv, HNKEnv, HNKEnv, HNKEnv::Reader, HNKEnv::Writer> HNKEnvFactoryT;
extern HNKEnvFactoryT factoryHNKEnv;
