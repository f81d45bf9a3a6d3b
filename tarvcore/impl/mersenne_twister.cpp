#include "tarvcore/impl/mersenne_twister.h"

#include <cstring>

#include "tarvcore/impl/simd_level.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/impl/mersenne_twister.cpp#1 $");

// Matsumoto and Nishimura, "Mersenne Twister", ACM Transactions on Modeling and Computer
// Simulation 8 (1998), several words at a time: none depends on the few in front of it.
namespace tarvcore::impl::mersenne_twister {
namespace {

// How many words a step takes.
using OneWord = std::uint32_t;
using FourWords [[gnu::vector_size(16)]] = std::uint32_t;
using EightWords [[gnu::vector_size(32)]] = std::uint32_t;

constexpr std::ptrdiff_t middle = 397;

// Words in memory need no alignment.
template <class Words>
[[gnu::always_inline]] inline void load(Words& words, const void* source) {
    std::memcpy(&words, source, sizeof words);
}
template <class Words>
[[gnu::always_inline]] inline void store(void* destination, const Words& words) {
    std::memcpy(destination, &words, sizeof words);
}

template <class Words>
[[gnu::always_inline]] inline void twist(void* word, const void* next_word, const void* far_word) {
    constexpr std::uint32_t upper_bit = 0x80000000;
    constexpr std::uint32_t matrix = 0x9908B0DF;
    Words words;
    Words next;
    Words far;
    load(words, word);
    load(next, next_word);
    load(far, far_word);
    const Words mixed = (words & upper_bit) | (next & ~upper_bit);
    store<Words>(word, far ^ mixed >> 1 ^ (-(mixed & 1) & matrix));
}

// Steps from `word` on as long as there is a whole one before `end`; answers where the next begins.
// The far words are `distance` away.
template <class Words>
[[gnu::always_inline]] inline std::uint32_t* twist_run(std::uint32_t* word,
                                                       const std::uint32_t* end,
                                                       std::ptrdiff_t distance) {
    constexpr std::ptrdiff_t word_size = 4;
    constexpr std::ptrdiff_t step = sizeof(Words) / word_size;
    for (; end - word >= step; word += step)
        twist<Words>(word, word + 1, word + distance);
    return word;
}

// Goes through the state in the widest steps first.
template <class... Widths>
[[gnu::always_inline]] inline void regenerate_in_steps(std::uint32_t* state) {
    std::uint32_t* const end = state + state_words;
    std::uint32_t* word = state;
    ((word = twist_run<Widths>(word, end - middle, middle)), ...);
    // From here on, far words are new ones.
    constexpr std::ptrdiff_t back = middle - std::ptrdiff_t{state_words};
    ((word = twist_run<Widths>(word, end - 1, back)), ...);
    twist<OneWord>(word, state, word + back);
}

template <class Words>
[[gnu::always_inline]] inline char* temper_run(char* words, const char* end) {
    // As sizes: a buffer may be larger than a difference can tell.
    for (; static_cast<std::size_t>(end - words) >= sizeof(Words); words += sizeof(Words)) {
        Words value;
        load(value, words);
        temper(value);
        store(words, value);
    }
    return words;
}

template <class... Widths>
[[gnu::always_inline]] inline void temper_in_steps(char* words, const char* end) {
    ((words = temper_run<Widths>(words, end)), ...);
}

[[gnu::target("avx2")]] void regenerate_with_avx2(std::uint32_t* state) {
    regenerate_in_steps<EightWords, FourWords, OneWord>(state);
}

[[gnu::target("avx2")]] void temper_with_avx2(char* words, const char* end) {
    temper_in_steps<EightWords, FourWords, OneWord>(words, end);
}

}  // namespace

void regenerate(std::uint32_t (&state)[state_words]) {
    if (simd_level() >= SimdLevel::avx2) return regenerate_with_avx2(state);
    regenerate_in_steps<FourWords, OneWord>(state);
}

void temper(char* words, std::size_t count) {
    const char* const end = words + count * sizeof(std::uint32_t);
    if (simd_level() >= SimdLevel::avx2) return temper_with_avx2(words, end);
    temper_in_steps<FourWords, OneWord>(words, end);
}

}  // namespace tarvcore::impl::mersenne_twister
