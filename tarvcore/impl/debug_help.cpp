#include "tarvcore/impl/debug_help.h"

#include <bit>

TARVCORE_SOURCE_FILE("$Id: //tarvcore/impl/debug_help.cpp#1 $");

namespace tarvcore::impl {
namespace {

template <class Function>
void look_up(HMODULE library, const char* name, Function& function) {
    function = std::bit_cast<Function>(GetProcAddress(library, name));
}

DebugHelp load() {
    DebugHelp help = {};
    // The program may bring a newer one than the system's.
    const HMODULE library =
        LoadLibraryExW(L"dbghelp.dll", nullptr, LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
    if (library == nullptr) return help;
    look_up(library, "MiniDumpWriteDump", help.write_dump);
    look_up(library, "SymGetOptions", help.options);
    look_up(library, "SymSetOptions", help.set_options);
    look_up(library, "SymInitializeW", help.initialize);
    look_up(library, "SymCleanup", help.clean_up);
    look_up(library, "SymFromAddrW", help.symbol_at);
    look_up(library, "SymGetLineFromAddrW64", help.line_at);
    return help;
}

constexpr DebugHelpCalls system_calls = {
    []() -> const DebugHelp& {
        static const DebugHelp help = load();
        return help;
    },
};

// The thread that holds the lock, or 0.  No kernel object, which a process in trouble may not get.
constinit std::atomic<DWORD> owner = 0;

bool acquire() {
    constexpr DWORD longest_wait = 60'000;  // milliseconds; a full dump may take that long
    const DWORD thread = GetCurrentThreadId();
    if (owner.load() == thread) return false;
    const ULONGLONG begin = GetTickCount64();
    for (;;) {
        DWORD nobody = 0;
        if (owner.compare_exchange_strong(nobody, thread)) return true;
        if (GetTickCount64() - begin >= longest_wait) return false;
        Sleep(1);
    }
}

}  // namespace

DebugHelpLock::DebugHelpLock() : is_held_(acquire()) {}

DebugHelpLock::~DebugHelpLock() {
    if (is_held_) owner = 0;
}

constinit std::atomic<const DebugHelpCalls*> debug_help_calls = &system_calls;

}  // namespace tarvcore::impl
