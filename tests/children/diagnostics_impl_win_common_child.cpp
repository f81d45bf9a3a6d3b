// Fails an assertion and aborts.  Says which further boxes come, and that it is aborted.  "late":
// the assertion fails after the end of the main function, and is ignored.

#include <csignal>
#include <cstdio>
#include <string>

#include "tarvcore/diagnostic_trace.h"
#include "tarvcore/diagnostics_impl_win_common.h"
#include "tarvcore/impl/debug_help.h"
#include "tarvcore/impl/dump_path.h"
#include "tarvcore/impl/user_interface.h"
//
#include <windows.h>

namespace {

using namespace tarvcore;

int answer = IDABORT;
bool is_shift_held = false;
bool can_write = true;

int WINAPI answer_box(HWND, const wchar_t* text, const wchar_t*, UINT flags) {
    if (std::wstring(text).starts_with(L"Debug Assertion Failed!")) return answer;
    const std::wstring announcement = L"Dump created and saved to: ";
    const bool has_path = std::wstring(text).starts_with(announcement);
    std::printf("%.27ls, flags 0x%x\n", text, flags);  // without the path
    if (has_path && !DeleteFileW(text + announcement.size())) std::puts("where?");
    return IDOK;
}

SHORT WINAPI key_state(int key) {
    return is_shift_held && key == VK_SHIFT ? SHORT{-1} : SHORT{0};
}

BOOL WINAPI write_dump(HANDLE, DWORD, HANDLE, MINIDUMP_TYPE type, PMINIDUMP_EXCEPTION_INFORMATION,
                       PMINIDUMP_USER_STREAM_INFORMATION, PMINIDUMP_CALLBACK_INFORMATION) {
    return can_write && (type & MiniDumpWithFullMemory) != 0;
}

const impl::UserInterfaceCalls user_interface = {[](const char* name) -> void* {
    return std::string(name) == "MessageBoxW" ? reinterpret_cast<void*>(answer_box)
                                              : reinterpret_cast<void*>(key_state);
}};

const impl::DebugHelpCalls debug_help = {[]() -> const impl::DebugHelp& {
    static impl::DebugHelp help = {};
    help.write_dump = write_dump;
    return help;
}};

impl::DumpPathCalls without_folders() {
    impl::DumpPathCalls calls = *impl::dump_path_calls;
    calls.trace_root = [](wchar_t*, unsigned long) { return 0ul; };
    calls.temporary_folder = [](unsigned long, wchar_t*) { return 0ul; };
    return calls;
}

// Fails when the program's static objects are destroyed.
struct Late {
    ~Late() {
        if (answer != IDIGNORE) return;
        if (report_failed_debug_assert("file.cpp", 2, nullptr, "late", nullptr))
            std::puts("late: go on");
    }
};

}  // namespace

int main(int, char** argv) {
    std::setvbuf(stdout, nullptr, _IONBF, 0);  // nobody writes the rest after an abortion
    const std::string modifier = argv[1];
    is_shift_held = !modifier.empty();
    can_write = modifier != "SHIFT, no dump";
    impl::user_interface_calls = &user_interface;
    impl::debug_help_calls = &debug_help;
    static const impl::DumpPathCalls no_folders = without_folders();
    if (modifier == "SHIFT, no folder") impl::dump_path_calls = &no_folders;
    set_diagnostic_trace_handlers(
        nullptr, [](auto&, auto&, auto, auto) { return true; }, nullptr);
    static const Late late;
    if (modifier == "late") {
        answer = IDIGNORE;
        is_shift_held = false;
        return 0;
    }
    std::signal(SIGABRT, [](int) { std::puts("SIGABRT"); });
    report_failed_debug_assert("file.cpp", 1, nullptr, "false", nullptr);
    return 0;
}
