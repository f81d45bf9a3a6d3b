// Memory dumps for whoever has a thread's registers.
#pragma once

#include "tarvcore/impl/dump_path.h"
#include "tarvcore/memory_dump.h"

namespace tarvcore::impl {

// Writes a dump; `exception` tells what happened to the thread.
bool write_memory_dump(EDiagnosticMemoryDumpType type, unsigned long thread,
                       EXCEPTION_POINTERS& exception, const DumpPath& path);

// The same where nothing has happened but that the calling thread came to where these registers are
// from.
bool write_memory_dump(EDiagnosticMemoryDumpType type, CONTEXT& context, const DumpPath& path);

}  // namespace tarvcore::impl
