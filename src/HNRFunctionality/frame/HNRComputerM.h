#pragma once
// Interface of the platform's computer management module. Its local and agent-side
// implementations live outside this library, which only hands them out
// (HNRLibFunctionality); the operations are theirs to define.

namespace HNR {

class HNRComputerM {
public:
    virtual ~HNRComputerM() = 0;

protected:
    HNRComputerM() = default;
    HNRComputerM(const HNRComputerM&) = default;
    HNRComputerM& operator=(const HNRComputerM&) = default;
};

inline HNRComputerM::~HNRComputerM() = default;

} // namespace HNR
