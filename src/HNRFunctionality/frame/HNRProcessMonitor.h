#pragma once
// Interface of the platform's process monitor module. Its local and agent-side
// implementations live outside this library, which only hands them out
// (HNRLibFunctionality); the operations are theirs to define.

namespace HNR {

class HNRProcessMonitor {
public:
    virtual ~HNRProcessMonitor() = 0;

protected:
    HNRProcessMonitor() = default;
    HNRProcessMonitor(const HNRProcessMonitor&) = default;
    HNRProcessMonitor& operator=(const HNRProcessMonitor&) = default;
};

inline HNRProcessMonitor::~HNRProcessMonitor() = default;

} // namespace HNR
