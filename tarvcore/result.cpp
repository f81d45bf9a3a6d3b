#include "tarvcore/result.h"

#include "tarvcore/error_code_constants.h"
#include "tarvcore/error_params.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/result.cpp#1 $");

namespace tarvcore {
namespace impl {
namespace {

constexpr char cancelled_message[] = "Operation cancelled";

// Records that are never destroyed: other modules hold them while this one is being unloaded.
struct SharedErrors {
    const ErrorInfo* not_signaled = create_literal_record(
        error::tarvcore_result_notSignaled,
        "An asynchronous result handler is being destroyed but the result has not been signaled.",
        TARVCORE_LOCATION("#none#"));
    const ErrorInfo* unexpected_asynchrony =
        create_literal_record(error::tarvcore_result_invalidAsynchrony,
                              "Asynchronous operation initiated with result_error_if_async()",
                              TARVCORE_LOCATION("#none#"));
    const ErrorInfo* cancelled = create_literal_record(
        error::tarvcore_result_cancelled, cancelled_message, TARVCORE_LOCATION("#none#"));
};

const SharedErrors& shared_errors() {
    static const SharedErrors errors;
    return errors;
}

// Made at load, unless another initialiser has asked for one before.
[[maybe_unused]] const SharedErrors& made_at_load = shared_errors();

}  // namespace

// A second reference, besides that of the record's making, which nobody gives back.
const ErrorInfo::Ptr ResultInnerInvokerTagBase::sm_outerOperationCancelled(
    create_literal_record(error::tarvcore_result_cancelled_innerOperation,
                          "The outer operation was cancelled before the inner operation completed.",
                          TARVCORE_LOCATION("#NONE#")));

ErrorInfo::Ptr create_result_not_signaled_error() {
    return shared_errors().not_signaled;
}

ErrorInfo::Ptr create_unexpected_asynchrony_error() {
    return shared_errors().unexpected_asynchrony;
}

// The names of this function and of one below are reported with a single colon: users compare them.
ErrorInfo::Ptr create_result_cancel_error(const ErrorInfo::Ptr& reason) {
    if (reason.is_null()) return shared_errors().cancelled;
    return ErrorInfo::create(error::tarvcore_result_cancelled, cancelled_message,
                             TARVCORE_LOCATION("tarvcore:impl::create_result_cancel_error()"),
                             reason);
}

bool result_was_cancelled(const ErrorInfo::Ptr& error) {
    return error && error->matches(error::tarvcore_result_cancelled);
}

void raise_not_waitable_error() {
    // "attemped": logs are searched for it.
    throw_error(error::tarvcore_result_notWaitable,
                "Operation requiring a waitable object attemped on a Result which is not waitable.",
                TARVCORE_LOCATION("tarvcore::impl::raise_not_waitable_error()"));
}

void raise_result_failure_null() {
    throw_error(error::tarvcore_result_badParameter, "Null ErrorInfo pointer",
                TARVCORE_LOCATION("tarvcore::impl::raise_result_failure_null()"));
}

void raise_redundant_signal_error(ErrorInfo::Ptr nested, bool success_callback) {
    throw_error(
        error::tarvcore_result_redundantSignal,
        MessageTemplate(success_callback
                            ? "A success callback PROBABLY allowed an exception to escape."
                            : "A result which had already been signaled, was signaled again."),
        TARVCORE_LOCATION("tarvcore:impl::raise_redundant_signal_error()"), nested);
}

void raise_null_parameter_error(const char* param, unsigned value, const SourceLocation& location) {
    throw_error(error::tarvcore_result_badParameter, "Invalid '{@param}' value: {@value}",
                ErrorParams().add("param", param).add("value", value), location);
}

ResultImplBase::ResultImplBase() = default;
ResultImplBase::~ResultImplBase() = default;

RefCountPtr<const ResultImpl<void>> ValueResultImpl<void>::instance() {
    // Never destroyed, like the errors above.
    static const ValueResultImpl* const shared =
        RefCountPtr<const ValueResultImpl>(new ValueResultImpl).detach();
    return shared;
}

ValueResultImpl<void>::ValueResultImpl() = default;
ValueResultImpl<void>::~ValueResultImpl() = default;

}  // namespace impl

void ResultBase::throw_if_error() const {
    ErrorException::throw_if_error(error_info());
}

void ResultBase::cancel(bool flag, const ErrorInfo::Ptr& reason) const {
    if (impl_) impl_->cancel(flag, reason);
}

}  // namespace tarvcore
