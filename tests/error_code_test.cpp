// Faults to catch: a family that ends within a segment; the empty pattern and "." in the wrong
// order of rules; a constant whose name and text differ, or that is missing.

#include "tarvcore/error_code.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <sstream>
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

TEST(ErrorCode, TakesTheThreadsErrno) {
    errno = ENOSPC;
    EXPECT_EQ(ErrorCode::from_errno(), error::errno_ENOSPC);
}

// Of each kind of name; those of errno values have a test of their own.
TEST(ErrorCodeConstants, AreNamedByTheirTexts) {
    const struct {
        const ErrorCode& code;
        const char* text;
    } rows[] = {
        {error::tarvcore, "error.tarvcore"},
        {error::tarvcore_transforms_base64_padding, "error.tarvcore.transforms.base64.padding"},
        {error::tarvcore_cast_valueTooBig_signReversal,
         "error.tarvcore.cast.valueTooBig.signReversal"},
        {error::errno_, "error.errno"},
        {error::errno_EUCLEAN, "error.errno.EUCLEAN"},
        {error::os_windows, "error.os.windows"},
        {error::exception, "error.exception"},
        {error::exception_fault_cppException, "error.exception.fault.cppException"},
        {error::exception_badCast_badLexicalCast, "error.exception.bad_cast.bad_lexical_cast"},
        {error::exception_logicError_outOfRange, "error.exception.logic_error.out_of_range"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.code.as_string(), row.text);
        EXPECT_EQ((std::ostringstream() << row.code).str(), row.text);
        EXPECT_TRUE(row.code.as_source_string().is_reference());
    }
}

}  // namespace
