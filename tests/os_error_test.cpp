// Faults to catch: a row of either table off by one; the nesting of the Windows record; the socket
// number that stands for EAGAIN; fallbacks where the system has no text.

#include "tarvcore/os_error.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

#include "tarvcore/error_code_constants.h"
#include "tarvcore/error_info.h"

TARVCORE_SOURCE_FILE("$Id: //tests/os_error_test.cpp#1 $");

namespace {

using namespace tarvcore;
using Ptr = ErrorInfo::Ptr;

const SourceLocation here("here()", source_file_id, 7);

TEST(ErrnoRecord, NamesEveryKnownValue) {
    std::ifstream file(std::filesystem::path(TEST_DATA_FOLDER "/errno_names.txt"));
    std::map<int, std::string> names;
    for (int value = 0; file >> value;)
        file >> names[value];
    EXPECT_EQ(names.size(), 38u + 1u + 35u);
    for (int value = -2; value < 11000; ++value) {
        const auto name = names.find(value);
        const ErrorCode code = ErrorCode::from_errno(value);
        if (name != names.end()) {
            EXPECT_EQ(code.as_string(), "error.errno." + name->second) << value;
            EXPECT_TRUE(code.as_source_string().is_reference()) << value;
            EXPECT_GT(errno_message(value).size(), 4u) << value;
        } else if (value != 0) {
            EXPECT_EQ(code.as_string(), "error.errno." + std::to_string(value));
        }
    }
}

TEST(ErrnoRecord, HasMessageAndNumber) {
    const Ptr again = ErrorInfo::from_errno(here, 10035);
    EXPECT_EQ(again->code(), error::errno_EAGAIN);
    EXPECT_EQ(again->params().get_value("errno", 5), "11");

    const Ptr busy = ErrorInfo::from_errno(here, 16);
    EXPECT_EQ(busy->message(), "Device or resource busy ");
    const Ptr none = ErrorInfo::from_errno(here, 0);
    EXPECT_TRUE(none->code().empty());
    EXPECT_EQ(none->message(), "No Error");

    const Ptr unknown = ErrorInfo::from_errno(here, busy, 9999999);
    EXPECT_EQ(unknown->code(), "error.errno.9999999");
    EXPECT_EQ(unknown->message(), "Unknown error (errno={@errno})");
    EXPECT_EQ(unknown->expanded_message().as_string(), "Unknown error (errno=9999999)");
    EXPECT_EQ(errno_message(9999999), "Unknown error (errno=9999999)");
    EXPECT_EQ(unknown->nested().get(), busy.get());
    EXPECT_EQ(unknown->native_code(), 9999999);

    // 50 has no name here, but a text in the system.
    EXPECT_EQ(ErrorInfo::from_errno(here, 50)->message(), errno_message(50));
    EXPECT_EQ(errno_message(50).as_string_view().find("Unknown"), std::string_view::npos);
}

TEST(WinerrorRecord, NestsTheWindowsRecordWhereAsked) {
    const Ptr cause = ErrorInfo::from_errno(here, 1);
    const Ptr dropped = ErrorInfo::from_winerror(here, cause, 5, false);
    EXPECT_EQ(dropped->code(), error::errno_EACCES);
    EXPECT_EQ(dropped->nested().get(), cause.get());

    const Ptr kept = ErrorInfo::from_winerror(here, cause, 5, true);
    EXPECT_EQ(kept->code(), error::errno_EACCES);
    EXPECT_EQ(kept->nested()->code(), "error.os.windows.5");
    EXPECT_EQ(kept->nested()->params().get_value("winErrorCode", 12), "5");
    EXPECT_EQ(kept->nested()->nested().get(), cause.get());

    for (const bool keep : {false, true}) {
        const Ptr unmapped = ErrorInfo::from_winerror(here, 1234, keep);
        EXPECT_EQ(unmapped->code(), error::errno_EINVAL);
        EXPECT_EQ(unmapped->nested()->code(), "error.os.windows.1234");
        EXPECT_TRUE(unmapped->nested()->nested().is_null());
    }
    EXPECT_EQ(ErrorInfo::from_winerror_nomap(here, {}, 4294967295u)->code(),
              "error.os.windows.4294967295");
}

TEST(WinerrorRecord, TakesTheSystemsTextWithoutItsTail) {
    const std::string text = ErrorInfo::from_winerror_nomap(here, {}, 5)->message().as_string();
    EXPECT_EQ(text.find_first_of("\r\n\t"), std::string::npos) << text;
    EXPECT_TRUE(text.ends_with('.')) << text;
}

TEST(ErrnoFromWinerror, MapsEveryCode) {
    std::map<unsigned, int> expected;
    std::ifstream file(std::filesystem::path(TEST_DATA_FOLDER "/errno_of_winerror.txt"));
    for (std::string line; std::getline(file, line);) {
        std::istringstream row(line);
        int value = 0;
        char colon = '\0';
        row >> value >> colon;
        for (unsigned code = 0; row >> code;)
            expected[code] = value;
    }
    EXPECT_EQ(expected.size(), 79u);
    for (unsigned code = 10036; code <= 10071; ++code) {
        if (code != 10063 && code != 10066) expected[code] = static_cast<int>(code);
    }
    for (unsigned code = 0; code < 70'000; ++code) {
        const auto row = expected.find(code);
        ASSERT_EQ(errno_from_winerror(code), row == expected.end() ? 0 : row->second) << code;
    }
    EXPECT_EQ(errno_from_winerror(0xFFFFFFFF), 0);
}

TEST(SetErrno, StoresBothNumbers) {
    EXPECT_EQ(set_errno_from_winerror(5), 13);
    EXPECT_EQ(errno, 13);
    EXPECT_EQ(_doserrno, 5u);
    EXPECT_EQ(set_errno(10035), 11);
    EXPECT_EQ(errno, 11);
    EXPECT_EQ(_doserrno, 0u);
    EXPECT_EQ(set_errno_from_winerror(1234), 22);
    EXPECT_EQ(_doserrno, 1234u);
}

}  // namespace
