// The platform's debugging-help library, which is loaded when first needed and then kept.
#pragma once

#include <atomic>

#include <windows.h>
// needs the former
#include <dbghelp.h>

#include "tarvcore/config.h"

namespace tarvcore::impl {

// Its functions, as far as they are used; null where the library or the function is missing.
struct DebugHelp {
    decltype(&::MiniDumpWriteDump) write_dump;
    decltype(&::SymGetOptions) options;
    decltype(&::SymSetOptions) set_options;
    decltype(&::SymInitializeW) initialize;
    decltype(&::SymCleanup) clean_up;
    decltype(&::SymFromAddrW) symbol_at;
    decltype(&::SymGetLineFromAddrW64) line_at;

    bool has_symbols() const {
        return options != nullptr && set_options != nullptr && initialize != nullptr &&
               clean_up != nullptr && symbol_at != nullptr && line_at != nullptr;
    }
};

// Where it comes from.
struct DebugHelpCalls {
    // Loads the library, or answers what has been loaded.
    const DebugHelp& (*load)();
};

// The table in use; tests put one of their own in its place.
TARVCORE_API extern std::atomic<const DebugHelpCalls*> debug_help_calls;

inline const DebugHelp& debug_help() {
    return debug_help_calls.load()->load();
}

// The library is for one thread at a time, in all of the process.  Whoever calls its functions
// holds one of these; but not for ever: a thread that is in trouble must neither wait for one that
// has come to grief in there nor come back to where it has been itself.
class TARVCORE_API DebugHelpLock {
public:
    DebugHelpLock();
    ~DebugHelpLock();
    DebugHelpLock(const DebugHelpLock&) = delete;
    DebugHelpLock& operator=(const DebugHelpLock&) = delete;

    // Whether the library may be used.
    bool is_held() const { return is_held_; }

private:
    bool is_held_;
};

}  // namespace tarvcore::impl
