// Faults to catch: conversions that lose the infinite, or a nanosecond on the way there and back.

#include "tarvcore/monotonic_time.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>

#include "tests/support/trials.h"

namespace {

using namespace tarvcore;

struct Monotonic : MonotonicTimeBase {
    Monotonic() = default;
    explicit Monotonic(std::int64_t nanoseconds)
        : MonotonicTimeBase(RelativeTime::nanoseconds(nanoseconds)) {}
    Monotonic(const AbsoluteTime& time, const AbsoluteTime& absolute, const MonotonicTimeBase& base)
        : MonotonicTimeBase(time, absolute, base) {}
    using MonotonicTimeBase::absolutetime_to_monotonictime;
    using MonotonicTimeBase::monotonictime_to_absolutetime;
};

TEST(MonotonicTimeBase, HasTheLimitsOfTimes) {
    EXPECT_EQ(MonotonicTimeBase::min_time.as_nsec(), INT64_MIN);
    EXPECT_EQ(MonotonicTimeBase::max_time.as_nsec(), INT64_MAX - 1);
    EXPECT_FALSE(MonotonicTimeBase::max_time.is_infinite());
    EXPECT_TRUE(MonotonicTimeBase::infinite.is_infinite());
    EXPECT_EQ(MonotonicTimeBase::infinite.as_string(), "##INFINITE##");
    EXPECT_EQ(Monotonic(1'500'000'000).as_string(), "1.5s");
    EXPECT_EQ(Monotonic(0x0000000100000003).hash(), 2u);
    Monotonic time;
    EXPECT_EQ(time.as_nsec(), 0);
    time.set_nsec(MonotonicTimeBase::NANOSECONDS_IN_ONE_SECOND);
    EXPECT_EQ(time.as_nsec(), 1'000'000'000);
}

TEST(MonotonicTimeBase, ConvertsThereAndBack) {
    std::mt19937_64 random(20140716);
    for (unsigned i = tarv_test::trials(10'000); i != 0; --i) {
        const auto number = [&random] { return static_cast<std::int64_t>(random()) >> 1; };
        const AbsoluteTime time = AbsoluteTime::from_nsec(number());
        const AbsoluteTime base = AbsoluteTime::from_nsec(number());
        const Monotonic monotonic_base(number() >> 1);
        const Monotonic monotonic(time, base, monotonic_base);
        const auto ahead = static_cast<std::uint64_t>(time.as_nsec() - base.as_nsec());
        ASSERT_EQ(static_cast<std::uint64_t>(monotonic.as_nsec()),
                  static_cast<std::uint64_t>(monotonic_base.as_nsec()) + ahead);
        ASSERT_EQ(Monotonic::monotonictime_to_absolutetime(monotonic, base, monotonic_base), time);
    }
}

TEST(MonotonicTimeBase, KeepsTheInfinite) {
    const AbsoluteTime now = AbsoluteTime::from_nsec(1'405'516'980'000'000'000);
    const Monotonic base(77);
    const auto& never = MonotonicTimeBase::infinite;
    const auto to_monotonic = Monotonic::absolutetime_to_monotonictime;
    const auto to_absolute = Monotonic::monotonictime_to_absolutetime;
    EXPECT_TRUE(to_monotonic(AbsoluteTime::infinite, now, base).is_infinite());
    EXPECT_TRUE(to_monotonic(now, AbsoluteTime::infinite, base).is_infinite());
    EXPECT_TRUE(to_monotonic(now, now, never).is_infinite());
    EXPECT_TRUE(to_monotonic(AbsoluteTime::min_time, AbsoluteTime::max_time, base).is_infinite());
    EXPECT_TRUE(to_absolute(never, now, base).is_infinite());
    EXPECT_TRUE(to_absolute(base, AbsoluteTime::infinite, base).is_infinite());
    EXPECT_TRUE(to_absolute(base, now, never).is_infinite());
    EXPECT_EQ(to_absolute(base, now, base), now);
}

}  // namespace
