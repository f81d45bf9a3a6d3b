// How vectors go over bytes and text in memory, whatever the encoding: in blocks from the begin on,
// and over what is left with one more block, which ends where the groups end and does part of the
// one before it again.
//
// A codec's source describes its vectors by a class `Kernels` with static members only:
//
//     encode_baseline(bytes, size, text), decode_baseline(text, length, bytes)
//                      whole groups of any number, for every processor; `encode` answers the text's
//                      end, `decode` how many characters it has decoded before the first bad group
//     Ssse3, Avx2      kinds of blocks
//
// And a kind of block is described by a class:
//
//     byte_count, char_count
//     encode(bytes, text), decode(text, bytes)
//                      touch nothing beside the block; `decode` answers false, and has written
//                      nothing, where a character is not good
//     bytes_beside     that `encode_inner` may touch on either side of the source's block
//     chars_behind     of the source, for whose bytes `decode_inner` may use the room
//     encode_inner(bytes, text), decode_inner(text, bytes)
//                      the same, and faster, with such neighbours; not there where they need none.
//                      `decode_inner` takes `inner_blocks` at once, and may have written rubbish
//                      for them where it answers false
#pragma once

#include "tarvcore/config.h"
#include "tarvcore/impl/simd_level.h"

namespace tarvcore::impl {

// For at least one block.
template <class Blocks>
[[gnu::always_inline]] inline char* encode_in_blocks(const Blocks& blocks,
                                                     const unsigned char* bytes, unsigned size,
                                                     char* text) {
    constexpr unsigned count = Blocks::byte_count;
    constexpr unsigned chars = Blocks::char_count;
    constexpr unsigned beside = Blocks::bytes_beside;
    if constexpr (beside != 0) {
        blocks.encode(bytes, text);
        size -= count, bytes += count, text += chars;
        for (; size >= count + beside; size -= count, bytes += count, text += chars)
            blocks.encode_inner(bytes, text);
    }
    for (; size >= count; size -= count, bytes += count, text += chars)
        blocks.encode(bytes, text);
    text += size * chars / count;
    if (size != 0) blocks.encode(bytes + size - count, text - chars);
    return text;
}

template <class Blocks>
[[gnu::always_inline]] inline unsigned decode_in_blocks(const Blocks& blocks, const char* text,
                                                        unsigned length, unsigned char* bytes) {
    constexpr unsigned count = Blocks::char_count;
    constexpr unsigned behind = Blocks::chars_behind;
    unsigned done = 0;
    if constexpr (behind != 0) {
        constexpr unsigned inner = Blocks::inner_blocks;
        for (; length - done >= inner * count + behind; done += inner * count) {
            if (!blocks.decode_inner(text + done, bytes)) return done;
            bytes += inner * Blocks::byte_count;
        }
    }
    for (; length - done >= count; done += count, bytes += Blocks::byte_count) {
        if (!blocks.decode(text + done, bytes)) return done;
    }
    if (done != length) {
        bytes += (length - done) * Blocks::byte_count / count;
        if (!blocks.decode(text + length - count, bytes - Blocks::byte_count)) return done;
    }
    return length;
}

template <class Kernels>
[[gnu::target("ssse3")]] char* encode_groups_ssse3(const unsigned char* bytes, unsigned size,
                                                   char* text) {
    using Blocks = typename Kernels::Ssse3;
    if (size < Blocks::byte_count) return Kernels::encode_baseline(bytes, size, text);
    return encode_in_blocks(Blocks(), bytes, size, text);
}

template <class Kernels>
[[gnu::target("avx2")]] char* encode_groups_avx2(const unsigned char* bytes, unsigned size,
                                                 char* text) {
    using Blocks = typename Kernels::Avx2;
    if (size < Blocks::byte_count) return encode_groups_ssse3<Kernels>(bytes, size, text);
    return encode_in_blocks(Blocks(), bytes, size, text);
}

template <class Kernels>
[[gnu::target("ssse3")]] unsigned decode_groups_ssse3(const char* text, unsigned length,
                                                      unsigned char* bytes) {
    using Blocks = typename Kernels::Ssse3;
    return length < Blocks::char_count ? 0 : decode_in_blocks(Blocks(), text, length, bytes);
}

template <class Kernels>
[[gnu::target("avx2")]] unsigned decode_groups_avx2(const char* text, unsigned length,
                                                    unsigned char* bytes) {
    using Blocks = typename Kernels::Avx2;
    if (length < Blocks::char_count) return decode_groups_ssse3<Kernels>(text, length, bytes);
    return decode_in_blocks(Blocks(), text, length, bytes);
}

// Encodes whole groups, and answers the text's end.
template <class Kernels>
char* encode_groups(const unsigned char* bytes, unsigned size, char* text) {
    const SimdLevel level = simd_level();
    if (level >= SimdLevel::avx2) return encode_groups_avx2<Kernels>(bytes, size, text);
    if (level >= SimdLevel::ssse3) return encode_groups_ssse3<Kernels>(bytes, size, text);
    return Kernels::encode_baseline(bytes, size, text);
}

// What a codec's `decode_groups` does.
template <class Codec, class Kernels>
unsigned decode_good_groups(const char* text, unsigned length, unsigned char* bytes) {
    // The last group may well be padded; the vectors have nothing to do with that.
    unsigned whole = length - length % Codec::chars_per_group;
    if (Codec::has_padding && whole != 0 && text[whole - 1] == '=') whole -= Codec::chars_per_group;
    unsigned done = 0;
    const SimdLevel level = simd_level();
    if (level >= SimdLevel::avx2) {
        done = decode_groups_avx2<Kernels>(text, whole, bytes);
    } else if (level >= SimdLevel::ssse3) {
        done = decode_groups_ssse3<Kernels>(text, whole, bytes);
    }
    // All of a short text, and the groups before a fault.
    bytes += done / Codec::chars_per_group * Codec::bytes_per_group;
    return done + Kernels::decode_baseline(text + done, whole - done, bytes);
}

}  // namespace tarvcore::impl
