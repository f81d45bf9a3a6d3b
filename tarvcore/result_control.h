// What a caller hands to an operation that may complete now or later.
#pragma once

#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "tarvcore/async_result.h"
#include "tarvcore/config.h"
#include "tarvcore/error_info.h"
#include "tarvcore/nil.h"
#include "tarvcore/ref_count_ptr.h"
#include "tarvcore/result.h"

namespace tarvcore {

// What is common to the controls of all value types.  Controls are objects on the caller's stack
// and belong to its thread.
//
// With the environment variable TARVCORE_CHECK_ASYNC_RESULT_SIGNALING, read once while the library
// is loaded, misuse is caught that goes unseen otherwise: a control that has made a handler is in a
// chain of its thread until it ends, and its handler must not be signalled there before that.  Any
// value that does not begin with 0, N, n, F or f turns this on, an empty one too.
class TARVCORE_API ResultControlBase {
protected:
    // Before the other virtual functions: their order is part of the binary interface.
    virtual ~ResultControlBase();

public:
    // Whether nobody looks at the value: always so where there is none.
    virtual bool is_ignored() const = 0;
    // Whether the caller has cancelled: the operation need not begin.
    virtual bool is_cancelled() const { return false; }

protected:
    ResultControlBase() = default;
    // A control of its own.
    ResultControlBase(const ResultControlBase&) {}
    ResultControlBase& operator=(const ResultControlBase&) = delete;

private:
    friend class AsyncResultBase;

    // Gives this control its number, while signalling is checked, and answers it; else 0.
    unsigned activate() const;
    void deactivate();
    static void validate_async_signal(unsigned id);

    mutable unsigned activation_id_ = 0;
    mutable const ResultControlBase* previous_ = nullptr;  // on this thread
};

// Decides what the caller gets of an operation: its outcome, an error, or nothing.  The operation
// does one of two things with it, once, and answers what that gives it:
//
//     now     return control.signal_result();        (with a value: of it)
//             return control.signal_error(error);
//     later   auto handler = control.create_async_handler();
//             ...                                     (see AsyncResult)
//             return handler->get_result();
//
// docs/async.md has a table of the kinds of controls, and what comes of each.
template <class T, class Values = impl::ValuesOf<T>>
class ResultControl;

template <class T, class... Value>
class ResultControl<T, impl::Values<Value...>> : public ResultControlBase {
public:
    bool is_ignored() const override { return std::is_void_v<T>; }

    // A null error raises "error.tarvcore.result.badParameter", and where a future is signalled
    // "error.tarvcore.future.nullError".
    virtual Result<T> signal_result(Value... value) const = 0;
    virtual Result<T> signal_error(const ErrorInfo::Ptr& error) const = 0;
    virtual RefCountPtr<AsyncResult<T>> create_async_handler() const = 0;

protected:
    // What a control of another module needs beside itself, built where it stands.
    class Auxiliary {
    public:
        virtual ~Auxiliary() = default;
    };

    ResultControl() = default;
    // The auxiliary object is not copied.
    ResultControl(const ResultControl& other) : ResultControlBase(other) {}
    ~ResultControl() override {
        if (auxiliary_ != nullptr) std::destroy_at(auxiliary_);
    }

    // At most four words; lives as long as the control.  Once.
    template <class Object, class... Arguments>
    Object& emplace_auxiliary(Arguments&&... arguments) {
        static_assert(sizeof(Object) <= sizeof storage_ && alignof(Object) <= alignof(void*));
        Object* const object = ::new (&storage_) Object(std::forward<Arguments>(arguments)...);
        auxiliary_ = object;
        return *object;
    }

private:
    Auxiliary* auxiliary_ = nullptr;
    void* storage_[4];
};

// Hands the outcome to a handler: lets an operation that completes later pass its handler on to an
// inner operation, whose outcome then is its own.
template <class T, class... Value>
class AsyncHandlerAdapterControl<T, impl::Values<Value...>> : public ResultControl<T> {
public:
    // Not null.
    AsyncHandlerAdapterControl(RefCountPtr<AsyncResult<T>> handler)
        : handler_(std::move(handler)) {}
    // Makes the handler of that control at once.
    explicit AsyncHandlerAdapterControl(const ResultControl<T>& control)
        : handler_(control.create_async_handler()) {}

    bool is_ignored() const override { return std::is_void_v<T> || handler_->ignored(); }
    bool is_cancelled() const override { return handler_->cancelled(); }

    // Answer empty results: the outcome is the handler's.
    Result<T> signal_result(Value... value) const override {
        handler_->on_async_result_success(std::move(value)...);
        return {};
    }
    Result<T> signal_error(const ErrorInfo::Ptr& error) const override {
        handler_->on_async_result_error(error);
        return {};
    }
    RefCountPtr<AsyncResult<T>> create_async_handler() const override { return handler_; }

    // The handler, for those who want it back.
    operator const RefCountPtr<AsyncResult<T>>&() const { return handler_; }

private:
    RefCountPtr<AsyncResult<T>> handler_;
};

template <class T, class... Value>
AsyncHandlerAdapterControl<T> AsyncResult<T, impl::Values<Value...>>::as_control() {
    return RefCountPtr<AsyncResult<T>>(this);
}

}  // namespace tarvcore
