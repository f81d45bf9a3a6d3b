// Faults to catch: calls that are left out, added or in another order; the line behind a call in
// place of the call's; a walk that runs off the stack; an engine that nobody ends, or that ends
// under another thread.

#include "tarvcore/stack_trace.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <cwchar>
#include <sstream>
#include <thread>
#include <utility>

#include "tarvcore/impl/debug_help.h"
#include "tarvcore/impl/stack_walk.h"
#include "tests/support/guarded_memory.h"
#include "tests/support/pattern.h"
#include "tests/support/scoped_calls.h"
#include "tests/support/threads.h"

using namespace tarvcore;
using tarv_test::agrees;

// Outside of any namespace and not optimised into each other: their names are looked for.
unsigned line_of_call;

[[gnu::noipa]] std::vector<StackFrame> stack_trace_inner() {
    line_of_call = __LINE__ + 1;
    auto frames = current_stack_trace();
    return frames;
}

[[gnu::noipa]] std::vector<StackFrame> stack_trace_outer() {
    auto frames = stack_trace_inner();
    frames.reserve(100);
    return frames;
}

namespace {

std::string shown(const std::vector<StackFrame>& frames) {
    std::ostringstream os;
    for (const StackFrame& frame : frames)
        os << frame << '\n';
    return os.str();
}

TEST(StackTrace, NamesTheCalls) {
    const std::vector<StackFrame> frames = stack_trace_outer();
    // Down to where the system has begun the thread.
    EXPECT_TRUE(agrees(shown(frames), "0x… diagnostics_test.exe…\n…\n0x… kernel32.dll…\n…"));
#if !defined(TARVCORE_STATIC)
    EXPECT_TRUE(agrees(shown(frames),
                       "0x… diagnostics_test.exe!stack_trace_inner+0x… […stack_trace_test.cpp @ " +
                           std::to_string(line_of_call) +
                           "]\n0x… diagnostics_test.exe!stack_trace_outer+0x…\n…"));
    EXPECT_LT(frames[0].offset, 0x100u);
#endif
}

TEST(StackTrace, PrintsWhatIsKnown) {
    const auto* const address = reinterpret_cast<const void*>(0x401234);
    const struct {
        StackFrame frame;
        const char* text;
    } rows[] = {
        {{address, "", "", 0, "", 0}, "0x00401234"},
        {{address, "a.exe", "", 0x1234, "", 0}, "0x00401234 a.exe+0x1234"},
        {{address, "", "f(int)", 0x10, "", 0}, "0x00401234 f(int)+0x10"},
        {{address, "a.exe", "f(int)", 0x10, "", 0}, "0x00401234 a.exe!f(int)+0x10"},
        {{address, "a.exe", "f(int)", 0x10, "f.cpp", 42},
         "0x00401234 a.exe!f(int)+0x10 [f.cpp @ 42]"},
    };
    for (const auto& row : rows) {
        std::ostringstream os;
        os << std::hex << row.frame;
        EXPECT_EQ(os.str(), row.text);
    }
}

// Modules may lie in folders whose names are longer than the system's functions like.
TEST(StackTrace, NamesModulesOfAnyPath) {
    wchar_t temporary[MAX_PATH];
    GetTempPathW(MAX_PATH, temporary);
    std::wstring folder = std::wstring(L"\\\\?\\") + temporary + L"tarvcore_stack_trace_test";
    std::vector<std::wstring> folders;
    for (; folder.size() < 400; folder += L'\\' + std::wstring(100, L'x'))
        CreateDirectoryW(folders.emplace_back(folder).c_str(), nullptr);
    const std::wstring path = folders.back() + L"\\deep.dll";
    wchar_t original[MAX_PATH];
    GetModuleFileNameW(GetModuleHandleW(L"tarvmoduleregistry.dll"), original, MAX_PATH);
    ASSERT_TRUE(CopyFileW(original, path.c_str(), FALSE)) << GetLastError();
    const HMODULE module = LoadLibraryExW(path.c_str(), nullptr, 0);
    ASSERT_NE(module, nullptr) << GetLastError();

    impl::StackAddresses stack;
    stack.addresses[stack.count++] = reinterpret_cast<const char*>(module) + 0x1234;
    const std::vector<StackFrame> frames = impl::describe(stack);
    EXPECT_EQ(frames[0].module, "deep.dll") << shown(frames);
    EXPECT_TRUE(!frames[0].function.empty() || frames[0].offset == 0x1234) << shown(frames);

    FreeLibrary(module);
    DeleteFileW(path.c_str());
    for (; !folders.empty(); folders.pop_back())
        RemoveDirectoryW(folders.back().c_str());
}

// What the symbol engine was told.
std::atomic<int> started;
std::atomic<int> ended;
std::atomic<HANDLE> process;
impl::DebugHelp help;

BOOL WINAPI start_engine(HANDLE handle, PCWSTR, BOOL) {
    process = handle;
    return ++started, TRUE;
}
BOOL WINAPI fail_to_start(HANDLE, PCWSTR, BOOL) {
    return FALSE;
}
BOOL WINAPI end_engine(HANDLE) {
    return ++ended, TRUE;
}
BOOL WINAPI no_symbol(HANDLE, DWORD64, PDWORD64, PSYMBOL_INFOW) {
    std::this_thread::yield();
    return FALSE;
}
BOOL WINAPI no_line(HANDLE, DWORD64, PDWORD, PIMAGEHLP_LINEW64) {
    return FALSE;
}

class SymbolEngineTest : public testing::Test {
protected:
    SymbolEngineTest() {
        started = ended = 0;
        help = impl::debug_help();
        help.initialize = start_engine;
        help.clean_up = end_engine;
        help.symbol_at = no_symbol;
        help.line_at = no_line;
        calls_->load = []() -> const impl::DebugHelp& { return help; };
    }

    tarv_test::ScopedCalls<impl::DebugHelpCalls> calls_{impl::debug_help_calls};
};

TEST_F(SymbolEngineTest, EndsWithItsLastUser) {
    tarv_test::run_threads(4, [](unsigned) {
        for (int turn = 0; turn < 20; ++turn)
            ASSERT_FALSE(current_stack_trace().empty());
    });
    EXPECT_GE(started, 1);
    EXPECT_LT(started, 4 * 20) << "ended while others waited for it";
    EXPECT_EQ(started, ended);
    DWORD flags = 0;
    EXPECT_FALSE(GetHandleInformation(process, &flags)) << "its handle of the process is open";
}

TEST_F(SymbolEngineTest, IsNotNeededForModules) {
    const auto whole = help;
    help.initialize = fail_to_start;
    EXPECT_EQ(stack_trace_outer()[0].module, "diagnostics_test.exe");
    for (const auto lacks : {+[] { help.options = nullptr; }, +[] { help.set_options = nullptr; },
                             +[] { help.initialize = nullptr; }, +[] { help.clean_up = nullptr; },
                             +[] { help.symbol_at = nullptr; }, +[] { help.line_at = nullptr; }}) {
        help = whole;
        lacks();
        EXPECT_EQ(stack_trace_outer()[0].module, "diagnostics_test.exe");
    }
    const impl::DebugHelpLock taken;
    EXPECT_EQ(stack_trace_outer()[0].module, "diagnostics_test.exe");
    EXPECT_EQ(started + ended, 0);
}

std::vector<DWORD64> asked;

BOOL WINAPI note_address(HANDLE, DWORD64 address, PDWORD64, PSYMBOL_INFOW) {
    asked.push_back(address);
    return FALSE;
}

// A call's instruction is in front of the address that it returns to.
TEST_F(SymbolEngineTest, IsAskedForInstructions) {
    help.symbol_at = note_address;
    asked.clear();
    std::uintptr_t words[] = {0, 0x2000};
    CONTEXT context = {};
    context.Eip = 0x1000;
    context.Esp = context.Ebp = reinterpret_cast<std::uintptr_t>(words);
    impl::describe(impl::walk_frame_pointers(context));
    EXPECT_EQ(asked, (std::vector<DWORD64>{0x1000, 0x1FFF})) << "where it faulted, and a call";

    asked.clear();
    const auto frames = stack_trace_outer();
    ASSERT_EQ(asked.size(), frames.size());
    for (unsigned i = 0; i < frames.size(); ++i)
        EXPECT_EQ(asked[i], reinterpret_cast<std::uintptr_t>(frames[i].address) - 1) << i;
}

const wchar_t* symbol_name;

BOOL WINAPI name_symbol(HANDLE, DWORD64, PDWORD64, PSYMBOL_INFOW symbol) {
    std::wcscpy(symbol->Name, symbol_name);
    return TRUE;
}

TEST_F(SymbolEngineTest, MayGiveMangledNames) {
    help.symbol_at = name_symbol;
    const std::pair<const wchar_t*, const char*> rows[] = {{L"_ZN1a1fEi", "a::f(int)"},
                                                           {L"__ZN1a1fEi", "a::f(int)"},
                                                           {L"a::f", "a::f"},
                                                           {L"__ZN1a", "__ZN1a"}};
    for (const auto& [name, shown_name] : rows) {
        symbol_name = name;
        EXPECT_EQ(stack_trace_outer()[0].function, shown_name);
    }
}

BOOL WINAPI faulty_symbol(HANDLE, DWORD64, PDWORD64, PSYMBOL_INFOW) {
    int* volatile const nowhere = reinterpret_cast<int*>(0x10);
    return *nowhere;
}

// In a process of its own: the engine is not used any more then.
void trace_with_faulty_engine() {
    help.symbol_at = faulty_symbol;
    for (int i = 0; i < 2; ++i) {
        const auto frames = stack_trace_outer();
        if (frames.size() < 4 || frames[0].module != "diagnostics_test.exe") std::exit(1);
    }
    std::exit(42);
}

TEST_F(SymbolEngineTest, MayBeFaulty) {
    EXPECT_EXIT(trace_with_faulty_engine(), testing::ExitedWithCode(42), "");
}

TEST(StackWalk, StopsWhereFramePointersMakeNoSense) {
    // Frames at 0, 4 and 10 words; the third is not above the second.
    std::uintptr_t words[16] = {};
    const auto at = [&](unsigned i) { return reinterpret_cast<std::uintptr_t>(&words[i]); };
    words[0] = at(4);
    words[1] = 0x1111;
    words[5] = 0x2222;
    CONTEXT context = {};
    context.Eip = 0x1000;
    context.Esp = at(0);
    const auto count = [&](std::uintptr_t first, std::uintptr_t third) {
        context.Ebp = first;
        words[4] = third;
        return impl::walk_frame_pointers(context).count;
    };
    EXPECT_EQ(count(at(0), 0), 3u);
    EXPECT_EQ(count(at(0), at(4)), 3u) << "itself";
    EXPECT_EQ(count(at(0), at(0)), 3u) << "a circle";
    EXPECT_EQ(count(at(0), at(8) + 1), 3u) << "not aligned";
    EXPECT_EQ(count(at(0), 0xFFFFFFFC), 3u) << "the end of memory";
    EXPECT_EQ(count(0, 0), 1u);
    EXPECT_EQ(count(at(0) - 4, 0), 1u) << "below the stack pointer";
    for (const DWORD nowhere : {0x10u, 0xFFFFFFF0u}) {
        context.Esp = nowhere;
        EXPECT_EQ(count(nowhere, 0), 1u) << "not on a stack";
    }
    const tarv_test::GuardedMemory memory(4096);
    for (const unsigned left : {0u, 4u}) {
        context.Esp = reinterpret_cast<std::uintptr_t>(memory.before_guard(left));
        EXPECT_EQ(count(context.Esp, 0), 1u) << left << " bytes can be read";
    }
}

[[gnu::noipa]] std::vector<StackFrame> deep_stack_trace(int depth) {
    auto frames = depth == 0 ? current_stack_trace() : deep_stack_trace(depth - 1);
    frames.reserve(100);
    return frames;
}

TEST_F(SymbolEngineTest, DescribesTheInnermostCalls) {
    EXPECT_EQ(deep_stack_trace(100).size(), impl::max_stack_frames);
}

}  // namespace
