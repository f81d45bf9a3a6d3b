// Faults to catch: an end without a report, with half of one, or with another status; a report that
// hangs or begins again; handlers that are not set back.

#include "tarvcore/terminate_handler.h"

#include <gtest/gtest.h>

#include <exception>
#include <regex>
#include <string>

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
        const auto heading = outcome.errors.find(
            "\n*** //tarvcore/impl/fault_record.cpp#1 - Exception that probably caused "
            "termination: \n");
        ASSERT_NE(heading, std::string::npos) << row.way << outcome.errors;
        EXPECT_TRUE(std::regex_search(outcome.errors.substr(heading),
                                      std::regex("\n    " + message + "\n")))
            << row.way << outcome.errors;
        EXPECT_NE(outcome.errors.find(row.cause), std::string::npos) << row.way << outcome.errors;
        EXPECT_TRUE(outcome.errors.ends_with(" - !!!!! Aborting process NOW !!!!!\n"))
            << outcome.errors;
    }
}

tarv_test::Outcome run(const wchar_t* way, int argument) {
    return tarv_test::run_program(L"terminate_handler_child.exe", {way, std::to_wstring(argument)});
}

TEST(TerminateHandler, EndsTheProcessWhateverAHookDoes) {
    const auto faulty = run(L"hook", 0);
    EXPECT_EQ(faulty.status, 3u);
    EXPECT_EQ(faulty.errors,
              "\n*** The report of a fault failed.\n\n*** !!!!! Aborting process NOW !!!!!\n");
    for (const int hook : {1, 2}) {  // raises, and never comes back
        const auto outcome = run(L"hook", hook);
        EXPECT_EQ(outcome.status, 3u) << hook;
        EXPECT_NE(outcome.errors.find(": writing address 0x00000010 by thread"), std::string::npos)
            << hook << outcome.errors;
        EXPECT_TRUE(outcome.errors.ends_with(" - !!!!! Aborting process NOW !!!!!\n"))
            << hook << outcome.errors;
    }
}

TEST(TerminateHandler, EndsTheProcessWithoutMemory) {
    for (const wchar_t* way : {L"fault without memory", L"exception without memory"}) {
        for (const int allocation : {0, 3, 30}) {
            const auto outcome = run(way, allocation);
            EXPECT_EQ(outcome.status, 3u) << way << allocation;
            EXPECT_TRUE(outcome.errors.ends_with("!!!!! Aborting process NOW !!!!!\n"))
                << way << allocation << outcome.errors;
            EXPECT_TRUE(allocation != 0 ||
                        std::regex_search(outcome.errors,
                                          std::regex("\\*\\* Fault 0xc[0-9a-f]+ at address 0x")))
                << outcome.errors;
        }
    }
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
