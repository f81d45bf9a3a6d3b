// 64-bit arithmetic for 32-bit code: what wraps, and what is cheaper than it looks.
#pragma once

#include <cstdint>
#include <limits>

#include "tarvcore/config.h"

namespace tarvcore::impl {

// Modulo 2^64, as signed numbers.
constexpr std::int64_t wrapping_add(std::int64_t a, std::int64_t b) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) + static_cast<std::uint64_t>(b));
}
constexpr std::int64_t wrapping_subtract(std::int64_t a, std::int64_t b) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) - static_cast<std::uint64_t>(b));
}
constexpr std::int64_t wrapping_multiply(std::int64_t a, std::int64_t b) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) * static_cast<std::uint64_t>(b));
}

// One multiplication instruction.
TARVCORE_INLINE constexpr std::uint64_t multiply_wide(std::uint32_t a, std::uint32_t b) {
    return static_cast<std::uint64_t>(a) * b;
}

// Towards zero.  What is no 64-bit number, infinities and NaN among it, is the smallest one: that
// is what the processor answers, and callers have always relied on it.
constexpr std::int64_t int64_from_double(double value) {
    constexpr double limit = 9223372036854775808.0;
    return value >= -limit && value < limit ? static_cast<std::int64_t>(value)
                                            : std::numeric_limits<std::int64_t>::min();
}

}  // namespace tarvcore::impl
