// Faults to catch: blanks, signs or trailing characters let through; a range that is one off; a
// result written although the call fails; a failure that raises where it should be stored; values
// that are printed as characters, or lose bits or their sign; the two ways of converting (short and
// long texts) that differ; a terminator that gets into the string.

#include "tarvcore/string_to.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <optional>
#include <string>

#include "tarvcore/error_exception.h"
#include "tarvcore/to_string.h"

namespace {

using namespace tarvcore;

// Narrow and wide text, raising or not, agree; nothing: the text is refused.
template <class T>
std::optional<T> value_of(std::string_view text) {
    constexpr T untouched{1};
    T narrow = untouched;
    T wide = untouched;
    const std::wstring wide_text(text.begin(), text.end());
    const auto error = string_to_nothrow(text, &narrow);
    const auto wide_error = string_to_nothrow(std::wstring_view(wide_text), &wide);
    EXPECT_EQ(!wide_error, !error) << text;
    EXPECT_EQ(std::memcmp(&narrow, &wide, sizeof(T)), 0) << text;
    if (!error) return narrow;

    EXPECT_EQ(narrow, untouched) << text;
    EXPECT_TRUE(error->matches("error.tarvcore.string.extraction"));
    EXPECT_THROW(string_to<T>(text), ErrorException) << text;
    EXPECT_THROW(string_to<T>(wide_text), ErrorException) << text;
    return std::nullopt;
}

template <class T>
void expect_value(std::string_view text, T expected) {
    EXPECT_EQ(value_of<T>(text), std::optional(expected)) << text;
    EXPECT_EQ(string_to<T>(text), expected) << text;
}

// There and back, where the text is the one that stands for the value.
template <class T>
void expect_number(std::string_view text, T expected) {
    expect_value(text, expected);
    EXPECT_EQ(to_string(expected), text);
    EXPECT_EQ(to_wstring(expected), std::wstring(text.begin(), text.end()));
}

template <class T>
void expect_refused(std::initializer_list<std::string_view> texts) {
    for (const std::string_view text : texts)
        EXPECT_EQ(value_of<T>(text), std::nullopt) << '"' << text << '"';
}

TEST(StringTo, ReadsTruthValues) {
    for (const char* text : {"1", "TRUE", "Yes", "Y", "y"})
        expect_value(text, true);
    for (const char* text : {"0", "False", "NO", "n"})
        expect_value(text, false);
    expect_number("true", true);
    expect_number("false", false);
    expect_refused<bool>({"", "on", "2", " true", "truex", "tru", "01", "10", "true "});
    EXPECT_THROW(string_to<bool>(L"\x179"), ErrorException) << "not a y in its low byte";
}

TEST(StringTo, ReadsIntegersWithinTheirRange) {
    expect_value<signed char>("-128", -128);
    expect_number<char>("65", 'A');
    expect_number<unsigned char>("255", 255);
    expect_number<short>("-32768", -32768);
    expect_number<unsigned short>("65535", 65535);
    expect_number("2147483647", 2147483647);
    expect_number("-2147483648", -2147483647L - 1);
    expect_number("4294967295", 4294967295u);
    expect_number("4294967295", 4294967295ul);
    expect_number("-9223372036854775808", -9223372036854775807ll - 1);
    expect_number("18446744073709551615", 18446744073709551615ull);
    expect_value("0000000000000000000000000000000000000007", 7ul);
    expect_value("-0", 0);

    expect_refused<signed char>({"128", "-129"});
    expect_refused<unsigned char>({"256", "-1", "-0"});
    expect_refused<short>({"32768"});
    expect_refused<int>({"2147483648", "-2147483649", "", "-", "+1", " 1", "1 ", "1.0", "0x1"});
    expect_refused<int>({"--1", {"1\0", 2}});
    expect_refused<unsigned>({"4294967296"});
    expect_refused<long long>({"9223372036854775808", "-9223372036854775809"});
    expect_refused<unsigned long long>({"18446744073709551616", "99999999999999999999999"});
    EXPECT_THROW(string_to<int>(L"\x131"
                                L"1"),
                 ErrorException)
        << "not a 1 in its low byte";
}

TEST(StringTo, ReadsFloatingPointNumbers) {
    expect_value("5", 5.0);
    expect_value("1.5", 1.5);
    expect_value("-1e308", -1e308);
    expect_value("+.5", 0.5);
    expect_value("0x1p-3", 0.125);
    expect_value("1e-999", 0.0);
    expect_value("-inf", -HUGE_VAL);
    expect_value("4.9406564584124654e-324", 4.9406564584124654e-324);
    expect_value("0." + std::string(200, '0') + "1e201", 1.0);
    EXPECT_TRUE(std::isnan(value_of<double>("nan").value()));
    expect_refused<double>(
        {"", " 1", "\t1", "1 ", "1x", "1e", "e5", ".", "1,5", "1e999", "-1e999", {"1\0", 2}});

    EXPECT_THROW(string_to<double>(L"1\x130"), ErrorException) << "not a 0 in its low byte";

    expect_value("3.4e38", 3.4e38f);
    expect_value("-3.4028234663852886e38", -3.4028234663852886e38f);
    expect_value("1e-60", 0.0f);
    expect_refused<float>({"1e39", "3.4028234663852889e38", "-1e39", "inf", "nan", "", "x"});
}

TEST(StringTo, TheFailureShowsTypeAndText) {
    const auto failure = [](const auto& text, const std::type_info& type) {
        ErrorInfo::Ptr error;
        impl::string_to_failure(text.data(), text.size(), type, &error);
        return error->expanded_message().as_string();
    };
    EXPECT_EQ(failure(std::string("on"), typeid(bool)),
              "tarvcore::string_to<bool>(\"on\") conversion failed.");
    EXPECT_EQ(failure(std::wstring(L"\u20AC\xD800"), typeid(unsigned short)),
              "tarvcore::string_to<unsigned short>(\"\xE2\x82\xAC?\") conversion failed.");

    const std::string at_limit(128, '7');
    const std::string begin = "tarvcore::string_to<int>(\"" + std::string(127, '7');
    const std::string end = "\") conversion failed.";
    EXPECT_EQ(failure(at_limit, typeid(int)), begin + '7' + end);
    EXPECT_EQ(failure(at_limit + "7", typeid(int)), begin + "7..." + end);
    EXPECT_EQ(failure(at_limit.substr(1) + "\u20AC", typeid(int)), begin + "..." + end);

    EXPECT_THROW(impl::string_to_failure("x", 1, typeid(int), nullptr), ErrorException);
    EXPECT_EQ(string_to<int>("42x", 2), 42);
    EXPECT_EQ(string_to<int>(L"42", 0xFFFFFFFF), 42);
}

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

TEST(ToString, MeasuresTexts) {
    EXPECT_EQ(to_string("\xFF\xFE"), "\xFF\xFE") << "copied as it is";
    EXPECT_EQ(to_string(std::string("\xFF\0", 2)), std::string("\xFF\0", 2));
    EXPECT_EQ(to_wstring(std::wstring(L"\xDC00\0", 2)), std::wstring(L"\xDC00\0", 2));
    EXPECT_EQ(to_wstring(L"\xDC00"), L"\xDC00");
    EXPECT_EQ(to_string("abc", 2) + to_string("abc", 0xFFFFFFFF), "ababc");
    EXPECT_EQ(to_wstring(L"abc", 2) + to_wstring(L"abc", 0xFFFFFFFF), L"ababc");
    EXPECT_EQ(to_string(L"abc", 2), "ab");
    EXPECT_EQ(to_wstring("a\0c", 3), std::wstring(L"a\0c", 3));
}

}  // namespace
