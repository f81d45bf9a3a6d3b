// Arithmetic of the calendar: dates and Julian day numbers, counts of nanoseconds and times of day.
#pragma once

#include <cstdint>
#include <limits>

#include "tarvcore/config.h"
#include "tarvcore/impl/wide_arithmetic.h"

// The calendar is the proleptic Gregorian one; years are astronomical: 0 is 1 BC.  Julian day
// numbers here name civil days: 2440588 is 1 January 1970.
//
// The fast forms follow C. Neri and L. Schneider, "Euclidean affine functions and their application
// to calendar algorithms" (2022).  Their year begins on 1 March, so that the leap day is its last;
// months 13 and 14 are January and February.
namespace tarvcore::impl {

inline constexpr std::int32_t epoch_jdn = 2440588;

inline constexpr std::uint32_t seconds_per_day = 86400;
inline constexpr std::uint32_t ns_per_second = 1'000'000'000;
inline constexpr std::int64_t ns_per_day = std::int64_t{seconds_per_day} * ns_per_second;

// 1 March -4800: day 0 of all these algorithms.
inline constexpr std::uint32_t days_before_jdn_0 = 32044;
inline constexpr std::int32_t first_year = -4800;

struct Date {
    std::uint32_t year;
    std::uint32_t month;
    std::uint32_t day;
};

// The days that have a date in the years 0 to 32767.
inline constexpr std::uint32_t min_dated_jdn = 1721060;
inline constexpr std::uint32_t max_dated_jdn = 13689325;

constexpr bool has_date(std::uint32_t jdn) {
    return jdn - min_dated_jdn <= max_dated_jdn - min_dated_jdn;
}

// The date of a day for which `has_date`.
TARVCORE_INLINE constexpr Date date_from_jdn(std::uint32_t jdn) {
    const std::uint32_t n1 = 4 * (jdn + days_before_jdn_0) + 3;
    const std::uint32_t century = n1 / 146097;
    const std::uint32_t n2 = n1 % 146097 | 3;
    const std::uint64_t p2 = multiply_wide(2939745, n2);
    const auto year_of_century = static_cast<std::uint32_t>(p2 >> 32);
    const std::uint32_t day_of_year = static_cast<std::uint32_t>(p2) / 2939745 / 4;
    const std::uint32_t n3 = 2141 * day_of_year + 197913;
    const std::uint32_t month = n3 >> 16;
    const bool in_next_year = day_of_year >= 306;
    return {100 * century + year_of_century + static_cast<std::uint32_t>(first_year) + in_next_year,
            in_next_year ? month - 12 : month, (n3 & 0xFFFF) / 2141 + 1};
}

// The date of any day, modulo 2^32 in all steps: what has no date within the range comes out as a
// year that no caller accepts.
constexpr Date date_from_any_jdn(std::uint32_t jdn) {
    const std::uint32_t days = jdn + days_before_jdn_0;
    const std::uint32_t cycle = days / 146097;
    const std::uint32_t day_of_cycle = days % 146097;
    const std::uint32_t century = (day_of_cycle / 36524 * 3 + 3) / 4;
    const std::uint32_t day_of_century = day_of_cycle - 36524 * century;
    const std::uint32_t day_of_leap_cycle = day_of_century % 1461;
    const std::uint32_t year = (day_of_leap_cycle / 365 * 3 + 3) / 4;
    const std::uint32_t day_of_year = day_of_leap_cycle - 365 * year;
    const std::uint32_t month = (5 * day_of_year + 308) / 153;
    return {month / 12 + ((century + 4 * cycle) * 25 + day_of_century / 1461) * 4 + year +
                static_cast<std::uint32_t>(first_year),
            month % 12 + 1, day_of_year - (month + 2) * 153 / 5 + 123};
}

// The day of any fields.  Months from 0 to 14 and all days count on from the bounds of their field.
// Beyond, and before the first year, where divisions truncate, the result is a number without a
// meaning; it is the same everywhere.
constexpr std::int32_t jdn_from_any_date(std::int32_t year, std::int32_t month, std::int32_t day) {
    const std::int32_t a = (14 - month) / 12;
    const std::int32_t y = year - first_year - a;
    const std::int32_t m = month + 12 * a - 3;
    return day + (153 * m + 2) / 5 + 365 * y + y / 4 - y / 100 + y / 400 - 32045;
}

// The same, faster where the year is after the first one and the month is from 1 to 12.
TARVCORE_INLINE constexpr std::int32_t jdn_from_date(std::int32_t year, std::int32_t month,
                                                     std::int32_t day) {
    if (year <= first_year || static_cast<std::uint32_t>(month - 1) >= 12) {
        return jdn_from_any_date(year, month, day);
    }
    const bool in_next_year = month <= 2;
    const auto y = static_cast<std::uint32_t>(year - first_year - in_next_year);
    const auto m = static_cast<std::uint32_t>(in_next_year ? month + 12 : month);
    const std::uint32_t century = y / 100;
    const std::uint32_t days = 1461 * y / 4 - century + century / 4 + (979 * m - 2919) / 32;
    return static_cast<std::int32_t>(days - 1 - days_before_jdn_0) + day;
}

// Nanoseconds, split.
struct DayAndTime {
    std::uint32_t day;
    std::uint32_t second_of_day;
    std::uint32_t nanosecond;
};

inline constexpr unsigned split_shift = 16;
inline constexpr std::uint32_t split_units_per_day = ns_per_day >> split_shift;
static_assert(std::int64_t{split_units_per_day} << split_shift == ns_per_day);

// Takes them as units of 2^16, which have up to 49 bits, and the rest.
TARVCORE_INLINE constexpr DayAndTime split_units(std::uint64_t units, std::uint32_t rest) {
    // Both numbers that are divided by consist of many powers of 2 and a factor of 31 bits or less;
    // the lower bits of the dividend do not matter for the quotient.  Quotients are estimated from
    // 31 bits of the dividend by multiplication with a reciprocal, rounded down, so that they are
    // right or by one too small; the remainder, for which 32 bits are enough, tells.
    constexpr auto day_factor =
        static_cast<std::uint32_t>((std::uint64_t{1} << 62) / split_units_per_day);
    auto day = static_cast<std::uint32_t>(
        multiply_wide(static_cast<std::uint32_t>(units >> 18), day_factor) >> (62 - 18));
    std::uint32_t units_of_day = static_cast<std::uint32_t>(units) - day * split_units_per_day;
    if (units_of_day >= split_units_per_day) {
        units_of_day -= split_units_per_day;
        ++day;
    }

    constexpr auto second_factor =
        static_cast<std::uint32_t>((std::uint64_t{1} << (45 + split_shift)) / ns_per_second);
    auto second = static_cast<std::uint32_t>(multiply_wide(units_of_day, second_factor) >> 45);
    std::uint32_t nanosecond = (units_of_day << split_shift | rest) - second * ns_per_second;
    if (nanosecond >= ns_per_second) {
        nanosecond -= ns_per_second;
        ++second;
    }
    return {day, second, nanosecond};
}

// A count of nanoseconds since the epoch; the day comes as a Julian day number.
TARVCORE_INLINE constexpr DayAndTime split_count(std::int64_t count) {
    // Whole days that make all counts positive.
    constexpr std::uint32_t bias_days = 106752;
    constexpr auto bias = static_cast<std::int64_t>(bias_days) * split_units_per_day;
    DayAndTime split = split_units(static_cast<std::uint64_t>((count >> split_shift) + bias),
                                   static_cast<std::uint16_t>(count));
    split.day += epoch_jdn - bias_days;
    return split;
}

// A number of nanoseconds of up to 2^63; the day comes as the number of whole days.
TARVCORE_INLINE constexpr DayAndTime split_duration(std::uint64_t nanoseconds) {
    return split_units(nanoseconds >> split_shift, static_cast<std::uint16_t>(nanoseconds));
}

// The count of a day and a time of that day in nanoseconds, modulo 2^64.
TARVCORE_INLINE constexpr std::int64_t join_count(std::int32_t jdn, std::uint64_t time_of_day) {
    return wrapping_add(wrapping_multiply(jdn - epoch_jdn, ns_per_day),
                        static_cast<std::int64_t>(time_of_day));
}

// Whether that instant lies before the first or after the last finite one.  The time is looked at
// on the very day only.
enum class RangeFault { none, before, after };

TARVCORE_INLINE constexpr RangeFault range_fault(std::int32_t jdn, std::uint64_t time_of_day) {
    constexpr std::int32_t first_jdn = 2333836;
    constexpr std::int32_t last_jdn = 2547339;
    constexpr std::uint64_t first_time = 763'145'224'192;
    constexpr std::uint64_t end_time = 85'636'854'775'807;
    static_assert(join_count(first_jdn, first_time) == std::numeric_limits<std::int64_t>::min());
    static_assert(join_count(last_jdn, end_time) == std::numeric_limits<std::int64_t>::max());

    if (jdn > first_jdn && jdn < last_jdn) return RangeFault::none;
    if (jdn < first_jdn || (jdn == first_jdn && time_of_day < first_time)) {
        return RangeFault::before;
    }
    if (jdn > last_jdn || (jdn == last_jdn && time_of_day >= end_time)) return RangeFault::after;
    return RangeFault::none;
}

struct TimeOfDay {
    std::uint32_t hour;
    std::uint32_t minute;
    std::uint32_t second;
};

TARVCORE_INLINE constexpr TimeOfDay split_second_of_day(std::uint32_t second) {
    const std::uint32_t minute = second / 60;
    const std::uint32_t hour = minute / 60;
    return {hour, minute - hour * 60, second - minute * 60};
}

}  // namespace tarvcore::impl
