// Faults to catch: a wake-up that is lost or wakes too many; a deadline taken for a duration, or an
// infinite one for the past; the mutex not held after a wait.

#include "tarvcore/thread_condition.h"

#include <ace/Guard_T.h>
#include <ace/Time_Value.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <thread>
#include <vector>

namespace {

using namespace tarvcore;
using Guard = ACE_Guard<ThreadMutex>;

TEST(ThreadMutex, ExcludesOtherThreads) {
    ThreadMutex mutex;
    ASSERT_EQ(mutex.acquire(), 0);
    std::thread([&mutex] {
        errno = 0;
        EXPECT_EQ(mutex.tryacquire(), -1);
        EXPECT_EQ(errno, EBUSY);
    }).join();
    EXPECT_EQ(mutex.release(), 0);
    EXPECT_EQ(mutex.tryacquire(), 0);
    EXPECT_EQ(mutex.release(), 0);

    // Not atomic: only the lock keeps the increments apart.
    unsigned count = 0;
    const auto increment = [&] {
        for (int i = 0; i < 100'000; ++i) {
            const Guard guard(mutex);
            ++count;
        }
    };
    std::thread other(increment);
    increment();
    other.join();
    EXPECT_EQ(count, 200'000u);

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
        std::thread([&mutex] {
            EXPECT_EQ(mutex.tryacquire(), -1) << "held after the wait";
        }).join();
    };
    const AbsoluteTime start = AbsoluteTime::now();
    expect_timeout(start - RelativeTime::seconds(1));
    expect_timeout(AbsoluteTime());
    expect_timeout(start + RelativeTime::milliseconds(30));
    EXPECT_GE(AbsoluteTime::now() - start, RelativeTime::milliseconds(29));
    const ACE_Time_Value past(1);
    expect_timeout(&past);
    EXPECT_EQ(past, ACE_Time_Value(1));
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

TEST(ThreadCondition, WakesOneOrAll) {
    constexpr int count = 8;
    ThreadMutex mutex;
    ThreadCondition condition(mutex);
    int waiting = 0;
    int tickets = 0;
    int woken = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i) {
        threads.emplace_back([&] {
            const Guard guard(mutex);
            ++waiting;
            while (tickets == 0)
                condition.wait();
            --tickets;
            ++woken;
        });
    }
    // A thread that holds the mutex and sees all as waiting knows that they do.
    const auto all_wait = [&] {
        const Guard guard(mutex);
        return waiting == count;
    };
    while (!all_wait())
        std::this_thread::yield();
    {
        const Guard guard(mutex);
        tickets = 1;
        EXPECT_EQ(condition.signal(), 0);
    }
    const auto one_woke = [&] {
        const Guard guard(mutex);
        return woken == 1;
    };
    while (!one_woke())
        std::this_thread::yield();
    {
        const Guard guard(mutex);
        tickets = count - 1;
        EXPECT_EQ(condition.broadcast(), 0);
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(woken, count);
    EXPECT_EQ(condition.signal(), 0) << "nobody waits";
}

}  // namespace
