// The kinds of result controls, and how callers make them.
#pragma once

#include <utility>

#include "tarvcore/error_info.h"
#include "tarvcore/future.h"
#include "tarvcore/impl/async_result_kinds.h"
#include "tarvcore/impl/result_errors.h"
#include "tarvcore/impl/result_impl.h"
#include "tarvcore/nil.h"
#include "tarvcore/ref_count_ptr.h"
#include "tarvcore/result.h"
#include "tarvcore/result_control.h"

namespace tarvcore {

template <class T, class Values = impl::ValuesOf<T>>
class ResultControlIgnored;
template <class T>
class ResultControlIgnoredIfAsync;
template <class T>
class ResultControlErrorIfAsync;
template <class T, class Values = impl::ValuesOf<T>>
class ResultControlCancelled;
template <class T, class Values = impl::ValuesOf<T>>
class ResultControlFutureRef;

namespace impl {

// Takes the outcome of operations that nobody waits for.
template <class T>
class ResultControlIgnoredBase : public ResultControl<T> {
public:
    // For a caller that wants the outcome if it comes at once, and does not care otherwise.
    ResultControlIgnoredIfAsync<T> if_not_ready() const { return {}; }

    bool is_ignored() const override { return true; }
    Result<T> signal_error(const ErrorInfo::Ptr& error) const override {
        raise_if_null(error);
        return {};
    }
    RefCountPtr<AsyncResult<T>> create_async_handler() const override {
        return AsyncResultIgnored<T>::create(*this);
    }
};

// Hands an outcome that comes at once to the caller as it is.
template <class T, class Values = ValuesOf<T>>
class ResultControlDirectIfSynchronousBase;

template <class T, class... Value>
class ResultControlDirectIfSynchronousBase<T, Values<Value...>> : public ResultControl<T> {
public:
    Result<T> signal_result(Value... value) const override {
        return Result<T>(create_value_result<T>(std::move(value)...));
    }
    Result<T> signal_error(const ErrorInfo::Ptr& error) const override {
        raise_if_null(error);
        return Result<T>(new ErrorResultImpl<T>(error));
    }
};

// Puts the outcome into a future.
template <class T>
class ResultControlFutureRefBase : public ResultControl<T> {
public:
    // Pending, as a rule.
    explicit ResultControlFutureRefBase(Future<T> future) : future_(std::move(future)) {}

    const Future<T>& future() const { return future_; }

    bool is_cancelled() const override { return result_was_cancelled(future_.error_info()); }
    // The first signal stays; a second one is dropped without a word, and this is meant.
    Result<T> signal_error(const ErrorInfo::Ptr& error) const override {
        future_.set(error);
        return result();
    }
    RefCountPtr<AsyncResult<T>> create_async_handler() const override {
        return AsyncResultFuture<T>::create(*this, future_);
    }

protected:
    // One on the future.
    Result<T> result() const { return Result<T>(new FutureResultImpl<T>(future_)); }

private:
    Future<T> future_;
};

}  // namespace impl

// For a caller that does not care what comes of it.
template <class T, class... Value>
class ResultControlIgnored<T, impl::Values<Value...>> final
    : public impl::ResultControlIgnoredBase<T> {
public:
    Result<T> signal_result(Value...) const override { return {}; }
};

// For a caller that wants the outcome if it comes at once, and does not care otherwise.
template <class T>
class ResultControlIgnoredIfAsync final : public impl::ResultControlDirectIfSynchronousBase<T> {
public:
    RefCountPtr<AsyncResult<T>> create_async_handler() const override {
        return impl::AsyncResultIgnored<T>::create(*this);
    }
};

// For a caller that wants the outcome at once, and else an error.
template <class T>
class ResultControlErrorIfAsync final : public impl::ResultControlDirectIfSynchronousBase<T> {
public:
    RefCountPtr<AsyncResult<T>> create_async_handler() const override {
        return impl::AsyncResultError<T>::create(*this);
    }
};

// For a caller that has cancelled before it calls.
template <class T, class... Value>
class ResultControlCancelled<T, impl::Values<Value...>> final : public ResultControl<T> {
public:
    bool is_ignored() const override { return true; }
    bool is_cancelled() const override { return true; }
    Result<T> signal_result(Value...) const override { return {}; }
    Result<T> signal_error(const ErrorInfo::Ptr& error) const override {
        impl::raise_if_null(error);
        return {};
    }
    RefCountPtr<AsyncResult<T>> create_async_handler() const override {
        return impl::AsyncResultCancelled<T>::create(*this);
    }
};

// For a caller that will wait: the outcome goes into a future, whenever it comes.
template <class T, class... Value>
class ResultControlFutureRef<T, impl::Values<Value...>> final
    : public impl::ResultControlFutureRefBase<T> {
public:
    using impl::ResultControlFutureRefBase<T>::ResultControlFutureRefBase;

    Result<T> signal_result(Value... value) const override {
        this->future().signal(std::move(value)...);
        return this->result();
    }
};

// How callers make controls, in the call of the operation itself:
//
//     Result<void> copied = start_copy(from, to, result_future());
//     start_copy(from, to, result_ignored());
//     Result<int> size = start_count(path, result_error_if_async<int>());
template <class T = void>
ResultControlFutureRef<T> result_future() {
    return ResultControlFutureRef<T>(Future<T>::create());
}
template <class T>
ResultControlFutureRef<T> result_future(Future<T> future) {
    return ResultControlFutureRef<T>(std::move(future));
}
template <class T = void>
ResultControlIgnored<T> result_ignored() {
    return {};
}
template <class T = void>
ResultControlIgnoredIfAsync<T> result_ignored_if_async() {
    return {};
}
template <class T = void>
ResultControlErrorIfAsync<T> result_error_if_async() {
    return {};
}
template <class T = void>
ResultControlCancelled<T> result_cancelled() {
    return {};
}

}  // namespace tarvcore
