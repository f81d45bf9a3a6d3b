// Values from text, beside the standard library's.
#include <charconv>
#include <cmath>
#include <vector>

#include "tarvcore/string_to.h"
#include "tests/fuzz/targets.h"

namespace tarv_fuzz {
namespace {

using tarvcore::string_to_nothrow;

// In memory that ends where the text does.
using Text = std::vector<char>;

// What the whole of a text denotes for std::from_chars; false: nothing.
template <class T>
bool read(const Text& text, T* value) {
    const char* const end = text.data() + text.size();
    const auto [stop, fault] = std::from_chars(text.data(), end, *value);
    return fault == std::errc() && stop == end;
}

template <class Integer>
void check_integer(const Text& text) {
    constexpr Integer untouched = 77;
    Integer expected = untouched;
    const bool good = read(text, &expected);
    Integer value = untouched;
    require(string_to_nothrow(text.data(), text.size(), &value).is_null() == good,
            "whether a text is an integer");
    require(value == (good ? expected : untouched), "an integer");
    const std::vector<wchar_t> wide(text.begin(), text.end());
    Integer of_wide = untouched;
    require(
        string_to_nothrow(wide.data(), wide.size(), &of_wide).is_null() == good && of_wide == value,
        "an integer of wide text");
}

void check_double(const Text& text) {
    double value = 77;
    const auto error = string_to_nothrow(text.data(), text.size(), &value);
    double expected = 0;
    if (read(text, &expected)) {
        require(!error, "a number that is none");
        require(value == expected || (std::isnan(value) && std::isnan(expected)), "a double");
    }
    if (error) {
        require(value == 77, "a failure that changes its output");
        return;
    }
    float narrow = 77;
    if (!string_to_nothrow(text.data(), text.size(), &narrow))
        require(narrow == static_cast<float>(value), "a float");
}

void check_bool(const Text& text) {
    std::string word(text.begin(), text.end());
    for (char& c : word)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    const bool yes = word == "1" || word == "true" || word == "yes" || word == "y";
    const bool no = word == "0" || word == "false" || word == "no" || word == "n";
    bool value = !yes;
    require(string_to_nothrow(text.data(), text.size(), &value).is_null() == (yes || no),
            "whether a text is a bool");
    require(value == (yes || !no), "a bool");
}

}  // namespace

void run_string_to(Input input) {
    const Text text(input.begin(), input.end());
    check_integer<signed char>(text);
    check_integer<unsigned short>(text);
    check_integer<int>(text);
    check_integer<long long>(text);
    check_integer<unsigned long long>(text);
    check_double(text);
    check_bool(text);
}

}  // namespace tarv_fuzz
