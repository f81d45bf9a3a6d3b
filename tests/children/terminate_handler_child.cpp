// Comes to grief in the way that its first argument names, with the diagnostic handler installed.
// The second is the way's own.

#include "tarvcore/terminate_handler.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>

#include "tarvcore/diagnostic_trace.h"
#include "tarvcore/error_code_constants.h"
#include "tarvcore/error_exception.h"
#include "tarvcore/impl/debug_help.h"
#include "tarvcore/impl/trace_line.h"
#include "tests/support/allocations.h"
//
#include <windows.h>

TARVCORE_SOURCE_FILE("$Id: //tests/children/terminate_handler_child.cpp#1 $");

namespace {

using namespace tarvcore;

const DWORD main_thread = GetCurrentThreadId();
const impl::DebugHelpCalls* const system_calls = impl::debug_help_calls;

// Writes none, and says so where the dump would not be that of the main thread, or not a full one.
BOOL WINAPI write_dump(HANDLE, DWORD, HANDLE, MINIDUMP_TYPE type,
                       PMINIDUMP_EXCEPTION_INFORMATION cause, PMINIDUMP_USER_STREAM_INFORMATION,
                       PMINIDUMP_CALLBACK_INFORMATION) {
    return cause->ThreadId == main_thread && (type & MiniDumpWithFullMemory) != 0;
}

// Dumps take seconds.
decltype(&write_dump) dump_function = nullptr;
const impl::DebugHelpCalls without_dumps = {
    []() -> const impl::DebugHelp& {
        static impl::DebugHelp help = system_calls->load();
        help.write_dump = dump_function;
        return help;
    },
};

volatile int zero = 0;
int* volatile nowhere = reinterpret_cast<int*>(0x10);

int overflow(int depth) {
    volatile char room[4096];
    room[0] = static_cast<char>(depth);
    return depth < 0 ? 0 : overflow(depth + 1) + room[0];
}

[[gnu::noinline]] void fail(const std::string& way, int argument = 0) {
    if (way == "ours") throw_error(error::tarvcore_uuid_parse, "Bad UUID", SourceLocation());
    if (way == "standard") throw std::runtime_error("it went wrong");
    if (way == "unknown") throw 42;
    if (way == "noexcept") []() noexcept { fail("unknown"); }();
    if (way == "terminate") {
        std::signal(SIGABRT, [](int) {
            std::fputs("aborts", stdout);
            std::fflush(stdout);
        });
        std::terminate();
    }
    if (way == "read") std::exit(*nowhere);
    if (way == "write") *nowhere = 1;
    if (way == "call") std::abs(reinterpret_cast<int (*)()>(0x20)());
    if (way == "divide") std::exit(100 / zero);
    if (way == "illegal") __builtin_trap();
    if (way == "own") RaiseException(0xE1234567, 0, 0, nullptr);
    if (way == "overflow") std::exit(overflow(0));
    if (way == "smashed") {
        std::memset(__builtin_frame_address(0), 0x5A, 64);
        *nowhere = 1;
    }
    if (way == "thread") std::thread(fail, "write", 0).join();
    if (way == "hook") {
        const DiagnosticTraceFunction hooks[] = {
            [](auto&, auto&, auto, auto) { return *nowhere == 1; },
            [](auto&, auto&, auto, auto) -> bool { throw 42; },
            [](auto&, auto&, auto, auto) { return Sleep(INFINITE), true; },
            [](auto&, auto&, auto, auto) -> bool {
                std::thread(fail, "write", 0).detach();
                Sleep(100);
                throw 42;
            },
        };
        if (argument == 2) impl::longest_hook_call = 300;  // the others may be slow, too
        set_diagnostic_trace_handlers(nullptr, hooks[argument], nullptr);
        *nowhere = 1;
    }
    // From that allocation on: in the report of a fault, or of an exception.
    static tarv_test::AllocationWatch watch;
    watch.fail_from(argument);
    if (way == "fault without memory") *nowhere = 1;
    throw 42;
}

}  // namespace

int main(int, char** argv) {
    std::string way = argv[1];
    if (constexpr std::string_view dump = ", dump"; way.ends_with(dump)) {
        way.resize(way.size() - dump.size());
        dump_function = write_dump;
    }
    impl::debug_help_calls = &without_dumps;
    const ScopedDiagnosticSignalHandler handler;
    if (way == "restored") {
        { const ScopedDiagnosticSignalHandler inner; }
        fail("unknown");
    }
    fail(way, std::atoi(argv[2]));
}
