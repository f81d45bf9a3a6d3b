// Facts about this process.
#pragma once

#include <string>

#include "tarvcore/config.h"

namespace tarvcore {

// The value of an environment variable, of any length, in UTF-8; empty where there is none.
// `*found`, unless `found` is null, becomes whether the variable exists: it may be there and empty.
// The name is UTF-8, too.  Raises "error.tarvcore.string.conversion" for a name or a value that has
// no such form, "error.tarvcore.string.embeddedNul" for a name with a NUL, and what the system says
// where it fails.
TARVCORE_API std::string get_environment_variable(const char* name, unsigned int length,
                                                  bool* found);

}  // namespace tarvcore
