// Values from text.
#pragma once

#include <concepts>
#include <limits>
#include <string_view>
#include <type_traits>
#include <typeinfo>

#include "tarvcore/config.h"
#include "tarvcore/error_info.h"
#include "tarvcore/ref_count_ptr.h"

namespace tarvcore {

namespace impl {

// The whole text as a value.  Failure: see string_to_failure; the value is then false or 0.  Length
// 0xFFFFFFFF: up to the terminator.
TARVCORE_API bool string_to_bool(const char* text, unsigned length, ErrorInfo::Ptr* error);
TARVCORE_API bool string_to_bool(const wchar_t* text, unsigned length, ErrorInfo::Ptr* error);
TARVCORE_API float string_to_float(const char* text, unsigned length, ErrorInfo::Ptr* error);
TARVCORE_API float string_to_float(const wchar_t* text, unsigned length, ErrorInfo::Ptr* error);
TARVCORE_API double string_to_double(const char* text, unsigned length, ErrorInfo::Ptr* error);
TARVCORE_API double string_to_double(const wchar_t* text, unsigned length, ErrorInfo::Ptr* error);

// An integer of a type with the given limits.
TARVCORE_API long long string_to_signed(const char* text, unsigned length, long long smallest,
                                        long long largest, const std::type_info& target,
                                        ErrorInfo::Ptr* error);
TARVCORE_API long long string_to_signed(const wchar_t* text, unsigned length, long long smallest,
                                        long long largest, const std::type_info& target,
                                        ErrorInfo::Ptr* error);
TARVCORE_API unsigned long long string_to_unsigned(const char* text, unsigned length,
                                                   unsigned long long largest,
                                                   const std::type_info& target,
                                                   ErrorInfo::Ptr* error);
TARVCORE_API unsigned long long string_to_unsigned(const wchar_t* text, unsigned length,
                                                   unsigned long long largest,
                                                   const std::type_info& target,
                                                   ErrorInfo::Ptr* error);

// Stores the error of a text that is no value of the target type in `*error`, or throws it if
// `error` is null: "error.tarvcore.string.extraction" with the parameters "type" and "text".  Of a
// text of more than 128 bytes the parameter has the first 128, or as many as end no UTF-8 sequence
// midway, and "...".
TARVCORE_API void string_to_failure(const char* text, unsigned length, const std::type_info& target,
                                    ErrorInfo::Ptr* error);
// The parameter is the text as UTF-8, with "?" for what is no character.
TARVCORE_API void string_to_failure(const wchar_t* text, unsigned length,
                                    const std::type_info& target, ErrorInfo::Ptr* error);

template <class T>
concept EncodingUnit = std::same_as<T, wchar_t> || std::same_as<T, char8_t> ||
    std::same_as<T, char16_t> || std::same_as<T, char32_t>;

}  // namespace impl

// What string_to makes: bool, the integers (char, signed char and unsigned char are numbers too),
// float and double.
template <class T>
concept StringValue = (std::integral<T> && !impl::EncodingUnit<T>) || std::same_as<T, float> ||
                      std::same_as<T, double>;

// The value that a text denotes from its first character to its last.  Blanks around it are not
// passed over, and the empty text denotes nothing.
//
// - bool: "1", "true", "yes", "y" or "0", "false", "no", "n", in either case;
// - integers: decimal digits, for signed types after an optional "-", within the type's range;
// - double: what the C library's strtod takes whole, so hexadecimal numbers, "inf" and "nan" too.
//   The decimal point is that of the C locale in force.  A finite number beyond the largest double
//   is refused, one below the smallest is rounded;
// - float: a double, finite and within the range of float, rounded.
//
// Anything else raises "error.tarvcore.string.extraction"; see impl::string_to_failure.  The
// `_nothrow` form answers that record, or null; `*result` is then untouched or set.
//
//     const auto port = string_to<unsigned short>("8080");
//     if (auto error = string_to_nothrow(text, &timeout)) return error;
template <StringValue T>
T string_to(std::string_view text);
template <StringValue T>
T string_to(std::wstring_view text);
template <StringValue T>
[[nodiscard]] ErrorInfo::Ptr string_to_nothrow(std::string_view text, T* result);
template <StringValue T>
[[nodiscard]] ErrorInfo::Ptr string_to_nothrow(std::wstring_view text, T* result);

// Length 0xFFFFFFFF: up to the terminator.
template <StringValue T>
T string_to(const char* text, unsigned length);
template <StringValue T>
T string_to(const wchar_t* text, unsigned length);
template <StringValue T>
[[nodiscard]] ErrorInfo::Ptr string_to_nothrow(const char* text, unsigned length, T* result);
template <StringValue T>
[[nodiscard]] ErrorInfo::Ptr string_to_nothrow(const wchar_t* text, unsigned length, T* result);

namespace impl {

template <class T, class Char>
T string_to_value(const Char* text, unsigned length, ErrorInfo::Ptr* error) {
    using Limits = std::numeric_limits<T>;
    if constexpr (std::same_as<T, bool>) {
        return string_to_bool(text, length, error);
    } else if constexpr (std::same_as<T, float>) {
        return string_to_float(text, length, error);
    } else if constexpr (std::same_as<T, double>) {
        return string_to_double(text, length, error);
    } else if constexpr (std::is_signed_v<T>) {
        return static_cast<T>(
            string_to_signed(text, length, Limits::min(), Limits::max(), typeid(T), error));
    } else {
        return static_cast<T>(string_to_unsigned(text, length, Limits::max(), typeid(T), error));
    }
}

template <class T, class Char>
ErrorInfo::Ptr string_to_value_nothrow(const Char* text, unsigned length, T* result) {
    ErrorInfo::Ptr error;
    const T value = string_to_value<T>(text, length, &error);
    if (!error) *result = value;
    return error;
}

}  // namespace impl

template <StringValue T>
T string_to(std::string_view text) {
    return impl::string_to_value<T>(text.data(), text.size(), nullptr);
}

template <StringValue T>
T string_to(std::wstring_view text) {
    return impl::string_to_value<T>(text.data(), text.size(), nullptr);
}

template <StringValue T>
ErrorInfo::Ptr string_to_nothrow(std::string_view text, T* result) {
    return impl::string_to_value_nothrow(text.data(), text.size(), result);
}

template <StringValue T>
ErrorInfo::Ptr string_to_nothrow(std::wstring_view text, T* result) {
    return impl::string_to_value_nothrow(text.data(), text.size(), result);
}

template <StringValue T>
T string_to(const char* text, unsigned length) {
    return impl::string_to_value<T>(text, length, nullptr);
}

template <StringValue T>
T string_to(const wchar_t* text, unsigned length) {
    return impl::string_to_value<T>(text, length, nullptr);
}

template <StringValue T>
ErrorInfo::Ptr string_to_nothrow(const char* text, unsigned length, T* result) {
    return impl::string_to_value_nothrow(text, length, result);
}

template <StringValue T>
ErrorInfo::Ptr string_to_nothrow(const wchar_t* text, unsigned length, T* result) {
    return impl::string_to_value_nothrow(text, length, result);
}

}  // namespace tarvcore
