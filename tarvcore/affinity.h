// On which processors threads run.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <iterator>

#include "ace/OS_NS_Thread.h"
#include "tarvcore/config.h"
#include "tarvcore/source_location.h"

namespace tarvcore {

// A set of processors, by their numbers from 0 to 31.  Greater numbers are in no set, and putting
// one in does nothing.  An ordinary value, empty at first.
//
//     CpuAffinityMask mask;
//     mask.set_cpu(1);
//     for (auto cpu = mask.begin_cpu(); cpu != mask.end_cpu(); ++cpu) start_worker(*cpu);
class CpuAffinityMask {
public:
    class const_cpu_iterator;

    constexpr CpuAffinityMask() = default;

    // Processors that a mask can have.
    static constexpr unsigned max_cpus() { return 32; }

    // Put a processor in, take it out, and ask for it.
    constexpr void set_cpu(unsigned cpu) { mask_ |= bit(cpu); }
    constexpr void clear_cpu(unsigned cpu) { mask_ &= ~bit(cpu); }
    constexpr bool is_set(unsigned cpu) const { return (mask_ & bit(cpu)) != 0; }
    constexpr void clear() { mask_ = 0; }
    constexpr unsigned size() const { return static_cast<unsigned>(std::popcount(mask_)); }

    // Operations of sets.  The result of the latter two may be this mask or the other one.
    constexpr void add(const CpuAffinityMask& other) { mask_ |= other.mask_; }
    constexpr void subtract(const CpuAffinityMask& other) { mask_ &= ~other.mask_; }
    constexpr void union_mask(const CpuAffinityMask& other, CpuAffinityMask& result) const {
        result.mask_ = mask_ | other.mask_;
    }
    constexpr void intersection_mask(const CpuAffinityMask& other, CpuAffinityMask& result) const {
        result.mask_ = mask_ & other.mask_;
    }

    // From the lowest number to the highest.
    constexpr const_cpu_iterator begin_cpu() const;
    constexpr const_cpu_iterator end_cpu() const;

    friend constexpr bool operator==(const CpuAffinityMask&, const CpuAffinityMask&) = default;

    // Binary digits, that of processor 0 last.  Before the whole bytes that the highest processor
    // asks for, one at least, stands one more "0": {1, 3} is "000001010".  This is meant; the
    // stream's width covers the whole.
    friend TARVCORE_API std::ostream& operator<<(std::ostream& os, const CpuAffinityMask& mask);

private:
    friend class ScopedCpuAffinity;

    constexpr explicit CpuAffinityMask(unsigned long mask) : mask_(mask) {}
    constexpr void set_mask(unsigned long mask) { mask_ = mask; }

    static constexpr std::uint32_t bit(unsigned cpu) {
        return cpu < max_cpus() ? std::uint32_t{1} << cpu : 0;
    }
    // The first processor of the set that is not below `cpu`; max_cpus() if there is none.
    constexpr unsigned next_cpu(unsigned cpu) const {
        const std::uint32_t below = bit(cpu) - 1;
        return static_cast<unsigned>(std::countr_zero(mask_ & ~below));
    }

    std::uint32_t mask_ = 0;
};

// Goes through a mask, which must live; where the mask is changed meanwhile, the next step sees it.
// What it refers to are numbers, not places in the mask: in terms of C++17 it is an input iterator,
// though it may be copied and used again.  Equal are iterators at the same number.
class CpuAffinityMask::const_cpu_iterator {
public:
    using iterator_concept = std::forward_iterator_tag;
    using iterator_category = std::input_iterator_tag;
    using value_type = unsigned;
    using difference_type = std::ptrdiff_t;
    using pointer = void;
    using reference = unsigned;

    // At the end of every mask.
    constexpr const_cpu_iterator() = default;

    // At the end, these raise std::out_of_range.
    constexpr unsigned operator*() const {
        if (cpu_ == max_cpus()) throw_out_of_range("dereference of bad cpu iterator");
        return cpu_;
    }
    constexpr const_cpu_iterator& operator++() {
        if (cpu_ == max_cpus()) throw_out_of_range("advancing cpu beyond end()");
        cpu_ = mask_->next_cpu(cpu_ + 1);
        return *this;
    }
    constexpr const_cpu_iterator operator++(int) {
        const const_cpu_iterator old = *this;
        ++*this;
        return old;
    }

    friend constexpr bool operator==(const const_cpu_iterator& a, const const_cpu_iterator& b) {
        return a.cpu_ == b.cpu_;
    }

private:
    friend class CpuAffinityMask;

    constexpr const_cpu_iterator(unsigned cpu, const CpuAffinityMask& mask)
        : cpu_(cpu), mask_(&mask) {}

    [[noreturn]] TARVCORE_API static void throw_out_of_range(const char* what);

    unsigned cpu_ = max_cpus();
    const CpuAffinityMask* mask_ = nullptr;
};

constexpr CpuAffinityMask::const_cpu_iterator CpuAffinityMask::begin_cpu() const {
    return {next_cpu(0), *this};
}

constexpr CpuAffinityMask::const_cpu_iterator CpuAffinityMask::end_cpu() const {
    return {max_cpus(), *this};
}

// Confines a thread to a set of processors while the guard lives, and then to those that it was
// confined to before.  Nesting, copies, threads and destructors that raise: as with
// ScopedThreadPriority.  Failures raise "error.tarvcore.hardware.threadAffinity".
//
// Windows refuses sets that are empty or have processors that the process may not use.
//
//     {
//         const ScopedCpuAffinity pinned(mask);
//         measure();
//     }
class TARVCORE_API ScopedCpuAffinity {
public:
    // If either the old set cannot be had or the new one not be set, there is no guard.
    explicit ScopedCpuAffinity(const CpuAffinityMask& mask,
                               const ACE_Thread_ID& thread = ACE_Thread_ID());
    ~ScopedCpuAffinity() noexcept(false);
    ScopedCpuAffinity(const ScopedCpuAffinity&) = default;
    ScopedCpuAffinity& operator=(const ScopedCpuAffinity&) = default;

    // Not undone by anybody.
    static void set_thread_affinity(const ACE_Thread_ID& thread, const CpuAffinityMask& mask);
    // `mask` becomes the one until now.
    static void swap_thread_affinity(const ACE_Thread_ID& thread, CpuAffinityMask& mask);
    // Windows tells a thread's processors only to who sets them: for a moment the thread may run
    // on all those of the process, and what others set in that moment is lost.
    static void get_thread_affinity(const ACE_Thread_ID& thread, CpuAffinityMask& mask);
    // Whether Windows takes the set.  It is tried and taken back at once; nothing raises.
    [[nodiscard]] static bool can_set_affinity(const ACE_Thread_ID& thread,
                                               const CpuAffinityMask& mask);

private:
    // Answers the mask until now.  An error has the location of the caller.
    static CpuAffinityMask exchange_affinity(const ACE_Thread_ID& thread,
                                             const CpuAffinityMask& mask,
                                             const LiteralLocation& location);

    CpuAffinityMask old_mask_;
    ACE_Thread_ID thread_;
};

// Gives a thread another ideal processor, the one that Windows prefers to run it on, while the
// guard lives.  In all else as ScopedCpuAffinity.
class TARVCORE_API ScopedIdealCpu {
public:
    // A number from 0 to 31.
    explicit ScopedIdealCpu(unsigned cpu, const ACE_Thread_ID& thread = ACE_Thread_ID());
    ~ScopedIdealCpu() noexcept(false);
    ScopedIdealCpu(const ScopedIdealCpu&) = default;
    ScopedIdealCpu& operator=(const ScopedIdealCpu&) = default;

    // The ideal processor until now.  The number 32 changes nothing.
    static unsigned swap_ideal_cpu(const ACE_Thread_ID& thread, unsigned cpu);
    // The same without a change, and without the answer.
    static unsigned get_ideal_cpu(const ACE_Thread_ID& thread);
    static void set_ideal_cpu(const ACE_Thread_ID& thread, unsigned cpu);

private:
    unsigned old_cpu_;
    ACE_Thread_ID thread_;
};

}  // namespace tarvcore
