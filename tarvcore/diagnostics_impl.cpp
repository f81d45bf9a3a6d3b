#include "tarvcore/diagnostics_impl.h"

#include "tarvcore/error_info.h"
#include "tarvcore/impl/dump_credits.h"
#include "tarvcore/impl/stream_text.h"
#include "tarvcore/impl/trace_line.h"
#include "tarvcore/memory_dump.h"
#include "tarvcore/streamers.h"
//
#include <windows.h>

TARVCORE_SOURCE_FILE("$Id: //tarvcore/diagnostics_impl.cpp#1 $");

namespace tarvcore {

constinit impl::DumpCredits impl::dump_credits;

namespace {

void report(const SourceLocation& where) {
    const bool has_credit = impl::dump_credits.take(impl::diagnostic_trace_period);
    char path[512];  // longer ones get no dump
    const bool has_dump = has_credit && create_diagnostic_memory_dump(diagnosticMemoryDumpFull,
                                                                      nullptr, path, sizeof path);
    const ErrorInfo::Ptr error = ErrorInfo::from_anonymous_exception(where);

    impl::TraceTexts texts;
    texts.add(impl::stream_text(streamers::Hex(GetCurrentThreadId(), false)));
    if (has_dump) texts.add(path);
    texts.add(impl::stream_text(error));
    const char* const format =
        !has_credit ? "Unknown exception occurred on thread {} (no dump created as dump credits "
                      "exhausted).  Error: {}"
        : has_dump ? "Unknown exception occurred on thread {}.  Created memory dump: {}.  Error: {}"
                   : "Unknown exception occurred on thread {} (unable to create dump).  Error: {}";
    impl::write_diagnostic_trace(where, SourceString(format, true), texts);
}

}  // namespace

void create_dump_and_trace_anonymous_exception(const SourceLocation& where) noexcept {
    try {
        report(where);
    } catch (...) {
        // No memory is left, most likely.  The caller has an exception of its own to get through.
    }
}

}  // namespace tarvcore
