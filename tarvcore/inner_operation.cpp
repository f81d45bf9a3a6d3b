#include "tarvcore/inner_operation.h"

#include "tarvcore/error_code_constants.h"
#include "tarvcore/error_exception.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/inner_operation.cpp#1 $");

namespace tarvcore::impl {

void signal_escaped_error(AsyncResultBase& outer, const std::exception& escaped) {
    const auto error = ErrorInfo::from_exception(
        escaped, TARVCORE_LOCATION("tarvcore::impl::signal_escaped_error()"));
    try {
        outer.on_async_result_error(error);
    } catch (const ErrorException& refusal) {
        if (!refusal.matches(error::tarvcore_result_redundantSignal)) throw;
        raise_redundant_signal_error(error, true);
    }
}

}  // namespace tarvcore::impl
