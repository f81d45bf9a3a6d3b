// What operations answer that complete now or later.
#pragma once

#include <type_traits>
#include <utility>

#include "tarvcore/abs_rel_time.h"
#include "tarvcore/config.h"
#include "tarvcore/error_info.h"
#include "tarvcore/impl/result_impl.h"
#include "tarvcore/ref_count_ptr.h"
#include "tarvcore/transfer.h"

namespace tarvcore {
namespace impl {

class AnyResult;

}  // namespace impl

// What is common to the results of all value types.  One of
//
//     empty       the caller has said that it does not care: nothing is known, nothing to wait for
//     a value     complete with success
//     an error    complete with an error
//     a future    pending, then complete, with success or with an error
//
// Copies share one state.  One handle is not for several threads at once, copies are.
class TARVCORE_API ResultBase {
public:
    // All false for an empty result.
    bool is_ready() const { return impl_ && impl_->is_ready(); }
    bool has_value() const { return is_ready() && !impl_->has_error(); }
    bool has_error() const { return impl_ && impl_->has_error(); }
    bool is_waitable() const { return impl_ && impl_->is_waitable(); }

    // Block until it is ready; see Future for the time.  False: it was not within the time.  An
    // empty result raises "error.tarvcore.result.notWaitable".
    void wait() const { impl()->wait(RelativeTime::infinite); }
    bool wait(const RelativeTime& timeout) const { return impl()->wait(timeout); }

    // Throws the error if there is one already: does not wait.
    void throw_if_error() const;
    // Null where there is none, or none yet.
    ErrorInfo::Ptr error_info() const { return impl_ ? impl_->error_info() : ErrorInfo::Ptr(); }

    // Ends the wait for a pending result with "error.tarvcore.result.cancelled", and the reason,
    // which may be null, as its cause.  The operation may run on: it learns of it when it asks, and
    // what it signals is dropped.  Nothing happens to other results.
    // The flag is for operations of other modules; nothing here looks at it.
    void cancel(bool flag, const ErrorInfo::Ptr& reason) const;

protected:
    ResultBase() = default;
    // Null: empty.
    explicit ResultBase(RefCountPtr<const impl::ResultImplBase> impl) : impl_(std::move(impl)) {}

    // An empty result raises "error.tarvcore.result.notWaitable".
    const impl::ResultImplBase* impl() const {
        if (impl_.is_null()) impl::raise_not_waitable_error();
        return impl_.get();
    }

private:
    friend class AsyncOpHandle;
    template <class T>
    friend class Result;

    RefCountPtr<const impl::ResultImplBase> impl_;
};

// What an operation answers that may complete at once or later.  T is the type of its value: void,
// or a type that can be moved.
//
//     Result<void> copied = start_copy(from, to, result_future());
//     if (!copied.wait(RelativeTime::seconds(5))) copied.cancel(false, {});
//     copied.get();
template <class T>
class Result : public ResultBase {
public:
    using Impl = impl::ResultImpl<T>;

    // Empty.
    Result() = default;
    Result(RefCountPtr<const Impl> impl) : ResultBase(std::move(impl)) {}

    Result(const Result&) = default;
    // The other one is left empty.
    Result(Result&& other) noexcept { swap(other); }
    Result(TransferSource<Result> source) noexcept { swap(source.source()); }
    Result& operator=(Result other) noexcept {
        swap(other);
        return *this;
    }
    void swap(Result& other) noexcept { impl_.swap(other.impl_); }
    TransferSource<Result> transfer() { return TransferSource<Result>(*this); }

    // Waits without limit, and throws the error if there is one: the very record that was
    // signalled. An empty result raises "error.tarvcore.result.notWaitable".
    //
    // Answers a reference, which is good while any copy of the result lives.  On a temporary
    // (`start().get()`) it answers a value: a copy or, of a type that can only be moved, the value
    // itself; other copies then find it moved from.
    impl::ValueReference<T> get() const& {
        impl()->get();
        return static_cast<const Impl*>(impl())->value();
    }
    T get() && {
        if constexpr (std::is_void_v<T>) {
            std::as_const(*this).get();
        } else {
            return impl::taken_value<T>(std::as_const(*this).get());
        }
    }

private:
    friend class impl::AnyResult;

    // Empty where the other result's values are of another type.
    static Result dynamic_cast_from(const ResultBase& other) {
        return RefCountPtr<const Impl>(dynamic_cast<const Impl*>(other.impl_.get()));
    }
};

}  // namespace tarvcore
