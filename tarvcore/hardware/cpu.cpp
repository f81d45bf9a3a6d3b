#include "tarvcore/hardware/cpu.h"

#include <cmath>
#include <limits>
#include <set>
#include <utility>

#include "tarvcore/affinity.h"
#include "tarvcore/error_composer.h"
#include "tarvcore/error_exception.h"
#include "tarvcore/impl/cpu_calls.h"
//
#include <windows.h>
#include <x86intrin.h>

TARVCORE_SOURCE_FILE("$Id: //tarvcore/hardware/cpu.cpp#1 $");

namespace tarvcore::hardware {
namespace {

constexpr double hz_per_mhz = 1e6;

constexpr impl::CpuCalls system_calls = {
    []() -> unsigned { return GetActiveProcessorCount(ALL_PROCESSOR_GROUPS); },
    []() -> unsigned { return GetCurrentProcessorNumber(); },
    [] { return CpuInfo(); },
    [](unsigned cpu) {
        const std::wstring key =
            L"HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\" + std::to_wstring(cpu);
        DWORD mhz = 0;
        DWORD size = sizeof mhz;
        RegGetValueW(HKEY_LOCAL_MACHINE, key.c_str(), L"~MHz", RRF_RT_REG_DWORD | RRF_ZEROONFAILURE,
                     nullptr, &mhz, &size);
        return mhz;
    },
    []() -> std::uint64_t { return __rdtsc(); },
    []() -> std::int64_t {
        LARGE_INTEGER ticks;
        QueryPerformanceCounter(&ticks);
        return ticks.QuadPart;
    },
    []() -> std::int64_t {
        LARGE_INTEGER frequency;
        QueryPerformanceFrequency(&frequency);
        return frequency.QuadPart;
    },
};

// Both counters at one moment.
struct Moment {
    std::uint64_t cycles = 0;
    std::int64_t ticks = 0;
};

// The system may take the processor away between two readings; of several tries the one counts in
// which it took the least time.
Moment read_moment(const impl::CpuCalls& calls) {
    constexpr int tries = 5;
    Moment best;
    std::int64_t shortest = std::numeric_limits<std::int64_t>::max();
    for (int i = 0; i < tries; ++i) {
        const std::int64_t before = calls.performance_counter();
        const std::uint64_t cycles = calls.time_stamp_counter();
        const std::int64_t after = calls.performance_counter();
        if (after - before < shortest) {
            shortest = after - before;
            best = {cycles, before + shortest / 2};
        }
    }
    return best;
}

double measured_frequency(const impl::CpuCalls& calls) {
    const std::int64_t ticks_per_second = calls.performance_frequency();
    if (ticks_per_second <= 0) return 0;
    const std::int64_t duration = ticks_per_second / 400;  // 2.5 ms

    const Moment begin = read_moment(calls);
    while (calls.performance_counter() - begin.ticks < duration) {
    }
    const Moment end = read_moment(calls);
    return static_cast<double>(end.cycles - begin.cycles) /
           static_cast<double>(end.ticks - begin.ticks) * static_cast<double>(ticks_per_second);
}

double frequency_of(const impl::CpuCalls& calls, unsigned cpu, const CpuInfo& info) {
    // The system cuts fractions off, and the measurement has its error.
    constexpr double rounding = hz_per_mhz;
    constexpr double measuring_error = 1e-3;

    const double told = static_cast<double>(calls.registry_mhz(cpu)) * hz_per_mhz;
    if (!info.timestamp_counter()) return told;
    const double measured = measured_frequency(calls);
    const bool agree = std::abs(measured - told) <= rounding + measured * measuring_error;
    return agree || measured == 0 ? told : measured;
}

// Whether threads of the process may be made to run on it.
bool can_pin(unsigned cpu, CpuAffinityMask* mask) {
    mask->clear();
    mask->set_cpu(cpu);
    return cpu < CpuAffinityMask::max_cpus() &&
           ScopedCpuAffinity::can_set_affinity(ACE_Thread_ID(), *mask);
}

}  // namespace

Cpu::Processor::Processor(const CpuInfo& cpu_info) : info(cpu_info) {
    const unsigned id = info.apic_id();
    const unsigned package_mask = info.apic_id_package_mask();
    const unsigned core_mask = info.apic_id_core_mask();
    package = (id & package_mask) >> info.package_apic_id_shift();
    core = (id & core_mask & ~package_mask) >> info.core_apic_id_shift();
    thread = id & ~core_mask;
}

Cpu::Cpu(const impl::CpuCalls& calls) : processors_(calls.processor_count()) {
    std::set<unsigned> packages;
    std::set<std::pair<unsigned, unsigned>> cores;
    for (unsigned cpu = 0; cpu < processors_.size(); ++cpu) {
        CpuAffinityMask mask;
        if (!can_pin(cpu, &mask)) continue;
        const ScopedCpuAffinity pinned(mask);
        // Some systems take every mask.
        if (calls.current_processor() != cpu) continue;
        const Processor& processor = processors_[cpu].emplace(calls.read_cpu_info());
        packages.insert(processor.package);
        cores.insert({processor.package, processor.core});
        // On one processor alone, as the counters of several may differ.
        if (frequency_ == 0) frequency_ = frequency_of(calls, cpu, processor.info);
    }
    package_count_ = static_cast<unsigned>(packages.size());
    core_count_ = static_cast<unsigned>(cores.size());
    if (frequency_ == 0) frequency_ = frequency_of(calls, 0, calls.read_cpu_info());
}

const Cpu& Cpu::machine() {
    // Never destroyed: others' static objects may ask it to the end.
    static const Cpu& machine = *new Cpu(system_calls);
    return machine;
}

void Cpu::throw_unknown(unsigned cpu) const {
    const bool is_there = cpu < processors_.size();
    ErrorComposer(is_there ? "Nothing is known of processor {@cpu}: this process cannot run on it"
                           : "There is no processor {@cpu}")
        .param("cpu", cpu)
        .throw_error(error::tarvcore_hardware_invalidCpuId,
                     TARVCORE_LOCATION("tarvcore::hardware::Cpu::cpu_info()"));
}

}  // namespace tarvcore::hardware
