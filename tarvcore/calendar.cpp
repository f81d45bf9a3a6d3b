// Calendar fields and Julian dates.

#include <charconv>
#include <cmath>
#include <exception>
#include <limits>

#include "tarvcore/abs_rel_time.h"
#include "tarvcore/error_code_constants.h"
#include "tarvcore/error_composer.h"
#include "tarvcore/error_exception.h"
#include "tarvcore/safe_cast.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/calendar.cpp#1 $");

namespace tarvcore {
namespace {

using impl::ns_per_second;

TARVCORE_COLD ErrorInfo::Ptr range_error(impl::RangeFault fault) {
    return ErrorInfo::create(
        error::tarvcore_absoluteTime_range,
        fault == impl::RangeFault::before
            ? "The specified Gregorian date/time represent a date before '1677-09-21 "
              "00:12:43.145224192' (the minimum representable by tarvcore::AbsoluteTime)"
            : "The specified Gregorian date/time represent a date after '2262-04-11 "
              "23:47:16.854775806' (the maximum representable by tarvcore::AbsoluteTime)",
        TARVCORE_LOCATION("tarvcore::AbsoluteTime::from_components_nothrow()"));
}

[[noreturn]] TARVCORE_COLD void raise_day_too_big(double jd) {
    char digits[32];
    const auto end = std::to_chars(digits, digits + sizeof digits, jd).ptr;
    ErrorComposer(
        "The given date ({@jd}) lies outside of the range of days representable in 32 bits.")
        .param("jd", std::string(digits, end))
        .throw_error(error::tarvcore_cast_valueTooBig,
                     TARVCORE_LOCATION("tarvcore::AbsoluteTime::Components::Components()"));
}

// The instant of the fields that `make` answers.  An exception becomes an error: stored, or raised
// where there is no place to store it.
template <class MakeComponents>
AbsoluteTime time_or_error(MakeComponents make, ErrorInfo::Ptr* error,
                           const SourceLocation& location) {
    ErrorInfo::Ptr record;
    try {
        return AbsoluteTime::from_components(make());
    } catch (const std::exception& e) {
        record = ErrorInfo::from_exception(e, location);
    }
    if (error == nullptr) throw_error(record);
    *error = record;
    return AbsoluteTime::infinite;
}

}  // namespace

constinit const AbsoluteTime::Components AbsoluteTime::Components::infinite(9999, 12, 31, 23, 59,
                                                                            59, 999999999);

AbsoluteTime::Components::Components(const AbsoluteTime& time) {
    if (time.is_infinite()) {
        *this = infinite;
        return;
    }
    const impl::DayAndTime split = impl::split_count(time.as_nsec());
    set_date(impl::date_from_jdn(split.day));
    set_time(impl::split_second_of_day(split.second_of_day));
    nanosecond_ = split.nanosecond;
}

AbsoluteTime::Components::Components(double jd, bool round_to_second) {
    // The fraction in units of 2^-32 days is exact: any day with a date leaves it fewer bits.
    constexpr double units_per_day = 4294967296.0;
    constexpr std::uint64_t half_day = std::uint64_t{1} << 31;
    constexpr std::uint32_t seconds_per_half_day = impl::seconds_per_day / 2;
    constexpr auto max_day = static_cast<double>(std::numeric_limits<std::uint32_t>::max());

    if (jd == std::numeric_limits<double>::infinity()) {
        *this = infinite;
        return;
    }
    if (jd < 0) raise_negative_day(impl::int64_from_double(std::floor(jd)));
    if (!(jd <= max_day)) raise_day_too_big(jd);  // or is no number

    auto day = static_cast<std::uint32_t>(jd);
    auto fraction = static_cast<std::uint64_t>((jd - day) * units_per_day);
    std::uint32_t first_second = seconds_per_half_day;
    if (fraction >= half_day) {  // the civil day after noon
        fraction -= half_day;
        ++day;
        first_second = 0;
    }
    // 2^32 units are 86400 * 10^9 ns, which is 2^16 * 675 * 5^9; the product has 63 bits.
    const std::uint64_t ns = fraction * (impl::ns_per_day >> 16) >> 16;
    std::uint32_t second = first_second + static_cast<std::uint32_t>(ns / ns_per_second);
    nanosecond_ = static_cast<std::uint32_t>(ns % ns_per_second);
    if (round_to_second) {
        if (nanosecond_ >= ns_per_second / 2) ++second;
        nanosecond_ = 0;
    }
    set_date(checked_date(day));
    if (second == impl::seconds_per_day) {
        second = 0;
        set_date(checked_date(day + 1));
    }
    set_time(impl::split_second_of_day(second));
}

void AbsoluteTime::Components::raise_negative_day(std::int64_t jdn) {
    impl::safe_cast_throw_negative_to_unsigned(typeid(std::uint32_t), jdn);
}

void AbsoluteTime::Components::raise_no_date(std::uint32_t jdn) {
    const auto year = safe_cast<std::int32_t>(impl::date_from_any_jdn(jdn).year);
    impl::safe_cast_throw_value_truncated(typeid(std::int16_t), static_cast<long long>(year));
}

double AbsoluteTime::Components::full_julian_date() const {
    if (*this == infinite) return std::numeric_limits<double>::infinity();
    return julian_day() + (hour_ - 12) / 24.0 + minute_ / 1440.0 + second_ / 86400.0 +
           nanosecond_ / 8.64e13;
}

AbsoluteTime::Components AbsoluteTime::as_components() const {
    return Components(*this);
}

int AbsoluteTime::julian_day() const {
    return as_components().julian_day();
}

double AbsoluteTime::full_julian_date() const {
    return as_components().full_julian_date();
}

ErrorInfo::Ptr AbsoluteTime::from_components_nothrow(const Components& components,
                                                     AbsoluteTime* out) {
    AbsoluteTime time;
    if (components == Components::infinite) {
        time.set_infinite();
    } else {
        const std::int32_t jdn = components.julian_day();
        const std::uint32_t second =
            (components.hour() * 60u + components.minute()) * 60u + components.second();
        const std::uint64_t ns =
            impl::multiply_wide(second, ns_per_second) + components.nanosecond();
        const impl::RangeFault fault = impl::range_fault(jdn, ns);
        if (fault != impl::RangeFault::none) return range_error(fault);
        time.set_nsec(impl::join_count(jdn, ns));
    }
    if (out != nullptr) *out = time;
    return {};
}

AbsoluteTime AbsoluteTime::from_components(const Components& components) {
    AbsoluteTime time;
    throw_if_error(from_components_nothrow(components, &time));
    return time;
}

void AbsoluteTime::set(const Components& components) {
    *this = from_components(components);
}

AbsoluteTime AbsoluteTime::from_julian_day(int jdn, ErrorInfo::Ptr* error) {
    return time_or_error([jdn] { return Components(jdn); }, error,
                         TARVCORE_LOCATION("tarvcore::AbsoluteTime::from_julian_day()"));
}

AbsoluteTime AbsoluteTime::from_full_julian_date(double jd, ErrorInfo::Ptr* error,
                                                 bool round_to_second) {
    return time_or_error([=] { return Components(jd, round_to_second); }, error,
                         TARVCORE_LOCATION("tarvcore::AbsoluteTime::from_full_julian_date()"));
}

}  // namespace tarvcore
