// Faults to catch: an end without a report, with half of one, or with another status; a report that
// hangs or begins again; handlers that are not set back.

#include "tarvcore/terminate_handler.h"

#include <gtest/gtest.h>

#include <exception>
#include <regex>

#include "tests/support/child_process.h"

namespace {

TEST(TerminateHandler, TellsWhatEndedTheProcess) {
#if defined(TARVCORE_STATIC)
    GTEST_SKIP() << "the checkers see most of these first";
#endif
    const struct {
        const wchar_t* way;
        const char* message;  // a regular expression
        const char* cause;
    } rows[] = {
        {L"ours", "C\\+\\+ exception of type 'tarvcore::ErrorException' thrown by thread THREAD!",
         "  ErrorCode:   error.tarvcore.uuid.parse\n  Description: Bad UUID\n"},
        {L"standard", "C\\+\\+ exception of type 'std::runtime_error' thrown by thread THREAD!",
         "  ErrorCode:   error.exception.runtime_error\n  Description: it went wrong\n"},
        {L"unknown", "C\\+\\+ exception of type 'int' thrown by thread THREAD!", ""},
        {L"noexcept", "C\\+\\+ exception of type 'int' thrown by thread THREAD!", ""},
        {L"restored", "C\\+\\+ exception of type 'int' thrown by thread THREAD!", ""},
        {L"terminate",
         "Fault \"Termination without an exception\" by thread THREAD at address ADDRESS!", ""},
        {L"read",
         "Access violation at address ADDRESS: reading address 0x00000010 by thread THREAD!",
         "!fail+"},
        {L"write",
         "Access violation at address ADDRESS: writing address 0x00000010 by thread THREAD!",
         "!fail+"},
        {L"thread",
         "Access violation at address ADDRESS: writing address 0x00000010 by thread THREAD!",
         "!fail+"},
        {L"smashed",
         "Access violation at address ADDRESS: writing address 0x00000010 by thread THREAD!", ""},
        {L"call",
         "Access violation at address 0x00000020: executing address 0x00000020 by thread THREAD!",
         ""},
        {L"divide", "Fault \"Integer division by zero\" by thread THREAD at address ADDRESS!",
         "!fail+"},
        {L"illegal", "Fault \"Illegal instruction\" by thread THREAD at address ADDRESS!", ""},
        {L"own", "Fault \"0xe1234567\" by thread THREAD at address ADDRESS!", ""},
        {L"overflow", "Fault \"Stack overflow\" by thread THREAD at address ADDRESS!", ""},
    };
    for (const auto& row : rows) {
        const auto outcome = tarv_test::run_program(L"terminate_handler_child.exe", {row.way});
        EXPECT_EQ(outcome.status, 3u) << row.way;
        std::string message = row.message;
        message = std::regex_replace(message, std::regex("THREAD"), "0x[0-9a-f]+");
        message = std::regex_replace(message, std::regex("ADDRESS"), "0x[0-9a-f]{8}");
        EXPECT_TRUE(std::regex_search(
            outcome.errors, std::regex("\n\\*\\*\\* //tarvcore/impl/fault_record.cpp#1 - Exception "
                                       "that probably caused termination: \n(.*\n)*    " +
                                       message + "\n")))
            << row.way << outcome.errors;
        EXPECT_NE(outcome.errors.find(row.cause), std::string::npos) << row.way << outcome.errors;
        EXPECT_TRUE(outcome.errors.ends_with(" - !!!!! Aborting process NOW !!!!!\n"))
            << outcome.errors;
    }
}

TEST(TerminateHandler, GivesUpWhereTheReportFails) {
    const auto outcome = tarv_test::run_program(L"terminate_handler_child.exe", {L"hook"});
    EXPECT_EQ(outcome.status, 3u);
    EXPECT_EQ(outcome.errors,
              "\n*** The report of a fault failed.\n*** !!!!! Aborting process NOW !!!!!\n");
}

TEST(TerminateHandler, IsThereWhileTheGuardLives) {
    const std::terminate_handler before = std::get_terminate();
    {
        const tarvcore::ScopedDiagnosticSignalHandler handler;
        EXPECT_NE(std::get_terminate(), before);
    }
    EXPECT_EQ(std::get_terminate(), before);
}

}  // namespace
