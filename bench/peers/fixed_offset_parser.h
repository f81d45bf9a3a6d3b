// A parser for one form of instants and nothing else, tuned by hand: the yardstick for ours, which
// reads all forms.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "bench/peers/neri_schneider.h"

namespace tarv_bench {

namespace fixed_offset {

// Four digits at once.  XOR with '0' leaves 0 to 9 of digits; adding 0x76 carries all others into
// the sign bit, or they have it.
inline std::uint32_t digits(std::uint32_t word, std::uint32_t& bad) {
    word ^= 0x30303030;
    bad |= word | (word + 0x76767676);
    return word;
}
// The numbers of the first two and of the last two digits, in the lower and in the upper half.
inline std::uint32_t pairs(std::uint32_t digits) {
    return (digits * 10 + (digits >> 8)) & 0x00FF00FF;
}
inline std::uint32_t number(std::uint32_t pairs) {
    return (pairs & 0xFFFF) * 100 + (pairs >> 16);
}

template <class Word>
std::uint32_t load(const char* text) {
    Word word;
    std::memcpy(&word, text, sizeof word);
    return word;
}
inline std::uint32_t read_number(const char* text, std::uint32_t& bad) {
    return number(pairs(digits(load<std::uint32_t>(text), bad)));
}
// Two pairs of digits that stand apart.
inline std::uint32_t read_pairs(const char* first, const char* second, std::uint32_t& bad) {
    const std::uint32_t word = load<std::uint16_t>(first) | load<std::uint16_t>(second) << 16;
    return pairs(digits(word, bad));
}

}  // namespace fixed_offset

// Reads "YYYY-MM-DDTHH:MM:SS.fffffffffZ"; false for all else.
inline bool parse_fixed_offset(const char* text, std::size_t length, std::int64_t* nanoseconds) {
    using namespace fixed_offset;
    if (length != 30) return false;
    const bool separated = (text[4] == '-') & (text[7] == '-') & (text[10] == 'T') &
                           (text[13] == ':') & (text[16] == ':') & (text[19] == '.') &
                           (text[29] == 'Z');
    std::uint32_t bad = 0;
    const std::uint32_t year = read_number(text, bad);
    const std::uint32_t month_day = read_pairs(text + 5, text + 8, bad);
    const std::uint32_t hour_minute = read_pairs(text + 11, text + 14, bad);
    const std::uint32_t second_and_more = read_pairs(text + 17, text + 20, bad);
    const std::uint32_t second = second_and_more & 0xFFFF;
    const std::uint32_t next_4 = read_number(text + 22, bad);
    const std::uint32_t last_3 = read_number(text + 25, bad) % 1000;
    if (!separated || (bad & 0x80808080) != 0) return false;

    const std::uint32_t month = month_day & 0xFFFF, day = month_day >> 16;
    const std::uint32_t hour = hour_minute & 0xFFFF, minute = hour_minute >> 16;
    static constexpr std::uint8_t month_lengths[] = {31, 29, 31, 30, 31, 30,
                                                     31, 31, 30, 31, 30, 31};
    if (month - 1 >= 12 || day - 1 >= month_lengths[month - 1]) return false;
    if (day == 29 && month == 2 && (year % 4 != 0 || (year % 100 == 0 && year % 400 != 0))) {
        return false;
    }
    if (hour > 23 || minute > 59 || second > 59) return false;

    const std::uint32_t fraction = (second_and_more >> 16) * 10000000 + next_4 * 1000 + last_3;
    const std::int32_t days =
        neri_schneider::days_from_date({static_cast<std::int32_t>(year), month, day});
    const std::uint32_t second_of_day = (hour * 60 + minute) * 60 + second;
    constexpr std::uint32_t ns_per_second = 1000000000;
    constexpr std::int64_t ns_per_day = std::int64_t{86400} * ns_per_second;
    const std::uint64_t ns_of_day = std::uint64_t{second_of_day} * ns_per_second + fraction;
    *nanoseconds = days * ns_per_day + static_cast<std::int64_t>(ns_of_day);
    return true;
}

}  // namespace tarv_bench
