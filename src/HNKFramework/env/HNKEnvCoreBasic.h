#pragma once
// The framework's core of one managed environment: its identifier and its
// env type key. Environment objects and configurations are bound to one.
#include "HNKEID.h"

#include <string>

class HNKEnvCoreBasic {
public:
    HNKEnvCoreBasic() = default;
    HNKEnvCoreBasic(const HNKEID& eid, const std::string& envType) : eid_(eid), envType_(envType) {}
    virtual ~HNKEnvCoreBasic();

    const HNKEID& getEID() const { return eid_; }
    const std::string& getEnvType() const { return envType_; }

private:
    HNKEID eid_;
    std::string envType_;
};
