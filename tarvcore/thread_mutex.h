// Locks.
#pragma once

#include <type_traits>

#include "ace/Thread_Mutex.h"
#include "tarvcore/config.h"

namespace tarvcore {

// A lock between the threads of this process; not for a thread that holds it already.  Results are
// those of ACE: 0, or -1 with `errno`.  It begins with the native lock (a critical section), so
// that ACE and Windows take its address for one.
//
// Any ACE guard locks it for a scope:
//
//     ThreadMutex lock;
//     ...
//     ACE_Guard<ThreadMutex> guard(lock);
class TARVCORE_API ThreadMutex {
public:
    // Held by nobody.
    ThreadMutex() = default;
    ThreadMutex(const ThreadMutex&) = delete;
    ThreadMutex& operator=(const ThreadMutex&) = delete;

    // Waits until the lock is held.  Always 0, so that no caller sees this fail; this is meant.
    int acquire() {
        EnterCriticalSection(native());
        return 0;
    }
    // Does not wait: -1 with EBUSY when another thread holds the lock.
    int tryacquire() { return mutex_.tryacquire(); }
    // By the thread that holds it.
    int release() {
        LeaveCriticalSection(native());
        return 0;
    }

    // Makes threads look so many times whether the lock has become free before they sleep, where
    // there is more than one processor: for a lock that nobody holds for long.  A new mutex has 0.
    void set_spin_count(unsigned tries) { SetCriticalSectionSpinCount(native(), tries); }

private:
    friend class ThreadCondition;

    // What ACE locks, and in the same way; its own functions are two calls away.
    CRITICAL_SECTION* native() { return reinterpret_cast<CRITICAL_SECTION*>(&mutex_); }

    ACE_Thread_Mutex mutex_;
};

static_assert(std::is_standard_layout_v<ThreadMutex>);

// Excludes nobody: for templates that take their lock's type, used from one thread.
class NullMutex {
public:
    // 0, and nothing else.
    int acquire() { return 0; }
    int tryacquire() { return 0; }
    int release() { return 0; }
};

}  // namespace tarvcore
