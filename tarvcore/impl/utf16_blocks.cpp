#include <algorithm>

#include "tarvcore/impl/ssse3_util.h"
#include "tarvcore/impl/unicode_blocks.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/impl/utf16_blocks.cpp#1 $");

// How eight units are converted: every unit makes up to three bytes in a lane of four, a surrogate
// two of its pair's four, and a shuffle moves the bytes together.  No branch depends on how many
// bytes there are.

namespace tarvcore::impl {
namespace {

constexpr unsigned block = utf16_block_length;

// Shuffles that move the bytes of four lanes together.  A lane is the bytes lead, middle and last;
// a shorter character has the last two of them, or the last.  The index has a bit for each unit
// that takes at least two bytes and, above these, one for each that takes three.
struct PackTable {
    std::uint8_t shuffle[256][16];
    std::uint8_t length[256];
};

consteval PackTable make_pack_table() {
    PackTable table{};
    for (unsigned index = 0; index < 256; ++index) {
        unsigned length = 0;
        for (unsigned lane = 0; lane < 4; ++lane) {
            const unsigned bytes = 1 + (index >> lane & 1) + (index >> (lane + 4) & 1);
            for (unsigned i = 3 - bytes; i < 3; ++i)
                table.shuffle[index][length++] = static_cast<std::uint8_t>(4 * lane + i);
        }
        table.length[index] = static_cast<std::uint8_t>(length);
    }
    return table;
}

alignas(16) constexpr PackTable pack_table = make_pack_table();

// The most that one store of eight units touches: what the first four make, and a whole register.
constexpr unsigned room_for_block = 12 + 16;

TARVCORE_SSSE3_INLINE __m128i units(unsigned value) {
    return _mm_set1_epi16(static_cast<short>(value));
}

TARVCORE_SSSE3_INLINE __m128i bits(__m128i value, unsigned mask) {
    return _mm_and_si128(value, units(mask));
}

// A mask of the units that have certain bits.
TARVCORE_SSSE3_INLINE __m128i have(__m128i value, unsigned mask, unsigned expected) {
    return _mm_cmpeq_epi16(bits(value, mask), units(expected));
}

TARVCORE_SSSE3_INLINE bool any(__m128i mask) {
    return _mm_movemask_epi8(mask) != 0;
}

TARVCORE_SSSE3_INLINE __m128i forbidden(__m128i value) {
    return _mm_or_si128(have(value, 0xFFFE, 0xFFFE), have(value, 0xFFFF, 0xFEFF));
}

TARVCORE_SSSE3_INLINE __m128i surrogates(__m128i value) {
    return have(value, 0xF800, 0xD800);
}

// The units, each with the one in front of it.
struct Pairs {
    __m128i current;
    __m128i before;
};

// A mask of the units that are no low surrogate though a high one stands in front, or the reverse.
TARVCORE_SSSE3_INLINE __m128i unpaired(const Pairs& pairs) {
    return _mm_xor_si128(have(pairs.current, 0xFC00, 0xDC00), have(pairs.before, 0xFC00, 0xD800));
}

// What units make: the lead and middle bytes as one word, the last byte as another, and masks of
// the units that make at least two and three bytes.
struct Sequences {
    __m128i lead_and_middle;
    __m128i last;
    __m128i two;
    __m128i three;
};

TARVCORE_SSSE3_INLINE Sequences sequences(__m128i current) {
    const __m128i one = have(current, 0xFF80, 0);
    const __m128i short_lead = have(current, 0xF800, 0);
    const __m128i ones = units(0xFFFF);
    return {_mm_or_si128(
                _mm_or_si128(bits(_mm_slli_epi16(current, 2), 0x3F00), _mm_srli_epi16(current, 12)),
                select(short_lead, units(0xC000), units(0x80E0))),
            select(one, current, _mm_or_si128(bits(current, 0x3F), units(0x80))),
            _mm_xor_si128(one, ones), _mm_xor_si128(short_lead, ones)};
}

// The same where some are surrogates.  The high one makes the first two bytes of the four, the low
// one the others.
TARVCORE_SSSE3_INLINE Sequences sequences_with_surrogates(const Pairs& pairs) {
    Sequences all = sequences(pairs.current);
    const __m128i high = have(pairs.current, 0xFC00, 0xD800);
    const __m128i low = have(pairs.current, 0xFC00, 0xDC00);
    // Ten bits of the pair's twenty, and U+10000 added.
    const __m128i top = _mm_add_epi16(bits(pairs.current, 0x03FF), units(0x40));
    const __m128i high_middle = _mm_or_si128(bits(top, 0x0700), units(0xF000));
    const __m128i high_last = _mm_or_si128(bits(_mm_srli_epi16(top, 2), 0x3F), units(0x80));
    const __m128i low_middle =
        _mm_or_si128(_mm_or_si128(bits(_mm_slli_epi16(pairs.before, 12), 0x3000),
                                  bits(_mm_slli_epi16(pairs.current, 2), 0x0F00)),
                     units(0x8000));
    all.lead_and_middle = select(high, high_middle, select(low, low_middle, all.lead_and_middle));
    all.last = select(high, high_last, all.last);
    all.three = _mm_andnot_si128(surrogates(pairs.current), all.three);
    return all;
}

// Four units' sequences moved together; `exact` writes up to the limit and no more.
template <bool exact>
TARVCORE_SSSE3_INLINE unsigned put_lanes(__m128i lanes, unsigned index, unsigned limit,
                                         char* destination) {
    const __m128i packed = _mm_shuffle_epi8(lanes, load(pack_table.shuffle[index]));
    unsigned length = pack_table.length[index];
    if constexpr (exact) {
        length = std::min(length, limit);
        store_part(destination, packed, length);
    } else {
        store(destination, packed);
    }
    return length;
}

// For the first four units a bit each where they make two bytes, and again where they make three;
// then the same for the last four.
TARVCORE_SSSE3_INLINE unsigned lengths(const Sequences& made) {
    return static_cast<unsigned>(_mm_movemask_epi8(
        _mm_shuffle_epi32(_mm_packs_epi16(made.two, made.three), _MM_SHUFFLE(3, 1, 2, 0))));
}

template <bool exact>
TARVCORE_SSSE3_INLINE unsigned put(const Sequences& made, unsigned limit, char* destination) {
    const unsigned index = lengths(made);
    const unsigned written = put_lanes<exact>(_mm_unpacklo_epi16(made.lead_and_middle, made.last),
                                              index & 0xFF, limit, destination);
    return written + put_lanes<exact>(_mm_unpackhi_epi16(made.lead_and_middle, made.last),
                                      index >> 8, limit - written, destination + written);
}

// The last units of a source, or those for which there is hardly room.  False, and nothing written,
// where that is too little.  The zeros with which a block is filled up make a byte each.
TARVCORE_SSSE3_INLINE bool put_last(const Sequences& made, unsigned zeros, char* destination,
                                    unsigned capacity, unsigned* written) {
    const unsigned index = lengths(made);
    const unsigned length = pack_table.length[index & 0xFF] + pack_table.length[index >> 8] - zeros;
    if (length > capacity - *written) return false;
    put<true>(made, length, destination + *written);
    *written += length;
    return true;
}

// Lanes of the lower halves of code points; false where one is above U+FFFF.
TARVCORE_SSSE3_INLINE bool narrow(const std::uint32_t* source, __m128i* narrowed) {
    const __m128i first = load(source);
    const __m128i last = load(source + 4);
    const __m128i upper = _mm_srli_epi32(_mm_or_si128(first, last), 16);
    const __m128i halves = _mm_setr_epi8(0, 1, 4, 5, 8, 9, 12, 13, 0, 1, 4, 5, 8, 9, 12, 13);
    *narrowed = _mm_unpacklo_epi64(_mm_shuffle_epi8(first, halves), _mm_shuffle_epi8(last, halves));
    return _mm_movemask_epi8(_mm_cmpeq_epi8(upper, _mm_setzero_si128())) == 0xFFFF;
}

// Whether there may be units that are no characters of their own.
TARVCORE_SSSE3_INLINE bool suspicious(__m128i current) {
    const __m128i above = _mm_subs_epu16(current, units(0xD7FF));
    return _mm_movemask_epi8(_mm_cmpeq_epi16(above, _mm_setzero_si128())) != 0xFFFF;
}

TARVCORE_SSSE3_INLINE bool all_ascii(__m128i current) {
    return _mm_movemask_epi8(have(current, 0xFF80, 0)) == 0xFFFF;
}

}  // namespace

TARVCORE_SSSE3 BlockProgress convert_utf16_blocks_to_utf8(const Utf16Unit* source, unsigned length,
                                                          char* destination, unsigned capacity) {
    unsigned read = 0;
    unsigned written = 0;
    __m128i previous = _mm_setzero_si128();
    // Whether the last unit read is a high surrogate.
    bool pending = false;
    while (length - read >= block && capacity - written >= room_for_block) {
        __m128i current = load(source + read);
        if (!suspicious(current)) {
            if (pending) break;
            if (all_ascii(current)) {
                _mm_storel_epi64(reinterpret_cast<__m128i*>(destination + written),
                                 _mm_packus_epi16(current, current));
                read += block;
                written += block;
                // A run of it.
                while (length - read >= 4 * block && capacity - written >= 4 * block) {
                    const __m128i next[] = {load(source + read), load(source + read + block),
                                            load(source + read + 2 * block),
                                            load(source + read + 3 * block)};
                    if (!all_ascii(_mm_or_si128(_mm_or_si128(next[0], next[1]),
                                                _mm_or_si128(next[2], next[3])))) {
                        break;
                    }
                    store(destination + written, _mm_packus_epi16(next[0], next[1]));
                    store(destination + written + 2 * block, _mm_packus_epi16(next[2], next[3]));
                    read += 4 * block;
                    written += 4 * block;
                }
                previous = _mm_setzero_si128();
                continue;
            }
            written += put<false>(sequences(current), 0, destination + written);
        } else {
            const Pairs pairs = {current, _mm_alignr_epi8(current, previous, 14)};
            if (any(_mm_or_si128(forbidden(current), unpaired(pairs)))) break;
            written += put<false>(sequences_with_surrogates(pairs), 0, destination + written);
            pending = (source[read + block - 1] & 0xFC00) == 0xD800;
        }
        read += block;
        previous = current;
    }

    while (read < length) {
        const unsigned taken = std::min(length - read, block);
        const __m128i current = load_part(source + read, 2 * taken);
        const Pairs pairs = {current, _mm_alignr_epi8(current, previous, 14)};
        if (any(_mm_or_si128(forbidden(current), unpaired(pairs)))) break;
        if (!put_last(sequences_with_surrogates(pairs), block - taken, destination, capacity,
                      &written)) {
            break;
        }
        read += taken;
        previous = current;
    }
    // A high surrogate at the end has not met its low one.
    if (read != 0 && (source[read - 1] & 0xFC00) == 0xD800) return {read - 1, written - 2};
    return {read, written};
}

TARVCORE_SSSE3 BlockProgress convert_ucs4_blocks_to_utf8(const std::uint32_t* source,
                                                         unsigned length, char* destination,
                                                         unsigned capacity) {
    unsigned read = 0;
    unsigned written = 0;
    while (length - read >= block) {
        __m128i current;
        if (!narrow(source + read, &current)) break;
        const bool has_room = capacity - written >= room_for_block;
        if (suspicious(current) && any(_mm_or_si128(forbidden(current), surrogates(current)))) {
            break;
        }
        if (has_room) {
            written += put<false>(sequences(current), 0, destination + written);
        } else if (!put_last(sequences(current), 0, destination, capacity, &written)) {
            break;
        }
        read += block;
    }
    return {read, written};
}

TARVCORE_SSSE3 BlockProgress count_utf16_blocks_as_utf8(const Utf16Unit* source, unsigned length,
                                                        unsigned capacity) {
    unsigned read = 0;
    unsigned written = 0;
    __m128i previous = _mm_setzero_si128();
    while (length - read >= block && capacity - written >= room_for_block) {
        const __m128i current = load(source + read);
        const Pairs pairs = {current, _mm_alignr_epi8(current, previous, 14)};
        if (any(_mm_or_si128(forbidden(current), unpaired(pairs)))) break;
        // Every mask is -1 in its lane: three bytes, less one where a surrogate or a short lead is,
        // less another one for ASCII.
        const __m128i fewer = _mm_add_epi16(
            _mm_or_si128(surrogates(current), have(current, 0xF800, 0)), have(current, 0xFF80, 0));
        const __m128i sums = _mm_sad_epu8(
            _mm_sub_epi8(_mm_setzero_si128(), _mm_packs_epi16(fewer, fewer)), _mm_setzero_si128());
        written += 3 * block - static_cast<unsigned>(_mm_cvtsi128_si32(sums));
        read += block;
        previous = current;
    }
    if (read != 0 && (source[read - 1] & 0xFC00) == 0xD800) return {read - 1, written - 2};
    return {read, written};
}

}  // namespace tarvcore::impl
