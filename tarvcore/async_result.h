// The operation's side of what completes later.
#pragma once

#include <utility>

#include "tarvcore/config.h"
#include "tarvcore/error_info.h"
#include "tarvcore/impl/async_op.h"
#include "tarvcore/nil.h"
#include "tarvcore/ref_count_ptr.h"
#include "tarvcore/result.h"

namespace tarvcore {

class ResultControlBase;
template <class T, class Values = impl::ValuesOf<T>>
class AsyncHandlerAdapterControl;

// What is common to the handlers of all value types.
class TARVCORE_API AsyncResultBase : public impl::AsyncOp {
public:
    // Whether nobody looks at the value: always so where there is none.
    virtual bool ignored() const = 0;
    // Whether the result has ended with "error.tarvcore.result.cancelled": the operation may stop,
    // and what it signals is dropped.  So it is when the caller has cancelled, and also once the
    // operation itself has signalled such an error.
    virtual bool cancelled() const = 0;

    // Signals the error with which the operation has ended.  A null one raises
    // "error.tarvcore.result.badParameter"; for the rest see AsyncResult.
    void on_async_result_error(const ErrorInfo::Ptr& error);

protected:
    // Made by that control, whose call is still running.
    explicit AsyncResultBase(const ResultControlBase& control);
    ~AsyncResultBase() override;

    // What a kind of handler does with the error, which is not null.
    virtual void async_error_impl(const ErrorInfo::Ptr& error) = 0;

    // While signalling is checked: raises where the call that has made this handler is still
    // running on this thread.
    void validate_signal() const {
        if (activation_id_ != 0) validate_activated_signal();
    }

private:
    void validate_activated_signal() const;

    unsigned activation_id_;
};

// What an operation that completes later keeps, and signals once, from any thread, when it has
// ended.  A handler that goes without a signal completes its result with
// "error.tarvcore.result.notSignaled", so that nobody waits for ever.
//
// A second signal raises "error.tarvcore.result.redundantSignal" and changes nothing, unless
// `cancelled()`: then every signal is dropped.
//
//     Result<void> Copier::start(const ResultControl<void>& control) {
//         auto handler = control.create_async_handler();
//         queue_.push([this, handler] {
//             if (!handler->cancelled()) copy();
//             handler->on_async_result_success();
//         });
//         return handler->get_result();
//     }
//
// With TARVCORE_CHECK_ASYNC_RESULT_SIGNALING, see ResultControlBase, a signal on the thread of the
// call that has made the handler, before that call returns, raises
// "error.tarvcore.result.invalidAsyncSignalScope".
template <class T, class Values = impl::ValuesOf<T>>
class AsyncResult;

template <class T, class... Value>
class AsyncResult<T, impl::Values<Value...>> : public AsyncResultBase {
public:
    // What the operation answers to its caller.
    virtual Result<T> get_result() const = 0;

    // Signals success: without an argument for void, else with the value.
    void on_async_result_success(Value... value) {
        validate_signal();
        async_success_impl(std::move(value)...);
    }

    // A control that passes this handler on to an inner operation; tarvcore/result_control.h.
    AsyncHandlerAdapterControl<T> as_control();

protected:
    using AsyncResultBase::AsyncResultBase;

    // What a kind of handler does with the value.
    virtual void async_success_impl(Value... value) = 0;
};

}  // namespace tarvcore
