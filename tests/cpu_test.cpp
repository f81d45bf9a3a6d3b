// Faults to catch: processors that are not counted, counted twice or read on another; numbers of
// package, core and thread that swap; a thread left on one processor; a frequency believed that is
// not the counter's.

#include "tarvcore/hardware/cpu.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "tarvcore/affinity.h"
#include "tarvcore/impl/affinity_calls.h"
#include "tarvcore/impl/cpu_calls.h"
#include "tests/support/raised.h"
#include "tests/support/scoped_calls.h"

namespace {

using namespace tarvcore;
using hardware::Cpu;
using hardware::CpuidRecording;
using hardware::CpuInfo;
using tarv_test::raised;

CpuAffinityMask own_affinity() {
    CpuAffinityMask mask;
    ScopedCpuAffinity::get_thread_affinity(ACE_Thread_ID(), mask);
    return mask;
}

// A machine of 36 processors: two packages of eight cores with two threads, and four more.  The
// process may use those below 30 but not number 5; asked to go to number 7, a thread stays at 6.
struct Machine {
    static inline unsigned long thread_mask;
    static inline unsigned long mhz;
    static inline std::int64_t ticks;
    static inline unsigned readings;
    static inline std::uint64_t cycles_per_tick;
    static inline std::int64_t ticks_per_second;
    static constexpr unsigned long allowed = 0x3FFFFFDF;

    Machine() : affinity(impl::affinity_calls) {
        thread_mask = allowed;
        mhz = 2000;
        cycles_per_tick = 200;
        ticks_per_second = 10'000'000;
        affinity->set_thread_affinity_mask = [](void*, unsigned long mask) {
            const bool fails = mask == 0 || (mask & ~allowed) != 0;
            return fails ? 0 : std::exchange(thread_mask, mask);
        };
    }

    static unsigned current() {
        const auto cpu = static_cast<unsigned>(__builtin_ctzl(thread_mask));
        return cpu == 7 ? 6 : cpu;
    }
    static CpuInfo read() {
        CpuidRecording recording;
        recording.add(0, 0, {{11, 0x756E6547, 0x6C65746E, 0x49656E69}});
        recording.add(1, 0, {{0x306C3, current() << 24 | 32 << 16, 0, 1 << 28 | 1 << 4}});
        recording.add(11, 0, {{1, 2, 0x100}});
        recording.add(11, 1, {{4, 16, 0x201}});
        return CpuInfo(recording);
    }

    tarv_test::ScopedCalls<impl::AffinityCalls> affinity;
    impl::CpuCalls calls = {
        [] { return 36u; },
        current,
        read,
        [](unsigned) { return mhz; },
        [] { return static_cast<std::uint64_t>(ticks) * cycles_per_tick; },
        // Before every third reading the system takes the processor away.
        [] { return ticks += ++readings % 3 == 0 ? 50 : 1; },
        [] { return ticks_per_second; },
    };
};

TEST(Cpu, AsksEachProcessorOnItself) {
    const Machine machine;
    const Cpu cpu(machine.calls);
    EXPECT_EQ(Machine::thread_mask, Machine::allowed);
    EXPECT_EQ(cpu.processor_count(), 36u);
    EXPECT_EQ(cpu.package_count(), 2u);
    EXPECT_EQ(cpu.core_count(), 15u);
    for (unsigned i = 0; i < 40; ++i) {
        SCOPED_TRACE(i);
        ASSERT_EQ(cpu.is_known(i), i < 30 && i != 5 && i != 7);
        if (!cpu.is_known(i)) continue;
        EXPECT_EQ(cpu.cpu_info(i).apic_id(), i);
        EXPECT_EQ(cpu.package_number(i), i / 16);
        EXPECT_EQ(cpu.core_number(i), i / 2 % 8);
        EXPECT_EQ(cpu.thread_number(i), i % 2);
    }
    const std::pair<unsigned, std::string> unknown[] = {
        {35, "Nothing is known of processor 35: this process cannot run on it ['cpu' => \"35\"]"},
        {36, "There is no processor 36 ['cpu' => \"36\"]"},
    };
    for (const auto& [number, message] : unknown) {
        EXPECT_EQ(raised([&] { cpu.thread_number(number); }),
                  "error.tarvcore.hardware.invalidCpuId " + message +
                      " tarvcore::hardware::Cpu::cpu_info() //tarvcore/hardware/cpu.cpp");
    }
}

TEST(Cpu, TellsTheFrequencyThoughNoProcessorIsKnown) {
    Machine machine;
    machine.calls.current_processor = [] { return 99u; };
    const Cpu cpu(machine.calls);
    EXPECT_EQ(cpu.core_count(), 0u);
    EXPECT_EQ(cpu.frequency(), 2e9);
}

TEST(Cpu, BelievesTheSystemWhereTheCounterAgrees) {
    Machine machine;
    const auto frequency = [&machine] { return Cpu(machine.calls).frequency(); };
    EXPECT_EQ(frequency(), 2e9);
    Machine::mhz = 1999;
    EXPECT_EQ(frequency(), 1999e6) << "rounded";
    for (const unsigned long wrong : {0UL, 1000UL, 1990UL, 2010UL, 4000UL}) {
        Machine::mhz = wrong;
        EXPECT_NEAR(frequency(), 2e9, 2e6) << wrong;
    }
    Machine::mhz = 2000;
    Machine::cycles_per_tick = 300;
    EXPECT_NEAR(frequency(), 3e9, 3e6);
    Machine::ticks_per_second = 0;
    EXPECT_EQ(frequency(), 2e9) << "nothing to measure by";
    machine.calls.read_cpu_info = [] { return CpuInfo(CpuidRecording()); };
    machine.calls.performance_frequency = [] {
        ADD_FAILURE() << "the instruction is not there";
        return std::int64_t{1};
    };
    EXPECT_EQ(frequency(), 2e9);
}

TEST(Cpu, DescribesThisMachine) {
    const CpuAffinityMask before = own_affinity();
    const Cpu& machine = Cpu::machine();
    EXPECT_EQ(&Cpu::machine(), &machine);
    EXPECT_EQ(own_affinity(), before);

    SYSTEM_INFO system;
    GetSystemInfo(&system);
    EXPECT_GE(machine.processor_count(), system.dwNumberOfProcessors);
    unsigned known = 0;
    for (auto cpu = before.begin_cpu(); cpu != before.end_cpu(); ++cpu) {
        CpuAffinityMask alone;
        alone.set_cpu(*cpu);
        const ScopedCpuAffinity pinned(alone);
        EXPECT_EQ(machine.is_known(*cpu), GetCurrentProcessorNumber() == *cpu) << *cpu;
        if (!machine.is_known(*cpu)) continue;
        ++known;
        EXPECT_EQ(machine.cpu_info(*cpu).signature(), CpuInfo().signature());
    }
    EXPECT_GE(known, 1u);
    EXPECT_GE(known, machine.core_count());
    EXPECT_GE(machine.core_count(), machine.package_count());
    EXPECT_GT(machine.frequency(), 1e8);
    EXPECT_LT(machine.frequency(), 1e10);
}

}  // namespace
