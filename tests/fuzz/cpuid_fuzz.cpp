// Recorded CPUID values: their text, beside a regular expression; and what a processor with
// arbitrary values says of itself.
#include <regex>
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

void check_text(const std::string& text) {
    CpuidRecording recording;
    const std::vector<char> exact(text.begin(), text.end());
    const unsigned count = recording.add_text({exact.data(), exact.size()});
    // What begins like "CPUID 00000004: 1C004121-01C0003F-0000003F-00000000 [SL 00]"; the subleaf
    // may be missing.
    static const std::regex value(
        "CPUID [[:xdigit:]]{8}: ([[:xdigit:]]{8}-){3}[[:xdigit:]]{8}"
        "(?! \\[SL (?![[:xdigit:]]{2}))");
    unsigned expected = 0;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        using std::regex_constants::match_continuous;
        if (!std::regex_search(line, value, match_continuous)) continue;
        if (line.starts_with("CPUID 00000000") && expected != 0) break;  // the next processor
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
