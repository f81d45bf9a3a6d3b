// What is fed with arbitrary bytes.
//
// A target takes an input apart, runs the code under test and calls `require` for what must hold.
// A fuzzer looks for inputs with which that fails (`make fuzz`); what is found is kept in
// tests/data/fuzz/NAME, and replayed by the tests.
#pragma once

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>

namespace tarv_fuzz {

using Input = std::span<const std::uint8_t>;

struct Target {
    const char* name;
    void (*run)(Input input);
};

void run_unicode(Input input);
void run_transforms(Input input);
void run_time_text(Input input);
void run_string_to(Input input);
void run_error_params(Input input);
void run_cpuid(Input input);

inline constexpr Target targets[] = {
    {"unicode", run_unicode},     {"transforms", run_transforms},     {"time_text", run_time_text},
    {"string_to", run_string_to}, {"error_params", run_error_params}, {"cpuid", run_cpuid},
};

inline void require(bool condition, const char* what) {
    if (!condition) throw std::logic_error(what);
}

// A byte from the begin of the input; 0 where there is none.
inline unsigned take_byte(Input& input) {
    if (input.empty()) return 0;
    const unsigned byte = input[0];
    input = input.subspan(1);
    return byte;
}

}  // namespace tarv_fuzz
