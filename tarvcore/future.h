// Operations that complete later.
#pragma once

#include <type_traits>
#include <utility>

#include "tarvcore/abs_rel_time.h"
#include "tarvcore/error_exception.h"
#include "tarvcore/error_info.h"
#include "tarvcore/future_observer.h"
#include "tarvcore/impl/future_impl.h"
#include "tarvcore/ref_count_ptr.h"

namespace tarvcore {

// A handle to the completion of one operation, with success or with an error, which some thread
// signals once.  Any number of threads may wait for it, with or without a limit, and observers may
// be told.  T is the type of the value that success brings: void, or a type that can be moved.
//
// Copies share the completion; it lives as long as any of them.  One handle is not for several
// threads at once, copies are.  A pending future costs one allocation, and never a kernel object.
//
//     const auto done = Future<int>::create();
//     std::thread([done] { done.signal(42); }).detach();
//     if (done.wait(RelativeTime::seconds(5))) use(done.get());
template <class T>
class Future {
public:
    using Impl = impl::FutureImpl<T>;
    using Observer = impl::FutureImplBase::Observer;

    // A new, pending one.
    static Future create() { return Future(new Impl); }
    // Not null.
    explicit Future(RefCountPtr<Impl> impl) : impl_(std::move(impl)) {}

    bool is_ready() const { return impl_->is_ready(); }
    bool has_error() const { return impl_->has_error(); }
    bool has_value() const { return impl_->has_value(); }
    // Null while it is pending, and after success.
    ErrorInfo::Ptr error_info() const { return impl_->error_info(); }

    // Completes it with success: `signal()` for void, else `signal(value)`.  False where it was
    // complete: its outcome stays.
    template <class... Value>
    bool signal(Value&&... value) const {
        return impl_->signal(std::forward<Value>(value)...);
    }
    // The same with an error.  A null one raises "error.tarvcore.future.nullError".
    bool set(ErrorInfo::Ptr error) const { return impl_->set(std::move(error)); }

    // Block until it is complete.  False: it was not within the time.
    void wait() const { impl_->wait(); }
    bool wait(const AbsoluteTime& deadline) const { return impl_->wait(deadline); }
    bool wait(const RelativeTime& timeout) const { return impl_->wait(timeout); }

    // Waits without limit, and throws the error if there is one: the very record that was set.
    //
    // The value is answered by reference, so that many may look at it and none copies: it lives as
    // long as any handle.  A handle that is about to end (`std::move(future).get()`) answers it by
    // value instead: a copy, or, of a type that can only be moved, the value itself, which others
    // then find moved away.
    impl::ValueReference<T> get() const& {
        if (const ErrorInfo* error = impl_->wait_for_error()) ErrorException::throw_adopted(error);
        return impl_->value();
    }
    T get() && {
        if constexpr (std::is_void_v<T>) {
            std::as_const(*this).get();
        } else {
            return impl::taken_value<T>(std::as_const(*this).get());
        }
    }

    // Registers an observer that is counted itself, or whose life is the caller's affair.
    // Observers are told in the order of their registration; of a complete future, at once, by this
    // thread.  False: it is registered already.
    template <class Object>
    bool add_observer(const RefCountPtr<Object>& observer) const {
        return impl_->add_observer({observer.get(), observer.get()});
    }
    bool add_observer(IFutureObserverBase* observer) const {
        return impl_->add_observer({observer, nullptr});
    }
    // False: it is not registered, or has been told.  In both cases nobody is telling it any more,
    // unless another thread is just registering it.
    bool remove_observer(IFutureObserverBase* observer) const {
        return impl_->remove_observer(observer);
    }

    const RefCountPtr<Impl>& impl() const { return impl_; }
    void swap(Future& other) noexcept { impl_.swap(other.impl_); }

    // Whether both stand for one operation.
    friend bool operator==(const Future& a, const Future& b) { return a.impl_ == b.impl_; }

private:
    RefCountPtr<Impl> impl_;
};

}  // namespace tarvcore
