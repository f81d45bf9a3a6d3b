// Operations within operations.
#pragma once

#include <atomic>
#include <exception>
#include <type_traits>
#include <utility>

#include "tarvcore/async_result.h"
#include "tarvcore/config.h"
#include "tarvcore/error_info.h"
#include "tarvcore/impl/result_errors.h"
#include "tarvcore/nil.h"
#include "tarvcore/ref_count.h"
#include "tarvcore/ref_count_ptr.h"
#include "tarvcore/result.h"
#include "tarvcore/result_control.h"

namespace tarvcore {
namespace impl {

// Signals an exception that a callback has let escape; where the callback had signalled before, the
// exception is raised again as "error.tarvcore.result.redundantSignal".
TARVCORE_API void signal_escaped_error(AsyncResultBase& outer, const std::exception& escaped);

// Where the outcome of an inner operation goes, whether its control or its handler is signalled.
template <class T, class Then>
class InnerContinuation final : public RefCounted<AtomicRefCount>,
                                private ResultInnerInvokerTagBase {
public:
    InnerContinuation(RefCountPtr<AsyncResult<T>> outer, Then then)
        : outer_(std::move(outer)), then_(std::move(then)) {}

    AsyncResult<T>& outer() const { return *outer_; }

    template <class... Value>
    void on_success(Value... value) {
        if (!is_first({})) return;
        if (outer_->cancelled()) return signal_error(sm_outerOperationCancelled);
        try {
            then_(outer_, std::move(value)...);
        } catch (const std::exception& e) {
            signal_escaped_error(*outer_, e);
        }
    }
    void on_error(const ErrorInfo::Ptr& error) {
        raise_if_null(error);
        if (is_first(error)) signal_error(error);
    }

private:
    ~InnerContinuation() override {
        if (signaled_) return;
        try {
            signal_error(create_result_not_signaled_error());
        } catch (...) {
            // Who has dropped the inner operation cannot do anything about it.
        }
    }

    bool is_first(const ErrorInfo::Ptr& error) {
        if (!signaled_.exchange(true)) return true;
        if (!outer_->cancelled()) raise_redundant_signal_error(error, false);
        return false;
    }
    void signal_error(const ErrorInfo::Ptr& error) {
        outer_->on_async_result_error(outer_->cancelled() ? sm_outerOperationCancelled : error);
    }

    const RefCountPtr<AsyncResult<T>> outer_;
    Then then_;
    std::atomic<bool> signaled_ = false;
};

// The handler of an inner operation that completes later.
template <class U, class Continuation, class Values = ValuesOf<U>>
class InnerAsyncResult;

template <class U, class Continuation, class... Value>
class InnerAsyncResult<U, Continuation, Values<Value...>> final : public AsyncResult<U> {
public:
    InnerAsyncResult(const ResultControlBase& control, RefCountPtr<Continuation> continuation)
        : AsyncResult<U>(control), continuation_(std::move(continuation)) {}

    void cancel(bool flag, const ErrorInfo::Ptr& reason) const override {
        continuation_->outer().cancel(flag, reason);
    }
    bool ignored() const override { return std::is_void_v<U>; }
    bool cancelled() const override { return continuation_->outer().cancelled(); }
    Result<U> get_result() const override { return {}; }

private:
    void async_error_impl(const ErrorInfo::Ptr& error) override { continuation_->on_error(error); }
    void async_success_impl(Value... value) override {
        continuation_->on_success(std::move(value)...);
    }

    const RefCountPtr<Continuation> continuation_;
};

// The control of an inner operation.
template <class U, class Continuation, class Values = ValuesOf<U>>
class InnerResultControl;

template <class U, class Continuation, class... Value>
class InnerResultControl<U, Continuation, Values<Value...>> final : public ResultControl<U> {
public:
    explicit InnerResultControl(RefCountPtr<Continuation> continuation)
        : continuation_(std::move(continuation)) {}

    bool is_cancelled() const override { return continuation_->outer().cancelled(); }
    Result<U> signal_result(Value... value) const override {
        continuation_->on_success(std::move(value)...);
        return {};
    }
    Result<U> signal_error(const ErrorInfo::Ptr& error) const override {
        continuation_->on_error(error);
        return {};
    }
    RefCountPtr<AsyncResult<U>> create_async_handler() const override {
        return new InnerAsyncResult<U, Continuation>(*this, continuation_);
    }

private:
    const RefCountPtr<Continuation> continuation_;
};

}  // namespace impl

// Runs an inner operation, whose value is of type U, within the one that `outer` stands for:
// `start(control)` starts it, and once it has succeeded, now or later, `then(outer, value...)` goes
// on, on the thread that has signalled.  It must see to it that `outer` is signalled.
//
// An error of the inner operation is the outer one's, and so is a std::exception that `then` lets
// escape, and "error.tarvcore.result.notSignaled" where the inner operation signals nothing.  That
// is also what comes of it where `start` raises; the exception goes to the caller, who has nothing
// to signal any more.
//
// The inner operation is cancelled when the outer one is, and sees it when it asks.  Whatever comes
// of it then, `then` is not called: "error.tarvcore.result.cancelled.innerOperation" is signalled
// instead.  Where the outer operation has been cancelled before, the inner one is not started.
//
//     invoke_inner<Socket>(handler,
//         [&](const ResultControl<Socket>& control) { connect(address, control); },
//         [](const auto& outer, Socket socket) { send_request(socket, outer->as_control()); });
template <class U = void, class T, class Start, class Then>
void invoke_inner(const RefCountPtr<AsyncResult<T>>& outer, Start start, Then then) {
    if (outer->cancelled()) {
        return outer->on_async_result_error(
            impl::ResultInnerInvokerTagBase::sm_outerOperationCancelled);
    }
    using Continuation = impl::InnerContinuation<T, Then>;
    start(impl::InnerResultControl<U, Continuation>(new Continuation(outer, std::move(then))));
}

}  // namespace tarvcore
