#include "tarvcore/impl/base64_codec.h"

#include <bit>
#include <cstdint>
#include <cstring>

#include <immintrin.h>

#include "tarvcore/impl/transform_blocks.h"
#include "tarvcore/impl/transform_vectors.h"
#include "tarvcore/impl/vector_util.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/impl/base64_codec.cpp#1 $");

// A group as a number is bytes b0 b1 b2, or characters of 6 bits c0 c1 c2 c3; in the comments on
// vectors the lowest byte stands first.
namespace tarvcore::impl {
namespace {

// ---- On the baseline: by tables.

constexpr auto char_pairs = character_pairs<6>(base64_alphabet);

// In a word whose bytes are b0 b1 b2.
constexpr auto bits_in_group =
    bits_by_place(base64_values, [](unsigned place, std::uint32_t value) {
        const std::uint32_t group = value << (18 - 6 * place);
        return group >> 16 | (group & 0xFF00) | (group & 0xFF) << 16;
    });

void encode_group(unsigned group, char* text) {
    std::memcpy(text, &char_pairs[group >> 12], 2);
    std::memcpy(text + 2, &char_pairs[group & 0xFFF], 2);
}

// Reads a byte more than the group has.
inline std::uint32_t load_group(const unsigned char* bytes) {
    std::uint32_t word = 0;
    std::memcpy(&word, bytes, 4);
    return __builtin_bswap32(word) >> 8;
}

// Puts the characters of a group into two of the eight places for pairs.
template <int place>
inline __m128i insert_group(__m128i text, std::uint32_t group) {
    text = _mm_insert_epi16(text, std::bit_cast<std::int16_t>(char_pairs[group >> 12]), place);
    return _mm_insert_epi16(text, std::bit_cast<std::int16_t>(char_pairs[group & 0xFFF]),
                            place + 1);
}

// Encodes four groups, with one store in place of eight.
inline void encode_four_groups(const unsigned char* bytes, char* text) {
    __m128i pairs = _mm_setzero_si128();
    pairs = insert_group<0>(pairs, load_group(bytes));
    pairs = insert_group<2>(pairs, load_group(bytes + 3));
    pairs = insert_group<4>(pairs, load_group(bytes + 6));
    pairs = insert_group<6>(pairs, load_group(bytes + 9));
    store(text, pairs);
}

// Encodes whole groups.
char* encode_groups_by_pairs(const unsigned char* bytes, unsigned size, char* text) {
    for (; size > 24; size -= 24, bytes += 24, text += 32) {
        encode_four_groups(bytes, text);
        encode_four_groups(bytes + 12, text + 16);
    }
    for (; size > 3; size -= 3, bytes += 3, text += 4)
        encode_group(load_group(bytes), text);
    if (size != 0) {
        encode_group(bytes[0] << 16 | bytes[1] << 8 | bytes[2], text);
        text += 4;
    }
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

// ASCII has rows, by the higher halves of codes, and columns, by the lower ones.  A column says in
// its lower four bits how many places further on than its row a character finds its entry of
// `value_less_code`.  With all its bits it says where it has characters of the alphabets: in rows
// that share one of them.  (The columns are the outcome of a search.)
constexpr ShuffleTable columns = {{0x10, 0x30, 0x30, 0x30, 0x30, 0x30, 0x30, 0x30, 0x30, 0x30, 0x20,
                                   0x40, 0x01, 0x06, 0x01, 0x09}};

constexpr bool is_in_alphabets(unsigned code) {
    return code < base64_values.size() && base64_values[code] < padding_mark;
}

// The bits of which all columns that have them have a character in the row.
constexpr ShuffleTable rows = [] {
    ShuffleTable table{};
    for (unsigned row = 0; row < table.size(); ++row) {
        unsigned bits = 0x7F;
        for (unsigned column = 0; column < columns.size(); ++column) {
            if (!is_in_alphabets(row << 4 | column)) bits &= ~columns[column];
        }
        table[row] = static_cast<unsigned char>(bits);
    }
    return table;
}();

// Shuffles look at the lower four bits of a place, and answer 0 where it has the highest one.
constexpr unsigned place_of(unsigned code) {
    return (code >> 4) + columns[code & 15];
}

// What turns the code of a good character into its value.
constexpr ShuffleTable value_less_code = [] {
    ShuffleTable table{};
    for (unsigned code = 0; code < base64_values.size(); ++code) {
        if (is_in_alphabets(code))
            table[place_of(code) % 16] = static_cast<unsigned char>(base64_values[code] - code);
    }
    return table;
}();

static_assert(
    [] {
        for (unsigned code = 0; code < base64_values.size(); ++code) {
            const bool good = (columns[code & 15] & rows[code >> 4]) != 0;
            if (good != is_in_alphabets(code)) return false;
            const unsigned value = code + value_less_code[place_of(code) % 16];
            if (good && (place_of(code) >= 128 || value % 256 != base64_values[code])) return false;
        }
        return true;
    }(),
    "columns and rows know the alphabets, and no two characters need one place for two entries");

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

// Decodes to the first 12 bytes.  `*good` gets a byte of 0 for each character that is not.
[[gnu::target("ssse3")]] inline __m128i decode_ssse3(const char* text, __m128i* good) {
    const __m128i codes = load(text);
    const __m128i row = _mm_and_si128(_mm_srli_epi32(codes, 4), _mm_set1_epi8(15));
    // 0 for codes from 128 on.
    const __m128i column = _mm_shuffle_epi8(load_table(columns), codes);
    const __m128i shared = _mm_and_si128(_mm_shuffle_epi8(load_table(rows), row), column);
    *good = _mm_min_epu8(*good, shared);
    const __m128i place = _mm_add_epi8(row, column);
    const __m128i values =
        _mm_add_epi8(codes, _mm_shuffle_epi8(load_table(value_less_code), place));
    const __m128i pairs = _mm_maddubs_epi16(values, _mm_set1_epi16(0x0140));
    const __m128i groups = _mm_madd_epi16(pairs, _mm_set1_epi32(0x00011000));
    const __m128i order = _mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1);
    return _mm_shuffle_epi8(groups, order);
}

[[gnu::target("ssse3")]] inline bool is_good(__m128i good) {
    return _mm_movemask_epi8(_mm_cmpeq_epi8(good, _mm_setzero_si128())) == 0;
}

struct Ssse3Blocks {
    static constexpr unsigned byte_count = 12;
    static constexpr unsigned char_count = 16;
    static constexpr unsigned inner_blocks = 4;
    static constexpr unsigned bytes_beside = 4;
    static constexpr unsigned chars_behind = 8;

    [[gnu::target("ssse3")]] static void encode(const unsigned char* bytes, char* text) {
        // Eight bytes from the first on and eight up to the last.
        const __m128i source =
            _mm_unpacklo_epi64(load_half(bytes), load_half(bytes + byte_count - 8));
        const __m128i order = _mm_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 12, 7, 14, 13, 15, 14);
        store(text, encode_ssse3(_mm_shuffle_epi8(source, order)));
    }

    [[gnu::target("ssse3")]] static void encode_inner(const unsigned char* bytes, char* text) {
        const __m128i source = load(bytes);
        const __m128i order = _mm_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10);
        store(text, encode_ssse3(_mm_shuffle_epi8(source, order)));
    }

    [[gnu::target("ssse3")]] static bool decode(const char* text, unsigned char* bytes) {
        __m128i good = _mm_set1_epi8(-1);
        const __m128i block = decode_ssse3(text, &good);
        if (!is_good(good)) return false;
        store_half(bytes, block);
        store_quarter(bytes + 8, _mm_srli_si128(block, 8));
        return true;
    }

    // Stores whole vectors.
    [[gnu::target("ssse3")]] static bool decode_inner(const char* text, unsigned char* bytes) {
        __m128i good = _mm_set1_epi8(-1);
#pragma GCC unroll inner_blocks
        for (unsigned i = 0; i < inner_blocks; ++i) {
            const __m128i block = decode_ssse3(text + char_count * i, &good);
            store(bytes + byte_count * i, block);
        }
        return is_good(good);
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
    static constexpr unsigned inner_blocks = 2;
    static constexpr unsigned bytes_beside = 4;
    static constexpr unsigned chars_behind = 8;

    [[gnu::target("avx2")]] Avx2Blocks() {
        // Here and now: the compiler would do it again for every block.
        asm("" : "+x"(columns_), "+x"(rows_), "+x"(value_));
    }

    [[gnu::target("avx2")]] static void encode(const unsigned char* bytes, char* text) {
        // Sixteen bytes from the first on and sixteen up to the last.
        const __m256i halves = _mm256_inserti128_si256(_mm256_castsi128_si256(load(bytes)),
                                                       load(bytes + byte_count - 16), 1);
        const __m256i order =
            _mm256_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10,  //
                             5, 4, 6, 5, 8, 7, 9, 8, 11, 10, 12, 11, 14, 13, 15, 14);
        store_32(text, encode_avx2(halves, order));
    }

    // With four more bytes on either side a block lies evenly in the two halves of a vector.
    [[gnu::target("avx2")]] static void encode_inner(const unsigned char* bytes, char* text) {
        const __m256i source = load_32(bytes - 4);
        const __m256i order =
            _mm256_setr_epi8(5, 4, 6, 5, 8, 7, 9, 8, 11, 10, 12, 11, 14, 13, 15, 14,  //
                             1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10);
        store_32(text, encode_avx2(source, order));
    }

    [[gnu::target("avx2")]] bool decode(const char* text, unsigned char* bytes) const {
        __m256i good = _mm256_set1_epi8(-1);
        const __m256i block = decode_halves(text, &good);
        if (!is_good_twice(good)) return false;
        store(bytes, _mm256_castsi256_si128(block));
        // No further than the bytes go.
        const __m128i second = _mm256_extracti128_si256(block, 1);
        store_half(bytes + 12, second);
        store_quarter(bytes + 20, _mm_srli_si128(second, 8));
        return true;
    }

    [[gnu::target("avx2")]] bool decode_inner(const char* text, unsigned char* bytes) const {
        __m256i good = _mm256_set1_epi8(-1);
#pragma GCC unroll inner_blocks
        for (unsigned i = 0; i < inner_blocks; ++i, bytes += byte_count) {
            const __m256i block = decode_halves(text + char_count * i, &good);
            store(bytes, _mm256_castsi256_si128(block));
            store(bytes + 12, _mm256_extracti128_si256(block, 1));
        }
        return is_good_twice(good);
    }

private:
    // Decodes to the first 12 bytes of either half.  `*good` as in `decode_ssse3`.
    [[gnu::target("avx2")]] __m256i decode_halves(const char* text, __m256i* good) const {
        const __m256i codes = load_32(text);
        const __m256i row = _mm256_and_si256(_mm256_srli_epi32(codes, 4), _mm256_set1_epi8(15));
        const __m256i column = _mm256_shuffle_epi8(columns_, codes);
        const __m256i shared = _mm256_and_si256(_mm256_shuffle_epi8(rows_, row), column);
        *good = _mm256_min_epu8(*good, shared);
        const __m256i place = _mm256_add_epi8(row, column);
        const __m256i values = _mm256_add_epi8(codes, _mm256_shuffle_epi8(value_, place));
        const __m256i pairs = _mm256_maddubs_epi16(values, _mm256_set1_epi16(0x0140));
        const __m256i groups = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
        const __m256i order =
            _mm256_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1,  //
                             2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1);
        return _mm256_shuffle_epi8(groups, order);
    }

    [[gnu::target("avx2")]] static bool is_good_twice(__m256i good) {
        return _mm256_movemask_epi8(_mm256_cmpeq_epi8(good, _mm256_setzero_si256())) == 0;
    }

    __m256i columns_ = load_table_twice(columns);
    __m256i rows_ = load_table_twice(rows);
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
