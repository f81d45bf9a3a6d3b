#include "tarvcore/terminate_handler.h"

#include <atomic>
#include <cstdio>
#include <string_view>

#include "tarvcore/diagnostic_trace.h"
#include "tarvcore/impl/dump_credits.h"
#include "tarvcore/impl/dump_writer.h"
#include "tarvcore/impl/fault_frame.h"
#include "tarvcore/impl/fault_record.h"
#include "tarvcore/impl/process_end.h"
#include "tarvcore/impl/stack_walk.h"
#include "tarvcore/impl/stream_text.h"
#include "tarvcore/impl/trace_line.h"
#include "tarvcore/impl/unicode_kernels.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/terminate_handler.cpp#1 $");

namespace tarvcore {
namespace {

constexpr char abort_line[] = "!!!!! Aborting process NOW !!!!!";

// No memory, no hooks, no library.
void write_plainly(std::string_view text) {
    for (const std::string_view part : {std::string_view("\n*** "), text, std::string_view("\n")})
        impl::write_to_standard_error(part);
}

// The first thread that gets here reports; another one that does so, too, waits for the end, though
// not for ever; and the same one, coming here again, has failed to report.
class Entry {
public:
    static void enter() {
        const DWORD thread = GetCurrentThreadId();
        DWORD nobody = 0;
        if (reporter.compare_exchange_strong(nobody, thread)) return;
        if (reporter.load() != thread) wait_for_end();
        give_up();
    }
    // For the thread that reports in place of this one.
    static void hand_over(DWORD thread) { reporter = thread; }
    // For one that another may have taken the report from.
    static void stay() {
        if (reporter.load() != GetCurrentThreadId()) wait_for_end();
    }

    [[noreturn]] static void give_up() {
        write_plainly("The report of a fault failed.");
        write_plainly(abort_line);
        TerminateProcess(GetCurrentProcess(), 3);
        __builtin_unreachable();
    }

private:
    [[noreturn]] static void wait_for_end() {
        constexpr DWORD longest_wait = 120'000;  // milliseconds; a full dump may take that long
        Sleep(longest_wait);
        give_up();
    }

    static constinit inline std::atomic<DWORD> reporter = 0;
};

// What happened to a thread.
struct Fault {
    DWORD thread;
    EXCEPTION_POINTERS* exception;
    ErrorInfo::Ptr error = {};  // null where there was no memory for it
};

// Around what may call a hook.
class HookCall {
public:
    // Never 0, nor ahead of the clock: that would be a long time ago.
    HookCall() { since = (GetTickCount() - 1) | 1; }
    ~HookCall() {
        since = 0;
        Entry::stay();
    }
    HookCall(const HookCall&) = delete;
    HookCall& operator=(const HookCall&) = delete;

    static bool takes_too_long() {
        const DWORD begin = since;
        return begin != 0 && GetTickCount() - begin >= impl::longest_hook_call;
    }

private:
    static constinit inline std::atomic<DWORD> since = 0;  // ticks; 0: in none
};

void write_line(const SourceLocation& where, const char* format, const impl::TraceTexts& texts) {
    const HookCall call;
    impl::write_diagnostic_trace(where, SourceString(format, true), texts);
}

// What fails for want of memory is left out: what comes next may need none.
template <class Step>
bool attempt(Step step) {
    try {
        step();
        return true;
    } catch (...) {
        return false;
    }
}

void write_record(const Fault& fault, const SourceLocation& where) {
    const bool is_written = fault.error != nullptr && attempt([&] {
                                write_line(where, "Exception that probably caused termination: {}",
                                           impl::TraceTexts().add(impl::stream_text(fault.error)));
                            });
    if (is_written) return;
    const EXCEPTION_RECORD& cause = *fault.exception->ExceptionRecord;
    char text[100];
    std::snprintf(text, sizeof text, "Fault 0x%08lx at address 0x%p; no memory is left for more.",
                  cause.ExceptionCode, cause.ExceptionAddress);
    write_plainly(text);
}

void write_dump(const Fault& fault, const SourceLocation& where) {
    const bool has_credit = impl::dump_credits.take([] {
        const HookCall call;
        return impl::diagnostic_trace_period();
    });
    impl::DumpPath path;
    const bool is_written =
        has_credit && path.build(nullptr, fault.thread) &&
        impl::write_memory_dump(diagnosticMemoryDumpFull, fault.thread, *fault.exception, path);
    if (!is_written) return;
    attempt([&] {
        write_line(where, "Created memory dump: {}",
                   impl::TraceTexts().add(
                       impl::utf16_to_utf8_replacing(path.c_str(), path.length(), '?')));
    });
}

[[noreturn]] void write_report(const Fault& fault) {
    static constexpr LiteralLocation here = TARVCORE_LOCATION("ScopedDiagnosticSignalHandler");
    const SourceLocation where =
        fault.error != nullptr ? fault.error->location() : SourceLocation(here);
    write_record(fault, where);
    write_dump(fault, where);
    if (!attempt([&] { write_line(where, abort_line, {}); })) write_plainly(abort_line);
    impl::abort_process();
}

// A hook may never come back, for want of a lock that the thread in trouble holds, say.  Then this
// one begins the report again, without hooks.
DWORD __stdcall watch_hooks(void* fault) {
    constexpr DWORD interval = 100;  // milliseconds
    while (!HookCall::takes_too_long())
        Sleep(interval);
    const impl::FaultFrame frame([](impl::FaultFrame&) { Entry::give_up(); });
    set_diagnostic_trace_handlers(nullptr, nullptr, nullptr);
    Entry::hand_over(GetCurrentThreadId());
    write_report(*static_cast<const Fault*>(fault));
}

[[noreturn]] void report(const Fault& fault) {
    if (impl::has_diagnostic_hooks()) {
        HANDLE thread =
            CreateThread(nullptr, 0, watch_hooks, const_cast<Fault*>(&fault), 0, nullptr);
        if (thread != nullptr) CloseHandle(thread);
    }
    write_report(fault);
}

[[noreturn]] void report_fault(Fault& fault) {
    const impl::FaultFrame frame([](impl::FaultFrame&) { Entry::give_up(); });
    attempt([&] { fault.error = impl::fault_record(fault.thread, *fault.exception); });
    report(fault);
}

DWORD __stdcall report_overflow(void* argument) {
    report_fault(*static_cast<Fault*>(argument));
}

long __stdcall on_fault(EXCEPTION_POINTERS* exception) {
    Entry::enter();
    Fault fault = {GetCurrentThreadId(), exception};
    if (exception->ExceptionRecord->ExceptionCode != EXCEPTION_STACK_OVERFLOW) report_fault(fault);
    // What is left of this stack is a page or two.
    DWORD id = 0;
    HANDLE thread = CreateThread(nullptr, 0, report_overflow, &fault, CREATE_SUSPENDED, &id);
    if (thread == nullptr) Entry::give_up();
    Entry::hand_over(id);
    ResumeThread(thread);
    WaitForSingleObject(thread, INFINITE);
    impl::abort_process();
}

[[noreturn]] void on_terminate() {
    Entry::enter();
    CONTEXT context = {};
    TARVCORE_CAPTURE_CONTEXT(context);
    const impl::FaultFrame frame([](impl::FaultFrame&) { Entry::give_up(); });
    // Debuggers find the thread by this.
    EXCEPTION_RECORD record = {};
    record.ExceptionCode = EXCEPTION_NONCONTINUABLE_EXCEPTION;
    record.ExceptionAddress = reinterpret_cast<void*>(context.Eip);
    EXCEPTION_POINTERS exception = {&record, &context};
    Fault fault = {GetCurrentThreadId(), &exception};
    attempt([&] { fault.error = impl::termination_record(context); });
    report(fault);
}

}  // namespace

ScopedDiagnosticSignalHandler::ScopedDiagnosticSignalHandler()
    : old_terminate_handler_(std::set_terminate(on_terminate)),
      old_fault_filter_(SetUnhandledExceptionFilter(on_fault)) {}

ScopedDiagnosticSignalHandler::~ScopedDiagnosticSignalHandler() {
    SetUnhandledExceptionFilter(old_fault_filter_);
    std::set_terminate(old_terminate_handler_);
}

}  // namespace tarvcore
