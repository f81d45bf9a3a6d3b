// Faults to catch: two outcomes of one operation, or one that not all see; a waiter that is not
// woken; a life that does not end, or ends while somebody is still there.  Eight threads signal,
// cancel, wait for, observe and drop the same operations.

#include "tarvcore/result_control_kinds.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <stdexcept>
#include <vector>

#include "tarvcore/async_op_handle.h"
#include "tests/support/open_handles.h"
#include "tests/support/racers.h"
#include "tests/support/trials.h"

namespace {

using namespace tarvcore;

std::atomic<int> alive;

struct Counted {
    Counted() { ++alive; }
    Counted(const Counted&) { ++alive; }
    ~Counted() { --alive; }
    Counted& operator=(const Counted&) = delete;
};

struct Value : Counted {
    int number = 7;
};

struct Observer final : RefCounted<AtomicRefCount>, IFutureObserverBase, Counted {
    void on_future_error(const ErrorInfo::Ptr&) override { tell(); }
    void on_future_success() override { tell(); }
    void tell() {
        ++parted;
        dropped.clear();
        throw std::runtime_error("observer");
    }
    std::vector<Result<Value>> dropped;
    std::atomic<int> parted = 0;  // told or removed
};

enum Outcome { none, value, error, cancelled, not_signaled, outcomes };

Outcome outcome_of(const Result<Value>& result) {
    if (!result.is_ready()) return none;
    if (result.has_value()) return result.get().number == 7 ? value : none;
    const ErrorInfo::Ptr record = result.error_info();
    if (impl::result_was_cancelled(record)) return cancelled;
    return record->matches(error::tarvcore_result_notSignaled) ? not_signaled : error;
}

// What has been seen of one operation.
struct Log : RefCounted<AtomicRefCount>, Counted {
    std::atomic<Outcome> seen = none;
    std::atomic<int> disagreements = 0;

    void see(Outcome outcome) {
        Outcome expected = none;
        if (!seen.compare_exchange_strong(expected, outcome) && expected != outcome) {
            ++disagreements;
        }
        if (outcome == none) ++disagreements;
    }
};

struct Subject {
    explicit Subject(unsigned number_of_it) : number(number_of_it) {}

    unsigned number;
    Future<Value> future = Future<Value>::create();
    // Who does not signal lets go of it.
    mutable RefCountPtr<AsyncResult<Value>> handler = result_future(future).create_async_handler();
    Result<Value> result = handler->get_result();
    RefCountPtr<Log> log{new Log};
    RefCountPtr<Observer> observer{new Observer};
};

// What observers throw reaches whoever completes the operation; a second signal is refused.
template <class Signal>
void signal(Signal signal_it) {
    try {
        signal_it();
    } catch (const std::runtime_error&) {
    } catch (const ErrorException& e) {
        EXPECT_TRUE(e.matches(error::tarvcore_result_redundantSignal));
    }
}

TEST(AsyncRaces, EndInOneOutcomeThatAllSee) {
    static constexpr unsigned batch = 10'000;
    const unsigned count = tarv_test::trials(100'000);
    const auto bad = ErrorInfo::create(error::tarvcore, "bad", SourceLocation());
    std::array<unsigned, outcomes> ends{};
    const unsigned handles = tarv_test::open_handles();

    const auto of_caller = [](auto operation) {
        return [operation](const Subject& s) {
            s.handler.clear();
            operation(s);
        };
    };
    const auto see_the_end = [&](const Subject& s) {
        s.log->see(outcome_of(s.result));
        s.log->see(outcome_of(s.result));
    };
    for (unsigned done = 0; done < count; done += batch) {
        std::vector<Subject> subjects;
        for (unsigned i = 0; i < batch; ++i) {
            subjects.emplace_back(i);
        }
        std::vector<RefCountPtr<Log>> logs;
        std::vector<RefCountPtr<Observer>> observers;
        for (const Subject& s : subjects) {
            logs.push_back(s.log);
            observers.push_back(s.observer);
            s.observer->dropped.push_back(s.result);
        }
        // Every eighth is left to its fate, every other eighth cannot be cancelled.
        const auto signals = [&](const Subject& s) { return s.number % 8 != 0; };
        const auto cancels = [&](const Subject& s) { return s.number % 8 > 1; };
        tarv_test::race<Subject>(
            std::move(subjects),
            {
                [&](const Subject& s) {
                    if (signals(s)) signal([&] { s.handler->on_async_result_success({}); });
                    s.handler.clear();
                },
                [&](const Subject& s) {
                    if (signals(s)) signal([&] { s.handler->on_async_result_error(bad); });
                    s.handler.clear();
                },
                [&](const Subject& s) {
                    if (cancels(s)) signal([&] { s.handler->cancel(true, bad); });
                    s.handler.clear();
                },
                of_caller([&](const Subject& s) {
                    if (cancels(s)) signal([&] { s.result.cancel(false, {}); });
                }),
                of_caller([&](const Subject& s) {
                    s.result.wait();
                    see_the_end(s);
                }),
                of_caller([&](const Subject& s) {
                    while (!s.result.wait(RelativeTime::microseconds(200)))
                        ;
                    see_the_end(s);
                }),
                of_caller(
                    [](const Subject& s) { signal([&] { s.future.add_observer(s.observer); }); }),
                of_caller([](const Subject& s) {
                    if (s.number % 2 != 0)
                        s.observer->parted += s.future.remove_observer(s.observer.get());
                }),
            });
        for (unsigned i = 0; i < batch; ++i) {
            ASSERT_EQ(logs[i]->disagreements, 0);
            ASSERT_EQ(observers[i]->parted, 1);
            ++ends[logs[i]->seen];
        }
    }
    EXPECT_EQ(alive, 0) << "lives go on";
    EXPECT_LT(tarv_test::open_handles(), handles + 100) << "more than the runtime's own few";
    EXPECT_EQ(ends[none], 0u);
    EXPECT_EQ(ends[not_signaled], count / 8);
    EXPECT_GT(ends[value], 0u);
    EXPECT_GT(ends[error] + ends[cancelled], 0u);
    RecordProperty("outcomes", testing::PrintToString(ends));
}

}  // namespace
