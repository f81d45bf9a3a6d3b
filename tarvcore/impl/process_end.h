// Whether this process is at its end.
#pragma once

#include <bit>

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

}  // namespace tarvcore::impl
