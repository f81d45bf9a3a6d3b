// Conversion of blocks of well-formed text with vector instructions.
//
// These functions only take what is easy: they read whole blocks, stop in front of any that they
// are not sure of, and leave the rest, the end of the text among it, to code that goes character by
// character.  What they have taken is right; where they stop means nothing.
#pragma once

#include <cstdint>

#include "tarvcore/impl/unicode_kernels.h"
#include "tarvcore/impl/vector_util.h"

namespace tarvcore::impl {

// Whole characters, from the start of the source.
struct BlockProgress {
    unsigned read;
    unsigned written;
};

// A vector of ASCII as units of an encoding.
TARVCORE_INLINE void store_ascii(__m128i ascii, char* destination) {
    store(destination, ascii);
}
TARVCORE_INLINE void store_ascii(__m128i ascii, Utf16Unit* destination) {
    store(destination, _mm_unpacklo_epi8(ascii, _mm_setzero_si128()));
    store(destination + 8, _mm_unpackhi_epi8(ascii, _mm_setzero_si128()));
}
TARVCORE_INLINE void store_ascii(__m128i ascii, std::uint32_t* destination) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i low = _mm_unpacklo_epi8(ascii, zero);
    const __m128i high = _mm_unpackhi_epi8(ascii, zero);
    store(destination, _mm_unpacklo_epi16(low, zero));
    store(destination + 4, _mm_unpackhi_epi16(low, zero));
    store(destination + 8, _mm_unpacklo_epi16(high, zero));
    store(destination + 12, _mm_unpackhi_epi16(high, zero));
}

// Units in a block; a source with less is not worth a first call.
constexpr unsigned utf8_block_length = 16;
constexpr unsigned utf16_block_length = 8;

// With SSSE3.
BlockProgress convert_utf8_blocks_to_utf16(const char* source, unsigned length,
                                           Utf16Unit* destination, unsigned capacity);
BlockProgress convert_utf8_blocks_to_ucs4(const char* source, unsigned length,
                                          std::uint32_t* destination, unsigned capacity);
BlockProgress convert_utf16_blocks_to_utf8(const Utf16Unit* source, unsigned length,
                                           char* destination, unsigned capacity);
BlockProgress convert_ucs4_blocks_to_utf8(const std::uint32_t* source, unsigned length,
                                          char* destination, unsigned capacity);

constexpr unsigned utf8_scan_block_length = 64;

// What the conversions would write, if there were room, and how much of a text's start is valid.
// With AVX2.
BlockProgress scan_utf8_blocks_as_utf16(const char* source, unsigned length);
BlockProgress scan_utf8_blocks_as_ucs4(const char* source, unsigned length);
unsigned valid_utf8_blocks(const char* source, unsigned length);

// What the conversions would write.  With SSSE3.
BlockProgress count_utf8_blocks_as_utf16(const char* source, unsigned length, unsigned capacity);
BlockProgress count_utf8_blocks_as_ucs4(const char* source, unsigned length, unsigned capacity);
BlockProgress count_utf16_blocks_as_utf8(const Utf16Unit* source, unsigned length,
                                         unsigned capacity);

}  // namespace tarvcore::impl
