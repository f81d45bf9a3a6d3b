// Outcomes on their way to another thread.
#pragma once

#include <optional>
#include <type_traits>
#include <utility>

#include "tarvcore/async_result.h"
#include "tarvcore/error_info.h"
#include "tarvcore/nil.h"

namespace tarvcore::impl {

// The outcome of an operation, packed for the thread that shall signal it.
//
//     queue.push([handler, completion = DispatchedCompletion<void>(nil)] {
//         completion.signal(*handler);
//     });
template <class T>
class DispatchedCompletion {
public:
    DispatchedCompletion(T value) : value_(std::move(value)) {}
    // Not null.
    DispatchedCompletion(ErrorInfo::Ptr error) : error_(std::move(error)) {}

    // Null for success.
    const ErrorInfo::Ptr& error() const { return error_; }
    // Hands the value over: once.
    void signal(AsyncResult<T>& handler) {
        if (error_) return handler.on_async_result_error(error_);
        handler.on_async_result_success(std::move(*value_));
    }

private:
    ErrorInfo::Ptr error_;
    std::optional<T> value_;
};

template <>
class DispatchedCompletion<void> {
public:
    static inline const Nil& value = Nil::instance;

    DispatchedCompletion(const Nil&) {}
    DispatchedCompletion(ErrorInfo::Ptr error) : error_(std::move(error)) {}

    const ErrorInfo::Ptr& error() const { return error_; }
    void signal(AsyncResult<void>& handler) const {
        if (error_) return handler.on_async_result_error(error_);
        handler.on_async_result_success();
    }

private:
    ErrorInfo::Ptr error_;
};

static_assert(sizeof(DispatchedCompletion<void>) == sizeof(ErrorInfo::Ptr));

}  // namespace tarvcore::impl
