#include "tarvcore/impl/base32_codec.h"

#include <cstdint>
#include <cstring>

#include <immintrin.h>

#include "tarvcore/impl/transform_blocks.h"
#include "tarvcore/impl/transform_vectors.h"
#include "tarvcore/impl/vector_util.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/impl/base32_codec.cpp#1 $");

namespace tarvcore::impl {
namespace {

// ---- Without vectors: a group is two halves of 20 bits, four characters.

constexpr auto char_pairs = character_pairs<5>(base32_alphabet);

constexpr auto bits_in_half = bits_by_place(
    base32_values, [](unsigned place, std::uint32_t value) { return value << (15 - 5 * place); });

void encode_half(unsigned half, char* text) {
    std::memcpy(text, &char_pairs[half >> 10], 2);
    std::memcpy(text + 2, &char_pairs[half & 1023], 2);
}

// Encodes whole groups.
char* encode_groups_by_pairs(const unsigned char* bytes, unsigned size, char* text) {
    for (; size >= 5; size -= 5, bytes += 5, text += 8) {
        std::uint32_t word = 0;
        std::memcpy(&word, bytes, 4);
        word = __builtin_bswap32(word);
        encode_half(word >> 12, text);
        encode_half((word & 0xFFF) << 8 | bytes[4], text + 4);
    }
    return text;
}

inline std::uint32_t decode_half(const char* text) {
    const auto bits = [text](unsigned place) {
        return bits_in_half[place][static_cast<unsigned char>(text[place])];
    };
    return bits(0) | bits(1) | bits(2) | bits(3);
}

// Decodes groups of good characters, and answers how many characters they have.
unsigned decode_groups_by_places(const char* text, unsigned length, unsigned char* bytes) {
    unsigned done = 0;
    for (; length - done >= 8; done += 8, bytes += 5) {
        const std::uint32_t first = decode_half(text + done);
        const std::uint32_t second = decode_half(text + done + 4);
        if ((first | second) >= no_value) break;
        const std::uint32_t word = __builtin_bswap32(first << 12 | second >> 8);
        std::memcpy(bytes, &word, 4);
        bytes[4] = static_cast<unsigned char>(second);
    }
    return done;
}

// ---- Tables for vectors, which have 16 places.

constexpr ShuffleTable lower_bits = lower_bits_of(base32_values);
constexpr ShuffleTable lower_faults = lower_faults_of(base32_values);

// By the higher half of a good character's code: what turns it into its value.
constexpr ShuffleTable value_less_code = [] {
    ShuffleTable table{};
    for (unsigned code = 0; code < base32_values.size(); ++code) {
        if (base32_values[code] < padding_mark)
            table[code >> 4] = static_cast<unsigned char>(base32_values[code] - code);
    }
    return table;
}();

// ---- SSSE3: 10 bytes, 16 characters.

// Takes eight words, each with ten bits of the source from its bit 15, 13, 11 or 9 down.
[[gnu::target("ssse3")]] inline __m128i encode_ssse3(__m128i words) {
    // A multiplication shifts each word by its own count: the first five bits to the lower byte,
    // the others to the higher one.
    const __m128i first = _mm_mulhi_epu16(
        words, _mm_setr_epi16(1 << 5, 1 << 7, 1 << 9, 1 << 11, 1 << 5, 1 << 7, 1 << 9, 1 << 11));
    const __m128i second = _mm_mullo_epi16(
        words, _mm_setr_epi16(1 << 2, 1 << 4, 1 << 6, 1 << 8, 1 << 2, 1 << 4, 1 << 6, 1 << 8));
    const __m128i values = _mm_or_si128(_mm_and_si128(first, _mm_set1_epi16(0x001F)),
                                        _mm_and_si128(second, _mm_set1_epi16(0x1F00)));
    const __m128i digits = _mm_cmpgt_epi8(values, _mm_set1_epi8(25));
    const __m128i distance = _mm_and_si128(digits, _mm_set1_epi8('2' - 26 - 'A'));
    return _mm_add_epi8(_mm_add_epi8(values, _mm_set1_epi8('A')), distance);
}

// Decodes to the first ten bytes; false where a character is not good.
[[gnu::target("ssse3")]] inline bool decode_ssse3(const char* text, __m128i* bytes) {
    const __m128i codes = load(text);
    const __m128i higher = _mm_and_si128(_mm_srli_epi32(codes, 4), _mm_set1_epi8(15));
    // The shuffle answers 0 for codes from 128 on.
    const __m128i good = _mm_and_si128(_mm_shuffle_epi8(load_table(lower_bits), codes),
                                       _mm_shuffle_epi8(load_table(higher_bits), higher));
    const __m128i values =
        _mm_add_epi8(codes, _mm_shuffle_epi8(load_table(value_less_code), higher));
    const __m128i pairs = _mm_maddubs_epi16(values, _mm_set1_epi16(0x0120));
    const __m128i halves = _mm_madd_epi16(pairs, _mm_set1_epi32(0x00010400));
    const __m128i groups =
        _mm_or_si128(_mm_mul_epu32(halves, _mm_set1_epi32(1 << 20)), _mm_srli_epi64(halves, 32));
    const __m128i order = _mm_setr_epi8(4, 3, 2, 1, 0, 12, 11, 10, 9, 8, -1, -1, -1, -1, -1, -1);
    *bytes = _mm_shuffle_epi8(groups, order);
    return _mm_movemask_epi8(_mm_cmpeq_epi8(good, _mm_setzero_si128())) == 0;
}

struct Ssse3Blocks {
    static constexpr unsigned byte_count = 10;
    static constexpr unsigned char_count = 16;
    static constexpr unsigned inner_blocks = 1;
    static constexpr unsigned bytes_beside = 6;
    static constexpr unsigned chars_behind = 16;

    [[gnu::target("ssse3")]] static void encode(const unsigned char* bytes, char* text) {
        // Eight bytes from the first on and eight up to the last.
        const __m128i source = _mm_unpacklo_epi64(load_half(bytes), load_half(bytes + 2));
        const __m128i order = _mm_setr_epi8(1, 0, 2, 1, 3, 2, 4, 3, 6, 5, 7, 6, 14, 7, 15, 14);
        store(text, encode_ssse3(_mm_shuffle_epi8(source, order)));
    }

    [[gnu::target("ssse3")]] static void encode_inner(const unsigned char* bytes, char* text) {
        const __m128i source = load(bytes);
        const __m128i order = _mm_setr_epi8(1, 0, 2, 1, 3, 2, 4, 3, 6, 5, 7, 6, 8, 7, 9, 8);
        store(text, encode_ssse3(_mm_shuffle_epi8(source, order)));
    }

    [[gnu::target("ssse3")]] static bool decode(const char* text, unsigned char* bytes) {
        __m128i block;
        if (!decode_ssse3(text, &block)) return false;
        store_half(bytes, block);
        const int last = _mm_extract_epi16(block, 4);
        std::memcpy(bytes + 8, &last, 2);
        return true;
    }

    // Stores a whole vector.
    [[gnu::target("ssse3")]] static bool decode_inner(const char* text, unsigned char* bytes) {
        __m128i block;
        if (!decode_ssse3(text, &block)) return false;
        store(bytes, block);
        return true;
    }
};

// ---- AVX2: 20 bytes, 32 characters.

// As `encode_ssse3`.
[[gnu::target("avx2")]] inline __m256i encode_avx2(__m256i words) {
    const __m256i first = _mm256_mulhi_epu16(
        words, _mm256_setr_epi16(1 << 5, 1 << 7, 1 << 9, 1 << 11, 1 << 5, 1 << 7, 1 << 9, 1 << 11,
                                 1 << 5, 1 << 7, 1 << 9, 1 << 11, 1 << 5, 1 << 7, 1 << 9, 1 << 11));
    const __m256i second = _mm256_mullo_epi16(
        words, _mm256_setr_epi16(1 << 2, 1 << 4, 1 << 6, 1 << 8, 1 << 2, 1 << 4, 1 << 6, 1 << 8,
                                 1 << 2, 1 << 4, 1 << 6, 1 << 8, 1 << 2, 1 << 4, 1 << 6, 1 << 8));
    const __m256i values = _mm256_or_si256(_mm256_and_si256(first, _mm256_set1_epi16(0x001F)),
                                           _mm256_and_si256(second, _mm256_set1_epi16(0x1F00)));
    const __m256i digits = _mm256_cmpgt_epi8(values, _mm256_set1_epi8(25));
    const __m256i distance = _mm256_and_si256(digits, _mm256_set1_epi8('2' - 26 - 'A'));
    return _mm256_add_epi8(_mm256_add_epi8(values, _mm256_set1_epi8('A')), distance);
}

// Decodes to the first ten bytes of either half; false where a character is not good.
[[gnu::target("avx2")]] inline bool decode_avx2(const char* text, __m256i* bytes) {
    const __m256i codes = load_32(text);
    const __m256i higher = _mm256_and_si256(_mm256_srli_epi32(codes, 4), _mm256_set1_epi8(15));
    const __m256i lower = _mm256_and_si256(codes, _mm256_set1_epi8(15));
    const bool good =
        _mm256_testz_si256(_mm256_shuffle_epi8(load_table_twice(lower_faults), lower),
                           _mm256_shuffle_epi8(load_table_twice(higher_bits), higher)) != 0;
    const __m256i values =
        _mm256_add_epi8(codes, _mm256_shuffle_epi8(load_table_twice(value_less_code), higher));
    const __m256i pairs = _mm256_maddubs_epi16(values, _mm256_set1_epi16(0x0120));
    const __m256i halves = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00010400));
    const __m256i groups = _mm256_or_si256(_mm256_mul_epu32(halves, _mm256_set1_epi32(1 << 20)),
                                           _mm256_srli_epi64(halves, 32));
    const __m256i order =
        _mm256_setr_epi8(4, 3, 2, 1, 0, 12, 11, 10, 9, 8, -1, -1, -1, -1, -1, -1,  //
                         4, 3, 2, 1, 0, 12, 11, 10, 9, 8, -1, -1, -1, -1, -1, -1);
    *bytes = _mm256_shuffle_epi8(groups, order);
    return good;
}

struct Avx2Blocks {
    static constexpr unsigned byte_count = 20;
    static constexpr unsigned char_count = 32;
    static constexpr unsigned inner_blocks = 1;
    static constexpr unsigned bytes_beside = 0;
    static constexpr unsigned chars_behind = 16;

    [[gnu::target("avx2")]] static void encode(const unsigned char* bytes, char* text) {
        // Sixteen bytes from the first on and sixteen up to the last.
        const __m256i source = _mm256_inserti128_si256(_mm256_castsi128_si256(load(bytes)),
                                                       load(bytes + byte_count - 16), 1);
        const __m256i order =
            _mm256_setr_epi8(1, 0, 2, 1, 3, 2, 4, 3, 6, 5, 7, 6, 8, 7, 9, 8,  //
                             7, 6, 8, 7, 9, 8, 10, 9, 12, 11, 13, 12, 14, 13, 15, 14);
        store_32(text, encode_avx2(_mm256_shuffle_epi8(source, order)));
    }

    [[gnu::target("avx2")]] static bool decode(const char* text, unsigned char* bytes) {
        __m256i block;
        if (!decode_avx2(text, &block)) return false;
        store(bytes, _mm256_castsi256_si128(block));
        const __m128i second = _mm256_extracti128_si256(block, 1);
        store_half(bytes + 10, second);
        const int last = _mm_extract_epi16(second, 4);
        std::memcpy(bytes + 18, &last, 2);
        return true;
    }

    [[gnu::target("avx2")]] static bool decode_inner(const char* text, unsigned char* bytes) {
        __m256i block;
        if (!decode_avx2(text, &block)) return false;
        store(bytes, _mm256_castsi256_si128(block));
        store(bytes + 10, _mm256_extracti128_si256(block, 1));
        return true;
    }
};

struct Kernels {
    using Ssse3 = Ssse3Blocks;
    using Avx2 = Avx2Blocks;
    static constexpr auto encode_baseline = encode_groups_by_pairs;
    static constexpr auto decode_baseline = decode_groups_by_places;
};

}  // namespace

char* Base32Codec::encode(const unsigned char* bytes, unsigned size, char* text, bool pad) {
    const unsigned rest = size % bytes_per_group;
    text = encode_groups<Kernels>(bytes, size - rest, text);
    return encode_last_group<Base32Codec>(bytes + size - rest, rest, text, pad);
}

unsigned Base32Codec::decode_groups(const char* text, unsigned length, unsigned char* bytes) {
    return decode_good_groups<Base32Codec, Kernels>(text, length, bytes);
}

TransformProgress Base32Codec::decode(const char* text, unsigned length, unsigned char* bytes,
                                      bool require_padding) {
    const unsigned done = decode_groups(text, length, bytes);
    bytes += done / chars_per_group * bytes_per_group;
    if (done == length) return {bytes, TransformFault::none};
    return decode_in_memory<Base32Codec>(text + done, length - done, bytes, require_padding);
}

}  // namespace tarvcore::impl
