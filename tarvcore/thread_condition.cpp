#include "tarvcore/thread_condition.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>

#include "ace/OS_NS_errno.h"
#include "ace/OS_NS_sys_time.h"
#include "tarvcore/impl/ace_timeout.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/thread_condition.cpp#1 $");

namespace tarvcore {
namespace {

std::int64_t microseconds(const ACE_Time_Value& time) {
    return std::int64_t{time.sec()} * 1'000'000 + time.usec();
}

// Whole milliseconds until then, rounded up; not the value that means without limit.  Not ACE's
// difference, which wraps for the earliest deadlines.
unsigned long milliseconds_until(const ACE_Time_Value& deadline) {
    constexpr std::int64_t longest = INFINITE - 1;
    const std::int64_t left = microseconds(deadline) - microseconds(ACE_OS::gettimeofday());
    return static_cast<unsigned long>(std::clamp<std::int64_t>((left + 999) / 1000, 0, longest));
}

}  // namespace

int ThreadCondition::wait() {
    return sleep(INFINITE);
}

int ThreadCondition::wait(const ACE_Time_Value* deadline) {
    if (deadline == nullptr) return wait();
    const int result = sleep(milliseconds_until(*deadline));
    // The system's milliseconds may end before those of the clock do: the caller looks, and comes
    // again.  To sleep on here would miss what was signalled meanwhile.
    if (result == -1 && errno == ETIME && milliseconds_until(*deadline) != 0) return 0;
    return result;
}

int ThreadCondition::wait(const AbsoluteTime& deadline) {
    return wait(deadline.as_ace_timeout());
}

int ThreadCondition::signal() {
    WakeConditionVariable(&condition_);
    return 0;
}

int ThreadCondition::broadcast() {
    WakeAllConditionVariable(&condition_);
    return 0;
}

int ThreadCondition::sleep(unsigned long milliseconds) {
    if (SleepConditionVariableCS(&condition_, mutex_.native(), milliseconds) != 0) return 0;
    if (GetLastError() == ERROR_TIMEOUT) {
        errno = ETIME;
    } else {
        ACE_OS::set_errno_to_last_error();
    }
    return -1;
}

}  // namespace tarvcore
