// Faults to catch: a button or a modifier that does something else; a box where nobody can answer
// it, or none where somebody is to; a site that is ignored without having been asked for; texts
// that differ from what people and their tools look for; an end of the process with another status.

#include "tarvcore/diagnostics_impl_win_common.h"

#include <gtest/gtest.h>

#include <atomic>
#include <bit>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "tarvcore/error_code_constants.h"
#include "tarvcore/error_exception.h"
#include "tarvcore/impl/debug_help.h"
#include "tarvcore/impl/dump_path.h"
#include "tarvcore/impl/user_interface.h"
#include "tests/support/allocations.h"
#include "tests/support/child_process.h"
#include "tests/support/message_box.h"
#include "tests/support/scoped_calls.h"
#include "tests/support/trace_hooks.h"

namespace {

using namespace tarvcore;
using tarv_test::BoxAnswers;
using tarv_test::TraceHooks;

constexpr wchar_t throw_always[] = L"ZOLT_ASSERT_THROW_ALWAYS";

// The keys that are held down, the functions that user32 has not, and the boxes that were shown.
std::atomic<int> held_key;
std::atomic<const char*> missing;
std::atomic<int> boxes;
std::atomic<unsigned> last_flags;

const impl::UserInterfaceCalls* const system_calls = impl::user_interface_calls;

int WINAPI show_box(HWND parent, const wchar_t* text, const wchar_t* title, UINT flags) {
    ++boxes;
    last_flags = flags;
    const auto real = reinterpret_cast<decltype(&MessageBoxW)>(system_calls->find("MessageBoxW"));
    return real(parent, text, title, flags);
}

SHORT WINAPI key_state(int key) {
    return key == held_key ? std::bit_cast<SHORT>(std::uint16_t{0x8001}) : SHORT{1};
}

class FailedAssertion : public testing::Test {
protected:
    FailedAssertion() {
        held_key = 0;
        missing = "";
        boxes = 0;
        calls_->find = [](const char* name) -> void* {
            if (std::string_view(name) == missing.load()) return nullptr;
            return std::string_view(name) == "MessageBoxW" ? reinterpret_cast<void*>(show_box)
                                                           : reinterpret_cast<void*>(key_state);
        };
        // Names of functions take long to find.
        debug_help_->load = []() -> const impl::DebugHelp& {
            static constexpr impl::DebugHelp none = {};
            return none;
        };
        SetEnvironmentVariableW(throw_always, nullptr);
    }
    ~FailedAssertion() override { SetEnvironmentVariableW(throw_always, nullptr); }

    // Every failure at a place of its own.
    static bool report(unsigned line) {
        return report_failed_debug_assert("dir\\file.cpp", line, "my::f()", "a == b", "more");
    }

    TraceHooks hooks_;
    tarv_test::ScopedCalls<impl::UserInterfaceCalls> calls_{impl::user_interface_calls};
    tarv_test::ScopedCalls<impl::DebugHelpCalls> debug_help_{impl::debug_help_calls};
};

TEST_F(FailedAssertion, ShowsWhatItKnows) {
    BoxAnswers answers({IDIGNORE});
    EXPECT_TRUE(report(1));
    const std::wstring text = answers.last_text();
    EXPECT_EQ(last_flags, 0x12012u);
    const auto expect = [&](const std::wstring& part) {
        EXPECT_NE(text.find(part), std::wstring::npos) << part << "\nin\n" << text;
    };
    const std::wstring thread = std::to_wstring(GetCurrentThreadId());
    expect(L"Debug Assertion Failed!\n\nProgram: ");
    expect(L"diagnostics_test.exe\nTimeUTC: 2");
    expect(L"\nProcessId: " + std::to_wstring(GetCurrentProcessId()) + L"\nFile: dir\\file.cpp");
    expect(L"\nLine: 1\nFunction: my::f()\n\nExpression: a == b\n\nDetails: more\n\nThreadId: " +
           thread + L" (0x");
    expect(L"), Stack Trace:\n0x");
    expect(
        L"\n\n\n(Press Retry to debug, SHIFT+Retry to throw exception, SHIFT+Abort for memory dump "
        L"and abort, SHIFT-Ignore to ignore always)");
}

// The text of a box that nobody sees.
std::wstring box_text;

int WINAPI take_text(HWND, const wchar_t* text, const wchar_t*, UINT) {
    box_text = text;
    return IDIGNORE;
}

TEST_F(FailedAssertion, ShowsTheEndOfALongPath) {
    calls_->find = [](const char* name) -> void* {
        return *name == 'M' ? reinterpret_cast<void*>(take_text) : nullptr;
    };
    static unsigned length;
    tarv_test::ScopedCalls<impl::DumpPathCalls> paths(impl::dump_path_calls);
    // As the system does, which cuts off what does not fit, and answers the size then.
    paths->program = [](wchar_t* buffer, unsigned long size) -> unsigned long {
        if (length == 0) return 0;
        const std::wstring path =
            (L"C" + std::wstring(length - 2, L'x') + L"E").substr(0, size - 1);
        path.copy(buffer, path.size());
        buffer[path.size()] = L'\0';
        return length < size ? length : size;
    };
    const auto x = [](std::size_t count) { return std::wstring(count, L'x'); };
    const struct {
        unsigned length;
        std::wstring shown;
    } rows[] = {
        {0, L"<unknown>"},
        {100, L"C" + x(98) + L"E"},
        {101, L"..." + x(99) + L"E"},
        {259, L"..." + x(99) + L"E"},
        {260, L"..." + x(100)},
        {400, L"..." + x(100)},
    };
    for (const auto& row : rows) {
        length = row.length;
        EXPECT_TRUE(report(6));
        const std::wstring start =
            L"Debug Assertion Failed!\n\nProgram: " + row.shown + L"\nTimeUTC: ";
        EXPECT_TRUE(box_text.starts_with(start)) << row.length << box_text;
    }
}

TEST_F(FailedAssertion, DoesWhatTheButtonSays) {
    const struct {
        int button;
        int key;
        std::string outcome;
    } rows[] = {
        {IDRETRY, 0, "break"},
        {IDRETRY, VK_SHIFT, "error.exception.assert"},
        {IDRETRY, VK_CONTROL, "error.exception.assert"},
        {IDRETRY, VK_MENU, "break"},
        {IDIGNORE, 0, "go on"},
        {IDIGNORE, VK_SHIFT, "go on"},
        {IDIGNORE, VK_CONTROL, "go on"},
    };
    for (const bool wants_lines : {true, false}) {
        TraceHooks::wants_lines = wants_lines;
        for (unsigned i = 0; i < std::size(rows); ++i) {
            const unsigned line = 100 + 100 * wants_lines + i;
            const bool is_ignored_from_now_on = rows[i].button == IDIGNORE && rows[i].key != 0;
            for (const bool is_second : {false, true}) {
                SCOPED_TRACE(std::to_string(line) + (is_second ? " second" : " first"));
                const bool has_box = !(is_second && is_ignored_from_now_on);
                TraceHooks::lines.clear();
                held_key = rows[i].key;
                boxes = 0;
                std::string outcome;
                {
                    const BoxAnswers answers(has_box ? std::vector{rows[i].button}
                                                     : std::vector<int>());
                    try {
                        outcome = report(line) ? "go on" : "break";
                    } catch (const ErrorException& e) {
                        outcome = e.error()->code().as_string();
                    }
                }
                EXPECT_EQ(outcome, rows[i].outcome);
                EXPECT_EQ(boxes, has_box ? 1 : 0);
                EXPECT_EQ(TraceHooks::lines.size(), wants_lines ? 1u : 0u);
            }
        }
    }
}

TEST_F(FailedAssertion, TracesOneLine) {
    missing = "MessageBoxW";
    EXPECT_TRUE(report_failed_debug_assert("file.cpp", 7, nullptr, nullptr, nullptr));
    ASSERT_EQ(TraceHooks::lines.size(), 1u);
    const auto& line = TraceHooks::lines.front();
    EXPECT_EQ(line.place, "file.cpp");
    EXPECT_EQ(line.format,
              "Debug Assertion Failed! \nProgram:    {}\nTimeUTC:    {}\nProcessId:  {}\n"
              "File:       {}\nLine:       {}\nFunction:   {}\n\nExpression: {}\n\n"
              "Details:    {}\n\n---BeginStackTrace---\n{}---EndStackTrace---");
    ASSERT_EQ(line.texts.size(), 9u);
    EXPECT_TRUE(line.texts[0].ends_with("diagnostics_test.exe")) << line.texts[0];
    EXPECT_EQ(line.texts[2], std::to_string(GetCurrentProcessId()));
    EXPECT_EQ((std::vector<std::string>(line.texts.begin() + 3, line.texts.begin() + 8)),
              (std::vector<std::string>{"file.cpp", "7", "", "", ""}));
    EXPECT_TRUE(line.texts[8].starts_with("0x") && line.texts[8].ends_with("\n")) << line.texts[8];
}

TEST_F(FailedAssertion, ThrowsWhereNobodyCanAnswer) {
    const struct {
        const wchar_t* value;
        bool throws;
    } rows[] = {
        {L"true", true}, {L"TRUE", true},   {L"Yes", true}, {L"1", true},     {L"", true},
        {L"0", false},   {L"true ", false}, {L"01", false}, {nullptr, false},
    };
    missing = "MessageBoxW";  // of rows that do not throw
    for (const auto& row : rows) {
        SetEnvironmentVariableW(throw_always, row.value);
        TraceHooks::lines.clear();
        bool thrown = false;
        try {
            EXPECT_TRUE(report(2));
        } catch (const ErrorException& e) {
            thrown = true;
            const ErrorInfo& error = *e.error();
            EXPECT_EQ(error.code(), error::exception_assert);
            EXPECT_EQ(error.location().function().as_string(),
                      "tarvcore::impl::report_failed_assert_aux()");
            EXPECT_EQ(error.location().file_path(), "//tarvcore/diagnostics_impl_win_common.cpp");
            EXPECT_EQ(error.params().size(), 9u);
            const std::string message = error.expanded_message().as_string();
            const std::string end =
                "\nFile: dir\\file.cpp\nLine: 2\nFunction: my::f()\n\nExpression: a == b\n\n"
                "Details: more\n\nThreadId: " +
                std::to_string(GetCurrentThreadId()) +
                ", Stack Trace:\n{@stackTrace}\nStackDump:\n{@stackDump}";
            EXPECT_TRUE(message.starts_with("Debug Assertion Failed! \nProgram: ") &&
                        message.ends_with(end))
                << message;
        }
        EXPECT_EQ(thrown, row.throws) << (row.value == nullptr ? L"none" : row.value);
        EXPECT_EQ(TraceHooks::lines.size(), row.throws ? 0u : 1u);
    }
    std::wstring long_value(300, L'1');
    SetEnvironmentVariableW(throw_always, long_value.c_str());
    EXPECT_TRUE(report(2));
}

TEST_F(FailedAssertion, TakesAMissingFunctionForNoModifier) {
    missing = "GetAsyncKeyState";
    held_key = VK_SHIFT;
    const BoxAnswers answers({IDRETRY});
    EXPECT_FALSE(report(3));
}

TEST_F(FailedAssertion, MayFailWithinAHook) {
    missing = "MessageBoxW";
    static int depth;
    depth = 0;
    set_diagnostic_trace_handlers(
        nullptr,
        [](const auto&, const auto&, const char*, unsigned) {
            ++depth;
            return report(4);
        },
        nullptr);
    const HANDLE errors = GetStdHandle(STD_ERROR_HANDLE);
    SetStdHandle(STD_ERROR_HANDLE, nullptr);  // where the inner one's line would go
    EXPECT_TRUE(report(5));
    SetStdHandle(STD_ERROR_HANDLE, errors);
    EXPECT_EQ(depth, 1);
}

// A hook that raises is no hook.
TEST_F(FailedAssertion, DoesNotRaiseWhatAHookDoes) {
    missing = "MessageBoxW";
    set_diagnostic_trace_handlers(
        nullptr, [](auto&, auto&, auto, auto) -> bool { throw 42; },
        [](auto&, auto&, auto, auto) -> bool { throw 42; });
    testing::internal::CaptureStderr();
    EXPECT_TRUE(report(8));
    EXPECT_NE(testing::internal::GetCapturedStderr().find("Expression: a == b"), std::string::npos);
}

TEST_F(FailedAssertion, IsToldWhileAnotherThreadHangsInAHook) {
    missing = "MessageBoxW";
    static HANDLE end_of_hook;
    static std::atomic<bool> hangs;
    static std::atomic<int> told;
    end_of_hook = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    hangs = false;
    told = 0;
    set_diagnostic_trace_handlers(
        nullptr,
        [](const SourceLocation& where, const SourceString&, const char*, unsigned) {
            hangs = hangs || where.line() == 10;
            if (where.line() == 10) WaitForSingleObject(end_of_hook, INFINITE);
            return ++told, true;
        },
        nullptr);
    std::thread other([] { EXPECT_TRUE(report(10)); });
    while (!hangs)
        Sleep(1);
    EXPECT_TRUE(report(11));
    EXPECT_EQ(told, 1);
    SetEvent(end_of_hook);
    other.join();
    EXPECT_EQ(told, 2);
    CloseHandle(end_of_hook);
}

int WINAPI show_without_memory(HWND, const wchar_t* text, const wchar_t*, UINT) {
    boxes += std::wcsstr(text, L"\nLine: 9\n") != nullptr &&
             std::wcsstr(text, L"\nExpression: a == b") != nullptr;
    return IDIGNORE;
}

TEST_F(FailedAssertion, AsksWithoutMemory) {
    calls_->find = [](const char* name) -> void* {
        return *name == 'M' ? reinterpret_cast<void*>(show_without_memory)
                            : reinterpret_cast<void*>(key_state);
    };
    held_key = VK_SHIFT;
    static std::atomic<int> traced;
    traced = 0;
    set_diagnostic_trace_handlers(
        nullptr, [](auto&, auto&, auto, auto) { return ++traced, true; }, nullptr);
    const HANDLE errors = GetStdHandle(STD_ERROR_HANDLE);
    SetStdHandle(STD_ERROR_HANDLE, nullptr);  // where the others' lines go
    int failures = 0;
    for (; traced == 0; ++failures) {
        tarv_test::AllocationWatch watch;
        watch.fail_from(failures);
        EXPECT_TRUE(report(9));
        watch.fail_none();
    }
    SetStdHandle(STD_ERROR_HANDLE, errors);
    EXPECT_GT(failures, 3);
    EXPECT_EQ(boxes, failures);
}

TEST_F(FailedAssertion, OfManyThreadsAreAllTold) {
    missing = "MessageBoxW";
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < 8; ++i)
        threads.emplace_back([i] { EXPECT_TRUE(report(50 + i)); });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(TraceHooks::lines.size(), 8u);
}

TEST(AbortedAssertion, MayFailAfterTheEndOfMain) {
    const auto outcome =
        tarv_test::run_program(L"diagnostics_impl_win_common_child.exe", {L"late"});
    EXPECT_EQ(outcome.status, 0u);
    EXPECT_EQ(outcome.output, "late: go on\r\n");
}

// Where the process ends: the box's button and whether SHIFT is held.
TEST(AbortedAssertion, EndsTheProcess) {
    for (const wchar_t* modifier : {L"", L"SHIFT", L"SHIFT, no dump"}) {
        const auto outcome =
            tarv_test::run_program(L"diagnostics_impl_win_common_child.exe", {modifier});
        EXPECT_EQ(outcome.status, 3u) << modifier;
        const std::map<std::wstring, std::string> said = {
            {L"", "SIGABRT\r\n"},
            {L"SHIFT", "Dump created and saved to: , flags 0x12040\r\nSIGABRT\r\n"},
            {L"SHIFT, no dump", "Creation of dump failed, flags 0x12030\r\nSIGABRT\r\n"}};
        EXPECT_EQ(outcome.output, said.at(modifier));
    }
}

}  // namespace
