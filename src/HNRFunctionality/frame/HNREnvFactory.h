#pragma once
// The platform's environment objects and their registration with the
// framework's environment factory under the env type "tessaline".
#include "HNKDerivedParserFactory.h"
#include "HNKEnv.h"
#include "HNKWriterBase.h"
#include "limited_length_string.h"

#include <boost/shared_ptr.hpp>

#include <string>

class HNKEnvCoreBasic;

namespace HNR {

class HNREnvConfig;

// A thin specialisation of HNKEnv: no fields of its own.
class HNREnv : public HNKEnv {
public:
    // The env type key, "tessaline".
    static const limited_length_string<16> type;

    HNREnv();
    HNREnv(const HNKEID& eid, boost::shared_ptr<HNREnvConfig> config);
    explicit HNREnv(boost::shared_ptr<HNKEnvCoreBasic> core);
    ~HNREnv() override;

    // The configuration's name, specified or not: "" without one (or
    // without a configuration).
    std::string getTitle() const;

    // The framework environment's element, stamped as the platform's "env".
    struct Writer : HNKWriterBase {
        static const char* getStrNSID();
        static const char* getStrTypeID() { return "env"; }
        static unsigned getNSID() { return 0; }
        static unsigned getTypeID() { return 0; }
        int operator()(HNKMessageIterator& it, const HNKEnv& env) const;
    };
};

// Registers the child factory for "tessaline" when constructed and
// unregisters it when destroyed; one static instance lives in the library.
class HNREnvFactoryInternal {
public:
    HNREnvFactoryInternal();
    ~HNREnvFactoryInternal();
    HNREnvFactoryInternal(const HNREnvFactoryInternal&) = delete;
    HNREnvFactoryInternal& operator=(const HNREnvFactoryInternal&) = delete;
};

typedef HNKDerivedParserFactoryT<HNREnv, HNKEnv, HNKEnv, HNKEnv::Reader, HNREnv::Writer> HNREnvFactory;
extern HNREnvFactory factoryHNREnv;

} // namespace HNR
