// In each module of the library and the tool where what the tests reach is counted.  The compiler's
// own code writes the counts before static objects are destroyed, and not at all where a process
// ends by force; here is the rest.

#include <bit>
#include <cstdlib>

#include <windows.h>
//
#include <psapi.h>

extern "C" {
#include <gcov.h>

using Terminate = BOOL(WINAPI*)(HANDLE process, UINT status);

// What the linker's option "wrap" makes of the functions' own names.
void __wrap___gcov_exit();
int __real_raise(int signal);
int __wrap_raise(int signal);
extern const Terminate real_terminate asm("___real__imp__TerminateProcess@8");
extern const Terminate wrapped_terminate asm("___wrap__imp__TerminateProcess@8");

__declspec(dllexport) void tarvcore_write_counts() {
    __gcov_dump();
    __gcov_reset();
}
}

namespace {

// What is registered before all else is called after all else.
[[gnu::constructor(101)]] void register_first() {
    std::atexit(tarvcore_write_counts);
}

// Whichever module it is that ends the process.
void write_counts_of_all() {
    HMODULE modules[100] = {};
    DWORD size = 0;
    EnumProcessModules(GetCurrentProcess(), modules, sizeof modules, &size);
    for (unsigned i = 0; i < size / sizeof *modules; ++i) {
        const FARPROC write = GetProcAddress(modules[i], "tarvcore_write_counts");
        if (write != nullptr) std::bit_cast<decltype(&tarvcore_write_counts)>(write)();
    }
}

BOOL WINAPI write_and_terminate(HANDLE process, UINT status) {
    write_counts_of_all();
    return real_terminate(process, status);
}

}  // namespace

const Terminate wrapped_terminate = write_and_terminate;

void __wrap___gcov_exit() {
    // Too early.
}

int __wrap_raise(int signal) {
    write_counts_of_all();
    return __real_raise(signal);
}
