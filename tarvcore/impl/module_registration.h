// How this module makes itself known in its process.
#pragma once

#include "tarvcore/config.h"

namespace tarvcore::impl {

// What this module says of its build: a marker line, which programs look for in the module's file,
// and XML, which is registered.  The build fills it in.
extern const char module_info_block[];

// What a second copy of this module asks of the system; tests inject their own.
struct DuplicateModuleCalls {
    // 0 and a copy of the environment variable, from malloc, or null where there is none; else an
    // errno value.
    int (*duplicate_variable)(const char* name, char** copy);
    // Ends the process, or enters its debugger.
    void (*stop)();
};

// Registers this module.  Where its name is taken, says so on standard error and stops, unless the
// environment allows it or cannot be read.
TARVCORE_API void register_module(const DuplicateModuleCalls& calls);

}  // namespace tarvcore::impl
