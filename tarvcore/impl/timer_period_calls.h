// The system calls behind the scheduler's latency.
#pragma once

#include <atomic>

#include "tarvcore/config.h"

namespace tarvcore::impl {

// As the multimedia timer has them: 0, or the number of an error.
struct TimerPeriodCalls {
    unsigned (*begin_period)(unsigned milliseconds);
    unsigned (*end_period)(unsigned milliseconds);
};

// The table in use; tests put one of their own in its place.
TARVCORE_API extern std::atomic<const TimerPeriodCalls*> timer_period_calls;

}  // namespace tarvcore::impl
