// The text of instants.

#include <array>
#include <cstring>
#include <ostream>
#include <string_view>

#include "tarvcore/abs_rel_time.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/absolute_time_text.cpp#1 $");

namespace tarvcore {
namespace {

constexpr std::string_view infinite_text = "##INFINITE##";

constexpr auto digit_pairs = [] {
    std::array<char, 200> pairs{};
    for (unsigned i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}();

// Write that many digits and answer the end.
char* write_2(char* out, std::uint32_t number) {
    std::memcpy(out, &digit_pairs[2 * number], 2);
    return out + 2;
}

char* write_4(char* out, std::uint32_t number) {
    return write_2(write_2(out, number / 100), number % 100);
}

// "." and the digits without zeros at their end, but one at least.
char* write_fraction(char* out, std::uint32_t nanosecond) {
    *out++ = '.';
    if (nanosecond == 0) {
        *out++ = '0';
        return out;
    }
    const std::uint32_t upper_5 = nanosecond / 10000;
    *out++ = static_cast<char>('0' + upper_5 / 10000);
    out = write_4(out, upper_5 % 10000);
    out = write_4(out, nanosecond % 10000);
    while (out[-1] == '0')
        --out;
    return out;
}

constexpr unsigned max_length = sizeof "2014-07-16T13:23:00.123456789Z" - 1;

// Writes a finite time, whose year has four digits, and answers the end.
char* write_time(char* out, const AbsoluteTime& time, char separator) {
    const impl::DayAndTime split = impl::split_count(time.as_nsec());
    const impl::Date date = impl::date_from_jdn(split.jdn);
    const impl::TimeOfDay clock = impl::split_second_of_day(split.second_of_day);
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

}  // namespace

std::string AbsoluteTime::as_string() const {
    if (is_infinite()) return std::string(infinite_text);
    char text[max_length];
    return std::string(text, write_time(text, *this, ' '));
}

std::string AbsoluteTime::as_iso8601_string() const {
    if (is_infinite()) return "9999-12-31T23:59:59.999999999Z";
    char text[max_length];
    char* end = write_time(text, *this, 'T');
    *end++ = 'Z';
    return std::string(text, end);
}

std::ostream& operator<<(std::ostream& os, const AbsoluteTime& time) {
    if (time.is_infinite()) return os << infinite_text;
    char text[max_length];
    return os << std::string_view(text, write_time(text, time, ' '));
}

}  // namespace tarvcore
