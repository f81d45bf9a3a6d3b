// Faults to catch: infinite lost, or made of a finite count; signed overflow; a conversion that
// faults or answers anything at the ends of the range; halves of different sign; a product in the
// wrong width; constants that are no constants in another module; a nanosecond lost on the way to
// monotonic time and back.

#include "tarvcore/abs_rel_time.h"

#include <gtest/gtest.h>

#include <sys/time.h>
#include <sys/timeb.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <unordered_set>
#include <utility>
#include <vector>

#include "tarvcore/impl/ace_timeout.h"
#include "tarvcore/monotonic_time.h"
#include "tests/support/allocations.h"

#include <windows.h>

namespace {

using namespace tarvcore;
using tarvcore::impl::AceTimeoutProxy;
using tarvcore::impl::TimeBase;

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
    EXPECT_EQ(AbsoluteTime::min_time, at(INT64_MIN));
    EXPECT_EQ(AbsoluteTime::max_time, at(INT64_MAX - 1));
    EXPECT_EQ(AbsoluteTime::zero, at(0));
    EXPECT_EQ(RelativeTime::min_time, ns(INT64_MIN));
    EXPECT_EQ(RelativeTime::max_time, ns(INT64_MAX - 1));
    EXPECT_EQ(RelativeTime::zero, ns(0));
    EXPECT_TRUE(RelativeTime::infinite.is_infinite() && AbsoluteTime::infinite.is_infinite());
    EXPECT_FALSE(RelativeTime::max_time.is_infinite());
    EXPECT_GT(AbsoluteTime::infinite, AbsoluteTime::max_time);
    EXPECT_LT(ns(-1), ns(0));
    EXPECT_LT(ns(0xFFFFFFFF), ns(0x100000000));
    EXPECT_EQ(at(0x12345678000000FF).hash(), 0x12345678u ^ 0xFF);
    EXPECT_EQ((std::unordered_set<AbsoluteTime>{at(1), at(2), at(1)}.size()), 2u);
}

TEST(TimeBase, MultipliesUnitsModulo64Bits) {
    RelativeTime set;
    set.set_sec(-3);
    const struct {
        RelativeTime time;
        std::int64_t count;
    } rows[] = {
        {set, -3 * second},
        {RelativeTime(-5), -5 * second},
        {RelativeTime(4000000000u), 4000000000 * second},
        {RelativeTime(1, 500), 1'000'500'000},
        {RelativeTime(LONG_MAX, LONG_MIN), 2147483647 * second - 2147483648'000},
        {RelativeTime(10'000'000'000), -8446744073709551616},
        {RelativeTime::microseconds(INT64_MAX), -1000},
        {RelativeTime::milliseconds(INT64_MIN), 0},
        {RelativeTime::seconds(LONG_MIN), -2147483648 * second},
        {RelativeTime::minutes(35791394), 2147483640 * second},
        {RelativeTime::minutes(36000000), (2160000000 - 4294967296) * second},
        {RelativeTime::hours(596524), (2147486400 - 4294967296) * second},
        {RelativeTime::days(24855), 2147472000 * second},
        {RelativeTime::days(24856), (2147558400 - 4294967296) * second},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.time.as_nsec(), row.count) << &row - rows;
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
        {-9223372036.854775808, INT64_MIN, "the smallest count is one"},
        {9223372036.854775808, INT64_MIN, "2^63 is no count"},
        {-9223372036.9, INT64_MIN, "too small"},
        {1e300, INT64_MIN, "the product is infinite"},
        {infinity, INT64_MIN, "infinite"},
        {-infinity, INT64_MIN, "infinite"},
        {std::nan(""), INT64_MIN, "not a number"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(RelativeTime(row.seconds).as_nsec(), row.count) << row.reason;
        EXPECT_EQ((ns(second) * row.seconds).as_nsec(), row.count) << row.reason;
    }
    EXPECT_EQ(ns(-2'500'000'000).as_sec(), -2.5);
    EXPECT_EQ(RelativeTime::infinite.as_sec(), infinity);
    EXPECT_EQ((RelativeTime::infinite * 2.0).as_nsec(), INT64_MIN);
    EXPECT_EQ((RelativeTime::infinite * 0.0).as_nsec(), INT64_MIN);
    EXPECT_EQ(RelativeTime::seconds(3) *= -0.5, RelativeTime::milliseconds(-1500));
}

TEST(TimeBase, SplitsTowardsZeroAndClampsSecondsToThirtyTwoBits) {
    constexpr std::int64_t last = 2147483647 * second + 999'999'999;
    constexpr std::int64_t first = -2147483648 * second - 999'999'999;
    for (const std::int64_t count :
         {std::int64_t{0}, std::int64_t{999}, std::int64_t{-999}, std::int64_t{1000},
          std::int64_t{-1'999'999}, second - 1, -second, -3 * second / 2, last - second, last - 1,
          last, last + 1, INT64_MAX - 1, first + second, first + 1, first, first - 1, INT64_MIN}) {
        SCOPED_TRACE(count);
        EXPECT_EQ(ns(count).as_usec(), count / 1000);
        EXPECT_EQ(ns(count).as_msec(), count / 1'000'000);
        EXPECT_EQ(ns(count).as_time_t(), count / second);
        const _timespec64 wide = at(count).as_timespec();
        EXPECT_EQ(wide.tv_sec, count / second);
        EXPECT_EQ(wide.tv_nsec, count % second);
        EXPECT_EQ(AbsoluteTime(wide), at(count));

        const std::int64_t clamped = std::clamp(count, first, last);
        const timespec narrow = ns(count).as_timespec32();
        EXPECT_EQ(narrow.tv_sec, clamped / second);
        EXPECT_EQ(RelativeTime(narrow), ns(clamped));
        const timeval microseconds = ns(count).as_timeval();
        EXPECT_EQ(microseconds.tv_sec, clamped / second);
        EXPECT_EQ(RelativeTime(microseconds), ns(clamped / 1000 * 1000));
        EXPECT_EQ(RelativeTime(ns(count).as_ace_time_value()), ns(clamped / 1000 * 1000));
    }
    EXPECT_EQ(RelativeTime::infinite.as_usec(), INT64_MAX);
    EXPECT_EQ(RelativeTime::infinite.as_msec(), INT64_MAX);
    EXPECT_EQ(RelativeTime::infinite.as_time_t(), 2147483647);
    EXPECT_EQ(RelativeTime::infinite.as_timeval().tv_sec, 2147483647);
    EXPECT_EQ(RelativeTime::infinite.as_timeval_usec(), 2147483647);
    EXPECT_EQ(RelativeTime::infinite.as_timespec().tv_sec, 9223372036);
    EXPECT_EQ(RelativeTime(RelativeTime::infinite.as_timespec32()), ns(last));
    EXPECT_EQ(RelativeTime::infinite.as_ace_time_value(), ACE_Time_Value(2147483647, 999'999));
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
    EXPECT_EQ(RelativeTime::infinite.as_win32_timeout(), INFINITE);
    EXPECT_EQ(RelativeTime::milliseconds(-1).as_win32_timeout(), 0xFFFFFFFF);
    EXPECT_EQ(RelativeTime::milliseconds(0x100000000).as_win32_timeout(), 0u);
    EXPECT_EQ(ns(1'999'999).as_win32_timeout(), 1u);
    RelativeTime time;
    time.set_win32_timeout(0xFFFFFFFE);
    EXPECT_EQ(time, RelativeTime::milliseconds(0xFFFFFFFE));
    time.set_win32_timeout(INFINITE);
    EXPECT_TRUE(time.is_infinite());
}

// Counts at which sums and differences change their kind.
constexpr std::int64_t ends[] = {
    INT64_MIN,     INT64_MIN + 1,     INT64_MIN + 2, INT64_MIN / 2, -1,       0, 1,
    INT64_MAX / 2, INT64_MAX / 2 + 1, INT64_MAX - 2, INT64_MAX - 1, INT64_MAX};

TEST(Time, SumsWrapAndInfiniteStays) {
    for (const std::int64_t a : ends) {
        for (const std::int64_t b : ends) {
            const bool infinite = a == INT64_MAX || b == INT64_MAX;
            const auto ua = static_cast<std::uint64_t>(a);
            const auto ub = static_cast<std::uint64_t>(b);
            const auto sum = infinite ? INT64_MAX : static_cast<std::int64_t>(ua + ub);
            const auto difference = infinite ? INT64_MAX : static_cast<std::int64_t>(ua - ub);
            SCOPED_TRACE(testing::PrintToString(std::pair(a, b)));
            for (const RelativeTime result : {ns(a) + ns(b), ns(a) += ns(b)})
                ASSERT_EQ(result, ns(sum));
            for (const RelativeTime result : {ns(a) - ns(b), ns(a) -= ns(b)})
                ASSERT_EQ(result, ns(difference));
            for (const AbsoluteTime result :
                 {at(a) + ns(b), ns(a) + at(b), AbsoluteTime(ns(a), at(b)), at(a) += ns(b)})
                ASSERT_EQ(result, at(sum));
            for (const AbsoluteTime result : {at(a) - ns(b), at(a) -= ns(b)})
                ASSERT_EQ(result, at(difference));

            // As a floating-point number of 64 bits, the difference is exact enough to be compared.
            const long double wide = static_cast<long double>(a) - static_cast<long double>(b);
            const bool saturates = infinite || std::fabs(wide) >= 9223372036854775807.0L;
            const RelativeTime distance = saturates ? RelativeTime::infinite : ns(difference);
            ASSERT_EQ(at(a) - at(b), distance);
            const RelativeTime rest = distance.is_negative() ? RelativeTime::zero : distance;
            ASSERT_EQ(at(a).remaining(at(b)), rest);
            ASSERT_EQ(at(b).overtime(at(a)), rest);
        }
    }
    EXPECT_EQ(ns(INT64_MIN).negate(), ns(INT64_MIN));
    EXPECT_EQ(ns(INT64_MAX - 1).negate(), ns(INT64_MIN + 2));
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

std::vector<WORD> words_of(const SYSTEMTIME& time) {
    const auto* const words = &time.wYear;
    return {words, words + sizeof time / sizeof *words};
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
    EXPECT_EQ(words_of(parts), (std::vector<WORD>{2014, 7, 3, 16, 13, 23, 0, 250}));
    EXPECT_EQ(AbsoluteTime(parts, false), at(1'405'516'980'250'000'000));
    EXPECT_EQ(words_of(AbsoluteTime::infinite.as_systemtime()),
              (std::vector<WORD>{30827, 12, 5, 31, 23, 59, 59, 999}));

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

struct Monotonic : MonotonicTimeBase {
    explicit Monotonic(const RelativeTime& time) : MonotonicTimeBase(time) {}
    Monotonic(const AbsoluteTime& time, const AbsoluteTime& absolute, const MonotonicTimeBase& base)
        : MonotonicTimeBase(time, absolute, base) {}
    using MonotonicTimeBase::absolutetime_to_monotonictime;
    using MonotonicTimeBase::monotonictime_to_absolutetime;
};

TEST(MonotonicTimeBase, HasTheLimitsOfTimes) {
    EXPECT_EQ(MonotonicTimeBase::min_time.as_nsec(), INT64_MIN);
    EXPECT_EQ(MonotonicTimeBase::max_time.as_nsec(), INT64_MAX - 1);
    EXPECT_EQ(MonotonicTimeBase::infinite.as_string(), "##INFINITE##");
    EXPECT_EQ(Monotonic(RelativeTime::milliseconds(1500)).as_string(), "1.5s");
    EXPECT_EQ(Monotonic(ns(0x100000003)).hash(), 2u);
}

TEST(MonotonicTimeBase, ConvertsThereAndBackAndKeepsTheInfinite) {
    const AbsoluteTime now = at(1'405'516'980'000'000'000);
    const Monotonic base(ns(77));
    const auto& never = MonotonicTimeBase::infinite;
    const auto to_monotonic = Monotonic::absolutetime_to_monotonictime;
    const auto to_absolute = Monotonic::monotonictime_to_absolutetime;
    for (const std::int64_t ahead : {std::int64_t{0}, std::int64_t{1}, -(now.as_nsec() + 1)}) {
        const AbsoluteTime time = now + ns(ahead);
        EXPECT_EQ(to_monotonic(time, now, base).as_nsec(), 77 + ahead);
        EXPECT_EQ(Monotonic(time, now, base).as_nsec(), 77 + ahead);
        EXPECT_EQ(to_absolute(Monotonic(time, now, base), now, base), time);
    }
    EXPECT_TRUE(to_monotonic(AbsoluteTime::infinite, now, base).is_infinite());
    EXPECT_TRUE(to_monotonic(now, AbsoluteTime::infinite, base).is_infinite());
    EXPECT_TRUE(to_monotonic(now, now, never).is_infinite());
    EXPECT_TRUE(to_monotonic(AbsoluteTime::min_time, AbsoluteTime::max_time, base).is_infinite());
    EXPECT_TRUE(to_absolute(never, now, base).is_infinite());
    EXPECT_TRUE(to_absolute(base, AbsoluteTime::infinite, base).is_infinite());
    EXPECT_TRUE(to_absolute(base, now, never).is_infinite());
}

}  // namespace
