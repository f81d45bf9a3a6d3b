// Instants and durations.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>

#include "tarvcore/config.h"
#include "tarvcore/error_info.h"
#include "tarvcore/impl/calendar_arithmetic.h"
#include "tarvcore/impl/time_base.h"

namespace tarvcore {

// A signed duration in nanoseconds, up to about 292 years, or infinite: no limit.
//
// Sums and differences wrap; a sum or difference with an infinite operand is infinite.  Ordered by
// count: infinite is the greatest, and positive.  Thread safety: that of an integer.
//
//     RelativeTime timeout = RelativeTime::milliseconds(250);
//     if (!timeout.is_infinite()) Sleep(timeout.as_win32_timeout());
//     log << timeout;                                        // 250.0ms
//     timeout = RelativeTime::from_string("1m 30s");
class TARVCORE_API RelativeTime : public impl::TimeBase {
public:
    static const RelativeTime min_time;
    static const RelativeTime max_time;
    static const RelativeTime zero;
    static const RelativeTime infinite;

    using TimeBase::TimeBase;
    constexpr RelativeTime() = default;
    // The same count.
    constexpr explicit RelativeTime(const TimeBase& time) : TimeBase(time) {}

    // The product of count and unit wraps.
    static constexpr RelativeTime nanoseconds(std::int64_t count) { return of_count(count); }
    static constexpr RelativeTime microseconds(std::int64_t count) {
        return of_count(impl::wrapping_multiply(count, NANOSECONDS_IN_ONE_MICROSECOND));
    }
    static constexpr RelativeTime milliseconds(std::int64_t count) {
        return of_count(impl::wrapping_multiply(count, NANOSECONDS_IN_ONE_MILLISECOND));
    }
    // The number of seconds is a long, like the argument, and wraps: days(24856) is negative.  This
    // is meant; callers in other modules compute with the same 32 bits and must get the same time.
    static constexpr RelativeTime seconds(long count) { return of_seconds(count, 1); }
    static constexpr RelativeTime minutes(long count) {
        return of_seconds(count, SECONDS_IN_ONE_MINUTE);
    }
    static constexpr RelativeTime hours(long count) {
        return of_seconds(count, SECONDS_IN_ONE_HOUR);
    }
    static constexpr RelativeTime days(long count) { return of_seconds(count, SECONDS_IN_ONE_DAY); }

    // Reads the sum of fields, with or without blanks between them; "-" before all of them, at the
    // very start, makes it negative:
    //
    //     1d 2h 3m 4.5s    250ms    -1.5h    1h30m    90s    3us 20ns
    //
    // A field is a number (digits, among them one point at most, before, between or behind them)
    // and right behind it its unit; behind "m" there must be a blank, a digit or the end.  Eleven
    // decimals count, and the field is truncated to nanoseconds.  A text without fields is zero.
    //
    // Each field by itself must be below the range: its number before the point is less than 106751
    // days (106750d is the most), 2562047 hours, 153722867 minutes, ..., and nanoseconds are
    // 9223372036854775799 at most.  The sum is not tested and wraps.  So texts of 106751 days, and
    // "##INFINITE##", are written and not read.
    //
    // Fails with "error.tarvcore.relativeTime.invalidTimeString"; then `*out` stays as it is.  It
    // may be null.
    [[nodiscard]] static ErrorInfo::Ptr from_string_nothrow(const std::string& text,
                                                            RelativeTime* out);
    static RelativeTime from_string(const std::string& text);

    // The units that the magnitude asks for, the smallest with a fraction that has no zeros at its
    // end, but one digit at least:
    //
    //     up to 1000 ns     999ns            up to 60 s      5.0s
    //     up to 1 ms        1000.0us         up to 3600 s    1m 30.0s, 60m 00.0s
    //     below 1 s         1.5ms            up to 86400 s   1h 0m 0.25s
    //                                        beyond          1d 1h 1m 1.25s
    //
    // where the whole seconds decide: 60.5 s are "60.5s".  Before negative ones stands "-".
    // "##INFINITE##".
    std::string as_string() const;
    // As `as_string`, with the stream's width, adjustment and fill.
    friend TARVCORE_API std::ostream& operator<<(std::ostream& os, const RelativeTime& time);

    // Infinite is positive.
    constexpr bool is_positive() const { return as_nsec() > 0; }
    constexpr bool is_negative() const { return as_nsec() < 0; }
    constexpr bool is_zero() const { return as_nsec() == 0; }

    // Milliseconds as Windows' waits take them; INFINITE (0xFFFFFFFF) is infinite.  Going out, the
    // lower 32 bits of the number: nothing is clamped, so -1 ms waits for ever and 2^32 ms not at
    // all.  Callers test the sign themselves and rely on the rest.
    constexpr void set_win32_timeout(unsigned long milliseconds) {
        milliseconds == win32_infinite ? set_infinite() : set_msec(std::int64_t{milliseconds});
    }
    constexpr unsigned long as_win32_timeout() const {
        return is_infinite() ? win32_infinite : static_cast<unsigned long>(as_msec());
    }

    // Infinite, and the smallest count, stay what they are.
    constexpr RelativeTime& negate() {
        if (!is_infinite()) set_nsec(impl::wrapping_subtract(0, as_nsec()));
        return *this;
    }

    constexpr RelativeTime& operator+=(const RelativeTime& other) { return *this = *this + other; }
    // Infinite less infinite is infinite.
    constexpr RelativeTime& operator-=(const RelativeTime& other) { return *this = *this - other; }
    // In floating-point seconds, so to about 15 digits.  Infinite is not preserved: the product is
    // no number of nanoseconds, which is the smallest count.  This is meant, callers test for it.
    constexpr RelativeTime& operator*=(double factor) { return *this = *this * factor; }

    friend constexpr RelativeTime operator+(const RelativeTime& a, const RelativeTime& b) {
        return a.is_infinite() || b.is_infinite()
                   ? of_count(TIMEVALUE_INFINITE)
                   : of_count(impl::wrapping_add(a.as_nsec(), b.as_nsec()));
    }
    friend constexpr RelativeTime operator-(const RelativeTime& a, const RelativeTime& b) {
        return a.is_infinite() || b.is_infinite()
                   ? of_count(TIMEVALUE_INFINITE)
                   : of_count(impl::wrapping_subtract(a.as_nsec(), b.as_nsec()));
    }
    // See operator*=.
    friend constexpr RelativeTime operator*(const RelativeTime& time, double factor) {
        return RelativeTime(time.as_sec() * factor);
    }

    friend constexpr bool operator==(const RelativeTime& a, const RelativeTime& b) {
        return a.as_nsec() == b.as_nsec();
    }
    friend constexpr auto operator<=>(const RelativeTime& a, const RelativeTime& b) {
        return a.as_nsec() <=> b.as_nsec();
    }

private:
    struct TimeValueInit_t {};

    static constexpr unsigned long win32_infinite = 0xFFFFFFFF;

    constexpr RelativeTime(std::int64_t count, TimeValueInit_t) { set_nsec(count); }

    static constexpr RelativeTime of_count(std::int64_t count) {
        return RelativeTime(count, TimeValueInit_t());
    }
    static constexpr RelativeTime of_seconds(long count, std::int32_t unit) {
        const auto product = static_cast<std::uint32_t>(count) * static_cast<std::uint32_t>(unit);
        return of_count(std::int64_t{static_cast<std::int32_t>(product)} *
                        NANOSECONDS_IN_ONE_SECOND);
    }

    // Reads the field at `pos`, behind blanks, and moves `pos` behind it.  Where there are only
    // blanks, the field is zero.
    static ErrorInfo::Ptr field_from_string(const std::string& text, const char*& pos,
                                            RelativeTime* field);
};

// An instant: nanoseconds since 1970-01-01 00:00:00 UTC without leap seconds, from 1677-09-21
// 00:12:43.145224192 to 2262-04-11 23:47:16.854775806, or infinite: never.
//
// Sums and differences wrap, but for the difference of two instants; a sum or difference with an
// infinite operand is infinite.  Ordered by count: infinite is the latest.  Thread safety: that of
// an integer.
//
//     const AbsoluteTime deadline = AbsoluteTime::now() + RelativeTime::seconds(30);
//     while (!deadline.remaining().is_zero()) poll();
//     log << deadline;                                       // 2014-07-16 13:23:00.25
//     auto start = AbsoluteTime::from_string("2014-07-16T13:23:00Z");
class TARVCORE_API AbsoluteTime : public impl::TimeBase {
public:
    class Components;

    static const AbsoluteTime min_time;
    static const AbsoluteTime max_time;
    static const AbsoluteTime zero;
    static const AbsoluteTime infinite;

    using TimeBase::set;
    using TimeBase::TimeBase;
    constexpr AbsoluteTime() = default;
    // The same count.
    constexpr explicit AbsoluteTime(const TimeBase& time) : TimeBase(time) {}
    // Windows' times, in UTC or in the local time of the system's zone; users include <windows.h>.
    // There is no infinite among them, nor do they fail: what Windows cannot convert becomes its
    // time 0, and what is out of range wraps; so time 0, the begin of 1601, comes as 2185-07-21
    // 23:34:33.709551616.
    AbsoluteTime(const _FILETIME& time, bool is_local) { set(time, is_local); }
    AbsoluteTime(const _SYSTEMTIME& time, bool is_local) { set(time, is_local); }
    // The instant that lies `distance` after `base`.
    constexpr AbsoluteTime(const RelativeTime& distance, const AbsoluteTime& base) {
        set(distance, base);
    }
    // See from_components.
    explicit AbsoluteTime(const Components& components) { set(components); }

    // As the constructors.
    void set(const _FILETIME& time, bool is_local);
    void set(const _SYSTEMTIME& time, bool is_local);
    constexpr void set(const RelativeTime& distance, const AbsoluteTime& base) {
        *this = base + distance;
    }
    void set(const Components& components);

    // Nanoseconds since 1970.
    static constexpr AbsoluteTime from_nsec(std::int64_t nanoseconds) {
        AbsoluteTime time;
        time.set_nsec(nanoseconds);
        return time;
    }
    // The system's clock, which has units of 100 ns and advances in larger steps.
    static AbsoluteTime now();

    // The instant of calendar fields; Components::infinite is infinite.  Fields beyond their bounds
    // count on into the next larger one; see Components::julian_day.  Before the first or after the
    // last instant fails with "error.tarvcore.absoluteTime.range"; but the time of day is looked at
    // on the first and the last day only, so that 48 o'clock on the day before passes the end and
    // wraps.  This is meant.  On failure `*out` stays as it is; it may be null.
    [[nodiscard]] static ErrorInfo::Ptr from_components_nothrow(const Components& components,
                                                                AbsoluteTime* out);
    static AbsoluteTime from_components(const Components& components);

    // The noon of a Julian day, and the instant of a full Julian date; see Components.  Where that
    // fails, the error goes to `*error` and the result is infinite; with a null `error`, it is
    // raised.
    static AbsoluteTime from_julian_day(int jdn, ErrorInfo::Ptr* error);
    static AbsoluteTime from_full_julian_date(double jd, ErrorInfo::Ptr* error,
                                              bool round_to_second);

    // Reads ISO 8601 text in UTC, of 13 characters or more (so not YYYYMMDDThh):
    //
    //     date       YYYY-MM-DD or YYYYMMDD; days up to 31 in every month, counted on into the next
    //     separator  a blank, T or t
    //     time       hh, hh:mm, hh:mm:ss, hhmm or hhmmss; up to 24:00:00, seconds up to 60
    //     fraction   "." or "," and digits or none, of the last field that there is (not "," after
    //                hh:mm), rounded to nanoseconds
    //     zone       nothing, Z or z
    //
    // or "##INFINITE##" or "INF" in any case; the last nanosecond of the year 9999 is infinite,
    // too. Fails with "error.tarvcore.absoluteTime.invalidUtcString"; then `*out` stays as it is.
    // It may be null.
    [[nodiscard]] static ErrorInfo::Ptr from_string_nothrow(const char* text, unsigned int length,
                                                            AbsoluteTime* out);
    [[nodiscard]] static ErrorInfo::Ptr from_string_nothrow(const std::string& text,
                                                            AbsoluteTime* out);
    static AbsoluteTime from_string(const char* text, unsigned int length);
    static AbsoluteTime from_string(const std::string& text);

    // "2014-07-16 13:23:00.25": the fraction has no zeros at its end, but one digit at least.
    // "##INFINITE##".
    std::string as_string() const;
    // "2014-07-16T13:23:00.25Z"; infinite is "9999-12-31T23:59:59.999999999Z".
    std::string as_iso8601_string() const;
    // As `as_string`, with the stream's width, adjustment and fill.
    friend TARVCORE_API std::ostream& operator<<(std::ostream& os, const AbsoluteTime& time);

    // Of the infinite time, Components::infinite.
    Components as_components() const;
    // See Components.
    int julian_day() const;
    double full_julian_date() const;

    // Units of 100 ns, truncated towards 1970.  Infinite: MAX_FILETIME.
    _FILETIME as_filetime() const;
    // In UTC.  Infinite: MAX_SYSTEMTIME.
    _SYSTEMTIME as_systemtime() const;

    // How long it is from `reference`, or from now, to this instant: zero where it has passed.
    constexpr RelativeTime remaining(const AbsoluteTime& reference) const {
        return not_negative(*this - reference);
    }
    RelativeTime remaining() const;
    // How long it is from this instant to `reference`, or to now: zero where it is yet to come.
    constexpr RelativeTime overtime(const AbsoluteTime& reference) const {
        return not_negative(reference - *this);
    }
    RelativeTime overtime() const;

    constexpr AbsoluteTime& operator+=(const RelativeTime& distance) {
        return *this = *this + distance;
    }
    // An instant less infinite is infinite.
    constexpr AbsoluteTime& operator-=(const RelativeTime& distance) {
        return *this = *this - distance;
    }

    friend constexpr AbsoluteTime operator+(const AbsoluteTime& a, const RelativeTime& b) {
        return from_nsec((RelativeTime(a) + b).as_nsec());
    }
    friend constexpr AbsoluteTime operator+(const RelativeTime& a, const AbsoluteTime& b) {
        return b + a;
    }
    friend constexpr AbsoluteTime operator-(const AbsoluteTime& a, const RelativeTime& b) {
        return from_nsec((RelativeTime(a) - b).as_nsec());
    }
    // Infinite where it does not fit, in both directions: callers that wait for the difference wait
    // for ever.
    friend constexpr RelativeTime operator-(const AbsoluteTime& a, const AbsoluteTime& b) {
        constexpr std::int64_t limit = TIMEVALUE_INFINITE;
        std::int64_t difference = 0;
        const bool fits = !a.is_infinite() && !b.is_infinite() &&
                          !__builtin_sub_overflow(a.as_nsec(), b.as_nsec(), &difference) &&
                          difference < limit && difference > -limit;
        return RelativeTime::nanoseconds(fits ? difference : TIMEVALUE_INFINITE);
    }

    friend constexpr bool operator==(const AbsoluteTime& a, const AbsoluteTime& b) {
        return a.as_nsec() == b.as_nsec();
    }
    friend constexpr auto operator<=>(const AbsoluteTime& a, const AbsoluteTime& b) {
        return a.as_nsec() <=> b.as_nsec();
    }

private:
    static constexpr RelativeTime not_negative(const RelativeTime& time) {
        return time.is_negative() ? RelativeTime() : time;
    }
};

static_assert(sizeof(AbsoluteTime) == 8 && sizeof(RelativeTime) == 8);

// Calendar fields in UTC and the proleptic Gregorian calendar; years are astronomical: 0 is 1 BC.
// A plain record: nothing is checked before an AbsoluteTime is made of it.  Ordered field by field.
//
// Julian day numbers count days; here each names a civil day, from midnight to midnight.  A full
// Julian date counts from noon on, with the time of day as fraction: 2440587.5 is 1970-01-01
// 00:00:00.
//
//     AbsoluteTime::Components fields(2014, 7, 16, 13, 23, 0, 0);
//     fields.day_of_week();                       // 2: Wednesday
//     const AbsoluteTime time(fields);
class TARVCORE_API AbsoluteTime::Components {
public:
    // 9999-12-31 23:59:59.999999999 stands for the infinite time.
    static const Components infinite;

    // 1970-01-01 00:00:00.
    constexpr Components() = default;
    constexpr Components(std::int16_t year, std::uint16_t month, std::uint16_t day,
                         std::uint16_t hour, std::uint16_t minute, std::uint16_t second,
                         std::uint32_t nanosecond)
        : year_(year),
          month_(month),
          day_(day),
          hour_(hour),
          minute_(minute),
          second_(second),
          nanosecond_(nanosecond) {}
    explicit Components(const AbsoluteTime& time);
    // The noon of a Julian day, with which it begins.  Raises "error.tarvcore.cast..." for a
    // negative day and for one outside the years 0 to 32767.
    constexpr explicit Components(int jdn) : hour_(12) {
        if (jdn < 0) raise_negative_day(jdn);
        set_date(checked_date(static_cast<std::uint32_t>(jdn)));
    }
    // A full Julian date, truncated to nanoseconds or rounded to the nearest second; positive
    // infinity is `infinite`.  Raises "error.tarvcore.cast..." like the form above.
    Components(double jd, bool round_to_second);

    constexpr std::int16_t year() const { return year_; }
    constexpr std::uint16_t month() const { return month_; }            // 1 to 12
    constexpr std::uint16_t day() const { return day_; }                // 1 to 31
    constexpr std::uint16_t hour() const { return hour_; }              // 0 to 23; 24 for the end
    constexpr std::uint16_t minute() const { return minute_; }          // 0 to 59
    constexpr std::uint16_t second() const { return second_; }          // 0 to 59
    constexpr std::uint32_t nanosecond() const { return nanosecond_; }  // 0 to 999999999

    // Not checked; from_components says what comes of fields beyond their bounds.
    constexpr void year(std::int16_t value) { year_ = value; }
    constexpr void month(std::uint16_t value) { month_ = value; }
    constexpr void day(std::uint16_t value) { day_ = value; }
    constexpr void hour(std::uint16_t value) { hour_ = value; }
    constexpr void minute(std::uint16_t value) { minute_ = value; }
    constexpr void second(std::uint16_t value) { second_ = value; }
    constexpr void nanosecond(std::uint32_t value) { nanosecond_ = value; }

    // The Julian day number of the date.  Months from 0 to 14 and all days count on from the bounds
    // of their field; other months, and years before -4800, give a number that is no date's.
    constexpr int julian_day() const { return impl::jdn_from_date(year_, month_, day_); }
    // Positive infinity for `infinite`.
    double full_julian_date() const;
    // From 0 for Monday to 6 for Sunday; Windows counts from Sunday.  Before day 0, every seventh
    // day is 7 instead of 0: nobody has dates there, and the numbers are kept as they are.
    constexpr std::uint16_t day_of_week() const {
        const int remainder = julian_day() % 7;
        return static_cast<std::uint16_t>(julian_day() < 0 ? remainder + 7 : remainder);
    }

    friend constexpr bool operator==(const Components&, const Components&) = default;
    friend constexpr auto operator<=>(const Components&, const Components&) = default;

private:
    static constexpr impl::Date checked_date(std::uint32_t jdn) {
        if (!impl::has_date(jdn)) raise_no_date(jdn);
        return impl::date_from_jdn(jdn);
    }
    constexpr void set_date(const impl::Date& date) {
        year_ = static_cast<std::int16_t>(date.year);
        month_ = static_cast<std::uint16_t>(date.month);
        day_ = static_cast<std::uint16_t>(date.day);
    }
    constexpr void set_time(const impl::TimeOfDay& time) {
        hour_ = static_cast<std::uint16_t>(time.hour);
        minute_ = static_cast<std::uint16_t>(time.minute);
        second_ = static_cast<std::uint16_t>(time.second);
    }
    // For days without a date.
    [[noreturn]] TARVCORE_COLD static void raise_no_date(std::uint32_t jdn);
    [[noreturn]] TARVCORE_COLD static void raise_negative_day(std::int64_t jdn);

    std::int16_t year_ = 1970;
    std::uint16_t month_ = 1;
    std::uint16_t day_ = 1;
    std::uint16_t hour_ = 0;
    std::uint16_t minute_ = 0;
    std::uint16_t second_ = 0;
    std::uint32_t nanosecond_ = 0;
};

static_assert(sizeof(AbsoluteTime::Components) == 16);

}  // namespace tarvcore

template <>
struct std::hash<tarvcore::RelativeTime> {
    std::size_t operator()(const tarvcore::RelativeTime& time) const noexcept {
        return time.hash();
    }
};

template <>
struct std::hash<tarvcore::AbsoluteTime> {
    std::size_t operator()(const tarvcore::AbsoluteTime& time) const noexcept {
        return time.hash();
    }
};
