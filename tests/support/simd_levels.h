// The same at every level of instructions.
#pragma once

#include "tarvcore/impl/simd_level.h"

namespace tarv_test {

using tarvcore::impl::SimdLevel;

// Calls `check(level)` at each level that this machine has.
template <class Check>
void at_each_level(Check check) {
    struct Highest {
        ~Highest() { tarvcore::impl::force_simd_level(SimdLevel::avx2); }
    } afterwards;
    for (const SimdLevel level :
         {SimdLevel::sse2, SimdLevel::ssse3, SimdLevel::sse41, SimdLevel::avx2}) {
        tarvcore::impl::force_simd_level(level);
        if (tarvcore::impl::simd_level() == level) check(level);
    }
}

}  // namespace tarv_test
