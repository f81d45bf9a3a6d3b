// Faults to catch: a wake-up that is lost; a lock held by two, or left held; two completions; a
// touch of the word after a waiter may have freed it.  All of these hide in the order in which
// threads take their steps: the test goes through all orders.

#include "tarvcore/impl/completion_word.h"

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/trials.h"
//
#include <windows.h>

#if !defined(TARVCORE_STATIC)  // the checkers do not follow fibers

namespace {

// Runs a few threads, as fibers, step by step in every possible order.
class Explorer {
public:
    explicit Explorer(const std::vector<std::function<void()>>& bodies)
        : main_(ConvertThreadToFiber(nullptr)), threads_(bodies.size()) {
        instance = this;
        for (unsigned i = 0; i < bodies.size(); ++i) {
            threads_[i].body = &bodies[i];
            threads_[i].fiber = CreateFiber(1 << 16, run_fiber, &threads_[i]);
        }
    }
    ~Explorer() {
        for (const Thread& thread : threads_)
            DeleteFiber(thread.fiber);
        ConvertFiberToThread();
    }

    // Runs all bodies to their ends, in the order whose turn it is.
    void run() {
        for (Thread& thread : threads_)
            thread.asleep = thread.done = false;
        // Up to its first step nobody sees what a thread does.
        for (current_ = 0; current_ < threads_.size(); ++current_)
            SwitchToFiber(threads_[current_].fiber);
        for (unsigned depth = 0;; ++depth) {
            std::vector<unsigned> runnable;
            bool all_done = true;
            for (unsigned i = 0; i < threads_.size(); ++i) {
                const Thread& thread = threads_[i];
                all_done &= thread.done;
                if (!thread.done && (!thread.asleep || thread.may_time_out)) runnable.push_back(i);
            }
            if (runnable.empty()) {
                EXPECT_TRUE(all_done) << "all that are left sleep for ever";
                return;
            }
            const auto options = static_cast<unsigned>(runnable.size());
            if (depth == choices_.size()) choices_.push_back({0, options});
            current_ = runnable[choices_[depth].taken];
            woken_by_time_ = threads_[current_].asleep;
            SwitchToFiber(threads_[current_].fiber);
        }
    }
    // Goes on to the next order; false: there is none.
    bool next() {
        while (!choices_.empty() && choices_.back().taken + 1 == choices_.back().options)
            choices_.pop_back();
        if (choices_.empty()) return false;
        ++choices_.back().taken;
        return true;
    }

    // Of the running thread: lets others take steps.
    void step() { SwitchToFiber(main_); }
    // The same until it is woken, or, of those that may, times out: false.
    bool sleep(bool may_time_out) {
        Thread& self = threads_[current_];
        self.asleep = true;
        self.may_time_out = may_time_out;
        step();
        self.asleep = false;
        return !woken_by_time_;
    }
    void wake_all() {
        for (Thread& thread : threads_)
            thread.asleep = false;
    }

    static inline Explorer* instance;

private:
    struct Thread {
        void* fiber = nullptr;
        const std::function<void()>* body = nullptr;
        bool asleep = false;
        bool may_time_out = false;
        bool done = false;
    };
    struct Choice {
        unsigned taken;
        unsigned options;
    };

    static void __stdcall run_fiber(void* pointer) {
        Thread& self = *static_cast<Thread*>(pointer);
        for (;;) {
            (*self.body)();
            self.done = true;
            instance->step();
        }
    }

    void* main_;
    std::vector<Thread> threads_;
    std::vector<Choice> choices_;
    unsigned current_ = 0;
    bool woken_by_time_ = false;
};

struct SteppedPlatform {
    // Every access is a step of its own.
    class Word {
    public:
        Word(unsigned value) : value_(value) {}

        unsigned load(std::memory_order = std::memory_order_seq_cst) const { return at_step(); }
        bool compare_exchange_strong(unsigned& expected, unsigned value) {
            unsigned& now = at_step();
            if (now == expected) {
                now = value;
                return true;
            }
            expected = now;
            return false;
        }
        unsigned fetch_and(unsigned mask) {
            unsigned& now = at_step();
            return std::exchange(now, now & mask);
        }
        unsigned fetch_or(unsigned mask) {
            unsigned& now = at_step();
            return std::exchange(now, now | mask);
        }
        unsigned exchange(unsigned value) { return std::exchange(at_step(), value); }

        static inline bool freed;

    private:
        unsigned& at_step() const {
            Explorer::instance->step();
            EXPECT_FALSE(freed);
            return value_;
        }

        mutable unsigned value_;
    };

    static int sleep_while(const Word& word, unsigned state, bool may_time_out) {
        if (word.load() != state) return 0;
        return Explorer::instance->sleep(may_time_out) ? 0 : -1;
    }
    static void wake_all(const Word*) {
        Explorer::instance->step();
        Explorer::instance->wake_all();
    }
};

using SteppedWord = tarvcore::impl::BasicCompletionWord<SteppedPlatform>;

// A letter a thread:
//
//     s  signals                     w  waits
//     d  the same, decided before
//     r  registers: locks, unlocks   t  waits and may time out
//                                    f  waits, and then frees the word
TEST(CompletionWord, KeepsItsPromisesInEveryOrder) {
    // Who has nobody to signal sleeps for ever: each has an s or a d.
    std::vector<std::string> casts = {"s",   "sr",  "ss", "sf", "sw", "st",
                                      "sst", "swt", "dr", "dw", "df", "ds"};
    if (tarv_test::is_long_run()) casts.insert(casts.end(), {"ssr", "swr", "srt", "stt"});
    for (const std::string& cast : casts) {
        std::optional<SteppedWord> word;
        int holders = 0;
        int completions = 0;
        const auto hold = [&] {
            EXPECT_EQ(++holders, 1);
            Explorer::instance->step();
            --holders;
        };
        std::vector<std::function<void()>> bodies;
        for (const char role : cast) {
            bodies.push_back([&, role] {
                if (role == 's' || role == 'd' || role == 'r') {
                    if (!word->lock()) {
                        EXPECT_EQ(completions, 1);
                        return;
                    }
                    hold();
                    if (role == 'd') {
                        word->decide();
                        EXPECT_TRUE(word->is_decided() && !word->is_ready());
                    }
                    completions += role != 'r';
                    role == 'r' ? word->unlock() : word->publish();
                } else {
                    const int result = word->wait(role == 't');
                    EXPECT_TRUE(result == 0 ? completions == 1 : role == 't');
                    if (role == 'f') SteppedPlatform::Word::freed = true;
                }
            });
        }
        Explorer explorer(bodies);
        unsigned runs = 0;
        do {
            word.emplace();
            completions = 0;
            SteppedPlatform::Word::freed = false;
            explorer.run();
            EXPECT_EQ(completions, 1);
            ++runs;
        } while (explorer.next() && !HasFailure());
        EXPECT_GE(runs, cast.size()) << cast;
        ASSERT_FALSE(HasFailure()) << cast;
    }
}

}  // namespace

#endif
