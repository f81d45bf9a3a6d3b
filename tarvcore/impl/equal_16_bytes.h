// A comparison that is worth a vector instruction where users compile with such.
#pragma once

#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tarvcore::impl {

// Neither needs an alignment.
#if defined(__SSE2__)
inline bool equal_16_bytes(const unsigned char* a, const unsigned char* b) {
    const __m128i vector_a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(a));
    const __m128i vector_b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(b));
    return _mm_movemask_epi8(_mm_cmpeq_epi8(vector_a, vector_b)) == 0xFFFF;
}
#else
inline bool equal_16_bytes(const unsigned char* a, const unsigned char* b) {
    std::uint32_t words_a[4];
    std::uint32_t words_b[4];
    std::memcpy(words_a, a, sizeof words_a);
    std::memcpy(words_b, b, sizeof words_b);
    return ((words_a[0] ^ words_b[0]) | (words_a[1] ^ words_b[1]) | (words_a[2] ^ words_b[2]) |
            (words_a[3] ^ words_b[3])) == 0;
}
#endif

}  // namespace tarvcore::impl
