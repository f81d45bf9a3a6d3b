// The errors of results, and how they are recognised.
#pragma once

#include "tarvcore/config.h"
#include "tarvcore/error_info.h"
#include "tarvcore/source_location.h"

namespace tarvcore::impl {

// One shared record each, made while the library is loaded.
TARVCORE_API ErrorInfo::Ptr create_result_not_signaled_error();
TARVCORE_API ErrorInfo::Ptr create_unexpected_asynchrony_error();

// Without a reason the one shared record of a cancellation; else a new one with the reason as its
// cause.
TARVCORE_API ErrorInfo::Ptr create_result_cancel_error(const ErrorInfo::Ptr& reason);
// Whether the error is a cancellation, of whatever kind; null is none.
TARVCORE_API bool result_was_cancelled(const ErrorInfo::Ptr& error);

// What an inner operation's outcome becomes once the outer operation has been cancelled.
struct TARVCORE_API ResultInnerInvokerTagBase {
    static const ErrorInfo::Ptr sm_outerOperationCancelled;
};

// Raise "error.tarvcore.result.…": waiting for an empty result; a null error where one is
// signalled; a second signal, with the error of the first or of the second one as its cause, and
// whether a callback for success has let an exception escape; a parameter without a value.
[[noreturn]] TARVCORE_API void raise_not_waitable_error();
[[noreturn]] TARVCORE_API void raise_result_failure_null();
[[noreturn]] TARVCORE_API void raise_redundant_signal_error(ErrorInfo::Ptr nested,
                                                            bool success_callback);
[[noreturn]] TARVCORE_API void raise_null_parameter_error(const char* param, unsigned value,
                                                          const SourceLocation& location);

inline void raise_if_null(const ErrorInfo::Ptr& error) {
    if (error.is_null()) raise_result_failure_null();
}

}  // namespace tarvcore::impl
