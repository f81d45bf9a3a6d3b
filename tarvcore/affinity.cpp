#include "tarvcore/affinity.h"

#include <ostream>
#include <stdexcept>
#include <string_view>

#include "tarvcore/error_code_constants.h"
#include "tarvcore/error_composer.h"
#include "tarvcore/error_exception.h"
#include "tarvcore/impl/affinity_calls.h"
#include "tarvcore/impl/stream_text.h"

#include <windows.h>

TARVCORE_SOURCE_FILE("$Id: //tarvcore/affinity.cpp#1 $");

namespace tarvcore {
namespace {

constexpr impl::AffinityCalls system_calls = {
    [](unsigned long& mask) {
        DWORD of_system = 0;
        return GetProcessAffinityMask(GetCurrentProcess(), &mask, &of_system) != 0;
    },
    [](void* thread, unsigned long mask) { return SetThreadAffinityMask(thread, mask); },
    [](void* thread, unsigned long cpu) { return SetThreadIdealProcessor(thread, cpu); },
    [] { return GetLastError(); },
};

// In place of a processor: only answer.
static_assert(CpuAffinityMask::max_cpus() == MAXIMUM_PROCESSORS);

}  // namespace

constinit std::atomic<const impl::AffinityCalls*> impl::affinity_calls = &system_calls;

std::ostream& operator<<(std::ostream& os, const CpuAffinityMask& mask) {
    const unsigned bits = static_cast<unsigned>(std::bit_width(mask.mask_));
    const unsigned bytes = bits == 0 ? 1 : (bits + 7) / 8;
    char digits[CpuAffinityMask::max_cpus() + 1];
    char* end = digits;
    for (unsigned cpu = bytes * 8 + 1; cpu-- > 0;)
        *end++ = mask.is_set(cpu) ? '1' : '0';
    return os << std::string_view(digits, end);
}

void CpuAffinityMask::const_cpu_iterator::throw_out_of_range(const char* what) {
    throw std::out_of_range(what);
}

ScopedCpuAffinity::ScopedCpuAffinity(const CpuAffinityMask& mask, const ACE_Thread_ID& thread)
    : old_mask_(mask), thread_(thread) {
    swap_thread_affinity(thread_, old_mask_);
}

ScopedCpuAffinity::~ScopedCpuAffinity() noexcept(false) {
    set_thread_affinity(thread_, old_mask_);
}

void ScopedCpuAffinity::set_thread_affinity(const ACE_Thread_ID& thread,
                                            const CpuAffinityMask& mask) {
    exchange_affinity(thread, mask,
                      TARVCORE_LOCATION("tarvcore::ScopedCpuAffinity::set_thread_affinity()"));
}

void ScopedCpuAffinity::swap_thread_affinity(const ACE_Thread_ID& thread, CpuAffinityMask& mask) {
    mask = exchange_affinity(
        thread, mask, TARVCORE_LOCATION("tarvcore::ScopedCpuAffinity::swap_thread_affinity()"));
}

void ScopedCpuAffinity::get_thread_affinity(const ACE_Thread_ID& thread, CpuAffinityMask& mask) {
    constexpr const char* function = "tarvcore::ScopedCpuAffinity::get_thread_affinity()";
    const impl::AffinityCalls& calls = *impl::affinity_calls;
    unsigned long of_process = 0;
    if (!calls.process_affinity_mask(of_process)) {
        throw_error(error::tarvcore_hardware_threadAffinity,
                    "GetProcessAffinityMask(GetCurrentProcess())", TARVCORE_LOCATION(function));
    }
    const CpuAffinityMask old =
        exchange_affinity(thread, CpuAffinityMask(of_process), TARVCORE_LOCATION(function));
    exchange_affinity(thread, old, TARVCORE_LOCATION(function));
    mask = old;
}

bool ScopedCpuAffinity::can_set_affinity(const ACE_Thread_ID& thread, const CpuAffinityMask& mask) {
    const impl::AffinityCalls& calls = *impl::affinity_calls;
    const unsigned long old = calls.set_thread_affinity_mask(thread.handle(), mask.mask_);
    if (old == 0) return false;
    calls.set_thread_affinity_mask(thread.handle(), old);
    return true;
}

CpuAffinityMask ScopedCpuAffinity::exchange_affinity(const ACE_Thread_ID& thread,
                                                     const CpuAffinityMask& mask,
                                                     const LiteralLocation& location) {
    const impl::AffinityCalls& calls = *impl::affinity_calls;
    const unsigned long old = calls.set_thread_affinity_mask(thread.handle(), mask.mask_);
    if (old != 0) return CpuAffinityMask(old);
    const unsigned long cause = calls.last_error();
    ErrorComposer("SetThreadAffinity({@threadId}, {@mask})")
        .param("threadId", thread.handle())
        .param("mask", impl::stream_text(mask))
        .throw_with_nested_winerror(error::tarvcore_hardware_threadAffinity, location, cause, true);
}

ScopedIdealCpu::ScopedIdealCpu(unsigned cpu, const ACE_Thread_ID& thread)
    : old_cpu_(swap_ideal_cpu(thread, cpu)), thread_(thread) {}

ScopedIdealCpu::~ScopedIdealCpu() noexcept(false) {
    swap_ideal_cpu(thread_, old_cpu_);
}

unsigned ScopedIdealCpu::swap_ideal_cpu(const ACE_Thread_ID& thread, unsigned cpu) {
    constexpr unsigned long failed = 0xFFFFFFFF;
    const impl::AffinityCalls& calls = *impl::affinity_calls;
    const unsigned long old = calls.set_thread_ideal_processor(thread.handle(), cpu);
    if (old != failed) return old;
    const unsigned long cause = calls.last_error();
    ErrorComposer("SetThreadIdealProcessor({@threadId}, {@newIdealCpu})")
        .param("threadId", thread.handle())
        .param("newIdealCpu", cpu)
        .throw_with_nested_winerror(error::tarvcore_hardware_threadAffinity,
                                    TARVCORE_LOCATION("tarvcore::ScopedIdealCpu::swap_ideal_cpu()"),
                                    cause, true);
}

unsigned ScopedIdealCpu::get_ideal_cpu(const ACE_Thread_ID& thread) {
    return swap_ideal_cpu(thread, MAXIMUM_PROCESSORS);
}

void ScopedIdealCpu::set_ideal_cpu(const ACE_Thread_ID& thread, unsigned cpu) {
    swap_ideal_cpu(thread, cpu);
}

}  // namespace tarvcore
