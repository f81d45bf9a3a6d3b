// The table of docs/async.md.  Faults to catch: a kind of control that lets through what it should
// drop, or drops what it should let through; a cancellation that gets lost, or a late signal that
// undoes it; a second signal that goes unseen; a dropped handler whose caller waits for ever;
// misuse that is not caught where it is checked for, or caught where it is none.

#include "tarvcore/result_control.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "tarvcore/impl/dispatched_completion.h"
#include "tarvcore/inner_operation.h"
#include "tarvcore/result_control_kinds.h"
#include "tests/support/child_process.h"
#include "tests/support/raised.h"
//
#include <windows.h>

namespace {

using namespace tarvcore;

ErrorInfo::Ptr error_of(const char* code) {
    return ErrorInfo::create(ErrorCode(code), "", SourceLocation());
}

// The code below "error.tarvcore.", and those of the causes.
std::string codes(const ErrorInfo::Ptr& error) {
    std::string text;
    for (auto record = error; record; record = record->nested()) {
        const std::string code = record->code().as_string();
        text += (text.empty() ? "" : " < ") + code.substr(code.rfind("tarvcore.") + 9);
    }
    return text;
}

template <class Operation>
std::string raised_codes(Operation operation) {
    try {
        operation();
        return {};
    } catch (const ErrorException& e) {
        return "! " + codes(e.error());
    }
}

template <class T>
std::string state_of(const Result<T>& result) {
    if (!result.is_waitable()) return "empty";
    if (!result.is_ready()) return "pending";
    return result.has_value() ? "value" : codes(result.error_info());
}

// A letter an event:
//
//     S E N   the control is signalled: success, an error, a null error
//     h       a handler is made; s e n  it is signalled; d  it is dropped; C  it is cancelled
//     c r     the caller cancels: without a reason, with one
//     x       what the test does in between
//
// The answer: the caller's result, what signals raise, and whether the operation is told to stop.
std::function<void()> in_between;

template <class T, class... Value>
std::string play(const ResultControl<T>& control, const std::string& events, Value... value) {
    Result<T> result;
    RefCountPtr<AsyncResult<T>> handler;
    const std::map<char, std::function<void()>> actions = {
        {'S', [&] { result = control.signal_result(value...); }},
        {'E', [&] { result = control.signal_error(error_of("error.tarvcore.E")); }},
        {'N', [&] { result = control.signal_error({}); }},
        {'h',
         [&] {
             handler = control.create_async_handler();
             result = handler->get_result();
         }},
        {'s', [&] { handler->on_async_result_success(value...); }},
        {'e', [&] { handler->on_async_result_error(error_of("error.tarvcore.e")); }},
        {'n', [&] { handler->on_async_result_error({}); }},
        {'d', [&] { handler.clear(); }},
        {'C', [&] { handler->cancel(true, {}); }},
        {'c', [&] { result.cancel(false, {}); }},
        {'r', [&] { result.cancel(false, error_of("error.tarvcore.reason")); }},
        {'x', in_between},
    };
    std::string trouble;
    for (const char event : events) {
        const std::string raised = raised_codes(actions.at(event));
        if (!raised.empty()) trouble += ' ' + raised;
    }
    const bool stop = handler ? handler->cancelled() : control.is_cancelled();
    return state_of(result) + trouble + (stop ? " stop" : "");
}

// What comes of each of some events; of controls without a value, and with one.
#define EXPECT_PLAYS(control, expected, ...)                            \
    for (const char* events : {__VA_ARGS__}) {                          \
        EXPECT_EQ(play(control<void>(), events), expected) << events;   \
        EXPECT_EQ(play(control<int>(), events, 7), expected) << events; \
    }

TEST(ResultControl, DecidesWhatTheCallerGets) {
    EXPECT_PLAYS(result_ignored, "empty", "S", "E", "hd");
    EXPECT_PLAYS(result_ignored, "empty ! result.badParameter", "N", "hn");
    EXPECT_PLAYS(result_ignored_if_async, "value", "S");
    EXPECT_PLAYS(result_ignored_if_async, "E", "E");
    EXPECT_PLAYS(result_ignored_if_async, "empty", "hd");
    EXPECT_PLAYS(result_ignored_if_async, "empty ! result.badParameter", "N");
    EXPECT_PLAYS(result_error_if_async, "value", "S");
    EXPECT_PLAYS(result_error_if_async, "E", "E");
    EXPECT_PLAYS(result_error_if_async, "result.invalidAsynchrony", "hd");
    EXPECT_PLAYS(result_error_if_async, "empty ! result.badParameter", "N");
    EXPECT_PLAYS(result_cancelled, "empty stop", "S", "E", "hd");
    EXPECT_PLAYS(result_cancelled, "empty ! result.badParameter stop", "N");
    // What comes later reaches only those who wait for it.
    for (const char* later : {"h", "hs", "he", "hss", "hse", "hes", "hcs", "hsc", "hC"}) {
        EXPECT_PLAYS(result_ignored, "empty", later);
        EXPECT_PLAYS(result_ignored_if_async, "empty", later);
        EXPECT_PLAYS(result_error_if_async, "result.invalidAsynchrony stop", later);
        EXPECT_PLAYS(result_cancelled, "empty stop", later);
    }
    EXPECT_EQ(play(result_ignored().if_not_ready(), "S"), "value");
    EXPECT_EQ(play(result_ignored<int>().if_not_ready(), "h", 7), "empty");

    EXPECT_PLAYS(result_future, "value", "S", "SS", "SE", "hs", "hsd", "hsc");
    EXPECT_PLAYS(result_future, "value ! result.redundantSignal", "hss", "hscs");
    EXPECT_PLAYS(result_future, "value ! result.redundantSignal < e", "hse");
    EXPECT_PLAYS(result_future, "E", "E", "EE", "ES");
    EXPECT_PLAYS(result_future, "e", "he", "hec");
    EXPECT_PLAYS(result_future, "e ! result.redundantSignal < e", "hes", "hee");
    EXPECT_PLAYS(result_future, "empty ! future.nullError", "N");
    EXPECT_PLAYS(result_future, "pending", "h");
    EXPECT_PLAYS(result_future, "pending ! result.badParameter", "hn");
    EXPECT_PLAYS(result_future, "result.notSignaled", "hd");
    EXPECT_PLAYS(result_future, "result.cancelled stop", "hc", "hC", "hcs", "hce", "hcss", "hcd",
                 "hcr");
    EXPECT_PLAYS(result_future, "result.cancelled < reason stop", "hr");
    EXPECT_PLAYS(result_future, "result.cancelled ! result.badParameter stop", "hcn");
}

TEST(ResultControl, SaysWhetherItsValueIsLookedAt) {
    EXPECT_TRUE(result_future().is_ignored() && result_ignored_if_async().is_ignored());
    EXPECT_TRUE(result_future().create_async_handler()->ignored()) << "there is none";
    EXPECT_FALSE(result_future<int>().is_ignored() || result_ignored_if_async<int>().is_ignored());
    EXPECT_FALSE(result_future<int>().create_async_handler()->ignored());
    EXPECT_TRUE(result_ignored<int>().is_ignored() && result_cancelled<int>().is_ignored());
    EXPECT_TRUE(result_error_if_async<int>().create_async_handler()->ignored());
    EXPECT_TRUE(result_ignored<int>().create_async_handler()->ignored());
    EXPECT_TRUE(result_cancelled<int>().create_async_handler()->ignored());
    const auto is_inner_one_ignored = []<class T>(T*) {
        bool ignored = false;
        invoke_inner<T>(
            result_ignored().create_async_handler(),
            [&](const ResultControl<T>& control) {
                ignored = control.create_async_handler()->ignored();
            },
            [](auto&&...) {});
        return ignored;
    };
    EXPECT_TRUE(is_inner_one_ignored(static_cast<void*>(nullptr)));
    EXPECT_FALSE(is_inner_one_ignored(static_cast<int*>(nullptr)));
    EXPECT_EQ(std::string(result_future<std::string>().signal_result("value").get()), "value");
}

TEST(ResultControl, IsKnownToItsFuture) {
    const auto future = Future<int>::create();
    const auto control = result_future(future);
    EXPECT_EQ(control.future(), future);
    const RefCountPtr<AsyncResult<int>> handler = control.create_async_handler();
    EXPECT_FALSE(control.is_cancelled() || handler->cancelled());
    handler->get_result().cancel(false, {});
    EXPECT_TRUE(control.is_cancelled() && handler->cancelled());
}

// A handler passed on as a control takes what happens to the inner operation for its own.
TEST(AsyncHandlerAdapterControl, PassesAHandlerOn) {
    const struct {
        const char* events;  // at the adapter
        const char* inner;
        const char* outer;
    } rows[] = {
        {"S", "empty", "value"},
        {"E", "empty", "E"},
        {"N", "empty ! result.badParameter", "pending"},
        {"h", "pending", "pending"},
        {"hs", "value", "value"},
        {"he", "e", "e"},
        {"hC", "result.cancelled stop", "result.cancelled stop"},
        {"SS", "empty ! result.redundantSignal", "value"},
    };
    for (const auto& row : rows) {
        const auto handler = result_future().create_async_handler();
        const Result<void> outer = handler->get_result();
        EXPECT_EQ(play(handler->as_control(), row.events), row.inner) << row.events;
        EXPECT_EQ(state_of(outer) + (handler->cancelled() ? " stop" : ""), row.outer) << row.events;
    }
    const auto control = result_future<int>();
    const AsyncHandlerAdapterControl<int> adapter(control);
    const AsyncHandlerAdapterControl<int> copy = adapter;
    const RefCountPtr<AsyncResult<int>>& handler = copy;
    EXPECT_FALSE(copy.is_ignored() || copy.is_cancelled());
    adapter.signal_result(7);
    EXPECT_EQ(handler->get_result().get(), 7);
}

// Its owner is told of the end first.
TEST(AsyncResult, MayBeDroppedWhileItsFutureIsCompleted) {
    struct Owner final : IFutureObserverBase {
        void on_future_error(const ErrorInfo::Ptr&) override { handler.clear(); }
        void on_future_success() override { handler.clear(); }

        RefCountPtr<AsyncResult<void>> handler;
    } owner;
    const auto control = result_future();
    owner.handler = control.create_async_handler();
    control.future().add_observer(&owner);
    const Result<void> result = owner.handler->get_result();
    result.cancel(false, {});
    EXPECT_TRUE(owner.handler.is_null());
    EXPECT_EQ(state_of(result), "result.cancelled");
}

TEST(DispatchedCompletion, ArrivesAsItWasSent) {
    const struct {
        impl::DispatchedCompletion<void> completion;
        const char* expected;
    } rows[] = {{nil, "value"}, {error_of("error.tarvcore.E"), "E"}};
    for (const auto& row : rows) {
        const auto handler = result_future().create_async_handler();
        const auto copy = row.completion;
        copy.signal(*handler);
        EXPECT_EQ(state_of(handler->get_result()), row.expected);
    }
    impl::DispatchedCompletion<int> completions[] = {7, error_of("error.tarvcore.E")};
    const char* const expected[] = {"value", "E"};
    for (auto& completion : completions) {
        const auto handler = result_future<int>().create_async_handler();
        completion.signal(*handler);
        const Result<int> result = handler->get_result();
        EXPECT_EQ(state_of(result), expected[&completion - completions]);
        EXPECT_TRUE(result.has_error() || result.get() == 7);
    }
    EXPECT_EQ(&impl::DispatchedCompletion<void>::value, &nil);
}

// The outer operation is cancelled at "x".
TEST(InnerOperation, EndsInTheOuterOne) {
    const struct {
        char then;  // v: goes on with the value; t, u: throws, before and after it signals
        std::vector<std::string> plays;
        const char* inner;
        const char* outer;
    } rows[] = {
        {'v', {"S", "hs"}, "empty", "value"},
        {'v', {"E"}, "empty", "E"},
        {'v', {"he"}, "empty", "e"},
        {'v', {"NS", "hns"}, "empty ! result.badParameter", "value"},
        {'v', {"hd", ""}, "empty", "result.notSignaled"},
        {'v', {"SS", "hss"}, "empty ! result.redundantSignal", "value"},
        {'v', {"hEs"}, "empty ! result.redundantSignal", "E"},
        {'v', {"hse"}, "empty ! result.redundantSignal < e", "value"},
        {'t', {"S", "hs"}, "empty", "T"},
        {'u', {"hs"}, "empty ! result.redundantSignal < T", "value"},
        {'-', {"hxs", "hxe", "hxss", "hxee", "hxd", "xS", "hC"}, "empty stop", "result.cancelled"},
    };
    for (const auto& row : rows) {
        for (const std::string& events : row.plays) {
            SCOPED_TRACE(events + ' ' + row.then);
            const auto outer = result_future().create_async_handler();
            const Result<void> result = outer->get_result();
            in_between = [&] { result.cancel(false, {}); };
            invoke_inner<int>(
                outer,
                [&](const ResultControl<int>& control) {
                    EXPECT_EQ(play(control, events, 7), row.inner);
                },
                [&](const RefCountPtr<AsyncResult<void>>& handler, int value) {
                    EXPECT_EQ(value, 7);
                    EXPECT_NE(row.then, '-');
                    if (row.then != 't') handler->on_async_result_success();
                    if (row.then != 'v') throw_error(error_of("error.tarvcore.T"));
                });
            EXPECT_EQ(state_of(result), row.outer);
        }
    }

    // A handler that only says that it was cancelled sees the error, before and after the start.
    struct Outer : AsyncResult<void> {
        Outer() : AsyncResult<void>(result_ignored()) {}
        void cancel(bool, const ErrorInfo::Ptr&) const override {}
        bool ignored() const override { return true; }
        bool cancelled() const override { return is_cancelled; }
        Result<void> get_result() const override { return {}; }
        void async_error_impl(const ErrorInfo::Ptr& error) override { seen = codes(error); }
        void async_success_impl() override { seen = "value"; }
        bool is_cancelled = false;
        std::string seen;
    };
    const RefCountPtr<Outer> outer(new Outer);
    int starts = 0;
    for (int i = 0; i < 2; ++i) {
        invoke_inner(
            RefCountPtr<AsyncResult<void>>(outer.get()),
            [&](const ResultControl<void>& control) {
                ++starts;
                outer->is_cancelled = true;
                control.create_async_handler()->on_async_result_success();
            },
            [](const auto& handler) { handler->on_async_result_success(); });
        EXPECT_EQ(std::exchange(outer->seen, ""), "result.cancelled.innerOperation");
    }
    EXPECT_EQ(starts, 1);
}

TEST(InnerOperation, TellsThatACallbackLetAnExceptionEscape) {
    const auto outer = result_future().create_async_handler();
    EXPECT_EQ(tarv_test::raised([&] {
                  invoke_inner<int>(
                      outer,
                      [](const ResultControl<int>& control) {
                          control.create_async_handler()->on_async_result_success(7);
                      },
                      [](const RefCountPtr<AsyncResult<void>>& handler, int) {
                          handler->on_async_result_success();
                          throw_error(error_of("error.tarvcore.T"));
                      });
              }),
              "error.tarvcore.result.redundantSignal A success callback PROBABLY allowed an "
              "exception to escape. [] tarvcore:impl::raise_redundant_signal_error() "
              "//tarvcore/result.cpp\n< error.tarvcore.T");
}

// What an observer of the outer operation raises is none of its outcomes.
TEST(InnerOperation, LetsErrorsOfOthersPass) {
    struct Raiser : RefCounted<AtomicRefCount>, IFutureObserverBase {
        void on_future_error(const ErrorInfo::Ptr&) override {
            throw_error(error_of("error.tarvcore.O"));
        }
        void on_future_success() override {}
    };
    const struct {
        const char* events;  // of the inner operation, whose `then` throws
        const char* inner;
        const char* outer;
    } rows[] = {
        {"S", "empty ! O", "T"},
        {"E", "empty ! O", "E"},
        {"", "empty", "result.notSignaled"},
    };
    for (const auto& row : rows) {
        const auto future = Future<void>::create();
        future.add_observer(RefCountPtr(new Raiser));
        const auto outer = result_future(future).create_async_handler();
        invoke_inner<int>(
            outer,
            [&](const ResultControl<int>& control) {
                EXPECT_EQ(play(control, row.events, 7), row.inner) << row.events;
            },
            [](const auto&, int) { throw_error(error_of("error.tarvcore.T")); });
        EXPECT_EQ(state_of(outer->get_result()), row.outer) << row.events;
    }
}

TEST(ResultControl, DestroysWhatItHasBuilt) {
    static std::string diary;
    struct Control : impl::ResultControlIgnoredBase<void> {
        struct Object : Auxiliary {
            explicit Object(char c) : name(c) {}
            ~Object() override { diary += name; }
            char name;
        };
        explicit Control(char name) { emplace_auxiliary<Object>(name); }
        Result<void> signal_result() const override { return {}; }
    };
    {
        const Control a('a');
        const Control b('b');
        diary += '-';
    }
    EXPECT_EQ(diary, "-ba");
}

TEST(SignallingChecks, FollowTheEnvironment) {
    const struct {
        const wchar_t* value;  // null: not set
        bool on;
    } rows[] = {{nullptr, false}, {L"0", false},  {L"no", false}, {L"N", false}, {L"false", false},
                {L"Fx", false},   {L"yes", true}, {L" 0", true},  {L"", true},   {L"\xD800", true}};
    for (const auto& row : rows) {
        SetEnvironmentVariableW(L"TARVCORE_CHECK_ASYNC_RESULT_SIGNALING", row.value);
        const auto outcome = tarv_test::run_program(L"result_control_child.exe", {});
        EXPECT_EQ(outcome.status, 0u);
        EXPECT_EQ(outcome.errors, "");
        const std::string refusal =
            row.on ? "error.tarvcore.result.invalidAsyncSignalScope Attempt to "
                     "use an AsyncResult object to signal a result "
                     "synchronously. [] "
                     "tarvcore::ResultControlBase::validate_async_signal() "
                     "//tarvcore/result_control.cpp"
                   : "passes";
        EXPECT_EQ(outcome.output, "within the call: " + refusal +
                                      "\nfrom another thread: passes\n"
                                      "through the control: passes\n"
                                      "dropped by another thread: passes\n"
                                      "in all orders: passes\n")
            << (row.value ? "set" : "not set");
    }
    SetEnvironmentVariableW(L"TARVCORE_CHECK_ASYNC_RESULT_SIGNALING", nullptr);
}

}  // namespace
