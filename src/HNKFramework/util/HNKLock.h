#pragma once
// Framework mutex and its scoped guard.
#include <mutex>

class HNKLock {
public:
    void lock() { m_.lock(); }
    void unlock() { m_.unlock(); }
    bool tryLock() { return m_.try_lock(); }

private:
    std::mutex m_;
};

template <class L>
class HNKGuardT {
public:
    explicit HNKGuardT(L& lock) : lock_(lock) { lock_.lock(); }
    ~HNKGuardT() { lock_.unlock(); }
    HNKGuardT(const HNKGuardT&) = delete;
    HNKGuardT& operator=(const HNKGuardT&) = delete;

private:
    L& lock_;
};
