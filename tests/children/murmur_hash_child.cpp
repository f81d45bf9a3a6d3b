// Prints the hash of nothing, by which processes of different seeds differ.  Threads that are the
// first to hash, all at once, and whoever comes after them must agree on it.

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <thread>
#include <vector>

#include "tarvcore/murmur_hash.h"

int main() {
    constexpr unsigned thread_count = 4;
    std::atomic<unsigned> missing = thread_count;
    std::uint32_t hashes[thread_count];
    std::vector<std::thread> threads;
    for (std::uint32_t& hash : hashes) {
        threads.emplace_back([&] {
            --missing;
            while (missing != 0)
                std::this_thread::yield();
            hash = tarvcore::murmur_hash("", 0);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    const auto again = tarvcore::MurmurHashContext().calculate_digest();
    std::printf("%08lx\n", static_cast<unsigned long>(again));
    for (const std::uint32_t hash : hashes)
        if (hash != again) return 1;
    return 0;
}
