#include "tarvcore/impl/mersenne_twister.h"

#include <emmintrin.h>

#include <cstring>

TARVCORE_SOURCE_FILE("$Id: //tarvcore/impl/mersenne_twister.cpp#1 $");

// Matsumoto and Nishimura, "Mersenne Twister", ACM Transactions on Modeling and Computer
// Simulation 8 (1998), four words at a time: no word depends on one of the three before it.
namespace tarvcore::impl::mersenne_twister {
namespace {

constexpr unsigned middle = 397;
constexpr std::uint32_t upper_bit = 0x80000000;
constexpr std::uint32_t matrix = 0x9908B0DF;

constexpr std::uint32_t twist(std::uint32_t word, std::uint32_t next, std::uint32_t far) {
    const std::uint32_t mixed = (word & upper_bit) | (next & ~upper_bit);
    return far ^ mixed >> 1 ^ (mixed % 2 != 0 ? matrix : 0);
}

__m128i load(const void* words) {
    return _mm_loadu_si128(static_cast<const __m128i*>(words));
}

void store(void* words, __m128i value) {
    _mm_storeu_si128(static_cast<__m128i*>(words), value);
}

__m128i all(std::uint32_t word) {
    return _mm_set1_epi32(static_cast<int>(word));
}

// Replaces the words from `word` to `end`, a multiple of four; `far` are those that go with them.
void twist_run(std::uint32_t* word, const std::uint32_t* end, const std::uint32_t* far) {
    for (; word != end; word += 4, far += 4) {
        const __m128i mixed = _mm_or_si128(_mm_and_si128(load(word), all(upper_bit)),
                                           _mm_and_si128(load(word + 1), all(~upper_bit)));
        const __m128i odd = _mm_srai_epi32(_mm_slli_epi32(mixed, 31), 31);
        store(word, _mm_xor_si128(_mm_xor_si128(load(far), _mm_srli_epi32(mixed, 1)),
                                  _mm_and_si128(odd, all(matrix))));
    }
}

}  // namespace

void regenerate(std::uint32_t (&state)[state_words]) {
    constexpr unsigned distance = state_words - middle;  // from here on, far words are new ones
    constexpr unsigned vectors = distance / 4 * 4;
    static_assert((state_words - 1 - distance) % 4 == 0);

    twist_run(state, state + vectors, state + middle);
    for (unsigned i = vectors; i < distance; ++i)
        state[i] = twist(state[i], state[i + 1], state[i + middle]);
    twist_run(state + distance, state + state_words - 1, state);
    state[state_words - 1] = twist(state[state_words - 1], state[0], state[middle - 1]);
}

void temper(char* words, std::size_t count) {
    for (; count >= 4; count -= 4, words += sizeof(__m128i)) {
        __m128i value = load(words);
        value = _mm_xor_si128(value, _mm_srli_epi32(value, 11));
        value = _mm_xor_si128(value, _mm_and_si128(_mm_slli_epi32(value, 7), all(0x9D2C5680)));
        value = _mm_xor_si128(value, _mm_and_si128(_mm_slli_epi32(value, 15), all(0xEFC60000)));
        store(words, _mm_xor_si128(value, _mm_srli_epi32(value, 18)));
    }
    for (; count != 0; --count, words += sizeof(std::uint32_t)) {
        std::uint32_t word;
        std::memcpy(&word, words, sizeof word);
        word = temper(word);
        std::memcpy(words, &word, sizeof word);
    }
}

}  // namespace tarvcore::impl::mersenne_twister
