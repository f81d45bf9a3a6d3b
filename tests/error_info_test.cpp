// Faults to catch: parts mixed up between the overloads; a test that looks at the wrong record of a
// chain; equality made symmetric; chains that recurse or take quadratic time; leaks.

#include "tarvcore/error_info.h"

#include <gtest/gtest.h>

#include <sstream>
#include <streambuf>
#include <string>
#include <utility>

#include "tarvcore/error_code_constants.h"
#include "tarvcore/error_exception.h"
#include "tests/support/allocations.h"
#include "tests/support/raised.h"

TARVCORE_SOURCE_FILE("$Id: //tests/error_info_test.cpp#1 $");

namespace {

using namespace tarvcore;
using Ptr = ErrorInfo::Ptr;

const SourceLocation here("here()", source_file_id, 7);

Ptr record_of(const char* code, Ptr nested = {}) {
    return ErrorInfo::create(ErrorCode(code), "m", here, std::move(nested));
}

TEST(ErrorInfo, CopiesNeitherLiteralsNorTheHostsName) {
    static const char literal[] = "literal {@p}";
    const Ptr record =
        ErrorInfo::create(error::tarvcore_uuid, literal, ErrorParams().add("p", "value"), here);
    EXPECT_EQ(record->message().text(), literal);
    EXPECT_EQ(record->expanded_message(2).as_string(), "literal va...");
    EXPECT_EQ(record->hostname().text(), record_of("error.x")->hostname().text());
    EXPECT_GT(record->hostname().size(), 0u);
}

TEST(ErrorInfo, TakesTransferredPartsWithoutCopying) {
    ErrorCode code("error.dynamic");
    SourceString message("dynamic message");
    ErrorParams params;
    params.add("p", "a value that does not fit into a small buffer");
    SourceLocation location(here);
    Ptr nested = record_of("error.cause");
    SourceString hostname("dynamic host");
    const char* const message_text = message.text();

    tarv_test::AllocationWatch watch;
    const Ptr record =
        ErrorInfo::create(code.transfer(), message.transfer(), params.transfer(),
                          location.transfer(), nested.transfer(), hostname.transfer());
    EXPECT_EQ(watch.allocations(), 1) << "the record itself";
    EXPECT_EQ(record->message().text(), message_text);
    EXPECT_TRUE(code.empty() && message.empty() && params.empty() && location.empty() &&
                nested.is_null() && hostname.empty());
    EXPECT_TRUE(record->nested()->has_unique_ref());
}

TEST(ErrorInfo, FindsTheFirstRecordOfAFamily) {
    const Ptr inner = record_of("error.os.windows.5");
    const Ptr middle = record_of("error.os", inner);
    const Ptr outer = record_of("error.tarvcore.uuid", middle);
    EXPECT_FALSE(outer->matches("error.os"));
    EXPECT_TRUE(outer->any_matches("error.os") && outer->any_matches(ErrorCode("error.tarvcore")));
    EXPECT_TRUE(outer->any_matches("error.os or so", 8));
    EXPECT_TRUE(outer->any_matches(SourceString("error.os.windows")));
    EXPECT_FALSE(inner->any_matches(SourceString("error.tarvcore")));
    EXPECT_FALSE(inner->any_matches("error.tarvcore") || inner->any_matches("error.tarvcore", 14));
    EXPECT_EQ(outer->first_matching("error.os").get(), middle.get());
    EXPECT_EQ(outer->first_matching("error.os.windows.50", 18).get(), inner.get());
    EXPECT_EQ(outer->first_matching(SourceString("error")).get(), outer.get());
    EXPECT_TRUE(outer->first_matching("error.errno").is_null());
}

TEST(ErrorInfo, ReadsNativeCodes) {
    const auto code_of = [](const ErrorParams& params) {
        return ErrorInfo::create(ErrorCode(), "", params, here)->native_code();
    };
    const std::pair<const char*, long> rows[] = {{"13", 13},
                                                 {"0x10", 16},
                                                 {"0X1f", 31},
                                                 {"010", 8},
                                                 {"-7", -7},
                                                 {"+7", 7},
                                                 {"0", 0},
                                                 {"4294967295", -1},
                                                 {"0x80070005", -2147024891},
                                                 {"-2147483648", -2147483647 - 1}};
    for (const auto& [text, code] : rows)
        EXPECT_EQ(code_of(ErrorParams().add("errno", text)), code) << text;
    for (const char* text : {"12abc", "", " 1", "1 ", "08", "0x", "--1", "-+1", "4294967296",
                             "-2147483649", "99999999999999999999"})
        EXPECT_EQ(code_of(ErrorParams().add("errno", text)), 0) << text;
    ErrorParams params;
    EXPECT_EQ(code_of(params), 0);
    params.add("winErrorCode", 1).add("errno", 2);
    EXPECT_EQ(code_of(params), 2);
    params.add("nativeCode", "nonsense");
    EXPECT_EQ(code_of(params), 0) << "the first one present decides";
    params.add("nativeCode", std::string("1\0", 2));
    EXPECT_TRUE(tarv_test::raised([&] {
                    code_of(params);
                }).starts_with("error.tarvcore.string.embeddedNul "));
}

TEST(ErrorInfo, EqualityLooksAtCausesAloneAndCompareAtAll) {
    const Ptr cause = record_of("error.cause");
    const Ptr same_cause = record_of("error.cause");
    const Ptr a = record_of("error.a", cause);
    const Ptr b = record_of("error.b", same_cause);
    EXPECT_TRUE(*a == *b);
    EXPECT_LT(a->compare(*b), 0);
    EXPECT_TRUE(*cause == *same_cause);
    EXPECT_EQ(cause->compare(*same_cause), 0);
    EXPECT_FALSE(*a == *cause) << "the other one has no cause";
    EXPECT_FALSE(*cause == *a);
    EXPECT_FALSE(*record_of("error.a") == *record_of("error.b"));
    EXPECT_TRUE(*record_of("x", a) == *record_of("y", b)) << "two levels";
    EXPECT_FALSE(*record_of("x", a) == *b) << "levels differ";
    EXPECT_TRUE(*record_of("x", a) == *record_of("y", a)) << "the same cause";
}

TEST(ErrorInfo, ComparesPartByPart) {
    const auto record = [](const char* code, const char* message, const char* value, unsigned line,
                           const char* host, Ptr nested) {
        return ErrorInfo::create(ErrorCode(code), SourceString(message),
                                 ErrorParams().add("p", value), SourceLocation("f", "id", line),
                                 std::move(nested), SourceString(host));
    };
    const Ptr cause = record_of("a");
    const Ptr ascending[] = {record("a", "a", "a", 1, "a", {}),
                             record("a", "a", "a", 1, "a", cause),
                             record("a", "a", "a", 1, "a", record_of("b")),
                             record("a", "a", "a", 1, "b", {}),
                             record("a", "a", "a", 2, "a", {}),
                             record("a", "a", "b", 1, "a", {}),
                             record("a", "b", "a", 1, "a", {}),
                             record("b", "a", "a", 1, "a", {})};
    for (std::size_t i = 0; i < std::size(ascending); ++i) {
        for (std::size_t j = 0; j < std::size(ascending); ++j) {
            EXPECT_EQ(ascending[i]->compare(*ascending[j]), (i > j) - (i < j)) << i << ' ' << j;
            EXPECT_EQ(*ascending[i] < *ascending[j], i < j);
            EXPECT_EQ(*ascending[i] == *ascending[j], i == j) << i << ' ' << j;
            EXPECT_EQ(ascending[i]->hash() == ascending[j]->hash(), i == j) << i << ' ' << j;
        }
    }
}

TEST(ErrorInfo, NestsTenThousandDeep) {
    constexpr int depth = 10'000;
    const auto chain = [] {
        Ptr record;
        for (int i = 0; i < depth; ++i)
            record = record_of("error.level", std::move(record));
        return record;
    };
    tarv_test::AllocationWatch watch;
    {
        const Ptr a = chain();
        const Ptr b = chain();
        const Ptr a_tail = a->nested();  // keeps the rest alive when the head goes
        EXPECT_EQ(a->compare(*b), 0);
        EXPECT_TRUE(*a == *b);
        EXPECT_EQ(a->hash(), b->hash());
        EXPECT_LT(a_tail->compare(*b), 0);
        EXPECT_TRUE(a->first_matching("none").is_null());

        struct Counter : std::streambuf {
            unsigned long long bytes = 0;
            int overflow(int c) override { return ++bytes, c; }
            std::streamsize xsputn(const char*, std::streamsize n) override {
                bytes += static_cast<unsigned long long>(n);
                return n;
            }
        } counter;
        std::ostream os(&counter);
        os << a;
        // Two blanks a level before each of the seven lines, of which the innermost has no
        // "Nested".
        const unsigned long long blanks = 14ULL * depth * (depth - 1) / 2 - 2 * (depth - 1);
        EXPECT_GT(counter.bytes, blanks);
        EXPECT_LT(counter.bytes, blanks + 300ULL * depth);
    }
    EXPECT_EQ(watch.live(), 0);
}

TEST(ErrorInfo, RunsOutOfMemoryCleanly) {
    Ptr record;
    tarv_test::fail_each_allocation(
        [&] {
            record = ErrorInfo::create(ErrorCode("error.a.dynamic.code"), SourceString("message"),
                                       ErrorParams().add("p", "longer than fifteen characters"),
                                       here, ErrorInfo::from_winerror(here, 5, true));
        },
        [&] { EXPECT_TRUE(record.is_null()); });
}

}  // namespace
