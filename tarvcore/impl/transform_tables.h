// The alphabets of the binary-to-text transforms (RFC 4648), and what is computed from them.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "tarvcore/config.h"

namespace tarvcore::impl {

inline constexpr char base64_alphabet[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
inline constexpr char base32_alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZ234567";
inline constexpr char hex_alphabet[] = "0123456789abcdef";

// In a table of values, in place of a value.
inline constexpr unsigned char padding_mark = 128;
inline constexpr unsigned char invalid_mark = 0xFF;

// By character code.
using ValueTable = std::array<unsigned char, 128>;

constexpr ValueTable value_table(std::string_view alphabet) {
    ValueTable table{};
    table.fill(invalid_mark);
    for (unsigned value = 0; value < alphabet.size(); ++value)
        table[static_cast<unsigned char>(alphabet[value])] = static_cast<unsigned char>(value);
    return table;
}

// Both the standard alphabet and the one that is safe in URLs and file names.
inline constexpr ValueTable base64_values = [] {
    ValueTable table = value_table(base64_alphabet);
    table['-'] = table['+'];
    table['_'] = table['/'];
    table['='] = padding_mark;
    return table;
}();

inline constexpr ValueTable base32_values = [] {
    ValueTable table = value_table(base32_alphabet);
    table['='] = padding_mark;
    return table;
}();

inline constexpr ValueTable hex_values = [] {
    ValueTable table = value_table(hex_alphabet);
    for (char lower = 'a'; lower <= 'f'; ++lower)
        table[static_cast<unsigned char>(lower - 'a' + 'A')] =
            table[static_cast<unsigned char>(lower)];
    return table;
}();

// For encoding by pairs: the two characters of each number of twice `bits` bits.
template <unsigned bits>
constexpr auto character_pairs(std::string_view alphabet) {
    std::array<std::array<char, 2>, 1 << (2 * bits)> pairs{};
    for (unsigned i = 0; i < pairs.size(); ++i)
        pairs[i] = {alphabet[i >> bits], alphabet[i % (1 << bits)]};
    return pairs;
}

// For decoding by fours: by a character's place and code its bits in a word, which `bits_at` makes
// of its place and value.
inline constexpr std::uint32_t no_value = 0x80000000;
template <class BitsAt>
constexpr auto bits_by_place(const ValueTable& values, BitsAt bits_at) {
    std::array<std::array<std::uint32_t, 256>, 4> tables{};
    for (unsigned place = 0; place < 4; ++place) {
        tables[place].fill(no_value);
        for (unsigned code = 0; code < values.size(); ++code) {
            if (values[code] < padding_mark) tables[place][code] = bits_at(place, values[code]);
        }
    }
    return tables;
}

}  // namespace tarvcore::impl
