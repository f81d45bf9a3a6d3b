// Reading decimal digits, several at once.
#pragma once

#include <cstdint>
#include <cstring>

#include "tarvcore/config.h"

namespace tarvcore::impl {

// More than 9 for what is no digit.
constexpr unsigned digit(char c) {
    return static_cast<unsigned>(c) - '0';
}

// A word holds one digit in each byte, the first in the lowest.

TARVCORE_INLINE std::uint32_t load_4(const char* text) {
    std::uint32_t word;
    std::memcpy(&word, text, sizeof word);
    return word ^ 0x30303030;
}
TARVCORE_INLINE std::uint32_t load_2(const char* text) {
    std::uint16_t word;
    std::memcpy(&word, text, sizeof word);
    return word ^ 0x3030u;
}

// Digits, XOR the character '0', are numbers from 0 to 9.  The sum of any other byte and 6 has
// upper bits set, or the byte has; a carry comes from such a byte only.
constexpr bool are_digits(std::uint32_t word) {
    return ((word | (word + 0x06060606)) & 0xF0F0F0F0) == 0;
}
// The words 10 * first + second of two pairs: one in the lower half, one in the upper.
constexpr std::uint32_t pairs(std::uint32_t word) {
    return (word * 10 + (word >> 8)) & 0x00FF00FF;
}
constexpr std::uint32_t first_pair(std::uint32_t pairs) {
    return pairs & 0xFFFF;
}
constexpr std::uint32_t second_pair(std::uint32_t pairs) {
    return pairs >> 16;
}
constexpr std::uint32_t number(std::uint32_t pairs) {
    return first_pair(pairs) * 100 + second_pair(pairs);
}

// Reads the digits at the start of a text, nine of them at most, and answers how many there are.
TARVCORE_INLINE unsigned read_nine_digits(const char* text, const char* end, std::uint32_t& value) {
    value = 0;
    unsigned count = 0;
    if (end - text >= 8) {
        const std::uint32_t upper = load_4(text);
        const std::uint32_t lower = load_4(text + 4);
        if (are_digits(upper) && are_digits(lower)) {
            value = number(pairs(upper)) * 10000 + number(pairs(lower));
            count = 8;
        }
    }
    while (count < 9 && text + count != end && digit(text[count]) <= 9) {
        value = value * 10 + digit(text[count]);
        ++count;
    }
    return count;
}

}  // namespace tarvcore::impl
