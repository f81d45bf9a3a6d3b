// Threads that sleep until a word in memory changes.
#pragma once

#include <atomic>
#include <chrono>

#include "tarvcore/abs_rel_time.h"
#include "tarvcore/config.h"

namespace tarvcore::impl {

// The system calls behind it; tests put others in their place.
struct AddressWaitCalls {
    // Like WaitOnAddress with a word of 32 bits: false where it fails, with what GetLastError says
    // then.
    bool (*wait)(const void* word, unsigned state, unsigned long milliseconds,
                 unsigned long* error);
    // Like WakeByAddressAll: looks at the address alone, never at what stands there.
    void (*wake_all)(const void* word);
};
TARVCORE_API extern std::atomic<const AddressWaitCalls*> address_wait_calls;

// Until when a thread waits: without limit, for a time by a clock that nobody sets, or until a time
// of the system's clock.
class TARVCORE_API WaitLimit {
public:
    WaitLimit() = default;
    explicit WaitLimit(const RelativeTime& time);
    explicit WaitLimit(const AbsoluteTime& deadline) : deadline_(deadline) {}

    // As the system takes them: rounded up, and 0 only once the limit is reached.  Of a time beyond
    // what the system takes, the first 49 days.
    unsigned long milliseconds_left() const;

private:
    using Clock = std::chrono::steady_clock;

    RelativeTime left() const;

    AbsoluteTime deadline_ = AbsoluteTime::infinite;
    RelativeTime time_ = RelativeTime::infinite;
    Clock::time_point start_{};
};

// Sleeps while the word is in that state; may wake without cause.  Results are as ACE's: 0, or -1
// with `errno`, which is ETIME once the limit is reached.
TARVCORE_API int sleep_while(const std::atomic<unsigned>& word, unsigned state,
                             const WaitLimit& limit);

// Wakes all who sleep at the word.  It may be gone by then: what else has its place now sees a
// wake-up without cause at most.
TARVCORE_API void wake_all(const std::atomic<unsigned>* word);

}  // namespace tarvcore::impl
