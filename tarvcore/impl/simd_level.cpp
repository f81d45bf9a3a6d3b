#include "tarvcore/impl/simd_level.h"

#include <algorithm>
#include <iterator>

TARVCORE_SOURCE_FILE("$Id: //tarvcore/impl/simd_level.cpp#1 $");

namespace tarvcore::impl {
namespace {

// The highest level up to which the machine has all.  The compiler's test includes whether the
// operating system keeps the wide registers.
SimdLevel machine_level() {
    __builtin_cpu_init();
    const bool has[] = {__builtin_cpu_supports("ssse3") != 0, __builtin_cpu_supports("sse4.1") != 0,
                        __builtin_cpu_supports("avx2") != 0};
    return static_cast<SimdLevel>(std::find(std::begin(has), std::end(has), false) - has);
}

}  // namespace

constinit std::atomic<int> simd_level_in_use = -1;

SimdLevel look_up_simd_level() noexcept {
    const SimdLevel level = machine_level();
    simd_level_in_use.store(static_cast<int>(level), std::memory_order_relaxed);
    return level;
}

void force_simd_level(SimdLevel level) noexcept {
    const int lowered = static_cast<int>(std::min(level, machine_level()));
    simd_level_in_use.store(lowered, std::memory_order_relaxed);
}

}  // namespace tarvcore::impl
