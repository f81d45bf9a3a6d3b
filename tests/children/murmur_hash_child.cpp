// Prints the hash of nothing, by which processes of different seeds differ.  Threads that are the
// first to hash, all at once, and whoever comes after them must agree on it.

#include <cstdint>
#include <cstdio>

#include "tarvcore/murmur_hash.h"
#include "tests/support/threads.h"

int main() {
    std::uint32_t hashes[4];
    tarv_test::run_threads(4, [&](unsigned i) { hashes[i] = tarvcore::murmur_hash("", 0); });
    const auto again = tarvcore::MurmurHashContext().calculate_digest();
    std::printf("%08lx\n", static_cast<unsigned long>(again));
    for (const std::uint32_t hash : hashes)
        if (hash != again) return 1;
    return 0;
}
