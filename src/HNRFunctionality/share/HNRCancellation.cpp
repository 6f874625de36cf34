// Cancellation of share and filesystem operations: a flag the process runner
// watches on the thread of the scope.
#include "share/HNRCancellation.h"

#include "GenExec.h"

namespace HNR {

void HNRCancellation::cancel() noexcept
{
    m_cancelled.store(true, std::memory_order_release);
}

bool HNRCancellation::isCancelled() const noexcept
{
    return m_cancelled.load(std::memory_order_acquire);
}

void HNRCancellation::reset() noexcept
{
    m_cancelled.store(false, std::memory_order_release);
}

HNRCancellationScope::HNRCancellationScope(HNRCancellation& c)
    : m_previous(GenExec::setThreadStopFlag(&c.m_cancelled))
{
}

HNRCancellationScope::~HNRCancellationScope()
{
    GenExec::setThreadStopFlag(m_previous);
}

} // namespace HNR
