// The system calls behind affinity.
#pragma once

#include <atomic>

#include "tarvcore/config.h"

namespace tarvcore::impl {

// As Windows has them; what fails says why in `last_error`.
struct AffinityCalls {
    bool (*process_affinity_mask)(unsigned long& mask);
    // The thread's mask until now; 0: it failed.
    unsigned long (*set_thread_affinity_mask)(void* thread, unsigned long mask);
    // The thread's ideal processor until now; 0xFFFFFFFF: it failed.
    unsigned long (*set_thread_ideal_processor)(void* thread, unsigned long cpu);
    unsigned long (*last_error)();
};

// The table in use; tests put one of their own in its place.
TARVCORE_API extern std::atomic<const AffinityCalls*> affinity_calls;

}  // namespace tarvcore::impl
