// Faults to catch: a family that ends within a segment; the empty pattern and "." in the wrong
// order of rules; a constant whose name and text differ, or that is missing.

#include "tarvcore/error_code.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "tarvcore/error_code_constants.h"

namespace {

using namespace tarvcore;

TEST(ErrorCode, MatchesFamiliesAtDots) {
    const struct {
        const char* code;
        const char* pattern;
        bool matches;
        const char* reason;
    } rows[] = {
        {"error.tarvcore.uuid.parse", "error.tarvcore.uuid.parse", true, "itself"},
        {"error.tarvcore.uuid.parse", "error.tarvcore.uuid", true, "family"},
        {"error.tarvcore.uuid.parse", "error", true, "root segment"},
        {"error.tarvcore.uuid.parse", ".", true, "the root of all"},
        {"error.tarvcore.uuid.parse", "", true, "the empty pattern"},
        {"error.tarvcore.uuid.parse", nullptr, true, "no pattern"},
        {"error.tarvcore.uuid.parse", "error.tarvcore.uui", false, "within a segment"},
        {"error.tarvcore.uuid.parse", "error.tarvcore.uuid.", false, "a dot at the end"},
        {"error.tarvcore.uuid.parse", "Error.tarvcore", false, "case counts"},
        {"error.tarvcore.uuid.parse", "error.tarvcore.uuid.parse.x", false, "longer"},
        {"error.tarvcore.uuid.parse", "error.tarvcore.uuid.parsf", false, "last character"},
        {"error..x", "error.", true, "an empty segment after the pattern's dot"},
        {".x", ".", true, "dot against a leading dot"},
        {"", "", true, "empty against empty"},
        {"", ".", false, "the length test comes first"},
        {"", nullptr, true, "no pattern, no code"},
    };
    for (const auto& row : rows) {
        const ErrorCode code(row.code, true);
        SCOPED_TRACE(row.reason);
        EXPECT_EQ(code.matches(row.pattern), row.matches);
        if (row.pattern == nullptr) continue;
        EXPECT_EQ(code.matches(ErrorCode(row.pattern)), row.matches);
        EXPECT_EQ(code.matches(SourceString(row.pattern)), row.matches);
        const std::string longer = std::string(row.pattern) + "tail";
        EXPECT_EQ(code.matches(longer.c_str(), std::strlen(row.pattern)), row.matches);
    }
}

TEST(ErrorCode, AppendsSegments) {
    ErrorCode code;
    code.append_segment(nullptr);
    EXPECT_TRUE(code.empty());
    code.append_segment("x");
    EXPECT_EQ(code, "x");
    code.append_segment("yz", 1);
    EXPECT_EQ(code, "x.y");
    code.append_segment("");
    EXPECT_EQ(code, "x.y.");
    code.append_segment(code.text());
    EXPECT_EQ(code, "x.y..x.y.") << "its own text as segment";

    ErrorCode unmeasured("", true);
    unmeasured.append_segment("a");
    EXPECT_EQ(unmeasured, ".a") << "a code that is not known to be empty";
}

TEST(ErrorCode, Orders) {
    const ErrorCode ascending[] = {ErrorCode(""), ErrorCode("error.a"), ErrorCode("error.a.b"),
                                   ErrorCode("error.b")};
    for (std::size_t i = 0; i < std::size(ascending); ++i) {
        for (std::size_t j = 0; j < std::size(ascending); ++j) {
            EXPECT_EQ(ascending[i] < ascending[j], i < j);
            EXPECT_EQ(ascending[i] <= ascending[j].text(), i <= j);
            EXPECT_EQ(ascending[i] == ascending[j].text(), i == j);
        }
    }
}

TEST(ErrorCode, NamesErrnoValues) {
    EXPECT_EQ(ErrorCode::from_errno(2).text(), error::errno_ENOENT.text());
    EXPECT_EQ(ErrorCode::from_errno(9999), "error.errno.9999");
    EXPECT_EQ(ErrorCode::from_errno(-5), "error.errno.-5");
    EXPECT_TRUE(ErrorCode::from_errno(0).empty());
    errno = ENOSPC;
    EXPECT_EQ(ErrorCode::from_errno(), error::errno_ENOSPC);
}

// The text from which a constant's name comes: dots for underscores, and "error." before.
std::string text_of_name(std::string name) {
    if (name == "errno_") return "error.errno";
    std::string text = "error.";
    const bool snake_case = name.starts_with("exception");
    for (const char c : name) {
        if (c == '_') {
            text += '.';
        } else if (snake_case && c >= 'A' && c <= 'Z') {
            text += {'_', static_cast<char>(c - 'A' + 'a')};
        } else {
            text += c;
        }
    }
    return text;
}

TEST(ErrorCodeConstants, TextsFollowFromNames) {
#define ROW(name) \
    { #name, &error::name }
    const struct {
        const char* name;
        const ErrorCode* code;
    } rows[] = {
        ROW(tarvcore),
        ROW(tarvcore_transforms_base64_padding),
        ROW(tarvcore_cast_valueTooBig_signReversal),
        ROW(errno_),
        ROW(errno_E2BIG),
        ROW(errno_EUCLEAN),
        ROW(os_windows),
        ROW(exception),
        ROW(exception_badAlloc),
        ROW(exception_fault_cppException),
        ROW(exception_badCast_badLexicalCast),
        ROW(exception_logicError_outOfRange),
    };
#undef ROW
    for (const auto& row : rows) {
        const bool camel_case_segment = std::string(row.name).starts_with("exception_fault");
        const std::string expected =
            camel_case_segment ? "error.exception.fault.cppException" : text_of_name(row.name);
        EXPECT_EQ(row.code->as_string(), expected);
        EXPECT_TRUE(row.code->as_source_string().is_reference());
    }
}

}  // namespace
