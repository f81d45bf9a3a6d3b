// Reading the text of instants.

#include <array>
#include <utility>

#include "tarvcore/abs_rel_time.h"
#include "tarvcore/error_code_constants.h"
#include "tarvcore/error_exception.h"
#include "tarvcore/impl/digit_words.h"
#include "tarvcore/string_util.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/absolute_time_parser.cpp#1 $");

namespace tarvcore {
namespace {

// A reading function answers what is wrong, as the message of the error; null: nothing.
using Message = const char*;

using impl::are_digits;
using impl::digit;
using impl::first_pair;
using impl::load_2;
using impl::load_4;
using impl::ns_per_second;
using impl::number;
using impl::pairs;
using impl::second_pair;

constexpr Message good = nullptr;
constexpr Message invalid_text = "Invalid UTC time string: \"{@utcTime}\"";
constexpr Message invalid_date = "Invalid date in UTC time string: \"{@utcTime}\"";
constexpr Message invalid_separator =
    "Invalid date/time separator in UTC time string.  Expecting ' ' or 'T': \"{@utcTime}\"";
constexpr Message invalid_time = "Invalid time in UTC time string \"{@utcTime}\"";
constexpr Message not_at_end =
    "Invalid time in UTC time string (unexpected characters after 'Z') \"{@utcTime}\"";
constexpr Message has_zone =
    "Invalid time in UTC time string (time must be UTC, no timezone offset) \"{@utcTime}\"";
constexpr Message beyond_day =
    "Invalid time in UTC time string.  Time must be 00:00:00...24:00:00 (inclusive). "
    "\"{@utcTime}\"";
constexpr Message beyond_range =
    "Components of UTC date/time string exceeds date range: \"{@utcTime}\"";
constexpr Message no_instant = "Invalid UTC date/time string: \"{@utcTime}\"";

// The shortest text that is looked at as a date: 2014-07-16T13 or 20140716T1323.
constexpr unsigned min_length = 13;

// Reads YYYY-MM-DD or YYYYMMDD and moves behind it.  There must be ten characters.
TARVCORE_INLINE Message read_date(const char*& text, impl::Date& date) {
    const bool has_dashes = text[4] == '-' && text[7] == '-';
    const std::uint32_t year = load_4(text);
    const std::uint32_t month_and_day =
        has_dashes ? load_2(text + 5) | load_2(text + 8) << 16 : load_4(text + 4);
    if (!are_digits(year) || !are_digits(month_and_day)) return invalid_date;
    text += has_dashes ? 10 : 8;

    date.year = number(pairs(year));
    date.month = first_pair(pairs(month_and_day));
    date.day = second_pair(pairs(month_and_day));
    return date.month - 1 < 12 && date.day - 1 < 31 ? good : invalid_date;
}

// A time field, with what its first, second, ... decimal is worth in nanoseconds.  The values are
// truncated, so the twelfth decimal of an hour is worth 3 ns instead of 3.6: the texts of other
// modules are read the same way there.  Zero ends them.
struct TimeField {
    std::uint32_t limit;
    std::uint32_t seconds;
    std::array<std::uint64_t, 13> decimals;
};

consteval TimeField time_field(std::uint32_t limit, std::uint32_t seconds) {
    TimeField field = {limit, seconds, {}};
    std::uint64_t value = std::uint64_t{seconds} * impl::ns_per_second;
    for (std::uint64_t& decimal : field.decimals)
        decimal = value /= 10;
    return field;
}

constexpr TimeField time_fields[] = {
    time_field(24, 3600),
    time_field(59, 60),
    time_field(60, 1),
};

// Z or nothing, and then the end.
Message read_end(const char* text, const char* end) {
    if (text == end) return good;
    if (*text != 'Z' && *text != 'z') return invalid_time;
    return text + 1 == end ? good : not_at_end;
}

// Adds the decimals from the tenth on: those that are worth something, then one that rounds, and
// then digits and no more.
Message read_small_decimals(const char* text, const char* end, const TimeField& field,
                            std::uint64_t& ns) {
    for (unsigned i = 9; field.decimals[i] != 0; ++i, ++text) {
        if (text == end || digit(*text) > 9) return read_end(text, end);
        ns += digit(*text) * field.decimals[i];
    }
    if (text != end && digit(*text) - 5 < 5) ++ns;
    while (text != end && digit(*text) <= 9)
        ++text;
    return read_end(text, end);
}

// Adds the decimals to `ns`.
TARVCORE_INLINE Message read_fraction(const char* text, const char* end, const TimeField& field,
                                      std::uint64_t& ns) {
    // What the first nine are worth is exact.
    std::uint32_t value = 0;
    const unsigned count = impl::read_nine_digits(text, end, value);
    if (count == 0) return read_end(text, end);
    ns += value * field.decimals[count - 1];
    text += count;
    if (text == end || digit(*text) > 9) return read_end(text, end);
    return read_small_decimals(text, end, field, ns);
}

// Reads what may stand after a field that no other field follows.
TARVCORE_INLINE Message read_rest(const char* text, const char* end, const TimeField& field,
                                  std::uint64_t& ns) {
    if (text == end) return good;
    if (*text == '.' || *text == ',') return read_fraction(text + 1, end, field, ns);
    if (*text == '+' || *text == '-') return has_zone;
    return read_end(text, end);
}

// Reads any form of the time.
Message read_time_by_fields(const char* text, const char* end, std::uint64_t& ns) {
    std::uint32_t seconds = 0;
    bool has_colons = false;
    const TimeField* field = time_fields;
    for (;; ++field) {
        if (end - text < 2) return invalid_time;
        const std::uint32_t digits = load_2(text);
        const std::uint32_t value = first_pair(pairs(digits));
        if (!are_digits(digits) || value > field->limit) return invalid_time;
        text += 2;
        seconds += value * field->seconds;
        ns = impl::multiply_wide(seconds, ns_per_second);

        const bool is_hour = field == &time_fields[0];
        const bool is_second = field == &time_fields[2];
        if (text == end || is_second) break;
        if (is_hour) has_colons = *text == ':';
        if (has_colons && *text == ':') {
            ++text;
        } else if (has_colons || digit(*text) > 9) {
            // After hh:mm a comma and the sign of an offset are stray characters, and after a
            // fraction the sign is, though after any other field they are known for what they are.
            // It has always been so, and lists of times are written with commas.
            if (has_colons && *text != '.') return read_end(text, end);
            break;
        }
    }
    return read_rest(text, end, *field, ns);
}

// Reads what follows the separator: nanoseconds of the day.
TARVCORE_INLINE Message read_time(const char* text, const char* end, std::uint64_t& ns) {
    const bool is_usual = end - text >= 8 && text[2] == ':' && text[5] == ':';
    if (!is_usual) return read_time_by_fields(text, end, ns);

    const std::uint32_t hour_and_minute = load_2(text) | load_2(text + 3) << 16;
    const std::uint32_t second_digits = load_2(text + 6);
    const std::uint32_t hour = first_pair(pairs(hour_and_minute));
    const std::uint32_t minute = second_pair(pairs(hour_and_minute));
    const std::uint32_t second = first_pair(pairs(second_digits));
    if (!are_digits(hour_and_minute) || !are_digits(second_digits)) return invalid_time;
    if (hour > 24 || minute > 59 || second > 60) return invalid_time;
    ns = impl::multiply_wide((hour * 60 + minute) * 60 + second, ns_per_second);
    return read_rest(text + 8, end, time_fields[2], ns);
}

TARVCORE_COLD ErrorInfo::Ptr invalid_string(const char* text, unsigned length, Message message,
                                            ErrorInfo::Ptr nested = {}) {
    return ErrorInfo::create(error::tarvcore_absoluteTime_invalidUtcString, message,
                             ErrorParams().add("utcTime", std::string(text, length)),
                             TARVCORE_LOCATION("tarvcore::AbsoluteTime::from_string_nothrow()"),
                             std::move(nested));
}

// For dates beyond the instants: one of them stands for infinite.
TARVCORE_COLD ErrorInfo::Ptr from_date_beyond_range(const char* text, unsigned length,
                                                    impl::Date date, std::uint64_t ns,
                                                    AbsoluteTime* out) {
    const auto clock = impl::split_second_of_day(static_cast<std::uint32_t>(ns / ns_per_second));
    const AbsoluteTime::Components components(
        static_cast<std::int16_t>(date.year), static_cast<std::uint16_t>(date.month),
        static_cast<std::uint16_t>(date.day), static_cast<std::uint16_t>(clock.hour),
        static_cast<std::uint16_t>(clock.minute), static_cast<std::uint16_t>(clock.second),
        static_cast<std::uint32_t>(ns % ns_per_second));
    ErrorInfo::Ptr error = AbsoluteTime::from_components_nothrow(components, out);
    if (!error) return {};
    const bool is_range = error->matches(error::tarvcore_absoluteTime_range);
    return invalid_string(text, length, is_range ? beyond_range : no_instant, std::move(error));
}

bool is_infinite_text(const char* text, unsigned length) {
    return string_equal_nocase_ascii(text, length, "##INFINITE##", 12) ||
           string_equal_nocase_ascii(text, length, "INF", 3);
}

}  // namespace

ErrorInfo::Ptr AbsoluteTime::from_string_nothrow(const char* text, unsigned int length,
                                                 AbsoluteTime* out) {
    if (length < min_length) {
        if (!is_infinite_text(text, length)) return invalid_string(text, length, invalid_text);
        if (out != nullptr) out->set_infinite();
        return {};
    }

    const char* position = text;
    impl::Date date;
    if (const Message bad = read_date(position, date)) return invalid_string(text, length, bad);
    const char separator = *position++;
    if (separator != ' ' && separator != 'T' && separator != 't') {
        return invalid_string(text, length, invalid_separator);
    }
    std::uint64_t ns = 0;
    if (const Message bad = read_time(position, text + length, ns)) {
        return invalid_string(text, length, bad);
    }
    if (ns > impl::ns_per_day) return invalid_string(text, length, beyond_day);

    const std::int32_t jdn = impl::jdn_from_date(static_cast<std::int32_t>(date.year),
                                                 static_cast<std::int32_t>(date.month),
                                                 static_cast<std::int32_t>(date.day));
    if (impl::range_fault(jdn, ns) != impl::RangeFault::none) {
        return from_date_beyond_range(text, length, date, ns, out);
    }
    if (out != nullptr) out->set_nsec(impl::join_count(jdn, ns));
    return {};
}

ErrorInfo::Ptr AbsoluteTime::from_string_nothrow(const std::string& text, AbsoluteTime* out) {
    return from_string_nothrow(text.data(), text.size(), out);
}

AbsoluteTime AbsoluteTime::from_string(const char* text, unsigned int length) {
    AbsoluteTime time;
    throw_if_error(from_string_nothrow(text, length, &time));
    return time;
}

AbsoluteTime AbsoluteTime::from_string(const std::string& text) {
    return from_string(text.data(), text.size());
}

}  // namespace tarvcore
