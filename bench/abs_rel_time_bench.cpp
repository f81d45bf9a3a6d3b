#include "tarvcore/abs_rel_time.h"

#include <absl/time/clock.h>

#include <chrono>

#include <windows.h>

#include "bench/support/row.h"
#include "bench/topics.h"

namespace tarv_bench {
namespace {

template <auto now>
void measure_now(benchmark::State& state) {
    measure(state, [] { keep(now()); });
}

FILETIME system_time() {
    FILETIME time;
    GetSystemTimeAsFileTime(&time);
    return time;
}

}  // namespace

void add_abs_rel_time_rows() {
    add_row("time: now", "1.1 x of GetSystemTimeAsFileTime",
            {{"AbsoluteTime", measure_now<tarvcore::AbsoluteTime::now>},
             {"GetSystemTimeAsFileTime", measure_now<system_time>},
             {"std::chrono::system_clock", measure_now<std::chrono::system_clock::now>},
             {"absl::Now", measure_now<absl::Now>}});
}

}  // namespace tarv_bench
