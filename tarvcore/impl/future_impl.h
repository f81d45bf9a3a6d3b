// What futures share.
#pragma once

#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include "tarvcore/abs_rel_time.h"
#include "tarvcore/config.h"
#include "tarvcore/error_info.h"
#include "tarvcore/future_observer.h"
#include "tarvcore/impl/completion_word.h"
#include "tarvcore/interface_ptr.h"
#include "tarvcore/ref_count.h"
#include "tarvcore/ref_count_ptr.h"

namespace tarvcore::impl {

// The completion of one operation: pending, then complete for ever, with success or with an error.
// Without a kernel object and without a lock of the system's, see CompletionWord: 28 bytes, and
// nothing else unless somebody observes.
//
// Any thread may call anything at any time.  The caller holds a reference, as a Future does.
class TARVCORE_API FutureImplBase : public RefCounted<AtomicRefCount> {
public:
    using Observer = InterfacePtr<IFutureObserverBase, RefCountPtr<RefCounted<AtomicRefCount>>>;

    bool is_ready() const { return word_.is_ready(); }
    // Whether it is ready, or being made so: its observers are told just now.
    bool is_decided() const { return word_.is_decided(); }
    bool has_error() const { return is_ready() && !error_.is_null(); }
    bool has_value() const { return is_ready() && error_.is_null(); }
    // Null while it is pending, and after success.
    ErrorInfo::Ptr error_info() const { return is_ready() ? error_ : ErrorInfo::Ptr(); }

    // Completes it with an error; false, and nothing changed, where it was complete.  A null error
    // raises "error.tarvcore.future.nullError".
    bool set(ErrorInfo::Ptr error);

    // Block until it is complete.  False: it was not within the time.  A time of zero or before now
    // only looks; the infinite one is no limit.  What the system says when it cannot wait is
    // raised.
    void wait() const {
        if (!is_ready()) wait_slowly(WaitLimit());
    }
    bool wait(const AbsoluteTime& deadline) const {
        return is_ready() || wait_slowly(WaitLimit(deadline));
    }
    bool wait(const RelativeTime& timeout) const {
        return is_ready() || wait_slowly(WaitLimit(timeout));
    }

    // Blocks until it is complete.  The error, with a reference that the caller owns; null after
    // success.
    [[nodiscard]] const ErrorInfo* wait_for_error() const {
        wait();
        return ErrorInfo::Ptr(error_).detach();
    }

    // Registers an observer, whose owner is kept until it has been told or is removed.  Observers
    // are told in the order of their registration; one that comes when all is over is told at once,
    // by this thread.  False: it is registered already, and nothing changes.
    bool add_observer(Observer observer);
    // False: it is not registered, or has been told.  In both cases it is not being told any more.
    bool remove_observer(IFutureObserverBase* observer);

protected:
    FutureImplBase();
    ~FutureImplBase() override;

    // Completes it with success; false, and nothing changed, where it was complete.
    bool set_success();

    // The same in two steps, for those who store a value in between: `begin` locks, and is false
    // without the lock where it was complete; then either `finish` completes it, or `give_up`
    // leaves it pending.
    [[nodiscard]] bool begin() { return word_.lock(); }
    void finish(ErrorInfo::Ptr error);
    void give_up() { word_.unlock(); }

    // Makes it ready and wakes all waiters, with neither lock nor a word to the observers: the last
    // step of a completion.
    void signal_ready() { word_.publish(); }

    // The entry of that observer, or the end of the array.  With the lock held.
    Observer* find_observer(IFutureObserverBase* observer);

private:
    bool wait_slowly(const WaitLimit& limit) const;
    void finish_observed(ErrorInfo::Ptr error);

    CompletionWord word_;
    ErrorInfo::Ptr error_;
    std::vector<Observer> observers_;
};

static_assert(sizeof(FutureImplBase) == 28);

// Adds the value.
template <class T>
class FutureImpl final : public FutureImplBase {
    static_assert(std::is_object_v<T> && !std::is_const_v<T>, "values are objects");

public:
    FutureImpl() {}
    // What making the value throws leaves the future pending.
    bool signal(T value) {
        if (!begin()) return false;
        try {
            std::construct_at(&value_, std::move(value));
        } catch (...) {
            give_up();
            throw;
        }
        finish({});
        return true;
    }
    // Once it is complete with success.
    const T& value() const { return value_; }

private:
    ~FutureImpl() override {
        if (has_value()) std::destroy_at(&value_);
    }

    union {
        T value_;
    };
};

template <>
class FutureImpl<void> final : public FutureImplBase {
public:
    bool signal() { return set_success(); }
    void value() const {}
};

// What a getter answers: the value where it stands, or nothing.
template <class T>
using ValueReference =
    std::conditional_t<std::is_void_v<T>, void, std::add_lvalue_reference_t<const T>>;

// What it answers about a handle that is about to end: a copy of the value, or the value itself
// where it cannot be copied.
template <class T>
T taken_value(const T& value) {
    if constexpr (std::is_copy_constructible_v<T>) {
        return value;
    } else {
        return std::move(const_cast<T&>(value));
    }
}

}  // namespace tarvcore::impl
