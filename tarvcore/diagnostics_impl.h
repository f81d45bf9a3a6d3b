// Reports of exceptions of unknown type.
#pragma once

#include "tarvcore/config.h"
#include "tarvcore/source_location.h"

namespace tarvcore {

// For `catch (...)`, at the top of a thread: writes a full memory dump (see
// create_diagnostic_memory_dump) and a diagnostic line (see set_diagnostic_trace_handlers) that
// names the thread, the dump and the error, which is ErrorInfo::from_anonymous_exception.  Never
// raises.
//
// In each trace period the first sixteen get a dump; without a hook for periods, the first sixteen
// of the process.  The line of the others says that there is none.
//
//     try {
//         serve();
//     } catch (const tarvcore::ErrorException& error) {
//         log(error.what());
//     } catch (...) {
//         create_dump_and_trace_anonymous_exception(TARVCORE_LOCATION("my::thread()"));
//     }
TARVCORE_API void create_dump_and_trace_anonymous_exception(const SourceLocation& where) noexcept;

}  // namespace tarvcore
