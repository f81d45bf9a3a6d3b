// What the description of a machine's processors is made of.
#pragma once

#include <cstdint>

#include "tarvcore/config.h"
#include "tarvcore/hardware/cpu_info.h"

namespace tarvcore::impl {

struct CpuCalls {
    // Of the whole machine.
    unsigned (*processor_count)();
    // Where the thread runs at the moment.
    unsigned (*current_processor)();
    // About that processor.
    hardware::CpuInfo (*read_cpu_info)();
    // What the system has found out about the frequency, in MHz; 0: nothing.
    unsigned long (*registry_mhz)(unsigned cpu);
    std::uint64_t (*time_stamp_counter)();
    std::int64_t (*performance_counter)();
    // Of the performance counter, in ticks per second.
    std::int64_t (*performance_frequency)();
};

}  // namespace tarvcore::impl
