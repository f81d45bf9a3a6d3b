// A report of what ended the process.
#pragma once

#include <exception>

#include "tarvcore/config.h"

struct _EXCEPTION_POINTERS;

namespace tarvcore {

// While it lives, the library's diagnostic handler is that of the process for std::terminate and
// for exceptions of the system that nobody handles, such as access violations; then the handlers
// are set again that there were before.  For the start of a process; guards end in the reverse
// order of their begins.
//
// The handler writes diagnostic lines (see set_diagnostic_trace_handlers):
//
//     Exception that probably caused termination: [...]
//     !!!!! Aborting process NOW !!!!!
//
// with what happened (a C++ exception with its type, and its text if it is a tarvcore
// ErrorException or a std::exception; an access violation with its address and kind; another fault
// with its name), by which thread, with registers and stack trace, and the path of a full memory
// dump as long as there are credits for one (see create_dump_and_trace_anonymous_exception).  Then
// the process raises SIGABRT and ends with status 3.
//
// What goes wrong in there ends the process, too, with a shorter line; what needs memory is left
// out where there is none.  A hook that does not come back within a minute is left behind: another
// thread begins the report again, on standard error.  An overflow of the stack is reported by a
// thread of its own.
class TARVCORE_API ScopedDiagnosticSignalHandler {
public:
    // Keeps the handlers that there were.
    ScopedDiagnosticSignalHandler();
    ~ScopedDiagnosticSignalHandler();
    ScopedDiagnosticSignalHandler(const ScopedDiagnosticSignalHandler&) = delete;
    ScopedDiagnosticSignalHandler& operator=(const ScopedDiagnosticSignalHandler&) = delete;

private:
    // The signature of the system's filters for such exceptions.
    using FaultFilter = long(__stdcall*)(_EXCEPTION_POINTERS*);

    std::terminate_handler old_terminate_handler_;
    FaultFilter old_fault_filter_;
};

}  // namespace tarvcore
