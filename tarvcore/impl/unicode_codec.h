// Single characters of UTF-8, UTF-16 and UCS-4: the rules, without raising or touching errno.
//
// UTF-8 is the six-byte form of RFC 2279: code points up to 0x7FFFFFFF.  Surrogates, U+FEFF, U+FFFE
// and U+FFFF are refused in every encoding.
#pragma once

#include <bit>
#include <cstdint>

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

// The bytes of a sequence by its first one; 0: no sequence starts with it.
constexpr unsigned utf8_sequence_length(char lead) {
    const auto ones = static_cast<unsigned>(std::countl_one(static_cast<unsigned char>(lead)));
    return ones == 0 ? 1 : ones == 1 || ones > 6 ? 0 : ones;
}

// A decoded character and the units it took; 0 units: the source does not start with a character.
struct DecodedCharacter {
    std::uint32_t code_point;
    unsigned units;
};

// Decoding: `length` is at least 1 and may be more than the character takes.

constexpr DecodedCharacter decode_utf8(const char* source, unsigned length) {
    const auto lead = static_cast<unsigned char>(source[0]);
    if (lead < 0x80) return {lead, 1};
    const unsigned units = utf8_sequence_length(source[0]);
    if (units == 0 || units > length) return {0, 0};
    std::uint32_t c = lead & (0x7Fu >> units);
    for (unsigned i = 1; i < units; ++i) {
        if (!is_utf8_continuation(source[i])) return {0, 0};
        c = c << 6 | (static_cast<unsigned char>(source[i]) & 0x3Fu);
    }
    // The smallest code point that needs that many bytes: anything below has a shorter form, which
    // is the only one allowed.
    const std::uint32_t smallest = units == 2 ? 0x80 : 1u << (5 * units - 4);
    if (c < smallest || is_forbidden_code_point(c)) return {0, 0};
    return {c, units};
}

// Unit is a 16-bit type.
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

constexpr DecodedCharacter decode_ucs4(const std::uint32_t* source, unsigned /*length*/) {
    if (is_forbidden_code_point(source[0]) || source[0] > 0x7FFFFFFF) return {0, 0};
    return {source[0], 1};
}

// How many units to pass over where decoding found no character.

// The first byte and all continuation bytes after it.
constexpr unsigned utf8_units_to_skip(const char* source, unsigned length) {
    unsigned units = 1;
    while (units < length && is_utf8_continuation(source[units]))
        ++units;
    return units;
}

// A high surrogate takes the unit after it along, whatever that is.
template <class Unit>
constexpr unsigned utf16_units_to_skip(const Unit* source, unsigned length) {
    return is_high_surrogate(source[0]) && length >= 2 ? 2 : 1;
}

// The units that a code point takes; 0: the encoding does not have it.

constexpr unsigned max_utf8_sequence_length = 6;

constexpr unsigned utf8_units(std::uint32_t c) {
    if (c < 0x80) return 1;
    if (is_forbidden_code_point(c) || c > 0x7FFFFFFF) return 0;
    return c < 0x800 ? 2 : c < 0x10000 ? 3 : c < 0x200000 ? 4 : c < 0x4000000 ? 5 : 6;
}

constexpr unsigned utf16_units(std::uint32_t c) {
    if (is_forbidden_code_point(c) || c > 0x10FFFF) return 0;
    return c < 0x10000 ? 1 : 2;
}

// Encoding: writes the units of a code point, which the encoding must have, and answers how many
// they are.

constexpr unsigned encode_utf8(std::uint32_t c, char* destination) {
    if (c < 0x80) {
        destination[0] = static_cast<char>(c);
        return 1;
    }
    const unsigned units = utf8_units(c);
    for (unsigned i = units; --i > 0; c >>= 6) {
        destination[i] = static_cast<char>(0x80 | (c & 0x3F));
    }
    // The lead byte has as many high bits set as the sequence has bytes.
    destination[0] = static_cast<char>((0xFF00u >> units) | c);
    return units;
}

// Unit is a 16-bit type.
template <class Unit>
constexpr unsigned encode_utf16(std::uint32_t c, Unit* destination) {
    static_assert(sizeof(Unit) == 2);
    const unsigned units = utf16_units(c);
    if (units == 1) {
        destination[0] = static_cast<Unit>(c);
    } else {
        destination[0] = static_cast<Unit>(0xD7C0 + (c >> 10));
        destination[1] = static_cast<Unit>(0xDC00 | (c & 0x3FF));
    }
    return units;
}

}  // namespace tarvcore::impl
