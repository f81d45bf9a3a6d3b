#include "tarvcore/terminate_handler.h"

#include <atomic>
#include <csignal>
#include <cstdlib>

#include "tarvcore/impl/dump_credits.h"
#include "tarvcore/impl/dump_writer.h"
#include "tarvcore/impl/fault_frame.h"
#include "tarvcore/impl/fault_record.h"
#include "tarvcore/impl/stack_walk.h"
#include "tarvcore/impl/stream_text.h"
#include "tarvcore/impl/trace_line.h"
#include "tarvcore/impl/unicode_kernels.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/terminate_handler.cpp#1 $");

namespace tarvcore {
namespace {

constexpr char abort_line[] = "!!!!! Aborting process NOW !!!!!";

[[noreturn]] void end_process() {
    std::raise(SIGABRT);
    _exit(3);
}

// The first thread that gets here reports; another one that does so, too, waits for the end, though
// not for ever; and the same one, coming here again, has failed to report.
class Entry {
public:
    static void enter() {
        constexpr DWORD longest_wait = 120'000;  // milliseconds; a full dump may take that long
        const DWORD thread = GetCurrentThreadId();
        DWORD nobody = 0;
        if (reporter.compare_exchange_strong(nobody, thread)) return;
        if (reporter.load() != thread) Sleep(longest_wait);
        give_up();
    }
    // For the thread that reports in place of this one.
    static void hand_over(DWORD thread) { reporter = thread; }

    // No memory, no hooks, no library.
    [[noreturn]] static void give_up() {
        constexpr char text[] = "\n*** The report of a fault failed.\n*** ";
        HANDLE errors = GetStdHandle(STD_ERROR_HANDLE);
        DWORD written = 0;
        WriteFile(errors, text, sizeof text - 1, &written, nullptr);
        WriteFile(errors, abort_line, sizeof abort_line - 1, &written, nullptr);
        WriteFile(errors, "\n", 1, &written, nullptr);
        TerminateProcess(GetCurrentProcess(), 3);
        __builtin_unreachable();
    }

private:
    static constinit inline std::atomic<DWORD> reporter = 0;
};

void write_line(const SourceLocation& where, const char* format, const impl::TraceTexts& texts) {
    impl::write_diagnostic_trace(where, SourceString(format, true), texts);
}

// What happened to a thread.
struct Fault {
    DWORD thread;
    EXCEPTION_POINTERS* exception;
};

[[noreturn]] void report(const ErrorInfo::Ptr& error, const Fault& fault) {
    const SourceLocation& where = error->location();
    write_line(where, "Exception that probably caused termination: {}",
               impl::TraceTexts().add(impl::stream_text(error)));
    if (impl::dump_credits.take(impl::diagnostic_trace_period)) {
        impl::DumpPath path;
        const bool written =
            path.build(nullptr, fault.thread) &&
            impl::write_memory_dump(diagnosticMemoryDumpFull, fault.thread, *fault.exception, path);
        if (written) {
            write_line(where, "Created memory dump: {}",
                       impl::TraceTexts().add(
                           impl::utf16_to_utf8_replacing(path.c_str(), path.length(), '?')));
        }
    }
    write_line(where, abort_line, {});
    end_process();
}

[[noreturn]] void report_fault(const Fault& fault) {
    const impl::FaultFrame frame([](impl::FaultFrame&) { Entry::give_up(); });
    report(impl::fault_record(fault.thread, *fault.exception), fault);
}

DWORD __stdcall report_overflow(void* argument) {
    report_fault(*static_cast<const Fault*>(argument));
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
    end_process();
}

[[noreturn]] void on_terminate() {
    Entry::enter();
    CONTEXT context = {};
    TARVCORE_CAPTURE_CONTEXT(context);
    const impl::FaultFrame frame([](impl::FaultFrame&) { Entry::give_up(); });
    const ErrorInfo::Ptr error = impl::termination_record(context);
    // Debuggers find the thread by this.
    EXCEPTION_RECORD record = {};
    record.ExceptionCode = EXCEPTION_NONCONTINUABLE_EXCEPTION;
    record.ExceptionAddress = reinterpret_cast<void*>(context.Eip);
    EXCEPTION_POINTERS exception = {&record, &context};
    report(error, {GetCurrentThreadId(), &exception});
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
