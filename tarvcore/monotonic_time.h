// Times on a clock that nobody sets.
#pragma once

#include <cstdint>
#include <string>

#include "tarvcore/abs_rel_time.h"
#include "tarvcore/config.h"

namespace tarvcore {

// Base of types for times on a monotonic clock: a signed 64-bit count of nanoseconds from some
// beginning, that of the machine or of the processor; or infinite, the largest number.  Which clock
// it is the derived type knows; so only that can make such times, and bring them to absolute times
// and back.  For this it takes a pair of base points: the same moment on both clocks.
//
// Sums and differences wrap but for the difference of two absolute times; see AbsoluteTime.  An
// ordinary value.
//
//     class BootTime : public MonotonicTimeBase {
//     public:
//         static BootTime now() { return BootTime(TimeProviderMm::now()); }
//
//     private:
//         using MonotonicTimeBase::MonotonicTimeBase;
//     };
class TARVCORE_API MonotonicTimeBase : public impl::TimeConstants {
public:
    static const MonotonicTimeBase min_time;
    static const MonotonicTimeBase max_time;
    static const MonotonicTimeBase zero;
    static const MonotonicTimeBase infinite;

    // Since the clock's beginning.  The largest number means infinite.
    constexpr void set_nsec(std::int64_t nanoseconds) { count_ = nanoseconds; }
    constexpr std::int64_t as_nsec() const { return count_; }
    constexpr void set_infinite() { count_ = TIMEVALUE_INFINITE; }
    constexpr bool is_infinite() const { return count_ == TIMEVALUE_INFINITE; }

    // As RelativeTime has them.
    constexpr std::uint32_t hash() const { return as_relative_time().hash(); }
    std::string as_string() const { return as_relative_time().as_string(); }

protected:
    constexpr MonotonicTimeBase() = default;
    // Since the clock's beginning.
    constexpr explicit MonotonicTimeBase(const RelativeTime& time) : count_(time.as_nsec()) {}
    constexpr MonotonicTimeBase(const AbsoluteTime& time, const AbsoluteTime& absolute_base,
                                const MonotonicTimeBase& monotonic_base)
        : MonotonicTimeBase(absolutetime_to_monotonictime(time, absolute_base, monotonic_base)) {}
    constexpr MonotonicTimeBase(const MonotonicTimeBase&) = default;
    constexpr MonotonicTimeBase& operator=(const MonotonicTimeBase&) = default;

    // Infinite where a time is, or where the absolute ones are too far apart.
    static constexpr RelativeTime absolutetime_to_monotonictime(
        const AbsoluteTime& time, const AbsoluteTime& absolute_base,
        const MonotonicTimeBase& monotonic_base) {
        return (time - absolute_base) + monotonic_base.as_relative_time();
    }
    // Infinite where a time is.
    static constexpr AbsoluteTime monotonictime_to_absolutetime(
        const MonotonicTimeBase& time, const AbsoluteTime& absolute_base,
        const MonotonicTimeBase& monotonic_base) {
        return absolute_base + (time.as_relative_time() - monotonic_base.as_relative_time());
    }

private:
    constexpr RelativeTime as_relative_time() const { return RelativeTime::nanoseconds(count_); }

    std::int64_t count_ = TIMEVALUE_ZERO;
};

static_assert(sizeof(MonotonicTimeBase) == 8);

}  // namespace tarvcore
