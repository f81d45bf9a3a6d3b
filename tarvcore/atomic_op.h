// Atomic operations on 32-bit and 64-bit integers.
#pragma once

#include <type_traits>

#include "tarvcore/config.h"

namespace tarvcore {

// Lock-free operations on an integer that several threads share.  Every operation is a sequentially
// consistent full barrier, save that the 32-bit `read` is the plain aligned load which x86 already
// orders.  T is `unsigned int`, `long`, `unsigned long` or `unsigned long long`; arithmetic wraps.
//
// The 64-bit operations are compare-exchange loops, since the processor has no other 8-byte locked
// instruction in 32-bit mode: they cost about twice the 32-bit ones, and `read` needs the target to
// be writable.
//
//     unsigned int users = 0;
//     AtomicOp<unsigned int>::increment(&users);                // 1
//     AtomicOp<unsigned int>::compare_exchange(&users, 7, 1);   // stores 7, answers 1
template <class T>
class AtomicOp {
    static_assert(sizeof(T) == 4 || sizeof(T) == 8);

public:
    // The new value.
    static T increment(T* target) { return sum(change(target, 1), 1); }
    static T decrement(T* target) {
        return sum(change(target, static_cast<T>(-1)), static_cast<T>(-1));
    }

    // Adds, and answers the new value plus the addend once more (old value + 2 * addend).  The
    // stored value is right; the answer is what callers of this interface have always been given.
    static T add(T* target, T addend) { return sum(sum(change(target, addend), addend), addend); }

    // The value before.
    static T exchange(T* target, T value) {
        if constexpr (sizeof(T) == 8) {
            return replace(target, [value](T) { return value; });
        } else {
            return __atomic_exchange_n(target, value, __ATOMIC_SEQ_CST);
        }
    }

    // As `exchange`, without the answer.
    static void write(T* target, T value) { exchange(target, value); }

    // What the target holds: all of it at one time, also 64 bits.
    static T read(T const* target) {
        if constexpr (sizeof(T) == 8) {
            return compare_exchange(const_cast<T*>(target), 0, 0);
        } else {
            return __atomic_load_n(target, __ATOMIC_SEQ_CST);
        }
    }

    // Stores `value` if the target holds `expected`; answers what the target held.  The value to
    // store comes first, as in the platform's InterlockedCompareExchange.
    static T compare_exchange(T* target, T value, T expected) {
        return __sync_val_compare_and_swap(target, expected, value);
    }

private:
    static constexpr T sum(T a, T b) {
        using Unsigned = std::make_unsigned_t<T>;
        return static_cast<T>(static_cast<Unsigned>(a) + static_cast<Unsigned>(b));
    }

    // Adds and answers the value before.
    static T change(T* target, T addend) {
        if constexpr (sizeof(T) == 8) {
            return replace(target, [addend](T old) { return sum(old, addend); });
        } else {
            return __atomic_fetch_add(target, addend, __ATOMIC_SEQ_CST);
        }
    }

    // Replaces the value by f(value); answers the value before.  The first reading may be torn: the
    // exchange then fails and reports the whole value.
    template <class F>
    static T replace(T* target, F f) {
        T seen = *const_cast<volatile T*>(target);
        for (;;) {
            const T found = compare_exchange(target, f(seen), seen);
            if (found == seen) return found;
            seen = found;
        }
    }
};

}  // namespace tarvcore
