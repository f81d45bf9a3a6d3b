// Where the values come from that the CPUID instruction answers.
#pragma once

#include <cstdint>
#include <map>
#include <string_view>
#include <utility>

#include "tarvcore/config.h"

namespace tarvcore::hardware {

// What one execution of CPUID leaves in the registers EAX, EBX, ECX and EDX, in this order.
struct CpuidRegisters {
    std::uint32_t values[4] = {};  // EAX, EBX, ECX, EDX

    // By the registers' names.
    constexpr std::uint32_t eax() const { return values[0]; }
    constexpr std::uint32_t ebx() const { return values[1]; }
    constexpr std::uint32_t ecx() const { return values[2]; }
    constexpr std::uint32_t edx() const { return values[3]; }

    // One of the 16 bytes, from the lowest of EAX (0) to the highest of EDX (15); modulo 16.
    constexpr std::uint8_t byte_at(unsigned i) const {
        return static_cast<std::uint8_t>(values[i / 4 % 4] >> (i % 4 * 8));
    }
};

// Answers as a processor does.  What CpuInfo is made of, unless it reads the processor itself.
class TARVCORE_API CpuidSource {
public:
    virtual ~CpuidSource();

    // Whether there is the instruction at all.
    virtual bool has_cpuid() const = 0;
    // What it answers.  A leaf that the processor does not have is zero, or that of another leaf.
    virtual CpuidRegisters read(std::uint32_t leaf, std::uint32_t subleaf) const = 0;
};

// Recorded values, of this or another processor.  What was not recorded is zero, as are leaves that
// a processor has reserved.  An ordinary value: several threads may read one at once.
//
//     CpuidRecording recording;
//     recording.add_text("CPUID 00000000: 00000001-756E6547-6C65746E-49656E69\n...");
//     const CpuInfo info(recording);
class TARVCORE_API CpuidRecording : public CpuidSource {
public:
    // Keeps the values, unless there already are some of this leaf and subleaf.
    void add(std::uint32_t leaf, std::uint32_t subleaf, const CpuidRegisters& registers);

    // Keeps the values that lines of a text tell:
    //
    //     CPUID LEAF: EAX-EBX-ECX-EDX
    //     CPUID LEAF: EAX-EBX-ECX-EDX [SL nn]
    //
    // all in hexadecimal, eight digits each and two for the subleaf, which is 0 where it is not
    // told.  Other lines do not count.  A text of several processors tells of each from its leaf 0
    // on; the first one is taken.  Answers how many values it has read.
    unsigned add_text(std::string_view text);

    // Whether anything was recorded.
    bool has_cpuid() const override;
    // Zero where nothing was recorded of the leaf.
    CpuidRegisters read(std::uint32_t leaf, std::uint32_t subleaf) const override;

private:
    std::map<std::pair<std::uint32_t, std::uint32_t>, CpuidRegisters> leaves_;
};

}  // namespace tarvcore::hardware
