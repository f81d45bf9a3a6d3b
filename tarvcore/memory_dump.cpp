#include "tarvcore/memory_dump.h"

#include "tarvcore/impl/debug_help.h"
#include "tarvcore/impl/dump_writer.h"
#include "tarvcore/impl/measured_length.h"
#include "tarvcore/impl/stack_walk.h"
#include "tarvcore/ucsutil.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/memory_dump.cpp#1 $");

namespace tarvcore {
namespace {

using impl::DumpPath;
using impl::up_to_terminator;

// A path as text with its terminator; the same rules as wstr_to_utf8.
unsigned put_path(const DumpPath& path, char* text, unsigned size) {
    return wstr_to_utf8(path.c_str(), up_to_terminator, text, size, '?', nullptr);
}

}  // namespace

bool create_diagnostic_memory_dump(EDiagnosticMemoryDumpType type, const char* name, char* path_out,
                                   unsigned path_out_size) {
    CONTEXT context = {};
    TARVCORE_CAPTURE_CONTEXT(context);

    wchar_t wide_name[DumpPath::capacity];
    const bool has_name = name != nullptr && *name != '\0';
    if (has_name &&
        utf8_to_wstr(name, up_to_terminator, wide_name, DumpPath::capacity, L'_', nullptr) == 0) {
        return false;
    }
    DumpPath path;
    if (!path.build(has_name ? wide_name : nullptr, GetCurrentThreadId()) ||
        put_path(path, nullptr, 0) > path_out_size ||
        !impl::write_memory_dump(type, context, path)) {
        return false;
    }
    put_path(path, path_out, path_out_size);
    return true;
}

void preinitialize_diagnostics_libraries() {
    impl::debug_help();
}

}  // namespace tarvcore
