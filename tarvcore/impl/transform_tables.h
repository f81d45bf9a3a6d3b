// The alphabets of the binary-to-text transforms (RFC 4648), and what is computed from them.
#pragma once

#include <array>
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

}  // namespace tarvcore::impl
