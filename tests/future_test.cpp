// Faults to catch: a second outcome that replaces the first; a waiter that sleeps on, or gives up
// too early; an observer told twice, never, out of order, or after its removal; owners and values
// that outlive the completion or die early; a completion held up by an observer's exception.  What
// races bring about, result_control_kinds_test.cpp has.

#include "tarvcore/future.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/allocations.h"
#include "tests/support/open_handles.h"
#include "tests/support/raised.h"
#include "tests/support/scoped_calls.h"
//
#include <windows.h>

namespace {

using namespace tarvcore;

ErrorInfo::Ptr error_of(const char* message = "bad") {
    return ErrorInfo::create(error::tarvcore, message, SourceLocation());
}

// An observer that keeps a diary and may do worse.
struct Observer : RefCounted<AtomicRefCount>, IFutureObserverBase {
    explicit Observer(std::string& diary_to_keep, std::string own_name = "o")
        : diary(diary_to_keep), name(std::move(own_name)) {}
    ~Observer() override {
        diary += "~" + name;
        if (watched) watched->remove_observer(this);  // the future is not locked any more
    }
    void on_future_error(const ErrorInfo::Ptr& error) override {
        if (drops_first) std::exchange(dropped, nullptr)->clear();
        tell(error->message().text());
    }
    void on_future_success() override { tell("+"); }
    void tell(const std::string& outcome) {
        diary += name + outcome + (dropped && dropped->back().is_ready() ? "!" : "");
        if (dropped) dropped->clear();
        if (throws) throw std::runtime_error(name);
    }

    std::string& diary;
    std::string name;
    bool throws = false;
    bool drops_first = false;
    std::vector<Future<void>>* dropped = nullptr;
    RefCountPtr<impl::FutureImplBase> watched;
};

TEST(Future, HasOneOutcome) {
    const ErrorInfo::Ptr error = error_of();
    const auto pending = Future<void>::create();
    const auto good = Future<void>::create();
    const auto bad = Future<void>::create();
    EXPECT_EQ(tarv_test::raised([&] { pending.set({}); }),
              "error.tarvcore.future.nullError Cannot signal Future with a NULL error [] "
              "tarvcore::impl::FutureImplBase::set() //tarvcore/future.cpp");
    EXPECT_TRUE(good.signal() && bad.set(error));
    EXPECT_FALSE(good.set(error) || good.signal() || bad.signal() || bad.set(error_of()));

    EXPECT_FALSE(pending.is_ready() || pending.has_error() || pending.has_value());
    EXPECT_TRUE(good.has_value() && !good.has_error());
    EXPECT_TRUE(bad.has_error() && !bad.has_value() && bad.error_info() == error);
    EXPECT_TRUE(pending.error_info().is_null() && good.error_info().is_null());
    EXPECT_TRUE(good.wait(RelativeTime()) && bad.wait(AbsoluteTime()));
    good.get();
    try {
        bad.get();
        ADD_FAILURE();
    } catch (const ErrorException& e) {
        EXPECT_EQ(e.error(), error) << "the very record";
    }
}

struct Value {
    static inline int alive = 0;
    static inline int moves = -1;  // before one that throws; less than 0: none does

    explicit Value(int n) : number(n) { ++alive; }
    Value(Value&& other) : number(std::exchange(other.number, 0)) {
        if (moves-- == 0) throw std::runtime_error("move");
        ++alive;
    }
    ~Value() { --alive; }
    int number;
};

TEST(Future, KeepsItsValue) {
    {
        auto future = Future<Value>::create();
        EXPECT_TRUE(future.signal(Value(7)));
        EXPECT_FALSE(future.signal(Value(8)) || future.set(error_of()));
        const auto copy = future;
        EXPECT_EQ(&future.get(), &copy.get());
        EXPECT_EQ(copy.get().number, 7);
        const Value taken = std::move(future).get();
        EXPECT_EQ(taken.number, 7);
        EXPECT_EQ(copy.get().number, 0) << "a value that can only be moved";
        EXPECT_EQ(Value::alive, 2);

        const auto none = Future<Value>::create();
        for (const int moves : {0, 1}) {
            Value::moves = moves;
            EXPECT_THROW(none.signal(Value(9)), std::runtime_error);
            EXPECT_FALSE(none.is_ready()) << "and not locked";
        }
        EXPECT_TRUE(none.set(error_of()));
    }
    EXPECT_EQ(Value::alive, 0);
    auto text = Future<std::string>::create();
    text.signal("text");
    const auto copy = text;
    EXPECT_EQ(std::move(text).get(), "text");
    EXPECT_EQ(copy.get(), "text") << "a value that can be copied stays";
}

TEST(Future, TellsObserversOnceInTheirOrder) {
    std::string diary;
    {
        const auto future = Future<void>::create();
        RefCountPtr<Observer> second(new Observer(diary, "b"));
        future.add_observer(RefCountPtr<Observer>(new Observer(diary, "a")));
        EXPECT_TRUE(future.add_observer(second));
        EXPECT_FALSE(future.add_observer(second) || future.add_observer(second.get()));
        future.add_observer(RefCountPtr<Observer>(new Observer(diary, "c")));
        EXPECT_TRUE(future.remove_observer(second.get()));
        EXPECT_FALSE(future.remove_observer(second.get()));
        EXPECT_TRUE(future.add_observer(second));
        EXPECT_TRUE(future.set(error_of("-")));
        EXPECT_EQ(diary, "a-c-b-~a~c") << "and are forgotten";
        EXPECT_FALSE(future.remove_observer(second.get()) || future.signal());
        EXPECT_TRUE(future.add_observer(second)) << "at once";
        EXPECT_EQ(diary, "a-c-b-~a~cb-");
        diary.clear();
    }
    EXPECT_EQ(diary, "~b");

    // Pending ones let their observers go.
    diary.clear();
    Future<int>::create().add_observer(RefCountPtr<Observer>(new Observer(diary)));
    EXPECT_EQ(diary, "~o");
}

TEST(Future, IsNotHeldUpByItsObservers) {
    std::string diary;
    std::vector<Future<void>> handles = {Future<void>::create()};
    const RefCountPtr<impl::FutureImpl<void>> impl = handles.back().impl();
    RefCountPtr<Observer> a(new Observer(diary, "a")), b(new Observer(diary, "b"));
    a->throws = b->throws = true;
    b->dropped = &handles;
    b->watched = impl;
    for (auto* observer : {&a, &b}) {
        impl->add_observer({observer->get(), *observer});
        observer->clear();
    }
    EXPECT_EQ(tarv_test::raised_what([&] { impl->signal(); }), "a") << "the first one's";
    EXPECT_EQ(diary, "a+b+~a~b") << "pending while they are told";
    EXPECT_TRUE(impl->has_value());

    // The last handle, dropped by an observer while the signaller has none of its own.
    std::string second_diary;
    handles.push_back(Future<void>::create());
    RefCountPtr<Observer> dropper(new Observer(second_diary));
    dropper->dropped = &handles;
    handles.back().add_observer(dropper);
    EXPECT_TRUE(handles.back().impl().get()->signal());
    EXPECT_EQ(second_diary, "o+");

    // One that comes too late, and drops the last handle before it looks at the error.
    handles.push_back(Future<void>::create());
    handles.back().set(error_of("late"));
    dropper->drops_first = true;
    handles.back().add_observer(dropper);
    EXPECT_EQ(second_diary, "o+olate");
}

TEST(Future, CostsOneAllocationAndNoHandle) {
    const unsigned handles = tarv_test::open_handles();
    constexpr int count = 1'000'000;
    std::vector<Future<void>> futures;
    futures.reserve(count);
    tarv_test::AllocationWatch watch;
    while (futures.size() != count) {
        futures.push_back(Future<void>::create());
        EXPECT_FALSE(futures.back().wait(AbsoluteTime()));
    }
    EXPECT_EQ(watch.allocations(), count);
    EXPECT_EQ(tarv_test::open_handles(), handles);
    futures.clear();
    EXPECT_EQ(watch.live(), 0);

    const auto waited_for = Future<void>::create();
    EXPECT_FALSE(waited_for.wait(RelativeTime::milliseconds(1)));
    EXPECT_EQ(tarv_test::open_handles(), handles);
}

TEST(Future, WaitsNoLongerThanItShould) {
    using Clock = std::chrono::steady_clock;
    const auto future = Future<void>::create();
    for (const bool absolute : {false, true}) {
        const RelativeTime limit = RelativeTime::microseconds(20'500);
        const auto start = Clock::now();
        EXPECT_FALSE(absolute ? future.wait(AbsoluteTime::now() + limit) : future.wait(limit));
        EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(20));
    }
    for (const RelativeTime& time :
         {RelativeTime(), RelativeTime::nanoseconds(-1), RelativeTime::nanoseconds(INT64_MIN)}) {
        EXPECT_FALSE(future.wait(time)) << time.as_nsec();
        EXPECT_FALSE(future.wait(AbsoluteTime(time))) << time.as_nsec();
    }

    tarv_test::ScopedCalls calls(impl::address_wait_calls);
    static std::vector<unsigned long> asked;
    asked.clear();
    calls->wait = [](const void*, unsigned, unsigned long milliseconds, unsigned long* error) {
        asked.push_back(milliseconds);
        if (milliseconds == 1) Sleep(1);
        *error = asked.size() % 2 != 0 ? ERROR_TIMEOUT : ERROR_INVALID_HANDLE;
        return false;
    };
    // A time-out of the system is not believed before the clock confirms it.
    const std::string failure = tarv_test::raised([] {
        throw_errno({"tarvcore::impl::FutureImplBase::wait()", "//tarvcore/future.cpp", 1}, EBADF);
    });
    for (const auto wait : {+[](const Future<void>& f) { f.wait(); },
                            +[](const Future<void>& f) { f.wait(RelativeTime::infinite); },
                            +[](const Future<void>& f) { f.wait(AbsoluteTime::infinite); },
                            +[](const Future<void>& f) { f.wait(RelativeTime::max_time); },
                            +[](const Future<void>& f) { f.wait(AbsoluteTime::max_time); }}) {
        EXPECT_EQ(tarv_test::raised([&] { wait(future); }), failure);
    }
    const unsigned long longest = INFINITE - 1;
    EXPECT_EQ(asked, (std::vector<unsigned long>{INFINITE, INFINITE, INFINITE, INFINITE, INFINITE,
                                                 INFINITE, longest, longest, longest, longest}));
    // Rounded up: half a millisecond is a time to sleep.
    for (int tries = 0; tries < 1000 && asked.size() % 2 == 0; ++tries) {
        EXPECT_FALSE(future.wait(RelativeTime::microseconds(500)));
    }
    EXPECT_EQ(asked.back(), 1u);
}

}  // namespace
