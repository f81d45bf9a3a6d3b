// Faults to catch: a day off at a leap year, a century or the ends; floor taken for truncation
// before 1970; a time of day that is a second off at a reciprocal's border; range limits; fractions
// of days that fall a nanosecond short; a failure that touches its output.

#include "tarvcore/abs_rel_time.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

#include "tarvcore/error_exception.h"
#include "tests/support/trials.h"

namespace {

using tarvcore::AbsoluteTime;
using tarvcore::ErrorException;
using tarvcore::ErrorInfo;
using tarvcore::RelativeTime;
using Components = AbsoluteTime::Components;

constexpr std::int64_t min_count = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t max_count = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t ns_per_day = 86'400'000'000'000;
constexpr double infinity = std::numeric_limits<double>::infinity();

template <class Operation>
ErrorInfo::Ptr error_of(Operation operation) {
    try {
        operation();
    } catch (const ErrorException& e) {
        return e.error();
    }
    return {};
}

std::string code_of(const ErrorInfo::Ptr& error) {
    return error ? error->code().as_string() : std::string();
}

// The calendar as everybody learns it: a year after the other, a month after the other.
struct Walker {
    int year;
    int month = 1;
    int day = 1;

    bool is_leap() const { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }
    int days_of_month() const {
        const int days[] = {31, is_leap() ? 29 : 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
        return days[month - 1];
    }
    void next_day() {
        if (++day <= days_of_month()) return;
        day = 1;
        if (++month <= 12) return;
        month = 1;
        ++year;
    }
};

TEST(Calendar, EveryDayOfTheYears0To32767) {
    Walker date{0};
    int jdn = 1721060;
    for (; date.year <= 32767; date.next_day(), ++jdn) {
        const Components fields(jdn);
        ASSERT_TRUE(fields.year() == date.year && fields.month() == date.month &&
                    fields.day() == date.day)
            << jdn;
        ASSERT_EQ(fields.julian_day(), jdn);
    }
    EXPECT_EQ(Components(jdn - 1).hour(), 12);
    EXPECT_EQ(code_of(error_of([=] { (void)Components(jdn); })), "error.tarvcore.cast.valueTooBig");
}

TEST(Calendar, EveryDayBeforeTheYear0) {
    Walker date{-4800, 3, 1};
    for (int jdn = -32044; date.year < 0; date.next_day(), ++jdn) {
        const Components fields(static_cast<short>(date.year),
                                static_cast<unsigned short>(date.month),
                                static_cast<unsigned short>(date.day), 0, 0, 0, 0);
        ASSERT_EQ(fields.julian_day(), jdn);
        const int weekday = fields.day_of_week();
        ASSERT_EQ(weekday, jdn >= 0 ? jdn % 7 : 7 + jdn % 7);
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
        check_breakdown(min_count + distance);
        check_breakdown(max_count - 1 - distance);
    }
    std::mt19937_64 random(2014);
    for (unsigned i = tarv_test::trials(200'000); i != 0; --i) {
        const auto count = static_cast<std::int64_t>(random());
        if (count != max_count) check_breakdown(count);
    }
}

TEST(Calendar, RangeIsTestedByDayAndTimeOfDay) {
    const char before[] = "before '1677-09-21 00:12:43.145224192'";
    const char after[] = "after '2262-04-11 23:47:16.854775806'";
    const struct {
        Components fields;
        const char* fault;
        std::int64_t count;
    } rows[] = {
        {{1677, 9, 21, 0, 12, 43, 145224192}, nullptr, min_count},
        {{1677, 9, 21, 0, 12, 43, 145224191}, before, 0},
        {{1677, 9, 20, 24, 12, 43, 145224192}, before, 0},  // the same instant, but the day before
        {{-32768, 1, 1, 0, 0, 0, 0}, before, 0},
        {{2262, 4, 11, 23, 47, 16, 854775806}, nullptr, max_count - 1},
        {{2262, 4, 11, 23, 47, 16, 854775807}, after, 0},
        {{2262, 4, 12, 0, 0, 0, 0}, after, 0},
        {{32767, 65535, 65535, 65535, 65535, 65535, 0xFFFFFFFF}, after, 0},
        // Looked at by day only: the time of day carries past the end, and the count wraps.
        {{2262, 4, 10, 48, 0, 0, 0}, nullptr, min_count + 763'145'224'192},
        {{9999, 12, 31, 23, 59, 59, 999999999}, nullptr, max_count},
        {{9999, 12, 31, 23, 59, 59, 999999998}, after, 0},
        {{2024, 2, 30, 24, 60, 60, 0}, nullptr, 1'709'341'260'000'000'000},
        {{1970, 13, 1, 0, 0, 0, 0}, nullptr, 365 * ns_per_day},
    };
    for (const auto& row : rows) {
        const auto name = testing::PrintToString(&row - rows);
        AbsoluteTime time = AbsoluteTime::from_nsec(42);
        const auto error = AbsoluteTime::from_components_nothrow(row.fields, &time);
        EXPECT_EQ(error.is_null(), row.fault == nullptr) << name;
        if (error) {
            EXPECT_EQ(time.as_nsec(), 42) << name;
            EXPECT_EQ(code_of(error), "error.tarvcore.absoluteTime.range");
            EXPECT_NE(error->expanded_message().as_string().find(row.fault), std::string::npos);
            EXPECT_EQ(error->location().function(),
                      "tarvcore::AbsoluteTime::from_components_nothrow()");
            EXPECT_EQ(code_of(error_of([&] { (void)AbsoluteTime(row.fields); })), code_of(error));
        } else {
            EXPECT_EQ(time.as_nsec(), row.count) << name;
            EXPECT_EQ(AbsoluteTime(row.fields), time);
        }
        EXPECT_EQ(AbsoluteTime::from_components_nothrow(row.fields, nullptr).is_null(),
                  error.is_null());
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
        {2440588, {1970, 1, 1, 12, 0, 0, 0}, {1970, 1, 1, 12, 0, 0, 0}},
        {2440588.25, {1970, 1, 1, 18, 0, 0, 0}, {1970, 1, 1, 18, 0, 0, 0}},
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
        const auto name = testing::PrintToString(&row - rows);
        EXPECT_EQ(Components(row.jd, false), row.exact)
            << name << ' ' << Components(row.jd, false).nanosecond();
        EXPECT_EQ(Components(row.jd, true), row.rounded) << name;
    }
    EXPECT_EQ(AbsoluteTime::zero.full_julian_date(), 2440587.5);
    EXPECT_EQ(AbsoluteTime::zero.julian_day(), 2440588);
    EXPECT_EQ(AbsoluteTime::infinite.full_julian_date(), infinity);
    EXPECT_EQ(Components(2440588).day_of_week(), 3);
    EXPECT_NEAR(Components(1970, 1, 1, 1, 2, 3, 4).full_julian_date(),
                2440587.5 + 3723.000000004 / 86400, 0x1p-31);
}

TEST(JulianDates, OutOfRange) {
    const struct {
        double jd;
        const char* code;
        const char* parameter;
        const char* value;
    } rows[] = {
        {-0.5, "error.tarvcore.cast.negativeToUnsigned", "srcValue", "-1"},
        {-infinity, "error.tarvcore.cast.negativeToUnsigned", "srcValue", "-9223372036854775808"},
        {0, "error.tarvcore.cast.valueTooBig.signReversal", "srcValue", "4294962583"},
        {1721059, "error.tarvcore.cast.valueTooBig.signReversal", "srcValue", "4294967295"},
        {13689326, "error.tarvcore.cast.valueTooBig", "srcValue", "32768"},
        {4294967295.0, "error.tarvcore.cast.valueTooBig.signReversal", "srcValue", "4294962583"},
        {4294967296.0, "error.tarvcore.cast.valueTooBig", "jd", "4294967296"},
        {std::numeric_limits<double>::quiet_NaN(), "error.tarvcore.cast.valueTooBig", "jd", "nan"},
    };
    for (const auto& row : rows) {
        const auto error = error_of([&] { (void)Components(row.jd, false); });
        ASSERT_EQ(code_of(error), row.code) << row.jd;
        EXPECT_EQ(error->params().get_value(row.parameter, std::strlen(row.parameter)), row.value);

        ErrorInfo::Ptr stored;
        EXPECT_TRUE(AbsoluteTime::from_full_julian_date(row.jd, &stored, true).is_infinite());
        EXPECT_EQ(code_of(stored), row.code);
    }
    EXPECT_EQ(code_of(error_of([] { (void)Components(-1); })),
              "error.tarvcore.cast.negativeToUnsigned");
    // The year, as computed modulo 2^32.
    const auto far = error_of([] { (void)Components(std::numeric_limits<int>::max()); });
    EXPECT_EQ(far->params().get_value("srcValue", 8), "5874898");

    ErrorInfo::Ptr stored;
    EXPECT_EQ(AbsoluteTime::from_julian_day(2440588, &stored).as_nsec(), ns_per_day / 2);
    EXPECT_EQ(AbsoluteTime::from_full_julian_date(2440587.5, &stored, false), AbsoluteTime::zero);
    EXPECT_TRUE(stored.is_null());
    EXPECT_TRUE(AbsoluteTime::from_julian_day(2547340, &stored).is_infinite());
    EXPECT_EQ(code_of(stored), "error.tarvcore.absoluteTime.range");
    EXPECT_EQ(code_of(error_of([] { AbsoluteTime::from_julian_day(-5, nullptr); })),
              "error.tarvcore.cast.negativeToUnsigned");
}

}  // namespace
