// The record of an exception of unknown type.

#include "tarvcore/error_code_constants.h"
#include "tarvcore/error_info.h"
#include "tarvcore/impl/thread_state.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/anonymous_exception.cpp#1 $");

namespace tarvcore {

ErrorInfo::Ptr ErrorInfo::from_anonymous_exception(const SourceLocation& where) {
    CONTEXT context = {};
    TARVCORE_CAPTURE_CONTEXT(context);
    return create(error::exception_unknown,
                  "Unknown exception occurred! \n\nRegisters: \n{@registers}\n\nStack Trace: "
                  "\n{@stackTrace}\nStack Dump: \n{@stackDump}",
                  impl::thread_state(GetCurrentThreadId(), context, impl::walk_own_stack(context)),
                  where);
}

}  // namespace tarvcore
