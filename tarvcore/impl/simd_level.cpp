#include "tarvcore/impl/simd_level.h"

#include <algorithm>
#include <iterator>

TARVCORE_SOURCE_FILE("$Id: //tarvcore/impl/simd_level.cpp#1 $");

namespace tarvcore::impl {
namespace {

constexpr int not_looked_up = -1;

constinit int chosen_level = not_looked_up;

// The highest level up to which the machine has all.  The compiler's test includes whether the
// operating system keeps the wide registers.
SimdLevel machine_level() {
    __builtin_cpu_init();
    const bool has[] = {__builtin_cpu_supports("ssse3") != 0, __builtin_cpu_supports("sse4.1") != 0,
                        __builtin_cpu_supports("avx2") != 0};
    return static_cast<SimdLevel>(std::find(std::begin(has), std::end(has), false) - has);
}

}  // namespace

SimdLevel simd_level() noexcept {
    int level = __atomic_load_n(&chosen_level, __ATOMIC_RELAXED);
    if (level == not_looked_up) {
        level = static_cast<int>(machine_level());
        __atomic_store_n(&chosen_level, level, __ATOMIC_RELAXED);
    }
    return static_cast<SimdLevel>(level);
}

void force_simd_level(SimdLevel level) noexcept {
    const int lowered = static_cast<int>(std::min(level, machine_level()));
    __atomic_store_n(&chosen_level, lowered, __ATOMIC_RELAXED);
}

}  // namespace tarvcore::impl
