// How late sleeps and timed waits may end.
#pragma once

#include "tarvcore/abs_rel_time.h"
#include "tarvcore/config.h"

namespace tarvcore {

// Asks the system for a finer timer while it lives: sleeps and timed waits of the whole process
// then end by steps of that length instead of about 15 ms, at the price of power.  The finest of
// all requests, of any thread, counts.
//
// Requests are whole milliseconds, truncated; infinite asks for 0xFFFFFFFF of them.  What Windows
// refuses, such as 0, raises "error.tarvcore.hardware.timeError".  That includes the destructor:
// where it runs because of another exception, the process ends.
//
//     {
//         const SchedulerLatency fine(SchedulerLatency::min_scheduler_latency());
//         play_notes();
//     }
class TARVCORE_API SchedulerLatency {
public:
    // There is no request where this raises.
    explicit SchedulerLatency(const RelativeTime& latency);
    ~SchedulerLatency() noexcept(false);
    // A request is not for two to release.
    SchedulerLatency(const SchedulerLatency&) = delete;
    // Copies the latency, and requests nothing: the destructor releases the period of the other.
    // For objects of one latency.
    SchedulerLatency& operator=(const SchedulerLatency&) = default;

    // As it was given, not truncated.
    RelativeTime requested_latency() const { return latency_; }

    // The finest that Windows grants, in whole milliseconds, found by trying; 15 ms where it grants
    // none below.
    static RelativeTime min_scheduler_latency();

private:
    RelativeTime latency_;
};

}  // namespace tarvcore
