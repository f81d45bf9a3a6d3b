// The state of something that completes once, in one word.
#pragma once

#include <atomic>
#include <cerrno>

#include "tarvcore/impl/address_wait.h"

namespace tarvcore::impl {

// Pending, then ready for ever, with a lock that exists while it is pending only: what it guards
// does not change any more afterwards.
//
//     pending --lock--> locked --publish--> ready
//        ^                |
//        +-----unlock-----+
//
// A holder that will publish for certain, but has something to do before, may say so: `decide`.
//
// A thread that must wait, for the lock or for readiness, sets `parked` and sleeps at the word's
// address; whoever releases the lock or publishes takes `parked` away and wakes all, who look
// again.  There is no object of the system behind it, neither before nor after anybody has waited.
//
// `publish` touches the word with one exchange and then only names its address.  So whoever sees it
// ready, a waiter just woken among them, may free it at once, while `publish` still runs.
//
// Platform has the atomic word and the sleep: real ones, or those of a test that goes through all
// interleavings.
template <class Platform>
class BasicCompletionWord {
public:
    bool is_ready() const { return (word_.load(std::memory_order_acquire) & ready) != 0; }

    // Whether it is ready, or will be by itself.
    bool is_decided() const {
        return (word_.load(std::memory_order_acquire) & (ready | decided)) != 0;
    }

    // Waits for the lock and takes it; false, without the lock, once it is ready.
    [[nodiscard]] bool lock() {
        for (unsigned state = pending;;) {
            if ((state & ready) != 0) return false;
            if ((state & locked) == 0) {
                if (word_.compare_exchange_strong(state, state | locked)) return true;
            } else if (park(state)) {
                Platform::sleep_while(word_, state, {});
                state = word_.load();
            }
        }
    }

    // By the holder of the lock.
    void unlock() {
        if ((word_.fetch_and(~(locked | parked)) & parked) != 0) Platform::wake_all(&word_);
    }

    // By the holder of the lock, who publishes then.
    void decide() { word_.fetch_or(decided); }

    // Makes it ready, and ends the lock.  By the holder of the lock, or where nobody else locks.
    void publish() {
        if ((word_.exchange(ready) & parked) != 0) Platform::wake_all(&word_);
    }

    // Sleeps until it is ready.  Results are as ACE's: 0, or -1 with `errno`; ETIME: the limit was
    // reached first.
    template <class Limit>
    int wait(const Limit& limit) const {
        for (unsigned state = word_.load();;) {
            if ((state & ready) != 0) return 0;
            if (!park(state)) continue;
            const int result = Platform::sleep_while(word_, state, limit);
            state = word_.load();
            if (result == -1 && (state & ready) == 0) return -1;
        }
    }

private:
    static constexpr unsigned pending = 0;
    static constexpr unsigned locked = 1;
    static constexpr unsigned ready = 2;
    static constexpr unsigned parked = 4;
    static constexpr unsigned decided = 8;  // and locked

    // Adds `parked` to the state; false, with `state` anew, where the word has changed meanwhile.
    bool park(unsigned& state) const {
        if ((state & parked) != 0) return true;
        if (!word_.compare_exchange_strong(state, state | parked)) return false;
        state |= parked;
        return true;
    }

    mutable typename Platform::Word word_{pending};
};

struct SystemSleep {
    using Word = std::atomic<unsigned>;

    static int sleep_while(const Word& word, unsigned state, const WaitLimit& limit) {
        return impl::sleep_while(word, state, limit);
    }
    static void wake_all(const Word* word) { impl::wake_all(word); }
};

using CompletionWord = BasicCompletionWord<SystemSleep>;

}  // namespace tarvcore::impl
