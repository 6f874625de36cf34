#pragma once
// Interface of the platform's device management module. Its local and agent-side
// implementations live outside this library, which only hands them out
// (HNRLibFunctionality); the operations are theirs to define.

namespace HNR {

class HNRDevM {
public:
    virtual ~HNRDevM() = 0;

protected:
    HNRDevM() = default;
    HNRDevM(const HNRDevM&) = default;
    HNRDevM& operator=(const HNRDevM&) = default;
};

inline HNRDevM::~HNRDevM() = default;

} // namespace HNR
