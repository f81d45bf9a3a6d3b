// Faults to catch: an empty result that answers as if there were something; an error copied or
// wrapped on its way; a wait where only a look was asked for; a value copied, or taken from others;
// a text that is not the agreed one.

#include "tarvcore/result.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tarvcore/error_params.h"
#include "tests/support/allocations.h"
#include "tests/support/raised.h"

namespace {

using namespace tarvcore;
using tarv_test::raised;

ErrorInfo::Ptr error_of(const char* message) {
    return ErrorInfo::create(error::tarvcore, message, SourceLocation());
}

TEST(Result, AnswersByItsKind) {
    const ErrorInfo::Ptr error = error_of("bad");
    const auto pending = Future<void>::create();
    const auto good = Future<void>::create();
    const auto bad = Future<void>::create();
    good.signal();
    bad.set(error);
    const struct {
        const char* kind;
        Result<void> result;
        const char* answers;
    } rows[] = {
        {"empty", Result<void>(), ""},
        {"value", impl::create_value_result<void>(), "ready value waitable "},
        {"error", Result<void>(new impl::ErrorResultImpl<void>(error)), "ready error waitable "},
        {"pending", Result<void>(new impl::FutureResultImpl<void>(pending)), "waitable "},
        {"good", Result<void>(new impl::FutureResultImpl<void>(good)), "ready value waitable "},
        {"bad", Result<void>(new impl::FutureResultImpl<void>(bad)), "ready error waitable "},
    };
    for (const auto& [kind, result, answers] : rows) {
        SCOPED_TRACE(kind);
        const std::string has =
            std::string(result.is_ready() ? "ready " : "") + (result.has_value() ? "value " : "") +
            (result.has_error() ? "error " : "") + (result.is_waitable() ? "waitable " : "");
        EXPECT_EQ(has, answers);
        EXPECT_EQ(result.error_info(), result.has_error() ? error : ErrorInfo::Ptr());
        EXPECT_EQ(result.is_waitable() && result.wait(RelativeTime()), result.is_ready());
        const auto record_of = [](auto operation) {
            try {
                operation();
                return ErrorInfo::Ptr();
            } catch (const ErrorException& e) {
                return e.error();
            }
        };
        EXPECT_EQ(record_of([&] { result.throw_if_error(); }), result.error_info());
        if (!result.is_ready()) continue;
        EXPECT_EQ(record_of([&] { result.get(); }), result.error_info()) << "the very record";
    }

    const std::string not_waitable =
        "error.tarvcore.result.notWaitable Operation requiring a waitable object attemped on a "
        "Result which is not waitable. [] tarvcore::impl::raise_not_waitable_error() "
        "//tarvcore/result.cpp";
    const Result<void> empty;
    EXPECT_EQ(raised([&] { empty.get(); }), not_waitable);
    EXPECT_EQ(raised([&] { empty.wait(); }), not_waitable);
    EXPECT_EQ(raised([&] { empty.wait(RelativeTime()); }), not_waitable);
    EXPECT_EQ(raised([&] { Result<int>().get(); }), not_waitable);

    // Only what is pending can be cancelled.
    for (const auto& [kind, result, answers] : rows) {
        result.cancel(false, {});
        EXPECT_EQ(impl::result_was_cancelled(result.error_info()), kind == std::string("pending"));
    }
    EXPECT_FALSE(pending.signal());
}

TEST(Result, HandsItsValueOut) {
    Result<std::string> text(impl::create_value_result<std::string>("text"));
    const Result<std::string> copy = text;
    EXPECT_EQ(&text.get(), &copy.get());

    Result<std::unique_ptr<int>> pointer(
        impl::create_value_result<std::unique_ptr<int>>(std::make_unique<int>(7)));
    const Result<std::unique_ptr<int>> other = pointer;
    EXPECT_EQ(*std::move(pointer).get(), 7);
    EXPECT_EQ(other.get(), nullptr) << "the only one there is";

    Result<std::string> moved(text.transfer());
    EXPECT_FALSE(text.is_waitable());
    text = std::move(moved);
    EXPECT_FALSE(moved.is_waitable());
    EXPECT_TRUE(text.has_value() && text.error_info().is_null());

    const Result<void> first(impl::create_value_result<void>());  // makes what all share
    tarv_test::AllocationWatch watch;
    Result<int>(impl::create_value_result<int>(7)).get();
    EXPECT_EQ(watch.allocations(), 1);
    Result<void>(impl::create_value_result<void>()).get();
    EXPECT_EQ(watch.allocations(), 1) << "a success without a value needs none";
}

TEST(ResultErrors, AreAsAgreed) {
    using namespace tarvcore::impl;
    const auto thrown = [](const ErrorInfo::Ptr& error) {
        return raised([&] { throw_error(error); });
    };
    const ErrorInfo::Ptr reason = error_of("reason");
    const struct {
        std::string is;
        std::string should_be;
    } rows[] = {
        {thrown(create_result_not_signaled_error()),
         "error.tarvcore.result.notSignaled An asynchronous result handler is being destroyed but "
         "the result has not been signaled. [] #none# //tarvcore/result.cpp"},
        {thrown(create_unexpected_asynchrony_error()),
         "error.tarvcore.result.invalidAsynchrony Asynchronous operation initiated with "
         "result_error_if_async() [] #none# //tarvcore/result.cpp"},
        {thrown(create_result_cancel_error({})),
         "error.tarvcore.result.cancelled Operation cancelled [] #none# //tarvcore/result.cpp"},
        {thrown(create_result_cancel_error(reason)),
         "error.tarvcore.result.cancelled Operation cancelled [] "
         "tarvcore:impl::create_result_cancel_error() //tarvcore/result.cpp\n< error.tarvcore"},
        {thrown(ResultInnerInvokerTagBase::sm_outerOperationCancelled),
         "error.tarvcore.result.cancelled.innerOperation The outer operation was cancelled before "
         "the inner operation completed. [] #NONE# //tarvcore/result.cpp"},
        {raised([] { raise_result_failure_null(); }),
         "error.tarvcore.result.badParameter Null ErrorInfo pointer [] "
         "tarvcore::impl::raise_result_failure_null() //tarvcore/result.cpp"},
        {raised([&] { raise_redundant_signal_error(reason, false); }),
         "error.tarvcore.result.redundantSignal A result which had already been signaled, was "
         "signaled again. [] tarvcore:impl::raise_redundant_signal_error() //tarvcore/result.cpp\n"
         "< error.tarvcore"},
        {raised([] { raise_redundant_signal_error({}, true); }),
         "error.tarvcore.result.redundantSignal A success callback PROBABLY allowed an exception "
         "to escape. [] tarvcore:impl::raise_redundant_signal_error() //tarvcore/result.cpp"},
        {raised([] {
             raise_null_parameter_error("name", 0, {"f()", "//file", 1});
         }),
         "error.tarvcore.result.badParameter Invalid 'name' value: 0 ['param' => \"name\", "
         "'value' => \"0\"] f() //file"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.is, row.should_be);
    }
    EXPECT_EQ(create_result_cancel_error({}), create_result_cancel_error({})) << "one for all";
    EXPECT_EQ(create_result_not_signaled_error(), create_result_not_signaled_error());
    EXPECT_EQ(create_result_cancel_error(reason)->nested(), reason);
    EXPECT_FALSE(result_was_cancelled({}) || result_was_cancelled(reason));
    EXPECT_TRUE(result_was_cancelled(ResultInnerInvokerTagBase::sm_outerOperationCancelled));
}

}  // namespace
