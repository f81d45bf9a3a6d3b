#include <algorithm>
#include <utility>

#include "tarvcore/impl/unicode_blocks.h"
#include "tarvcore/impl/utf8_fault_tables.h"
#include "tarvcore/impl/vector_util.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/impl/utf8_blocks.cpp#1 $");

// How a block of 16 bytes is converted: every byte is treated as if it were the last one of its
// character, which it makes up together with the three bytes in front of it.  Bytes that are not
// the last ones are dropped by a shuffle at the end.  No branch depends on where characters begin.
// ASCII alone, and characters of up to two bytes, go a shorter way.

namespace tarvcore::impl {
namespace {

constexpr unsigned block = utf8_block_length;

// Shuffles that move the lanes together whose bit is not set in an index, and how many they are.
template <unsigned lanes, unsigned lane_size>
struct DropTable {
    std::uint8_t shuffle[1 << lanes][16];
    std::uint8_t kept[1 << lanes];
};

template <unsigned lanes, unsigned lane_size>
consteval DropTable<lanes, lane_size> make_drop_table() {
    DropTable<lanes, lane_size> table{};
    for (unsigned dropped = 0; dropped < 1 << lanes; ++dropped) {
        std::uint8_t* next = table.shuffle[dropped];
        for (unsigned lane = 0; lane < lanes; ++lane) {
            if ((dropped >> lane & 1) != 0) continue;
            for (unsigned i = 0; i < lane_size; ++i)
                *next++ = static_cast<std::uint8_t>(lane * lane_size + i);
            ++table.kept[dropped];
        }
    }
    return table;
}

alignas(16) constexpr auto drop_of_8 = make_drop_table<8, 2>();
alignas(16) constexpr auto drop_of_4 = make_drop_table<4, 4>();

TARVCORE_SSSE3_INLINE __m128i bytes(int value) {
    return _mm_set1_epi8(static_cast<char>(value));
}

// A bit for the top bit of each byte.
TARVCORE_SSSE3_INLINE unsigned mask_bits(__m128i value) {
    return static_cast<unsigned>(_mm_movemask_epi8(value));
}

TARVCORE_SSSE3_INLINE bool any(__m128i value) {
    return mask_bits(_mm_cmpeq_epi8(value, _mm_setzero_si128())) != 0xFFFF;
}

// Masks of the bytes that are at least `limit`, unsigned.
TARVCORE_SSSE3_INLINE __m128i at_least(__m128i value, int limit) {
    return _mm_cmpeq_epi8(_mm_max_epu8(value, bytes(limit)), value);
}

// Whether any byte is; the limit is above 0x80.
TARVCORE_SSSE3_INLINE bool has_any(__m128i value, int limit) {
    return mask_bits(_mm_subs_epu8(value, bytes(limit - 0x80))) != 0;
}

TARVCORE_SSSE3_INLINE __m128i is_continuation(__m128i value) {
    return _mm_cmplt_epi8(value, bytes(0xC0));
}

// Shifts within bytes, as long as the bits that come from the neighbour are masked out.
template <int count>
TARVCORE_SSSE3_INLINE __m128i left(__m128i value, int mask) {
    return _mm_and_si128(_mm_slli_epi16(value, count), bytes(mask));
}
template <int count>
TARVCORE_SSSE3_INLINE __m128i right(__m128i value, int mask) {
    return _mm_and_si128(_mm_srli_epi16(value, count), bytes(mask));
}

// Writes the lanes that are not dropped, as far as there is room, and answers how many those are.
// More are written where there is room for a whole vector; ample room has that always.
template <bool is_ample, unsigned lanes, unsigned lane_size>
TARVCORE_SSSE3_INLINE unsigned store_kept(__m128i value, const DropTable<lanes, lane_size>& table,
                                          unsigned drop, void* destination, unsigned room) {
    const __m128i kept = _mm_shuffle_epi8(value, load(table.shuffle[drop]));
    if (is_ample || room >= lanes) {
        store(destination, kept);
        return table.kept[drop];
    }
    const unsigned count = std::min<unsigned>(table.kept[drop], room);
    store_part(destination, kept, count * lane_size);
    return count;
}

// The bytes of a block and, for each of them, the one to three bytes in front of it.
struct Neighbours {
    __m128i current;
    __m128i before_1;
    __m128i before_2;
    __m128i before_3;
};

TARVCORE_SSSE3_INLINE Neighbours neighbours(__m128i current, __m128i previous) {
    return {current, _mm_alignr_epi8(current, previous, 15), _mm_alignr_epi8(current, previous, 14),
            _mm_alignr_epi8(current, previous, 13)};
}

// Not zero where something is wrong, or might be.
TARVCORE_SSSE3_INLINE __m128i faults(const Neighbours& n) {
    const __m128i first_high =
        _mm_shuffle_epi8(load(utf8_faults::by_first_high.data()), right<4>(n.before_1, 0x0F));
    const __m128i first_low = _mm_shuffle_epi8(load(utf8_faults::by_first_low.data()),
                                               _mm_and_si128(n.before_1, bytes(0x0F)));
    const __m128i second_high =
        _mm_shuffle_epi8(load(utf8_faults::by_second_high.data()), right<4>(n.current, 0x0F));
    const __m128i pairs = _mm_and_si128(_mm_and_si128(first_high, first_low), second_high);
    // Bit 7 where the third byte of three or the third or fourth of four must be.
    const __m128i third = _mm_subs_epu8(n.before_2, bytes(0xE0 - 0x80));
    const __m128i fourth = _mm_subs_epu8(n.before_3, bytes(0xF0 - 0x80));
    const __m128i required = _mm_and_si128(_mm_or_si128(third, fourth), bytes(0x80));
    // U+FEFF, U+FFFE and U+FFFF are among EF .. BE and EF .. BF, which are rare anyway.
    const __m128i suspect = _mm_and_si128(_mm_cmpeq_epi8(n.before_2, bytes(0xEF)),
                                          _mm_cmpgt_epi8(n.current, bytes(0xBD)));
    return _mm_or_si128(_mm_xor_si128(pairs, required), suspect);
}

// Not zero where a block ends within a character.
TARVCORE_SSSE3_INLINE __m128i unfinished(__m128i block_bytes) {
    const __m128i last_allowed =
        _mm_setr_epi8(-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, static_cast<char>(0xEF),
                      static_cast<char>(0xDF), static_cast<char>(0xBF));
    return _mm_subs_epu8(block_bytes, last_allowed);
}

// The lower two bytes of the code points of up to three bytes that end at each byte, and the lower
// two of four.
struct CodePoints {
    __m128i low;
    __m128i high;
};

TARVCORE_SSSE3_INLINE CodePoints code_points(const Neighbours& n) {
    const __m128i follows = is_continuation(n.current);
    const __m128i second = _mm_and_si128(n.before_1, follows);
    const __m128i third =
        _mm_and_si128(n.before_2, _mm_and_si128(follows, is_continuation(n.before_1)));
    return {_mm_or_si128(_mm_and_si128(n.current, bytes(0x7F)), left<6>(second, 0xC0)),
            _mm_or_si128(right<2>(second, 0x0F), left<4>(third, 0xF0))};
}

TARVCORE_SSSE3_INLINE bool has_long_sequence(const Neighbours& n) {
    return has_any(_mm_max_epu8(n.current, n.before_3), 0xF0);
}

// A block that has only ASCII and characters of two bytes.
class ShortBlock {
public:
    // `high` has a bit for each byte that is not ASCII.
    TARVCORE_SSSE3_INLINE ShortBlock(__m128i current, unsigned high)
        : current_(current),
          follows_(is_continuation(current)),
          continuations_(mask_bits(follows_)),
          leads_(high ^ continuations_) {}

    // `open_leads`: those of the block in front.
    TARVCORE_SSSE3_INLINE bool has_fault(unsigned open_leads) const {
        const __m128i overlong = _mm_cmpeq_epi8(_mm_and_si128(current_, bytes(0xFE)), bytes(0xC0));
        return continuations_ != ((leads_ << 1 | open_leads) & 0xFFFF) || mask_bits(overlong) != 0;
    }
    // A bit for each lead byte.
    TARVCORE_SSSE3_INLINE unsigned leads() const { return leads_; }
    // 1 if the last byte is one.
    TARVCORE_SSSE3_INLINE unsigned open_leads() const { return leads_ >> 15; }

    // The code points that end at each byte, as words.
    struct Words {
        __m128i first;
        __m128i last;
    };
    TARVCORE_SSSE3_INLINE Words code_points(__m128i previous) const {
        const __m128i before = _mm_alignr_epi8(current_, previous, 15);
        const __m128i lead = _mm_and_si128(_mm_and_si128(before, bytes(0x1F)), follows_);
        const __m128i low = _mm_and_si128(current_, bytes(0x7F));
        const __m128i weights = _mm_set1_epi16(0x40 << 8 | 1);
        return {_mm_maddubs_epi16(_mm_unpacklo_epi8(low, lead), weights),
                _mm_maddubs_epi16(_mm_unpackhi_epi8(low, lead), weights)};
    }

private:
    __m128i current_;
    __m128i follows_;
    unsigned continuations_;
    unsigned leads_;
};

// The destinations.  `dropped` masks the bytes with which no unit ends.  `put` writes the units of
// a block with that mask into the room, of which there is enough for those that are wanted; if
// there is more, it may write beyond them.  A sequence of four bytes makes its high surrogate with
// the third byte.  `put_short` does the same for a short block.

struct ToUtf16 {
    using Unit = Utf16Unit;

    TARVCORE_SSSE3_INLINE static __m128i dropped(const Neighbours& n) {
        return _mm_or_si128(at_least(n.current, 0xC0), at_least(n.before_1, 0xE0));
    }

    template <bool is_ample>
    TARVCORE_SSSE3_INLINE static void put(const Neighbours& n, unsigned drop,
                                          Utf16Unit* destination, unsigned room) {
        auto [low, high] = code_points(n);
        __m128i bias_low = _mm_setzero_si128();
        __m128i bias_high = _mm_setzero_si128();
        if (has_long_sequence(n)) {
            const __m128i third = at_least(n.before_2, 0xF0);
            const __m128i fourth = at_least(n.before_3, 0xF0);
            // 0xD7C0 + (code point >> 10), of which the third byte has two bits.
            low = select(third, _mm_or_si128(left<2>(n.before_1, 0xFC), right<4>(n.current, 0x03)),
                         low);
            high = select(third, _mm_and_si128(n.before_2, bytes(0x07)), high);
            bias_low = _mm_and_si128(third, bytes(0xC0));
            bias_high = _mm_and_si128(third, bytes(0xD7));
            high =
                select(fourth, _mm_or_si128(_mm_and_si128(high, bytes(0x03)), bytes(0xDC)), high);
        }
        put_units<is_ample>(
            _mm_add_epi16(_mm_unpacklo_epi8(low, high), _mm_unpacklo_epi8(bias_low, bias_high)),
            _mm_add_epi16(_mm_unpackhi_epi8(low, high), _mm_unpackhi_epi8(bias_low, bias_high)),
            drop, destination, room);
    }

    template <bool is_ample>
    TARVCORE_SSSE3_INLINE static void put_short(const ShortBlock::Words& code_points, unsigned drop,
                                                Utf16Unit* destination, unsigned room) {
        put_units<is_ample>(code_points.first, code_points.last, drop, destination, room);
    }

    template <bool is_ample>
    TARVCORE_SSSE3_INLINE static void put_units(__m128i first, __m128i last, unsigned drop,
                                                Utf16Unit* destination, unsigned room) {
        const unsigned count =
            store_kept<is_ample>(first, drop_of_8, drop & 0xFF, destination, room);
        store_kept<is_ample>(last, drop_of_8, drop >> 8, destination + count, room - count);
    }

    // What has been written of a character of four bytes after three.
    static constexpr unsigned written_of_unfinished = 1;
};

struct ToUcs4 {
    using Unit = std::uint32_t;

    TARVCORE_SSSE3_INLINE static __m128i dropped(const Neighbours& n) {
        return _mm_or_si128(ToUtf16::dropped(n), at_least(n.before_2, 0xF0));
    }

    template <bool is_ample>
    TARVCORE_SSSE3_INLINE static void put(const Neighbours& n, unsigned drop,
                                          std::uint32_t* destination, unsigned room) {
        const auto [low, high] = code_points(n);
        const __m128i first = _mm_unpacklo_epi8(low, high);
        const __m128i last = _mm_unpackhi_epi8(low, high);
        if (is_ample && !has_long_sequence(n)) {
            put_narrow(first, last, drop, destination);
            return;
        }
        const __m128i top =
            _mm_and_si128(at_least(n.before_3, 0xF0),
                          _mm_or_si128(right<4>(n.before_2, 0x03), left<2>(n.before_3, 0x1C)));
        put_units<is_ample>(first, last, top, drop, destination, room);
    }

    template <bool is_ample>
    TARVCORE_SSSE3_INLINE static void put_short(const ShortBlock::Words& code_points, unsigned drop,
                                                std::uint32_t* destination, unsigned room) {
        if (is_ample) {
            put_narrow(code_points.first, code_points.last, drop, destination);
        } else {
            put_units<is_ample>(code_points.first, code_points.last, _mm_setzero_si128(), drop,
                                destination, room);
        }
    }

    // Below U+10000, with ample room: moved together as lanes of two bytes, and then made wide.
    TARVCORE_SSSE3_INLINE static void put_narrow(__m128i first, __m128i last, unsigned drop,
                                                 std::uint32_t* destination) {
        put_wide(first, drop & 0xFF, destination);
        put_wide(last, drop >> 8, destination + drop_of_8.kept[drop & 0xFF]);
    }
    TARVCORE_SSSE3_INLINE static void put_wide(__m128i units, unsigned drop,
                                               std::uint32_t* destination) {
        const __m128i kept = _mm_shuffle_epi8(units, load(drop_of_8.shuffle[drop]));
        store(destination, _mm_unpacklo_epi16(kept, _mm_setzero_si128()));
        if (drop_of_8.kept[drop] <= 4) return;
        store(destination + 4, _mm_unpackhi_epi16(kept, _mm_setzero_si128()));
    }

    template <bool is_ample>
    TARVCORE_SSSE3_INLINE static void put_units(__m128i first_low, __m128i last_low, __m128i top,
                                                unsigned drop, std::uint32_t* destination,
                                                unsigned room) {
        const __m128i zero = _mm_setzero_si128();
        const __m128i first_high = _mm_unpacklo_epi8(top, zero);
        const __m128i last_high = _mm_unpackhi_epi8(top, zero);
        unsigned count = store_kept<is_ample>(_mm_unpacklo_epi16(first_low, first_high), drop_of_4,
                                              drop & 0xF, destination, room);
        count += store_kept<is_ample>(_mm_unpackhi_epi16(first_low, first_high), drop_of_4,
                                      drop >> 4 & 0xF, destination + count, room - count);
        count += store_kept<is_ample>(_mm_unpacklo_epi16(last_low, last_high), drop_of_4,
                                      drop >> 8 & 0xF, destination + count, room - count);
        store_kept<is_ample>(_mm_unpackhi_epi16(last_low, last_high), drop_of_4, drop >> 12,
                             destination + count, room - count);
    }

    static constexpr unsigned written_of_unfinished = 0;
};

TARVCORE_SSSE3_INLINE unsigned kept_bytes(unsigned drop) {
    return drop_of_8.kept[drop & 0xFF] + drop_of_8.kept[drop >> 8];
}

// How a block ends that the next one goes on from.
struct Ending {
    __m128i bytes = _mm_setzero_si128();
    unsigned open_leads = 0;    // 1: a short block, with a lead byte
    bool is_long_open = false;  // any other, within a character
};

// Puts what a block makes and answers how many units that are; or 0, with nothing written, where it
// has a fault, or might have one, or lacks room.  The last bytes may be zeros that fill it up: they
// are not wanted.  With `counting` nothing is written at all.
template <class Destination, bool counting, bool is_ample>
TARVCORE_SSSE3_INLINE unsigned convert_block(__m128i current, unsigned zeros, Ending& ending,
                                             typename Destination::Unit* destination,
                                             unsigned room) {
    const __m128i previous = std::exchange(ending.bytes, current);
    const unsigned high = mask_bits(current);
    if (is_ample && high == 0) {
        if (ending.open_leads != 0 || ending.is_long_open) return 0;
        if constexpr (!counting) store_ascii(current, destination);
        return block;
    }
    if (!ending.is_long_open && !has_any(current, 0xE0)) {
        const ShortBlock text(current, high);
        if (text.has_fault(ending.open_leads)) return 0;
        ending.open_leads = text.open_leads();
        const unsigned made = kept_bytes(text.leads()) - zeros;
        if (!is_ample && made > room) return 0;
        if constexpr (!counting) {
            Destination::template put_short<is_ample>(text.code_points(previous), text.leads(),
                                                      destination, room);
        }
        return made;
    }
    const Neighbours n = neighbours(current, previous);
    if (any(faults(n))) return 0;
    ending.open_leads = 0;
    ending.is_long_open = any(unfinished(current));
    const unsigned drop = mask_bits(Destination::dropped(n));
    const unsigned made = kept_bytes(drop) - zeros;
    if (!is_ample && made > room) return 0;
    if constexpr (!counting) Destination::template put<is_ample>(n, drop, destination, room);
    return made;
}

// What has been taken, less a character that is not finished, which has been taken up to its last
// byte but one at most.
template <class Destination>
TARVCORE_SSSE3_INLINE BlockProgress whole_characters(const char* source, unsigned read,
                                                     unsigned written) {
    const auto* end = reinterpret_cast<const unsigned char*>(source) + read;
    if (read >= 1 && end[-1] >= 0xC0) return {read - 1, written};
    if (read >= 2 && end[-2] >= 0xE0) return {read - 2, written};
    if (read >= 3 && end[-3] >= 0xF0) {
        return {read - 3, written - Destination::written_of_unfinished};
    }
    return {read, written};
}

template <class Destination, bool counting>
TARVCORE_SSSE3_INLINE BlockProgress convert_blocks(const char* source, unsigned length,
                                                   typename Destination::Unit* destination,
                                                   unsigned capacity) {
    unsigned read = 0;
    unsigned written = 0;
    Ending ending;
    // Whole blocks with room for all that one can make, which need not look at either.
    while (length - read >= block && capacity - written >= block) {
        const unsigned made = convert_block<Destination, counting, true>(
            load(source + read), 0, ending, counting ? nullptr : destination + written, block);
        if (made == 0) return whole_characters<Destination>(source, read, written);
        read += block;
        written += made;
    }
    while (read < length) {
        const unsigned taken = std::min(length - read, block);
        // The last block is filled up with zeros, which make a unit each.
        const unsigned made = convert_block<Destination, counting, false>(
            load_part(source + read, taken), block - taken, ending,
            counting ? nullptr : destination + written, capacity - written);
        if (made == 0) break;
        read += taken;
        written += made;
    }
    return whole_characters<Destination>(source, read, written);
}

}  // namespace

TARVCORE_SSSE3 BlockProgress convert_utf8_blocks_to_utf16(const char* source, unsigned length,
                                                          Utf16Unit* destination,
                                                          unsigned capacity) {
    return convert_blocks<ToUtf16, false>(source, length, destination, capacity);
}

TARVCORE_SSSE3 BlockProgress convert_utf8_blocks_to_ucs4(const char* source, unsigned length,
                                                         std::uint32_t* destination,
                                                         unsigned capacity) {
    return convert_blocks<ToUcs4, false>(source, length, destination, capacity);
}

TARVCORE_SSSE3 BlockProgress count_utf8_blocks_as_utf16(const char* source, unsigned length,
                                                        unsigned capacity) {
    return convert_blocks<ToUtf16, true>(source, length, nullptr, capacity);
}

TARVCORE_SSSE3 BlockProgress count_utf8_blocks_as_ucs4(const char* source, unsigned length,
                                                       unsigned capacity) {
    return convert_blocks<ToUcs4, true>(source, length, nullptr, capacity);
}

}  // namespace tarvcore::impl
