#include "tarvcore/impl/random_generator.h"

#include <algorithm>
#include <cstring>

#include "ace/Guard_T.h"
#include "tarvcore/atomic_op.h"
//
#include <windows.h>
#include <x86intrin.h>

TARVCORE_SOURCE_FILE("$Id: //tarvcore/impl/random_generator.cpp#1 $");

namespace tarvcore::impl {
namespace {

using mersenne_twister::state_words;
using Guard = ACE_Guard<ThreadMutex>;

constexpr std::size_t word_size = sizeof(std::uint32_t);

constexpr EntropyCalls system_calls = {
    [] { return AbsoluteTime::now(); },
    []() -> std::uint32_t { return GetTickCount(); },
    []() -> std::uint32_t { return GetCurrentProcessId(); },
    []() -> std::uint32_t { return GetCurrentThreadId(); },
    []() -> std::uint64_t { return __rdtsc(); },
};

constinit RandomGenerator* process_generator = nullptr;
// Threads within `fill_words`.
constinit unsigned fillers = 0;

constexpr std::uint32_t low_word(std::uint64_t value) {
    return static_cast<std::uint32_t>(value);
}
constexpr std::uint32_t high_word(std::uint64_t value) {
    return static_cast<std::uint32_t>(value >> 32);
}

// A call of memcpy takes longer than to copy as much as an identifier has.
inline void copy_words(char* to, const std::uint32_t* from, std::size_t count) {
    constexpr std::size_t few = 4;
    if (count == few) {
        std::memcpy(to, from, few * word_size);
    } else {
        std::memcpy(to, from, count * word_size);
    }
}

struct FillerCount {
    FillerCount() { AtomicOp<unsigned>::increment(&fillers); }
    ~FillerCount() { AtomicOp<unsigned>::decrement(&fillers); }
    static bool is_alone() { return AtomicOp<unsigned>::read(&fillers) == 1; }
};

}  // namespace

RandomGenerator::RandomGenerator(const EntropyCalls& calls) : calls_(calls) {
    seed();
}

RandomGenerator& RandomGenerator::instance() {
    RandomGenerator* generator = __atomic_load_n(&process_generator, __ATOMIC_ACQUIRE);
    if (generator != nullptr) return *generator;

    // Threads that are here at once each make one; the first one counts.
    auto* own = new RandomGenerator(system_calls);
    if (__atomic_compare_exchange_n(&process_generator, &generator, own, false, __ATOMIC_ACQ_REL,
                                    __ATOMIC_ACQUIRE)) {
        return *own;
    }
    delete own;
    return *generator;
}

// Unlike the reference seeding, each word is made of the seventh before it, and what is made is
// stirred before it is used.
void RandomGenerator::seed() {
    constexpr unsigned seed_words = 7;
    constexpr unsigned stirs = 97;

    const auto now = static_cast<std::uint64_t>(calls_.now().as_nsec());
    state_[0] = low_word(now);
    state_[1] = high_word(now);
    state_[2] = calls_.tick_count();
    state_[3] = calls_.process_id();
    state_[4] = calls_.thread_id();
    const std::uint64_t counter = calls_.time_stamp_counter();
    state_[5] = low_word(counter);
    state_[6] = high_word(counter);
    for (unsigned i = seed_words; i < state_words; ++i) {
        const std::uint32_t before = state_[i - seed_words];
        state_[i] = (before ^ before >> 30) * 1812433253 + i;
    }
    for (unsigned i = 0; i < stirs; ++i)
        regenerate();
}

void RandomGenerator::regenerate() {
    const std::uint64_t counter = calls_.time_stamp_counter();
    state_[0] ^= low_word(counter);
    state_[1] ^= high_word(counter);
    state_[2] ^= ~low_word(counter);
    state_[3] ^= ~high_word(counter);
    mersenne_twister::regenerate(state_);
    position_ = 0;
}

std::uint32_t RandomGenerator::draw() {
    std::uint32_t word;
    {
        const Guard guard(lock_);
        if (position_ == state_words) regenerate();
        word = state_[position_++];
    }
    mersenne_twister::temper(word);
    return word;
}

void RandomGenerator::fill(void* buffer, std::size_t size) {
    auto* const bytes = static_cast<char*>(buffer);
    const std::size_t words = size / word_size;
    if (words != 0) fill_words(bytes, words);
    if (const std::size_t rest = size % word_size; rest != 0) {
        const std::uint32_t last = draw();
        std::memcpy(bytes + size - rest, &last, rest);
    }
}

void RandomGenerator::fill_words(char* words, std::size_t count) {
    {
        const FillerCount count_this;
        const Guard guard(lock_);
        for (std::size_t filled = 0; filled != count;) {
            while (position_ == state_words) {
                regenerate();
                if (FillerCount::is_alone()) break;
                // The others must not wait for all of this buffer.
                lock_.release();
                lock_.acquire();
            }
            const auto taken = std::min<std::size_t>(count - filled, state_words - position_);
            copy_words(words + filled * word_size, state_ + position_, taken);
            position_ += static_cast<unsigned>(taken);
            filled += taken;
        }
    }
    mersenne_twister::temper(words, count);
}

}  // namespace tarvcore::impl
