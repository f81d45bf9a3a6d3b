// The text of durations.  gdb/printers.py writes the same.

#include <ostream>
#include <string_view>

#include "tarvcore/abs_rel_time.h"
#include "tarvcore/impl/time_text.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/relative_time_text.cpp#1 $");

namespace tarvcore {
namespace {

constexpr std::uint32_t ns_per_us = 1000;
constexpr std::uint32_t ns_per_ms = 1'000'000;

constexpr unsigned max_length = sizeof "-106751d 23h 47m 16.854775808s" - 1;

// No zeros before it.
char* write_number(char* out, std::uint32_t number) {
    if (number >= 100) {
        out = write_number(out, number / 100);
        return impl::write_2(out, number % 100);
    }
    if (number >= 10) return impl::write_2(out, number);
    *out++ = static_cast<char>('0' + number);
    return out;
}

// A number with its unit, and a blank behind it.
char* write_field(char* out, std::uint32_t number, char unit) {
    out = write_number(out, number);
    *out++ = unit;
    *out++ = ' ';
    return out;
}

char* write_below_second(char* out, std::uint32_t nanosecond) {
    if (nanosecond <= ns_per_us) {
        out = write_number(out, nanosecond);
        *out++ = 'n';
    } else if (nanosecond <= ns_per_ms) {
        out = write_number(out, nanosecond / ns_per_us);
        out = impl::write_fraction(out, nanosecond % ns_per_us * 1'000'000);
        *out++ = 'u';
    } else {
        out = write_number(out, nanosecond / ns_per_ms);
        out = impl::write_fraction(out, nanosecond % ns_per_ms * 1000);
        *out++ = 'm';
    }
    *out++ = 's';
    return out;
}

// Which form it is depends on the whole seconds alone.
char* write_seconds(char* out, impl::DayAndTime split) {
    if (split.day == 1 && split.second_of_day == 0)
        split = {0, impl::seconds_per_day, split.nanosecond};
    if (split.day == 0 && split.second_of_day <= 60) {
        out = write_number(out, split.second_of_day);
    } else if (split.day == 0 && split.second_of_day <= 3600) {
        out = write_field(out, split.second_of_day / 60, 'm');
        out = impl::write_2(out, split.second_of_day % 60);
    } else {
        const impl::TimeOfDay time = impl::split_second_of_day(split.second_of_day);
        if (split.day != 0) out = write_field(out, split.day, 'd');
        out = write_field(out, time.hour, 'h');
        out = write_field(out, time.minute, 'm');
        out = write_number(out, time.second);
    }
    out = impl::write_fraction(out, split.nanosecond);
    *out++ = 's';
    return out;
}

// A finite duration.
char* write_duration(char* out, std::int64_t count) {
    const bool is_negative = count < 0;
    if (is_negative) *out++ = '-';
    const auto magnitude =
        static_cast<std::uint64_t>(is_negative ? impl::wrapping_subtract(0, count) : count);
    if (magnitude < impl::ns_per_second) {
        return write_below_second(out, static_cast<std::uint32_t>(magnitude));
    }
    return write_seconds(out, impl::split_duration(magnitude));
}

}  // namespace

std::string RelativeTime::as_string() const {
    if (is_infinite()) return std::string(impl::infinite_text);
    char text[max_length];
    return std::string(text, write_duration(text, as_nsec()));
}

std::ostream& operator<<(std::ostream& os, const RelativeTime& time) {
    if (time.is_infinite()) return os << impl::infinite_text;
    char text[max_length];
    return os << std::string_view(text, write_duration(text, time.as_nsec()));
}

}  // namespace tarvcore
