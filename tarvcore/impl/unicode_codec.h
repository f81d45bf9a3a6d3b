// Single characters of UTF-8, UTF-16 and UCS-4: the rules, without raising or touching errno.
//
// UTF-8 is the six-byte form of RFC 2279: code points up to 0x7FFFFFFF.  Surrogates, U+FEFF, U+FFFE
// and U+FFFF are refused in every encoding.
#pragma once

#include <cstdint>
#include <string>

#include "tarvcore/config.h"

namespace tarvcore::impl {

constexpr bool is_utf8_continuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

constexpr bool is_high_surrogate(std::uint32_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}
constexpr bool is_low_surrogate(std::uint32_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

constexpr bool is_forbidden_code_point(std::uint32_t c) {
    return (c >= 0xD800 && c < 0xE000) || c == 0xFEFF || c == 0xFFFE || c == 0xFFFF;
}

// The longest prefix of a text, in bytes, that is not longer than `limit` and does not end inside a
// UTF-8 sequence.
constexpr unsigned utf8_prefix_length(const char* text, unsigned length, unsigned limit) {
    if (limit >= length) return length;
    while (limit > 0 && is_utf8_continuation(text[limit]))
        --limit;
    return limit;
}

// A decoded character and the units it took; 0 units: the source does not start with a character.
struct DecodedCharacter {
    std::uint32_t code_point;
    unsigned units;
};

// `length` is at least 1.  Unit is a 16-bit type.
template <class Unit>
constexpr DecodedCharacter decode_utf16(const Unit* source, unsigned length) {
    static_assert(sizeof(Unit) == 2);
    const std::uint32_t first = source[0];
    if (is_high_surrogate(first)) {
        if (length < 2 || !is_low_surrogate(source[1])) return {0, 0};
        return {((first - 0xD7C0) << 10) | (source[1] & 0x3FFu), 2};
    }
    if (is_forbidden_code_point(first)) return {0, 0};
    return {first, 1};
}

// How many units to pass over where `decode_utf16` found no character: a high surrogate takes the
// unit after it along, whatever that is.
template <class Unit>
constexpr unsigned utf16_units_to_skip(const Unit* source, unsigned length) {
    return is_high_surrogate(source[0]) && length >= 2 ? 2 : 1;
}

constexpr unsigned max_utf8_sequence_length = 6;

// Writes the UTF-8 form of a code point and answers its length in bytes; 0, and nothing written,
// when the code point is forbidden or above 0x7FFFFFFF.  The destination has room for
// max_utf8_sequence_length bytes.
TARVCORE_API unsigned encode_utf8(std::uint32_t code_point, char* destination);

// UTF-16 to UTF-8 where everything that is no character becomes `replacement`.  Conversion ends
// early once the result is longer than `enough` bytes.
TARVCORE_API std::string utf16_to_utf8_replacing(const wchar_t* text, unsigned length,
                                                 char replacement, unsigned enough = 0xFFFFFFFF);

}  // namespace tarvcore::impl
