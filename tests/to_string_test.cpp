// Faults to catch: the two ways of converting (short and long texts) that differ; a terminator that
// gets into the string; characters printed as characters; values that lose bits or their sign.

#include "tarvcore/to_string.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "tarvcore/error_exception.h"

namespace {

using namespace tarvcore;

TEST(ToString, ConvertsShortAndLongTextsAlike) {
    for (const unsigned copies : {0u, 1u, 249u, 250u, 1000u}) {
        std::wstring wide;
        std::string narrow;
        for (unsigned i = 0; i < copies; ++i) {
            wide += L"a\u20AC\U0001F600";
            narrow += "a\xE2\x82\xAC\xF0\x9F\x98\x80";
        }
        EXPECT_EQ(to_string(wide), narrow) << copies;
        EXPECT_EQ(to_string(wide.c_str()), narrow) << copies;
        EXPECT_EQ(to_wstring(narrow), wide) << copies;
        EXPECT_EQ(to_wstring(narrow.c_str()), wide) << copies;

        int position = 0;
        EXPECT_EQ(to_string(wide, '?', &position), narrow);
        EXPECT_EQ(position, -1);
        EXPECT_EQ(to_string(wide + L'\xDC00', '?', &position), narrow + '?');
        EXPECT_EQ(position, static_cast<int>(wide.size()));
        EXPECT_EQ(to_wstring(narrow + '\xFF', L'\uFFFD', &position), wide + L'\uFFFD');
        EXPECT_EQ(position, static_cast<int>(narrow.size()));
        EXPECT_THROW(to_string(wide + L'\xDC00'), ErrorException);
        EXPECT_THROW(to_wstring(narrow + '\xFF'), ErrorException);
    }
    // As long as one character can make a short text: three bytes a unit.
    EXPECT_EQ(to_string(std::wstring(999, L'\uFFFD')).size(), 2997u);
}

TEST(ToString, CopiesTextOfItsOwnKind) {
    EXPECT_EQ(to_string("\xFF\xFE"), "\xFF\xFE");
    EXPECT_EQ(to_string("abc", 2), "ab");
    EXPECT_EQ(to_string("abc", 0xFFFFFFFF), "abc");
    EXPECT_EQ(to_wstring(L"abc", 2), L"ab");
    EXPECT_EQ(to_wstring(L"abc", 0xFFFFFFFF), L"abc");
    EXPECT_EQ(to_string(L"abc", 2), "ab");
    EXPECT_EQ(to_wstring("a\0c", 3), std::wstring(L"a\0c", 3));
}

TEST(ToString, PrintsNumbers) {
    EXPECT_EQ(to_string(static_cast<char>(-5)), "-5");
    EXPECT_EQ(to_string(static_cast<unsigned char>(250)), "250");
    EXPECT_EQ(to_string(static_cast<short>(SHRT_MIN)), "-32768");
    EXPECT_EQ(to_string(static_cast<unsigned short>(65535)), "65535");
    EXPECT_EQ(to_string(INT_MIN), "-2147483648");
    EXPECT_EQ(to_string(UINT_MAX), "4294967295");
    EXPECT_EQ(to_string(LONG_MIN), "-2147483648");
    EXPECT_EQ(to_string(ULONG_MAX), "4294967295");
    EXPECT_EQ(to_string(LLONG_MIN), "-9223372036854775808");
    EXPECT_EQ(to_string(ULLONG_MAX), "18446744073709551615");
    EXPECT_EQ(to_string(true), "true");
    EXPECT_EQ(to_wstring(false), L"false");
    EXPECT_EQ(to_wstring('A'), L"65");
    EXPECT_EQ(to_wstring(LONG_MIN), L"-2147483648");
    EXPECT_EQ(to_wstring(ULLONG_MAX), L"18446744073709551615");
}

}  // namespace
