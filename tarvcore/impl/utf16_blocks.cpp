#include <algorithm>
#include <utility>

#include "tarvcore/impl/unicode_blocks.h"
#include "tarvcore/impl/unicode_codec.h"
#include "tarvcore/impl/vector_util.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/impl/utf16_blocks.cpp#1 $");

// How eight units are converted: every unit makes up to three bytes in a lane of four, a surrogate
// two of its pair's four, and a shuffle moves the bytes together.  Where no unit makes more than
// two, lanes of two do.  No other branch depends on how many bytes there are.

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

// The same for eight lanes of two bytes, of which characters of one byte have the first.  The index
// has a bit for each of these.
consteval PackTable make_short_table() {
    PackTable table{};
    for (unsigned index = 0; index < 256; ++index) {
        unsigned length = 0;
        for (unsigned lane = 0; lane < 8; ++lane) {
            table.shuffle[index][length++] = static_cast<std::uint8_t>(2 * lane);
            if ((index >> lane & 1) != 0) continue;
            table.shuffle[index][length++] = static_cast<std::uint8_t>(2 * lane + 1);
        }
        table.length[index] = static_cast<std::uint8_t>(length);
    }
    return table;
}

alignas(16) constexpr PackTable short_table = make_short_table();

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

// The first two bytes of three, with what UTF-8 adds to them, and the last one.
TARVCORE_SSSE3_INLINE __m128i lead_and_middle(__m128i value, __m128i marks) {
    return _mm_or_si128(
        _mm_or_si128(bits(_mm_slli_epi16(value, 2), 0x3F00), _mm_srli_epi16(value, 12)), marks);
}
TARVCORE_SSSE3_INLINE __m128i continuation(__m128i value) {
    return _mm_or_si128(bits(value, 0x3F), units(0x80));
}

// `value` has the units' bits for their sequences, `short_lead` masks those of at most two bytes,
// and `marks` are what UTF-8 adds to lead and middle bytes.
TARVCORE_SSSE3_INLINE Sequences sequences(__m128i current, __m128i value, __m128i short_lead,
                                          __m128i marks) {
    const __m128i one = have(current, 0xFF80, 0);
    const __m128i ones = units(0xFFFF);
    return {lead_and_middle(value, marks), select(one, current, continuation(value)),
            _mm_xor_si128(one, ones), _mm_xor_si128(short_lead, ones)};
}

TARVCORE_SSSE3_INLINE Sequences sequences(__m128i current) {
    const __m128i short_lead = have(current, 0xF800, 0);
    return sequences(current, current, short_lead,
                     select(short_lead, units(0xC000), units(0x80E0)));
}

// The same where some are surrogates.  The high one makes the first two bytes of the four, the low
// one the others.
TARVCORE_SSSE3_INLINE Sequences sequences_with_surrogates(const Pairs& pairs) {
    const __m128i high = have(pairs.current, 0xFC00, 0xD800);
    const __m128i low = have(pairs.current, 0xFC00, 0xDC00);
    // Ten bits of the pair's twenty, and U+10000 added.  The last two go to the low one.
    const __m128i ten = bits(pairs.current, 0x03FF);
    const __m128i of_high = _mm_srli_epi16(_mm_add_epi16(ten, units(0x40)), 2);
    const __m128i of_low = _mm_or_si128(bits(_mm_slli_epi16(pairs.before, 10), 0x0C00), ten);
    const __m128i value = select(high, of_high, select(low, of_low, pairs.current));
    const __m128i short_lead =
        _mm_or_si128(_mm_or_si128(high, low), have(pairs.current, 0xF800, 0));
    // 0xF0 in place of 0xC0 for the high one, and 0x80 for the low one.
    const __m128i marks = _mm_xor_si128(select(short_lead, units(0xC000), units(0x80E0)),
                                        _mm_or_si128(bits(high, 0x3000), bits(low, 0x4000)));
    return sequences(pairs.current, value, short_lead, marks);
}

// Writes lanes, moved together, as far as there is room, and answers how long they are.  More is
// written where there is room for a whole vector.
TARVCORE_SSSE3_INLINE unsigned store_packed(__m128i lanes, const PackTable& table, unsigned index,
                                            char* destination, unsigned room) {
    const __m128i packed = _mm_shuffle_epi8(lanes, load(table.shuffle[index]));
    if (room >= 16) {
        store(destination, packed);
        return table.length[index];
    }
    const unsigned length = std::min<unsigned>(table.length[index], room);
    store_part(destination, packed, length);
    return length;
}

// What eight units can touch: what the first four make, and a whole vector.
constexpr unsigned ample_room = 4 * 3 + 16;

// Where sequences go.  The functions that put them there answer their length; or 0, with nothing
// written, where that is more than there is room for, which is looked at only if the room may be
// less than ample.  The last units of a block may be zeros that fill it up: they are not wanted.
template <bool is_ample>
struct Room {
    char* begin;
    unsigned size = ample_room;
    unsigned zeros = 0;

    TARVCORE_SSSE3_INLINE bool lacks(unsigned length) const { return !is_ample && length > size; }
    TARVCORE_SSSE3_INLINE unsigned behind(unsigned length) const {
        return is_ample ? ample_room : size - length;
    }
};

// Puts eight units' sequences.
template <bool is_ample>
TARVCORE_SSSE3_INLINE unsigned put_sequences(const Sequences& made, const Room<is_ample>& room) {
    // For the first four units a bit each where they make two bytes, and again where they make
    // three; then the same for the last four.
    const auto index = static_cast<unsigned>(_mm_movemask_epi8(
        _mm_shuffle_epi32(_mm_packs_epi16(made.two, made.three), _MM_SHUFFLE(3, 1, 2, 0))));
    const unsigned length =
        pack_table.length[index & 0xFF] + pack_table.length[index >> 8] - room.zeros;
    if (room.lacks(length)) return 0;
    const unsigned first = store_packed(_mm_unpacklo_epi16(made.lead_and_middle, made.last),
                                        pack_table, index & 0xFF, room.begin, room.behind(0));
    store_packed(_mm_unpackhi_epi16(made.lead_and_middle, made.last), pack_table, index >> 8,
                 room.begin + first, room.behind(first));
    return length;
}

// The same for units that make up to two bytes.
template <bool is_ample>
TARVCORE_SSSE3_INLINE unsigned put_short(__m128i current, const Room<is_ample>& room) {
    const __m128i one = have(current, 0xFF80, 0);
    const __m128i two = _mm_or_si128(
        _mm_or_si128(_mm_srli_epi16(current, 6), _mm_slli_epi16(bits(current, 0x3F), 8)),
        units(0x80C0));
    const auto index =
        static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(one, _mm_setzero_si128())));
    const unsigned length = short_table.length[index] - room.zeros;
    if (room.lacks(length)) return 0;
    store_packed(select(one, current, two), short_table, index, room.begin, room.behind(0));
    return length;
}

TARVCORE_SSSE3_INLINE bool all_below(unsigned limit, __m128i current) {
    return _mm_movemask_epi8(have(current, ~(limit - 1), 0)) == 0xFFFF;
}

// The same for units that make three bytes each; there is ample room.
TARVCORE_SSSE3_INLINE unsigned put_long(__m128i current, char* destination) {
    const __m128i first_two = lead_and_middle(current, units(0x80E0));
    const __m128i last = continuation(current);
    const __m128i three = _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
    store(destination, _mm_shuffle_epi8(_mm_unpacklo_epi16(first_two, last), three));
    store(destination + 12, _mm_shuffle_epi8(_mm_unpackhi_epi16(first_two, last), three));
    return 24;
}

// The same for any units that are no surrogates.
template <bool is_ample>
TARVCORE_SSSE3_INLINE unsigned put_plain(__m128i current, const Room<is_ample>& room) {
    // Where there is ample room, most short ones have been taken by sixteen.
    if (is_ample && !any(have(current, 0xF800, 0))) return put_long(current, room.begin);
    if (!is_ample && all_below(0x800, current)) return put_short(current, room);
    return put_sequences(sequences(current), room);
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

// The same for sixteen; false where one is above U+07FF.
TARVCORE_SSSE3_INLINE bool narrow_short_ones(const std::uint32_t* source, __m128i* first,
                                             __m128i* last) {
    const __m128i a = load(source);
    const __m128i b = load(source + 4);
    const __m128i c = load(source + 8);
    const __m128i d = load(source + 12);
    const __m128i all = _mm_or_si128(_mm_or_si128(a, b), _mm_or_si128(c, d));
    *first = _mm_packs_epi32(a, b);
    *last = _mm_packs_epi32(c, d);
    return _mm_movemask_epi8(_mm_cmpeq_epi32(_mm_srli_epi32(all, 11), _mm_setzero_si128())) ==
           0xFFFF;
}

// Whether any of sixteen units is at least `limit`.
TARVCORE_SSSE3_INLINE bool reaches(unsigned limit, __m128i first, __m128i last) {
    const __m128i below = units(limit - 1);
    const __m128i above = _mm_or_si128(_mm_subs_epu16(first, below), _mm_subs_epu16(last, below));
    return _mm_movemask_epi8(_mm_cmpeq_epi16(above, _mm_setzero_si128())) != 0xFFFF;
}

// Whether there may be units that are no characters of their own.
TARVCORE_SSSE3_INLINE bool suspicious(__m128i first, __m128i last) {
    return reaches(0xD800, first, last);
}
TARVCORE_SSSE3_INLINE bool suspicious(__m128i current) {
    return suspicious(current, current);
}

// Puts four code points in 32-bit lanes; 0, too, where one is not to be had.
template <bool is_ample>
TARVCORE_SSSE3_INLINE unsigned put_wide(const std::uint32_t* source, const Room<is_ample>& room) {
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
    if (room.lacks(pack_table.length[index])) return 0;
    return store_packed(lanes, pack_table, index, room.begin, room.behind(0));
}

// Puts the first code points: eight, or four if one of these is above U+FFFF; none where one is not
// to be had or they lack room.
template <bool is_ample>
TARVCORE_SSSE3_INLINE BlockProgress put_code_points(const std::uint32_t* source,
                                                    const Room<is_ample>& room) {
    __m128i narrowed;
    if (!narrow(source, &narrowed)) {
        const unsigned made = put_wide(source, room);
        return {made != 0 ? block / 2 : 0, made};
    }
    if (suspicious(narrowed) && any(_mm_or_si128(forbidden(narrowed), surrogates(narrowed)))) {
        return {0, 0};
    }
    const unsigned made = put_plain(narrowed, room);
    return {made != 0 ? block : 0, made};
}

// Puts sixteen units below U+0800; there is room for two vectors.
TARVCORE_SSSE3_INLINE unsigned put_short_ones(__m128i first, __m128i last, char* destination) {
    // Eight of ASCII alone are not worth a branch that would often go wrong.
    if (all_below(0x80, _mm_or_si128(first, last))) {
        store(destination, _mm_packus_epi16(first, last));
        return 16;
    }
    const unsigned length = put_short(first, Room<true>{destination});
    return length + put_short(last, Room<true>{destination + length});
}

// A text of UTF-16 whose blocks are converted one after the other.
class Utf16Text {
public:
    // Puts eight units; 0, too, where one is not to be had.
    template <bool is_ample>
    TARVCORE_SSSE3_INLINE unsigned put(__m128i current, const Room<is_ample>& room) {
        const __m128i before = std::exchange(before_, current);
        if (!is_pending_ && !suspicious(current)) {
            return put_plain(current, room);
        }
        const Pairs pairs = {current, _mm_alignr_epi8(current, before, 14)};
        if (any(_mm_or_si128(forbidden(current), unpaired(pairs)))) return 0;
        is_pending_ = is_high_surrogate(static_cast<unsigned>(_mm_extract_epi16(current, 7)));
        return put_sequences(sequences_with_surrogates(pairs), room);
    }

    // Puts sixteen units that make up to two bytes; 0 where others are among them.
    TARVCORE_SSSE3_INLINE unsigned put_short_ones(__m128i current, __m128i next,
                                                  char* destination) {
        if (!all_below(0x800, _mm_or_si128(current, next)) || is_pending_) return 0;
        before_ = next;
        return tarvcore::impl::put_short_ones(current, next, destination);
    }

private:
    __m128i before_ = _mm_setzero_si128();
    bool is_pending_ = false;  // the last unit is a high surrogate
};

// How many bytes a text takes beyond one for each unit.
class Utf16Count {
public:
    // Sixteen units; false where one is not to be had.
    TARVCORE_SSSE3_INLINE bool add(__m128i first, __m128i last) {
        if (pending_ != 0 || suspicious(first, last)) [[unlikely]] {
            if (reaches(0xFEFF, first, last) &&
                any(_mm_or_si128(forbidden(first), forbidden(last)))) {
                return false;
            }
            const Halves of_first = halves(first);
            const Halves of_last = halves(last);
            const unsigned high = bit_for_each(of_first.high, of_last.high);
            const unsigned low = bit_for_each(of_first.low, of_last.low);
            if (low != ((high << 1 | pending_) & 0xFFFF)) return false;
            pending_ = high >> 15;
            fewer_ = _mm_sub_epi16(fewer_, _mm_add_epi16(of_first.any(), of_last.any()));
        }
        fewer_ = _mm_add_epi16(fewer_, _mm_add_epi16(more_bytes(first), more_bytes(last)));
        return true;
    }

    TARVCORE_SSSE3_INLINE unsigned more_than_units() const {
        const __m128i halves = _mm_madd_epi16(fewer_, units(0xFFFF));
        const __m128i pairs = _mm_add_epi32(halves, _mm_srli_si128(halves, 8));
        const __m128i sum = _mm_add_epi32(pairs, _mm_srli_si128(pairs, 4));
        return static_cast<unsigned>(_mm_cvtsi128_si32(sum));
    }

private:
    // Masks of the surrogates.
    struct Halves {
        TARVCORE_SSSE3_INLINE __m128i any() const { return _mm_add_epi16(high, low); }

        __m128i high;
        __m128i low;
    };
    TARVCORE_SSSE3_INLINE static Halves halves(__m128i current) {
        const __m128i tens = _mm_srli_epi16(current, 10);
        return {_mm_cmpeq_epi16(tens, units(0xD800 >> 10)),
                _mm_cmpeq_epi16(tens, units(0xDC00 >> 10))};
    }
    TARVCORE_SSSE3_INLINE static unsigned bit_for_each(__m128i first, __m128i last) {
        return static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(first, last)));
    }

    // Masks: -1 for a unit from U+0080 on, and from U+0800 on once more.
    TARVCORE_SSSE3_INLINE static __m128i more_bytes(__m128i current) {
        const __m128i sevens = _mm_srli_epi16(current, 7);
        return _mm_add_epi16(_mm_cmpgt_epi16(sevens, units(0)),
                             _mm_cmpgt_epi16(sevens, units(0x07FF >> 7)));
    }

    __m128i fewer_ = _mm_setzero_si128();
    unsigned pending_ = 0;  // 1 where the last unit is a high surrogate
};

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
    Utf16Text text;
    // Sixteen short units can touch two vectors.
    while (length - read >= 2 * block && capacity - written >= 2 * 16) {
        const __m128i current = load(source + read);
        const __m128i next = load(source + read + block);
        if (const unsigned made = text.put_short_ones(current, next, destination + written)) {
            read += 2 * block;
            written += made;
            continue;
        }
        const unsigned made = text.put(current, Room<true>{destination + written});
        if (made == 0) return whole_characters(source, read, written);
        read += block;
        written += made;
    }
    while (read < length) {
        const unsigned taken = std::min(length - read, block);
        // The last block is filled up with zeros.
        const Room<false> room = {destination + written, capacity - written, block - taken};
        const unsigned made = text.put(load_part(source + read, 2 * taken), room);
        if (made == 0) break;
        read += taken;
        written += made;
    }
    return whole_characters(source, read, written);
}

TARVCORE_SSSE3 BlockProgress convert_ucs4_blocks_to_utf8(const std::uint32_t* source,
                                                         unsigned length, char* destination,
                                                         unsigned capacity) {
    // Where there are others than short ones, so many are not tried as such.
    constexpr unsigned stretch = 8 * block;
    unsigned read = 0;
    unsigned written = 0;
    while (length - read >= block) {
        __m128i first;
        __m128i last;
        while (length - read >= 2 * block && capacity - written >= 2 * 16 &&
               narrow_short_ones(source + read, &first, &last)) {
            written += put_short_ones(first, last, destination + written);
            read += 2 * block;
        }
        const unsigned end = std::min(length, read + stretch);
        while (end - read >= block) {
            char* const begin = destination + written;
            const unsigned room = capacity - written;
            const BlockProgress put =
                room >= ample_room ? put_code_points(source + read, Room<true>{begin})
                                   : put_code_points(source + read, Room<false>{begin, room});
            if (put.read == 0) return {read, written};
            read += put.read;
            written += put.written;
        }
    }
    return {read, written};
}

TARVCORE_SSSE3 BlockProgress count_utf16_blocks_as_utf8(const Utf16Unit* source, unsigned length,
                                                        unsigned capacity) {
    // No unit makes more than three bytes, and no lane counts further than this.
    constexpr unsigned step = 2 * block;
    constexpr unsigned most_steps = 0x7FFF / 4;
    const unsigned end = std::min({length, capacity / 3, most_steps * step});
    unsigned read = 0;
    Utf16Count count;
    while (end - read >= step) {
        if (!count.add(load(source + read), load(source + read + block))) break;
        read += step;
    }
    if (const unsigned rest = end - read; rest != 0 && rest < step) {
        // The last step is filled up with zeros.
        const unsigned in_first = std::min(rest, block);
        const __m128i first = load_part(source + read, 2 * in_first);
        const __m128i last = load_part(source + read + in_first, 2 * (rest - in_first));
        if (count.add(first, last)) read = end;
    }
    return whole_characters(source, read, read + count.more_than_units());
}

}  // namespace tarvcore::impl
