// The processors of a machine.
#pragma once

#include <optional>
#include <vector>

#include "tarvcore/config.h"
#include "tarvcore/hardware/cpu_info.h"

namespace tarvcore::impl {
struct CpuCalls;
}

namespace tarvcore::hardware {

// Which logical processors there are, what each says about itself, and where it is: in which
// package, in which core of it, and which thread of the core.  Processors of AMD do not tell
// threads and cores apart this way: each thread counts as a core.
//
// Processors have the numbers that CpuAffinityMask gives them.  Each can only be asked by a thread
// that runs on it; so there may be some of which nothing is known: where the process may not use
// them, and beyond number 31.  They are counted all the same.  To ask for what is not known raises
// "error.tarvcore.hardware.invalidCpuId".
//
// A description is read once and does not change; several threads may ask it at once.
//
//     const Cpu& machine = Cpu::machine();
//     for (unsigned cpu = 0; cpu < machine.processor_count(); ++cpu) {
//         if (machine.is_known(cpu) && machine.thread_number(cpu) == 0) start_worker(cpu);
//     }
class TARVCORE_API Cpu {
public:
    // This machine.  The first call reads it: for that, its thread runs on one processor after the
    // other, and some milliseconds pass.  Afterwards it may run where it might before; where that
    // fails, "error.tarvcore.hardware.threadAffinity" is raised.
    static const Cpu& machine();

    // The machine that the calls tell of.
    explicit Cpu(const impl::CpuCalls& calls);

    // Logical processors of the machine, whether the process may use them or not.
    unsigned processor_count() const { return static_cast<unsigned>(processors_.size()); }
    // Packages and cores in which there are processors that are known.
    unsigned package_count() const { return package_count_; }
    unsigned core_count() const { return core_count_; }

    // Whether the processor could be asked.  The others of this class raise where it could not.
    bool is_known(unsigned cpu) const {
        return cpu < processors_.size() && processors_[cpu].has_value();
    }
    // What it said.
    const CpuInfo& cpu_info(unsigned cpu) const { return processor(cpu).info; }

    // As the APIC id tells them, of which 8 bits are known.  Numbers need not begin at 0 nor follow
    // one another; those of cores are within the package, those of threads within the core.
    unsigned package_number(unsigned cpu) const { return processor(cpu).package; }
    unsigned core_number(unsigned cpu) const { return processor(cpu).core; }
    unsigned thread_number(unsigned cpu) const { return processor(cpu).thread; }

    // Of the time-stamp counter, in cycles per second: what the system says ("~MHz", the same in
    // all processes) unless a measurement against the performance counter, good to about 0.1 %,
    // says otherwise.  0 where neither says anything.
    double frequency() const { return frequency_; }

private:
    struct Processor {
        explicit Processor(const CpuInfo& cpu_info);

        CpuInfo info;
        unsigned package, core, thread;
    };

    const Processor& processor(unsigned cpu) const {
        if (!is_known(cpu)) throw_unknown(cpu);
        return *processors_[cpu];
    }
    [[noreturn]] void throw_unknown(unsigned cpu) const;

    std::vector<std::optional<Processor>> processors_;
    unsigned package_count_ = 0;
    unsigned core_count_ = 0;
    double frequency_ = 0;
};

}  // namespace tarvcore::hardware
