#pragma once
// Interface of the platform's network management module. Its local and agent-side
// implementations live outside this library, which only hands them out
// (HNRLibFunctionality); the operations are theirs to define.

namespace HNR {

class HNRNetworkM {
public:
    virtual ~HNRNetworkM() = 0;

protected:
    HNRNetworkM() = default;
    HNRNetworkM(const HNRNetworkM&) = default;
    HNRNetworkM& operator=(const HNRNetworkM&) = default;
};

inline HNRNetworkM::~HNRNetworkM() = default;

} // namespace HNR
