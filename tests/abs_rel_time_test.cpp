// Faults to catch: infinite lost, or made of a finite count; signed overflow; a conversion that
// faults or answers anything at the ends of the range; halves of different sign; a product in the
// wrong width; constants that are no constants in another module.

#include "tarvcore/abs_rel_time.h"

#include <gtest/gtest.h>

#include <sys/time.h>
#include <sys/timeb.h>

#include <cmath>
#include <limits>
#include <unordered_set>

#include "tarvcore/impl/ace_timeout.h"
#include "tests/support/allocations.h"

#include <windows.h>

namespace {

using tarvcore::AbsoluteTime;
using tarvcore::RelativeTime;
using tarvcore::impl::AceTimeoutProxy;
using tarvcore::impl::TimeBase;

constexpr std::int64_t min_count = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t max_count = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t second = 1'000'000'000;
constexpr double infinity = std::numeric_limits<double>::infinity();

constexpr RelativeTime ns(std::int64_t count) {
    return RelativeTime::nanoseconds(count);
}
constexpr AbsoluteTime at(std::int64_t count) {
    return AbsoluteTime::from_nsec(count);
}

// These are ready before any code of this module runs, and without a second thought.
static_assert(TimeBase::NANOSECONDS_IN_ONE_DAY == 86'400 * second);
static_assert(TimeBase::MICROSECONDS_IN_ONE_DAY == 24 * TimeBase::MICROSECONDS_IN_ONE_HOUR);
static_assert(AbsoluteTime(2LL) - RelativeTime::seconds(1) == AbsoluteTime(1, 0));

TEST(TimeBase, ConstantsAreTheSameInEveryModule) {
    EXPECT_EQ(AbsoluteTime::min_time.as_nsec(), TimeBase::sm_minValue);
    EXPECT_EQ(AbsoluteTime::max_time.as_nsec(), max_count - 1);
    EXPECT_EQ(AbsoluteTime::zero, AbsoluteTime());
    EXPECT_EQ(RelativeTime::min_time.as_nsec(), min_count);
    EXPECT_EQ(RelativeTime::max_time.as_nsec(), TimeBase::TIMEVALUE_MAX);
    EXPECT_EQ(RelativeTime::zero, RelativeTime());
    EXPECT_TRUE(RelativeTime::infinite.is_infinite() && AbsoluteTime::infinite.is_infinite());
    EXPECT_FALSE(RelativeTime::max_time.is_infinite());
    EXPECT_GT(AbsoluteTime::infinite, AbsoluteTime::max_time);
    EXPECT_LT(ns(-1), ns(0));
    EXPECT_LT(ns(0xFFFFFFFF), ns(0x100000000));

    EXPECT_EQ(ns(0x0000000100000001).hash(), 0u);
    EXPECT_EQ(at(0x12345678000000FF).hash(), 0x12345678u ^ 0xFF);
    EXPECT_EQ((std::unordered_set<AbsoluteTime>{at(1), at(2), at(1)}.size()), 2u);
}

TEST(TimeBase, MultipliesUnitsModulo64Bits) {
    EXPECT_EQ(AbsoluteTime(5).as_nsec(), 5 * second);
    EXPECT_EQ(AbsoluteTime(-5).as_nsec(), -5 * second);
    EXPECT_EQ(AbsoluteTime(4000000000u).as_nsec(), 4000000000 * second);
    EXPECT_EQ(AbsoluteTime(1, 500).as_nsec(), 1'000'500'000);
    EXPECT_EQ(AbsoluteTime(LONG_MAX, LONG_MIN).as_nsec(), 2147483647 * second - 2147483648'000);
    EXPECT_EQ(RelativeTime(10'000'000'000).as_nsec(), -8446744073709551616.0);
    EXPECT_EQ(RelativeTime::microseconds(max_count), ns(-1000));
    EXPECT_EQ(RelativeTime::milliseconds(min_count), ns(0));
    RelativeTime time;
    time.set_sec(-3);
    EXPECT_EQ(time, RelativeTime::seconds(-3));

    EXPECT_EQ(RelativeTime::seconds(LONG_MIN).as_nsec(), -2147483648 * second);
    EXPECT_EQ(RelativeTime::minutes(35791394).as_nsec(), 2147483640 * second);
    EXPECT_EQ(RelativeTime::minutes(36000000).as_nsec(), (2160000000 - 4294967296) * second);
    EXPECT_EQ(RelativeTime::hours(596524).as_nsec(), (2147486400 - 4294967296) * second);
    EXPECT_EQ(RelativeTime::days(24855).as_nsec(), 2147472000 * second);
    EXPECT_EQ(RelativeTime::days(24856).as_nsec(), (2147558400 - 4294967296) * second);
}

TEST(TimeBase, ConvertsDoublesWithoutUndefinedResults) {
    const struct {
        double seconds;
        std::int64_t count;
        const char* reason;
    } rows[] = {
        {1.5, 1'500'000'000, "exact"},
        {-1.9999999999, -1'999'999'999, "towards zero"},
        {0.9e-9, 0, "towards zero"},
        {9223372036.0, 9223372036 * second, "close to the end"},
        {-9223372036.854775808, min_count, "the smallest count is one"},
        {9223372036.854775808, min_count, "2^63 is no count"},
        {-9223372036.9, min_count, "too small"},
        {1e300, min_count, "the product is infinite"},
        {infinity, min_count, "infinite"},
        {-infinity, min_count, "infinite"},
        {std::nan(""), min_count, "not a number"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(RelativeTime(row.seconds).as_nsec(), row.count) << row.reason;
        EXPECT_EQ((ns(second) * row.seconds).as_nsec(), row.count) << row.reason;
    }
    EXPECT_EQ(ns(-2'500'000'000).as_sec(), -2.5);
    EXPECT_EQ(RelativeTime::infinite.as_sec(), infinity);
    EXPECT_EQ((RelativeTime::infinite * 2.0).as_nsec(), min_count);
    EXPECT_EQ((RelativeTime::infinite * 0.0).as_nsec(), min_count);
    EXPECT_EQ(RelativeTime::seconds(3) *= -0.5, RelativeTime::milliseconds(-1500));
}

TEST(TimeBase, TruncatesTowardsZero) {
    const std::int64_t counts[] = {
        0,         1,          -1,         999,     -999,      1000,          -1000,
        1'999'999, -1'999'999, second - 1, -second, min_count, min_count + 1, max_count - 1};
    for (const std::int64_t count : counts) {
        ASSERT_EQ(ns(count).as_usec(), count / 1000);
        ASSERT_EQ(ns(count).as_msec(), count / 1'000'000);
        ASSERT_EQ(ns(count).as_time_t(), count / second);
        const _timespec64 split = at(count).as_timespec();
        ASSERT_EQ(split.tv_sec, count / second);
        ASSERT_EQ(split.tv_nsec, count % second);
        ASSERT_EQ(AbsoluteTime(split), at(count));
        ASSERT_EQ(AbsoluteTime(at(count).as_components()), at(count));
    }
    EXPECT_EQ(RelativeTime::infinite.as_usec(), max_count);
    EXPECT_EQ(RelativeTime::infinite.as_msec(), max_count);
    EXPECT_EQ(RelativeTime::infinite.as_time_t(), 2147483647);
}

TEST(TimeBase, SplitsIntoSecondsOfThirtyTwoBitsAndClamps) {
    constexpr std::int64_t last = 2147483647 * second + 999'999'999;
    constexpr std::int64_t first = -2147483648 * second - 999'999'999;
    const struct {
        std::int64_t count;
        long seconds;
        long nanoseconds;
    } rows[] = {
        {0, 0, 0},
        {-1'500'000'000, -1, -500'000'000},
        {-999, 0, -999},
        {last, 2147483647, 999'999'999},
        {last + 1, 2147483647, 999'999'999},
        {last - 999'999'998, 2147483647, 1},
        {last - second, 2147483646, 999'999'999},
        {max_count - 1, 2147483647, 999'999'999},
        {first, LONG_MIN, -999'999'999},
        {first - 1, LONG_MIN, -999'999'999},
        {first + 999'998'000, LONG_MIN, -1999},
        {first + second, LONG_MIN + 1, -999'999'999},
        {min_count, LONG_MIN, -999'999'999},
    };
    for (const auto& row : rows) {
        const RelativeTime time = ns(row.count);
        const long microseconds = row.nanoseconds / 1000;
        EXPECT_EQ(time.as_timeval().tv_sec, row.seconds) << row.count;
        EXPECT_EQ(time.as_timeval().tv_usec, microseconds) << row.count;
        EXPECT_EQ(time.as_timespec32().tv_sec, row.seconds) << row.count;
        EXPECT_EQ(time.as_timespec32().tv_nsec, row.nanoseconds) << row.count;
        EXPECT_EQ(time.as_ace_time_value().sec(), row.seconds) << row.count;
        EXPECT_EQ(time.as_ace_time_value().usec(), microseconds) << row.count;
        const RelativeTime in_range(row.seconds, microseconds);
        EXPECT_EQ(RelativeTime(time.as_timeval()), in_range);
        EXPECT_EQ(RelativeTime(time.as_ace_time_value()), in_range);
        EXPECT_EQ(RelativeTime(time.as_timespec32()), ns(row.seconds * second + row.nanoseconds));
    }
    EXPECT_EQ(RelativeTime::infinite.as_timeval().tv_sec, 2147483647);
    EXPECT_EQ(RelativeTime::infinite.as_timeval_usec(), 2147483647);
    EXPECT_EQ(RelativeTime::infinite.as_timespec().tv_sec, 9223372036);
    EXPECT_EQ(RelativeTime::infinite.as_timespec32().tv_sec, 2147483647);
    EXPECT_EQ(RelativeTime::infinite.as_ace_time_value().usec(), 999999);
}

TEST(TimeBase, TimeoutsOfAce) {
    const AceTimeoutProxy never = AbsoluteTime::infinite.as_ace_timeout();
    EXPECT_EQ(static_cast<const ACE_Time_Value*>(never), nullptr);
    AceTimeoutProxy proxy = RelativeTime::milliseconds(1500).as_ace_timeout();
    const ACE_Time_Value* timeout = proxy;
    ASSERT_EQ(timeout, &proxy.value);
    EXPECT_EQ(*timeout, ACE_Time_Value(1, 500'000));
    EXPECT_EQ(RelativeTime(timeout), RelativeTime::milliseconds(1500));
    proxy = never;
    EXPECT_TRUE(RelativeTime(static_cast<const ACE_Time_Value*>(proxy)).is_infinite());
}

TEST(RelativeTime, TimeoutsOfWindowsAreNotClamped) {
    const struct {
        RelativeTime time;
        unsigned long timeout;
    } rows[] = {
        {RelativeTime::infinite, INFINITE},
        {RelativeTime::milliseconds(-1), 0xFFFFFFFF},
        {RelativeTime::milliseconds(0x100000000), 0},
        {RelativeTime::milliseconds(0xFFFFFFFE), 0xFFFFFFFE},
        {ns(1'999'999), 1},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.time.as_win32_timeout(), row.timeout) << row.time.as_nsec();
    RelativeTime time;
    time.set_win32_timeout(0xFFFFFFFE);
    EXPECT_EQ(time, RelativeTime::milliseconds(0xFFFFFFFE));
    time.set_win32_timeout(INFINITE);
    EXPECT_TRUE(time.is_infinite());
}

// Counts at which sums and differences change their kind.
constexpr std::int64_t ends[] = {
    min_count,     min_count + 1,     min_count + 2, min_count / 2, -1,       0, 1,
    max_count / 2, max_count / 2 + 1, max_count - 2, max_count - 1, max_count};

TEST(Time, SumsWrapAndInfiniteStays) {
    for (const std::int64_t a : ends) {
        for (const std::int64_t b : ends) {
            const bool infinite = a == max_count || b == max_count;
            const auto ua = static_cast<std::uint64_t>(a);
            const auto ub = static_cast<std::uint64_t>(b);
            const std::int64_t sum = infinite ? max_count : static_cast<std::int64_t>(ua + ub);
            const std::int64_t difference =
                infinite ? max_count : static_cast<std::int64_t>(ua - ub);
            ASSERT_EQ(ns(a) + ns(b), ns(sum)) << a << ' ' << b;
            ASSERT_EQ(at(a) + ns(b), at(sum));
            ASSERT_EQ(ns(a) + at(b), at(sum));
            ASSERT_EQ(AbsoluteTime(ns(a), at(b)), at(sum));
            ASSERT_EQ(ns(a) - ns(b), ns(difference)) << a << ' ' << b;
            ASSERT_EQ(at(a) - ns(b), at(difference));
            ASSERT_EQ(at(a) += ns(b), at(sum));
            ASSERT_EQ(at(a) -= ns(b), at(difference));
            ASSERT_EQ(ns(a) += ns(b), ns(sum));
            ASSERT_EQ(ns(a) -= ns(b), ns(difference));

            // As a floating-point number of 64 bits, the difference is exact enough to be compared.
            const long double wide = static_cast<long double>(a) - static_cast<long double>(b);
            const bool saturates = infinite || std::fabs(wide) >= 9223372036854775807.0L;
            const RelativeTime distance = saturates ? RelativeTime::infinite : ns(difference);
            ASSERT_EQ(at(a) - at(b), distance) << a << ' ' << b;
            const RelativeTime rest = distance.is_negative() ? RelativeTime::zero : distance;
            ASSERT_EQ(at(a).remaining(at(b)), rest);
            ASSERT_EQ(at(b).overtime(at(a)), rest);
        }
    }
    EXPECT_EQ(ns(min_count).negate(), ns(min_count));
    EXPECT_EQ(ns(max_count - 1).negate(), ns(min_count + 2));
    EXPECT_TRUE(RelativeTime::infinite.is_positive() &&
                RelativeTime(RelativeTime::infinite).negate().is_infinite());
}

TEST(AbsoluteTime, AgreesWithTheSystemsClock) {
    FILETIME before;
    FILETIME after;
    GetSystemTimeAsFileTime(&before);
    const AbsoluteTime now = AbsoluteTime::now();
    GetSystemTimeAsFileTime(&after);
    EXPECT_LE(AbsoluteTime(before, false), now);
    EXPECT_LE(now, AbsoluteTime(after, false));

    EXPECT_TRUE(AbsoluteTime::zero.remaining().is_zero());
    EXPECT_GE(AbsoluteTime::zero.overtime(), now - AbsoluteTime::zero);
    EXPECT_TRUE((now + RelativeTime::hours(1)).overtime().is_zero());
    EXPECT_LE((now + RelativeTime::hours(1)).remaining(), RelativeTime::hours(1));
    EXPECT_TRUE(AbsoluteTime::infinite.remaining().is_infinite());
    EXPECT_TRUE(AbsoluteTime::infinite.overtime().is_infinite());
}

TEST(AbsoluteTime, ConvertsWindowsTimes) {
    const auto file_time = [](std::uint64_t ticks) {
        return FILETIME{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    };
    const auto ticks = [](const FILETIME& time) {
        return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
    };
    EXPECT_EQ(AbsoluteTime(file_time(116444736000000000), false), AbsoluteTime::zero);
    EXPECT_EQ(ticks(AbsoluteTime::zero.as_filetime()), TimeBase::FILETIME_TO_EPOCH_OFFSET);
    EXPECT_EQ(ticks(at(199).as_filetime()), TimeBase::FILETIME_TO_EPOCH_OFFSET + 1);
    EXPECT_EQ(ticks(at(-199).as_filetime()), TimeBase::FILETIME_TO_EPOCH_OFFSET - 1);
    EXPECT_EQ(ticks(AbsoluteTime::infinite.as_filetime()), ~std::uint64_t{0});
    EXPECT_FALSE(AbsoluteTime(TimeBase::MAX_FILETIME, false).is_infinite());
    for (const AbsoluteTime time : {AbsoluteTime::min_time, AbsoluteTime::max_time}) {
        const std::int64_t whole = time.as_nsec() / 100 * 100;
        EXPECT_EQ(AbsoluteTime(time.as_filetime(), false), at(whole));
    }

    SYSTEMTIME parts = at(1'405'516'980'250'000'000).as_systemtime();
    EXPECT_EQ(parts.wYear * 10000 + parts.wMonth * 100 + parts.wDay, 20140716);
    EXPECT_EQ(parts.wDayOfWeek, 3);
    EXPECT_EQ(parts.wHour * 10000000 + parts.wMinute * 100000 + parts.wSecond * 1000 +
                  parts.wMilliseconds,
              132300250);
    EXPECT_EQ(AbsoluteTime(parts, false), at(1'405'516'980'250'000'000));
    const SYSTEMTIME never = AbsoluteTime::infinite.as_systemtime();
    EXPECT_EQ(never.wYear, 30827);
    EXPECT_EQ(never.wDayOfWeek, 5);
    EXPECT_EQ(never.wMilliseconds, 999);

    // What Windows says that local time is, whatever the zone.
    FILETIME local;
    const FILETIME utc = AbsoluteTime(parts, false).as_filetime();
    FileTimeToLocalFileTime(&utc, &local);
    EXPECT_EQ(AbsoluteTime(local, true), AbsoluteTime(utc, false));
    FileTimeToSystemTime(&local, &parts);
    EXPECT_EQ(AbsoluteTime(parts, true), AbsoluteTime(utc, false));
    parts.wMonth = 13;
    EXPECT_EQ(AbsoluteTime(parts, false), AbsoluteTime(FILETIME{}, false));
}

TEST(Time, ArithmeticAllocatesNothing) {
    tarv_test::AllocationWatch watch;
    AbsoluteTime time = AbsoluteTime::now() + RelativeTime(2.5);
    time -= time.remaining();
    (void)time.as_components().julian_day();
    (void)time.as_ace_timeout();
    EXPECT_EQ(watch.allocations(), 0);
}

}  // namespace
