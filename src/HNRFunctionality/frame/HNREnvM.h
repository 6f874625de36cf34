#pragma once
// Interface of the platform's environment management module. Its local and agent-side
// implementations live outside this library, which only hands them out
// (HNRLibFunctionality); the operations are theirs to define.

namespace HNR {

class HNREnvM {
public:
    virtual ~HNREnvM() = 0;

protected:
    HNREnvM() = default;
    HNREnvM(const HNREnvM&) = default;
    HNREnvM& operator=(const HNREnvM&) = default;
};

inline HNREnvM::~HNREnvM() = default;

} // namespace HNR
