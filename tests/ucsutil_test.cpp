// Faults to catch: a wrong message, code or place in a record; a wrong number of units passed over
// after a bad character; errno set on success, or wrongly; an offset of the first bad character
// that a later one overwrites; wide characters treated other than 16-bit units.

#include "tarvcore/ucsutil.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <vector>

#include "tarvcore/error_exception.h"
#include "tests/support/trials.h"
#include "tests/support/unicode_oracle.h"

namespace {

using namespace tarvcore;
using namespace tarv_test;
using namespace std::string_literals;

constexpr unsigned measure = 0xFFFFFFFF;
constexpr int untouched = 4711;

// The answer of a call and the errno after it.
struct Answer {
    unsigned units;
    int error;
    bool operator==(const Answer&) const = default;
    friend void PrintTo(const Answer& answer, std::ostream* os) {
        *os << answer.units << " units, errno " << answer.error;
    }
};

template <class Call>
Answer answer(Call call) {
    errno = untouched;
    const unsigned units = call();
    return {units, errno};
}

template <class Call>
ErrorInfo::Ptr error_of(Call call) {
    try {
        call();
    } catch (const ErrorException& e) {
        return e.error();
    }
    return {};
}

// "code|message|function" of a record and its causes.
std::string shown(ErrorInfo::Ptr error) {
    std::string text;
    for (; error; error = error->nested()) {
        text += error->code().as_string() + "|" + error->message().as_string() + "|" +
                error->location().function().as_string() + "\n";
    }
    return text;
}

std::vector<unsigned short> to_utf16(const std::string& text, unsigned short replacement,
                                     int* error_index) {
    std::vector<unsigned short> units(
        utf8_to_utf16(text.data(), text.size(), nullptr, 0, replacement, nullptr));
    EXPECT_EQ(utf8_to_utf16(text.data(), text.size(), units.data(), units.size(), replacement,
                            error_index),
              units.size());
    return units;
}

TEST(UcsUtil, CharactersRoundTripOrAreRefused) {
    std::uint32_t accepted = 0;
    const auto check = [&](std::uint32_t c) {
        char utf8[6];
        const Answer length = answer([&] { return ucs4_char_to_utf8(c, utf8, utf8 + 6); });
        unsigned back = 0;
        if (oracle_allowed(c)) {
            ++accepted;
            ASSERT_EQ(length.error, untouched);
            ASSERT_EQ(ucs4_char_to_utf8(c, nullptr, nullptr), length.units);
            ASSERT_EQ(utf8_to_ucs4_char(utf8, 6, &back), length.units);
            ASSERT_EQ(back, c);
            ASSERT_EQ(utf8_sequence_length(utf8[0]), length.units);
            ASSERT_EQ(answer([&] { return ucs4_char_to_utf8(c, utf8, utf8 + length.units - 1); }),
                      (Answer{0, ENOMEM}));
        } else {
            ASSERT_EQ(length, (Answer{0, EINVAL})) << c;
        }

        unsigned short utf16[2];
        const Answer units = answer([&] { return ucs4_char_to_utf16(c, utf16, utf16 + 2); });
        if (oracle_allowed(c) && c < 0x110000) {
            ASSERT_EQ(units, (Answer{c < 0x10000 ? 1u : 2u, untouched})) << c;
            ASSERT_EQ(utf16_to_ucs4_char(utf16, 2, &back), units.units);
            ASSERT_EQ(back, c);
            ASSERT_EQ(answer([&] { return ucs4_char_to_utf16(c, utf16, utf16 + units.units - 1); }),
                      (Answer{0, ENOMEM}));
        } else {
            ASSERT_EQ(units, (Answer{0, EINVAL})) << c;
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
            if (!is_high(first)) {
                // A high surrogate takes the letter along.
                expected += alone[first];
                expected += is_high(second) ? bad : alone[second] + 'a';
            } else if (second / 0x400 == 0x37) {
                expected += oracle_utf8(0x10000 + first % 0x400 * 0x400 + second % 0x400) + 'a';
            } else {
                expected += bad + 'a';
            }
        }
        std::string utf8(expected.size() + 1, '\0');
        utf8.resize(
            utf16_to_utf8(text.data(), text.size(), utf8.data(), utf8.size(), bad[0], nullptr));
        ASSERT_TRUE(utf8 == expected) << first;
        valid += 0x10000 - std::min<unsigned>(0x10000, std::ranges::count(utf8, bad[0]));
    }
    EXPECT_EQ(valid, 4031393801u);
}

TEST(UcsUtil, SingleCharactersReportThroughErrno) {
    const unsigned short lone_high[] = {0xD800, 'a'};
    const unsigned short lone_low[] = {0xDC00};
    unsigned out = 77;
    EXPECT_EQ(answer([&] { return utf8_to_ucs4_char("\xC3\xA9", 0, &out); }),
              (Answer{0, untouched}));
    EXPECT_EQ(answer([&] { return utf8_to_ucs4_char("\xC3\xA9", 1, &out); }), (Answer{0, EINVAL}));
    EXPECT_EQ(answer([&] { return utf16_to_ucs4_char(lone_high, 0, &out); }),
              (Answer{0, untouched}));
    EXPECT_EQ(answer([&] { return utf16_to_ucs4_char(lone_high, 2, &out); }), (Answer{0, EINVAL}));
    EXPECT_EQ(answer([&] { return utf16_to_ucs4_char(lone_low, 1, &out); }), (Answer{0, EINVAL}));
    EXPECT_EQ(out, 77u);
    EXPECT_EQ(answer([&] { return utf8_to_ucs4_char("\xC3\xA9", 2, nullptr); }),
              (Answer{2, untouched}));
    for (const char lead : {'\x80', '\xBF', '\xFE', '\xFF'})
        EXPECT_EQ(answer([=] { return utf8_sequence_length(lead); }), (Answer{0, EINVAL}));
}

TEST(UcsUtil, ReplacesEachBadCharacterAndReportsTheFirst) {
    const struct {
        std::string source;
        std::vector<unsigned short> expected;
        int error_index;
    } rows[] = {
        {"abc", {'a', 'b', 'c'}, -1},
        {"a\xFF"
         "b",
         {'a', '?', 'b'},
         1},
        {"\xFF", {'?'}, 0},
        {"\x80\x80\x80x", {'?', 'x'}, 0},
        {"\xE4\xB8-\xE4\xB8", {'?', '-', '?'}, 0},
        {"\xC3\xA9\xC0\x80\xEF\xBB\xBF.", {0xE9, '?', '?', '.'}, 2},
        {"\xF4\x90\x80\x80\xF4\x8F\xBF\xBF", {'?', 0xDBFF, 0xDFFF}, 0},
    };
    for (const auto& row : rows) {
        int error_index = 99;
        EXPECT_EQ(to_utf16(row.source, '?', &error_index), row.expected) << row.source;
        EXPECT_EQ(error_index, row.error_index) << row.source;
        to_utf16(row.source, '?', nullptr);
    }

    // A high surrogate takes the next unit along, whatever that is; a low one goes alone.
    const wchar_t utf16[] = {'a', 0xD800, 'b', 0xDC00, 0xFEFF, 0xDBFF};
    char utf8[8] = {};
    int error_index = 99;
    EXPECT_EQ(wstr_to_utf8(utf16, 6, utf8, 8, '?', &error_index), 5u);
    EXPECT_EQ(utf8, "a????"s);
    EXPECT_EQ(error_index, 1);

    const unsigned ucs4[] = {0x80000000, 'b', 0xDFFF};
    EXPECT_EQ(ucs4_to_utf8(ucs4, 3, utf8, 8, '\xFF', &error_index), 3u);
    EXPECT_EQ(std::string(utf8, 3),
              "\xFF"
              "b\xFF");
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
    EXPECT_EQ(answer([] { return utf8_to_utf16("", 0, nullptr, 0, 0, nullptr); }),
              (Answer{0, untouched}));
}

TEST(UcsUtil, AFullDestinationIsReportedThroughErrno) {
    unsigned short utf16[8];
    wchar_t wide[8];
    unsigned ucs4[8];
    char utf8[8];
    int index = 0;
    const auto to16 = [&](const char* text, unsigned room, unsigned short replacement) {
        return answer(
            [&] { return utf8_to_utf16(text, strlen(text), utf16, room, replacement, &index); });
    };
    EXPECT_EQ(to16("ab", 1, 0), (Answer{0, ENOMEM}));
    EXPECT_EQ(utf16[0], 'a') << "what was written stays";
    EXPECT_EQ(to16("ab", 2, 0), (Answer{2, untouched}));
    EXPECT_EQ(to16("\xF0\x9F\x98\x80", 1, 0), (Answer{0, ENOMEM})) << "half a pair fits";
    EXPECT_EQ(answer([&] { return utf8_to_wstr("ab", 2, wide, 1, 0, nullptr); }),
              (Answer{0, ENOMEM}));
    EXPECT_EQ(answer([&] { return utf8_to_ucs4("ab", 2, ucs4, 1, 0, nullptr); }),
              (Answer{0, EINVAL}));
    EXPECT_EQ(answer([&] { return wstr_to_utf8(L"\u20AC", 1, utf8, 2, 0, nullptr); }),
              (Answer{0, ENOMEM}));
    EXPECT_EQ(
        answer([&] { return ucs4_to_utf8(std::data({0x7FFFFFFFu}), 1, utf8, 5, 0, nullptr); }),
        (Answer{0, ENOMEM}));

    // A bad character is found before the lack of room for it; a replacement needs room.
    EXPECT_EQ(to16("a\xFF", 1, '?'), (Answer{0, ENOMEM}));
    EXPECT_EQ(index, 1);
    EXPECT_THROW(to16("a\xFF", 1, 0), ErrorException);
    EXPECT_EQ(index, 1);
    EXPECT_EQ(to16("ab\xFF", 1, 0), (Answer{0, ENOMEM}));
    EXPECT_EQ(index, -1);
}

TEST(UcsUtil, RaisesWhatIsWrong) {
    const std::string conversion = "error.tarvcore.string.conversion|";
    unsigned short units[] = {'a', 0xD800, 'b'};
    wchar_t wide[8] = {0xDC00};
    unsigned ucs4[8] = {0xFFFF};
    char utf8[8];

    EXPECT_EQ(shown(error_of([&] { utf16_to_utf8(units, 3, nullptr, 0, 0, nullptr); })),
              conversion +
                  "Encountered invalid UTF-16 character that cannot be converted to "
                  "UTF-8|tarvcore::utf16_to_utf8()\n");
    const std::string ucs4_text =
        conversion + "Encountered invalid UCS-4 character that cannot be converted to UTF-8|";
    EXPECT_EQ(shown(error_of([&] { utf16_to_utf8(units, 3, utf8, 8, 0, nullptr); })),
              ucs4_text + "tarvcore::utf16_to_utf8()\n");
    EXPECT_EQ(shown(error_of([&] { wstr_to_utf8(wide, 1, utf8, 8, 0, nullptr); })),
              ucs4_text + "tarvcore::utf16_to_utf8()\n");
    EXPECT_EQ(shown(error_of([&] { ucs4_to_utf8(ucs4, 1, nullptr, 0, 0, nullptr); })),
              ucs4_text + "tarvcore::ucs4_to_utf8()\n");
    EXPECT_EQ(
        shown(error_of([&] { utf8_to_utf16("\xF4\x90\x80\x80", 4, nullptr, 0, 0, nullptr); })),
        conversion +
            "Encountered UTF-8 (UCS-4) character that cannot be represented in "
            "UTF-16|tarvcore::utf8_to_utf16()\n");

    // The cause is about what follows the good part: here the rest of it.
    const std::string invalid = conversion + "Invalid UTF-8 character encountered|";
    const std::string partial =
        "error.tarvcore.string.utf8.partial|String ends in a partial UTF-8 sequence|";
    EXPECT_EQ(shown(error_of([&] { utf8_to_wstr("ab\xE4\xB8", 4, wide, 8, 0, nullptr); })),
              invalid + "tarvcore::utf8_to_utf16()\n" + partial + "tarvcore::utf8_to_utf16()\n");
    EXPECT_EQ(shown(error_of([&] { utf8_to_ucs4("ab\xE4\xB8", 4, ucs4, 8, 0, nullptr); })),
              invalid + "tarvcore::utf8_to_ucs4()\n" + partial + "tarvcore::utf8_to_ucs4()\n");
}

TEST(UcsUtil, ValidationNamesTheFirstFault) {
    const std::string first = "invalid|Invalid first byte of UTF-8 sequence";
    const std::string partial = "partial|String ends in a partial UTF-8 sequence";
    const std::string overlong = "overlong|String contains overlong UTF-8 sequence";
    const std::string subsequent = "invalid|Invalid subsequent byte in UTF-8 character sequence";
    const std::string must_not = "invalid|UTF-8 string must not contain ";
    const struct {
        std::string text;
        std::string expected;
    } rows[] = {
        {"\x80", first},
        {"\xBF", first},
        {"\xFE\x80", first},
        {"\xFF\x80", first},
        {"\xC0", partial},
        {"\xE4\xB8", partial},
        {"\xE4x", partial},
        {"\xF0\x9F\x98", partial},
        {"\xF8\x88\x80\x80", partial},
        {"\xFC\x84\x80\x80\x80", partial},
        {"\xC0\x80", overlong},
        {"\xC1x", overlong},
        {"\xC2x", subsequent},
        {"\xE0\x9F\xBF", overlong},
        {"\xE0\x9Fx", subsequent},
        {"\xE0x\x80", subsequent},
        {"\xF0\x8F\xBF\xBF", overlong},
        {"\xF0x\x80\x80", overlong},
        {"\xF0\x90x\x80", subsequent},
        {"\xF1\x80\x80x", subsequent},
        {"\xF8\x87\x80\x80\x80", overlong},
        {"\xF8\x88\x80\x80x", subsequent},
        {"\xFC\x83\x80\x80\x80\x80", overlong},
        {"\xFC\x84\x80\x80\x80\xC0", subsequent},
        {"\xED\xA0\x80", must_not + "UTF-16 surrogates (U+D800...U+DFFF)"},
        {"\xED\xBF\xBF", must_not + "UTF-16 surrogates (U+D800...U+DFFF)"},
        {"\xEF\xBF\xBE", must_not + "U+FFFE (BOM) character"},
        {"\xEF\xBB\xBF", must_not + "U+FEFF (BOM) character"},
        {"\xEF\xBF\xBF", must_not + "U+FFFF character"},
        {"fine\xC3\xA9\xFF\xC0", first},
    };
    for (const auto& row : rows) {
        EXPECT_FALSE(is_valid_utf8(row.text.data(), row.text.size()));
        EXPECT_EQ(shown(error_of([&] { check_valid_utf8(row.text.data(), row.text.size()); })),
                  "error.tarvcore.string.utf8." + row.expected + "|tarvcore::check_valid_utf8()\n");
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
