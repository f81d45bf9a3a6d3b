// Faults to catch: a request that is not released, or another one; failures that pass unseen where
// Wine grants what Windows refuses; a probe that stops too early or asks once too often.

#include "tarvcore/scheduler.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "tarvcore/impl/timer_period_calls.h"
#include "tests/support/raised.h"
#include "tests/support/scoped_calls.h"

namespace {

using namespace tarvcore;
using tarv_test::raised;

// A timer that grants periods from a limit on, and takes back only what it has granted.
struct Timer {
    static inline unsigned finest;
    static inline std::string log;

    explicit Timer(unsigned limit) : calls(impl::timer_period_calls) {
        finest = limit;
        log.clear();
        calls->begin_period = [](unsigned period) {
            log += '+' + std::to_string(period);
            return period < finest ? 97u : 0u;
        };
        calls->end_period = [](unsigned period) {
            log += '-' + std::to_string(period);
            return period < finest ? 97u : 0u;
        };
    }

    tarv_test::ScopedCalls<impl::TimerPeriodCalls> calls;
};

TEST(SchedulerLatency, ReleasesWhatItRequests) {
    const struct {
        RelativeTime latency;
        const char* log;
    } rows[] = {
        {RelativeTime::nanoseconds(1'999'999), "+1-1"},
        {RelativeTime::seconds(2), "+2000-2000"},
        {RelativeTime::infinite, "+4294967295-4294967295"},
    };
    for (const auto& [latency, log] : rows) {
        const Timer timer(1);
        { EXPECT_EQ(SchedulerLatency(latency).requested_latency(), latency); }
        EXPECT_EQ(timer.log, log);
    }
    const Timer timer(1);
    {
        SchedulerLatency assigned(RelativeTime::milliseconds(5));
        assigned = SchedulerLatency(RelativeTime::milliseconds(7));
    }
    EXPECT_EQ(timer.log, "+5+7-7-7") << "the value is copied, not the request";
}

TEST(SchedulerLatency, RaisesWhatIsRefused) {
    const Timer timer(2);
    EXPECT_EQ(raised([] { const SchedulerLatency fine(RelativeTime::microseconds(1500)); }),
              "error.tarvcore.hardware.timeError "
              "Failed setting scheduler latency to 1.5ms: result=97 "
              "['latency' => \"1.5ms\", 'result' => \"97\"] "
              "tarvcore::SchedulerLatency::SchedulerLatency() //tarvcore/scheduler.cpp");
    EXPECT_EQ(timer.log, "+1") << "there is nothing to release";
    EXPECT_EQ(raised([&timer] {
                  const SchedulerLatency fine(RelativeTime::milliseconds(2));
                  timer.finest = 3;
              }),
              "error.tarvcore.hardware.timeError "
              "Failed restoring scheduler latency: result=97 ['result' => \"97\"] "
              "tarvcore::SchedulerLatency::~SchedulerLatency() //tarvcore/scheduler.cpp");
}

TEST(SchedulerLatency, FindsTheFinestPeriod) {
    const std::string refused_below_15 = "+0+1+2+3+4+5+6+7+8+9+10+11+12+13+14";
    const std::tuple<unsigned, int, std::string> rows[] = {
        {0, 0, "+0-0"},
        {1, 1, "+0+1-1"},
        {14, 14, refused_below_15 + "-14"},
        {15, 15, refused_below_15},
    };
    for (const auto& [finest, milliseconds, log] : rows) {
        const Timer timer(finest);
        EXPECT_EQ(SchedulerLatency::min_scheduler_latency(),
                  RelativeTime::milliseconds(milliseconds));
        EXPECT_EQ(timer.log, log);
    }
}

TEST(SchedulerLatency, AsksTheSystem) {
    const RelativeTime finest = SchedulerLatency::min_scheduler_latency();
    EXPECT_GE(finest, RelativeTime::milliseconds(1));
    EXPECT_EQ(raised([&finest] { const SchedulerLatency fine(finest); }), "");
    EXPECT_NE(raised([] { const SchedulerLatency none(RelativeTime::zero); }), "");
}

}  // namespace
