#include "tarvcore/string_to.h"

#include <cfloat>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>
#include <system_error>

#include "tarvcore/error_code_constants.h"
#include "tarvcore/error_composer.h"
#include "tarvcore/impl/measured_length.h"
#include "tarvcore/impl/type_name.h"
#include "tarvcore/string_util.h"
#include "tarvcore/to_string.h"
#include "tarvcore/ucsutil.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/string_to.cpp#1 $");

namespace tarvcore::impl {
namespace {

constexpr unsigned longest_shown = 128;

// A copy of a text as narrow characters, with a terminator behind it.
template <class Char>
class AsciiText {
public:
    AsciiText(const Char* text, unsigned length) {
        char* copy = buffer_;
        if (length >= sizeof buffer_) {
            long_text_.resize(length);
            copy = long_text_.data();
        }
        for (unsigned i = 0; i < length; ++i) {
            const auto unit = static_cast<std::make_unsigned_t<Char>>(text[i]);
            is_ascii_ = is_ascii_ && unit < 0x80;
            copy[i] = static_cast<char>(unit);
        }
        copy[length] = '\0';
        begin_ = copy;
        end_ = copy + length;
    }

    // No value has other characters.
    bool is_ascii() const { return is_ascii_; }
    const char* begin() const { return begin_; }
    const char* end() const { return end_; }
    unsigned size() const { return static_cast<unsigned>(end_ - begin_); }

private:
    char buffer_[128];
    std::string long_text_;
    bool is_ascii_ = true;
    const char* begin_;
    const char* end_;
};

bool is_any_of(const char* text, unsigned length, const char* first, const char* word,
               const char* synonym, const char* letter) {
    const auto equal = [=](const char* candidate) {
        return compare_nocase_ascii(text, length, candidate, std::strlen(candidate)) == 0;
    };
    return equal(first) || equal(word) || equal(synonym) || equal(letter);
}

template <class Char>
bool parse_bool(const Char* text, unsigned length, ErrorInfo::Ptr* error) {
    length = measured_length(text, length);
    const AsciiText<Char> ascii(text, length);
    if (ascii.is_ascii()) {
        if (is_any_of(ascii.begin(), length, "1", "true", "yes", "y")) return true;
        if (is_any_of(ascii.begin(), length, "0", "false", "no", "n")) return false;
    }
    string_to_failure(text, length, typeid(bool), error);
    return false;
}

// False where the text is not a number from end to end, or a finite one beyond all doubles.
template <class Char>
bool parse_double(const Char* text, unsigned length, double* value) {
    const AsciiText<Char> ascii(text, length);
    // The C library would pass over blanks, and by the locale.
    constexpr char blanks[] = " \t\n\v\f\r";
    if (length == 0 || !ascii.is_ascii() || std::strchr(blanks, *ascii.begin()) != nullptr) {
        return false;
    }
    char* end = nullptr;
    *value = std::strtod(ascii.begin(), &end);
    if (end != ascii.end()) return false;
    // "inf" and "infinity" have a letter first.
    const char* unsigned_part = ascii.begin() + std::strspn(ascii.begin(), "+-");
    return !std::isinf(*value) || std::strchr("iI", *unsigned_part) != nullptr;
}

template <class Char>
double to_double(const Char* text, unsigned length, ErrorInfo::Ptr* error) {
    length = measured_length(text, length);
    double value = 0;
    if (parse_double(text, length, &value)) return value;
    string_to_failure(text, length, typeid(double), error);
    return 0;
}

template <class Char>
float to_float(const Char* text, unsigned length, ErrorInfo::Ptr* error) {
    length = measured_length(text, length);
    double value = 0;
    // A NaN is not within.
    if (parse_double(text, length, &value) && value >= -double{FLT_MAX} && value <= FLT_MAX) {
        return static_cast<float>(value);
    }
    string_to_failure(text, length, typeid(float), error);
    return 0;
}

template <class Integer, class Char>
Integer to_integer(const Char* text, unsigned length, Integer smallest, Integer largest,
                   const std::type_info& target, ErrorInfo::Ptr* error) {
    length = measured_length(text, length);
    const AsciiText<Char> ascii(text, length);
    if (ascii.is_ascii()) {
        Integer value = 0;
        const auto [end, fault] = std::from_chars(ascii.begin(), ascii.end(), value);
        if (fault == std::errc() && end == ascii.end() && value >= smallest && value <= largest) {
            return value;
        }
    }
    string_to_failure(text, length, target, error);
    return 0;
}

}  // namespace

bool string_to_bool(const char* text, unsigned length, ErrorInfo::Ptr* error) {
    return parse_bool(text, length, error);
}

bool string_to_bool(const wchar_t* text, unsigned length, ErrorInfo::Ptr* error) {
    return parse_bool(text, length, error);
}

float string_to_float(const char* text, unsigned length, ErrorInfo::Ptr* error) {
    return to_float(text, length, error);
}

float string_to_float(const wchar_t* text, unsigned length, ErrorInfo::Ptr* error) {
    return to_float(text, length, error);
}

double string_to_double(const char* text, unsigned length, ErrorInfo::Ptr* error) {
    return to_double(text, length, error);
}

double string_to_double(const wchar_t* text, unsigned length, ErrorInfo::Ptr* error) {
    return to_double(text, length, error);
}

long long string_to_signed(const char* text, unsigned length, long long smallest, long long largest,
                           const std::type_info& target, ErrorInfo::Ptr* error) {
    return to_integer(text, length, smallest, largest, target, error);
}

long long string_to_signed(const wchar_t* text, unsigned length, long long smallest,
                           long long largest, const std::type_info& target, ErrorInfo::Ptr* error) {
    return to_integer(text, length, smallest, largest, target, error);
}

unsigned long long string_to_unsigned(const char* text, unsigned length, unsigned long long largest,
                                      const std::type_info& target, ErrorInfo::Ptr* error) {
    return to_integer(text, length, 0ull, largest, target, error);
}

unsigned long long string_to_unsigned(const wchar_t* text, unsigned length,
                                      unsigned long long largest, const std::type_info& target,
                                      ErrorInfo::Ptr* error) {
    return to_integer(text, length, 0ull, largest, target, error);
}

void string_to_failure(const char* text, unsigned length, const std::type_info& target,
                       ErrorInfo::Ptr* error) {
    length = measured_length(text, length);
    const unsigned shown = utf8_limit_length(text, length, longest_shown);
    std::string shown_text(text, shown);
    if (shown < length) shown_text += "...";
    ErrorComposer("tarvcore::string_to<{@type}>(\"{@text}\") conversion failed.")
        .param("type", readable_type_name(target))
        .param("text", std::move(shown_text))
        .create_transfer(error, error::tarvcore_string_extraction,
                         TARVCORE_LOCATION("tarvcore::impl::string_to_failure()"));
}

void string_to_failure(const wchar_t* text, unsigned length, const std::type_info& target,
                       ErrorInfo::Ptr* error) {
    const std::string narrow = to_string(text, length, '?', nullptr);
    string_to_failure(narrow.data(), narrow.size(), target, error);
}

}  // namespace tarvcore::impl
