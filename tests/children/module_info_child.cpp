// Loads the library, and the copy of it that stands beside it, in the way that its argument names.

#include <cstdio>
#include <string>
#include <thread>

#include "tarvmoduleregistry/module_registry.h"
//
#include <fcntl.h>
#include <io.h>
#include <windows.h>

namespace {

// Registers until the process ends.
[[noreturn]] void register_without_end() {
    for (;;) {
        tarvmoduleregistry::add_module_info("child", "text");
        tarvmoduleregistry::remove_module_info("child");
    }
}

}  // namespace

int main(int, char** arguments) {
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
    const std::string way = arguments[1];
    const HMODULE library = LoadLibraryW(L"tarvcore-w32r-2-1.dll");
    if (way == "busy") {
        std::thread(register_without_end).detach();
        Sleep(1);
        return 0;
    }
    wchar_t path[1024];
    GetModuleFileNameW(library, path, 1024);
    if (way == "one after the other") FreeLibrary(library);
    const HMODULE copy = LoadLibraryW((std::wstring(path) + L".module_info.dll").c_str());
    tarvmoduleregistry::ModuleInfo info;
    const bool registered = tarvmoduleregistry::query_module_info("tarvcore", &info);
    std::printf("%s, %s\n", copy == nullptr ? "failed" : "loaded",
                registered ? "registered" : "not registered");
    FreeLibrary(copy);
    const bool removed = !tarvmoduleregistry::query_module_info("tarvcore", &info);
    std::puts(removed ? "removed" : "still registered");
    return 0;
}
