// Faults to catch: letters beyond A and Z folded, or bytes beyond ASCII; bytes taken as unsigned; a
// length of 0xFFFFFFFF taken literally; a comparison that stops at a NUL.

#include "tarvcore/string_util.h"

#include <gtest/gtest.h>

#include <cctype>
#include <string>

namespace {

using namespace tarvcore;

constexpr unsigned measure = 0xFFFFFFFF;

// In the C locale, the C library folds ASCII only.
int oracle_lower(unsigned char c) {
    return static_cast<signed char>(std::tolower(c));
}
int oracle_upper(unsigned char c) {
    return static_cast<signed char>(std::toupper(c));
}

TEST(AsciiCase, FoldsTheLettersOnly) {
    for (int i = 0; i < 256; ++i) {
        const char byte = static_cast<char>(i);
        const auto c = static_cast<unsigned char>(i);
        ASSERT_EQ(to_lower_ascii(&byte, 1)[0], oracle_lower(c)) << i;
        ASSERT_EQ(to_upper_ascii(&byte, 1)[0], oracle_upper(c)) << i;
        ASSERT_EQ(string_hash_lowercase_ascii(&byte, 1), static_cast<unsigned>(oracle_lower(c)));
        ASSERT_EQ(string_hash_uppercase_ascii(&byte, 1), static_cast<unsigned>(oracle_upper(c)));
        for (int j = 0; j < 256; ++j) {
            const char other = static_cast<char>(j);
            const int difference = oracle_lower(c) - oracle_lower(static_cast<unsigned char>(j));
            ASSERT_EQ(compare_nocase_ascii(&byte, 1, &other, 1), difference) << i << ' ' << j;
            ASSERT_EQ(string_equal_nocase_ascii(&byte, 1, &other, 1), difference == 0);
        }
    }
    std::string text = "aZ[`{\xC4\xE4";
    to_upper_ascii_inplace(text);
    EXPECT_EQ(text, "AZ[`{\xC4\xE4");
    to_lower_ascii_inplace(text);
    EXPECT_EQ(text, "az[`{\xC4\xE4");
    EXPECT_EQ(to_upper_ascii("abc", measure) + to_lower_ascii("ABC"), "ABCabc");
}

TEST(AsciiCase, ComparesContentThenLength) {
    const struct {
        std::string a;
        std::string b;
        int order;
    } rows[] = {
        {"abc", "ABD", -1},
        {"abc", "ABC", 0},
        {"ab", "abcde", -3},
        {std::string("a\0b", 3), std::string("A\0C", 3), -1},
    };
    for (const auto& [a, b, order] : rows) {
        const int result = compare_nocase_ascii(a.data(), a.size(), b.data(), b.size());
        EXPECT_EQ(result, order) << a << ' ' << b;
        EXPECT_EQ(compare_nocase_ascii(b.data(), b.size(), a.data(), a.size()), -result);
        EXPECT_EQ(string_equal_nocase_ascii(a.data(), a.size(), b.data(), b.size()), order == 0);
    }
    EXPECT_EQ(compare_nocase_ascii("ab", measure, "abcde", measure), -3);
    EXPECT_EQ(compare_nocase_ascii(nullptr, 0, "x", 1), -1);
    EXPECT_TRUE(string_equal_nocase_ascii("One", measure, "oNEx", 3));
}

TEST(AsciiCase, HashesAreTheStoredOnes) {
    EXPECT_EQ(string_hash_lowercase_ascii("", 0), 0u);
    EXPECT_EQ(string_hash_lowercase_ascii("AB", 2), 583u);
    EXPECT_EQ(string_hash_lowercase_ascii("ab", measure), 583u);
    EXPECT_EQ(string_hash_uppercase_ascii("ab", 2), 391u);
    EXPECT_EQ(string_hash_lowercase_ascii("A\xFF", 2), 97u * 5 - 1);
    EXPECT_EQ(string_hash_lowercase_ascii(std::string(20, 'z').c_str(), measure), 193365176u);
}

}  // namespace
