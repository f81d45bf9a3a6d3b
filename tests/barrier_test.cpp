// Faults to catch: an answer about "all" or "any" that is wrong of none, or of one among many; a
// wait that looks behind the entry at which it gave up, or starts its time anew for each; pending
// entries dropped or reordered; a value type taken for another one.

#include "tarvcore/barrier.h"

#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/raised.h"
#include "tests/support/scoped_calls.h"

namespace {

using namespace tarvcore;
using tarv_test::raised_what;

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
    const bool answers[] = {barrier.any_ready(), barrier.any_failed(), barrier.any_successful(),
                            barrier.all_ready(), barrier.all_failed(), barrier.all_successful()};
    std::string text = "RFSrfs";
    for (unsigned i = 0; i < text.size(); ++i)
        if (!answers[i]) text[i] = '-';
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
        const auto wait = [&](const auto& barrier) {
            for (const RelativeTime& time : {RelativeTime(), RelativeTime::nanoseconds(-1),
                                             RelativeTime::nanoseconds(INT64_MIN)}) {
                EXPECT_EQ(barrier.wait(time), ready) << row.states;
                EXPECT_EQ(barrier.wait(AbsoluteTime(time)), ready) << row.states;
            }
            if (ready) barrier.wait();
        };
        wait(futures_in(row.states));
        wait(results_in(row.states));
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

// The first wait takes a while, of which the second has to know.
TEST(Barrier, HasOneTimeForAll) {
    static std::vector<Future<int>> pending;
    static std::vector<unsigned long> asked;
    tarv_test::ScopedCalls calls(impl::address_wait_calls);
    calls->wait = [](const void*, unsigned, unsigned long milliseconds, unsigned long*) {
        asked.push_back(milliseconds);
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        return pending.at(asked.size() - 1).signal(7);
    };
    const auto check = [](auto barrier, auto entry_of) {
        asked.clear();
        pending = {Future<int>::create(), Future<int>::create()};
        for (const auto& future : pending)
            barrier.push_back(entry_of(future));
        EXPECT_TRUE(barrier.wait(RelativeTime::seconds(100)));
        ASSERT_EQ(asked.size(), 2u);
        EXPECT_LE(asked[1] + 20, asked[0]);
    };
    check(AnyFutureBarrier(), [](const auto& future) { return future; });
    check(AnyResultBarrier(),
          [](const auto& future) { return Result<int>(new impl::FutureResultImpl<int>(future)); });
    pending.clear();
}

TEST(Barrier, LetsGoWhatIsReady) {
    const Future<int> pending[] = {future_in<int>('p'), future_in<int>('p')};
    AnyFutureBarrier barrier = futures_in("sf");
    for (const auto& future : pending) {
        barrier.push_back(future);
        barrier.push_back(future_in<int>('f'));
    }
    barrier.remove_all_ready();
    ASSERT_EQ(barrier.size(), 2u);
    EXPECT_EQ(Future<int>(*barrier.begin()), pending[0]);

    const auto error = error_of("too late");
    EXPECT_TRUE(pending[0].signal(7));
    EXPECT_EQ(barrier.set_error_if_not_ready(error), 1u);
    EXPECT_EQ(pending[0].get(), 7);
    EXPECT_EQ(pending[1].error_info(), error);
    AnyFutureBarrier other;
    other.swap(barrier);
    EXPECT_TRUE(barrier.empty());
    EXPECT_EQ(Future<int>(*other.erase(other.begin())), pending[1]);

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

TEST(Barrier, RaisesWhatWasRaisedFirstOnceAllAreDone) {
    struct Raiser : RefCounted<AtomicRefCount>, IFutureObserverBase {
        explicit Raiser(const char* text) : what(text) {}
        void on_future_error(const ErrorInfo::Ptr&) override { throw std::runtime_error(what); }
        void on_future_success() override {}
        const char* what;
    };
    AnyFutureBarrier barrier;
    for (const char* what : {"first", "second"}) {
        const auto future = Future<int>::create();
        EXPECT_TRUE(future.add_observer(RefCountPtr(new Raiser(what))));
        barrier.push_back(future);
    }
    EXPECT_EQ(raised_what([&] { barrier.set_error_if_not_ready(error_of("late")); }), "first");
    EXPECT_TRUE(barrier.all_failed());
}

TEST(Barrier, KnowsTheTypesOfItsValues) {
    const auto number = Future<int>::create();
    number.signal(7);
    const impl::AnyFuture future(number);
    EXPECT_EQ(Future<int>(future), number);
    EXPECT_THROW(static_cast<void>(Future<void>(future)), BadFutureCast);
    const impl::AnyFuture without(Future<void>::create());
    EXPECT_FALSE(Future<void>(without).is_ready());
    EXPECT_EQ(raised_what([&] { return Future<int>(without); }),
              "AnyFutureBarrier : bad future cast");

    const impl::AnyResult result(Result<int>(impl::create_value_result<int>(7)));
    EXPECT_EQ(Result<int>(result).get(), 7);
    const impl::AnyResult success(Result<void>(impl::create_value_result<void>()));
    Result<void>(success).get();
    EXPECT_FALSE(Result<int>(impl::AnyResult(Result<void>())).is_waitable()) << "of any type";
    EXPECT_EQ(raised_what([&] { return Result<int>(success); }),
              "AnyResultBarrier : bad result cast");
}

}  // namespace
