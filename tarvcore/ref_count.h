// Reference counters, and the base class of objects that carry their own count.
#pragma once

#include "tarvcore/atomic_op.h"
#include "tarvcore/config.h"

namespace tarvcore {

template <class T>
class RefCountPtr;

// A count that several threads may change.  Reaching zero in `decrement` is the one signal for
// destruction: what `has_refs` and `is_unique` answer may be out of date when it is looked at.
class AtomicRefCount {
public:
    constexpr AtomicRefCount() = default;
    // Of an object that so many hold already.
    constexpr explicit AtomicRefCount(int count) : count_(count) {}
    AtomicRefCount(const AtomicRefCount&) = delete;
    AtomicRefCount& operator=(const AtomicRefCount&) = delete;

    // By one who holds a reference.
    void increment() { __atomic_fetch_add(&count_, 1, __ATOMIC_SEQ_CST); }
    // True when the count reached zero.
    [[nodiscard]] bool decrement() { return __atomic_fetch_sub(&count_, 1, __ATOMIC_SEQ_CST) == 1; }

    // As of the moment of looking.
    bool has_refs() const { return __atomic_load_n(&count_, __ATOMIC_SEQ_CST) != 0; }
    bool is_unique() const { return __atomic_load_n(&count_, __ATOMIC_SEQ_CST) == 1; }

private:
    int count_ = 0;
};

// The same for objects that stay on one thread.
class NonAtomicRefCount {
public:
    constexpr NonAtomicRefCount() = default;
    // Of an object that so many hold already.
    constexpr explicit NonAtomicRefCount(int count) : count_(count) {}
    NonAtomicRefCount(const NonAtomicRefCount&) = delete;
    NonAtomicRefCount& operator=(const NonAtomicRefCount&) = delete;

    // As those of AtomicRefCount.
    void increment() { ++count_; }
    [[nodiscard]] bool decrement() { return --count_ == 0; }
    bool has_refs() const { return count_ != 0; }
    bool is_unique() const { return count_ == 1; }

private:
    int count_ = 0;
};

// Two counts for objects that can be observed without being kept alive.  Both start at 1: the
// creator's strong reference, and one weak reference that stands for all strong ones together.
// The owner destroys the object when `decrement_strong` answers true and then drops that weak
// reference; it frees the memory when `decrement_weak` answers true.
class TARVCORE_API AtomicStrongWeakRefCount {
public:
    // One reference of each kind.
    constexpr AtomicStrongWeakRefCount() = default;
    AtomicStrongWeakRefCount(const AtomicStrongWeakRefCount&) = delete;
    AtomicStrongWeakRefCount& operator=(const AtomicStrongWeakRefCount&) = delete;

    // False, and nothing changed, when no strong reference is left: the dead are not revived.
    [[nodiscard]] bool increment_strong();
    // True when the count reached zero.
    [[nodiscard]] bool decrement_strong();
    // As of the moment of looking.
    bool has_strong_refs() const;

    // By one who holds a reference of either kind.
    void increment_weak();
    // True when the count reached zero.
    [[nodiscard]] bool decrement_weak();

private:
    int strong_ = 1;
    int weak_ = 1;
};

// Base of every shared object: the object carries its count, `RefCountPtr` drives it.  Born with
// count 0; dies on the thread that drops the last reference.  Not copyable.
//
// Counter is AtomicRefCount or NonAtomicRefCount.  A derived class overrides `destroy` where its
// disposal is not `delete`.
template <class Counter>
class RefCounted {
public:
    RefCounted(const RefCounted&) = delete;
    RefCounted& operator=(const RefCounted&) = delete;

    // Whether exactly one reference exists.  With an atomic count true only means something to the
    // holder of that reference.
    bool has_unique_ref() const { return counter_.is_unique(); }

protected:
    constexpr RefCounted() = default;

    // Disposes of the object; called once, by the release of the last reference.
    virtual void destroy() const { delete this; }
    virtual ~RefCounted() = default;

    // Drops a reference without disposing of the object; true when it was the last one and the
    // caller must dispose.  For classes that take long chains of objects apart without recursion.
    [[nodiscard]] bool drop_ref() const { return counter_.decrement(); }

private:
    template <class T>
    friend class RefCountPtr;

    void add_ref() const { counter_.increment(); }
    void release() const {
        if (counter_.decrement()) destroy();
    }

    mutable Counter counter_;
};

static_assert(sizeof(AtomicRefCount) == 4 && sizeof(NonAtomicRefCount) == 4);
static_assert(sizeof(AtomicStrongWeakRefCount) == 8);
static_assert(sizeof(RefCounted<AtomicRefCount>) == 8);

}  // namespace tarvcore
