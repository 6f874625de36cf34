#pragma once
// Interface of the platform's sample management module. Its local and agent-side
// implementations live outside this library, which only hands them out
// (HNRLibFunctionality); the operations are theirs to define.

namespace HNR {

class HNRSampleM {
public:
    virtual ~HNRSampleM() = 0;

protected:
    HNRSampleM() = default;
    HNRSampleM(const HNRSampleM&) = default;
    HNRSampleM& operator=(const HNRSampleM&) = default;
};

inline HNRSampleM::~HNRSampleM() = default;

} // namespace HNR
