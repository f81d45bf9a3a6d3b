// Faults to catch: an end without a report, with half of one, or with another status; a report that
// hangs or begins again; handlers that are not set back.

#include "tarvcore/terminate_handler.h"

#include <gtest/gtest.h>

#include <exception>
#include <string>
#include <string_view>
#include <utility>

#include "tests/support/child_process.h"
#include "tests/support/pattern.h"
//
#include <windows.h>

namespace {

// What a process writes that comes to grief in that way.
std::string report_of(const wchar_t* way, int argument = 0) {
    const auto outcome =
        tarv_test::run_program(L"terminate_handler_child.exe", {way, std::to_wstring(argument)});
    EXPECT_EQ(outcome.status, 3u) << way;
    // Whoever wants to know hears of the end.
    EXPECT_EQ(outcome.output, std::wstring_view(way) == L"terminate" ? "aborts" : "") << way;
    return outcome.errors;
}

// Deletes the dump that a report names, if it names one.
bool delete_dump(const std::string& report) {
    const std::string label = "\n*** //tarvcore/impl/fault_record.cpp#1 - Created memory dump: ";
    const auto found = report.find(label);
    if (found == std::string::npos) return false;
    const auto begin = found + label.size();
    return DeleteFileA(report.substr(begin, report.find('\n', begin) - begin).c_str()) != 0;
}

TEST(TerminateHandler, TellsWhatEndedTheProcess) {
#if defined(TARVCORE_STATIC)
    GTEST_SKIP() << "the checkers see most of these first";
#endif
    const std::string cpp = "C++ exception of type '";
    const std::string violation = "Access violation at address 0x…: ";
    const struct {
        const wchar_t* way;
        std::string message;
        const char* cause;  // or the function
    } rows[] = {
        {L"ours", cpp + "tarvcore::ErrorException' thrown by thread 0x…!",
         "  ErrorCode:   error.tarvcore.uuid.parse\n  Description: Bad UUID\n"},
        {L"standard", cpp + "std::runtime_error' thrown by thread 0x…!",
         "  ErrorCode:   error.exception.runtime_error\n  Description: it went wrong\n"},
        {L"unknown", cpp + "int' thrown by thread 0x…!", ""},
        {L"noexcept", cpp + "int' thrown by thread 0x…!", ""},
        {L"restored", cpp + "int' thrown by thread 0x…!", ""},
        {L"terminate", "Fault \"Termination without an exception\" by thread 0x… at address 0x…!",
         ""},
        {L"read", violation + "reading address 0x00000010 by thread 0x…!", "!fail+"},
        {L"write", violation + "writing address 0x00000010 by thread 0x…!", "!fail+"},
        {L"thread", violation + "writing address 0x00000010 by thread 0x…!", "!fail+"},
        {L"smashed", violation + "writing address 0x00000010 by thread 0x…!", ""},
        {L"call",
         "Access violation at address 0x00000020: executing address 0x00000020 by thread 0x…!", ""},
        {L"divide, dump", "Fault \"Integer division by zero\" by thread 0x… at address 0x…!",
         "!fail+"},
        {L"illegal", "Fault \"Illegal instruction\" by thread 0x… at address 0x…!", ""},
        {L"own", "Fault \"0xe1234567\" by thread 0x… at address 0x…!", ""},
        {L"overflow, dump", "Fault \"Stack overflow\" by thread 0x… at address 0x…!", ""},
    };
    for (const auto& row : rows) {
        const std::string report = report_of(row.way);
        EXPECT_TRUE(tarv_test::agrees(
            report,
            "…\n*** //tarvcore/impl/fault_record.cpp#1 - Exception that probably caused "
            "termination: \n…\n    " +
                row.message + "\n…\n*** …#1 - !!!!! Aborting process NOW !!!!!\n"))
            << row.way;
        EXPECT_NE(report.find(row.cause), std::string::npos) << row.way << report;
        EXPECT_EQ(delete_dump(report), std::wstring_view(row.way).ends_with(L", dump")) << row.way;
    }
}

TEST(TerminateHandler, EndsTheProcessWhateverAHookDoes) {
    EXPECT_EQ(report_of(L"hook", 0),
              "\n*** The report of a fault failed.\n\n*** !!!!! Aborting process NOW !!!!!\n");
    // Raises, never comes back, and brings another thread to grief.
    for (const int hook : {1, 2, 3}) {
        const std::string report = report_of(L"hook", hook);
        EXPECT_TRUE(
            tarv_test::agrees(report,
                              "…\n    …: writing address 0x00000010 by thread …\n…\n*** … - "
                              "!!!!! Aborting process NOW !!!!!\n"))
            << hook;
        const char* const begin = "Exception that probably caused termination";
        EXPECT_EQ(report.find(begin), report.rfind(begin)) << hook << ": told twice";
    }
}

TEST(TerminateHandler, EndsTheProcessWithoutMemory) {
    for (const wchar_t* way : {L"fault without memory", L"exception without memory"}) {
        EXPECT_TRUE(tarv_test::agrees(report_of(way, 0),
                                      "…\n*** Fault 0xc… at address 0x…\n…\n*** !!!!! Aborting "
                                      "process NOW !!!!!\n"));
        for (const int allocation : {3, 30})
            EXPECT_TRUE(report_of(way, allocation).ends_with("!!!!! Aborting process NOW !!!!!\n"));
    }
}

TEST(TerminateHandler, IsThereWhileTheGuardLives) {
    const auto handlers = [] {
        const auto filter = SetUnhandledExceptionFilter(nullptr);
        SetUnhandledExceptionFilter(filter);
        return std::pair(std::get_terminate(), filter);
    };
    const auto before = handlers();
    {
        const tarvcore::ScopedDiagnosticSignalHandler handler;
        EXPECT_TRUE(handlers().first != before.first && handlers().second != before.second);
    }
    EXPECT_TRUE(handlers() == before);
}

}  // namespace
