#include "tarvcore/impl/dump_writer.h"

#include "tarvcore/impl/debug_help.h"
#include "tarvcore/impl/fault_frame.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/impl/dump_writer.cpp#1 $");

namespace tarvcore::impl {
namespace {

MINIDUMP_TYPE contents(EDiagnosticMemoryDumpType type) {
    return type == diagnosticMemoryDumpSmall
               ? MiniDumpNormal
               : static_cast<MINIDUMP_TYPE>(MiniDumpWithFullMemory | MiniDumpWithHandleData |
                                            MiniDumpWithUnloadedModules);
}

}  // namespace

bool write_memory_dump(EDiagnosticMemoryDumpType type, unsigned long thread,
                       EXCEPTION_POINTERS& exception, const DumpPath& path) {
    const DebugHelp& help = debug_help();
    const DebugHelpLock lock;
    if (help.write_dump == nullptr || !lock.is_held()) return false;
    // For nobody else: of two that write to one path, as two machines may, one fails.
    HANDLE file = CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE | DELETE, 0, nullptr,
                              CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;

    MINIDUMP_EXCEPTION_INFORMATION cause = {thread, &exception, FALSE};
    bool written = false;
    survives([&] {
        written = help.write_dump(GetCurrentProcess(), GetCurrentProcessId(), file, contents(type),
                                  &cause, nullptr, nullptr) != 0;
    });
    if (!written) {
        // By the handle: the path may be another's as soon as this one is closed.
        FILE_DISPOSITION_INFO gone = {TRUE};
        SetFileInformationByHandle(file, FileDispositionInfo, &gone, sizeof gone);
    }
    CloseHandle(file);
    return written;
}

bool write_memory_dump(EDiagnosticMemoryDumpType type, CONTEXT& context, const DumpPath& path) {
    // Debuggers find the thread by this.
    EXCEPTION_RECORD record = {};
    record.ExceptionCode = EXCEPTION_BREAKPOINT;
    record.ExceptionAddress = reinterpret_cast<void*>(context.Eip);
    EXCEPTION_POINTERS exception = {&record, &context};
    return write_memory_dump(type, GetCurrentThreadId(), exception, path);
}

}  // namespace tarvcore::impl
