// Tables by which vector code finds faults of UTF-8.
//
// The algorithm is that of Keiser and Lemire ("Validating UTF-8 in less than one instruction per
// byte", 2021): three look-ups by half bytes, two for a byte and one for its successor, find every
// fault of two neighbouring bytes.
#pragma once

#include <array>
#include <cstdint>

namespace tarvcore::impl::utf8_faults {

// A bit for every fault of two neighbours; the last two of four bytes share one, since no two bytes
// can have both.  Code points above U+10FFFF count as faults here: they are left to others.
constexpr std::uint8_t too_short = 1 << 0;      // a lead, then no continuation
constexpr std::uint8_t too_long = 1 << 1;       // ASCII, then a continuation
constexpr std::uint8_t overlong_3 = 1 << 2;     // E0 80...9F
constexpr std::uint8_t too_large = 1 << 3;      // F4 90...BF, F5...FF and a continuation
constexpr std::uint8_t surrogate = 1 << 4;      // ED A0...BF
constexpr std::uint8_t overlong_2 = 1 << 5;     // C0, C1 and a continuation
constexpr std::uint8_t overlong_4 = 1 << 6;     // F0 80...8F
constexpr std::uint8_t too_large_80 = 1 << 6;   // F5...FF 80...8F
constexpr std::uint8_t continuations = 1 << 7;  // two: a fault unless a lead of three bytes or
                                                // more stands in front
constexpr std::uint8_t carry = too_short | too_long | continuations;  // what the low half decides
                                                                      // nothing about

using Nibbles = std::array<std::uint8_t, 16>;

alignas(16) inline constexpr Nibbles by_first_high = {
    too_long,
    too_long,
    too_long,
    too_long,
    too_long,
    too_long,
    too_long,
    too_long,
    continuations,
    continuations,
    continuations,
    continuations,
    too_short | overlong_2,
    too_short,
    too_short | overlong_3 | surrogate,
    too_short | too_large | too_large_80 | overlong_4,
};
alignas(16) inline constexpr Nibbles by_first_low = {
    carry | overlong_2 | overlong_3 | overlong_4,
    carry | overlong_2,
    carry,
    carry,
    carry | too_large,
    carry | too_large | too_large_80,
    carry | too_large | too_large_80,
    carry | too_large | too_large_80,
    carry | too_large | too_large_80,
    carry | too_large | too_large_80,
    carry | too_large | too_large_80,
    carry | too_large | too_large_80,
    carry | too_large | too_large_80,
    carry | too_large | too_large_80 | surrogate,
    carry | too_large | too_large_80,
    carry | too_large | too_large_80,
};
constexpr std::uint8_t any_continuation = too_long | overlong_2 | continuations;
alignas(16) inline constexpr Nibbles by_second_high = {
    too_short,
    too_short,
    too_short,
    too_short,
    too_short,
    too_short,
    too_short,
    too_short,
    any_continuation | overlong_3 | too_large_80 | overlong_4,
    any_continuation | overlong_3 | too_large,
    any_continuation | surrogate | too_large,
    any_continuation | surrogate | too_large,
    too_short,
    too_short,
    too_short,
    too_short,
};

}  // namespace tarvcore::impl::utf8_faults
