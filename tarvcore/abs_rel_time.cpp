#include "tarvcore/abs_rel_time.h"

#include <windows.h>

TARVCORE_SOURCE_FILE("$Id: //tarvcore/abs_rel_time.cpp#1 $");

namespace tarvcore {
namespace {

// Windows' times have units of 100 ns since 1601.
constexpr std::int32_t ns_per_tick = 100;

std::uint64_t ticks_of(const FILETIME& time) {
    return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

// Modulo 2^64: Windows' range is larger.
AbsoluteTime from_ticks(std::uint64_t ticks) {
    return AbsoluteTime::from_nsec(static_cast<std::int64_t>(
        (ticks - impl::TimeBase::FILETIME_TO_EPOCH_OFFSET) * ns_per_tick));
}

// The one place that reads the system's clock.
std::uint64_t system_clock_ticks() {
    FILETIME time;
    GetSystemTimeAsFileTime(&time);
    return ticks_of(time);
}

}  // namespace

constinit const RelativeTime RelativeTime::min_time = RelativeTime::nanoseconds(TIMEVALUE_MIN);
constinit const RelativeTime RelativeTime::max_time = RelativeTime::nanoseconds(TIMEVALUE_MAX);
constinit const RelativeTime RelativeTime::zero = RelativeTime::nanoseconds(TIMEVALUE_ZERO);
constinit const RelativeTime RelativeTime::infinite = RelativeTime::nanoseconds(TIMEVALUE_INFINITE);

constinit const AbsoluteTime AbsoluteTime::min_time = AbsoluteTime::from_nsec(TIMEVALUE_MIN);
constinit const AbsoluteTime AbsoluteTime::max_time = AbsoluteTime::from_nsec(TIMEVALUE_MAX);
constinit const AbsoluteTime AbsoluteTime::zero = AbsoluteTime::from_nsec(TIMEVALUE_ZERO);
constinit const AbsoluteTime AbsoluteTime::infinite = AbsoluteTime::from_nsec(TIMEVALUE_INFINITE);

void AbsoluteTime::set(const FILETIME& time, bool is_local) {
    FILETIME utc = {};
    if (is_local) LocalFileTimeToFileTime(&time, &utc);
    *this = from_ticks(ticks_of(is_local ? utc : time));
}

void AbsoluteTime::set(const SYSTEMTIME& time, bool is_local) {
    FILETIME ticks = {};
    SystemTimeToFileTime(&time, &ticks);
    set(ticks, is_local);
}

AbsoluteTime AbsoluteTime::now() {
    return from_ticks(system_clock_ticks());
}

FILETIME AbsoluteTime::as_filetime() const {
    if (is_infinite()) return MAX_FILETIME;
    const auto ticks =
        static_cast<std::uint64_t>(as_nsec() / ns_per_tick) + FILETIME_TO_EPOCH_OFFSET;
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

SYSTEMTIME AbsoluteTime::as_systemtime() const {
    if (is_infinite()) return MAX_SYSTEMTIME;
    const FILETIME ticks = as_filetime();
    SYSTEMTIME time = {};
    FileTimeToSystemTime(&ticks, &time);
    return time;
}

RelativeTime AbsoluteTime::remaining() const {
    return is_infinite() ? RelativeTime::infinite : remaining(now());
}

RelativeTime AbsoluteTime::overtime() const {
    return is_infinite() ? RelativeTime::infinite : overtime(now());
}

}  // namespace tarvcore
