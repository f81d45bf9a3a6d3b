// Where this process takes the library's diagnostic lines.
#pragma once

#include "tarvcore/config.h"
#include "tarvcore/source_location.h"
#include "tarvcore/source_string.h"

namespace tarvcore {

// The current trace period: a number that changes when a new one begins, such as that of the log
// file in use.  Memory dumps are rationed by it.
using DiagnosticTracePeriodFunction = unsigned int (*)();

// Writes a line: a format with "{}" places, and the texts that fill them, in UTF-8, with a NUL
// between one and the next.  `size` is that of all texts; a NUL that it does not count ends the
// last.  The library does nothing with the answer.
//
// As a query: answers whether lines of failed assertions that a box asks about are wanted; all
// other lines are written without asking.  Everything given to it is empty, and `data` null.
using DiagnosticTraceFunction = bool (*)(const SourceLocation& where, const SourceString& format,
                                         const char* data, unsigned int size);

// Sets the hooks of the process; a null one stands for none.  Without a period the period is always
// 0, without a query lines are wanted, and without a trace function they go to standard error and
// to the debugger's output, once each, with the place's path in front:
//
//     *** //server/session.cpp#1 - Unknown exception occurred on thread 0x1a2c.  [...]
//
// For the start of the process: each hook is exchanged atomically, but not all of them together,
// and lines that other threads write meanwhile may still go to the old ones.  A hook may be called
// by any thread, by several at once, and while the process is in trouble.  It does not raise; one
// that does counts as none.
TARVCORE_API void set_diagnostic_trace_handlers(DiagnosticTracePeriodFunction period_fn,
                                                DiagnosticTraceFunction trace_fn,
                                                DiagnosticTraceFunction query_fn);

}  // namespace tarvcore
