#include "tarvcore/simple_date_time.h"

#include <ostream>
#include <string_view>
#include <utility>

#include "tarvcore/error_code_constants.h"
#include "tarvcore/error_exception.h"
#include "tarvcore/impl/digit_words.h"
#include "tarvcore/impl/time_text.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/simple_date_time.cpp#1 $");

namespace tarvcore {
namespace {

constexpr int minutes_per_day = RelativeTime::MINUTES_IN_ONE_DAY;
constexpr int max_offset = minutes_per_day / 2;

// A reading function answers what is wrong, as the message of the error; null: nothing.
using Message = const char*;

constexpr Message good = nullptr;
constexpr Message not_at_end =
    "Invalid timezone offset in date/time string (nothing allowed after 'Z' designator): "
    "\"{@dateTime}\"";
constexpr Message invalid_offset =
    "Invalid timezone offset in date/time string (must be hh:mm, hhmm, or hh): \"{@dateTime}\"";
constexpr Message invalid_minutes = "Minutes in timezone must be 0...59: \"{@dateTime}\"";
constexpr Message invalid_base =
    "Parsing UTC base of simple date/time failed (must be ISO8601).  Argument: \"{@dateTime}\"";

// The last character that begins an offset, or else separates date and time; null: there is none.
const char* find_designator(const char* text, const char* end) {
    while (end != text) {
        switch (*--end) {
            case 'Z':
            case 'z':
            case '+':
            case '-':
            case ' ':
            case 'T':
            case 't':
                return end;
            default:
                break;
        }
    }
    return nullptr;
}

// Reads an offset from its sign to the end.
Message read_offset(const char* text, const char* end, int& minutes) {
    const auto length = end - text;
    const bool has_colon = length == 6 && text[3] == ':';
    const bool has_minutes = has_colon || length == 5;
    if (length != 3 && !has_minutes) return invalid_offset;
    const std::uint32_t digits =
        impl::load_2(text + 1) | (has_minutes ? impl::load_2(end - 2) << 16 : 0);
    if (!impl::are_digits(digits)) return invalid_offset;
    const auto pairs = impl::pairs(digits);
    if (impl::second_pair(pairs) > 59) return invalid_minutes;
    minutes = static_cast<int>(impl::first_pair(pairs) * 60 + impl::second_pair(pairs));
    if (*text == '-') minutes = -minutes;
    return good;
}

TARVCORE_COLD ErrorInfo::Ptr invalid_string(const char* text, unsigned length, Message message,
                                            ErrorInfo::Ptr nested = {}) {
    return ErrorInfo::create(error::tarvcore_simpleDateTime_invalidString, message,
                             ErrorParams().add("dateTime", std::string(text, length)),
                             TARVCORE_LOCATION("tarvcore::SimpleDateTime::from_string_nothrow()"),
                             std::move(nested));
}

TARVCORE_COLD ErrorInfo::Ptr offset_of_infinite(int minutes, ErrorParams params = {}) {
    return ErrorInfo::create(error::tarvcore_simpleDateTime_timezoneOffset,
                             "Timezone offset must be 0 if base-UTC time is infinite",
                             std::move(params).add("timezoneOffset", minutes),
                             TARVCORE_LOCATION("tarvcore::SimpleDateTime::set()"));
}

constexpr unsigned max_length = impl::max_instant_length + sizeof "+12:00" - 1;

std::string_view write_text(char (&text)[max_length], const SimpleDateTime& time) {
    if (time.utc().is_infinite()) return impl::infinite_text;
    char* end = impl::write_instant(text, time.utc().as_nsec(), ' ');
    const int offset = time.timezone_offset();
    if (offset == 0) {
        *end++ = 'Z';
    } else {
        const auto minutes = static_cast<std::uint32_t>(offset < 0 ? -offset : offset);
        *end++ = offset < 0 ? '-' : '+';
        end = impl::write_2(end, minutes / 60);
        *end++ = ':';
        end = impl::write_2(end, minutes % 60);
    }
    return {text, end};
}

}  // namespace

void SimpleDateTime::set(const AbsoluteTime& utc, int timezone_offset) {
    if (utc.is_infinite() && timezone_offset != 0) throw_error(offset_of_infinite(timezone_offset));
    std::int64_t days = 0;
    if (timezone_offset > max_offset) {
        days = (std::int64_t{timezone_offset} + max_offset) / minutes_per_day;
    } else if (timezone_offset < -max_offset) {
        days = (std::int64_t{timezone_offset} - max_offset) / minutes_per_day;
    }
    utc_ = utc + RelativeTime::nanoseconds(impl::wrapping_multiply(days, impl::ns_per_day));
    timezone_offset_ = static_cast<std::int32_t>(timezone_offset - days * minutes_per_day);
}

void SimpleDateTime::set(const AbsoluteTime& utc, const RelativeTime& timezone_offset) {
    if (timezone_offset.is_infinite()) {
        throw_error(error::tarvcore_simpleDateTime_timezoneOffset,
                    "An infinite timezoneOffset is not valid",
                    TARVCORE_LOCATION("tarvcore::SimpleDateTime::set()"));
    }
    set(utc, static_cast<int>(timezone_offset.as_nsec() / RelativeTime::NANOSECONDS_IN_ONE_MINUTE));
}

ErrorInfo::Ptr SimpleDateTime::from_string_nothrow(const char* text, unsigned int length,
                                                   SimpleDateTime* out) {
    const char* const end = text + length;
    const char* base_end = end;
    int offset = 0;
    const char* const designator = find_designator(text, end);
    const char kind = designator == nullptr ? '\0' : *designator;
    if (kind == '+' || kind == '-') {
        if (const Message bad = read_offset(designator, end, offset)) {
            return invalid_string(text, length, bad);
        }
        base_end = designator;
    } else if ((kind == 'Z' || kind == 'z') && designator + 1 != end) {
        return invalid_string(text, length, not_at_end);
    }

    // A "Z" is left to it, so that it refuses a second one.
    AbsoluteTime base;
    if (auto error = AbsoluteTime::from_string_nothrow(text, static_cast<unsigned>(base_end - text),
                                                       &base)) {
        return invalid_string(text, length, invalid_base, std::move(error));
    }
    if (base.is_infinite() && offset != 0) {
        return offset_of_infinite(offset, ErrorParams().add("dateTime", std::string(text, length)));
    }
    if (out != nullptr) out->set(base, offset);
    return {};
}

SimpleDateTime SimpleDateTime::from_string(const char* text, unsigned int length) {
    SimpleDateTime time;
    throw_if_error(from_string_nothrow(text, length, &time));
    return time;
}

std::string SimpleDateTime::as_string() const {
    char text[max_length];
    return std::string(write_text(text, *this));
}

std::ostream& operator<<(std::ostream& os, const SimpleDateTime& time) {
    char text[max_length];
    return os << write_text(text, time);
}

}  // namespace tarvcore
