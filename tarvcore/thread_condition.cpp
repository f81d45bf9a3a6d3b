#include "tarvcore/thread_condition.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>

#include "ace/OS_NS_errno.h"
#include "tarvcore/impl/ace_timeout.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/thread_condition.cpp#1 $");

namespace tarvcore {
namespace {

// Whole milliseconds until then, rounded up; not the value that means without limit.
unsigned long milliseconds_until(const ACE_Time_Value& deadline) {
    constexpr std::int64_t longest = INFINITE - 1;
    const ACE_Time_Value left = deadline.to_relative_time();
    const std::int64_t milliseconds = std::int64_t{left.sec()} * 1000 + (left.usec() + 999) / 1000;
    return static_cast<unsigned long>(std::clamp<std::int64_t>(milliseconds, 0, longest));
}

}  // namespace

int ThreadCondition::wait() {
    return sleep(INFINITE);
}

int ThreadCondition::wait(const ACE_Time_Value* deadline) {
    if (deadline == nullptr) return wait();
    // The system's milliseconds may end before those of the clock do.
    for (;;) {
        const unsigned long milliseconds = milliseconds_until(*deadline);
        if (sleep(milliseconds) == 0) return 0;
        if (errno != ETIME || milliseconds == 0) return -1;
    }
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
