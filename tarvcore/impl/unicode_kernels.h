// Bulk conversion between UTF-8, UTF-16 and UCS-4, without raising or touching errno.
//
// The rules for single characters are those of unicode_codec.h.
#pragma once

#include <cstdint>
#include <string>

#include "tarvcore/config.h"

namespace tarvcore::impl {

// A UTF-16 unit, whether the text's own type is wchar_t or unsigned short.
using Utf16Unit [[gnu::may_alias]] = std::uint16_t;

enum class ConversionStatus {
    done,         // the whole source has been read
    full,         // the next character does not fit
    invalid,      // no character starts at the next unit
    unencodable,  // the next character does not exist in the destination's encoding
};

// What a conversion has read and written, always whole characters, and why it ended.
struct Progress {
    unsigned read;
    unsigned written;
    ConversionStatus status;
};

// Convert up to the first character that cannot be converted or does not fit.  Of one that is
// invalid or cannot be encoded it does not matter whether it would fit.  Neither more of the source
// than its length nor anything beyond the capacity is touched; of the room that is left, the units
// behind those written are not defined.
//
// A null destination: count what would be written to one of that capacity.
TARVCORE_API Progress convert_utf8_to_utf16(const char* source, unsigned length,
                                            Utf16Unit* destination, unsigned capacity);
TARVCORE_API Progress convert_utf8_to_ucs4(const char* source, unsigned length,
                                           std::uint32_t* destination, unsigned capacity);
TARVCORE_API Progress convert_utf16_to_utf8(const Utf16Unit* source, unsigned length,
                                            char* destination, unsigned capacity);
TARVCORE_API Progress convert_ucs4_to_utf8(const std::uint32_t* source, unsigned length,
                                           char* destination, unsigned capacity);

// The bytes of a text up to the first that starts no character; its length where there is none.
TARVCORE_API unsigned valid_utf8_prefix(const char* text, unsigned length);

// What is wrong with a sequence.
enum class Utf8Fault {
    first_byte,
    partial,
    overlong,
    subsequent_byte,
    surrogate,
    u_fffe,
    u_feff,
    u_ffff,
};

// The fault of a text that starts with no character.
TARVCORE_API Utf8Fault utf8_fault(const char* text, unsigned length);

// UTF-16 to UTF-8 where everything that is no character becomes `replacement`.  Conversion ends
// early once the result is longer than `enough` bytes.
TARVCORE_API std::string utf16_to_utf8_replacing(const wchar_t* text, unsigned length,
                                                 char replacement, unsigned enough = 0xFFFFFFFF);

}  // namespace tarvcore::impl
