#include "tarvcore/scheduler.h"

#include "tarvcore/error_code_constants.h"
#include "tarvcore/error_composer.h"
#include "tarvcore/impl/timer_period_calls.h"

#include <windows.h>
//
#include <timeapi.h>

TARVCORE_SOURCE_FILE("$Id: //tarvcore/scheduler.cpp#1 $");

namespace tarvcore {
namespace {

constexpr impl::TimerPeriodCalls system_calls = {
    [](unsigned milliseconds) { return timeBeginPeriod(milliseconds); },
    [](unsigned milliseconds) { return timeEndPeriod(milliseconds); },
};

static_assert(TIMERR_NOERROR == 0);

}  // namespace

constinit std::atomic<const impl::TimerPeriodCalls*> impl::timer_period_calls = &system_calls;

SchedulerLatency::SchedulerLatency(const RelativeTime& latency) : latency_(latency) {
    const impl::TimerPeriodCalls& calls = *impl::timer_period_calls;
    const unsigned result = calls.begin_period(latency.as_win32_timeout());
    if (result == 0) return;
    ErrorComposer("Failed setting scheduler latency to {@latency}: result={@result}")
        .param("latency", latency.as_string())
        .param("result", result)
        .throw_error(error::tarvcore_hardware_timeError,
                     TARVCORE_LOCATION("tarvcore::SchedulerLatency::SchedulerLatency()"));
}

SchedulerLatency::~SchedulerLatency() noexcept(false) {
    const impl::TimerPeriodCalls& calls = *impl::timer_period_calls;
    const unsigned result = calls.end_period(latency_.as_win32_timeout());
    if (result == 0) return;
    ErrorComposer("Failed restoring scheduler latency: result={@result}")
        .param("result", result)
        .throw_error(error::tarvcore_hardware_timeError,
                     TARVCORE_LOCATION("tarvcore::SchedulerLatency::~SchedulerLatency()"));
}

RelativeTime SchedulerLatency::min_scheduler_latency() {
    const impl::TimerPeriodCalls& calls = *impl::timer_period_calls;
    constexpr unsigned limit = 15;
    // From 0, which Windows never grants: this is meant.
    unsigned period = 0;
    for (; period < limit; ++period) {
        if (calls.begin_period(period) == 0) {
            calls.end_period(period);
            break;
        }
    }
    return RelativeTime::milliseconds(period);
}

}  // namespace tarvcore
