// Instants that the benchmarks of time take: the same ones for ours and all peers.
#pragma once

#include <cstdint>
#include <random>
#include <vector>

namespace tarv_bench {

inline constexpr int instant_count = 128;

// Nanoseconds since 1970 from the years 1700 to 2240, all different, with nine decimals.
inline std::vector<std::int64_t> random_instants() {
    constexpr std::int64_t year = std::int64_t{31'556'952} * 1'000'000'000;
    std::mt19937_64 random(1970);
    std::uniform_int_distribution<std::int64_t> count(-270 * year, 270 * year);
    std::vector<std::int64_t> instants;
    while (instants.size() != instant_count) {
        const std::int64_t instant = count(random);
        if (instant % 10 != 0) instants.push_back(instant);
    }
    return instants;
}

}  // namespace tarv_bench
