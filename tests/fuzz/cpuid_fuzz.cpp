// Recorded CPUID values: their text, beside a reader that takes a line to pieces by position; and
// what a processor with arbitrary values says of itself.
#include <sstream>
#include <string>
#include <vector>

#include "tarvcore/hardware/cpu_info.h"
#include "tests/fuzz/targets.h"

namespace tarv_fuzz {
namespace {

using tarvcore::hardware::CpuidRecording;
using tarvcore::hardware::CpuidRegisters;
using tarvcore::hardware::CpuInfo;

// Answers by a number of digits; false: that is not what stands there.
bool read_digits(const std::string& line, unsigned begin, unsigned count, std::uint32_t* value) {
    if (line.size() < begin + count) return false;
    const std::string digits = line.substr(begin, count);
    if (digits.find_first_not_of("0123456789abcdefABCDEF") != digits.npos) return false;
    *value = static_cast<std::uint32_t>(std::stoul(digits, nullptr, 16));
    return true;
}

// Takes what begins like "CPUID 00000004: 1C004121-01C0003F-0000003F-00000000 [SL 00]".
bool read_line(const std::string& line, std::uint32_t* leaf, std::uint32_t* subleaf,
               CpuidRegisters* registers) {
    constexpr unsigned begin_of_values = 16;
    constexpr unsigned end_of_values = begin_of_values + 4 * 9 - 1;
    if (!line.starts_with("CPUID ") || !read_digits(line, 6, 8, leaf)) return false;
    if (line.substr(14, 2) != ": ") return false;
    for (unsigned i = 0; i < 4; ++i) {
        const unsigned begin = begin_of_values + 9 * i;
        if (!read_digits(line, begin, 8, &registers->values[i])) return false;
        if (i != 3 && line[begin + 8] != '-') return false;
    }
    *subleaf = 0;
    return line.substr(end_of_values, 5) != " [SL " ||
           read_digits(line, end_of_values + 5, 2, subleaf);
}

void check_text(const std::string& text) {
    CpuidRecording recording;
    const std::vector<char> exact(text.begin(), text.end());
    const unsigned count = recording.add_text({exact.data(), exact.size()});
    unsigned expected = 0;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        std::uint32_t leaf = 0;
        std::uint32_t subleaf = 0;
        CpuidRegisters registers;
        if (!read_line(line, &leaf, &subleaf, &registers)) continue;
        if (leaf == 0 && expected != 0) break;  // the next processor
        ++expected;
    }
    require(count == expected, "how many values a text has");
    require(recording.has_cpuid() == (expected != 0), "whether there is a processor");
}

// All that there is to say, without a fault or an end.
void check_processor(const CpuidRecording& recording) {
    const CpuInfo info(recording);
    std::ostringstream text;
    info.dump_raw_cpuid(text);
    info.dump_cpuid_info(text);
    require(info.as_string_for_hash(true) == CpuInfo(recording).as_string_for_hash(true),
            "the same twice");
    require(info.apic_id_core_mask() >> info.core_apic_id_shift() << info.core_apic_id_shift() ==
                info.apic_id_core_mask(),
            "a core's bits above those of its threads");
}

}  // namespace

void run_cpuid(Input input) {
    const bool is_text = take_byte(input) % 2 == 0;
    if (is_text) {
        check_text(std::string(input.begin(), input.end()));
        return;
    }
    CpuidRecording recording;
    while (!input.empty()) {
        // Leaves and subleaves that are asked for.
        const unsigned place = take_byte(input);
        const std::uint32_t leaf = place % 64 | (place % 128 >= 64 ? 0x80000000u : 0);
        const std::uint32_t subleaf = place >= 128 ? take_byte(input) % 8 : 0;
        CpuidRegisters registers;
        for (std::uint32_t& value : registers.values)
            for (unsigned i = 0; i < 4; ++i)
                value = value << 8 | take_byte(input);
        recording.add(leaf, subleaf, registers);
    }
    check_processor(recording);
}

}  // namespace tarv_fuzz
