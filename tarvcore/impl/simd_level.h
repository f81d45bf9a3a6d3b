// Which instructions above the baseline the library uses.
#pragma once

#include <atomic>

#include "tarvcore/config.h"

namespace tarvcore::impl {

// Each level has the instructions of those before it.  The baseline is SSE2.
enum class SimdLevel { sse2, ssse3, sse41, avx2 };

// The highest level that processor and operating system have, looked up once; or what
// `force_simd_level` has set.  Everything that has code above the baseline chooses by it.  It does
// not ask hardware::CpuInfo, which tells what the processor says whether or not the system keeps
// the wide registers, reads all leaves for it, and lies layers above.
inline SimdLevel simd_level() noexcept;

// Makes `simd_level` answer a lower level, so that tests reach every path: a level above what the
// machine has is lowered to that.  Not for use while other threads convert.
TARVCORE_API void force_simd_level(SimdLevel level) noexcept;

// What `simd_level` answers; less than 0 before it is looked up.
TARVCORE_API extern std::atomic<int> simd_level_in_use;
TARVCORE_API SimdLevel look_up_simd_level() noexcept;

inline SimdLevel simd_level() noexcept {
    const int level = simd_level_in_use.load(std::memory_order_relaxed);
    return level >= 0 ? static_cast<SimdLevel>(level) : look_up_simd_level();
}

}  // namespace tarvcore::impl
