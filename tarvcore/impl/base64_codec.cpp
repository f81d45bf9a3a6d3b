#include "tarvcore/impl/base64_codec.h"

#include <cstdint>
#include <cstring>

#include <immintrin.h>

#include "tarvcore/impl/transform_blocks.h"
#include "tarvcore/impl/transform_vectors.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/impl/base64_codec.cpp#1 $");

// A group as a number is bytes b0 b1 b2, or characters of 6 bits c0 c1 c2 c3; in the comments on
// vectors the lowest byte stands first.
namespace tarvcore::impl {
namespace {

// ---- Without vectors.

constexpr auto char_pairs = character_pairs<6>(base64_alphabet);

// In a word whose bytes are b0 b1 b2.
constexpr auto bits_in_group =
    bits_by_place(base64_values, [](unsigned place, std::uint32_t value) {
        const std::uint32_t group = value << (18 - 6 * place);
        return group >> 16 | (group & 0xFF00) | (group & 0xFF) << 16;
    });

char* encode_group(unsigned group, char* text) {
    std::memcpy(text, &char_pairs[group >> 12], 2);
    std::memcpy(text + 2, &char_pairs[group & 0xFFF], 2);
    return text + 4;
}

// Encodes whole groups.
char* encode_groups_by_pairs(const unsigned char* bytes, unsigned size, char* text) {
    // A byte more than the group has is read, where there is one.
    for (; size > 3; size -= 3, bytes += 3) {
        std::uint32_t word = 0;
        std::memcpy(&word, bytes, 4);
        text = encode_group(__builtin_bswap32(word) >> 8, text);
    }
    if (size == 3) text = encode_group(bytes[0] << 16 | bytes[1] << 8 | bytes[2], text);
    return text;
}

// Encodes what is left after whole groups: no, one or two bytes.
char* encode_rest(const unsigned char* bytes, unsigned size, char* text, bool pad) {
    if (size == 0) return text;
    const unsigned group = bytes[0] << 16 | (size == 2 ? bytes[1] << 8 : 0);
    std::memcpy(text, &char_pairs[group >> 12], 2);
    text += 2;
    if (size == 2) *text++ = base64_alphabet[group >> 6 & 63];
    for (; pad && size < 3; ++size)
        *text++ = '=';
    return text;
}

inline std::uint32_t bits_of(const char* text, unsigned place) {
    return bits_in_group[place][static_cast<unsigned char>(text[place])];
}

inline std::uint32_t decode_group(const char* text) {
    return bits_of(text, 0) | bits_of(text, 1) | bits_of(text, 2) | bits_of(text, 3);
}

// Decodes groups of good characters, and answers how many characters they have.
unsigned decode_groups_by_places(const char* text, unsigned length, unsigned char* bytes) {
    const char* const begin = text;
    // A byte more than the group has is written, where the next group has one.
    for (; length > 4; length -= 4, text += 4, bytes += 3) {
        const std::uint32_t group = decode_group(text);
        if (group >= no_value) return static_cast<unsigned>(text - begin);
        std::memcpy(bytes, &group, 4);
    }
    if (length == 4) {
        const std::uint32_t group = decode_group(text);
        if (group < no_value) {
            std::memcpy(bytes, &group, 3);
            text += 4;
        }
    }
    return static_cast<unsigned>(text - begin);
}

// Decodes a group with one or two padding characters, and answers how many bytes it has; 0 where
// anything is wrong with it.
unsigned decode_padded_group(const char* text, unsigned char* bytes) {
    if (text[3] != '=') return 0;
    const unsigned size = text[2] == '=' ? 1 : 2;
    const std::uint32_t group =
        bits_of(text, 0) | bits_of(text, 1) | (size == 2 ? bits_of(text, 2) : 0);
    // A wrong character has bits there, too.
    if (group >> (8 * size) != 0) return 0;
    std::memcpy(bytes, &group, 1);
    if (size == 2) bytes[1] = static_cast<unsigned char>(group >> 8);
    return size;
}

// ---- Tables for vectors, which have 16 places.

// What turns the value of a character into its code: the table's entry for the value's kind is
// added.  Kinds are 0 for values up to 25, 1 up to 51, and then each value has its own.
constexpr ShuffleTable code_less_value = [] {
    ShuffleTable table{};
    for (unsigned value = 0; value < 64; ++value) {
        const unsigned kind = value < 26 ? 0 : value < 52 ? 1 : value - 50;
        table[kind] = static_cast<unsigned char>(base64_alphabet[value] - value);
    }
    return table;
}();

constexpr ShuffleTable lower_bits = lower_bits_of(base64_values);
constexpr ShuffleTable lower_faults = lower_faults_of(base64_values);

// What turns the code of a good character into its value.  It depends on the higher half of the
// code, but for the columns of the two alphabets' special characters: the rows of these columns are
// looked up further on.
constexpr ShuffleTable further_on = {{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 8, 0, 11}};
constexpr ShuffleTable value_less_code = [] {
    ShuffleTable table{};
    for (unsigned code = 0; code < base64_values.size(); ++code) {
        if (base64_values[code] >= padding_mark) continue;
        const unsigned place = ((code >> 4) + further_on[code & 15]) % 16;
        table[place] = static_cast<unsigned char>(base64_values[code] - code);
    }
    return table;
}();
static_assert(
    [] {
        for (unsigned code = 0; code < base64_values.size(); ++code) {
            if (base64_values[code] >= padding_mark) continue;
            const unsigned place = ((code >> 4) + further_on[code & 15]) % 16;
            if (static_cast<unsigned char>(code + value_less_code[place]) != base64_values[code])
                return false;
        }
        return true;
    }(),
    "no two characters that need different entries share one");

// ---- SSSE3: 12 bytes, 16 characters.

// `source` has the groups' bytes as b1 b0 b2 b1 each.
[[gnu::target("ssse3")]] inline __m128i encode_ssse3(__m128i source) {
    // A multiplication shifts each 16 bits by its own count.
    const __m128i c0_c2 = _mm_mulhi_epu16(_mm_and_si128(source, _mm_set1_epi32(0x0FC0FC00)),
                                          _mm_set1_epi32(0x04000040));
    const __m128i c1_c3 = _mm_mullo_epi16(_mm_and_si128(source, _mm_set1_epi32(0x003F03F0)),
                                          _mm_set1_epi32(0x01000010));
    const __m128i values = _mm_or_si128(c0_c2, c1_c3);
    // True is -1.
    const __m128i kind = _mm_sub_epi8(_mm_subs_epu8(values, _mm_set1_epi8(51)),
                                      _mm_cmpgt_epi8(values, _mm_set1_epi8(25)));
    return _mm_add_epi8(values, _mm_shuffle_epi8(load_table(code_less_value), kind));
}

// Decodes to the first 12 bytes; false where a character is not good.
[[gnu::target("ssse3")]] inline bool decode_ssse3(const char* text, __m128i* bytes) {
    const __m128i codes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
    const __m128i higher = _mm_and_si128(_mm_srli_epi32(codes, 4), _mm_set1_epi8(15));
    // The shuffle answers 0 for codes from 128 on.
    const __m128i good = _mm_and_si128(_mm_shuffle_epi8(load_table(lower_bits), codes),
                                       _mm_shuffle_epi8(load_table(higher_bits), higher));
    const __m128i place = _mm_add_epi8(higher, _mm_shuffle_epi8(load_table(further_on), codes));
    const __m128i values =
        _mm_add_epi8(codes, _mm_shuffle_epi8(load_table(value_less_code), place));
    const __m128i pairs = _mm_maddubs_epi16(values, _mm_set1_epi16(0x0140));
    const __m128i groups = _mm_madd_epi16(pairs, _mm_set1_epi32(0x00011000));
    const __m128i order = _mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1);
    *bytes = _mm_shuffle_epi8(groups, order);
    return _mm_movemask_epi8(_mm_cmpeq_epi8(good, _mm_setzero_si128())) == 0;
}

struct Ssse3Blocks {
    static constexpr unsigned byte_count = 12;
    static constexpr unsigned char_count = 16;
    static constexpr unsigned bytes_beside = 4;
    static constexpr unsigned chars_behind = 8;

    [[gnu::target("ssse3")]] static void encode(const unsigned char* bytes, char* text) {
        // Eight bytes from the first on and eight up to the last.
        const __m128i source = _mm_unpacklo_epi64(
            _mm_loadl_epi64(reinterpret_cast<const __m128i*>(bytes)),
            _mm_loadl_epi64(reinterpret_cast<const __m128i*>(bytes + byte_count - 8)));
        const __m128i order = _mm_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 12, 7, 14, 13, 15, 14);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(text),
                         encode_ssse3(_mm_shuffle_epi8(source, order)));
    }

    [[gnu::target("ssse3")]] static void encode_inner(const unsigned char* bytes, char* text) {
        const __m128i source = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
        const __m128i order = _mm_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(text),
                         encode_ssse3(_mm_shuffle_epi8(source, order)));
    }

    [[gnu::target("ssse3")]] static bool decode(const char* text, unsigned char* bytes) {
        __m128i block;
        if (!decode_ssse3(text, &block)) return false;
        _mm_storel_epi64(reinterpret_cast<__m128i*>(bytes), block);
        const int last = _mm_cvtsi128_si32(_mm_srli_si128(block, 8));
        std::memcpy(bytes + 8, &last, 4);
        return true;
    }

    // Stores a whole vector.
    [[gnu::target("ssse3")]] static bool decode_inner(const char* text, unsigned char* bytes) {
        __m128i block;
        if (!decode_ssse3(text, &block)) return false;
        _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), block);
        return true;
    }
};

// ---- AVX2: 24 bytes, 32 characters.

// `order` brings the bytes of groups into the order that `encode_ssse3` takes.
[[gnu::target("avx2")]] inline __m256i encode_avx2(__m256i bytes, __m256i order) {
    const __m256i source = _mm256_shuffle_epi8(bytes, order);
    const __m256i c0_c2 = _mm256_mulhi_epu16(
        _mm256_and_si256(source, _mm256_set1_epi32(0x0FC0FC00)), _mm256_set1_epi32(0x04000040));
    const __m256i c1_c3 = _mm256_mullo_epi16(
        _mm256_and_si256(source, _mm256_set1_epi32(0x003F03F0)), _mm256_set1_epi32(0x01000010));
    const __m256i values = _mm256_or_si256(c0_c2, c1_c3);
    const __m256i kind = _mm256_sub_epi8(_mm256_subs_epu8(values, _mm256_set1_epi8(51)),
                                         _mm256_cmpgt_epi8(values, _mm256_set1_epi8(25)));
    return _mm256_add_epi8(values, _mm256_shuffle_epi8(load_table_twice(code_less_value), kind));
}

class Avx2Blocks {
public:
    static constexpr unsigned byte_count = 24;
    static constexpr unsigned char_count = 32;
    static constexpr unsigned bytes_beside = 4;
    static constexpr unsigned chars_behind = 8;

    [[gnu::target("avx2")]] Avx2Blocks() {
        // Here and now: the compiler would do it again for every block.
        asm("" : "+x"(lower_), "+x"(higher_), "+x"(further_), "+x"(value_));
    }

    [[gnu::target("avx2")]] static void encode(const unsigned char* bytes, char* text) {
        // Sixteen bytes from the first on and sixteen up to the last.
        const __m256i halves = _mm256_inserti128_si256(
            _mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes))),
            _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + byte_count - 16)), 1);
        const __m256i order =
            _mm256_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10,  //
                             5, 4, 6, 5, 8, 7, 9, 8, 11, 10, 12, 11, 14, 13, 15, 14);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(text), encode_avx2(halves, order));
    }

    // With four more bytes on either side a block lies evenly in the two halves of a vector.
    [[gnu::target("avx2")]] static void encode_inner(const unsigned char* bytes, char* text) {
        const __m256i source = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes - 4));
        const __m256i order =
            _mm256_setr_epi8(5, 4, 6, 5, 8, 7, 9, 8, 11, 10, 12, 11, 14, 13, 15, 14,  //
                             1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(text), encode_avx2(source, order));
    }

    [[gnu::target("avx2")]] bool decode(const char* text, unsigned char* bytes) const {
        __m256i block;
        if (!decode_halves(text, &block)) return false;
        _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), _mm256_castsi256_si128(block));
        // No further than the bytes go.
        const __m128i second = _mm256_extracti128_si256(block, 1);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(bytes + 12), second);
        const int last = _mm_extract_epi32(second, 2);
        std::memcpy(bytes + 20, &last, 4);
        return true;
    }

    [[gnu::target("avx2")]] bool decode_inner(const char* text, unsigned char* bytes) const {
        __m256i block;
        if (!decode_halves(text, &block)) return false;
        _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), _mm256_castsi256_si128(block));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes + 12),
                         _mm256_extracti128_si256(block, 1));
        return true;
    }

private:
    // Decodes to the first 12 bytes of either half; false where a character is not good.
    [[gnu::target("avx2")]] bool decode_halves(const char* text, __m256i* bytes) const {
        const __m256i codes = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(text));
        const __m256i higher = _mm256_and_si256(_mm256_srli_epi32(codes, 4), _mm256_set1_epi8(15));
        const __m256i lower = _mm256_and_si256(codes, _mm256_set1_epi8(15));
        const bool good = _mm256_testz_si256(_mm256_shuffle_epi8(lower_, lower),
                                             _mm256_shuffle_epi8(higher_, higher)) != 0;
        const __m256i place = _mm256_add_epi8(higher, _mm256_shuffle_epi8(further_, lower));
        const __m256i values = _mm256_add_epi8(codes, _mm256_shuffle_epi8(value_, place));
        const __m256i pairs = _mm256_maddubs_epi16(values, _mm256_set1_epi16(0x0140));
        const __m256i groups = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
        const __m256i order =
            _mm256_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1,  //
                             2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1);
        *bytes = _mm256_shuffle_epi8(groups, order);
        return good;
    }

    __m256i lower_ = load_table_twice(lower_faults);
    __m256i higher_ = load_table_twice(higher_bits);
    __m256i further_ = load_table_twice(further_on);
    __m256i value_ = load_table_twice(value_less_code);
};

struct Kernels {
    using Ssse3 = Ssse3Blocks;
    using Avx2 = Avx2Blocks;
    static constexpr auto encode_baseline = encode_groups_by_pairs;
    static constexpr auto decode_baseline = decode_groups_by_places;
};

}  // namespace

char* Base64Codec::encode(const unsigned char* bytes, unsigned size, char* text, bool pad) {
    const unsigned rest = size % bytes_per_group;
    text = encode_groups<Kernels>(bytes, size - rest, text);
    return encode_rest(bytes + size - rest, rest, text, pad);
}

unsigned Base64Codec::decode_groups(const char* text, unsigned length, unsigned char* bytes) {
    return decode_good_groups<Base64Codec, Kernels>(text, length, bytes);
}

TransformProgress Base64Codec::decode(const char* text, unsigned length, unsigned char* bytes,
                                      bool require_padding) {
    const unsigned done = decode_groups(text, length, bytes);
    text += done;
    length -= done;
    bytes += done / chars_per_group * bytes_per_group;
    if (length == chars_per_group) {
        if (const unsigned size = decode_padded_group(text, bytes); size != 0)
            return {bytes + size, TransformFault::none};
    }
    return decode_in_memory<Base64Codec>(text, length, bytes, require_padding);
}

}  // namespace tarvcore::impl
