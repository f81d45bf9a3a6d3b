// Memory dumps for whoever has a thread's registers.
#pragma once

#include "tarvcore/impl/dump_path.h"
#include "tarvcore/memory_dump.h"

namespace tarvcore::impl {

// Builds the path and writes the dump there; `exception` tells what happened to the thread.
// A null name: the program's.
bool write_memory_dump(EDiagnosticMemoryDumpType type, const wchar_t* name, unsigned long thread,
                       EXCEPTION_POINTERS& exception, DumpPath& path);

// The same where nothing has happened but that the calling thread came to where these registers are
// from.
bool write_memory_dump(EDiagnosticMemoryDumpType type, const wchar_t* name, CONTEXT& context,
                       DumpPath& path);

}  // namespace tarvcore::impl
