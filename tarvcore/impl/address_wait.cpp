#include "tarvcore/impl/address_wait.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>

#include "tarvcore/os_error.h"

#include <windows.h>

TARVCORE_SOURCE_FILE("$Id: //tarvcore/impl/address_wait.cpp#1 $");

namespace tarvcore::impl {
namespace {

constexpr AddressWaitCalls system_calls = {
    [](const void* word, unsigned state, unsigned long milliseconds, unsigned long* error) {
        // Declared for words that the system writes; it only reads them.
        if (WaitOnAddress(const_cast<void*>(word), &state, sizeof state, milliseconds)) return true;
        *error = GetLastError();
        return false;
    },
    [](const void* word) { WakeByAddressAll(const_cast<void*>(word)); },
};

}  // namespace

constinit std::atomic<const AddressWaitCalls*> address_wait_calls = &system_calls;

// Times before now are the same limit, and the earliest ones would wrap.
WaitLimit::WaitLimit(const RelativeTime& time) : time_(std::max(time, RelativeTime())) {
    if (!time.is_infinite()) start_ = Clock::now();
}

RelativeTime WaitLimit::left() const {
    if (time_.is_infinite()) {
        if (deadline_.is_infinite()) return RelativeTime::infinite;
        // Not `remaining`: it is infinite for a deadline that passed centuries ago.
        const AbsoluteTime now = AbsoluteTime::now();
        return deadline_ > now ? deadline_ - now : RelativeTime();
    }
    return time_ -
           RelativeTime::nanoseconds(std::chrono::nanoseconds(Clock::now() - start_).count());
}

unsigned long WaitLimit::milliseconds_left() const {
    constexpr std::int64_t ns_per_ms = 1'000'000;
    constexpr std::int64_t longest = INFINITE - 1;
    const RelativeTime time = left();
    if (time.is_infinite()) return INFINITE;
    if (!time.is_positive()) return 0;
    return static_cast<unsigned long>(std::min((time.as_nsec() - 1) / ns_per_ms + 1, longest));
}

int sleep_while(const std::atomic<unsigned>& word, unsigned state, const WaitLimit& limit) {
    const unsigned long milliseconds = limit.milliseconds_left();
    if (milliseconds == 0) {
        errno = ETIME;
        return -1;
    }
    unsigned long error = ERROR_SUCCESS;
    if (address_wait_calls.load()->wait(&word, state, milliseconds, &error)) return 0;
    // The system's milliseconds may end before those of the clock do: the caller looks, and comes
    // again.
    if (error == ERROR_TIMEOUT) return 0;
    set_errno_from_winerror(error);
    return -1;
}

void wake_all(const std::atomic<unsigned>* word) {
    address_wait_calls.load()->wake_all(word);
}

}  // namespace tarvcore::impl
