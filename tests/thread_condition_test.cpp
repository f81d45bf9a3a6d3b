// Faults to catch: a wake-up that is lost; a deadline taken for a duration, or an infinite one for
// the past; the mutex not held after a wait.

#include "tarvcore/thread_condition.h"

#include <ace/Guard_T.h>
#include <ace/Time_Value.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <ctime>
#include <limits>
#include <thread>
#include <vector>

namespace {

using namespace tarvcore;
using Guard = ACE_Guard<ThreadMutex>;

// Whether another thread finds the mutex free.
bool is_free(ThreadMutex& mutex) {
    bool free = false;
    std::thread([&] {
        errno = 0;
        free = mutex.tryacquire() == 0;
        EXPECT_EQ(errno, free ? 0 : EBUSY);
        if (free) mutex.release();
    }).join();
    return free;
}

TEST(ThreadMutex, ExcludesOtherThreads) {
    ThreadMutex mutex;
    for (const auto acquire : {&ThreadMutex::acquire, &ThreadMutex::tryacquire}) {
        EXPECT_EQ((mutex.*acquire)(), 0);
        EXPECT_FALSE(is_free(mutex));
        EXPECT_EQ(mutex.release(), 0);
        EXPECT_TRUE(is_free(mutex));
    }
    NullMutex none;
    EXPECT_EQ(none.release() | none.acquire() | none.acquire() | none.tryacquire(), 0);
}

TEST(ThreadCondition, EndsWaitsAtTheDeadline) {
    ThreadMutex mutex;
    ThreadCondition condition(mutex);
    EXPECT_EQ(&condition.mutex(), &mutex);
    const Guard guard(mutex);
    const auto expect_timeout = [&](auto deadline) {
        errno = 0;
        EXPECT_EQ(condition.wait(deadline), -1);
        EXPECT_EQ(errno, ETIME);
        EXPECT_FALSE(is_free(mutex)) << "held after the wait";
    };
    const AbsoluteTime start = AbsoluteTime::now();
    expect_timeout(start - RelativeTime::seconds(1));
    expect_timeout(AbsoluteTime());
    expect_timeout(AbsoluteTime::min_time);
    const AbsoluteTime soon = start + RelativeTime::milliseconds(30);
    while (condition.wait(soon) == 0) {
        EXPECT_LT(AbsoluteTime::now(), soon + RelativeTime::seconds(60));
    }
    expect_timeout(soon);
    EXPECT_GE(AbsoluteTime::now() - start, RelativeTime::milliseconds(29));
    for (const time_t seconds : {time_t{1}, std::numeric_limits<time_t>::min()}) {
        const ACE_Time_Value past(seconds);
        expect_timeout(&past);
        EXPECT_EQ(past, ACE_Time_Value(seconds));
    }
}

TEST(ThreadCondition, WaitsWithoutLimit) {
    ThreadMutex mutex;
    ThreadCondition condition(mutex);
    const ACE_Time_Value* const no_deadline = nullptr;
    // Each signals and then waits itself, and must not wake by its own signal.
    constexpr int turns = 2000;
    int turn = 0;
    std::thread other([&] {
        for (int i = 0; i < turns; ++i) {
            const Guard guard(mutex);
            while (turn % 2 == 0)
                condition.wait();
            ++turn;
            condition.signal();
        }
    });
    for (int i = 0; i < turns; ++i) {
        const Guard guard(mutex);
        ++turn;
        condition.signal();
        while (turn % 2 == 1)
            EXPECT_EQ(
                i % 2 == 0 ? condition.wait(AbsoluteTime::infinite) : condition.wait(no_deadline),
                0);
    }
    other.join();
    EXPECT_EQ(turn, 2 * turns);
}

TEST(ThreadCondition, WakesAll) {
    ThreadMutex mutex;
    ThreadCondition condition(mutex);
    unsigned waiting = 0;
    bool over = false;
    std::vector<std::thread> threads(8);
    for (std::thread& thread : threads) {
        thread = std::thread([&] {
            const Guard guard(mutex);
            ++waiting;
            while (!over)
                condition.wait();
        });
    }
    // A thread that holds the mutex and sees all as waiting knows that they do.
    while (!over) {
        std::this_thread::yield();
        const Guard guard(mutex);
        over = waiting == threads.size();
    }
    EXPECT_EQ(condition.broadcast(), 0);
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(condition.signal(), 0) << "nobody waits";
}

}  // namespace
