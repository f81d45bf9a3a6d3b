#include "tarvcore/impl/hex_codec.h"

#include <array>
#include <cstring>

#include <immintrin.h>

#include "tarvcore/impl/hex_vectors.h"
#include "tarvcore/impl/transform_blocks.h"
#include "tarvcore/impl/vector_util.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/impl/hex_codec.cpp#1 $");

namespace tarvcore::impl {
namespace {

// ---- Without vectors.

constexpr auto char_pairs = character_pairs<4>(hex_alphabet);

constexpr auto value_by_code = [] {
    std::array<unsigned char, 256> values{};
    values.fill(invalid_mark);
    for (unsigned code = 0; code < hex_values.size(); ++code)
        values[code] = hex_values[code];
    return values;
}();

char* encode_by_pairs(const unsigned char* bytes, unsigned size, char* text) {
    for (; size != 0; --size, ++bytes, text += 2)
        std::memcpy(text, &char_pairs[*bytes], 2);
    return text;
}

// Answers how many characters were decoded; their number is even.
unsigned decode_by_values(const char* text, unsigned length, unsigned char* bytes) {
    unsigned done = 0;
    for (; length - done >= 2; done += 2) {
        const unsigned higher = value_by_code[static_cast<unsigned char>(text[done])];
        const unsigned lower = value_by_code[static_cast<unsigned char>(text[done + 1])];
        if ((higher | lower) > 15) break;
        *bytes++ = static_cast<unsigned char>(higher << 4 | lower);
    }
    return done;
}

// ---- SSE2: 16 bytes, 32 characters.

struct Sse2Blocks {
    static constexpr unsigned byte_count = 16;
    static constexpr unsigned char_count = 32;
    static constexpr unsigned bytes_beside = 0;
    static constexpr unsigned chars_behind = 0;

    static void encode(const unsigned char* bytes, char* text) {
        const __m128i source = load(bytes);
        const __m128i higher =
            digits_sse2(_mm_and_si128(_mm_srli_epi32(source, 4), _mm_set1_epi8(15)));
        const __m128i lower = digits_sse2(_mm_and_si128(source, _mm_set1_epi8(15)));
        store(text, _mm_unpacklo_epi8(higher, lower));
        store(text + 16, _mm_unpackhi_epi8(higher, lower));
    }

    static bool decode(const char* text, unsigned char* bytes) {
        const __m128i first = values_sse2(load(text));
        const __m128i second = values_sse2(load(text + 16));
        if (!are_values_sse2(_mm_or_si128(first, second))) return false;
        store(bytes, _mm_packus_epi16(pair_values_sse2(first), pair_values_sse2(second)));
        return true;
    }
};

char* encode_sse2(const unsigned char* bytes, unsigned size, char* text) {
    if (size < Sse2Blocks::byte_count) return encode_by_pairs(bytes, size, text);
    return encode_in_blocks(Sse2Blocks(), bytes, size, text);
}

unsigned decode_sse2(const char* text, unsigned length, unsigned char* bytes) {
    unsigned done = 0;
    if (length >= Sse2Blocks::char_count) {
        done = decode_in_blocks(Sse2Blocks(), text, length, bytes);
    }
    return done + decode_by_values(text + done, length - done, bytes + done / 2);
}

// ---- SSSE3, in the same blocks: a shuffle finds digits, a multiplication pairs values.

struct Ssse3Blocks {
    static constexpr unsigned byte_count = 16;
    static constexpr unsigned char_count = 32;
    static constexpr unsigned bytes_beside = 0;
    static constexpr unsigned chars_behind = 0;

    [[gnu::target("ssse3")]] static void encode(const unsigned char* bytes, char* text) {
        const __m128i source = load(bytes);
        const __m128i alphabet = load(hex_alphabet);
        const __m128i higher =
            _mm_shuffle_epi8(alphabet, _mm_and_si128(_mm_srli_epi32(source, 4), _mm_set1_epi8(15)));
        const __m128i lower = _mm_shuffle_epi8(alphabet, _mm_and_si128(source, _mm_set1_epi8(15)));
        store(text, _mm_unpacklo_epi8(higher, lower));
        store(text + 16, _mm_unpackhi_epi8(higher, lower));
    }

    [[gnu::target("ssse3")]] static bool decode(const char* text, unsigned char* bytes) {
        const __m128i first = values_sse2(load(text));
        const __m128i second = values_sse2(load(text + 16));
        if (!are_values_sse2(_mm_or_si128(first, second))) return false;
        const __m128i weights = _mm_set1_epi16(0x0110);
        store(bytes, _mm_packus_epi16(_mm_maddubs_epi16(first, weights),
                                      _mm_maddubs_epi16(second, weights)));
        return true;
    }
};

// ---- AVX2: 32 bytes, 64 characters.

[[gnu::target("avx2")]] inline __m256i values_avx2(__m256i codes) {
    const __m256i high =
        _mm256_subs_epu8(_mm256_add_epi8(codes, _mm256_set1_epi8(static_cast<char>(0xFF - '9'))),
                         _mm256_set1_epi8(6));
    const __m256i decimal = _mm256_sub_epi8(high, _mm256_set1_epi8(static_cast<char>(0xF0)));
    const __m256i upper = _mm256_and_si256(codes, _mm256_set1_epi8(static_cast<char>(0xDF)));
    const __m256i letter =
        _mm256_adds_epu8(_mm256_sub_epi8(upper, _mm256_set1_epi8('A')), _mm256_set1_epi8(10));
    return _mm256_min_epu8(decimal, letter);
}

struct Avx2Blocks {
    static constexpr unsigned byte_count = 32;
    static constexpr unsigned char_count = 64;
    static constexpr unsigned bytes_beside = 0;
    static constexpr unsigned chars_behind = 0;

    [[gnu::target("avx2")]] static void encode(const unsigned char* bytes, char* text) {
        const __m256i source = load_32(bytes);
        const __m256i alphabet = _mm256_broadcastsi128_si256(load(hex_alphabet));
        const __m256i higher = _mm256_shuffle_epi8(
            alphabet, _mm256_and_si256(_mm256_srli_epi32(source, 4), _mm256_set1_epi8(15)));
        const __m256i lower =
            _mm256_shuffle_epi8(alphabet, _mm256_and_si256(source, _mm256_set1_epi8(15)));
        // Bytes 0 to 7 and 16 to 23, and the others.
        const __m256i first = _mm256_unpacklo_epi8(higher, lower);
        const __m256i second = _mm256_unpackhi_epi8(higher, lower);
        store(text, _mm256_castsi256_si128(first));
        store(text + 16, _mm256_castsi256_si128(second));
        store(text + 32, _mm256_extracti128_si256(first, 1));
        store(text + 48, _mm256_extracti128_si256(second, 1));
    }

    [[gnu::target("avx2")]] static bool decode(const char* text, unsigned char* bytes) {
        const __m256i first = values_avx2(load_32(text));
        const __m256i second = values_avx2(load_32(text + 32));
        if (_mm256_testz_si256(_mm256_or_si256(first, second),
                               _mm256_set1_epi8(static_cast<char>(0xF0))) == 0) {
            return false;
        }
        const __m256i weights = _mm256_set1_epi16(0x0110);
        // Packing goes by halves.
        const __m256i packed = _mm256_packus_epi16(_mm256_maddubs_epi16(first, weights),
                                                   _mm256_maddubs_epi16(second, weights));
        store_32(bytes, _mm256_permute4x64_epi64(packed, 0b11'01'10'00));
        return true;
    }
};

struct Kernels {
    using Ssse3 = Ssse3Blocks;
    using Avx2 = Avx2Blocks;
    static constexpr auto encode_baseline = encode_sse2;
    static constexpr auto decode_baseline = decode_sse2;
};

}  // namespace

char* HexCodec::encode(const unsigned char* bytes, unsigned size, char* text, bool) {
    return encode_groups<Kernels>(bytes, size, text);
}

unsigned HexCodec::decode_groups(const char* text, unsigned length, unsigned char* bytes) {
    return decode_good_groups<HexCodec, Kernels>(text, length, bytes);
}

TransformProgress HexCodec::decode(const char* text, unsigned length, unsigned char* bytes,
                                   bool require_padding) {
    const unsigned done = decode_groups(text, length, bytes);
    bytes += done / chars_per_group;
    if (done == length) return {bytes, TransformFault::none};
    return decode_in_memory<HexCodec>(text + done, length - done, bytes, require_padding);
}

}  // namespace tarvcore::impl
