#include "tarvcore/impl/unicode_kernels.h"

#include <algorithm>

#include "tarvcore/impl/simd_level.h"
#include "tarvcore/impl/unicode_blocks.h"
#include "tarvcore/impl/unicode_codec.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/impl/unicode_kernels.cpp#1 $");

namespace tarvcore::impl {
namespace {

// Encodings as sources and as destinations.  ASCII goes by blocks of 16 units, as a vector of
// bytes: `load_ascii` answers false, and leaves the vector undefined, where there is anything else.

struct Utf8 {
    using Unit = char;
    static DecodedCharacter decode(const char* source, unsigned length) {
        return decode_utf8(source, length);
    }
    static unsigned units(std::uint32_t c) { return utf8_units(c); }
    static void encode(std::uint32_t c, char* destination) { encode_utf8(c, destination); }

    TARVCORE_INLINE static bool load_ascii(const char* source, __m128i* ascii) {
        *ascii = load(source);
        return _mm_movemask_epi8(*ascii) == 0;
    }
};

struct Utf16 {
    using Unit = Utf16Unit;
    static DecodedCharacter decode(const Utf16Unit* source, unsigned length) {
        return decode_utf16(source, length);
    }
    static unsigned units(std::uint32_t c) { return utf16_units(c); }
    static void encode(std::uint32_t c, Utf16Unit* destination) { encode_utf16(c, destination); }

    TARVCORE_INLINE static bool load_ascii(const Utf16Unit* source, __m128i* ascii) {
        const __m128i first = load(source);
        const __m128i last = load(source + 8);
        *ascii = _mm_packus_epi16(first, last);
        const __m128i above = _mm_and_si128(_mm_or_si128(first, last), _mm_set1_epi16(~0x7F));
        return _mm_movemask_epi8(_mm_cmpeq_epi16(above, _mm_setzero_si128())) == 0xFFFF;
    }
};

struct Ucs4 {
    using Unit = std::uint32_t;
    static DecodedCharacter decode(const std::uint32_t* source, unsigned length) {
        return decode_ucs4(source, length);
    }
    static unsigned units(std::uint32_t) { return 1; }
    static void encode(std::uint32_t c, std::uint32_t* destination) { *destination = c; }

    TARVCORE_INLINE static bool load_ascii(const std::uint32_t* source, __m128i* ascii) {
        const __m128i a = load(source);
        const __m128i b = load(source + 4);
        const __m128i c = load(source + 8);
        const __m128i d = load(source + 12);
        *ascii = _mm_packus_epi16(_mm_packs_epi32(a, b), _mm_packs_epi32(c, d));
        const __m128i all = _mm_or_si128(_mm_or_si128(a, b), _mm_or_si128(c, d));
        const __m128i above = _mm_and_si128(all, _mm_set1_epi32(~0x7F));
        return _mm_movemask_epi8(_mm_cmpeq_epi32(above, _mm_setzero_si128())) == 0xFFFF;
    }
};

TARVCORE_INLINE bool is_scannable(unsigned length) {
    return length >= utf8_scan_block_length && simd_level() >= SimdLevel::avx2;
}

template <auto scan, auto count_rest>
BlockProgress count_utf8_blocks(const char* source, unsigned length, unsigned capacity) {
    // No byte makes more than a unit.
    const unsigned scannable = std::min(length, capacity);
    if (!is_scannable(scannable)) return count_rest(source, length, capacity);
    const BlockProgress first = scan(source, scannable);
    if (first.read == length) return first;
    const BlockProgress rest =
        count_rest(source + first.read, length - first.read, capacity - first.written);
    return {first.read + rest.read, first.written + rest.written};
}

// What there is of vector code for a pair of encodings; the general case is none.
struct AnyBlocks {
    static bool is_best_for_ascii(unsigned) { return false; }
};
template <class Source, class Destination, bool counting>
struct Blocks : AnyBlocks {
    static constexpr unsigned least_length = 0xFFFFFFFF;
    static BlockProgress run(const typename Source::Unit*, unsigned, typename Destination::Unit*,
                             unsigned) {
        return {0, 0};
    }
};
template <>
struct Blocks<Utf8, Utf16, false> : AnyBlocks {
    static constexpr unsigned least_length = utf8_block_length;
    static constexpr auto run = convert_utf8_blocks_to_utf16;
};
template <>
struct Blocks<Utf8, Ucs4, false> : AnyBlocks {
    static constexpr unsigned least_length = utf8_block_length;
    static constexpr auto run = convert_utf8_blocks_to_ucs4;
};
template <>
struct Blocks<Utf16, Utf8, false> : AnyBlocks {
    static constexpr unsigned least_length = utf16_block_length;
    static constexpr auto run = convert_utf16_blocks_to_utf8;
};
template <>
struct Blocks<Ucs4, Utf8, false> : AnyBlocks {
    static constexpr unsigned least_length = utf16_block_length;
    static constexpr auto run = convert_ucs4_blocks_to_utf8;
};
template <>
struct Blocks<Utf8, Utf16, true> {
    static constexpr auto is_best_for_ascii = is_scannable;
    static constexpr unsigned least_length = utf8_block_length;
    static BlockProgress run(const char* source, unsigned length, Utf16Unit*, unsigned capacity) {
        return count_utf8_blocks<scan_utf8_blocks_as_utf16, count_utf8_blocks_as_utf16>(
            source, length, capacity);
    }
};
template <>
struct Blocks<Utf8, Ucs4, true> {
    static constexpr auto is_best_for_ascii = is_scannable;
    static constexpr unsigned least_length = utf8_block_length;
    static BlockProgress run(const char* source, unsigned length, std::uint32_t*,
                             unsigned capacity) {
        return count_utf8_blocks<scan_utf8_blocks_as_ucs4, count_utf8_blocks_as_ucs4>(
            source, length, capacity);
    }
};
template <>
struct Blocks<Utf16, Utf8, true> : AnyBlocks {
    static constexpr unsigned least_length = utf16_block_length;
    static BlockProgress run(const Utf16Unit* source, unsigned length, char*, unsigned capacity) {
        return count_utf16_blocks_as_utf8(source, length, capacity);
    }
};

// Where vector code gives up, this many units go character by character before it is tried again.
constexpr unsigned stretch = 64;

// Copies the ASCII characters that a text starts with, as far as there is room, and answers how
// many it has copied; it may leave up to a block of them to others.
template <class Source, class Destination, bool counting>
TARVCORE_INLINE unsigned copy_ascii(const typename Source::Unit* source, unsigned length,
                                    typename Destination::Unit* destination, unsigned capacity) {
    constexpr unsigned block = 16;
    const unsigned end = std::min(length, capacity);
    if (end < block) return 0;
    unsigned copied = 0;
    __m128i ascii;
    do {
        if (!Source::load_ascii(source + copied, &ascii)) return copied;
        if constexpr (!counting) store_ascii(ascii, destination + copied);
        copied += block;
    } while (end - copied >= block);
    // The last block once more reaches the end.
    if (!Source::load_ascii(source + end - block, &ascii)) return copied;
    if constexpr (!counting) store_ascii(ascii, destination + end - block);
    return end;
}

template <class Source, class Destination, bool counting>
TARVCORE_INLINE Progress convert(const typename Source::Unit* source, unsigned length,
                                 typename Destination::Unit* destination, unsigned capacity) {
    using Vectors = Blocks<Source, Destination, counting>;
    unsigned read = 0;
    if (!Vectors::is_best_for_ascii(length)) {
        read = copy_ascii<Source, Destination, counting>(source, length, destination, capacity);
    }
    if (read == length) return {read, read, ConversionStatus::done};
    unsigned written = read;
    const bool use_vectors =
        length - read >= Vectors::least_length && simd_level() >= SimdLevel::ssse3;
    for (;;) {
        if (use_vectors) {
            const BlockProgress blocks =
                Vectors::run(source + read, length - read,
                             counting ? nullptr : destination + written, capacity - written);
            read += blocks.read;
            written += blocks.written;
        }
        const unsigned end = length - read > stretch ? read + stretch : length;
        while (read < end) {
            const DecodedCharacter decoded = Source::decode(source + read, length - read);
            if (decoded.units == 0) return {read, written, ConversionStatus::invalid};
            const unsigned units = Destination::units(decoded.code_point);
            if (units == 0) return {read, written, ConversionStatus::unencodable};
            if (units > capacity - written) return {read, written, ConversionStatus::full};
            if constexpr (!counting) Destination::encode(decoded.code_point, destination + written);
            read += decoded.units;
            written += units;
        }
        if (read >= length) return {read, written, ConversionStatus::done};
        const unsigned copied = copy_ascii<Source, Destination, counting>(
            source + read, length - read, counting ? nullptr : destination + written,
            capacity - written);
        read += copied;
        written += copied;
    }
}

template <class Source, class Destination>
Progress convert_or_count(const typename Source::Unit* source, unsigned length,
                          typename Destination::Unit* destination, unsigned capacity) {
    return destination == nullptr
               ? convert<Source, Destination, true>(source, length, destination, capacity)
               : convert<Source, Destination, false>(source, length, destination, capacity);
}

}  // namespace

Progress convert_utf8_to_utf16(const char* source, unsigned length, Utf16Unit* destination,
                               unsigned capacity) {
    return convert_or_count<Utf8, Utf16>(source, length, destination, capacity);
}

Progress convert_utf8_to_ucs4(const char* source, unsigned length, std::uint32_t* destination,
                              unsigned capacity) {
    return convert_or_count<Utf8, Ucs4>(source, length, destination, capacity);
}

Progress convert_utf16_to_utf8(const Utf16Unit* source, unsigned length, char* destination,
                               unsigned capacity) {
    return convert_or_count<Utf16, Utf8>(source, length, destination, capacity);
}

Progress convert_ucs4_to_utf8(const std::uint32_t* source, unsigned length, char* destination,
                              unsigned capacity) {
    return convert_or_count<Ucs4, Utf8>(source, length, destination, capacity);
}

unsigned valid_utf8_prefix(const char* text, unsigned length) {
    unsigned read = 0;
    if (is_scannable(length)) {
        read = valid_utf8_blocks(text, length);
        if (read == length) return read;
    }
    return read + convert<Utf8, Ucs4, true>(text + read, length - read, nullptr, 0xFFFFFFFF).read;
}

Utf8Fault utf8_fault(const char* text, unsigned length) {
    const auto byte = [text](unsigned i) { return static_cast<unsigned char>(text[i]); };
    const unsigned units = utf8_sequence_length(text[0]);
    if (units < 2) return Utf8Fault::first_byte;
    if (units > length) return Utf8Fault::partial;

    // A form that is too long shows in the first two bytes.  It is named before a bad byte in the
    // sequence, except with three bytes: meant, and users see it.
    if (byte(0) == 0xC0 || byte(0) == 0xC1) return Utf8Fault::overlong;
    const unsigned least_second = 0x100u >> units | 0x80;
    if (units > 3 && byte(0) == (0xFF00u >> units & 0xFF) && byte(1) < least_second) {
        return Utf8Fault::overlong;
    }
    for (unsigned i = 1; i < units; ++i) {
        if (!is_utf8_continuation(text[i])) return Utf8Fault::subsequent_byte;
    }
    switch (const unsigned c =
                (byte(0) & 0xFu) << 12 | (byte(1) & 0x3Fu) << 6 | (byte(2) & 0x3Fu)) {
        case 0xFFFE:
            return Utf8Fault::u_fffe;
        case 0xFEFF:
            return Utf8Fault::u_feff;
        case 0xFFFF:
            return Utf8Fault::u_ffff;
        default:
            return c < 0x800 ? Utf8Fault::overlong : Utf8Fault::surrogate;
    }
}

std::string utf16_to_utf8_replacing(const wchar_t* text, unsigned length, char replacement,
                                    unsigned enough) {
    constexpr unsigned bytes_per_unit = 3;
    constexpr unsigned longest_character = 4;
    // A character that does not fit any more proves that there is enough.
    const std::uint64_t room =
        std::min(std::uint64_t{length} * bytes_per_unit, std::uint64_t{enough} + longest_character);
    std::string utf8(static_cast<std::size_t>(room), '\0');
    const auto* source = reinterpret_cast<const Utf16Unit*>(text);
    unsigned read = 0;
    unsigned written = 0;
    for (;;) {
        const Progress progress = convert_utf16_to_utf8(
            source + read, length - read, utf8.data() + written, utf8.size() - written);
        read += progress.read;
        written += progress.written;
        if (progress.status != ConversionStatus::invalid || written == utf8.size()) break;
        utf8[written++] = replacement;
        read += utf16_units_to_skip(source + read, length - read);
    }
    utf8.resize(written);
    return utf8;
}

}  // namespace tarvcore::impl
