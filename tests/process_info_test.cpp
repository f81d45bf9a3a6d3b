// Faults to catch: values cut at a buffer's end, or with a terminator too much; an empty variable
// taken for a missing one; a system's failure taken for either; a variable that grows while it is
// read.

#include "tarvcore/process_info.h"

#include <gtest/gtest.h>

#include <string>

#include "tarvcore/error_exception.h"
#include "tarvcore/impl/environment.h"
#include "tarvcore/to_string.h"
//
#include <windows.h>

namespace {

using namespace tarvcore;

std::string get(const std::string& name, bool* found = nullptr) {
    return get_environment_variable(name.data(), name.size(), found);
}

// The record that the call raises.
template <class Call>
ErrorInfo::Ptr error_of(Call call) {
    try {
        call();
    } catch (const ErrorException& e) {
        return e.error();
    }
    ADD_FAILURE() << "nothing raised";
    return ErrorInfo::create(error::tarvcore, "", SourceLocation());
}

TEST(EnvironmentVariable, IsReadWhole) {
    const std::wstring name = L"TARV_\u00E4\U0001F600";
    for (const unsigned length : {0u, 1u, 2046u, 2047u, 2048u, 2049u, 32'766u}) {
        std::wstring value(length, L'x');
        if (length > 2) value.replace(length - 2, 2, L"\U0001F600");
        ASSERT_TRUE(SetEnvironmentVariableW(name.c_str(), value.c_str()));
        bool found = false;
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

    for (const unsigned length : {63u, 64u, 65u, 1000u}) {
        const std::string long_name = std::string(length - 2, 'N') + "\xC3\xA4";
        ASSERT_TRUE(SetEnvironmentVariableW(to_wstring(long_name).c_str(), L"here"));
        EXPECT_EQ(get(long_name, &found), "here") << length;
    }
}

TEST(EnvironmentVariable, RefusesWhatHasNoSuchName) {
    bool found = true;
    EXPECT_TRUE(error_of([&] {
                    get(std::string("PA\0TH", 5), &found);
                })->matches("error.tarvcore.string.embeddedNul"));
    EXPECT_TRUE(
        error_of([&] { get("\xFF", &found); })->matches("error.tarvcore.string.conversion"));
    ASSERT_TRUE(SetEnvironmentVariableW(L"TARV_BAD", L"\xD800"));
    EXPECT_TRUE(
        error_of([&] { get("TARV_BAD", &found); })->matches("error.tarvcore.string.conversion"));
    EXPECT_TRUE(found) << "untouched";
}

TEST(EnvironmentVariable, PassesTheSystemsFailureOn) {
    const impl::EnvironmentCalls refusing = {
        [](const wchar_t*, wchar_t*, unsigned long, unsigned long* error) -> unsigned long {
            *error = ERROR_ACCESS_DENIED;
            return 0;
        }};
    bool found = true;
    const auto error = error_of([&] { impl::environment_variable(refusing, "NAME", 4, &found); });
    EXPECT_TRUE(error->matches("error.errno.EACCES"));
    EXPECT_EQ(error->nested()->code().as_string_view(), "error.os.windows.5");
    EXPECT_EQ(error->location().function(), "tarvcore::get_environment_variable()");
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
