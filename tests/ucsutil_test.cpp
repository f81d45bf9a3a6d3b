// Faults to catch: a wrong message, code or place in a record; a wrong number of units passed over
// after a bad character; errno set on success, or wrongly; an offset of the first bad character
// that a later one overwrites; wide characters treated other than 16-bit units; a wrong boundary
// between sequence lengths; surrogates or non-characters let through.

#include "tarvcore/ucsutil.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <functional>
#include <string>
#include <vector>

#include "tarvcore/to_string.h"
#include "tests/support/raised.h"
#include "tests/support/trials.h"
#include "tests/support/unicode_oracle.h"

namespace {

using namespace tarvcore;
using namespace tarv_test;
using namespace std::string_literals;

constexpr unsigned measure = 0xFFFFFFFF;
constexpr int untouched = 4711;

TEST(UcsUtil, CharactersRoundTripOrAreRefused) {
    std::uint32_t accepted = 0;
    const auto check = [&](std::uint32_t c) {
        char utf8[6];
        errno = untouched;
        const unsigned length = ucs4_char_to_utf8(c, utf8, utf8 + 6);
        ASSERT_EQ(errno, oracle_allowed(c) ? untouched : EINVAL) << c;
        ASSERT_EQ(std::string(utf8, length), oracle_allowed(c) ? oracle_utf8(c) : "") << c;
        unsigned back = 0;
        if (oracle_allowed(c)) {
            ++accepted;
            ASSERT_EQ(ucs4_char_to_utf8(c, nullptr, nullptr), length);
            ASSERT_EQ(utf8_to_ucs4_char(utf8, 6, &back), length);
            ASSERT_EQ(back, c);
            ASSERT_EQ(utf8_sequence_length(utf8[0]), length);
            ASSERT_EQ(ucs4_char_to_utf8(c, utf8, utf8 + length - 1), 0u);
            ASSERT_EQ(errno, ENOMEM);
        }

        unsigned short utf16[2];
        errno = untouched;
        const unsigned units = ucs4_char_to_utf16(c, utf16, utf16 + 2);
        if (oracle_allowed(c) && c < 0x110000) {
            ASSERT_EQ(errno, untouched);
            ASSERT_EQ(Units16(utf16, utf16 + units), oracle_utf16(c)) << c;
            ASSERT_EQ(ucs4_char_to_utf16(c, nullptr, nullptr), units);
            ASSERT_EQ(utf16_to_ucs4_char(utf16, 2, &back), units);
            ASSERT_EQ(back, c);
            ASSERT_EQ(ucs4_char_to_utf16(c, utf16, utf16 + units - 1), 0u);
            ASSERT_EQ(errno, ENOMEM);
        } else {
            ASSERT_EQ(units, 0u) << c;
            ASSERT_EQ(errno, EINVAL);
        }
    };
    // All of them in a long run; else all of Unicode, and what lies at and between the limits.
    const bool all = is_long_run();
    for (std::uint32_t c = 0; c < 0x80000000 && !HasFatalFailure();
         c += all || c < 0x120000 ? 1 : 7919)
        check(c);
    if (all) {
        EXPECT_EQ(accepted, 2147481597u);
    }
    for (int bit = 16; bit < 32; ++bit) {
        for (const std::uint32_t near : {-1u, 0u, 1u})
            check((1u << bit) + near);
    }
    check(0xFFFFFFFF);
}

// All pairs that begin with one unit make a text, with a letter behind each.
TEST(UcsUtil, ConvertsEveryPairOfUtf16Units) {
    if (!is_long_run()) GTEST_SKIP() << "make test-long does that";
    const std::string bad = "\xFF";
    const auto is_high = [](unsigned unit) { return unit / 0x400 == 0x36; };
    std::vector<std::string> alone(0x10000, bad);
    for (unsigned unit = 0; unit < 0x10000; ++unit) {
        if (oracle_allowed(unit)) alone[unit] = oracle_utf8(unit);
    }
    std::vector<unsigned short> text(3 * 0x10000, 'a');
    std::uint32_t valid = 0;
    for (unsigned first = 0; first < 0x10000; ++first) {
        std::string expected;
        for (unsigned second = 0; second < 0x10000; ++second) {
            text[3 * second] = static_cast<unsigned short>(first);
            text[3 * second + 1] = static_cast<unsigned short>(second);
            const bool is_pair = is_high(first) && second / 0x400 == 0x37;
            expected += is_pair ? oracle_utf8(0x10000 + first % 0x400 * 0x400 + second % 0x400)
                                : alone[first];
            if (!is_high(first)) expected += alone[second];
            // A high surrogate takes the letter along.
            if (is_high(first) || !is_high(second)) expected += 'a';
        }
        std::string utf8(expected.size() + 1, '\0');
        utf8.resize(
            utf16_to_utf8(text.data(), text.size(), utf8.data(), utf8.size(), bad[0], nullptr));
        ASSERT_TRUE(utf8 == expected) << first;
        valid += 0x10000 - std::min<unsigned>(0x10000, std::ranges::count(utf8, bad[0]));
    }
    EXPECT_EQ(valid, 4031393801u);
}

TEST(UcsUtil, ReplacesEachBadCharacterAndReportsTheFirst) {
    const struct {
        std::string utf8;
        std::wstring expected;
        int error_index;
    } rows[] = {
        {"abc", L"abc", -1},
        {"a\xFF.", L"a?.", 1},
        {"\x80\x80\x80x", L"?x", 0},
        {"\xE4\xB8-\xE4\xB8", L"?-?", 0},
        {"\xC3\xA9\xC0\x80\xEF\xBB\xBF.", L"\u00E9??.", 2},
        {"\xF4\x90\x80\x80\xF4\x8F\xBF\xBF", L"?\xDBFF\xDFFF", 0},
    };
    int error_index = 99;
    for (const auto& row : rows) {
        EXPECT_EQ(to_wstring(row.utf8, L'?', &error_index), row.expected) << row.utf8;
        EXPECT_EQ(error_index, row.error_index) << row.utf8;
    }
    // A high surrogate takes the next unit along, whatever that is; a low one goes alone.
    const std::wstring utf16 = {'a', 0xD800, 'b', 0xDC00, 0xFEFF, 0xDBFF};
    EXPECT_EQ(to_string(utf16, '?', &error_index), "a????");
    EXPECT_EQ(error_index, 1);

    const unsigned ucs4[] = {0x80000000, 'b', 0xDFFF};
    char utf8[3] = {};
    EXPECT_EQ(ucs4_to_utf8(ucs4, 3, utf8, 3, '\xFF', &error_index), 3u);
    EXPECT_EQ(std::string(utf8, 3), "\xFF" + "b\xFF"s);
    EXPECT_EQ(error_index, 0);
    unsigned replaced[2] = {};
    EXPECT_EQ(utf8_to_ucs4("\xF8x", 2, replaced, 2, 0xFFFFFFFF, nullptr), 2u);
    EXPECT_EQ(replaced[0], 0xFFFFFFFFu);
}

TEST(UcsUtil, CountsAndConvertsTheTerminatorOfAnUnmeasuredText) {
    unsigned short units[] = {7, 7, 7};
    EXPECT_EQ(utf8_to_utf16("A", measure, nullptr, 0, 0, nullptr), 2u);
    EXPECT_EQ(utf8_to_utf16("A", measure, units, 3, 0, nullptr), 2u);
    EXPECT_EQ(units[1], 0);
    EXPECT_EQ(units[2], 7);
    EXPECT_EQ(wstr_to_utf8(L"\u00E9", measure, nullptr, 0, 0, nullptr), 3u);
    const unsigned ucs4[] = {0x7FFFFFFF, 0};
    EXPECT_EQ(ucs4_to_utf8(ucs4, measure, nullptr, 0, 0, nullptr), 7u);
    EXPECT_TRUE(is_valid_utf8("\xC3\xA9", measure));
    EXPECT_FALSE(is_valid_utf8("\xC3", measure));
    EXPECT_NO_THROW(check_valid_utf8("\xC3\xA9\0\xFF", measure)) << "not what is behind it";
}

TEST(UcsUtil, ReportsThroughErrno) {
    const unsigned short lone_high[] = {0xD800, 'a'};
    const unsigned short lone_low[] = {0xDC00};
    const unsigned last = 0x7FFFFFFF;
    unsigned out = 77;
    unsigned short utf16[8];
    wchar_t wide[8];
    unsigned ucs4[8];
    char utf8[8];
    int index = -1;
    const auto to16 = [&](const std::string& text, unsigned room, unsigned short replacement) {
        return utf8_to_utf16(text.data(), text.size(), utf16, room, replacement, &index);
    };
    const struct {
        std::function<unsigned()> call;
        unsigned units;
        int error;
        int index = -1;
    } rows[] = {
        {[&] { return utf8_to_ucs4_char("\xC3\xA9", 0, &out); }, 0, untouched},
        {[&] { return utf8_to_ucs4_char("\xC3\xA9", 1, &out); }, 0, EINVAL},
        {[&] { return utf8_to_ucs4_char("\xC3\xA9", 2, nullptr); }, 2, untouched},
        {[&] { return utf16_to_ucs4_char(lone_high, 0, &out); }, 0, untouched},
        {[&] { return utf16_to_ucs4_char(lone_high, 2, &out); }, 0, EINVAL},
        {[&] { return utf16_to_ucs4_char(lone_low, 1, &out); }, 0, EINVAL},
        {[] { return utf8_sequence_length('\x80'); }, 0, EINVAL},
        {[] { return utf8_sequence_length('\xBF'); }, 0, EINVAL},
        {[] { return utf8_sequence_length('\xFE'); }, 0, EINVAL},
        {[] { return utf8_sequence_length('\xFF'); }, 0, EINVAL},
        // A full destination.
        {[&] { return to16("ab", 1, 0); }, 0, ENOMEM},
        {[&] { return to16("ab", 2, 0); }, 2, untouched},
        {[&] { return to16("", 0, 0); }, 0, untouched},
        {[&] { return to16("\xF0\x9F\x98\x80", 1, 0); }, 0, ENOMEM},  // half a pair fits
        {[&] { return utf8_to_wstr("ab", 2, wide, 1, 0, nullptr); }, 0, ENOMEM},
        {[&] { return utf8_to_ucs4("ab", 2, ucs4, 1, 0, nullptr); }, 0, EINVAL},
        {[&] { return wstr_to_utf8(L"\u20AC", 1, utf8, 2, 0, nullptr); }, 0, ENOMEM},
        {[&] { return ucs4_to_utf8(&last, 1, utf8, 5, 0, nullptr); }, 0, ENOMEM},
        // A bad character is found before the lack of room for it; a replacement needs room.
        {[&] { return to16("a\xFF", 1, '?'); }, 0, ENOMEM, 1},
        {[&] { return to16("ab\xFF", 1, 0); }, 0, ENOMEM},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        errno = untouched;
        EXPECT_EQ(row.call(), row.units);
        EXPECT_EQ(errno, row.error);
        EXPECT_EQ(index, row.index);
    }
    EXPECT_EQ(out, 77u);
    EXPECT_EQ(utf16[0], 'a') << "what was written stays";
    EXPECT_THROW(to16("a\xFF", 1, 0), ErrorException);
    EXPECT_EQ(index, 1);
}

TEST(UcsUtil, RaisesWhatIsWrong) {
    const unsigned short units[] = {'a', 0xD800, 'b'};
    wchar_t wide[8] = {0xDC00};
    unsigned ucs4[8] = {0xFFFF};
    char utf8[8];
    const auto expect = [](const std::string& what, const std::function<void()>& call) {
        EXPECT_EQ(raised(call), "error.tarvcore.string.conversion " + what);
    };
    const std::string place = "() //tarvcore/ucsutil.cpp";
    const std::string from_ucs4 =
        "Encountered invalid UCS-4 character that cannot be converted to UTF-8 [] tarvcore::";
    expect(
        "Encountered invalid UTF-16 character that cannot be converted to UTF-8 "
        "[] tarvcore::utf16_to_utf8" +
            place,
        [&] { utf16_to_utf8(units, 3, nullptr, 0, 0, nullptr); });
    expect(from_ucs4 + "utf16_to_utf8" + place,
           [&] { utf16_to_utf8(units, 3, utf8, 8, 0, nullptr); });
    expect(from_ucs4 + "utf16_to_utf8" + place,
           [&] { wstr_to_utf8(wide, 1, utf8, 8, 0, nullptr); });
    expect(from_ucs4 + "ucs4_to_utf8" + place,
           [&] { ucs4_to_utf8(ucs4, 1, nullptr, 0, 0, nullptr); });
    expect(
        "Encountered UTF-8 (UCS-4) character that cannot be represented in UTF-16 "
        "[] tarvcore::utf8_to_utf16" +
            place,
        [&] { utf8_to_utf16("\xF4\x90\x80\x80", 4, nullptr, 0, 0, nullptr); });

    // The cause is about what follows the good part: here the rest of it.
    const std::string from_utf8 = "Invalid UTF-8 character encountered [] tarvcore::";
    const std::string partial = place + "\n< error.tarvcore.string.utf8.partial";
    expect(from_utf8 + "utf8_to_utf16" + partial,
           [&] { utf8_to_wstr("ab\xE4\xB8", 4, wide, 8, 0, nullptr); });
    expect(from_utf8 + "utf8_to_ucs4" + partial,
           [&] { utf8_to_ucs4("ab\xE4\xB8", 4, ucs4, 8, 0, nullptr); });
}

TEST(UcsUtil, ValidationNamesTheFirstFault) {
    const std::string first = "invalid Invalid first byte of UTF-8 sequence";
    const std::string partial = "partial String ends in a partial UTF-8 sequence";
    const std::string overlong = "overlong String contains overlong UTF-8 sequence";
    const std::string subsequent = "invalid Invalid subsequent byte in UTF-8 character sequence";
    const std::string must_not = "invalid UTF-8 string must not contain ";
    const struct {
        std::string text;
        std::string expected;
    } rows[] = {
        {"\x80", first},
        {"\xFF\x80", first},
        {"\xC0", partial},
        {"\xE4\xB8", partial},
        {"\xE4x", partial},
        {"\xFC\x84\x80\x80\x80", partial},
        {"\xC0\x80", overlong},
        {"\xC1x", overlong},
        {"\xC2x", subsequent},
        {"\xE0\x9F\xBF", overlong},
        {"\xE0\x9Fx", subsequent},
        {"\xF0\x8F\xBF\xBF", overlong},
        {"\xF0x\x80\x80", overlong},
        {"\xF0\x90x\x80", subsequent},
        {"\xF1\x80x\x80", subsequent},
        {"\xF8\x87\x80\x80\x80", overlong},
        {"\xF8\x88\x80\x80x", subsequent},
        {"\xFC\x83\x80\x80\x80\x80", overlong},
        {"\xFC\x84\x80\x80\x80\xC0", subsequent},
        {"\xED\xA0\x80", must_not + "UTF-16 surrogates (U+D800...U+DFFF)"},
        {"\xEF\xBF\xBE", must_not + "U+FFFE (BOM) character"},
        {"\xEF\xBB\xBF", must_not + "U+FEFF (BOM) character"},
        {"\xEF\xBF\xBF", must_not + "U+FFFF character"},
        {"fine\xC3\xA9\xFF\xC0", first},
    };
    for (const auto& row : rows) {
        EXPECT_FALSE(is_valid_utf8(row.text.data(), row.text.size()));
        EXPECT_EQ(raised([&] { check_valid_utf8(row.text.data(), row.text.size()); }),
                  "error.tarvcore.string.utf8." + row.expected +
                      " [] tarvcore::check_valid_utf8() //tarvcore/ucsutil.cpp");
    }
    const std::string fine = "\xF7\xBF\xBF\xBF\xFB\xBF\xBF\xBF\xBF\xFD\xBF\xBF\xBF\xBF\xBF\0x"s;
    EXPECT_TRUE(is_valid_utf8(fine.data(), fine.size()));
    EXPECT_NO_THROW(check_valid_utf8(fine.data(), fine.size()));
}

TEST(UcsUtil, LimitsDoNotCutSequences) {
    EXPECT_EQ(utf8_limit_length("a\xC3\xA9", 3, 3), 3u);
    EXPECT_EQ(utf8_limit_length("a\xC3\xA9", 3, 2), 1u);
    EXPECT_EQ(utf8_limit_length("a\xC3\xA9", 3, 0), 0u);
    EXPECT_EQ(utf8_limit_length("\x80\x80\x80", 3, 2), 0u);
}

}  // namespace
