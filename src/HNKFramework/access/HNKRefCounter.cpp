#include "HNKRefCounter.h"

void HNKRefCounter::addRef() {
    // A new reference is always made from an existing one, so nothing needs
    // to be ordered here.
    count_.fetch_add(1, std::memory_order_relaxed);
}

void HNKRefCounter::release() {
    // acq_rel: every write made through other references happens before the
    // destructor that the last release runs.
    if (count_.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        delete this;
    }
}

void intrusive_ptr_add_ref(HNKRefCounter* p) { p->addRef(); }

void intrusive_ptr_release(HNKRefCounter* p) { p->release(); }
