// A program's main function, with reports of what goes wrong in it.
#pragma once

#include "tarvcore/config.h"

namespace tarvcore {

// Calls a program's main function, and answers what that does.  Around the call:
//
//   - the diagnostic handler is installed (see ScopedDiagnosticSignalHandler), and the library for
//     debugging help loaded;
//   - arguments are UTF-8, whatever the process's code page; "?" stands for what is not Unicode;
//   - an exception that leaves it becomes a diagnostic line, with its record or, of another
//     std::exception, its `what()`, and the answer EXIT_FAILURE; one of unknown type gets a memory
//     dump, too (see create_dump_and_trace_anonymous_exception).
//
// A program does not call this itself: it names its function `tarvcore_main`, without a namespace,
// and links the library tarvcore::main, in which the process's entry point is.
//
//     int tarvcore_main(int argc, char** argv) {
//         serve(argc > 1 ? argv[1] : "localhost");
//         return EXIT_SUCCESS;
//     }
TARVCORE_API int intercept_main(int (*program_main)(int argc, char** argv), int argc,
                                const wchar_t* const* argv);

}  // namespace tarvcore
