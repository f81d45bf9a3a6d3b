// MurmurHash3_x86_32 the way its author published it, and Shane Day's way to take it in pieces
// (PMurHash): bytes are carried from piece to piece in a word of their own.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace tarv_bench::murmur3 {

constexpr std::uint32_t c1 = 0xcc9e2d51;
constexpr std::uint32_t c2 = 0x1b873593;

constexpr std::uint32_t fmix32(std::uint32_t h) {
    h ^= h >> 16;
    h *= 0x85ebca6b;
    h ^= h >> 13;
    h *= 0xc2b2ae35;
    return h ^ h >> 16;
}

inline std::uint32_t load(const unsigned char* bytes) {
    std::uint32_t word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

// Not expanded where it is called: the published one stands in a file of its own.
[[gnu::noinline]] inline std::uint32_t x86_32(const void* key, int length, std::uint32_t seed) {
    const auto* data = static_cast<const unsigned char*>(key);
    const int block_count = length / 4;
    std::uint32_t h1 = seed;
    const unsigned char* const blocks = data + block_count * 4;
    for (int i = -block_count; i; ++i) {
        std::uint32_t k1 = load(blocks + i * 4);
        k1 *= c1;
        k1 = std::rotl(k1, 15);
        k1 *= c2;
        h1 ^= k1;
        h1 = std::rotl(h1, 13);
        h1 = h1 * 5 + 0xe6546b64;
    }
    const unsigned char* const tail = blocks;
    std::uint32_t k1 = 0;
    switch (length & 3) {
        case 3:
            k1 ^= static_cast<std::uint32_t>(tail[2]) << 16;
            [[fallthrough]];
        case 2:
            k1 ^= static_cast<std::uint32_t>(tail[1]) << 8;
            [[fallthrough]];
        case 1:
            k1 ^= tail[0];
            k1 *= c1;
            k1 = std::rotl(k1, 15);
            k1 *= c2;
            h1 ^= k1;
            break;
        default:
            break;
    }
    return fmix32(h1 ^ static_cast<std::uint32_t>(length));
}

struct Pieces {
    std::uint32_t h = 0;
    std::uint32_t carry = 0;
    std::uint32_t total = 0;
};

constexpr void do_block(std::uint32_t& h1, std::uint32_t k1) {
    k1 *= c1;
    k1 = std::rotl(k1, 15);
    k1 *= c2;
    h1 ^= k1;
    h1 = std::rotl(h1, 13);
    h1 = h1 * 5 + 0xe6546b64;
}

// The lowest two bits of the carry count its bytes, which stand above them.
[[gnu::noinline]] inline void process(Pieces& pieces, const void* key, unsigned length) {
    std::uint32_t h1 = pieces.h;
    std::uint32_t c = pieces.carry;
    const auto* ptr = static_cast<const unsigned char*>(key);
    unsigned n = c & 3;
    const auto do_bytes = [&](unsigned count) {
        while (count-- != 0) {
            c = c >> 8 | static_cast<std::uint32_t>(*ptr++) << 24;
            if (++n != 4) continue;
            do_block(h1, c);
            n = 0;
        }
    };
    const unsigned first = (4 - n) & 3;
    pieces.total += length;
    if (first != 0 && first <= length) {
        do_bytes(first);
        length -= first;
    }
    if (first == 0 || n == 0) {
        const unsigned char* const end = ptr + length / 4 * 4;
        for (; ptr < end; ptr += 4)
            do_block(h1, load(ptr));
        do_bytes(length % 4);
    } else {
        do_bytes(length);
    }
    pieces.h = h1;
    pieces.carry = (c & ~0xFFu) | n;
}

inline std::uint32_t result(const Pieces& pieces) {
    std::uint32_t h = pieces.h;
    if (const unsigned n = pieces.carry & 3; n != 0) {
        std::uint32_t k1 = pieces.carry >> (4 - n) * 8;
        k1 *= c1;
        k1 = std::rotl(k1, 15);
        k1 *= c2;
        h ^= k1;
    }
    return fmix32(h ^ pieces.total);
}

}  // namespace tarv_bench::murmur3
