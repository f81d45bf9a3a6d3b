// Writing the text of times, into the caller's memory: each function answers the end of what it
// wrote.  gdb/printers.py writes the same.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "tarvcore/config.h"
#include "tarvcore/impl/calendar_arithmetic.h"

namespace tarvcore::impl {

inline constexpr std::string_view infinite_text = "##INFINITE##";

inline constexpr auto digit_pairs = [] {
    std::array<char, 200> pairs{};
    for (unsigned i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}();

// That many digits.
TARVCORE_INLINE char* write_2(char* out, std::uint32_t number) {
    std::memcpy(out, &digit_pairs[2 * number], 2);
    return out + 2;
}

TARVCORE_INLINE char* write_4(char* out, std::uint32_t number) {
    return write_2(write_2(out, number / 100), number % 100);
}

// "." and nine decimals without zeros at their end, but one at least.
inline char* write_fraction(char* out, std::uint32_t billionths) {
    *out++ = '.';
    if (billionths == 0) {
        *out++ = '0';
        return out;
    }
    const std::uint32_t upper_5 = billionths / 10000;
    *out++ = static_cast<char>('0' + upper_5 / 10000);
    out = write_4(out, upper_5 % 10000);
    out = write_4(out, billionths % 10000);
    while (out[-1] == '0')
        --out;
    return out;
}

inline constexpr unsigned max_instant_length = sizeof "2014-07-16 13:23:00.123456789" - 1;

// A finite instant, whose year has four digits.
inline char* write_instant(char* out, std::int64_t count, char separator) {
    const DayAndTime split = split_count(count);
    const Date date = date_from_jdn(split.day);
    const TimeOfDay clock = split_second_of_day(split.second_of_day);
    out = write_4(out, date.year);
    *out++ = '-';
    out = write_2(out, date.month);
    *out++ = '-';
    out = write_2(out, date.day);
    *out++ = separator;
    out = write_2(out, clock.hour);
    *out++ = ':';
    out = write_2(out, clock.minute);
    *out++ = ':';
    out = write_2(out, clock.second);
    return write_fraction(out, split.nanosecond);
}

}  // namespace tarvcore::impl
