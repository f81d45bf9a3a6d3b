// Monotonic clocks.
#pragma once

#include <cstdint>

#include "tarvcore/abs_rel_time.h"
#include "tarvcore/config.h"
#include "tarvcore/impl/shared_counter.h"

namespace tarvcore {

// Three clocks that nobody sets, with one interface and different prices.  They have different
// beginnings, so times of one mean nothing to another, and times of a TimeProviderTsc nothing to
// another process.  Objects do not change and may be shared by threads; a time is never before one
// that another thread has taken and passed on.
//
//                       ns a call  advances by             runs since
//     TimeProviderMm    1          a tick, 1 to 16 ms      the system's start
//     TimeProviderTsc   40         less than a nanosecond  the processor's reset
//     TimeProviderQpc   100        about 100 ns            the system's start
//
//     const TimeProviderQpc clock;
//     const RelativeTime start = clock.now();
//     work();
//     log << clock.now() - start;

// The system's interrupt time, which goes on while the machine sleeps.  Its ticks are those that
// SchedulerLatency makes shorter.
class TimeProviderMm {
public:
    TARVCORE_INLINE static RelativeTime now() {
        constexpr std::uint64_t ns_per_tick = 100;
        return RelativeTime::nanoseconds(static_cast<std::int64_t>(
            impl::read_shared_counter(impl::interrupt_time()) * ns_per_tick));
    }
};

// The system's performance counter.
class TARVCORE_API TimeProviderQpc {
public:
    // Asks the system for the counter's frequency.
    TimeProviderQpc();
    explicit TimeProviderQpc(double ticks_per_second) : ticks_per_second_(ticks_per_second) {}

    // Ticks in a second.
    double frequency() const { return ticks_per_second_; }

    RelativeTime now() const;
    // The time for which a value of the counter stands, to the 53 bits of a double.
    RelativeTime time_of(std::int64_t counter) const;

private:
    double ticks_per_second_;
};

// The processor's time-stamp counter.  A clock where tsc_invariant() of CpuInfo is true; elsewhere
// it runs as the processor does, and threads see another one on another processor.
class TARVCORE_API TimeProviderTsc {
public:
    // Takes the frequency from Cpu::machine(), which may have to find it out first.  Where it finds
    // none, all times are RelativeTime::min_time.
    TimeProviderTsc();
    explicit TimeProviderTsc(double cycles_per_second) : cycles_per_second_(cycles_per_second) {}

    // Cycles in a second.
    double frequency() const { return cycles_per_second_; }

    RelativeTime now() const;
    // The time for which a value of the counter stands, to the 53 bits of a double.
    RelativeTime time_of(std::uint64_t counter) const;

private:
    double cycles_per_second_;
};

// The time of day as it was when the library was loaded, and since then by the interrupt time: it
// never runs backwards, and does not see that the system's clock is set.  To be handed to ACE as
// its time of day; the library does not do so.  Users include "ace/Time_Value.h".
TARVCORE_API ACE_Time_Value monotonic_synthetic_ace_gettimeofday();

}  // namespace tarvcore
