// 64-bit counters that another writes while they are read.
#pragma once

#include <cstdint>

#include "tarvcore/config.h"

namespace tarvcore::impl {

// As the kernel publishes its clocks.  It writes the second copy of the high word first and the
// first one last; the processor keeps the order of writes, and that of reads.
struct SharedCounter {
    std::uint32_t low;
    std::uint32_t high_1;
    std::uint32_t high_2;
};

// A value that was there as a whole, without a lock: read again where the writer came between.
TARVCORE_INLINE std::uint64_t read_shared_counter(const volatile SharedCounter& counter) {
    for (;;) {
        const std::uint32_t high = counter.high_1;
        const std::uint32_t low = counter.low;
        if (high == counter.high_2) return std::uint64_t{high} << 32 | low;
        __builtin_ia32_pause();
    }
}

// The time since the system's start in units of 100 ns, on the page that the kernel shares with all
// processes, at the same address in each.
TARVCORE_INLINE const volatile SharedCounter& interrupt_time() {
    constexpr std::uintptr_t shared_user_data = 0x7FFE0000;
    constexpr std::uintptr_t place = 8;
    return *reinterpret_cast<const volatile SharedCounter*>(shared_user_data + place);
}

}  // namespace tarvcore::impl
