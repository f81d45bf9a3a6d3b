#include "tarvcore/time_provider.h"

#include "ace/Time_Value.h"
#include "tarvcore/hardware/cpu.h"
#include "tarvcore/impl/wide_arithmetic.h"
//
#include <windows.h>
#include <x86intrin.h>

TARVCORE_SOURCE_FILE("$Id: //tarvcore/time_provider.cpp#1 $");

namespace tarvcore {
namespace {

// By halves, as processor and system hand it over: a load of both would wait for the two stores.
double count_of_halves(double high, std::uint32_t low) {
    constexpr double high_unit = 4294967296.0;
    return high * high_unit + low;
}

RelativeTime time_of_count(double count, double per_second) {
    constexpr double ns_per_second = impl::TimeBase::NANOSECONDS_IN_ONE_SECOND;
    return RelativeTime::nanoseconds(impl::int64_from_double(count / per_second * ns_per_second));
}

// One moment on two clocks, read while the library is loaded.
struct BasePoints {
    AbsoluteTime absolute = AbsoluteTime::now();
    RelativeTime monotonic = TimeProviderMm::now();
};

const BasePoints base_points;

}  // namespace

TimeProviderQpc::TimeProviderQpc() {
    LARGE_INTEGER frequency;
    QueryPerformanceFrequency(&frequency);
    ticks_per_second_ = static_cast<double>(frequency.QuadPart);
}

RelativeTime TimeProviderQpc::now() const {
    LARGE_INTEGER counter;
    QueryPerformanceCounter(&counter);
    return time_of_count(count_of_halves(counter.HighPart, counter.LowPart), ticks_per_second_);
}

RelativeTime TimeProviderQpc::time_of(std::int64_t counter) const {
    return time_of_count(static_cast<double>(counter), ticks_per_second_);
}

TimeProviderTsc::TimeProviderTsc() : cycles_per_second_(hardware::Cpu::machine().frequency()) {}

RelativeTime TimeProviderTsc::now() const {
    // Not before what this thread has seen until now: the instruction alone does not wait for
    // loads, and the time would be before one that another thread has passed on.
    _mm_lfence();
    return time_of(__rdtsc());
}

RelativeTime TimeProviderTsc::time_of(std::uint64_t counter) const {
    const auto high = static_cast<std::uint32_t>(counter >> 32);
    return time_of_count(count_of_halves(high, static_cast<std::uint32_t>(counter)),
                         cycles_per_second_);
}

ACE_Time_Value monotonic_synthetic_ace_gettimeofday() {
    return (base_points.absolute + (TimeProviderMm::now() - base_points.monotonic))
        .as_ace_time_value();
}

}  // namespace tarvcore
