// How many memory dumps may still be made.
#pragma once

#include <atomic>
#include <cstdint>

namespace tarvcore::impl {

// Sixteen in every trace period.  For any threads at once; never overdrawn.
class DumpCredits {
public:
    // Takes one, if there is one.  `period` answers the current period, and is asked again whenever
    // another thread was faster.
    template <class Period>
    bool take(Period&& period) {
        std::uint64_t old_word = word_.load();
        for (;;) {
            const std::uint64_t current = period();
            std::uint64_t new_word = old_word - 1;
            if (current != old_word >> 32) {
                new_word = current << 32 | (per_period - 1);
            } else if ((old_word & 0xFFFF) == 0) {
                return false;
            }
            if (word_.compare_exchange_weak(old_word, new_word)) return true;
        }
    }

private:
    static constexpr std::uint64_t per_period = 16;

    // The period in which they were last counted, above those that are left.
    std::atomic<std::uint64_t> word_ = per_period;
};

// Those of this process.
extern DumpCredits dump_credits;

static_assert(std::atomic<std::uint64_t>::is_always_lock_free);

}  // namespace tarvcore::impl
