// How often random tests try.
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

}  // namespace tarv_test
