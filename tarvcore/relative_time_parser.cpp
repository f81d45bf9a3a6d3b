// Reading the text of durations.

#include "tarvcore/abs_rel_time.h"
#include "tarvcore/error_code_constants.h"
#include "tarvcore/error_exception.h"
#include "tarvcore/impl/digit_words.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/relative_time_parser.cpp#1 $");

namespace tarvcore {
namespace {

using impl::digit;

// A reading function answers what is wrong, as the message of the error; null: nothing.
using Message = const char*;

constexpr Message good = nullptr;
constexpr Message syntax_fault =
    "Syntax error processing time string \"{@timeString}\", length={@length}";
constexpr Message overflow =
    "Value overflow processing time string \"{@timeString}\", length={@length}";
constexpr Message sanity_fault =
    "Sanity check error processing time string \"{@timeString}\", length={@length}";
constexpr Message invalid_type =
    "Invalid field type in time string \"{@timeString}\", length={@length}";
constexpr Message unexpected_end =
    "Unexpected end of string in time string \"{@timeString}\", length={@length}";
constexpr Message invalid_value =
    "Invalid value in time string \"{@timeString}\", length={@length}";

struct Number {
    std::uint64_t whole = 0;
    // The first nine decimals and the next two.  Those behind them count for nothing.
    std::uint32_t billionths = 0;
    std::uint32_t further = 0;
};

constexpr std::uint32_t powers_of_10[] = {
    1, 10, 100, 1000, 10'000, 100'000, 1'000'000, 10'000'000, 100'000'000, 1'000'000'000};

// Reads decimals and moves behind them.
TARVCORE_INLINE void read_decimals(const char*& text, const char* end, Number& number) {
    const unsigned count = impl::read_nine_digits(text, end, number.billionths);
    number.billionths *= powers_of_10[9 - count];
    text += count;
    for (std::uint32_t worth = 10; text != end && digit(*text) <= 9; worth /= 10, ++text)
        number.further += digit(*text) * worth;
}

// Reads digits, which may have a point among them, and moves behind them.
TARVCORE_INLINE Message read_number(const char*& text, const char* end, Number& number) {
    // Up to here a digit may follow, so the largest number is 9223372036854775799.  That eight more
    // would fit into 63 bits and are refused is meant.
    constexpr std::uint64_t max_before_last_digit = 922'337'203'685'477'579;

    const char* const begin = text;
    for (; text != end && digit(*text) <= 9; ++text) {
        if (number.whole > max_before_last_digit) return overflow;
        number.whole = number.whole * 10 + digit(*text);
    }
    bool has_digits = text != begin;
    if (text != end && *text == '.') {
        const char* const decimals = ++text;
        read_decimals(text, end, number);
        has_digits |= text != decimals;
    }
    if (text == end) return invalid_value;
    if (*text == '.' || *text == ' ') return syntax_fault;
    return has_digits ? good : invalid_value;
}

enum class Unit { days, hours, minutes, seconds, milliseconds, microseconds, nanoseconds };

// Reads a unit and moves behind it.  There must be a character.
TARVCORE_INLINE Message read_unit(const char*& text, const char* end, Unit& unit) {
    const char first = *text++;
    switch (first) {
        case 'd':
            unit = Unit::days;
            return good;
        case 'h':
            unit = Unit::hours;
            return good;
        case 's':
            unit = Unit::seconds;
            return good;
        case 'm':
            if (text == end || *text == ' ' || digit(*text) <= 9) {
                unit = Unit::minutes;
                return good;
            }
            unit = Unit::milliseconds;
            return *text++ == 's' ? good : syntax_fault;
        case 'u':
        case 'n':
            if (text == end) return unexpected_end;
            unit = first == 'u' ? Unit::microseconds : Unit::nanoseconds;
            return *text++ == 's' ? good : invalid_type;
        default:
            return invalid_value;
    }
}

template <std::int64_t ns_per_unit>
TARVCORE_INLINE Message convert(const Number& number, std::int64_t& count) {
    constexpr std::int64_t ns_per_second = impl::ns_per_second;
    constexpr std::uint64_t limit = RelativeTime::TIMEVALUE_INFINITE / ns_per_unit;
    if (number.whole >= limit) return overflow;
    std::uint64_t fraction;
    if constexpr (ns_per_unit >= ns_per_second) {
        constexpr std::uint32_t seconds = ns_per_unit / ns_per_second;
        fraction = impl::multiply_wide(number.billionths, seconds) + number.further * seconds / 100;
    } else {
        fraction = number.billionths / (ns_per_second / ns_per_unit);
    }
    count = static_cast<std::int64_t>(number.whole * ns_per_unit + fraction);
    return good;
}

TARVCORE_INLINE Message convert(const Number& number, Unit unit, std::int64_t& count) {
    switch (unit) {
        case Unit::days:
            return convert<RelativeTime::NANOSECONDS_IN_ONE_DAY>(number, count);
        case Unit::hours:
            return convert<RelativeTime::NANOSECONDS_IN_ONE_HOUR>(number, count);
        case Unit::minutes:
            return convert<RelativeTime::NANOSECONDS_IN_ONE_MINUTE>(number, count);
        case Unit::seconds:
            return convert<RelativeTime::NANOSECONDS_IN_ONE_SECOND>(number, count);
        case Unit::milliseconds:
            return convert<RelativeTime::NANOSECONDS_IN_ONE_MILLISECOND>(number, count);
        case Unit::microseconds:
            return convert<RelativeTime::NANOSECONDS_IN_ONE_MICROSECOND>(number, count);
        case Unit::nanoseconds:
            return convert<1>(number, count);
    }
    return sanity_fault;
}

// Reads a field and moves behind it; blanks alone are a field of zero.
TARVCORE_INLINE Message read_field(const char*& text, const char* end, std::int64_t& count) {
    while (text != end && *text == ' ')
        ++text;
    if (text == end) return good;
    Number number;
    Unit unit;
    if (const Message bad = read_number(text, end, number)) return bad;
    if (const Message bad = read_unit(text, end, unit)) return bad;
    return convert(number, unit, count);
}

TARVCORE_COLD ErrorInfo::Ptr invalid_string(const std::string& text, Message message) {
    return ErrorInfo::create(error::tarvcore_relativeTime_invalidTimeString, message,
                             ErrorParams().add("timeString", text).add("length", text.size()),
                             TARVCORE_LOCATION("tarvcore::RelativeTime::field_from_string()"));
}

}  // namespace

ErrorInfo::Ptr RelativeTime::field_from_string(const std::string& text, const char*& pos,
                                               RelativeTime* field) {
    const char* position = pos;
    std::int64_t count = 0;
    if (const Message bad = read_field(position, text.data() + text.size(), count)) {
        return invalid_string(text, bad);
    }
    pos = position;
    field->set_nsec(count);
    return {};
}

ErrorInfo::Ptr RelativeTime::from_string_nothrow(const std::string& text, RelativeTime* out) {
    const char* position = text.data();
    const char* const end = position + text.size();
    const bool is_negative = text.starts_with('-');
    if (is_negative) ++position;
    std::int64_t sum = 0;
    while (position != end) {
        RelativeTime field;
        if (auto error = field_from_string(text, position, &field)) return error;
        sum = impl::wrapping_add(sum, field.as_nsec());
    }
    if (out != nullptr) out->set_nsec(is_negative ? impl::wrapping_subtract(0, sum) : sum);
    return {};
}

RelativeTime RelativeTime::from_string(const std::string& text) {
    RelativeTime time;
    throw_if_error(from_string_nothrow(text, &time));
    return time;
}

}  // namespace tarvcore
