// What happens when an assertion fails.
#pragma once

#include "tarvcore/config.h"

namespace tarvcore {

// The entry point of failed debug assertions.  True: go on.  False: break into the debugger.
//
//     bool check(bool condition, const char* expression, const char* file, unsigned line) {
//         return condition ||
//                tarvcore::report_failed_debug_assert(file, line, nullptr, expression, nullptr);
//     }
//     #define MY_ASSERT(x) ((void)(check((x), #x, __FILE__, __LINE__) || (DebugBreak(), false)))
//
// A message box shows program, time, thread, place and stack trace, and asks what to do:
//
//     Abort           the process raises SIGABRT and ends with status 3; with SHIFT or CTRL held,
//                     after a full memory dump (see create_diagnostic_memory_dump)
//     Retry           false; with SHIFT or CTRL raises "error.exception.assert"
//     Ignore          true; with SHIFT or CTRL also from now on, at this file and line, without a
//                     box
//
// The same goes, as one diagnostic line, to the trace hooks (see set_diagnostic_trace_handlers),
// unless their query does not want it.
//
// Where nobody sits to answer, set the environment variable ZOLT_ASSERT_THROW_ALWAYS to "true" or
// "yes" in any case, to "1" or to nothing: failed assertions then raise "error.exception.assert"
// without a box or a line.  It is read anew every time.
//
// Function, expression and details may be null.  Any thread may call this, several at once: each
// has a box of its own.
TARVCORE_API bool report_failed_debug_assert(const char* file, unsigned int line,
                                             const char* function, const char* expression,
                                             const char* details);

}  // namespace tarvcore
