// The Mersenne Twister MT19937, without a seeding of its own.
#pragma once

#include <cstddef>
#include <cstdint>

#include "tarvcore/config.h"

namespace tarvcore::impl::mersenne_twister {

constexpr unsigned state_words = 624;

// Advances the state by one generation: as many raw outputs.
void regenerate(std::uint32_t (&state)[state_words]);

// Makes outputs of raw ones, in place; the words need no alignment.
void temper(char* words, std::size_t count);

// The same for one word, or for a vector of them.
template <class Words>
[[gnu::always_inline]] constexpr void temper(Words& words) {
    words ^= words >> 11;
    words ^= words << 7 & 0x9D2C5680;
    words ^= words << 15 & 0xEFC60000;
    words ^= words >> 18;
}

}  // namespace tarvcore::impl::mersenne_twister
