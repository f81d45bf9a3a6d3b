// The environment of this process.
#pragma once

#include <string>

#include "tarvcore/config.h"

namespace tarvcore::impl {

// The system call behind environment variables; tests inject their own.
struct EnvironmentCalls {
    // Like GetEnvironmentVariableW; where that is 0, `*error` becomes what GetLastError says then.
    unsigned long (*get)(const wchar_t* name, wchar_t* buffer, unsigned long size,
                         unsigned long* error);
};

// See get_environment_variable.
TARVCORE_API std::string environment_variable(const EnvironmentCalls& calls, const char* name,
                                              unsigned length, bool* found);

}  // namespace tarvcore::impl
