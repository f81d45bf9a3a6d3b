// Where new identifiers get their time and their random bits.
#pragma once

#include <atomic>
#include <cstdint>

#include "tarvcore/abs_rel_time.h"
#include "tarvcore/config.h"

namespace tarvcore::impl {

struct UuidCalls {
    AbsoluteTime (*now)();
    std::uint32_t (*random)();
    void (*random_fill)(void* buffer, unsigned size);
};

// The table in use; tests put one of their own in its place.
TARVCORE_API extern std::atomic<const UuidCalls*> uuid_calls;

}  // namespace tarvcore::impl
