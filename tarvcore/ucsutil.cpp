#include "tarvcore/ucsutil.h"

#include <cerrno>
#include <climits>
#include <cstring>

#include "tarvcore/error_code_constants.h"
#include "tarvcore/error_exception.h"
#include "tarvcore/impl/measured_length.h"
#include "tarvcore/impl/unicode_codec.h"
#include "tarvcore/impl/unicode_kernels.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/ucsutil.cpp#1 $");

namespace tarvcore {
namespace {

using impl::ConversionStatus;
using impl::Progress;
using impl::up_to_terminator;
using impl::Utf16Unit;

template <class Unit>
unsigned length_with_terminator(const Unit* text) {
    unsigned length = 0;
    while (text[length] != 0)
        ++length;
    return length + 1;
}
unsigned length_with_terminator(const char* text) {
    return std::strlen(text) + 1;
}

ErrorInfo::Ptr utf8_error(impl::Utf8Fault fault, const SourceLocation& location) {
    struct Row {
        const ErrorCode& code;
        const char* message;
    };
    const Row rows[] = {
        {error::tarvcore_string_utf8_invalid, "Invalid first byte of UTF-8 sequence"},
        {error::tarvcore_string_utf8_partial, "String ends in a partial UTF-8 sequence"},
        {error::tarvcore_string_utf8_overlong, "String contains overlong UTF-8 sequence"},
        {error::tarvcore_string_utf8_invalid,
         "Invalid subsequent byte in UTF-8 character sequence"},
        {error::tarvcore_string_utf8_invalid,
         "UTF-8 string must not contain UTF-16 surrogates (U+D800...U+DFFF)"},
        {error::tarvcore_string_utf8_invalid,
         "UTF-8 string must not contain U+FFFE (BOM) character"},
        {error::tarvcore_string_utf8_invalid,
         "UTF-8 string must not contain U+FEFF (BOM) character"},
        {error::tarvcore_string_utf8_invalid, "UTF-8 string must not contain U+FFFF character"},
    };
    static_assert(std::size(rows) == static_cast<unsigned>(impl::Utf8Fault::u_ffff) + 1);
    const Row& row = rows[static_cast<unsigned>(fault)];
    return ErrorInfo::create(row.code, row.message, location);
}

[[noreturn]] TARVCORE_COLD void throw_conversion_error(const char* message,
                                                       const SourceLocation& location,
                                                       ErrorInfo::Ptr nested = {}) {
    throw_error(error::tarvcore_string_conversion, message, location, std::move(nested));
}

// `text` is the source from the bad character on.
[[noreturn]] TARVCORE_COLD void throw_invalid_utf8(const char* text, unsigned length,
                                                   const SourceLocation& location) {
    throw_conversion_error("Invalid UTF-8 character encountered", location,
                           utf8_error(impl::utf8_fault(text, length), location));
}

constexpr char invalid_ucs4_message[] =
    "Encountered invalid UCS-4 character that cannot be converted to UTF-8";

// What sets the conversions apart:
//
//   run              converts up to a character that cannot be
//   units_to_skip    how much of the source a bad character takes
//   throw_bad        raises for the bad character at the start of a source
//   full             the errno for a full destination

struct FromUtf8 {
    using SourceUnit = char;
    static unsigned units_to_skip(const char* source, unsigned length) {
        return impl::utf8_units_to_skip(source, length);
    }
};

struct Utf8ToUtf16 : FromUtf8 {
    using Unit = Utf16Unit;
    static constexpr auto run = impl::convert_utf8_to_utf16;
    static constexpr int full = ENOMEM;

    [[noreturn]] static void throw_bad(ConversionStatus status, const char* source, unsigned length,
                                       bool /*counting*/) {
        static constexpr char function[] = "tarvcore::utf8_to_utf16()";
        if (status == ConversionStatus::invalid) {
            throw_invalid_utf8(source, length, TARVCORE_LOCATION(function));
        }
        throw_conversion_error(
            "Encountered UTF-8 (UCS-4) character that cannot be represented in UTF-16",
            TARVCORE_LOCATION(function));
    }
};

struct Utf8ToUcs4 : FromUtf8 {
    using Unit = unsigned;
    static constexpr auto run = impl::convert_utf8_to_ucs4;
    // Callers tell it apart from a lack of memory by that.
    static constexpr int full = EINVAL;

    [[noreturn]] static void throw_bad(ConversionStatus /*status*/, const char* source,
                                       unsigned length, bool /*counting*/) {
        throw_invalid_utf8(source, length, TARVCORE_LOCATION("tarvcore::utf8_to_ucs4()"));
    }
};

struct Utf16ToUtf8 {
    using SourceUnit = Utf16Unit;
    using Unit = char;
    static constexpr auto run = impl::convert_utf16_to_utf8;
    static constexpr int full = ENOMEM;

    static unsigned units_to_skip(const Utf16Unit* source, unsigned length) {
        return impl::utf16_units_to_skip(source, length);
    }
    [[noreturn]] static void throw_bad(ConversionStatus /*status*/, const Utf16Unit* /*source*/,
                                       unsigned /*length*/, bool counting) {
        // Writing speaks of UCS-4: meant, the text is what monitoring looks for.
        throw_conversion_error(
            counting ? "Encountered invalid UTF-16 character that cannot be converted to UTF-8"
                     : invalid_ucs4_message,
            TARVCORE_LOCATION("tarvcore::utf16_to_utf8()"));
    }
};

struct Ucs4ToUtf8 {
    using SourceUnit = unsigned;
    using Unit = char;
    static constexpr auto run = impl::convert_ucs4_to_utf8;
    static constexpr int full = ENOMEM;

    static unsigned units_to_skip(const unsigned* /*source*/, unsigned /*length*/) { return 1; }
    [[noreturn]] static void throw_bad(ConversionStatus /*status*/, const unsigned* /*source*/,
                                       unsigned /*length*/, bool /*counting*/) {
        throw_conversion_error(invalid_ucs4_message, TARVCORE_LOCATION("tarvcore::ucs4_to_utf8()"));
    }
};

// The whole conversion once it has come upon something that stops it; `progress` is how far it
// came.
template <class Conversion>
TARVCORE_COLD unsigned finish(Progress progress, const typename Conversion::SourceUnit* source,
                              unsigned length, typename Conversion::Unit* destination,
                              unsigned capacity, typename Conversion::Unit replacement,
                              int* error_index) {
    const bool counting = destination == nullptr;
    unsigned read = progress.read;
    unsigned written = progress.written;
    while (progress.status != ConversionStatus::done) {
        if (progress.status != ConversionStatus::full) {
            if (error_index != nullptr && *error_index == -1) {
                *error_index = read > INT_MAX ? INT_MAX : static_cast<int>(read);
            }
            if (replacement == 0) {
                Conversion::throw_bad(progress.status, source + read, length - read, counting);
            }
        }
        if (progress.status == ConversionStatus::full || written == capacity) {
            errno = Conversion::full;
            return 0;
        }
        if (!counting) destination[written] = replacement;
        ++written;
        read += Conversion::units_to_skip(source + read, length - read);

        progress = Conversion::run(source + read, length - read,
                                   counting ? nullptr : destination + written, capacity - written);
        read += progress.read;
        written += progress.written;
    }
    return written;
}

template <class Conversion>
unsigned convert(const typename Conversion::SourceUnit* source, unsigned length,
                 typename Conversion::Unit* destination, unsigned capacity,
                 typename Conversion::Unit replacement, int* error_index) {
    if (length == up_to_terminator) length = length_with_terminator(source);
    if (error_index != nullptr) *error_index = -1;
    if (destination == nullptr) capacity = 0xFFFFFFFF;
    const Progress progress = Conversion::run(source, length, destination, capacity);
    if (progress.status == ConversionStatus::done) return progress.written;
    return finish<Conversion>(progress, source, length, destination, capacity, replacement,
                              error_index);
}

unsigned fail(int error) {
    errno = error;
    return 0;
}

// The result of decoding one character.
unsigned decoded_units(const impl::DecodedCharacter& decoded, unsigned* out) {
    if (decoded.units == 0) return fail(EINVAL);
    if (out != nullptr) *out = decoded.code_point;
    return decoded.units;
}

}  // namespace

unsigned utf8_sequence_length(char lead) {
    const unsigned length = impl::utf8_sequence_length(lead);
    return length != 0 ? length : fail(EINVAL);
}

unsigned utf8_to_ucs4_char(const char* source, unsigned length, unsigned* out) {
    return length == 0 ? 0 : decoded_units(impl::decode_utf8(source, length), out);
}

unsigned utf16_to_ucs4_char(const unsigned short* source, unsigned length, unsigned* out) {
    return length == 0 ? 0 : decoded_units(impl::decode_utf16(source, length), out);
}

unsigned ucs4_char_to_utf8(unsigned c, char* destination, char* destination_end) {
    const unsigned units = impl::utf8_units(c);
    if (units == 0) return fail(EINVAL);
    if (destination == nullptr) return units;
    if (destination_end - destination < static_cast<int>(units)) return fail(ENOMEM);
    return impl::encode_utf8(c, destination);
}

unsigned ucs4_char_to_utf16(unsigned c, unsigned short* destination,
                            unsigned short* destination_end) {
    const unsigned units = impl::utf16_units(c);
    if (units == 0) return fail(EINVAL);
    if (destination == nullptr) return units;
    if (destination_end - destination < static_cast<int>(units)) return fail(ENOMEM);
    return impl::encode_utf16(c, destination);
}

unsigned utf8_to_utf16(const char* source, unsigned length, unsigned short* destination,
                       unsigned capacity, unsigned short replacement, int* error_index) {
    return convert<Utf8ToUtf16>(source, length, destination, capacity, replacement, error_index);
}

unsigned utf8_to_wstr(const char* source, unsigned length, wchar_t* destination, unsigned capacity,
                      wchar_t replacement, int* error_index) {
    return convert<Utf8ToUtf16>(source, length, reinterpret_cast<Utf16Unit*>(destination), capacity,
                                replacement, error_index);
}

unsigned utf8_to_ucs4(const char* source, unsigned length, unsigned* destination, unsigned capacity,
                      unsigned replacement, int* error_index) {
    return convert<Utf8ToUcs4>(source, length, destination, capacity, replacement, error_index);
}

unsigned utf16_to_utf8(const unsigned short* source, unsigned length, char* destination,
                       unsigned capacity, char replacement, int* error_index) {
    return convert<Utf16ToUtf8>(source, length, destination, capacity, replacement, error_index);
}

unsigned wstr_to_utf8(const wchar_t* source, unsigned length, char* destination, unsigned capacity,
                      char replacement, int* error_index) {
    return convert<Utf16ToUtf8>(reinterpret_cast<const Utf16Unit*>(source), length, destination,
                                capacity, replacement, error_index);
}

unsigned ucs4_to_utf8(const unsigned* source, unsigned length, char* destination, unsigned capacity,
                      char replacement, int* error_index) {
    return convert<Ucs4ToUtf8>(source, length, destination, capacity, replacement, error_index);
}

bool is_valid_utf8(const char* text, unsigned length) {
    if (length == up_to_terminator) length = length_with_terminator(text);
    return impl::valid_utf8_prefix(text, length) == length;
}

void check_valid_utf8(const char* text, unsigned length) {
    if (length == up_to_terminator) length = length_with_terminator(text);
    const unsigned valid = impl::valid_utf8_prefix(text, length);
    if (valid == length) return;
    throw_error(utf8_error(impl::utf8_fault(text + valid, length - valid),
                           TARVCORE_LOCATION("tarvcore::check_valid_utf8()")));
}

unsigned utf8_limit_length(const char* text, unsigned length, unsigned limit) {
    return impl::utf8_prefix_length(text, length, limit);
}

}  // namespace tarvcore
