#include <algorithm>

#include "tarvcore/impl/ssse3_util.h"
#include "tarvcore/impl/unicode_blocks.h"
#include "tarvcore/impl/unicode_codec.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/impl/utf16_blocks.cpp#1 $");

// How eight units are converted: every unit makes up to three bytes in a lane of four, a surrogate
// two of its pair's four, and a shuffle moves the bytes together.  No branch depends on how many
// bytes there are.

namespace tarvcore::impl {
namespace {

constexpr unsigned block = utf16_block_length;

// Shuffles that move the bytes of four lanes together.  A lane is the lead, middle and last byte of
// three; a shorter character has the last two of them, or the last.  One of four has its lead
// behind these.  The index has a bit for each unit that takes two or three bytes and, above these,
// one for each that takes three or four.
struct PackTable {
    std::uint8_t shuffle[256][16];
    std::uint8_t length[256];
};

consteval PackTable make_pack_table() {
    PackTable table{};
    for (unsigned index = 0; index < 256; ++index) {
        unsigned length = 0;
        for (unsigned lane = 0; lane < 4; ++lane) {
            const bool two = (index >> lane & 1) != 0;
            const bool three = (index >> (lane + 4) & 1) != 0;
            const bool four = three && !two;
            if (four) table.shuffle[index][length++] = static_cast<std::uint8_t>(4 * lane + 3);
            for (unsigned i = three ? 0 : two ? 1 : 2; i < 3; ++i)
                table.shuffle[index][length++] = static_cast<std::uint8_t>(4 * lane + i);
        }
        table.length[index] = static_cast<std::uint8_t>(length);
    }
    return table;
}

alignas(16) constexpr PackTable pack_table = make_pack_table();

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

// Writes four units' sequences, moved together, as far as there is room, and answers how long they
// are.  More is written where there is room for a whole vector.
TARVCORE_SSSE3_INLINE unsigned store_packed(__m128i lanes, unsigned index, char* destination,
                                            unsigned room) {
    const __m128i packed = _mm_shuffle_epi8(lanes, load(pack_table.shuffle[index]));
    if (room >= 16) {
        store(destination, packed);
        return pack_table.length[index];
    }
    const unsigned length = std::min<unsigned>(pack_table.length[index], room);
    store_part(destination, packed, length);
    return length;
}

// For the first four units a bit each where they make two bytes, and again where they make three;
// then the same for the last four.
TARVCORE_SSSE3_INLINE unsigned pack_indices(const Sequences& made) {
    return static_cast<unsigned>(_mm_movemask_epi8(
        _mm_shuffle_epi32(_mm_packs_epi16(made.two, made.three), _MM_SHUFFLE(3, 1, 2, 0))));
}

// What eight units can touch: what the first four make, and a whole vector.
constexpr unsigned ample_room = 4 * 3 + 16;

// Writes eight units' sequences where there is ample room, and answers their length.
TARVCORE_SSSE3_INLINE unsigned put(const Sequences& made, char* destination) {
    const unsigned index = pack_indices(made);
    const unsigned first = store_packed(_mm_unpacklo_epi16(made.lead_and_middle, made.last),
                                        index & 0xFF, destination, ample_room);
    return first + store_packed(_mm_unpackhi_epi16(made.lead_and_middle, made.last), index >> 8,
                                destination + first, ample_room);
}

// The same where there may be less; 0, and nothing written, where it is too little.  The last units
// may be zeros that fill up the block: they are not wanted.
TARVCORE_SSSE3_INLINE unsigned put_last(const Sequences& made, unsigned zeros, char* destination,
                                        unsigned room) {
    const unsigned index = pack_indices(made);
    const unsigned length = pack_table.length[index & 0xFF] + pack_table.length[index >> 8] - zeros;
    if (length > room) return 0;
    const unsigned first = store_packed(_mm_unpacklo_epi16(made.lead_and_middle, made.last),
                                        index & 0xFF, destination, room);
    store_packed(_mm_unpackhi_epi16(made.lead_and_middle, made.last), index >> 8,
                 destination + first, room - first);
    return length;
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

// Four code points in 32-bit lanes; 0, and nothing written, where there is no room for them or one
// is not to be had.
TARVCORE_SSSE3_INLINE unsigned put_wide(const std::uint32_t* source, char* destination,
                                        unsigned room) {
    const __m128i c = load(source);
    const __m128i bad = _mm_or_si128(
        _mm_or_si128(_mm_cmpeq_epi32(_mm_srli_epi32(c, 11), _mm_set1_epi32(0xD800 >> 11)),
                     _mm_cmpeq_epi32(_mm_srli_epi32(c, 1), _mm_set1_epi32(0xFFFE >> 1))),
        _mm_or_si128(_mm_cmpeq_epi32(c, _mm_set1_epi32(0xFEFF)),
                     _mm_cmpgt_epi32(_mm_srli_epi32(c, 21), _mm_setzero_si128())));
    if (any(bad)) return 0;

    const __m128i continuation = _mm_set1_epi32(0x80);
    const __m128i six_bits = _mm_set1_epi32(0x3F);
    const __m128i one = _mm_cmplt_epi32(c, _mm_set1_epi32(0x80));
    const __m128i short_lead = _mm_cmplt_epi32(c, _mm_set1_epi32(0x800));
    const __m128i four = _mm_cmpgt_epi32(c, _mm_set1_epi32(0xFFFF));
    const __m128i last = select(one, c, _mm_or_si128(continuation, _mm_and_si128(c, six_bits)));
    const __m128i middle = _mm_or_si128(_mm_and_si128(_mm_srli_epi32(c, 6), six_bits),
                                        select(short_lead, _mm_set1_epi32(0xC0), continuation));
    const __m128i lead = _mm_or_si128(_mm_and_si128(_mm_srli_epi32(c, 12), six_bits),
                                      select(four, continuation, _mm_set1_epi32(0xE0)));
    const __m128i lead_of_four = _mm_or_si128(_mm_srli_epi32(c, 18), _mm_set1_epi32(0xF0));
    const __m128i lanes =
        _mm_or_si128(_mm_or_si128(lead, _mm_slli_epi32(middle, 8)),
                     _mm_or_si128(_mm_slli_epi32(last, 16), _mm_slli_epi32(lead_of_four, 24)));

    const __m128i neither = _mm_or_si128(one, four);
    const auto index =
        static_cast<unsigned>((_mm_movemask_ps(_mm_castsi128_ps(neither)) ^ 0xF) |
                              (_mm_movemask_ps(_mm_castsi128_ps(short_lead)) ^ 0xF) << 4);
    const unsigned length = pack_table.length[index];
    if (length > room) return 0;
    return store_packed(lanes, index, destination, room);
}

// What has been taken, less a high surrogate at the end, which has not met its low one.
TARVCORE_SSSE3_INLINE BlockProgress whole_characters(const Utf16Unit* source, unsigned read,
                                                     unsigned written) {
    if (read != 0 && is_high_surrogate(source[read - 1])) return {read - 1, written - 2};
    return {read, written};
}

}  // namespace

TARVCORE_SSSE3 BlockProgress convert_utf16_blocks_to_utf8(const Utf16Unit* source, unsigned length,
                                                          char* destination, unsigned capacity) {
    unsigned read = 0;
    unsigned written = 0;
    __m128i previous = _mm_setzero_si128();
    // Whether the last unit read is a high surrogate.
    bool pending = false;
    while (length - read >= 2 * block && capacity - written >= ample_room) {
        const __m128i current = load(source + read);
        if (!pending && !suspicious(current)) {
            const __m128i next = load(source + read + block);
            // A single block of ASCII is not worth a branch that would often go wrong.
            if (all_ascii(_mm_or_si128(current, next))) {
                store(destination + written, _mm_packus_epi16(current, next));
                read += 2 * block;
                written += 2 * block;
                previous = next;
                continue;
            }
            written += put(sequences(current), destination + written);
        } else {
            const Pairs pairs = {current, _mm_alignr_epi8(current, previous, 14)};
            if (any(_mm_or_si128(forbidden(current), unpaired(pairs)))) break;
            written += put(sequences_with_surrogates(pairs), destination + written);
            pending = is_high_surrogate(source[read + block - 1]);
        }
        read += block;
        previous = current;
    }
    while (read < length) {
        const unsigned taken = std::min(length - read, block);
        // The last block is filled up with zeros.
        const __m128i current = load_part(source + read, 2 * taken);
        const Pairs pairs = {current, _mm_alignr_epi8(current, previous, 14)};
        if (any(_mm_or_si128(forbidden(current), unpaired(pairs)))) break;
        const unsigned made = put_last(sequences_with_surrogates(pairs), block - taken,
                                       destination + written, capacity - written);
        if (made == 0) break;
        written += made;
        read += taken;
        previous = current;
    }
    return whole_characters(source, read, written);
}

TARVCORE_SSSE3 BlockProgress convert_ucs4_blocks_to_utf8(const std::uint32_t* source,
                                                         unsigned length, char* destination,
                                                         unsigned capacity) {
    unsigned read = 0;
    unsigned written = 0;
    while (length - read >= block) {
        const unsigned room = capacity - written;
        __m128i current;
        if (narrow(source + read, &current)) {
            if (suspicious(current) && any(_mm_or_si128(forbidden(current), surrogates(current)))) {
                break;
            }
            const unsigned made =
                room >= ample_room ? put(sequences(current), destination + written)
                                   : put_last(sequences(current), 0, destination + written, room);
            if (made == 0) break;
            written += made;
            read += block;
        } else {
            const unsigned made = put_wide(source + read, destination + written, room);
            if (made == 0) break;
            written += made;
            read += block / 2;
        }
    }
    return {read, written};
}

TARVCORE_SSSE3 BlockProgress count_utf16_blocks_as_utf8(const Utf16Unit* source, unsigned length,
                                                        unsigned capacity) {
    unsigned read = 0;
    unsigned written = 0;
    __m128i previous = _mm_setzero_si128();
    while (length - read >= block && capacity - written >= 3 * block) {
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
    return whole_characters(source, read, written);
}

}  // namespace tarvcore::impl
