// ASCII helpers: comparison, mapping and hashes that fold case.
#pragma once

#include <string>
#include <string_view>

#include "tarvcore/config.h"

// All of these fold the 26 letters of ASCII and nothing else: bytes of 0x80 and above stay as they
// are, whatever the locale.  Texts are counted and may contain NULs; the length 0xFFFFFFFF means up
// to the terminator.  A null text is valid where its length is 0.
namespace tarvcore {

// Orders as if both texts were lower-case: the difference of the first two bytes that differ, as
// signed chars, or else the difference of the lengths.
//
//     compare_nocase_ascii("abc", 3, "ABD", 3)   // 'c' - 'd', that is -1
TARVCORE_API int compare_nocase_ascii(const char* a, unsigned a_length, const char* b,
                                      unsigned b_length);

// Whether the texts are of one length and the same but for the case.
TARVCORE_API bool string_equal_nocase_ascii(const char* a, unsigned a_length, const char* b,
                                            unsigned b_length);

// h = 5 * h + byte, from 0, over the text in one case.  The bytes are signed, so those of 0x80 and
// above count as negative numbers: stored hashes depend on it.
TARVCORE_API unsigned string_hash_lowercase_ascii(const char* text, unsigned length);
TARVCORE_API unsigned string_hash_uppercase_ascii(const char* text, unsigned length);

// Change the text, not its length.
TARVCORE_API void to_lower_ascii_inplace(std::string& text);
TARVCORE_API void to_upper_ascii_inplace(std::string& text);

// Copies in one case.
TARVCORE_API std::string to_lower_ascii(std::string_view text);
TARVCORE_API std::string to_upper_ascii(std::string_view text);
TARVCORE_API std::string to_lower_ascii(const char* text, unsigned length);
TARVCORE_API std::string to_upper_ascii(const char* text, unsigned length);

}  // namespace tarvcore
