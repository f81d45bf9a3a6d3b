// Hexadecimal digits, 16 at a time.
#pragma once

#include <emmintrin.h>

#include "tarvcore/config.h"

namespace tarvcore::impl {

// Values up to 15 become lower-case digits.
inline __m128i digits_sse2(__m128i values) {
    const __m128i letters = _mm_cmpgt_epi8(values, _mm_set1_epi8(9));
    const __m128i distance = _mm_and_si128(letters, _mm_set1_epi8('a' - '9' - 1));
    return _mm_add_epi8(_mm_add_epi8(values, _mm_set1_epi8('0')), distance);
}

// Digits become their values, everything else more than 15.
inline __m128i values_sse2(__m128i codes) {
    // '0' to '9' become 0xF0 to 0xF9, and nothing else comes so high.
    const __m128i high = _mm_subs_epu8(
        _mm_add_epi8(codes, _mm_set1_epi8(static_cast<char>(0xFF - '9'))), _mm_set1_epi8(6));
    const __m128i decimal = _mm_sub_epi8(high, _mm_set1_epi8(static_cast<char>(0xF0)));
    const __m128i upper = _mm_and_si128(codes, _mm_set1_epi8(static_cast<char>(0xDF)));
    const __m128i letter =
        _mm_adds_epu8(_mm_sub_epi8(upper, _mm_set1_epi8('A')), _mm_set1_epi8(10));
    return _mm_min_epu8(decimal, letter);
}

// Whether none is more than 15; of values in which the bits of several are joined, too.
inline bool are_values_sse2(__m128i values) {
    return _mm_movemask_epi8(_mm_adds_epu8(values, _mm_set1_epi8(127 - 15))) == 0;
}

// The bytes in the lower halves of words.
inline __m128i pair_values_sse2(__m128i values) {
    const __m128i pairs = _mm_or_si128(_mm_slli_epi16(values, 4), _mm_srli_epi16(values, 8));
    return _mm_and_si128(pairs, _mm_set1_epi16(0xFF));
}

}  // namespace tarvcore::impl
