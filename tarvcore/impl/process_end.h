// The end of this process.
#pragma once

#include <bit>
#include <csignal>
#include <cstdlib>

#include <windows.h>

namespace tarvcore::impl {

// Whether all threads but this one are gone, wherever they were, and modules are being told so.
// Not linked: the system library has functions of the C runtime, too, which would take the place of
// the runtime's.
inline bool process_is_ending() {
    using Function = BOOLEAN(NTAPI*)();
    const auto function = std::bit_cast<Function>(
        GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "RtlDllShutdownInProgress"));
    return function != nullptr && function() != 0;
}

// Ends the process as an abort does, though without the runtime's box and even where a handler of
// the signal returns.
[[noreturn]] inline void abort_process() {
    std::raise(SIGABRT);
    _exit(3);
}

}  // namespace tarvcore::impl
