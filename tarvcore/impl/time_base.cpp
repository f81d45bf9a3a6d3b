#include "tarvcore/impl/time_base.h"

#include <sys/time.h>
#include <sys/timeb.h>
#include <sys/types.h>

#include "tarvcore/impl/ace_timeout.h"

#include <windows.h>

TARVCORE_SOURCE_FILE("$Id: //tarvcore/impl/time_base.cpp#1 $");

namespace tarvcore::impl {
namespace {

static_assert(sizeof(time_t) == 4 && sizeof(_timespec64::tv_sec) == 8);

struct Split {
    std::int32_t seconds;
    std::int32_t nanoseconds;
};

// The quotient and the remainder of a division whose quotient is known to have 32 bits: one
// instruction, which compilers do not choose by themselves.
Split divide_narrow(std::int64_t count, std::int32_t divisor) {
    Split split;
    asm("idivl %[divisor]"
        : "=a"(split.seconds), "=d"(split.nanoseconds)
        : "A"(count), [divisor] "rm"(divisor)
        : "cc");
    return split;
}

// Whole seconds and the rest, both with the sign of the count; out of range, the nearest that there
// is.
Split split_count(std::int64_t count) {
    constexpr std::int64_t ns_per_second = TimeBase::NANOSECONDS_IN_ONE_SECOND;
    constexpr std::int32_t min_seconds = std::numeric_limits<std::int32_t>::min();
    constexpr std::int32_t max_seconds = std::numeric_limits<std::int32_t>::max();
    constexpr std::int32_t max_rest = ns_per_second - 1;

    if (count > max_seconds * ns_per_second + max_rest) return {max_seconds, max_rest};
    if (count < min_seconds * ns_per_second - max_rest) return {min_seconds, -max_rest};
    return divide_narrow(count, ns_per_second);
}

constexpr long microseconds(const Split& split) {
    return split.nanoseconds / TimeBase::NANOSECONDS_IN_ONE_MICROSECOND;
}

}  // namespace

constinit const FILETIME TimeBase::MAX_FILETIME = {0xFFFFFFFF, 0xFFFFFFFF};
constinit const SYSTEMTIME TimeBase::MAX_SYSTEMTIME = {30827, 12, 5, 31, 23, 59, 59, 999};

void TimeBase::set(const timeval& time) {
    set(time.tv_sec, time.tv_usec);
}

void TimeBase::set(const timespec& time) {
    set(_timespec64{time.tv_sec, time.tv_nsec});
}

void TimeBase::set(const _timespec64& time) {
    set_sec(time.tv_sec);
    count_ = wrapping_add(count_, time.tv_nsec);
}

void TimeBase::set(const ACE_Time_Value& time) {
    set(time.sec(), time.usec());
}

void TimeBase::set(const ACE_Time_Value* time) {
    time == nullptr ? set_infinite() : set(*time);
}

timeval TimeBase::as_timeval() const {
    return {as_timeval_sec(), as_timeval_usec()};
}

long TimeBase::as_timeval_sec() const {
    return is_infinite() ? MAX_TIMEVAL_SEC : split_count(count_).seconds;
}

long TimeBase::as_timeval_usec() const {
    return is_infinite() ? MAX_TIMEVAL_USEC : microseconds(split_count(count_));
}

_timespec64 TimeBase::as_timespec() const {
    const std::int64_t seconds = count_ / NANOSECONDS_IN_ONE_SECOND;
    return {seconds, static_cast<long>(count_ - seconds * NANOSECONDS_IN_ONE_SECOND)};
}

timespec TimeBase::as_timespec32() const {
    const Split split = split_count(count_);
    return {split.seconds, split.nanoseconds};
}

ACE_Time_Value TimeBase::as_ace_time_value() const {
    const Split split = split_count(count_);
    return ACE_Time_Value(split.seconds, microseconds(split));
}

AceTimeoutProxy TimeBase::as_ace_timeout() const {
    if (is_infinite()) return {true, 0, 0};
    const Split split = split_count(count_);
    return {false, split.seconds, microseconds(split)};
}

}  // namespace tarvcore::impl
