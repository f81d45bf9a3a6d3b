// Faults to catch: a button or a modifier that does something else; a box where nobody can answer
// it, or none where somebody is to; a site that is ignored without having been asked for; texts
// that differ from what people and their tools look for; an end of the process with another status.

#include "tarvcore/diagnostics_impl_win_common.h"

#include <gtest/gtest.h>

#include <atomic>
#include <bit>
#include <cwchar>
#include <string>
#include <string_view>
#include <thread>

#include "tarvcore/impl/debug_help.h"
#include "tarvcore/impl/dump_path.h"
#include "tarvcore/impl/user_interface.h"
#include "tarvcore/ucsutil.h"
#include "tests/support/allocations.h"
#include "tests/support/child_process.h"
#include "tests/support/pattern.h"
#include "tests/support/raised.h"
#include "tests/support/scoped_calls.h"
#include "tests/support/threads.h"
#include "tests/support/trace_hooks.h"

namespace {

using namespace tarvcore;
using tarv_test::agrees;
using tarv_test::TraceHooks;

constexpr wchar_t throw_always[] = L"ZOLT_ASSERT_THROW_ALWAYS";

// The boxes that were shown and what stood in the last one; the button that is pressed, or 0 for
// the system's box; the key that is held down; the function that user32 has not.
int boxes;
unsigned box_flags;
char box_text[5000];
int pressed_button;
int held_key;
const char* missing;

const std::string process = std::to_string(GetCurrentProcessId());
const std::string thread = std::to_string(GetCurrentThreadId());
const impl::UserInterfaceCalls* const system_calls = impl::user_interface_calls;

int WINAPI show_box(HWND parent, const wchar_t* text, const wchar_t* title, UINT flags) {
    ++boxes;
    box_flags = flags;
    wstr_to_utf8(text, static_cast<unsigned>(-1), box_text, sizeof box_text, '?', nullptr);
    const auto real = reinterpret_cast<decltype(&MessageBoxW)>(system_calls->find("MessageBoxW"));
    return pressed_button != 0 ? pressed_button : real(parent, text, title, flags);
}

SHORT WINAPI key_state(int key) {
    return key == held_key ? std::bit_cast<SHORT>(std::uint16_t{0x8001}) : SHORT{1};
}

class FailedAssertion : public testing::Test {
protected:
    FailedAssertion() {
        boxes = held_key = 0;
        pressed_button = IDIGNORE;
        missing = "";
        calls_->find = [](const char* name) -> void* {
            if (std::string_view(name) == missing || !system_calls->find(name)) return nullptr;
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
    // "go on", "break", or the error that is raised.
    static std::string outcome_of(unsigned line) {
        bool goes_on = false;
        const std::string raised = tarv_test::raised([&] { goes_on = report(line); });
        return !raised.empty() ? raised : goes_on ? "go on" : "break";
    }

    TraceHooks hooks_;
    tarv_test::ScopedCalls<impl::UserInterfaceCalls> calls_{impl::user_interface_calls};
    tarv_test::ScopedCalls<impl::DebugHelpCalls> debug_help_{impl::debug_help_calls};
};

TEST_F(FailedAssertion, ShowsWhatItKnows) {
    pressed_button = 0;
    std::thread user([] {
        HWND box = nullptr;
        while ((box = FindWindowW(nullptr, L"Varnholt Core Library")) == nullptr)
            Sleep(1);
        // A box that is not ready yet drops what it gets.
        for (; IsWindow(box); Sleep(10))
            PostMessageW(box, WM_COMMAND, IDRETRY, 0);
    });
    EXPECT_FALSE(report(1));
    user.join();
    EXPECT_EQ(box_flags, 0x12012u);
    EXPECT_TRUE(agrees(
        box_text,
        "Debug Assertion Failed!\n\nProgram: …diagnostics_test.exe\nTimeUTC: 2…\nProcessId: " +
            process +
            "\nFile: dir\\file.cpp\nLine: 1\nFunction: my::f()\n\nExpression: a == b\n\n"
            "Details: more\n\nThreadId: " +
            thread +
            " (0x…), Stack Trace:\n0x…\n…\n\n\n(Press Retry to debug, SHIFT+Retry to throw "
            "exception, SHIFT+Abort for memory dump and abort, SHIFT-Ignore to ignore always)"));
}

TEST_F(FailedAssertion, ShowsTheEndOfALongPath) {
    static unsigned length;
    tarv_test::ScopedCalls<impl::DumpPathCalls> paths(impl::dump_path_calls);
    // As the system does, which cuts off what does not fit, and answers the size then.
    paths->program = [](wchar_t* buffer, unsigned long size) -> unsigned long {
        if (length == 0) return 0;
        const std::wstring path = L"C" + std::wstring(length - 2, L'x') + L"E";
        buffer[path.copy(buffer, size - 1)] = L'\0';
        return length < size ? length : size;
    };
    const std::string x99(99, 'x');
    const struct {
        unsigned length;
        std::string shown;
    } rows[] = {
        {0, "<unknown>"},         {100, "C" + x99.substr(1) + "E"},
        {101, "..." + x99 + "E"}, {259, "..." + x99 + "E"},
        {260, "...x" + x99},
    };
    for (const auto& row : rows) {
        length = row.length;
        EXPECT_TRUE(report(6));
        EXPECT_TRUE(agrees(box_text,
                           "Debug Assertion Failed!\n\nProgram: " + row.shown + "\nTimeUTC: …\n…"));
    }
    paths->program = [](wchar_t* buffer, unsigned long) -> unsigned long {
        std::wmemset(buffer, L'\u00E9', length);
        return length;
    };
    for (const auto& [characters, dots] : {std::pair(100u, ""), {101u, "..."}}) {
        length = characters;
        EXPECT_TRUE(report(6));
        std::string shown;
        for (int i = 0; i < 100; ++i)
            shown += "\xC3\xA9";
        EXPECT_TRUE(agrees(
            box_text, "Debug Assertion Failed!\n\nProgram: " + (dots + shown) + "\nTimeUTC: …\n…"));
    }
    paths->program = [](wchar_t* buffer, unsigned long) -> unsigned long {
        std::wmemcpy(buffer, L"a\0b", 4);
        return 3;
    };
    EXPECT_TRUE(outcome_of(6).starts_with("error.tarvcore.string.embeddedNul "));
}

TEST_F(FailedAssertion, DoesWhatTheButtonSays) {
    const struct {
        int button;
        int key;
        const char* outcome;
        int boxes;  // of two failures
    } rows[] = {
        {IDRETRY, 0, "break", 2},
        {IDRETRY, VK_SHIFT, "error.exception.assert ", 2},
        {IDRETRY, VK_CONTROL, "error.exception.assert ", 2},
        {IDRETRY, VK_MENU, "break", 2},
        {IDIGNORE, 0, "go on", 2},
        {IDIGNORE, VK_SHIFT, "go on", 1},
        {IDIGNORE, VK_CONTROL, "go on", 1},
    };
    unsigned line = 100;
    for (const bool wants_lines : {true, false}) {
        TraceHooks::wants_lines = wants_lines;
        for (const auto& row : rows) {
            SCOPED_TRACE(++line);
            TraceHooks::lines.clear();
            boxes = 0;
            pressed_button = row.button;
            held_key = row.key;
            EXPECT_TRUE(outcome_of(line).starts_with(row.outcome));
            EXPECT_TRUE(outcome_of(line).starts_with(row.outcome)) << "again";
            EXPECT_EQ(boxes, row.boxes);
            EXPECT_EQ(TraceHooks::lines.size(), wants_lines ? 2u : 0u);
        }
    }
    missing = "GetAsyncKeyState";
    pressed_button = IDRETRY;
    held_key = VK_SHIFT;
    EXPECT_EQ(outcome_of(3), "break");
}

TEST_F(FailedAssertion, TracesOneLine) {
    missing = "MessageBoxW";
    EXPECT_TRUE(report_failed_debug_assert("file.cpp", 7, nullptr, nullptr, nullptr));
    ASSERT_EQ(TraceHooks::lines.size(), 1u);
    EXPECT_TRUE(
        agrees(TraceHooks::lines.front(),
               "file.cpp|Debug Assertion Failed! \nProgram:    {}\nTimeUTC:    {}\nProcessId:  {}\n"
               "File:       {}\nLine:       {}\nFunction:   {}\n\nExpression: {}\n\n"
               "Details:    {}\n\n---BeginStackTrace---\n{}---EndStackTrace---"
               "|…diagnostics_test.exe|2…|" +
                   process + "|file.cpp|7||||0x…\n…\n|"));
}

TEST_F(FailedAssertion, ThrowsWhereNobodyCanAnswer) {
    missing = "MessageBoxW";
    const std::wstring too_long(300, L'1');
    for (const wchar_t* value : {L"0", L"true ", L"01", too_long.c_str()}) {
        SetEnvironmentVariableW(throw_always, value);
        TraceHooks::lines.clear();
        EXPECT_EQ(outcome_of(2), "go on") << value;
        EXPECT_EQ(TraceHooks::lines.size(), 1u) << value;
    }
    TraceHooks::lines.clear();
    for (const wchar_t* value : {L"true", L"TRUE", L"Yes", L"1", L""}) {
        SetEnvironmentVariableW(throw_always, value);
        EXPECT_TRUE(agrees(
            outcome_of(2),
            "error.exception.assert Debug Assertion Failed! \nProgram: …diagnostics_test.exe\n"
            "TimeUTC: 2…\nProcessId: " +
                process +
                "\nFile: dir\\file.cpp\nLine: 2\nFunction: my::f()\n\nExpression: a == b\n\n"
                "Details: more\n\nThreadId: " +
                thread +
                ", Stack Trace:\n{@stackTrace}\nStackDump:\n{@stackDump} ['details' => …] "
                "tarvcore::impl::report_failed_assert_aux() "
                "//tarvcore/diagnostics_impl_win_common.cpp"))
            << value;
    }
    EXPECT_TRUE(TraceHooks::lines.empty());
}

TEST_F(FailedAssertion, MayFailWithinAHook) {
    missing = "MessageBoxW";
    static int depth;
    depth = 0;
    set_diagnostic_trace_handlers(
        nullptr, [](auto&, auto&, auto, auto) { return ++depth, report(4); }, nullptr);
    testing::internal::CaptureStderr();
    EXPECT_TRUE(report(5));
    EXPECT_NE(testing::internal::GetCapturedStderr().find("Line:       4"), std::string::npos);
    EXPECT_EQ(depth, 1);
}

// A hook that raises is no hook.
TEST_F(FailedAssertion, DoesNotRaiseWhatAHookDoes) {
    missing = "MessageBoxW";
    const DiagnosticTraceFunction raise = [](auto&, auto&, auto, auto) -> bool { throw 42; };
    set_diagnostic_trace_handlers(nullptr, raise, raise);
    testing::internal::CaptureStderr();
    EXPECT_TRUE(report(8));
    EXPECT_NE(testing::internal::GetCapturedStderr().find("Expression: a == b"), std::string::npos);
}

TEST_F(FailedAssertion, IsToldWhileAnotherThreadHangsInAHook) {
    missing = "MessageBoxW";
    static std::atomic<bool> hangs;
    static std::atomic<bool> may_end;
    static std::atomic<int> told;
    hangs = may_end = false;
    told = 0;
    set_diagnostic_trace_handlers(
        nullptr,
        [](const SourceLocation& where, auto&, auto, auto) {
            for (hangs = hangs || where.line() == 10; where.line() == 10 && !may_end;)
                Sleep(1);
            return ++told, true;
        },
        nullptr);
    std::thread other([] { EXPECT_TRUE(report(10)); });
    while (!hangs)
        Sleep(1);
    EXPECT_TRUE(report(11));
    EXPECT_EQ(told, 1);
    may_end = true;
    other.join();
    EXPECT_EQ(told, 2);
}

TEST_F(FailedAssertion, AsksWithoutMemory) {
    held_key = VK_SHIFT;
    static bool is_traced;
    is_traced = false;
    set_diagnostic_trace_handlers(
        nullptr, [](auto&, auto&, auto, auto) { return is_traced = true; }, nullptr);
    testing::internal::CaptureStderr();
    for (int failures = 0; !is_traced; ++failures) {
        EXPECT_EQ(boxes, failures);
        tarv_test::AllocationWatch watch;
        watch.fail_from(failures);
        EXPECT_TRUE(report_failed_debug_assert("d\xC3\xA9.cpp", 9, nullptr, "a == b", nullptr));
        watch.fail_none();
        EXPECT_TRUE(
            agrees(box_text, "Debug Assertion Failed!\n…\nLine: 9\n…\nExpression: a == b\n…"));
        if (failures == 0) {
            EXPECT_TRUE(std::string_view(box_text).ends_with(
                "\n\nFile: d??.cpp\nLine: 9\n\nExpression: a == b\n"));
        }
    }
    testing::internal::GetCapturedStderr();
    EXPECT_GT(boxes, 4);

    // Nor is more told than is wanted.
    set_diagnostic_trace_handlers(nullptr, nullptr, [](auto&, auto&, auto, auto) { return false; });
    testing::internal::CaptureStderr();
    {
        tarv_test::AllocationWatch watch;
        watch.fail_from(0);
        EXPECT_TRUE(report(12));
        watch.fail_none();
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_TRUE(agrees(box_text, "…\nLine: 12\n…"));
}

TEST_F(FailedAssertion, OfManyThreadsAreAllTold) {
    missing = "MessageBoxW";
    tarv_test::run_threads(8, [](unsigned i) { EXPECT_TRUE(report(50 + i)); });
    EXPECT_EQ(TraceHooks::lines.size(), 8u);
}

TEST(AbortedAssertion, EndsTheProcess) {
    const struct {
        const wchar_t* modifier;
        unsigned long status;
        const char* output;
    } rows[] = {
        {L"", 3, "SIGABRT\r\n"},
        {L"SHIFT", 3, "Dump created and saved to: , flags 0x12040\r\nSIGABRT\r\n"},
        {L"SHIFT, no dump", 3, "Creation of dump failed, flags 0x12030\r\nSIGABRT\r\n"},
        {L"SHIFT, no folder", 3, "Creation of dump failed, flags 0x12030\r\nSIGABRT\r\n"},
        {L"late", 0, "late: go on\r\n"},  // fails after the end of main, and is ignored
    };
    for (const auto& row : rows) {
        const auto outcome =
            tarv_test::run_program(L"diagnostics_impl_win_common_child.exe", {row.modifier});
        EXPECT_EQ(outcome.status, row.status) << row.modifier;
        EXPECT_EQ(outcome.output, row.output);
    }
}

}  // namespace
