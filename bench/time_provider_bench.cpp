#include "tarvcore/time_provider.h"

#include <chrono>

#include "bench/support/row.h"
#include "bench/topics.h"
//
#include <windows.h>
#include <x86intrin.h>

namespace tarv_bench {

using namespace tarvcore;

void add_time_provider_rows() {
    add_row("clock: by ticks", "2 ns",
            {{"TimeProviderMm::now",
              [](benchmark::State& state) { measure(state, [] { keep(TimeProviderMm::now()); }); }},
             {"GetTickCount64",
              [](benchmark::State& state) { measure(state, [] { keep(GetTickCount64()); }); }}});
    add_row("clock: of the processor", "1.4 x",
            {{"TimeProviderTsc::now",
              [](benchmark::State& state) {
                  const TimeProviderTsc clock;
                  measure(state, [&] { keep(clock.now()); });
              }},
             {"the instruction alone",
              [](benchmark::State& state) { measure(state, [] { keep(__rdtsc()); }); }},
             {"the instruction in order", [](benchmark::State& state) {
                  measure(state, [] {
                      _mm_lfence();
                      keep(__rdtsc());
                  });
              }}});
    add_row("clock: of the system", "1.06 x",
            {{"TimeProviderQpc::now",
              [](benchmark::State& state) {
                  const TimeProviderQpc clock;
                  measure(state, [&] { keep(clock.now()); });
              }},
             {"QueryPerformanceCounter",
              [](benchmark::State& state) {
                  measure(state, [] {
                      LARGE_INTEGER counter;
                      QueryPerformanceCounter(&counter);
                      keep(counter);
                  });
              }},
             {"steady_clock", [](benchmark::State& state) {
                  measure(state, [] { keep(std::chrono::steady_clock::now()); });
              }}});
}

}  // namespace tarv_bench
