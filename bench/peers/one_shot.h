// A completion written by hand, for nothing but to be signalled and waited for: the yardstick for
// futures.  Its event comes into being when somebody has to wait.
#pragma once

#include <atomic>

#include <windows.h>

namespace tarv_bench {

class OneShot {
public:
    void signal() {
        const HANDLE event = state_.exchange(signalled);
        if (event != nullptr) SetEvent(event);
    }
    void wait() {
        HANDLE state = state_.load(std::memory_order_acquire);
        if (state == signalled) return;
        event_ = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        if (state_.compare_exchange_strong(state, event_)) WaitForSingleObject(event_, INFINITE);
    }

    void add_ref() { ++references_; }
    void release() {
        if (--references_ == 0) delete this;
    }

private:
    ~OneShot() {
        if (event_ != nullptr) CloseHandle(event_);
    }

    static inline const HANDLE signalled = INVALID_HANDLE_VALUE;

    std::atomic<int> references_ = 1;
    std::atomic<HANDLE> state_ = nullptr;
    HANDLE event_ = nullptr;
};

}  // namespace tarv_bench
