// What is behind results.
#pragma once

#include <type_traits>
#include <utility>

#include "tarvcore/abs_rel_time.h"
#include "tarvcore/config.h"
#include "tarvcore/error_exception.h"
#include "tarvcore/error_info.h"
#include "tarvcore/future.h"
#include "tarvcore/impl/async_op.h"
#include "tarvcore/impl/future_impl.h"
#include "tarvcore/impl/result_errors.h"
#include "tarvcore/ref_count_ptr.h"

namespace tarvcore::impl {

// The caller's side of an operation; see ResultBase for what its functions answer.
class TARVCORE_API ResultImplBase : public AsyncOp {
public:
    virtual bool is_ready() const = 0;
    virtual bool has_error() const = 0;
    virtual bool is_waitable() const = 0;
    virtual bool wait(const RelativeTime& timeout) const = 0;
    // Waits without limit, and throws the error if there is one.
    virtual void get() const = 0;
    virtual ErrorInfo::Ptr error_info() const = 0;

protected:
    ResultImplBase();
    ~ResultImplBase() override;
};

template <class T>
class ResultImpl : public ResultImplBase {
public:
    // After `get`.
    virtual ValueReference<T> value() const = 0;
};

// Complete from the start: there is nothing to wait for or to cancel.
template <class T>
class CompleteResultImpl : public ResultImpl<T> {
public:
    void cancel(bool, const ErrorInfo::Ptr&) const override {}
    bool is_ready() const override { return true; }
    bool is_waitable() const override { return true; }
    bool wait(const RelativeTime&) const override { return true; }
};

template <class T>
class ValueResultImpl final : public CompleteResultImpl<T> {
public:
    explicit ValueResultImpl(T value) : value_(std::move(value)) {}

    bool has_error() const override { return false; }
    void get() const override {}
    ErrorInfo::Ptr error_info() const override { return {}; }
    const T& value() const override { return value_; }

private:
    T value_;
};

// The success of an operation without a value: all share one.
template <>
class TARVCORE_API ValueResultImpl<void> final : public CompleteResultImpl<void> {
public:
    static RefCountPtr<const ResultImpl<void>> instance();

    bool has_error() const override { return false; }
    void get() const override {}
    ErrorInfo::Ptr error_info() const override { return {}; }
    void value() const override {}

private:
    ValueResultImpl();
    ~ValueResultImpl() override;
};

// An error, never null.
template <class T>
class ErrorResultImpl final : public CompleteResultImpl<T> {
public:
    explicit ErrorResultImpl(ErrorInfo::Ptr error) : error_(std::move(error)) {}

    bool has_error() const override { return true; }
    void get() const override { throw_error(error_); }
    ErrorInfo::Ptr error_info() const override { return error_; }
    ValueReference<T> value() const override { throw_error(error_); }

private:
    ErrorInfo::Ptr error_;
};

// What a future will bring.
template <class T>
class FutureResultImpl final : public ResultImpl<T> {
public:
    explicit FutureResultImpl(const Future<T>& future) : future_(future.impl()) {}

    // Completes the future, unless it is complete: the operation learns of it when it asks its
    // handler, or signals too late.
    void cancel(bool, const ErrorInfo::Ptr& reason) const override {
        future_->set(create_result_cancel_error(reason));
    }
    bool is_ready() const override { return future_->is_ready(); }
    bool has_error() const override { return future_->has_error(); }
    bool is_waitable() const override { return true; }
    bool wait(const RelativeTime& timeout) const override { return future_->wait(timeout); }
    void get() const override {
        if (const ErrorInfo* error = future_->wait_for_error())
            ErrorException::throw_adopted(error);
    }
    ErrorInfo::Ptr error_info() const override { return future_->error_info(); }
    ValueReference<T> value() const override { return future_->value(); }

private:
    RefCountPtr<FutureImpl<T>> future_;
};

template <class T, class... Value>
RefCountPtr<const ResultImpl<T>> create_value_result(Value&&... value) {
    if constexpr (std::is_void_v<T>) {
        return ValueResultImpl<void>::instance();
    } else {
        return new ValueResultImpl<T>(std::forward<Value>(value)...);
    }
}

}  // namespace tarvcore::impl
