// Waiting for what other threads do.
#pragma once

#include "ace/Time_Value.h"
#include "tarvcore/abs_rel_time.h"
#include "tarvcore/config.h"
#include "tarvcore/thread_mutex.h"

namespace tarvcore {

// A condition variable bound to one mutex, which must outlive it.  Waiting releases the mutex,
// which the caller holds, and has it again on return.  Threads may wake without a signal: test what
// is waited for in a loop.  Results are as ACE's: 0, or -1 with `errno`.
//
//     ACE_Guard<ThreadMutex> guard(condition.mutex());
//     while (queue.empty())
//         if (condition.wait(deadline) == -1) return timed_out();
class TARVCORE_API ThreadCondition {
public:
    // The mutex that waiting threads hold.
    explicit ThreadCondition(ThreadMutex& mutex) : mutex_(mutex) {}
    ThreadCondition(const ThreadCondition&) = delete;
    ThreadCondition& operator=(const ThreadCondition&) = delete;

    // Without limit.
    int wait();
    // Until an absolute time of ACE's clock (UTC): -1 with ETIME once it is reached.  Null, and the
    // infinite time: without limit.
    int wait(const ACE_Time_Value* deadline);
    int wait(const AbsoluteTime& deadline);

    // Wakes one waiting thread, or all.
    int signal();
    int broadcast();

    // That of the constructor.
    ThreadMutex& mutex() { return mutex_; }

private:
    int sleep(unsigned long milliseconds);

    // The system's own: what ACE makes of semaphores instead loses wake-ups (docs/platform.md).
    CONDITION_VARIABLE condition_ = CONDITION_VARIABLE_INIT;
    ThreadMutex& mutex_;
};

}  // namespace tarvcore
