#pragma once
// Stopping a share or filesystem operation from another thread or from a
// signal handler. The operations keep their signatures: a caller that wants
// to be able to stop one opens a scope on the thread that runs it.
#include <atomic>

namespace HNR {

// Shared between the thread that runs operations and the one that stops them.
class HNRCancellation {
public:
    HNRCancellation() = default;
    HNRCancellation(const HNRCancellation&) = delete;
    HNRCancellation& operator=(const HNRCancellation&) = delete;

    // Async-signal-safe: one lock-free atomic store, so a signal handler may call it.
    void cancel() noexcept;
    bool isCancelled() const noexcept;
    // Makes the object usable for the next operation.
    void reset() noexcept;

private:
    friend class HNRCancellationScope;
    std::atomic<bool> cancelled_{false};
};

// While it lives, every share and filesystem operation on the calling thread
// watches c: once cancelled, the running tool's process group is killed and
// reaped and the operation returns false with the message "cancelled". An
// operation that already finished keeps its result. Scopes nest; c must
// outlive the scope.
class HNRCancellationScope {
public:
    explicit HNRCancellationScope(HNRCancellation& c);
    ~HNRCancellationScope();
    HNRCancellationScope(const HNRCancellationScope&) = delete;
    HNRCancellationScope& operator=(const HNRCancellationScope&) = delete;

private:
    const std::atomic<bool>* previous_;
};

} // namespace HNR
