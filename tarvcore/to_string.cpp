#include "tarvcore/to_string.h"

#include <charconv>
#include <cwchar>
#include <type_traits>

#include "tarvcore/impl/measured_length.h"
#include "tarvcore/ucsutil.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/to_string.cpp#1 $");

namespace tarvcore {
namespace {

// Shorter texts are converted in one pass on the stack, longer ones counted first.
constexpr unsigned short_text_units = 1000;

// `most_per_unit`: the most units of the result for one of the text.
template <unsigned most_per_unit, class Unit, class SourceUnit, class Convert>
std::basic_string<Unit> converted(Convert convert, const SourceUnit* text, unsigned length,
                                  Unit replacement, int* error_position) {
    length = impl::measured_length(text, length);
    if (length < short_text_units) {
        constexpr unsigned capacity = short_text_units * most_per_unit;
        Unit buffer[capacity];
        const unsigned written =
            convert(text, length, buffer, capacity, replacement, error_position);
        return {buffer, written};
    }
    const unsigned size = convert(text, length, nullptr, 0, replacement, error_position);
    std::basic_string<Unit> result(size, Unit{});
    convert(text, length, result.data(), size, replacement, nullptr);
    return result;
}

template <class Integer>
std::string decimal(Integer value) {
    char digits[20];
    const auto result = std::to_chars(digits, digits + sizeof digits, value);
    return {digits, result.ptr};
}

template <class Integer>
std::wstring wide_decimal(Integer value) {
    char digits[20];
    const auto result = std::to_chars(digits, digits + sizeof digits, value);
    return {digits, result.ptr};
}

}  // namespace

std::string to_string(const wchar_t* text, unsigned length, char replacement, int* error_position) {
    return converted<3>(wstr_to_utf8, text, length, replacement, error_position);
}

std::string to_string(const std::wstring& text, char replacement, int* error_position) {
    return to_string(text.data(), text.size(), replacement, error_position);
}

std::string to_string(const wchar_t* text, unsigned length) {
    return to_string(text, length, 0, nullptr);
}

std::string to_string(const wchar_t* text) {
    return to_string(text, impl::up_to_terminator, 0, nullptr);
}

std::string to_string(const std::wstring& text) {
    return to_string(text.data(), text.size(), 0, nullptr);
}

std::wstring to_wstring(const char* text, unsigned length, wchar_t replacement,
                        int* error_position) {
    return converted<1>(utf8_to_wstr, text, length, replacement, error_position);
}

std::wstring to_wstring(const std::string& text, wchar_t replacement, int* error_position) {
    return to_wstring(text.data(), text.size(), replacement, error_position);
}

std::wstring to_wstring(const char* text, unsigned length) {
    return to_wstring(text, length, 0, nullptr);
}

std::wstring to_wstring(const char* text) {
    return to_wstring(text, impl::up_to_terminator, 0, nullptr);
}

std::wstring to_wstring(const std::string& text) {
    return to_wstring(text.data(), text.size(), 0, nullptr);
}

std::string to_string(const char* text, unsigned length) {
    return {text, impl::measured_length(text, length)};
}

std::string to_string(const char* text) {
    return text;
}

std::string to_string(const std::string& text) {
    return text;
}

std::wstring to_wstring(const wchar_t* text, unsigned length) {
    return {text, impl::measured_length(text, length)};
}

std::wstring to_wstring(const wchar_t* text) {
    return text;
}

std::wstring to_wstring(const std::wstring& text) {
    return text;
}

std::string to_string(bool value) {
    return value ? "true" : "false";
}

std::wstring to_wstring(bool value) {
    return value ? L"true" : L"false";
}

// All types of up to 32 bits share the code for int or unsigned.
std::string to_string(char value) {
    return decimal<int>(value);
}

std::string to_string(unsigned char value) {
    return decimal<unsigned>(value);
}

std::string to_string(short value) {
    return decimal<int>(value);
}

std::string to_string(unsigned short value) {
    return decimal<unsigned>(value);
}

std::string to_string(int value) {
    return decimal<int>(value);
}

std::string to_string(unsigned value) {
    return decimal<unsigned>(value);
}

std::string to_string(long value) {
    return decimal<int>(value);
}

std::string to_string(unsigned long value) {
    return decimal<unsigned>(value);
}

std::string to_string(long long value) {
    return decimal(value);
}

std::string to_string(unsigned long long value) {
    return decimal(value);
}

std::wstring to_wstring(char value) {
    return wide_decimal<int>(value);
}

std::wstring to_wstring(unsigned char value) {
    return wide_decimal<unsigned>(value);
}

std::wstring to_wstring(short value) {
    return wide_decimal<int>(value);
}

std::wstring to_wstring(unsigned short value) {
    return wide_decimal<unsigned>(value);
}

std::wstring to_wstring(int value) {
    return wide_decimal<int>(value);
}

std::wstring to_wstring(unsigned value) {
    return wide_decimal<unsigned>(value);
}

std::wstring to_wstring(long value) {
    return wide_decimal<int>(value);
}

std::wstring to_wstring(unsigned long value) {
    return wide_decimal<unsigned>(value);
}

std::wstring to_wstring(long long value) {
    return wide_decimal(value);
}

std::wstring to_wstring(unsigned long long value) {
    return wide_decimal(value);
}

}  // namespace tarvcore
