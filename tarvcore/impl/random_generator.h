// The generator behind the random numbers of the process.
#pragma once

#include <cstddef>
#include <cstdint>

#include "tarvcore/abs_rel_time.h"
#include "tarvcore/config.h"
#include "tarvcore/impl/mersenne_twister.h"
#include "tarvcore/thread_mutex.h"

namespace tarvcore::impl {

// Where a generator's seed comes from; tests inject their own.
struct EntropyCalls {
    AbsoluteTime (*now)();
    std::uint32_t (*tick_count)();
    std::uint32_t (*process_id)();
    std::uint32_t (*thread_id)();
    std::uint64_t (*time_stamp_counter)();
};

// MT19937 with a seeding of its own, and the time-stamp counter mixed into every generation.  Any
// number of threads may draw at once.  Not for secrets.
class TARVCORE_API RandomGenerator {
public:
    explicit RandomGenerator(const EntropyCalls& calls);
    RandomGenerator(const RandomGenerator&) = delete;
    RandomGenerator& operator=(const RandomGenerator&) = delete;

    // The one of the process: made by the first call, never destroyed.
    static RandomGenerator& instance();

    std::uint32_t draw();
    // Fills whole words with outputs, and what is left with the first bytes of one more.
    void fill(void* buffer, std::size_t size);

private:
    void seed();
    void regenerate();
    void fill_words(char* out, std::size_t count);

    ThreadMutex lock_;
    std::uint32_t state_[mersenne_twister::state_words];
    unsigned position_ = mersenne_twister::state_words;  // of the next word to hand out
    const EntropyCalls& calls_;
};

}  // namespace tarvcore::impl
