// Cancellation of share and filesystem operations: a flag the process runner
// watches on the thread of the scope.
#include "share/HNRCancellation.h"

#include "GenExec.h"

namespace HNR {

void HNRCancellation::cancel() noexcept
{
    cancelled_.store(true, std::memory_order_release);
}

bool HNRCancellation::isCancelled() const noexcept
{
    return cancelled_.load(std::memory_order_acquire);
}

void HNRCancellation::reset() noexcept
{
    cancelled_.store(false, std::memory_order_release);
}

HNRCancellationScope::HNRCancellationScope(HNRCancellation& c)
    : previous_(GenExec::setThreadStopFlag(&c.cancelled_))
{
}

HNRCancellationScope::~HNRCancellationScope()
{
    GenExec::setThreadStopFlag(previous_);
}

} // namespace HNR
