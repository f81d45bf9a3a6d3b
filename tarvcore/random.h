// Random numbers.
#pragma once

#include <cstdint>

#include "tarvcore/config.h"

// From one generator of the process, seeded by the clock and the processor's counters: MT19937 with
// the time-stamp counter mixed in.  Any number of threads may draw at once.  Numbers of all values
// are equally likely.  They are for choices, samples and identifiers, not for secrets: who has seen
// enough of them can tell the next ones.
namespace tarvcore {

// Fills a buffer of any alignment; faster by far than number by number.
TARVCORE_API void random_fill(void* buffer, unsigned int size);

// One of all the numbers of its type.
TARVCORE_API int random_int();
TARVCORE_API unsigned int random_uint();
TARVCORE_API std::int32_t random_int32();
TARVCORE_API std::uint32_t random_uint32();
TARVCORE_API long random_long();
TARVCORE_API unsigned long random_ulong();
TARVCORE_API std::int64_t random_int64();
TARVCORE_API std::uint64_t random_uint64();

// From 0 up to, not including, 1: one of 2^53 values at equal distances.
TARVCORE_API double random_double();

}  // namespace tarvcore
