// Faults to catch: arguments in another encoding; an exception that ends the process by itself, or
// without a line; a status that is lost.

#include "tarvcore/main_intercept.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/child_process.h"
#include "tests/support/pattern.h"

namespace {

tarv_test::Outcome run(const std::wstring& way) {
    return tarv_test::run_program(L"main_intercept_child.exe",
                                  {way, L"\xE9 *", L"\xD83D\xDE00", L"", L"\xD83D"});
}

TEST(MainIntercept, PassesArgumentsAndStatus) {
    const auto outcome = run(L"return");
    EXPECT_EQ(outcome.status, 7u);
    EXPECT_EQ(outcome.output, "return\r\n\xC3\xA9 *\r\n\xF0\x9F\x98\x80\r\n\r\n?\r\n");
    EXPECT_EQ(outcome.errors, "");
}

TEST(MainIntercept, TracesWhatEscapes) {
    const struct {
        const wchar_t* way;
        std::string line;
    } rows[] = {
        {L"ours",
         "Exception left the main function: \nErrorCode:   error.tarvcore.uuid.parse\n"
         "Description: Bad UUID\n…"},
        {L"standard", "Exception left the main function: it went wrong\n"},
        {L"unknown",
         "Unknown exception occurred on thread 0x… (unable to create dump).  Error: \n"
         "ErrorCode:   error.exception.unknown\n…"},
    };
    for (const auto& row : rows) {
        const auto outcome = run(row.way);
        EXPECT_EQ(outcome.status, 1u) << row.way;
        EXPECT_TRUE(tarv_test::agrees(outcome.errors,
                                      "\n*** //tarvcore/main_intercept.cpp#1 - " + row.line));
    }
}

}  // namespace
