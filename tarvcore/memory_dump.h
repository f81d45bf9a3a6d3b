// Dumps of this process, to be looked at with a debugger.
#pragma once

#include "tarvcore/config.h"

namespace tarvcore {

// How much of the process goes into a dump.
enum EDiagnosticMemoryDumpType {
    diagnosticMemoryDumpFull = 0,   // all memory, handles, modules that are gone; any other number
                                    // means this, too
    diagnosticMemoryDumpSmall = 2,  // threads, their stacks, modules
};

// Writes a dump and puts the path of its file, in UTF-8 with a terminator, into `path_out`.  False,
// with `path_out` untouched and no file left behind: the dump could not be written, or its path
// does not fit into `path_out_size` bytes.  Never raises.  For any thread; the dump shows the
// caller as the thread that something happened to.
//
// The file is FOLDER\PROGRAM_TIME_PROCESS_THREAD.dmp:
//
//     FOLDER   a folder named after the local date, as 2014-07-16, within that of the environment
//              variable ZOLT_TRACE_ROOT; both are made if need be.  Where that cannot be had, the
//              folder of the process for temporary files
//     PROGRAM  the program's file without folder and extension; or `name`, in UTF-8, unless that is
//              null or empty, with "_" for what file names cannot have
//     TIME     the local time, as 20140716132305
//     PROCESS  its number, decimal
//     THREAD   its number, hexadecimal
//
// Another dump by the same thread within a second takes the place of the first.
TARVCORE_API bool create_diagnostic_memory_dump(EDiagnosticMemoryDumpType type, const char* name,
                                                char* path_out, unsigned path_out_size);

// Loads the platform's debugging-help library now, so that it does not have to be loaded once the
// process is in trouble.  Without that library there are neither dumps nor names of functions.
TARVCORE_API void preinitialize_diagnostics_libraries();

}  // namespace tarvcore
