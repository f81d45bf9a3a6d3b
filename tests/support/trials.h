// How often random tests try, and how much of a large space tests go through.
#pragma once

#include <cstdlib>

namespace tarv_test {

// What TARV_TEST_TRIALS multiplies the trials with; 1 where it is not set.
inline unsigned trial_factor() {
    const char* text = std::getenv("TARV_TEST_TRIALS");
    const unsigned factor = text ? std::strtoul(text, nullptr, 10) : 1;
    return factor != 0 ? factor : 1;
}

inline unsigned trials(unsigned count) {
    return count * trial_factor();
}

// Whether there is time for what takes minutes.
inline bool is_long_run() {
    return trial_factor() >= 100;
}

}  // namespace tarv_test
