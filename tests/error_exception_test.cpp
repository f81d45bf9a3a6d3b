// Faults to catch: a record lost, copied or freed twice on its way; the text cached across copies
// or assignments; nothing thrown where something must be; the wrong class of exception recognised
// first.

#include "tarvcore/error_exception.h"

#include <gtest/gtest.h>

#include <functional>
#include <ios>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>

#include "tarvcore/error_builder.h"
#include "tarvcore/error_composer.h"
#include "tarvcore/exception_types.h"
#include "tests/support/allocations.h"
#include "tests/support/pattern.h"
#include "tests/support/raised.h"

TARVCORE_SOURCE_FILE("$Id: //tests/error_exception_test.cpp#1 $");

namespace {

using namespace tarvcore;
using Ptr = ErrorInfo::Ptr;

const SourceLocation here("here()", source_file_id, 7);
const ErrorCode code("error.test.code", true);
const std::string place = "here() //tests/error_exception_test.cpp\n< error.";

// The record that an operation throws; null if it throws none.
template <class Operation>
Ptr thrown_by(Operation operation) {
    try {
        operation();
    } catch (const ErrorException& e) {
        return e.error();
    }
    return {};
}

TEST(ErrorException, CarriesTheRecord) {
    const Ptr record = ErrorInfo::create(code, "message", here);
    EXPECT_EQ(thrown_by([&] { throw_error(record); }).get(), record.get());
    EXPECT_EQ(thrown_by([&] { throw_if_error(record); }).get(), record.get());
    EXPECT_EQ(thrown_by([&] { ErrorException(record).rethrow(); }).get(), record.get());
    EXPECT_NO_THROW(throw_if_error(nullptr));
    EXPECT_TRUE(record->has_unique_ref());

    const ErrorException e(record);
    EXPECT_TRUE(e.matches("error.test") && !e.matches("error.other"));
    EXPECT_EQ(e.first_matching(ErrorCode("error")).get(), record.get());
}

TEST(ErrorException, ReplacesANullRecord) {
    const Ptr record = ErrorException(nullptr).error();
    EXPECT_EQ(tarv_test::raised([&] { throw_error(record); }),
              "error.tarvcore Unknown error (NULL ErrorInfo pointer) [] "
              "tarvcore::ErrorException::ErrorException() //tarvcore/error_exception.cpp");
    EXPECT_EQ(record->location().line(), 43u);
}

TEST(ErrorException, BuildsItsTextOnceForEachObject) {
    const ErrorException e(ErrorInfo::create(ErrorCode("error.x"), "m", here));
    const char* const text = e.what();
    EXPECT_TRUE(std::string(text).starts_with("\nErrorCode:   error.x\nDescription: m"));
    EXPECT_EQ(e.what(), text);
    const ErrorException copy(e);
    EXPECT_STREQ(copy.what(), text);
    EXPECT_NE(copy.what(), text);

    ErrorException assigned(ErrorInfo::create(ErrorCode("error.y"), "m", here));
    EXPECT_NE(std::string(assigned.what()), text);
    assigned = e;
    EXPECT_STREQ(assigned.what(), text);
    assigned = *&assigned;
    EXPECT_STREQ(assigned.what(), text);
}

TEST(ErrorException, HasATextWithoutMemory) {
    const ErrorException e(ErrorInfo::create(code, "message", here));
    tarv_test::AllocationWatch watch;
    std::string_view text;
    for (int n = 0; !text.starts_with("\nErrorCode:"); ++n) {
        watch.fail_from(n);
        text = e.what();
        watch.fail_none();
        ASSERT_TRUE(text == "tarvcore::ErrorException" || text == ErrorException(e.error()).what())
            << text << " with " << n << " allocations";
    }
}

TEST(ErrorException, ThrowingFunctionsPutThePartsInPlace) {
    const Ptr nested = ErrorInfo::create(ErrorCode("error.nested"), "n", here);
    const struct {
        std::function<void()> operation;
        std::string raised;
    } rows[] = {
        {[&] {
             throw_error(code, SourceString("m"), ErrorParams().add("p", 1), here, nested,
                         SourceString("host"));
         },
         "error.test.code m ['p' => \"1\"] " + place + "nested"},
        {[&] { throw_error(code, "m", here, nested); }, "error.test.code m [] " + place + "nested"},
        {[] { throw_errno(here, 13); }, "error.errno.EACCES …"},
        {[&] { throw_errno(here, nested, 13); }, "error.errno.EACCES … " + place + "nested"},
        {[] { throw_winerror(here, 2, false); }, "error.errno.ENOENT …"},
        {[&] { throw_winerror(here, nested, 2, true); },
         "error.errno.ENOENT … " + place + "os.windows.2\n< error.nested"},
        {[] { throw_with_nested_errno(code, "m", here, 10035); },
         "error.test.code m [] " + place + "errno.EAGAIN"},
        {[] { throw_with_nested_errno(code, "m", ErrorParams().add("p", 2), here, 28); },
         "error.test.code m ['p' => \"2\"] " + place + "errno.ENOSPC"},
        {[] { throw_with_nested_winerror(code, "m", here, 5, true); },
         "error.test.code m [] " + place + "errno.EACCES\n< error.os.windows.5"},
        {[] { throw_with_nested_winerror(code, "m", ErrorParams().add("p", 3), here, 5, false); },
         "error.test.code m ['p' => \"3\"] " + place + "errno.EACCES"},
        {[] { throw_with_nested_exception(code, "m", here, std::out_of_range("why")); },
         "error.test.code m [] " + place + "exception.logic_error.out_of_range"},
        {[] {
             throw_with_nested_exception(code, "m", ErrorParams().add("p", 4), here,
                                         std::bad_alloc());
         },
         "error.test.code m ['p' => \"4\"] " + place + "exception.bad_alloc"},
        {[] { throw_error(ErrorInfo::create_with_nested_errno(code, "m", here, 2)); },
         "error.test.code m [] " + place + "errno.ENOENT"},
        {[] {
             throw_error(ErrorInfo::create_with_nested_errno(code, "m", ErrorParams().add("p", 5),
                                                             here, 17));
         },
         "error.test.code m ['p' => \"5\"] " + place + "errno.EEXIST"},
        {[] { impl::raise_embedded_nul_error(); },
         "error.tarvcore.string.embeddedNul String contains embedded NUL character and cannot be "
         "converted to a 'C'-string [] …"},
    };
    for (const auto& row : rows)
        EXPECT_TRUE(tarv_test::agrees(tarv_test::raised(row.operation), row.raised));
    EXPECT_EQ(thrown_by([&] {
                  throw_error(code, "m", {}, here, nested, SourceString("host"));
              })->hostname(),
              "host");
}

TEST(ErrorComposer, MakesStoresAndThrows) {
    ErrorComposer composer("m {@p}");
    composer.param("p", "v").param("q1", 1, "w", 1);
    const Ptr created = composer.create(code, here);
    EXPECT_EQ(created->expanded_message().as_string(), "m v");

    Ptr stored = created;
    ErrorComposer copy(composer);
    copy.create_transfer_with_nested_winerror(&stored, code, here, 1234, false);
    EXPECT_EQ(stored->params().get_value("q", 1), "w");
    EXPECT_TRUE(created->has_unique_ref()) << "the old record was released";

    EXPECT_EQ(tarv_test::raised([&] { composer.create_transfer(nullptr, code, here, stored); }),
              "error.test.code m v ['p' => \"v\", 'q' => \"w\"] " + place +
                  "test.code\n< error.errno.EINVAL\n< error.os.windows.1234");
    ErrorComposer other("m");
    other.message("other").params({});
    EXPECT_EQ(tarv_test::raised([&] { other.throw_error(code, here, created); }),
              "error.test.code other [] " + place + "test.code");
}

TEST(ErrorComposer, MakesCausesOfTheSystemsErrorsAndOfExceptions) {
    const std::bad_alloc exception;
    Ptr record;
    const struct {
        std::function<void(ErrorComposer&)> operation;
        std::string cause;
    } rows[] = {
        {[&](ErrorComposer& c) { record = c.create_with_nested_errno(code, here, 16); },
         "errno.EBUSY"},
        {[&](ErrorComposer& c) { record = c.create_with_nested_winerror(code, here, 5, true); },
         "errno.EACCES\n< error.os.windows.5"},
        {[&](ErrorComposer& c) { record = c.create_with_nested_exception(code, here, exception); },
         "exception.bad_alloc"},
        {[&](ErrorComposer& c) { c.create_transfer_with_nested_errno(&record, code, here, 16); },
         "errno.EBUSY"},
        {[&](ErrorComposer& c) {
             c.create_transfer_with_nested_winerror(&record, code, here, 5, false);
         },
         "errno.EACCES"},
        {[&](ErrorComposer& c) {
             c.create_transfer_with_nested_exception(&record, code, here, exception);
         },
         "exception.bad_alloc"},
        {[&](ErrorComposer& c) { c.throw_with_nested_errno(code, here, 16); }, "errno.EBUSY"},
        {[&](ErrorComposer& c) { c.throw_with_nested_winerror(code, here, 5, false); },
         "errno.EACCES"},
        {[&](ErrorComposer& c) { c.throw_with_nested_exception(code, here, exception); },
         "exception.bad_alloc"},
    };
    for (const auto& row : rows) {
        ErrorComposer composer("m {@p}", ErrorParams().add("p", 1));
        const auto raised = tarv_test::raised([&] {
            row.operation(composer);
            throw_error(record);
        });
        EXPECT_EQ(raised, "error.test.code m 1 ['p' => \"1\"] " + place + row.cause);
        // Only to make a record copies.
        const bool is_copied = &row - rows < 3;
        EXPECT_EQ(composer.message(), is_copied ? "m {@p}" : "");
        EXPECT_EQ(composer.params().empty(), !is_copied);
    }
}

TEST(ErrorBuilder, TurnsItsTextIntoATemplate) {
    ErrorBuilder builder;
    builder << "line " << 12 << " {@nativeCode} {@other}";
    const Ptr plain = builder.create(code, here);
    EXPECT_EQ(plain->message(), "line 12 {@nativeCode} {@other}");
    EXPECT_TRUE(builder.create(code, here, 0L)->params().empty());
    EXPECT_EQ(
        tarv_test::raised([&] { builder.throw_error(code, here, -5L, plain); }),
        "error.test.code line 12 -5 {@other} ['nativeCode' => \"-5\"] " + place + "test.code");
    EXPECT_EQ(tarv_test::raised([&] { builder.throw_error(code, here, plain); }),
              "error.test.code line 12 {@nativeCode} {@other} [] " + place + "test.code");
    EXPECT_EQ(tarv_test::raised([&] { builder.throw_with_nested_errno(code, here, 10035); }),
              "error.test.code line 12 {@nativeCode} {@other} [] " + place + "errno.EAGAIN");
}

struct Unknown : std::exception {
    const char* what() const noexcept override { return "unknown"; }
};

TEST(FromException, KnowsTheMostDerivedStandardClass) {
    const auto code_of = [](const std::exception& e) {
        return ErrorInfo::from_exception(e, here)->code().as_string();
    };
    EXPECT_EQ(code_of(std::bad_alloc()), "error.exception.bad_alloc");
    EXPECT_EQ(code_of(std::bad_array_new_length()), "error.exception.bad_alloc");
    EXPECT_EQ(code_of(std::bad_cast()), "error.exception.bad_cast");
    EXPECT_EQ(code_of(std::domain_error("")), "error.exception.logic_error.domain_error");
    EXPECT_EQ(code_of(std::invalid_argument("")), "error.exception.logic_error.invalid_argument");
    EXPECT_EQ(code_of(std::length_error("")), "error.exception.logic_error.length_error");
    EXPECT_EQ(code_of(std::out_of_range("")), "error.exception.logic_error.out_of_range");
    EXPECT_EQ(code_of(std::logic_error("")), "error.exception.logic_error");
    EXPECT_EQ(code_of(std::range_error("")), "error.exception.runtime_error.range_error");
    EXPECT_EQ(code_of(std::overflow_error("")), "error.exception.runtime_error.overflow_error");
    EXPECT_EQ(code_of(std::underflow_error("")), "error.exception.runtime_error.underflow_error");
    EXPECT_EQ(code_of(std::ios_base::failure("")), "error.exception.runtime_error");
    EXPECT_EQ(code_of(WeakRefPromoteException()), "error.exception.weakRefPromoteException");
    EXPECT_EQ(code_of(Unknown()), "error.exception");
}

TEST(FromException, NamesTypesAndKeepsRecords) {
    const Ptr unknown = ErrorInfo::from_exception(Unknown(), here);
    EXPECT_EQ(unknown->message(), "unknown");
    EXPECT_EQ(unknown->location(), here);
    EXPECT_EQ(unknown->params().get_value("classname", 9), "(anonymous namespace)::Unknown");

    const BadLexicalCast bad_cast(typeid(const char*), typeid(unsigned long long));
    EXPECT_STREQ(bad_cast.what(), "bad lexical cast");
    const Ptr cast = ErrorInfo::from_exception(bad_cast, here);
    EXPECT_EQ(cast->code(), error::exception_badCast_badLexicalCast);
    EXPECT_EQ(cast->expanded_message().as_string(),
              "Bad lexical cast: Unable to convert value of type 'char const*' to 'unsigned long "
              "long'");

    const Ptr record = ErrorInfo::create(code, "own", here);
    EXPECT_EQ(ErrorInfo::from_exception(ErrorException(record), here).get(), record.get());
}

}  // namespace
