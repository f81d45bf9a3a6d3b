// Faults to catch: an answer about "all" or "any" that is wrong of none, or of one among many; a
// wait that looks behind the entry at which it gave up, or starts its time anew for each; pending
// entries dropped or reordered; a value type taken for another one.

#include "tarvcore/barrier.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

#include "tests/support/raised.h"

namespace {

using namespace tarvcore;

ErrorInfo::Ptr error_of(const char* message) {
    return ErrorInfo::create(error::tarvcore, message, SourceLocation());
}

// "p"ending, "s"uccessful, "f"ailed.
template <class T>
Future<T> future_in(char state) {
    auto future = Future<T>::create();
    if (state == 's') future.signal(T());
    if (state == 'f') future.set(error_of("failed"));
    return future;
}

AnyFutureBarrier futures_in(const std::string& states) {
    AnyFutureBarrier barrier;
    for (unsigned i = 0; i < states.size(); ++i) {
        if (i % 2 != 0) {
            barrier.push_back(future_in<int>(states[i]));
        } else {
            barrier.push_back(future_in<std::string>(states[i]));
        }
    }
    return barrier;
}
AnyResultBarrier results_in(const std::string& states) {
    AnyResultBarrier barrier;
    for (const char state : states) {
        if (state == 'e') {
            barrier.push_back(Result<void>());
        } else {
            barrier.push_back(Result<int>(new impl::FutureResultImpl<int>(future_in<int>(state))));
        }
    }
    return barrier;
}

template <class Barrier>
std::string answers(const Barrier& barrier) {
    std::string text;
    text += barrier.any_ready() ? 'R' : '-';
    text += barrier.any_failed() ? 'F' : '-';
    text += barrier.any_successful() ? 'S' : '-';
    text += barrier.all_ready() ? 'r' : '-';
    text += barrier.all_failed() ? 'f' : '-';
    text += barrier.all_successful() ? 's' : '-';
    return text;
}

TEST(Barrier, AnswersForAll) {
    const struct {
        const char* states;
        const char* answers;
    } rows[] = {{"", "R--r--"},      {"p", "------"},   {"s", "R-Sr-s"},   {"f", "RF-rf-"},
                {"ps", "R-S---"},    {"fp", "RF----"},  {"sf", "RFSr--"},  {"fff", "RF-rf-"},
                {"sssss", "R-Sr-s"}, {"ffp", "RF----"}, {"pss", "R-S---"}, {"psf", "RFS---"}};
    for (const auto& row : rows) {
        EXPECT_EQ(answers(futures_in(row.states)), row.answers) << row.states;
        EXPECT_EQ(answers(results_in(row.states)), row.answers) << row.states;
        const bool ready = row.answers[3] == 'r';
        for (const RelativeTime& time : {RelativeTime(), RelativeTime::nanoseconds(-1),
                                         RelativeTime::nanoseconds(INT64_MIN)}) {
            EXPECT_EQ(futures_in(row.states).wait(time), ready) << row.states;
            EXPECT_EQ(futures_in(row.states).wait(AbsoluteTime(time)), ready) << row.states;
            EXPECT_EQ(results_in(row.states).wait(time), ready) << row.states;
            EXPECT_EQ(results_in(row.states).wait(AbsoluteTime(time)), ready) << row.states;
        }
        if (ready) {
            futures_in(row.states).wait();
            results_in(row.states).wait(RelativeTime::max_time);
        }
    }
    // Empty results are among the pending ones, and cannot be waited for.
    EXPECT_EQ(answers(results_in("se")), "R-S---");
    EXPECT_EQ(tarv_test::raised([] { results_in("ep").wait(RelativeTime()); }).substr(0, 33),
              "error.tarvcore.result.notWaitable");
}

TEST(Barrier, WaitsForOneAfterTheOther) {
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    auto barrier = futures_in("sppp");
    EXPECT_FALSE(barrier.wait(RelativeTime::milliseconds(30)));
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(30));

    // Duplicates, and all types, completed in another order while it waits.
    const auto a = Future<void>::create();
    const auto b = Future<int>::create();
    AnyFutureBarrier mixed;
    mixed.push_back(a);
    mixed.push_back(b);
    mixed.push_back(a);
    std::thread thread([b, a] {
        b.signal(7);
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        a.set(error_of("late"));
    });
    EXPECT_TRUE(mixed.wait(RelativeTime::max_time)) << "a time that would wrap";
    thread.join();
    EXPECT_EQ(answers(mixed), "RFSr--");
}

TEST(Barrier, LetsGoWhatIsReady) {
    AnyFutureBarrier barrier;
    Future<int> pending[] = {future_in<int>('p'), future_in<int>('p'), future_in<int>('p')};
    for (const auto& future : pending) {
        barrier.push_back(future_in<int>('s'));
        barrier.push_back(future);
        barrier.push_back(future_in<int>('f'));
    }
    const AnyFutureBarrier copy = barrier;
    barrier.remove_all_ready();
    ASSERT_EQ(barrier.size(), 3u);
    for (unsigned i = 0; i < 3; ++i) {
        EXPECT_EQ(Future<int>(barrier.begin()[static_cast<int>(i)]), pending[i]);
    }
    EXPECT_EQ(copy.size(), 9u);
    EXPECT_EQ(Future<int>(*barrier.erase(barrier.begin())), pending[1]);

    EXPECT_EQ(barrier.size(), 2u);
    EXPECT_TRUE(pending[1].signal(7));
    const auto error = error_of("too late");
    EXPECT_EQ(copy.begin()[1].set(error), true);
    EXPECT_EQ(barrier.set_error_if_not_ready(error), 1u);
    EXPECT_EQ(pending[2].error_info(), error);
    EXPECT_EQ(pending[1].get(), 7);
    AnyFutureBarrier other;
    other.swap(barrier);
    EXPECT_TRUE(barrier.empty());
    other.clear();
    EXPECT_TRUE(other.empty());

    const auto future = Future<void>::create();
    AnyResultBarrier results = results_in("sfe");
    results.push_back(Result<void>(new impl::FutureResultImpl<void>(future)));
    results.cancel(error);
    EXPECT_TRUE(impl::result_was_cancelled(future.error_info()));
    EXPECT_EQ(future.error_info()->nested(), error);
    EXPECT_EQ(answers(results), "RFS---");
    results.remove_all_ready();
    EXPECT_EQ(results.size(), 1u) << "the empty one";
}

TEST(Barrier, KnowsTheTypesOfItsValues) {
    const auto number = Future<int>::create();
    number.signal(7);
    const impl::AnyFuture future(number);
    EXPECT_EQ(Future<int>(future), number);
    EXPECT_THROW(static_cast<void>(Future<void>(future)), BadFutureCast);
    const impl::AnyFuture without(Future<void>::create());
    EXPECT_FALSE(Future<void>(without).is_ready());
    try {
        static_cast<void>(Future<int>(without));
        ADD_FAILURE();
    } catch (const std::bad_cast& e) {
        EXPECT_STREQ(e.what(), "AnyFutureBarrier : bad future cast");
    }

    const impl::AnyResult result(Result<int>(impl::create_value_result<int>(7)));
    EXPECT_EQ(Result<int>(result).get(), 7);
    const impl::AnyResult success(Result<void>(impl::create_value_result<void>()));
    Result<void>(success).get();
    EXPECT_FALSE(Result<int>(impl::AnyResult(Result<void>())).is_waitable()) << "of any type";
    try {
        static_cast<void>(Result<int>(success));
        ADD_FAILURE();
    } catch (const std::bad_cast& e) {
        EXPECT_STREQ(e.what(), "AnyResultBarrier : bad result cast");
    }
}

}  // namespace
