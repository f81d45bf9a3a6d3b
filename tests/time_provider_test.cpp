// Faults to catch: a clock that runs backwards, on one thread or from one to the next; a counter
// read while it is written; numbers of ticks taken for signed, or in 32 bits; a clock of another
// speed than the rest.

#include "tarvcore/time_provider.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>

#include "ace/Time_Value.h"
#include "tarvcore/hardware/cpu.h"
#include "tarvcore/impl/shared_counter.h"
#include "tests/support/threads.h"
//
#include <windows.h>

namespace {

using namespace tarvcore;

TEST(TimeProvider, GivesTheTimeOfACount) {
    const TimeProviderQpc qpc(10e6);
    EXPECT_EQ(qpc.time_of(10'000'000), RelativeTime::seconds(1));
    EXPECT_EQ(qpc.time_of(-15), RelativeTime::nanoseconds(-1500));
    EXPECT_EQ(qpc.time_of(0x7000000000), RelativeTime::nanoseconds(0x7000000000 * 100));
    const TimeProviderTsc tsc(3e9);
    EXPECT_EQ(tsc.time_of(3), RelativeTime::nanoseconds(1));
    EXPECT_EQ(tsc.time_of(5), RelativeTime::nanoseconds(1)) << "truncated";
    EXPECT_EQ(tsc.time_of(0xC000000000000000), RelativeTime::nanoseconds(0x4000000000000000));
    // What does not fit, and what has no frequency.
    EXPECT_EQ(TimeProviderTsc(1e9).time_of(0x8000000000000000), RelativeTime::min_time);
    EXPECT_EQ(TimeProviderTsc(0).time_of(1), RelativeTime::min_time);
    // Against a calculation with more digits, over the whole range.
    const TimeProviderTsc odd(2596141234.0);
    for (std::uint64_t count = 1; count < 0x8000000000000000; count += count / 2 + 1) {
        const long double exact = static_cast<long double>(count) / 2596141234.0L * 1e9L;
        const auto error = std::abs(static_cast<long double>(odd.time_of(count).as_nsec()) - exact);
        ASSERT_LE(error, 1 + exact * 3e-16L) << count;
    }
}

// Threads pass a clock's latest time on: none may be before what another has seen.
template <class Now>
void expect_no_step_back(const char* clock, Now now) {
    std::atomic<std::int64_t> latest = 0;
    std::atomic<int> steps_back = 0;
    tarv_test::run_threads(3, [&](unsigned) {
        std::int64_t own = 0;
        for (int i = 0; i < 333'333; ++i) {
            const std::int64_t seen = i % 16 == 0 ? latest.load() : own;
            const std::int64_t time = now().as_nsec();
            if (time < seen || time < own) ++steps_back;
            own = time;
            if (i % 16 == 8) {
                for (std::int64_t old = latest; old < own;) {
                    if (latest.compare_exchange_weak(old, own)) break;
                }
            }
        }
    });
    EXPECT_EQ(steps_back, 0) << clock;
    EXPECT_GT(latest, 0) << clock;
}

TEST(TimeProvider, NeverRunsBackwards) {
    expect_no_step_back("mm", [] { return TimeProviderMm::now(); });
    expect_no_step_back("qpc", [clock = TimeProviderQpc()] { return clock.now(); });
    expect_no_step_back("time of day",
                        [] { return RelativeTime(monotonic_synthetic_ace_gettimeofday()); });
    expect_no_step_back("tsc", [clock = TimeProviderTsc()] { return clock.now(); });
}

TEST(TimeProvider, ReadsACounterWhole) {
    volatile impl::SharedCounter counter = {~0u, 0, 0};
    std::atomic<bool> ends = false;
    std::atomic<unsigned> bad = 0;
    tarv_test::run_threads(2, [&](unsigned number) {
        for (std::uint32_t high = 1; number == 0 && high < 20'000'000; ++high) {
            counter.high_2 = high;
            counter.low = ~high;
            counter.high_1 = high;
        }
        if (number == 0) ends = true;
        while (!ends) {
            const std::uint64_t value = impl::read_shared_counter(counter);
            if (static_cast<std::uint32_t>(value) != ~static_cast<std::uint32_t>(value >> 32))
                ++bad;
        }
    });
    EXPECT_EQ(bad, 0u);
}

TEST(TimeProvider, AgreesWithTheOthers) {
    const TimeProviderQpc qpc;
    const TimeProviderTsc tsc;
    // What the others say lies between two readings of the first.
    struct Readings {
        RelativeTime before, tsc, mm, time_of_day, after;
    };
    const auto read = [&]() -> Readings {
        return {qpc.now(), tsc.now(), TimeProviderMm::now(),
                RelativeTime(monotonic_synthetic_ace_gettimeofday()), qpc.now()};
    };
    const Readings start = read();
    Sleep(1000);
    const Readings end = read();

    const double least = (end.before - start.after).as_sec();
    const double most = (end.after - start.before).as_sec();
    EXPECT_GE(least, 0.999);
    const auto expect_agreement = [&](const char* clock, RelativeTime passed, double tolerance) {
        EXPECT_GE(passed.as_sec(), least - tolerance) << clock;
        EXPECT_LE(passed.as_sec(), most + tolerance) << clock;
    };
    // A frequency in whole MHz, or measured to 0.1 %; ticks of the system, which may come late.
    expect_agreement("tsc", end.tsc - start.tsc, 2e-3 * most);
    expect_agreement("mm", end.mm - start.mm, 0.25);
    expect_agreement("time of day", end.time_of_day - start.time_of_day, 0.25);
    EXPECT_NEAR(end.time_of_day.as_sec(), AbsoluteTime::now().as_sec(), 5);
}

}  // namespace
