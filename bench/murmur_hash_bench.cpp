#include "tarvcore/murmur_hash.h"

#include <algorithm>
#include <random>
#include <string>

#include "bench/peers/murmur3.h"
#include "bench/support/row.h"
#include "bench/topics.h"

namespace tarv_bench {
namespace {

using namespace tarvcore;

std::string random_bytes(unsigned size) {
    std::mt19937 random(73);
    std::string bytes(size, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random());
    return bytes;
}

template <unsigned size>
void ours(benchmark::State& state) {
    const std::string bytes = random_bytes(size);
    require(MurmurHashContext(7).update(bytes.data(), size).calculate_digest() ==
                murmur3::x86_32(bytes.data(), size, 7),
            "MurmurHash3");
    measure(state, [&] { keep(murmur_hash(bytes.data(), bytes.size())); });
}

template <unsigned size>
void published(benchmark::State& state) {
    const std::string bytes = random_bytes(size);
    measure(state, [&] {
        keep(murmur3::x86_32(bytes.data(), static_cast<int>(bytes.size()), 0x2B1AE5C7));
    });
}

template <unsigned size>
void add_whole(const char* operation) {
    add_row(operation, "1.05 x",
            {{"murmur_hash", ours<size>}, {"the published one", published<size>}});
}

constexpr unsigned piece = 13;

template <class Take>
void in_pieces(benchmark::State& state, Take take) {
    const std::string bytes = random_bytes(1024);
    measure(state, [&] {
        for (unsigned i = 0; i < bytes.size(); i += piece)
            take(bytes.data() + i, std::min(piece, static_cast<unsigned>(bytes.size()) - i));
    });
}

void ours_in_pieces(benchmark::State& state) {
    MurmurHashContext context;
    in_pieces(state, [&](const char* bytes, unsigned size) { context.update(bytes, size); });
    keep(context.calculate_digest());
}

void peer_in_pieces(benchmark::State& state) {
    murmur3::Pieces pieces;
    in_pieces(state,
              [&](const char* bytes, unsigned size) { murmur3::process(pieces, bytes, size); });
    keep(murmur3::result(pieces));
}

}  // namespace

void add_murmur_hash_rows() {
    add_whole<8>("hash: 8 B");
    add_whole<64>("hash: 64 B");
    add_whole<64 * 1024>("hash: 64 KiB");
    add_row("hash: 1 KiB in pieces of 13 B", "1 x",
            {{"MurmurHashContext", ours_in_pieces}, {"PMurHash", peer_in_pieces}});
}

}  // namespace tarv_bench
