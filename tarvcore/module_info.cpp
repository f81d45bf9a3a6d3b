#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "tarvcore/impl/module_registration.h"
#include "tarvmoduleregistry/module_registry.h"
//
#include <windows.h>

TARVCORE_SOURCE_FILE("$Id: //tarvcore/module_info.cpp#1 $");

namespace tarvcore::impl {
namespace {

using tarvmoduleregistry::ModuleInfo;

constexpr char module_name[] = "tarvcore";
constexpr char switch_name[] = "ZOLT_MODULEREGISTRY_DONT_FAIL_ON_DUPLICATES";

struct Free {
    void operator()(char* memory) const { std::free(memory); }
};

// As _dupenv_s does, which this compiler's C runtime lacks.
int duplicate_variable(const char* name, char** copy) {
    const char* value = std::getenv(name);
    *copy = value == nullptr ? nullptr : _strdup(value);
    return value != nullptr && *copy == nullptr ? ENOMEM : 0;
}

// The loader takes an exception of a module that is loaded at run time for the end of that load
// only.  This asks earlier, but after a debugger.
LONG CALLBACK end_at_breakpoint(EXCEPTION_POINTERS* exception) {
    const DWORD code = exception->ExceptionRecord->ExceptionCode;
    if (code != EXCEPTION_BREAKPOINT) return EXCEPTION_CONTINUE_SEARCH;
    const LONG answer = UnhandledExceptionFilter(exception);
    if (answer == EXCEPTION_EXECUTE_HANDLER) TerminateProcess(GetCurrentProcess(), code);
    return answer;
}

void stop_at_breakpoint() {
    void* handler = AddVectoredExceptionHandler(1, end_at_breakpoint);
    DebugBreak();
    RemoveVectoredExceptionHandler(handler);
}

constexpr DuplicateModuleCalls system_calls = {duplicate_variable, stop_at_breakpoint};

// Static, so that it lives from the module's load to its unload.
const struct Registration {
    Registration() { register_module(system_calls); }
    // Meant also where another copy has the name: it is not registered any more then.
    ~Registration() { tarvmoduleregistry::remove_module_info(module_name); }
} registration;

}  // namespace

void register_module(const DuplicateModuleCalls& calls) {
    const char* text = std::strchr(module_info_block, '<');  // after the marker line
    if (tarvmoduleregistry::add_module_info(module_name, text)) return;

    ModuleInfo registered;
    std::fprintf(stderr, "ModuleRegistry: Module %s is already loaded into this process!\n",
                 module_name);
    std::fputs(
        "This is typically caused by a version or debug/release mismatch between libraries "
        "referenced by this process.\n",
        stderr);
    tarvmoduleregistry::query_module_info(module_name, &registered);
    std::fprintf(stderr, "Data of module that was already registered:\n%s\n",
                 registered.text.c_str());
    std::fprintf(stderr, "Data of new module that conflicts:\n%s\n", text);
    std::fputs("\nAborting...\n", stderr);  // meant also where it goes on
    std::fflush(stderr);

    char* value = nullptr;
    if (calls.duplicate_variable(switch_name, &value) != 0) return;
    const std::unique_ptr<char, Free> copy(value);
    if (copy == nullptr) calls.stop();
}

}  // namespace tarvcore::impl
