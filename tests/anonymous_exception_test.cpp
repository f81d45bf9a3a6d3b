// Faults to catch: registers of some other place; a dump beyond the stack; a frame without its
// module.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tarvcore/error_code_constants.h"
#include "tarvcore/error_info.h"

namespace {

using namespace tarvcore;

TEST(AnonymousException, TellsWhereItWasCaught) {
    ErrorInfo::Ptr record;
    int here = 0;
    try {
        throw 42;
    } catch (...) {
        record = ErrorInfo::from_anonymous_exception(SourceLocation("f()", "$Id: //f#1 $", 1));
    }
    ASSERT_FALSE(record.is_null());
    EXPECT_EQ(record->code(), error::exception_unknown);
    EXPECT_EQ(record->location().line(), 1u);
    const ErrorParams& params = record->params();
    EXPECT_EQ(params.size(), 5u);

    const std::string& registers = params.get_value("registers", 9);
    const std::size_t esp = registers.find("esp=");
    ASSERT_NE(esp, std::string::npos);
    const unsigned long top = std::stoul(registers.substr(esp + 4, 10), nullptr, 16);
    EXPECT_LT(reinterpret_cast<unsigned long>(&here) - top, 0x10000u) << registers;

    const std::string& dump = params.get_value("stackDump", 9);
    EXPECT_EQ(std::stoul(dump.substr(0, 8), nullptr, 16), top) << dump;
    const auto lines = std::count(dump.begin(), dump.end(), '\n');
    EXPECT_TRUE(lines > 0 && lines <= 32) << dump;
    EXPECT_EQ(params.get_value("threadId", 8).substr(0, 2), "0x");
    EXPECT_GT(std::stoul(params.get_value("processId", 9)), 0u);
    EXPECT_NE(record->expanded_message().as_string_view().find("Registers: \neax=0x"),
              std::string_view::npos);
}

}  // namespace
