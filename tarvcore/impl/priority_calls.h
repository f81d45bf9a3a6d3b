// The system calls behind priorities.
#pragma once

#include <atomic>

#include "tarvcore/config.h"

namespace tarvcore::impl {

// As Windows has them; what fails says why in `last_error`.
struct PriorityCalls {
    bool (*set_thread_priority)(void* thread, long priority);
    long (*thread_priority)(void* thread);  // 0x7FFFFFFF: it failed
    bool (*set_process_priority_class)(unsigned long priority_class);
    unsigned long (*process_priority_class)();  // 0: it failed
    unsigned long (*last_error)();
};

// The table in use; tests put one of their own in its place.
TARVCORE_API extern std::atomic<const PriorityCalls*> priority_calls;

}  // namespace tarvcore::impl
