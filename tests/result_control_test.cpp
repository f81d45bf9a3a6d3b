// The table of docs/async.md.  Faults to catch: a kind of control that lets through what it should
// drop, or drops what it should let through; a cancellation that gets lost, or a late signal that
// undoes it; a second signal that goes unseen; a dropped handler whose caller waits for ever;
// misuse that is not caught where it is checked for, or caught where it is none.

#include "tarvcore/result_control.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "tarvcore/impl/dispatched_completion.h"
#include "tarvcore/inner_operation.h"
#include "tarvcore/result_control_kinds.h"
#include "tests/support/child_process.h"
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
    std::string trouble;
    for (const char event : events) {
        const std::string raised = raised_codes([&] {
            switch (event) {
                case 'S':
                    result = control.signal_result(value...);
                    break;
                case 'E':
                    result = control.signal_error(error_of("error.tarvcore.E"));
                    break;
                case 'N':
                    result = control.signal_error({});
                    break;
                case 'h':
                    handler = control.create_async_handler();
                    result = handler->get_result();
                    break;
                case 's':
                    handler->on_async_result_success(value...);
                    break;
                case 'e':
                    handler->on_async_result_error(error_of("error.tarvcore.e"));
                    break;
                case 'n':
                    handler->on_async_result_error({});
                    break;
                case 'd':
                    handler.clear();
                    break;
                case 'C':
                    handler->cancel(true, {});
                    break;
                case 'c':
                    result.cancel(false, {});
                    break;
                case 'r':
                    result.cancel(false, error_of("error.tarvcore.reason"));
                    break;
                case 'x':
                    in_between();
                    break;
            }
        });
        if (!raised.empty()) trouble += ' ' + raised;
    }
    const bool stop = handler ? handler->cancelled() : control.is_cancelled();
    return state_of(result) + trouble + (stop ? " stop" : "");
}

// Of controls without a value, and with one.
#define EXPECT_PLAY(control, events, expected)                    \
    EXPECT_EQ(play(control<void>(), events), expected) << events; \
    EXPECT_EQ(play(control<int>(), events, 7), expected) << events

TEST(ResultControl, DecidesWhatTheCallerGets) {
    EXPECT_PLAY(result_ignored, "S", "empty");
    EXPECT_PLAY(result_ignored, "E", "empty");
    EXPECT_PLAY(result_ignored, "N", "empty ! result.badParameter");
    EXPECT_PLAY(result_ignored_if_async, "S", "value");
    EXPECT_PLAY(result_ignored_if_async, "E", "E");
    EXPECT_PLAY(result_ignored_if_async, "N", "empty ! result.badParameter");
    EXPECT_EQ(play(result_ignored().if_not_ready(), "S"), "value");
    EXPECT_EQ(play(result_ignored<int>().if_not_ready(), "h", 7), "empty");
    EXPECT_PLAY(result_error_if_async, "S", "value");
    EXPECT_PLAY(result_error_if_async, "E", "E");
    EXPECT_PLAY(result_error_if_async, "N", "empty ! result.badParameter");
    EXPECT_PLAY(result_cancelled, "S", "empty stop");
    EXPECT_PLAY(result_cancelled, "E", "empty stop");
    EXPECT_PLAY(result_cancelled, "N", "empty ! result.badParameter stop");

    // What comes later reaches only those who wait for it.
    for (const char* events : {"h", "hs", "he", "hss", "hse", "hes", "hcs", "hsc", "hC", "hd"}) {
        const bool dropped = std::string(events) == "hd";
        EXPECT_PLAY(result_ignored, events, "empty");
        EXPECT_PLAY(result_ignored_if_async, events, "empty");
        EXPECT_PLAY(result_error_if_async, events,
                    dropped ? "result.invalidAsynchrony" : "result.invalidAsynchrony stop");
        EXPECT_PLAY(result_cancelled, events, "empty stop");
    }
    EXPECT_PLAY(result_ignored, "hn", "empty ! result.badParameter");

    const struct {
        const char* events;
        const char* expected;
    } waiting_rows[] = {
        {"S", "value"},
        {"E", "E"},
        {"N", "empty ! future.nullError"},
        {"SS", "value"},
        {"SE", "value"},
        {"EE", "E"},
        {"ES", "E"},
        {"h", "pending"},
        {"hs", "value"},
        {"he", "e"},
        {"hn", "pending ! result.badParameter"},
        {"hd", "result.notSignaled"},
        {"hsd", "value"},
        {"hss", "value ! result.redundantSignal"},
        {"hse", "value ! result.redundantSignal < e"},
        {"hes", "e ! result.redundantSignal < e"},
        {"hee", "e ! result.redundantSignal < e"},
        {"hc", "result.cancelled stop"},
        {"hr", "result.cancelled < reason stop"},
        {"hC", "result.cancelled stop"},
        {"hcs", "result.cancelled stop"},
        {"hce", "result.cancelled stop"},
        {"hcss", "result.cancelled stop"},
        {"hcn", "result.cancelled ! result.badParameter stop"},
        {"hcd", "result.cancelled stop"},
        {"hcr", "result.cancelled stop"},
        {"hsc", "value"},
        {"hscs", "value ! result.redundantSignal"},
        {"hec", "e"},
    };
    for (const auto& row : waiting_rows) {
        EXPECT_PLAY(result_future, row.events, row.expected);
    }
}

TEST(ResultControl, SaysWhetherItsValueIsLookedAt) {
    EXPECT_TRUE(result_future().is_ignored() && result_ignored_if_async().is_ignored());
    EXPECT_TRUE(result_future().create_async_handler()->ignored()) << "there is none";
    EXPECT_FALSE(result_future<int>().is_ignored() || result_ignored_if_async<int>().is_ignored());
    EXPECT_FALSE(result_future<int>().create_async_handler()->ignored());
    EXPECT_TRUE(result_ignored<int>().is_ignored() && result_cancelled<int>().is_ignored());
    EXPECT_TRUE(result_error_if_async<int>().create_async_handler()->ignored());
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
    const auto handler = result_future<int>().create_async_handler();
    impl::DispatchedCompletion<int>(7).signal(*handler);
    EXPECT_EQ(handler->get_result().get(), 7);
    EXPECT_EQ(&impl::DispatchedCompletion<void>::value, &nil);
}

// The outer operation is cancelled at "x".
TEST(InnerOperation, EndsInTheOuterOne) {
    const struct {
        const char* events;
        char then;  // v: goes on with the value; t, u: throws, before and after it signals
        const char* inner;
        const char* outer;
    } rows[] = {
        {"S", 'v', "empty", "value"},
        {"E", 'v', "empty", "E"},
        {"NS", 'v', "empty ! result.badParameter", "value"},
        {"hs", 'v', "empty", "value"},
        {"he", 'v', "empty", "e"},
        {"hns", 'v', "empty ! result.badParameter", "value"},
        {"hd", 'v', "empty", "result.notSignaled"},
        {"", 'v', "empty", "result.notSignaled"},
        {"SS", 'v', "empty ! result.redundantSignal", "value"},
        {"hEs", 'v', "empty ! result.redundantSignal", "E"},
        {"hss", 'v', "empty ! result.redundantSignal", "value"},
        {"hse", 'v', "empty ! result.redundantSignal < e", "value"},
        {"hs", 't', "empty", "T"},
        {"S", 't', "empty", "T"},
        {"hs", 'u', "empty ! result.redundantSignal < T", "value"},
        {"hxs", '-', "empty stop", "result.cancelled"},
        {"hxe", '-', "empty stop", "result.cancelled"},
        {"hxss", '-', "empty stop", "result.cancelled"},
        {"hxd", '-', "empty stop", "result.cancelled"},
        {"xS", '-', "empty stop", "result.cancelled"},
        {"hC", '-', "empty stop", "result.cancelled"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.events) + ' ' + row.then);
        const auto outer = result_future().create_async_handler();
        const Result<void> result = outer->get_result();
        in_between = [&] { result.cancel(false, {}); };
        invoke_inner<int>(
            outer,
            [&](const ResultControl<int>& control) {
                EXPECT_EQ(play(control, row.events, 7), row.inner);
            },
            [&](const RefCountPtr<AsyncResult<void>>& handler, int value) {
                EXPECT_EQ(value, 7);
                EXPECT_NE(row.then, '-');
                if (row.then != 't') handler->on_async_result_success();
                if (row.then != 'v') throw_error(error_of("error.tarvcore.T"));
            });
        EXPECT_EQ(state_of(result), row.outer);
    }
    const auto cancelled = result_cancelled().create_async_handler();
    invoke_inner<int>(
        cancelled, [](const auto&) { ADD_FAILURE() << "started"; }, [](const auto&, int) {});

    // What others find of it: a handler that only says that it was cancelled sees the inner error.
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
    invoke_inner(
        RefCountPtr<AsyncResult<void>>(outer.get()),
        [&](const ResultControl<void>& control) {
            outer->is_cancelled = true;
            control.create_async_handler()->on_async_result_success();
        },
        [](const auto& handler) { handler->on_async_result_success(); });
    EXPECT_EQ(outer->seen, "result.cancelled.innerOperation");
}

TEST(ResultControl, DestroysWhatItHasBuilt) {
    static std::string diary;
    struct Control : ResultControlIgnoredIfAsync<void>::ResultControl {
        struct Object : Auxiliary {
            explicit Object(char c) : name(c) {}
            ~Object() override { diary += name; }
            char name;
        };
        explicit Control(char name) { emplace_auxiliary<Object>(name); }
        Result<void> signal_result() const override { return {}; }
        Result<void> signal_error(const ErrorInfo::Ptr&) const override { return {}; }
        RefCountPtr<AsyncResult<void>> create_async_handler() const override { return {}; }
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
    } rows[] = {{nullptr, false},  {L"0", false},     {L"no", false}, {L"N", false},
                {L"false", false}, {L"FALSE", false}, {L"Fx", false}, {L"1", true},
                {L"yes", true},    {L"true", true},   {L" 0", true},  {L"", true},
                {L"\xD800", true}};
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
        std::string expected;
        for (const char* place : {"within the call, success", "within the call, error",
                                  "within an outer call", "with another control unlinked before"}) {
            expected += std::string(place) + ": " + refusal + '\n';
        }
        for (const char* place :
             {"from another thread", "through the control", "after the call", "after all orders"}) {
            expected += std::string(place) + ": passes\n";
        }
        EXPECT_EQ(outcome.output, expected) << (row.value ? "set" : "not set");
    }
    SetEnvironmentVariableW(L"TARVCORE_CHECK_ASYNC_RESULT_SIGNALING", nullptr);
}

}  // namespace
