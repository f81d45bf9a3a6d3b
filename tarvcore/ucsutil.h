// Conversion between UTF-8, UTF-16 and UCS-4, and validation of UTF-8.
#pragma once

#include "tarvcore/config.h"

// UTF-8 is the six-byte form of RFC 2279 with code points up to 0x7FFFFFFF.  UTF-16 text is made of
// unsigned short or, under another name, of wchar_t; it ends at U+10FFFF.  All encodings refuse the
// surrogates U+D800...U+DFFF, U+FEFF (so a byte-order mark too), U+FFFE and U+FFFF.  Every
// character has one form: longer ones are invalid.
//
// Lengths and capacities count units of the text's own type: bytes, 16-bit or 32-bit units.
namespace tarvcore {

// Single characters.  Nothing is raised: a failure answers 0 and sets errno, to EINVAL (22) where
// there is no valid character, to ENOMEM (12) where the destination has no room for it.  EINVAL
// goes first.  A failed call writes nothing.

// How many bytes the sequence has that starts with a byte.
TARVCORE_API unsigned utf8_sequence_length(char lead);

// Decode the first character and answer the units it takes.  The length may be more than those; a
// length of 0 answers 0 and leaves errno alone.  `out` may be null.
TARVCORE_API unsigned utf8_to_ucs4_char(const char* source, unsigned length, unsigned* out);
TARVCORE_API unsigned utf16_to_ucs4_char(const unsigned short* source, unsigned length,
                                         unsigned* out);

// Encode a code point into the room up to `destination_end` and answer the units written.  A null
// destination: the units it would take.
TARVCORE_API unsigned ucs4_char_to_utf8(unsigned c, char* destination, char* destination_end);
TARVCORE_API unsigned ucs4_char_to_utf16(unsigned c, unsigned short* destination,
                                         unsigned short* destination_end);

// Whole strings.  Answer the units written, or those needed where the destination is null (the
// capacity does not matter then); success leaves errno alone.
//
// A source length of 0xFFFFFFFF: up to the terminator, which is converted and counted like any
// other unit.
//
// A bad character is one that is invalid in the source or missing in the destination's encoding.
// With a replacement of 0 it raises "error.tarvcore.string.conversion"; for invalid UTF-8 the
// nested record says what is wrong with the rest of the source, as `check_valid_utf8` does.  With
// any other replacement that one unit is written, unchecked, and the conversion goes on behind the
// bad character: in UTF-8 that is a byte with all continuation bytes after it, in UTF-16 a unit or,
// after a high surrogate, two, in UCS-4 a unit.  `error_index`, which may be null, receives the
// offset of the first bad character (0x7FFFFFFF where it is larger), or -1.
//
// A destination that is full before the source ends: 0, with errno ENOMEM; so is a count above
// 0xFFFFFFFF.  A bad character that would not have fitted counts as bad.
//
// What was written before a failure stays; the rest of the destination is not defined, and nothing
// is written beyond the capacity.  Source and destination do not overlap.
//
//     const unsigned size = utf8_to_utf16(text, length, nullptr, 0, 0, nullptr);
//     std::vector<unsigned short> units(size);
//     utf8_to_utf16(text, length, units.data(), size, 0, nullptr);
TARVCORE_API unsigned utf8_to_utf16(const char* source, unsigned length,
                                    unsigned short* destination, unsigned capacity,
                                    unsigned short replacement, int* error_index);
TARVCORE_API unsigned utf8_to_wstr(const char* source, unsigned length, wchar_t* destination,
                                   unsigned capacity, wchar_t replacement, int* error_index);
TARVCORE_API unsigned utf16_to_utf8(const unsigned short* source, unsigned length,
                                    char* destination, unsigned capacity, char replacement,
                                    int* error_index);
TARVCORE_API unsigned wstr_to_utf8(const wchar_t* source, unsigned length, char* destination,
                                   unsigned capacity, char replacement, int* error_index);
TARVCORE_API unsigned ucs4_to_utf8(const unsigned* source, unsigned length, char* destination,
                                   unsigned capacity, char replacement, int* error_index);
// The same, but a full destination sets errno to EINVAL, not ENOMEM; this is meant.
TARVCORE_API unsigned utf8_to_ucs4(const char* source, unsigned length, unsigned* destination,
                                   unsigned capacity, unsigned replacement, int* error_index);

// Whether a text is UTF-8 from end to end.  Length 0xFFFFFFFF: up to the terminator.
TARVCORE_API bool is_valid_utf8(const char* text, unsigned length);

// Raises what is wrong with the first bad sequence of a text:
//
// - "error.tarvcore.string.utf8.partial": the text ends inside of it;
// - "error.tarvcore.string.utf8.overlong": there is a shorter form;
// - "error.tarvcore.string.utf8.invalid": anything else; the message says which.
TARVCORE_API void check_valid_utf8(const char* text, unsigned length);

// The length of the longest prefix that has no more than `limit` bytes and does not end inside a
// sequence.  0xFFFFFFFF is a length like any other here.
TARVCORE_API unsigned utf8_limit_length(const char* text, unsigned length, unsigned limit);

}  // namespace tarvcore
