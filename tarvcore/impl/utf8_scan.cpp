#include "tarvcore/impl/unicode_blocks.h"
#include "tarvcore/impl/utf8_fault_tables.h"
#include "tarvcore/impl/vector_util.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/impl/utf8_scan.cpp#1 $");

#define TARVCORE_AVX2 [[gnu::target("avx2,popcnt")]]
#define TARVCORE_AVX2_INLINE [[gnu::target("avx2,popcnt"), gnu::always_inline]] inline

namespace tarvcore::impl {
namespace {

constexpr unsigned vector_size = 32;
constexpr unsigned block = utf8_scan_block_length;
static_assert(block == 2 * vector_size);

TARVCORE_AVX2_INLINE __m256i bytes(int value) {
    return _mm256_set1_epi8(static_cast<char>(value));
}

TARVCORE_AVX2_INLINE __m256i look_up(const utf8_faults::Nibbles& table, __m256i index) {
    return _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(load(table.data())), index);
}

TARVCORE_AVX2_INLINE __m256i high_nibbles(__m256i value) {
    return _mm256_and_si256(_mm256_srli_epi16(value, 4), bytes(0x0F));
}

// Not zero where something is wrong, or might be.
TARVCORE_AVX2_INLINE __m256i faults(__m256i current, __m256i previous) {
    const __m256i joint = _mm256_permute2x128_si256(previous, current, 0x21);
    const __m256i before_1 = _mm256_alignr_epi8(current, joint, 15);
    const __m256i before_2 = _mm256_alignr_epi8(current, joint, 14);
    const __m256i before_3 = _mm256_alignr_epi8(current, joint, 13);
    const __m256i pairs = _mm256_and_si256(
        _mm256_and_si256(
            look_up(utf8_faults::by_first_high, high_nibbles(before_1)),
            look_up(utf8_faults::by_first_low, _mm256_and_si256(before_1, bytes(0x0F)))),
        look_up(utf8_faults::by_second_high, high_nibbles(current)));
    // Bit 7 where the third byte of three or the third or fourth of four must be.
    const __m256i required =
        _mm256_and_si256(_mm256_or_si256(_mm256_subs_epu8(before_2, bytes(0xE0 - 0x80)),
                                         _mm256_subs_epu8(before_3, bytes(0xF0 - 0x80))),
                         bytes(0x80));
    // U+FEFF, U+FFFE and U+FFFF are among EF .. BE and EF .. BF, which are rare anyway.
    const __m256i suspect = _mm256_and_si256(_mm256_cmpeq_epi8(before_2, bytes(0xEF)),
                                             _mm256_cmpgt_epi8(current, bytes(0xBD)));
    return _mm256_or_si256(_mm256_xor_si256(pairs, required), suspect);
}

TARVCORE_AVX2_INLINE unsigned count_at_least(__m256i value, int limit) {
    const __m256i mask = _mm256_cmpeq_epi8(_mm256_max_epu8(value, bytes(limit)), value);
    return static_cast<unsigned>(
        __builtin_popcount(static_cast<unsigned>(_mm256_movemask_epi8(mask))));
}

TARVCORE_AVX2_INLINE unsigned count_characters(__m256i value) {
    const __m256i mask = _mm256_cmpgt_epi8(value, bytes(0xBF));
    return static_cast<unsigned>(
        __builtin_popcount(static_cast<unsigned>(_mm256_movemask_epi8(mask))));
}

// What is counted in a text that is valid.
enum class Counted { nothing, characters, utf16_units };

template <Counted counted>
TARVCORE_AVX2_INLINE BlockProgress scan(const char* text, unsigned length) {
    unsigned read = 0;
    unsigned written = 0;
    __m256i previous = _mm256_setzero_si256();
    for (; length - read >= block; read += block) {
        const __m256i first = load_32(text + read);
        const __m256i last = load_32(text + read + vector_size);
        const int above = _mm256_movemask_epi8(_mm256_or_si256(first, last));
        if (above == 0 && (read == 0 || text[read - 1] >= 0)) {
            written += block;
        } else {
            const __m256i found = _mm256_or_si256(faults(first, previous), faults(last, first));
            if (_mm256_testz_si256(found, found) == 0) break;
            if constexpr (counted != Counted::nothing) {
                written += count_characters(first) + count_characters(last);
            }
            if constexpr (counted == Counted::utf16_units) {
                written += count_at_least(first, 0xF0) + count_at_least(last, 0xF0);
            }
        }
        previous = last;
    }
    if (read == 0) return {0, 0};

    // A character that is not finished has been counted by its first byte.
    const auto* end = reinterpret_cast<const unsigned char*>(text) + read;
    const unsigned unfinished = end[-1] >= 0xC0 ? 1 : end[-2] >= 0xE0 ? 2 : end[-3] >= 0xF0 ? 3 : 0;
    if (unfinished != 0 && counted != Counted::nothing) {
        const bool is_long = end[-static_cast<int>(unfinished)] >= 0xF0;
        written -= counted == Counted::utf16_units && is_long ? 2 : 1;
    }
    return {read - unfinished, written};
}

}  // namespace

TARVCORE_AVX2 BlockProgress scan_utf8_blocks_as_utf16(const char* text, unsigned length) {
    return scan<Counted::utf16_units>(text, length);
}

TARVCORE_AVX2 BlockProgress scan_utf8_blocks_as_ucs4(const char* text, unsigned length) {
    return scan<Counted::characters>(text, length);
}

TARVCORE_AVX2 unsigned valid_utf8_blocks(const char* text, unsigned length) {
    return scan<Counted::nothing>(text, length).read;
}

}  // namespace tarvcore::impl
