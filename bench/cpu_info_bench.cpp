#include "tarvcore/hardware/cpu_info.h"

#include "bench/support/row.h"
#include "bench/topics.h"
//
#include <cpuid.h>

namespace tarv_bench {
namespace {

using tarvcore::hardware::CpuInfo;

// The instruction alone, as often as it takes to read all that a CpuInfo holds.
void read_leaves(unsigned base, unsigned count) {
    for (unsigned i = 0; i < count; ++i) {
        unsigned eax, ebx, ecx, edx;
        __cpuid_count(base + i, 0, eax, ebx, ecx, edx);
        keep(eax);
    }
}

}  // namespace

void add_cpu_info_rows() {
    add_row("processor: a feature", "2 ns",
            {{"CpuInfo::avx2",
              [](benchmark::State& state) {
                  const CpuInfo info;
                  measure(state, [&] {
                      keep(info);
                      keep(info.avx2());
                  });
              }},
             {"__builtin_cpu_supports", [](benchmark::State& state) {
                  measure(state, [] { keep(__builtin_cpu_supports("avx2")); });
              }}});
    add_row("processor: read it", "1.25 x",
            {{"CpuInfo", [](benchmark::State& state) { measure(state, [] { keep(CpuInfo()); }); }},
             {"CPUID alone", [](benchmark::State& state) {
                  const CpuInfo info;
                  const auto basic = static_cast<unsigned>(info.cpuid_last_basic_level() + 1);
                  const auto extended = static_cast<unsigned>(info.cpuid_last_extended_level() + 1);
                  measure(state, [&] {
                      read_leaves(0, basic);
                      read_leaves(0x80000000, extended);
                      if (info.hypervisor_present()) read_leaves(0x40000000, 2);
                  });
              }}});
}

}  // namespace tarv_bench
