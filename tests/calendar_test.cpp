// Faults to catch: a day off at a leap year, a century or the ends; floor taken for truncation
// before 1970; a time of day that is a second off at a reciprocal's border; range limits; fractions
// of days that fall a nanosecond short; a failure that touches its output.

#include "tarvcore/abs_rel_time.h"

#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <random>

#include "tests/support/pattern.h"
#include "tests/support/raised.h"
#include "tests/support/trials.h"

namespace {

using namespace tarvcore;
using tarv_test::agrees;
using tarv_test::raised;
using Components = AbsoluteTime::Components;

constexpr std::int64_t ns_per_day = 86'400'000'000'000;
constexpr double infinity = std::numeric_limits<double>::infinity();

// The begin of the Julian day numbers.
constexpr std::chrono::sys_days day_0 = -std::chrono::days(2440588) + std::chrono::sys_days();

TEST(Calendar, EveryDay) {
    using namespace std::chrono;
    const sys_days last = year(32767) / 12 / 31;
    for (sys_days day = year(-4800) / 3 / 1; day <= last; day += days(1)) {
        const year_month_day date = day;
        const int jdn = static_cast<int>((day - day_0).count());
        const Components fields(static_cast<short>(int(date.year())),
                                static_cast<unsigned short>(unsigned(date.month())),
                                static_cast<unsigned short>(unsigned(date.day())), 12, 0, 0, 0);
        ASSERT_EQ(fields.julian_day(), jdn);
        const int weekday = fields.day_of_week();
        ASSERT_EQ(weekday, jdn >= 0 ? jdn % 7 : 7 + jdn % 7);
        if (date.year() >= year(0)) {
            ASSERT_EQ(Components(jdn), fields) << jdn;
        }
    }
}

TEST(Calendar, MonthsAndDaysOutOfBoundsCountOn) {
    const auto day_of = [](short year, unsigned short month, unsigned short day) {
        return Components(year, month, day, 0, 0, 0, 0).julian_day();
    };
    for (const short year : std::initializer_list<short>{-4799, 1969, 1999, 2000, 32766}) {
        const auto next = static_cast<short>(year + 1);
        EXPECT_EQ(day_of(year, 13, 5), day_of(next, 1, 5));
        EXPECT_EQ(day_of(next, 0, 5), day_of(year, 12, 5));
        EXPECT_EQ(day_of(year, 14, 65535), day_of(next, 2, 1) + 65534);
    }
    // Further off, the formula of the calendar goes on, and is no calendar.
    EXPECT_EQ(day_of(1970, 15, 1), day_of(1971, 3, 1) + 2);
    EXPECT_EQ(day_of(1970, 65535, 65535), 4500772);
    EXPECT_EQ(day_of(-4801, 12, 31), -32104);
    EXPECT_EQ(day_of(-32768, 1, 1), -10247205);
}

void check_breakdown(std::int64_t count) {
    std::int64_t days = count / ns_per_day;
    std::int64_t rest = count % ns_per_day;
    if (rest < 0) {
        rest += ns_per_day;
        --days;
    }
    const Components fields(AbsoluteTime::from_nsec(count));
    ASSERT_EQ(fields.julian_day(), days + 2440588) << count;
    ASSERT_EQ(fields.hour(), rest / 3'600'000'000'000) << count;
    ASSERT_EQ(fields.minute(), rest / 60'000'000'000 % 60) << count;
    ASSERT_EQ(fields.second(), rest / 1'000'000'000 % 60) << count;
    ASSERT_EQ(fields.nanosecond(), rest % 1'000'000'000) << count;
    AbsoluteTime time;
    ASSERT_TRUE(AbsoluteTime::from_components_nothrow(fields, &time).is_null());
    ASSERT_EQ(time.as_nsec(), count);
}

TEST(Calendar, TimesOfDayAroundEveryMidnightAndSecond) {
    for (std::int64_t day = -106751; day <= 106751; ++day) {
        for (const int ns : {-1, 0, 1})
            check_breakdown(day * ns_per_day + ns);
    }
    for (std::int64_t second = 0; second < 86400; ++second) {
        for (const std::int64_t day : {-106751, -1, 0, 106750}) {
            for (const int ns : {-1, 0})
                check_breakdown(day * ns_per_day + second * 1'000'000'000 + ns);
        }
    }
    for (const int distance : {0, 1, 65535, 65536, 1'000'000'000}) {
        check_breakdown(INT64_MIN + distance);
        check_breakdown(INT64_MAX - 1 - distance);
    }
    std::mt19937_64 random(2014);
    for (unsigned i = tarv_test::trials(200'000); i != 0; --i) {
        const auto count = static_cast<std::int64_t>(random());
        if (count != INT64_MAX) check_breakdown(count);
    }
}

TEST(Calendar, RangeIsTestedByDayAndTimeOfDay) {
    const auto fault = [](const std::string& end) {
        return "error.tarvcore.absoluteTime.range The specified Gregorian date/time represent a "
               "date " +
               end +
               " representable by tarvcore::AbsoluteTime) [] "
               "tarvcore::AbsoluteTime::from_components_nothrow() //tarvcore/calendar.cpp";
    };
    const std::string before = fault("before '1677-09-21 00:12:43.145224192' (the minimum");
    const std::string after = fault("after '2262-04-11 23:47:16.854775806' (the maximum");
    const struct {
        Components fields;
        std::string fault;
        std::int64_t count;
    } rows[] = {
        {{1677, 9, 21, 0, 12, 43, 145224192}, "", INT64_MIN},
        {{1677, 9, 21, 0, 12, 43, 145224191}, before, 42},
        {{1677, 9, 20, 24, 12, 43, 145224192}, before, 42},  // the same instant, but the day before
        {{-32768, 1, 1, 0, 0, 0, 0}, before, 42},
        {{2262, 4, 11, 23, 47, 16, 854775806}, "", INT64_MAX - 1},
        {{2262, 4, 11, 23, 47, 16, 854775807}, after, 42},
        {{2262, 4, 12, 0, 0, 0, 0}, after, 42},
        {{32767, 65535, 65535, 65535, 65535, 65535, 0xFFFFFFFF}, after, 42},
        // Looked at by day only: the time of day carries past the end, and the count wraps.
        {{2262, 4, 10, 48, 0, 0, 0}, "", INT64_MIN + 763'145'224'192},
        {{9999, 12, 31, 23, 59, 59, 999999999}, "", INT64_MAX},
        {{9999, 12, 31, 23, 59, 59, 999999998}, after, 42},
        {{2024, 2, 30, 24, 60, 60, 0}, "", 1'709'341'260'000'000'000},
        {{1970, 13, 1, 0, 0, 0, 0}, "", 365 * ns_per_day},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        AbsoluteTime time = AbsoluteTime::from_nsec(42);
        const auto error = AbsoluteTime::from_components_nothrow(row.fields, &time);
        EXPECT_EQ(error.is_null(), row.fault.empty());
        EXPECT_EQ(time.as_nsec(), row.count);
        EXPECT_EQ(raised([&] { EXPECT_EQ(AbsoluteTime(row.fields), time); }), row.fault);
        EXPECT_EQ(AbsoluteTime::from_components_nothrow(row.fields, nullptr).is_null(), !error);
    }
}

TEST(Components, OrderBySignedYearFirst) {
    EXPECT_EQ(Components(), Components(AbsoluteTime::zero));
    EXPECT_EQ(Components::infinite, AbsoluteTime::infinite.as_components());
    EXPECT_LT(Components(-1, 12, 31, 0, 0, 0, 0), Components(1, 1, 1, 0, 0, 0, 0));
    EXPECT_LT(Components(1970, 1, 2, 0, 0, 0, 0), Components(1970, 256, 1, 0, 0, 0, 0));
    EXPECT_GE(Components::infinite, Components(9999, 12, 31, 23, 59, 59, 999999998));
    Components fields;
    fields.minute(59);
    fields.nanosecond(1);
    EXPECT_EQ(fields, Components(1970, 1, 1, 0, 59, 0, 1));
}

TEST(JulianDates, FromTheFractionOfTheDay) {
    const struct {
        double jd;
        Components exact;
        Components rounded;
    } rows[] = {
        {2440587.5, {1970, 1, 1, 0, 0, 0, 0}, {1970, 1, 1, 0, 0, 0, 0}},
        {2440588.75, {1970, 1, 2, 6, 0, 0, 0}, {1970, 1, 2, 6, 0, 0, 0}},
        // 2^-31 days, and as much before midnight and noon.
        {2440587.5 + 0x1p-31, {1970, 1, 1, 0, 0, 0, 40233}, {1970, 1, 1, 0, 0, 0, 0}},
        {2440588.5 - 0x1p-31, {1970, 1, 1, 23, 59, 59, 999959766}, {1970, 1, 2, 0, 0, 0, 0}},
        {2440588 - 0x1p-31, {1970, 1, 1, 11, 59, 59, 999959766}, {1970, 1, 1, 12, 0, 0, 0}},
        {2440952.5 - 0x1p-31, {1970, 12, 31, 23, 59, 59, 999959766}, {1971, 1, 1, 0, 0, 0, 0}},
        {2440587.5 + 12427 * 0x1p-31, {1970, 1, 1, 0, 0, 0, 499977171}, {1970, 1, 1, 0, 0, 0, 0}},
        {2440587.5 + 12428 * 0x1p-31, {1970, 1, 1, 0, 0, 0, 500017404}, {1970, 1, 1, 0, 0, 1, 0}},
        {infinity, Components::infinite, Components::infinite},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Components(row.jd, false), row.exact) << &row - rows;
        EXPECT_EQ(Components(row.jd, true), row.rounded) << &row - rows;
    }
    EXPECT_EQ(AbsoluteTime::zero.full_julian_date(), 2440587.5);
    EXPECT_EQ(AbsoluteTime::zero.julian_day(), 2440588);
    EXPECT_EQ(AbsoluteTime::infinite.full_julian_date(), infinity);
    EXPECT_NEAR(Components(1970, 1, 1, 1, 2, 3, 4).full_julian_date(),
                2440587.5 + 3723.000000004 / 86400, 0x1p-31);
}

TEST(JulianDates, OutOfRange) {
    const struct {
        double jd;
        std::string code;
        std::string parameter;
    } rows[] = {
        {-0.5, "negativeToUnsigned", "'srcValue' => \"-1\""},
        {-infinity, "negativeToUnsigned", "'srcValue' => \"-9223372036854775808\""},
        {0, "valueTooBig.signReversal", "'srcValue' => \"4294962583\""},
        {1721059, "valueTooBig.signReversal", "'srcValue' => \"4294967295\""},
        {1721059.4999999, "valueTooBig.signReversal", "'srcValue' => \"4294967295\""},
        {13689326, "valueTooBig", "'srcValue' => \"32768\""},
        {4294967295.0, "valueTooBig.signReversal", "'srcValue' => \"4294962583\""},
        {4294967296.0, "valueTooBig", "'jd' => \"4294967296\""},
        {std::numeric_limits<double>::quiet_NaN(), "valueTooBig", "'jd' => \"nan\""},
    };
    ErrorInfo::Ptr stored;
    for (const auto& row : rows) {
        const std::string text = raised([&] { (void)Components(row.jd, false); });
        EXPECT_TRUE(agrees(text, "error.tarvcore.cast." + row.code + " …" + row.parameter + "…"));
        EXPECT_TRUE(AbsoluteTime::from_full_julian_date(row.jd, &stored, true).is_infinite());
        EXPECT_EQ(stored->code().as_string(), "error.tarvcore.cast." + row.code);
    }
    EXPECT_TRUE(agrees(raised([] { (void)Components(-1); }), "…cast.negativeToUnsigned …"));
    EXPECT_TRUE(agrees(raised([] { (void)Components(13689326); }), "…cast.valueTooBig …"));
    // The year, as computed modulo 2^32.
    EXPECT_TRUE(agrees(raised([] { (void)Components(INT_MAX); }), "… => \"5874898\"…"));

    stored = {};
    EXPECT_EQ(AbsoluteTime::from_julian_day(2440588, &stored).as_nsec(), ns_per_day / 2);
    EXPECT_EQ(AbsoluteTime::from_full_julian_date(2440587.5, &stored, false), AbsoluteTime::zero);
    EXPECT_TRUE(stored.is_null());
    EXPECT_TRUE(AbsoluteTime::from_julian_day(2547340, &stored).is_infinite());
    EXPECT_TRUE(stored->matches("error.tarvcore.absoluteTime.range"));
    EXPECT_THROW(AbsoluteTime::from_julian_day(-5, nullptr), ErrorException);
}

}  // namespace
