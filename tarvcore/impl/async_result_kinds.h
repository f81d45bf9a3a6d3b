// The handlers that controls make.
#pragma once

#include <type_traits>
#include <utility>

#include "tarvcore/async_result.h"
#include "tarvcore/error_info.h"
#include "tarvcore/future.h"
#include "tarvcore/impl/result_errors.h"
#include "tarvcore/impl/result_impl.h"
#include "tarvcore/nil.h"
#include "tarvcore/ref_count_ptr.h"
#include "tarvcore/result.h"

namespace tarvcore::impl {

// Each kind has its behaviour in a base, and the final class adds what success does, whose
// arguments depend on T.
template <class T, class Values = ValuesOf<T>>
class AsyncResultIgnored;
template <class T, class Values = ValuesOf<T>>
class AsyncResultCancelled;
template <class T, class Values = ValuesOf<T>>
class AsyncResultError;
template <class T, class Values = ValuesOf<T>>
class AsyncResultFuture;

// Drops whatever is signalled.
template <class T>
class AsyncResultIgnoredBase : public AsyncResult<T> {
public:
    static RefCountPtr<AsyncResult<T>> create(const ResultControlBase& control) {
        return new AsyncResultIgnored<T>(control);
    }

    void cancel(bool, const ErrorInfo::Ptr&) const override {}
    bool ignored() const override { return true; }
    bool cancelled() const override { return false; }
    Result<T> get_result() const override { return {}; }

protected:
    using AsyncResult<T>::AsyncResult;

    void async_error_impl(const ErrorInfo::Ptr&) override {}
};

// The same for a caller that has cancelled before it has called.
template <class T>
class AsyncResultCancelledBase : public AsyncResult<T> {
public:
    static RefCountPtr<AsyncResult<T>> create(const ResultControlBase& control) {
        return new AsyncResultCancelled<T>(control);
    }

    void cancel(bool, const ErrorInfo::Ptr&) const override {}
    bool ignored() const override { return true; }
    bool cancelled() const override { return true; }
    Result<T> get_result() const override { return {}; }

protected:
    using AsyncResult<T>::AsyncResult;

    void async_error_impl(const ErrorInfo::Ptr&) override {}
};

// For a caller that wants no asynchrony: it gets an error at once, and the operation is told that
// it has been cancelled.
template <class T>
class AsyncResultErrorBase : public AsyncResult<T> {
public:
    static RefCountPtr<AsyncResult<T>> create(const ResultControlBase& control) {
        return new AsyncResultError<T>(control);
    }

    void cancel(bool, const ErrorInfo::Ptr&) const override {}
    bool ignored() const override { return true; }
    bool cancelled() const override { return true; }
    Result<T> get_result() const override {
        return Result<T>(new ErrorResultImpl<T>(create_unexpected_asynchrony_error()));
    }

protected:
    using AsyncResult<T>::AsyncResult;

    void async_error_impl(const ErrorInfo::Ptr&) override {}
};

// Completes a future.
template <class T>
class AsyncResultFutureBase : public AsyncResult<T> {
public:
    static RefCountPtr<AsyncResult<T>> create(const ResultControlBase& control,
                                              const Future<T>& future) {
        return new AsyncResultFuture<T>(control, future);
    }

    void cancel(bool, const ErrorInfo::Ptr& reason) const override {
        future_.set(create_result_cancel_error(reason));
    }
    bool ignored() const override { return std::is_void_v<T>; }
    bool cancelled() const override { return result_was_cancelled(future_.error_info()); }
    Result<T> get_result() const override { return Result<T>(new FutureResultImpl<T>(future_)); }

protected:
    AsyncResultFutureBase(const ResultControlBase& control, const Future<T>& future)
        : AsyncResult<T>(control), future_(future) {}
    ~AsyncResultFutureBase() override {
        if (future_.impl()->is_decided()) return;
        try {
            future_.set(create_result_not_signaled_error());
        } catch (...) {
            // An observer's, who is told of what has happened and has nobody to tell it to.
        }
    }

    void async_error_impl(const ErrorInfo::Ptr& error) override {
        if (!future_.set(error) && !cancelled()) raise_redundant_signal_error(error, false);
    }

    const Future<T> future_;
};

template <class T, class... Value>
class AsyncResultIgnored<T, Values<Value...>> final : public AsyncResultIgnoredBase<T> {
    friend class AsyncResultIgnoredBase<T>;
    using AsyncResultIgnoredBase<T>::AsyncResultIgnoredBase;

    void async_success_impl(Value...) override {}
};

template <class T, class... Value>
class AsyncResultCancelled<T, Values<Value...>> final : public AsyncResultCancelledBase<T> {
    friend class AsyncResultCancelledBase<T>;
    using AsyncResultCancelledBase<T>::AsyncResultCancelledBase;

    void async_success_impl(Value...) override {}
};

template <class T, class... Value>
class AsyncResultError<T, Values<Value...>> final : public AsyncResultErrorBase<T> {
    friend class AsyncResultErrorBase<T>;
    using AsyncResultErrorBase<T>::AsyncResultErrorBase;

    void async_success_impl(Value...) override {}
};

template <class T, class... Value>
class AsyncResultFuture<T, Values<Value...>> final : public AsyncResultFutureBase<T> {
    friend class AsyncResultFutureBase<T>;
    using AsyncResultFutureBase<T>::AsyncResultFutureBase;

    void async_success_impl(Value... value) override {
        if (this->future_.signal(std::move(value)...)) return;
        const ErrorInfo::Ptr error = this->future_.error_info();
        if (!result_was_cancelled(error)) raise_redundant_signal_error(error, false);
    }
};

}  // namespace tarvcore::impl
