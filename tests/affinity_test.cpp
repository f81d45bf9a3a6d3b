// Faults to catch: shifts beyond the mask; iterators that skip, repeat or run past the end; guards
// that act on another thread or lose the old mask; what Windows refuses, and Wine takes, unseen.

#include "tarvcore/affinity.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tarvcore/impl/affinity_calls.h"
#include "tests/support/other_thread.h"
#include "tests/support/raised.h"
#include "tests/support/scoped_calls.h"

namespace {

using namespace tarvcore;
using tarv_test::OtherThread;
using tarv_test::raised;
using tarv_test::raised_what;
using tarv_test::ScopedCalls;

static_assert(std::forward_iterator<CpuAffinityMask::const_cpu_iterator>);

CpuAffinityMask mask_of(const std::vector<unsigned>& cpus) {
    CpuAffinityMask mask;
    for (const unsigned cpu : cpus)
        mask.set_cpu(cpu);
    return mask;
}

std::string text(const CpuAffinityMask& mask) {
    std::ostringstream os;
    os << mask;
    return os.str();
}

CpuAffinityMask affinity(const ACE_Thread_ID& thread) {
    CpuAffinityMask mask;
    ScopedCpuAffinity::get_thread_affinity(thread, mask);
    return mask;
}

TEST(CpuAffinityMask, ListsAndPrintsItsProcessors) {
    const std::pair<std::vector<unsigned>, const char*> rows[] = {
        {{}, "000000000"},
        {{0}, "000000001"},
        {{1, 3}, "000001010"},
        {{7}, "010000000"},
        {{8}, "00000000100000000"},
        {{0, 23}, "0100000000000000000000001"},
        {{24}, "000000001000000000000000000000000"},
        {{0, 1, 30, 31}, "011000000000000000000000000000011"},
    };
    for (const auto& [cpus, digits] : rows) {
        CpuAffinityMask mask = mask_of(cpus);
        EXPECT_EQ(text(mask), digits);
        EXPECT_EQ(std::vector<unsigned>(mask.begin_cpu(), mask.end_cpu()), cpus) << digits;
        EXPECT_EQ(mask.size(), cpus.size()) << digits;
        for (const unsigned beyond : {32u, 33u, 64u, 0x80000000u, 0xFFFFFFFFu}) {
            mask.set_cpu(beyond);
            EXPECT_FALSE(mask.is_set(beyond)) << beyond;
            mask.clear_cpu(beyond);
            EXPECT_EQ(text(mask), digits) << beyond;
        }
    }
    EXPECT_EQ((std::ostringstream() << std::setw(10) << mask_of({1})).str(), " 000000010");
}

TEST(CpuAffinityMask, IsASet) {
    CpuAffinityMask mask = mask_of({0, 1, 2, 31});
    const CpuAffinityMask other = mask_of({1, 2, 5});
    CpuAffinityMask result;
    mask.union_mask(other, result);
    EXPECT_EQ(result, mask_of({0, 1, 2, 5, 31}));
    mask.intersection_mask(other, result);
    EXPECT_EQ(result, mask_of({1, 2}));
    mask.subtract(other);
    EXPECT_EQ(mask, mask_of({0, 31}));
    mask.add(other);
    mask.clear_cpu(31);
    EXPECT_EQ(mask, mask_of({0, 1, 2, 5}));
    mask.clear();
    EXPECT_EQ(mask.begin_cpu(), mask.end_cpu());
}

TEST(CpuAffinityMask, HasIteratorsThatStopAtTheEnd) {
    const CpuAffinityMask mask = mask_of({4, 31});
    auto cpu = mask.begin_cpu();
    EXPECT_EQ(*cpu++, 4u);
    EXPECT_EQ(*cpu, 31u);
    EXPECT_EQ(++cpu, mask.end_cpu());
    EXPECT_EQ(cpu, CpuAffinityMask::const_cpu_iterator());

    EXPECT_THROW(++cpu, std::out_of_range);
    EXPECT_EQ(raised_what([&cpu] { ++cpu; }), "advancing cpu beyond end()");
    EXPECT_EQ(raised_what([&cpu] { return *cpu; }), "dereference of bad cpu iterator");
}

TEST(ScopedCpuAffinity, RestoresInReverseOrder) {
    OtherThread other;
    const CpuAffinityMask all = affinity(ACE_Thread_ID());
    ASSERT_GT(all.size(), 0u);
    const CpuAffinityMask first = mask_of({*all.begin_cpu()});
    CpuAffinityMask rest = all;
    if (all.size() > 1) rest.subtract(first);
    {
        const ScopedCpuAffinity outer(first, other.id());
        {
            const ScopedCpuAffinity inner(rest, other.id());
            EXPECT_EQ(affinity(other.id()), rest);
            EXPECT_EQ(affinity(ACE_Thread_ID()), all);
        }
        EXPECT_EQ(affinity(other.id()), first);
        CpuAffinityMask swapped = rest;
        ScopedCpuAffinity::swap_thread_affinity(other.id(), swapped);
        EXPECT_EQ(swapped, first);
        EXPECT_TRUE(ScopedCpuAffinity::can_set_affinity(other.id(), first));
        EXPECT_EQ(affinity(other.id()), rest);
        const ScopedCpuAffinity own(first);
        EXPECT_EQ(affinity(ACE_Thread_ID()), first);
    }
    EXPECT_EQ(affinity(other.id()), all);
    EXPECT_EQ(affinity(ACE_Thread_ID()), all);

    const ACE_Thread_ID bad(1, reinterpret_cast<ACE_hthread_t>(0xbad0));
    EXPECT_NE(raised([&] {
                  ScopedCpuAffinity::set_thread_affinity(bad, all);
              }).find("< error.os.windows.6"),
              std::string::npos);
}

// Windows as it is: one thread of a process that may use the processors 0 and 1.
struct Windows {
    static constexpr unsigned long none = 0xFFFFFFFF;
    static inline unsigned long process;
    static inline unsigned long thread;
    static inline unsigned long ideal;
    static inline unsigned long refused;  // a mask, or an ideal processor

    Windows() : calls(impl::affinity_calls) {
        process = 0b11;
        thread = 0b01;
        ideal = 1;
        refused = none;
        calls->process_affinity_mask = [](unsigned long& mask) {
            mask = process;
            return process != 0;
        };
        calls->set_thread_affinity_mask = [](void*, unsigned long mask) {
            const bool fails = mask == 0 || (mask & ~process) != 0 || mask == refused;
            return fails ? 0 : std::exchange(thread, mask);
        };
        calls->set_thread_ideal_processor = [](void*, unsigned long cpu) {
            if (cpu == MAXIMUM_PROCESSORS) return ideal;
            const bool fails = cpu > MAXIMUM_PROCESSORS || cpu == refused;
            return fails ? none : std::exchange(ideal, cpu);
        };
        calls->last_error = [] { return 87UL; };
    }

    ScopedCalls<impl::AffinityCalls> calls;
};

const ACE_Thread_ID thread(1, reinterpret_cast<ACE_hthread_t>(0x44));
const std::string failure = "error.tarvcore.hardware.threadAffinity ";
const std::string causes =
    "() //tarvcore/affinity.cpp\n< error.errno.EINVAL\n< error.os.windows.87";

std::string set_failure(const std::string& mask, const std::string& function) {
    return failure + "SetThreadAffinity(0x44, " + mask + ") ['mask' => \"" + mask +
           "\", 'threadId' => \"0x44\"] tarvcore::ScopedCpuAffinity::" + function + causes;
}

std::string ideal_failure(const std::string& cpu) {
    return failure + "SetThreadIdealProcessor(0x44, " + cpu + ") ['newIdealCpu' => \"" + cpu +
           "\", 'threadId' => \"0x44\"] tarvcore::ScopedIdealCpu::swap_ideal_cpu" + causes;
}

TEST(ScopedCpuAffinity, RaisesWhatWindowsRefuses) {
    const Windows windows;
    const CpuAffinityMask bad = mask_of({0, 2});
    CpuAffinityMask mask = bad;
    EXPECT_EQ(raised([&] { ScopedCpuAffinity::set_thread_affinity(thread, bad); }),
              set_failure("000000101", "set_thread_affinity"));
    EXPECT_EQ(raised([&] { ScopedCpuAffinity::swap_thread_affinity(thread, mask); }),
              set_failure("000000101", "swap_thread_affinity"));
    EXPECT_EQ(mask, bad);
    EXPECT_EQ(raised([&] { const ScopedCpuAffinity guard(bad, thread); }),
              set_failure("000000101", "swap_thread_affinity"));
    EXPECT_FALSE(ScopedCpuAffinity::can_set_affinity(thread, bad));
    EXPECT_EQ(windows.thread, 0b01u);
    EXPECT_EQ(raised([&] {
                  const ScopedCpuAffinity guard(mask_of({1}), thread);
                  windows.refused = 0b01;
              }),
              set_failure("000000001", "set_thread_affinity"))
        << "out of the destructor";
}

TEST(ScopedCpuAffinity, AsksForTheAffinityBySettingIt) {
    const Windows windows;
    EXPECT_EQ(affinity(thread), mask_of({0}));
    EXPECT_EQ(windows.thread, 0b01u);
    CpuAffinityMask mask = mask_of({9});
    const auto get = [&mask] { ScopedCpuAffinity::get_thread_affinity(thread, mask); };
    for (const auto& [refused, digits] : {std::pair{0b11, "000000011"}, {0b01, "000000001"}}) {
        windows.refused = static_cast<unsigned long>(refused);
        EXPECT_EQ(raised(get), set_failure(digits, "get_thread_affinity"));
    }
    windows.process = 0;
    EXPECT_EQ(raised(get), failure +
                               "GetProcessAffinityMask(GetCurrentProcess()) [] "
                               "tarvcore::ScopedCpuAffinity::get_thread_affinity() "
                               "//tarvcore/affinity.cpp");
    EXPECT_EQ(mask, mask_of({9})) << "changed by a call that failed";
}

TEST(ScopedIdealCpu, RestoresInReverseOrder) {
    const Windows windows;
    {
        const ScopedIdealCpu outer(5, thread);
        const ScopedIdealCpu inner(0, thread);
        EXPECT_EQ(ScopedIdealCpu::get_ideal_cpu(thread), 0u);
        EXPECT_EQ(ScopedIdealCpu::swap_ideal_cpu(thread, 3), 0u);
    }
    EXPECT_EQ(ScopedIdealCpu::get_ideal_cpu(thread), 1u);

    EXPECT_EQ(raised([] { ScopedIdealCpu::set_ideal_cpu(thread, 4000000000); }),
              ideal_failure("4000000000"));
    EXPECT_EQ(raised([&] {
                  const ScopedIdealCpu guard(0, thread);
                  windows.refused = 1;
              }),
              ideal_failure("1"))
        << "out of the destructor";
}

TEST(ScopedIdealCpu, AsksTheSystem) {
    EXPECT_LT(ScopedIdealCpu::get_ideal_cpu(ACE_Thread_ID()), CpuAffinityMask::max_cpus());
    EXPECT_NE(raised([] {
                  ScopedIdealCpu::set_ideal_cpu(ACE_Thread_ID(), 33);
              }).find("< error.os.windows.87"),
              std::string::npos);
}

}  // namespace
