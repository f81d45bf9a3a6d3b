// What absolute and relative times have in common.
#pragma once

#include <concepts>
#include <cstdint>
#include <limits>

#include "tarvcore/config.h"
#include "tarvcore/impl/wide_arithmetic.h"

// Of the system and of ACE only names are needed here.  Who converts from or to one of these types
// includes its header: <sys/time.h> or <winsock2.h>, <time.h>, <sys/timeb.h>, <windows.h>,
// "ace/Time_Value.h", "tarvcore/impl/ace_timeout.h".
class ACE_Time_Value;
struct timeval;
struct timespec;
// NOLINTBEGIN(bugprone-reserved-identifier): the system has reserved them.
struct _timespec64;
struct _FILETIME;
struct _SYSTEMTIME;
// NOLINTEND(bugprone-reserved-identifier)

namespace tarvcore::impl {

class AceTimeoutProxy;

// The constants of TimeBase.  They are not exported: every module has what it needs of them, so
// that they can be bound to references there.
struct TimeConstants {
    // Counts: the smallest, the largest, the one that means infinite; and under other names.
    static constexpr std::int64_t TIMEVALUE_MIN = std::numeric_limits<std::int64_t>::min();
    static constexpr std::int64_t TIMEVALUE_MAX = std::numeric_limits<std::int64_t>::max() - 1;
    static constexpr std::int64_t TIMEVALUE_INFINITE = std::numeric_limits<std::int64_t>::max();
    static constexpr std::int64_t TIMEVALUE_ZERO = 0;
    static constexpr std::int64_t sm_minValue = TIMEVALUE_MIN;
    static constexpr std::int64_t sm_maxValue = TIMEVALUE_MAX;
    static constexpr std::int64_t sm_infiniteValue = TIMEVALUE_INFINITE;
    static constexpr std::int64_t sm_zeroValue = TIMEVALUE_ZERO;

    // Units in units.
    static constexpr std::int32_t HOURS_IN_ONE_DAY = 24;
    static constexpr std::int32_t MINUTES_IN_ONE_HOUR = 60;
    static constexpr std::int32_t MINUTES_IN_ONE_DAY = 1440;
    static constexpr std::int32_t SECONDS_IN_ONE_MINUTE = 60;
    static constexpr std::int32_t SECONDS_IN_ONE_HOUR = 3600;
    static constexpr std::int32_t SECONDS_IN_ONE_DAY = 86400;
    static constexpr std::int32_t MILLISECONDS_IN_ONE_SECOND = 1000;
    static constexpr std::int32_t MILLISECONDS_IN_ONE_MINUTE = 60'000;
    static constexpr std::int32_t MILLISECONDS_IN_ONE_HOUR = 3'600'000;
    static constexpr std::int32_t MILLISECONDS_IN_ONE_DAY = 86'400'000;
    static constexpr std::int32_t MICROSECONDS_IN_ONE_MILLISECOND = 1000;
    static constexpr std::int32_t MICROSECONDS_IN_ONE_SECOND = 1'000'000;
    static constexpr std::int32_t MICROSECONDS_IN_ONE_MINUTE = 60'000'000;
    static constexpr std::int64_t MICROSECONDS_IN_ONE_HOUR = 3'600'000'000;
    static constexpr std::int64_t MICROSECONDS_IN_ONE_DAY = 86'400'000'000;
    static constexpr std::int32_t NANOSECONDS_IN_ONE_MICROSECOND = 1000;
    static constexpr std::int32_t NANOSECONDS_IN_ONE_MILLISECOND = 1'000'000;
    static constexpr std::int32_t NANOSECONDS_IN_ONE_SECOND = 1'000'000'000;
    static constexpr std::int64_t NANOSECONDS_IN_ONE_MINUTE = 60'000'000'000;
    static constexpr std::int64_t NANOSECONDS_IN_ONE_HOUR = 3'600'000'000'000;
    static constexpr std::int64_t NANOSECONDS_IN_ONE_DAY = 86'400'000'000'000;

    // What infinite is converted to.
    static constexpr std::int32_t MAX_TIMEVAL_SEC = 2147483647;
    static constexpr std::int32_t MAX_TIMEVAL_USEC = 2147483647;
    static constexpr std::int64_t MAX_TIME_T = 2147483647;
    static constexpr std::int64_t MAX_I64_MICROSECONDS = std::numeric_limits<std::int64_t>::max();
    static constexpr std::int64_t MAX_I64_MILLISECONDS = std::numeric_limits<std::int64_t>::max();
    static constexpr double INFINITE_DOUBLE_SECONDS = std::numeric_limits<double>::infinity();
    static constexpr double MAX_DOUBLE_SECONDS = INFINITE_DOUBLE_SECONDS;

    // Units of 100 ns from 1601-01-01 to 1970-01-01.
    static constexpr std::uint64_t FILETIME_TO_EPOCH_OFFSET = 116'444'736'000'000'000;
};

// A signed 64-bit count of nanoseconds: the state of both time types, and their conversions.
//
// The largest number is not a count but means infinite: no deadline, wait for ever.  Nothing else
// is infinite.  Conversions between units multiply and add modulo 2^64; nothing here raises or
// allocates.  An ordinary value without locks: a count that several threads use needs one.
class TARVCORE_API TimeBase : public TimeConstants {
public:
    // What infinite is converted to.
    static const _FILETIME MAX_FILETIME;      // all bits set
    static const _SYSTEMTIME MAX_SYSTEMTIME;  // 30827-12-31 23:59:59.999, day of week 5

    // Each constructor has a `set` of the same meaning.

    constexpr TimeBase() = default;
    // Seconds.
    template <std::integral Integer>
    constexpr explicit TimeBase(Integer seconds) {
        set(seconds);
    }
    // Seconds, truncated to whole nanoseconds.  The smallest count where the result is no 64-bit
    // number.
    constexpr explicit TimeBase(double seconds) { set(seconds); }
    // Seconds and microseconds.
    constexpr TimeBase(long seconds, long microseconds) { set(seconds, microseconds); }
    explicit TimeBase(const timeval& time) { set(time); }
    explicit TimeBase(const timespec& time) { set(time); }
    explicit TimeBase(const _timespec64& time) { set(time); }
    explicit TimeBase(const ACE_Time_Value& time) { set(time); }
    // Infinite where the pointer is null.
    explicit TimeBase(const ACE_Time_Value* time) { set(time); }

    // As the constructors.
    template <std::integral Integer>
    constexpr void set(Integer seconds) {
        set_sec(static_cast<std::int64_t>(seconds));
    }
    constexpr void set(double seconds) { count_ = int64_from_double(seconds * 1e9); }
    constexpr void set(long seconds, long microseconds) {
        set_usec(std::int64_t{seconds} * MICROSECONDS_IN_ONE_SECOND + microseconds);
    }
    void set(const timeval& time);
    void set(const timespec& time);
    void set(const _timespec64& time);
    void set(const ACE_Time_Value& time);
    void set(const ACE_Time_Value* time);

    // The product of count and unit wraps.
    constexpr void set_sec(std::int64_t seconds) {
        count_ = wrapping_multiply(seconds, NANOSECONDS_IN_ONE_SECOND);
    }
    constexpr void set_msec(std::int64_t milliseconds) {
        count_ = wrapping_multiply(milliseconds, NANOSECONDS_IN_ONE_MILLISECOND);
    }
    constexpr void set_usec(std::int64_t microseconds) {
        count_ = wrapping_multiply(microseconds, NANOSECONDS_IN_ONE_MICROSECOND);
    }
    constexpr void set_nsec(std::int64_t nanoseconds) { count_ = nanoseconds; }
    constexpr void set_infinite() { count_ = TIMEVALUE_INFINITE; }

    // Whether it is TIMEVALUE_INFINITE.
    constexpr bool is_infinite() const { return count_ == TIMEVALUE_INFINITE; }

    // All of these truncate towards zero.

    // The count itself.
    constexpr std::int64_t as_nsec() const { return count_; }
    // Infinite: the largest number.
    constexpr std::int64_t as_usec() const {
        return is_infinite() ? MAX_I64_MICROSECONDS : count_ / NANOSECONDS_IN_ONE_MICROSECOND;
    }
    constexpr std::int64_t as_msec() const {
        return is_infinite() ? MAX_I64_MILLISECONDS : count_ / NANOSECONDS_IN_ONE_MILLISECOND;
    }
    // Seconds.  Infinite: positive infinity.
    constexpr double as_sec() const {
        return is_infinite() ? INFINITE_DOUBLE_SECONDS : static_cast<double>(count_) / 1e9;
    }
    // Whole seconds, in 64 bits whatever the compiler's time_t has.  Infinite: MAX_TIME_T.
    constexpr std::int64_t as_time_t() const {
        return is_infinite() ? MAX_TIME_T : count_ / NANOSECONDS_IN_ONE_SECOND;
    }

    // The rest splits the count into seconds and microseconds, or nanoseconds, of the same sign.
    // Seconds beyond 32 bits (before 1901-12-13 20:45:52 or after 2038-01-19 03:14:07 UTC, more
    // than about 68 years) are clamped to the nearest time that the result can hold: 2147483647 s
    // and 999999 us (999999999 ns), or -2147483648 s and -999999 us (-999999999 ns).

    // Infinite: MAX_TIMEVAL_SEC and MAX_TIMEVAL_USEC, which is no time.
    timeval as_timeval() const;
    long as_timeval_sec() const;
    long as_timeval_usec() const;
    // With 64 bits for the seconds: exact for every count, infinite taken as the number it is.
    _timespec64 as_timespec() const;
    // With the compiler's own time_t, which has 32; infinite is clamped.
    timespec as_timespec32() const;
    // Infinite is clamped.
    ACE_Time_Value as_ace_time_value() const;
    // For the time-out argument of ACE's blocking calls: infinite becomes the null pointer.
    AceTimeoutProxy as_ace_timeout() const;

    // The lower half of the count XOR the upper one.
    constexpr std::uint32_t hash() const {
        return static_cast<std::uint32_t>(count_) ^
               static_cast<std::uint32_t>(static_cast<std::uint64_t>(count_) >> 32);
    }

private:
    std::int64_t count_ = TIMEVALUE_ZERO;
};

static_assert(sizeof(TimeBase) == 8);

}  // namespace tarvcore::impl
