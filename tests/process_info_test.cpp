// Faults to catch: values cut at a buffer's end, or with a terminator too much; an empty variable
// taken for a missing one; a system's failure taken for either; a variable that grows while it is
// read.

#include "tarvcore/process_info.h"

#include <gtest/gtest.h>

#include <string>

#include "tarvcore/impl/environment.h"
#include "tarvcore/to_string.h"
#include "tests/support/raised.h"
//
#include <windows.h>

namespace {

using namespace tarvcore;
using tarv_test::raised;

std::string get(const std::string& name, bool* found = nullptr) {
    return get_environment_variable(name.data(), name.size(), found);
}

TEST(EnvironmentVariable, IsReadWhole) {
    const std::wstring name = L"TARV_\u00E4\U0001F600";
    for (const unsigned length : {0u, 1u, 2046u, 2047u, 2048u, 2049u, 32'766u}) {
        std::wstring value(length, L'x');
        if (length > 2) value.replace(length - 2, 2, L"\U0001F600");
        ASSERT_TRUE(SetEnvironmentVariableW(name.c_str(), value.c_str()));
        bool found = false;
        SetLastError(ERROR_ACCESS_DENIED);
        EXPECT_TRUE(get(to_string(name), &found) == to_string(value)) << length;
        EXPECT_TRUE(found) << length;
        EXPECT_TRUE(get(to_string(name)) == to_string(value)) << length;
    }
    SetEnvironmentVariableW(name.c_str(), nullptr);
    bool found = true;
    EXPECT_EQ(get(to_string(name), &found), "");
    EXPECT_FALSE(found);
    SetLastError(ERROR_ACCESS_DENIED);
    EXPECT_EQ(get("", &found), "") << "a name that nothing has";
    EXPECT_FALSE(found);

    for (const unsigned length : {63u, 64u}) {
        const std::string long_name = std::string(length - 2, 'N') + "\xC3\xA4";
        ASSERT_TRUE(SetEnvironmentVariableW(to_wstring(long_name).c_str(), L"here"));
        EXPECT_EQ(get(long_name, &found), "here") << length;
    }
}

TEST(EnvironmentVariable, RefusesWhatHasNoSuchName) {
    bool found = true;
    const auto refusal = [&found](const std::string& name) {
        const std::string error = raised([&] { get(name, &found); });
        return error.substr(0, error.find(' '));
    };
    EXPECT_EQ(refusal(std::string("PA\0TH", 5)), "error.tarvcore.string.embeddedNul");
    EXPECT_EQ(refusal("\xFF"), "error.tarvcore.string.conversion");
    ASSERT_TRUE(SetEnvironmentVariableW(L"TARV_BAD", L"\xD800"));
    EXPECT_EQ(refusal("TARV_BAD"), "error.tarvcore.string.conversion");
    EXPECT_TRUE(found) << "untouched";
}

TEST(EnvironmentVariable, PassesTheSystemsFailureOn) {
    const impl::EnvironmentCalls refusing = {
        [](const wchar_t*, wchar_t*, unsigned long, unsigned long* error) -> unsigned long {
            *error = ERROR_ACCESS_DENIED;
            return 0;
        }};
    bool found = true;
    const std::string error =
        raised([&] { impl::environment_variable(refusing, "NAME", 4, &found); });
    EXPECT_TRUE(error.starts_with("error.errno.EACCES ")) << error;
    EXPECT_TRUE(
        error.ends_with("tarvcore::get_environment_variable() "
                        "//tarvcore/process_info.cpp\n< error.os.windows.5"))
        << error;
    EXPECT_TRUE(found) << "untouched";
}

TEST(EnvironmentVariable, FollowsAGrowingValue) {
    // Each call finds the value longer than the buffer that the one before asked for.
    static unsigned long needed;
    needed = 3001;
    const impl::EnvironmentCalls growing = {[](const wchar_t* name, wchar_t* buffer,
                                               unsigned long size,
                                               unsigned long* error) -> unsigned long {
        EXPECT_EQ(std::wstring(name), L"NAME");
        *error = ERROR_SUCCESS;
        if (needed < 40'001) needed += 18'500;
        if (size < needed) return needed;
        std::fill_n(buffer, needed - 1, L'v');
        buffer[needed - 1] = 0;
        return needed - 1;
    }};
    EXPECT_EQ(impl::environment_variable(growing, "NAME", 4, nullptr), std::string(40'000, 'v'));
}

}  // namespace
