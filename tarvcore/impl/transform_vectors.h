// Tables with which vectors look up characters of the binary-to-text transforms.
#pragma once

#include <array>

#include <immintrin.h>

#include "tarvcore/config.h"
#include "tarvcore/impl/transform_tables.h"

namespace tarvcore::impl {

// What a shuffle looks up in.
struct alignas(16) ShuffleTable : std::array<unsigned char, 16> {};

[[gnu::target("ssse3")]] inline __m128i load_table(const ShuffleTable& table) {
    return _mm_load_si128(reinterpret_cast<const __m128i*>(table.data()));
}
// The same in either half.
[[gnu::target("avx2")]] inline __m256i load_table_twice(const ShuffleTable& table) {
    return _mm256_broadcastsi128_si256(load_table(table));
}

// A character of an alphabet is told by the two halves of its code: each higher half has a bit, and
// each lower half the bits of the higher ones with which it makes such a character.  The last bit
// is that of the higher halves with which nothing does.
constexpr unsigned bit_of_higher_half(unsigned half) {
    return half < 2 || half > 7 ? 0x80 : 1u << (half - 2);
}

inline constexpr ShuffleTable higher_bits = [] {
    ShuffleTable table{};
    for (unsigned half = 0; half < table.size(); ++half)
        table[half] = static_cast<unsigned char>(bit_of_higher_half(half));
    return table;
}();

constexpr ShuffleTable lower_bits_of(const ValueTable& values) {
    ShuffleTable table{};
    for (unsigned code = 0; code < values.size(); ++code) {
        unsigned char& bits = table[code & 15];
        if (values[code] < padding_mark)
            bits = static_cast<unsigned char>(bits | bit_of_higher_half(code >> 4));
    }
    return table;
}

// The other way round: the bits of the higher halves with which a lower one is at fault.
constexpr ShuffleTable lower_faults_of(const ValueTable& values) {
    ShuffleTable table = lower_bits_of(values);
    for (unsigned char& bits : table)
        bits = static_cast<unsigned char>(~bits);
    return table;
}

}  // namespace tarvcore::impl
