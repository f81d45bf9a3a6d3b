// Names and messages of errno values.
#pragma once

#include "tarvcore/error_code.h"

namespace tarvcore::impl {

struct ErrnoRow {
    long value;
    const ErrorCode* code;
    const char* message;
};

// Null for a value that the table does not have.
const ErrnoRow* find_errno_row(long value);

}  // namespace tarvcore::impl
