#include "tarvcore/diagnostics_impl_win_common.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <iterator>
#include <new>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>

#include "ace/Guard_T.h"
#include "tarvcore/abs_rel_time.h"
#include "tarvcore/error_code_constants.h"
#include "tarvcore/error_exception.h"
#include "tarvcore/impl/dump_writer.h"
#include "tarvcore/impl/process_end.h"
#include "tarvcore/impl/stack_walk.h"
#include "tarvcore/impl/trace_line.h"
#include "tarvcore/impl/unicode_codec.h"
#include "tarvcore/impl/unicode_kernels.h"
#include "tarvcore/impl/user_interface.h"
#include "tarvcore/streamers.h"
#include "tarvcore/thread_mutex.h"
#include "tarvcore/to_string.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/diagnostics_impl_win_common.cpp#1 $");

namespace tarvcore {
namespace {

// A failed assertion, as it was reported.
struct Failure {
    const char* file;
    unsigned line;
    const char* function;    // may be null, as may be
    const char* expression;  // this
    const char* details;     // and this
    AbsoluteTime time = AbsoluteTime::now();
};

const char* or_empty(const char* text) {
    return text == nullptr ? "" : text;
}

// Where assertions are ignored.  Sites are only added.
class IgnoredSites {
public:
    bool contains(const Failure& failure) {
        const ACE_Guard<ThreadMutex> guard(mutex_);
        return sites_.contains(View(failure.file, failure.line));
    }
    // Without memory the next failure asks again.
    void add(const Failure& failure) {
        const ACE_Guard<ThreadMutex> guard(mutex_);
        try {
            sites_.emplace(failure.file, failure.line);
        } catch (const std::bad_alloc&) {
        }
    }

    // Lives as long as the process: assertions may fail at its very end.
    static IgnoredSites& instance() {
        alignas(IgnoredSites) static char memory[sizeof(IgnoredSites)];
        static auto* const sites = new (memory) IgnoredSites;
        return *sites;
    }

private:
    using View = std::pair<std::string_view, unsigned>;

    struct Less {
        using is_transparent = void;
        bool operator()(const View& a, const View& b) const { return a < b; }
    };

    ThreadMutex mutex_;
    std::set<std::pair<std::string, unsigned>, Less> sites_;
};

bool throws_always() {
    wchar_t value[261];
    SetLastError(ERROR_SUCCESS);
    const DWORD length =
        GetEnvironmentVariableW(L"ZOLT_ASSERT_THROW_ALWAYS", value, std::size(value));
    if (length == 0) return GetLastError() == ERROR_SUCCESS;
    if (length >= std::size(value)) return false;
    return _wcsicmp(value, L"true") == 0 || _wcsicmp(value, L"yes") == 0 ||
           std::wcscmp(value, L"1") == 0;
}

std::string program_path() {
    wchar_t path[MAX_PATH];
    const unsigned long length = impl::dump_path_calls.load()->program(path, MAX_PATH);
    if (length == 0) return "<unknown>";
    // What does not fit is cut off, and counted with the terminator.
    return impl::utf16_to_utf8_replacing(path, length < MAX_PATH ? length : MAX_PATH - 1, '?');
}

// The circumstances.
struct Report {
    explicit Report(const Failure& what) : failure(what) {}

    Failure failure;
    std::string time = failure.time.as_string();
    std::string program = program_path();
    unsigned long process = GetCurrentProcessId();
    unsigned long thread = GetCurrentThreadId();
};

std::string dialog_text(const Report& report, const std::string& stack_trace) {
    constexpr unsigned longest_path = 100;  // characters
    constexpr unsigned most_frames = 24;    // a box higher than the screen has no buttons

    const Failure& failure = report.failure;
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << "Debug Assertion Failed!\n\nProgram: ";
    std::size_t begin = report.program.size();
    for (unsigned shown = 0; begin != 0 && shown < longest_path;)
        shown += !impl::is_utf8_continuation(report.program[--begin]);
    text << (begin == 0 ? "" : "...") << report.program.substr(begin);
    text << "\nTimeUTC: " << report.time << "\nProcessId: " << report.process
         << "\nFile: " << failure.file << "\nLine: " << failure.line;
    if (failure.function != nullptr) text << "\nFunction: " << failure.function;
    if (failure.expression != nullptr) text << "\n\nExpression: " << failure.expression;
    if (failure.details != nullptr) text << "\n\nDetails: " << failure.details;
    text << "\n\nThreadId: " << report.thread << " (" << streamers::Hex(report.thread, false)
         << "), Stack Trace:\n";

    std::size_t end = 0;
    for (unsigned i = 0; i < most_frames && end < stack_trace.size(); ++i)
        end = stack_trace.find('\n', end) + 1;
    text << stack_trace.substr(0, end) << (end < stack_trace.size() ? "...\n" : "")
         << "\n\n(Press Retry to debug, SHIFT+Retry to throw exception, SHIFT+Abort for memory "
            "dump and abort, SHIFT-Ignore to ignore always)";
    return text.str();
}

struct Answer {
    int button = IDIGNORE;
    bool has_modifier = false;
};

Answer ask(const wchar_t* text) {
    const int button = impl::show_message_box(
        text, MB_ABORTRETRYIGNORE | MB_ICONSTOP | MB_TASKMODAL | MB_SETFOREGROUND);
    return {button, impl::is_modifier_held()};
}

Answer ask(const Report& report, const std::string& stack_trace) {
    const std::wstring text = to_wstring(dialog_text(report, stack_trace), L'?', nullptr);
    if (text.find(L'\0') != std::wstring::npos) impl::raise_embedded_nul_error();
    return ask(text.c_str());
}

void trace(const Report& report, const std::string& stack_trace) {
    static constexpr char format[] =
        "Debug Assertion Failed! \nProgram:    {}\nTimeUTC:    {}\nProcessId:  {}\nFile:       {}\n"
        "Line:       {}\nFunction:   {}\n\nExpression: {}\n\nDetails:    {}\n\n"
        "---BeginStackTrace---\n{}---EndStackTrace---";
    const Failure& failure = report.failure;
    impl::TraceTexts texts;
    texts.add(report.program)
        .add(report.time)
        .add(std::to_string(report.process))
        .add(failure.file)
        .add(std::to_string(failure.line))
        .add(or_empty(failure.function))
        .add(or_empty(failure.expression))
        .add(or_empty(failure.details))
        .add(stack_trace);
    // The place that failed, of texts that the hook may keep.
    const SourceLocation where(SourceString(or_empty(failure.function)), SourceString(failure.file),
                               failure.line);
    impl::write_diagnostic_trace(where, SourceString(format, true), texts);
}

[[noreturn]] void raise(const Report& report) {
    const Failure& failure = report.failure;
    // Two places have no parameters: meant, what reads these texts looks for them as they stand.
    throw_error(ErrorInfo::create(
        error::exception_assert,
        "Debug Assertion Failed! \nProgram: {@progname}\nTimeUTC: {@timestampUtc}\nProcessId: "
        "{@processId}\nFile: {@filename}\nLine: {@line}\nFunction: {@function}\n\nExpression: "
        "{@expression}\n\nDetails: {@details}\n\nThreadId: {@threadId}, Stack "
        "Trace:\n{@stackTrace}\nStackDump:\n{@stackDump}",
        ErrorParams()
            .add("timestampUtc", report.time)
            .add("progname", report.program)
            .add("processId", report.process)
            .add("filename", failure.file)
            .add("line", failure.line)
            .add("function", or_empty(failure.function))
            .add("expression", or_empty(failure.expression))
            .add("details", or_empty(failure.details))
            .add("threadId", report.thread),
        TARVCORE_LOCATION("tarvcore::impl::report_failed_assert_aux()")));
}

void dump(CONTEXT& context) {
    constexpr unsigned flags = MB_OK | MB_TASKMODAL | MB_SETFOREGROUND;
    impl::DumpPath path;
    if (path.build(nullptr, GetCurrentThreadId()) &&
        impl::write_memory_dump(diagnosticMemoryDumpFull, context, path)) {
        wchar_t text[impl::DumpPath::capacity + 40] = L"Dump created and saved to: ";
        std::wcscat(text, path.c_str());
        impl::show_message_box(text, flags | MB_ICONINFORMATION);
    } else {
        impl::show_message_box(L"Creation of dump failed", flags | MB_ICONEXCLAMATION);
    }
}

// For a process that has no memory left.
class BriefReport {
public:
    explicit BriefReport(const Failure& failure) {
        std::snprintf(line_, size,
                      "\n*** Debug Assertion Failed!\n\nFile: %s\nLine: %u\n\nExpression: %s\n",
                      failure.file, failure.line, or_empty(failure.expression));
        const auto ascii = [](char c) { return c < 0 ? L'?' : static_cast<wchar_t>(c); };
        std::transform(std::begin(line_) + std::strlen("\n*** "), std::end(line_), text_, ascii);
    }
    const char* line() const { return line_; }
    const wchar_t* text() const { return text_; }

private:
    static constexpr unsigned size = 512;

    char line_[size] = {};
    wchar_t text_[size];
};

// Asks and traces, as far as that is wanted.
Answer report(const Failure& failure, const CONTEXT& context, bool is_asked, bool is_traced) {
    std::optional<Answer> answer;
    if (!is_asked) answer.emplace();
    try {
        const Report report(failure);
        const std::string stack_trace = impl::stack_trace_text(impl::walk_own_stack(context));
        if (!answer) answer = ask(report, stack_trace);
        if (is_traced) trace(report, stack_trace);
    } catch (const std::bad_alloc&) {
        const BriefReport brief(failure);
        if (is_traced) impl::write_to_standard_error(brief.line());
        if (!answer) answer = ask(brief.text());
    }
    return *answer;
}

bool report_failed_assert_aux(const Failure& failure, CONTEXT& context) {
    if (throws_always()) raise(Report(failure));
    const bool is_traced = impl::wants_diagnostic_traces();
    const bool is_ignored = IgnoredSites::instance().contains(failure);
    if (!is_traced && is_ignored) return true;

    const Answer answer = report(failure, context, !is_ignored, is_traced);
    switch (answer.button) {
        case IDRETRY:
            if (answer.has_modifier) raise(Report(failure));
            return false;
        case IDABORT:
            if (answer.has_modifier) dump(context);
            impl::abort_process();
        case IDIGNORE:
            if (answer.has_modifier) IgnoredSites::instance().add(failure);
            break;
        default:
            break;
    }
    return true;
}

}  // namespace

bool report_failed_debug_assert(const char* file, unsigned int line, const char* function,
                                const char* expression, const char* details) {
    CONTEXT context = {};
    TARVCORE_CAPTURE_CONTEXT(context);
    return report_failed_assert_aux({or_empty(file), line, function, expression, details}, context);
}

}  // namespace tarvcore
