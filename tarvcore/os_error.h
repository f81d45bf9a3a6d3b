// Error numbers of the operating system: errno values and Windows error codes.
#pragma once

#include "tarvcore/config.h"
#include "tarvcore/source_string.h"

namespace tarvcore {

// The message of an errno value: the library's own where the value has a name, else the system's
// message for that number, else "Unknown error (errno=NUMBER)".
TARVCORE_API SourceString errno_message(int value);

// The errno value that corresponds to a Windows error code; 0 where none does.
TARVCORE_API int errno_from_winerror(unsigned long code) noexcept;

// Sets the calling thread's errno, and its DOS error to 0.  The socket number 10035 (the operation
// would block) is stored as 11 (EAGAIN).  Answers what was stored.
TARVCORE_API int set_errno(int value) noexcept;

// Sets the calling thread's DOS error to the code, and errno to what corresponds, or to 22 (EINVAL)
// where nothing does.  Answers what was stored in errno.
TARVCORE_API int set_errno_from_winerror(unsigned long code) noexcept;

}  // namespace tarvcore
