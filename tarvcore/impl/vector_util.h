// Vectors: moves between registers and memory, at any address, of whole ones and of parts.
#pragma once

#include <cstdint>
#include <cstring>

#include <immintrin.h>

#include "tarvcore/config.h"

#define TARVCORE_SSSE3 [[gnu::target("ssse3")]]
#define TARVCORE_SSSE3_INLINE [[gnu::target("ssse3"), gnu::always_inline]] inline

namespace tarvcore::impl {

TARVCORE_INLINE __m128i load(const void* source) {
    return _mm_loadu_si128(static_cast<const __m128i*>(source));
}
TARVCORE_INLINE void store(void* destination, __m128i value) {
    _mm_storeu_si128(static_cast<__m128i*>(destination), value);
}

// The lower eight bytes; those above are zeros.
TARVCORE_INLINE __m128i load_half(const void* source) {
    return _mm_loadl_epi64(static_cast<const __m128i*>(source));
}
TARVCORE_INLINE void store_half(void* destination, __m128i value) {
    _mm_storel_epi64(static_cast<__m128i*>(destination), value);
}

// The same with four.
TARVCORE_INLINE __m128i load_quarter(const void* source) {
    int value;
    std::memcpy(&value, source, sizeof value);
    return _mm_cvtsi32_si128(value);
}
TARVCORE_INLINE void store_quarter(void* destination, __m128i value) {
    const int quarter = _mm_cvtsi128_si32(value);
    std::memcpy(destination, &quarter, sizeof quarter);
}

[[gnu::target("avx2"), gnu::always_inline]] inline __m256i load_32(const void* source) {
    return _mm256_loadu_si256(static_cast<const __m256i*>(source));
}
[[gnu::target("avx2"), gnu::always_inline]] inline void store_32(void* destination, __m256i value) {
    _mm256_storeu_si256(static_cast<__m256i*>(destination), value);
}

TARVCORE_INLINE __m128i select(__m128i mask, __m128i yes, __m128i no) {
    return _mm_or_si128(_mm_and_si128(mask, yes), _mm_andnot_si128(mask, no));
}

// The first `size` bytes, at most 16, and zeros behind them.  No other bytes are read.
TARVCORE_SSSE3_INLINE __m128i load_part(const void* source, unsigned size) {
    const char* const bytes = static_cast<const char*>(source);
    if (size >= 16) return load(bytes);
    if (size >= 8) {
        // The last eight bytes, less those that the first eight have already.
        const __m128i last = load_half(bytes + size - 8);
        return _mm_unpacklo_epi64(
            load_half(bytes),
            _mm_srl_epi64(last, _mm_cvtsi32_si128(static_cast<int>(8 * (16 - size)))));
    }
    if (size >= 4) {
        const __m128i last = load_quarter(bytes + size - 4);
        return _mm_unpacklo_epi32(
            load_quarter(bytes),
            _mm_srl_epi64(last, _mm_cvtsi32_si128(static_cast<int>(8 * (8 - size)))));
    }
    unsigned value = 0;
    for (unsigned i = 0; i < size; ++i)
        value |= static_cast<unsigned>(static_cast<unsigned char>(bytes[i])) << (8 * i);
    return _mm_cvtsi32_si128(static_cast<int>(value));
}

// The first `size` bytes, fewer than 16.  No other bytes are written.
TARVCORE_SSSE3_INLINE void store_part(void* destination, __m128i value, unsigned size) {
    char* bytes = static_cast<char*>(destination);
    if (size >= 8) {
        // The last eight bytes overlap the first eight.
        static constexpr std::uint8_t places[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14};
        store_half(bytes, value);
        store_half(bytes + size - 8, _mm_shuffle_epi8(value, load_half(places + size - 8)));
        return;
    }
    if (size >= 4) {
        const __m128i last =
            _mm_srl_epi64(value, _mm_cvtsi32_si128(static_cast<int>(8 * (size - 4))));
        store_quarter(bytes, value);
        store_quarter(bytes + size - 4, last);
        return;
    }
    auto rest = static_cast<unsigned>(_mm_cvtsi128_si32(value));
    if ((size & 2) != 0) {
        std::memcpy(bytes, &rest, 2);
        rest >>= 16;
        bytes += 2;
    }
    if ((size & 1) != 0) *bytes = static_cast<char>(rest);
}

}  // namespace tarvcore::impl
