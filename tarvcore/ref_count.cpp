#include "tarvcore/ref_count.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/ref_count.cpp#1 $");

namespace tarvcore {

bool AtomicStrongWeakRefCount::increment_strong() {
    int count = __atomic_load_n(&strong_, __ATOMIC_SEQ_CST);
    while (count != 0) {
        if (__atomic_compare_exchange_n(&strong_, &count, count + 1, false, __ATOMIC_SEQ_CST,
                                        __ATOMIC_SEQ_CST)) {
            return true;
        }
    }
    return false;
}

bool AtomicStrongWeakRefCount::decrement_strong() {
    return __atomic_fetch_sub(&strong_, 1, __ATOMIC_SEQ_CST) == 1;
}

bool AtomicStrongWeakRefCount::has_strong_refs() const {
    return __atomic_load_n(&strong_, __ATOMIC_SEQ_CST) != 0;
}

void AtomicStrongWeakRefCount::increment_weak() {
    __atomic_fetch_add(&weak_, 1, __ATOMIC_SEQ_CST);
}

bool AtomicStrongWeakRefCount::decrement_weak() {
    return __atomic_fetch_sub(&weak_, 1, __ATOMIC_SEQ_CST) == 1;
}

}  // namespace tarvcore
