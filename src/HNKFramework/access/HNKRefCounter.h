#pragma once
// Intrusive reference count for framework objects held by boost::intrusive_ptr.
// Classes derive from it virtually, so one count serves every base.
#include <atomic>
#include <cstdint>

class HNKRefCounter {
public:
    HNKRefCounter() = default;
    // A copy is a new object: it starts unreferenced, and assignment keeps
    // the target's own count.
    HNKRefCounter(const HNKRefCounter&) : count_(0) {}
    HNKRefCounter& operator=(const HNKRefCounter&) { return *this; }
    virtual ~HNKRefCounter() = default;

    void addRef();
    // Deletes the object through its virtual destructor when the last
    // reference goes.
    void release();

    // The current count; a snapshot, for tests and diagnostics.
    int32_t refCount() const { return count_.load(std::memory_order_acquire); }

private:
    std::atomic<int32_t> count_{0};
};

void intrusive_ptr_add_ref(HNKRefCounter* p);
void intrusive_ptr_release(HNKRefCounter* p);
