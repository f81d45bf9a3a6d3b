#include <benchmark/benchmark.h>

#include <array>
#include <cstddef>
#include <cstdlib>

#include "bench/topics.h"

namespace {

// Gives the heap free blocks of every small size between used ones, as the heap of a program that
// has run for a while has.  In a new heap a block is split off the one large free block and merged
// with it again: that takes twice the time, and not the same for all sizes and candidates.
void age_heap() {
    constexpr int blocks_of_a_size = 64;
    for (std::size_t size = 8; size <= 1024; size += 8) {
        std::array<void*, blocks_of_a_size> holes;
        for (void*& hole : holes) {
            hole = std::malloc(size);
            [[maybe_unused]] void* volatile separator = std::malloc(size);
        }
        for (void* hole : holes)
            std::free(hole);
    }
}

void add_rows() {
    using namespace tarv_bench;
    add_ref_count_ptr_rows();
    add_source_string_rows();
    add_error_code_rows();
    add_error_params_rows();
    add_error_info_rows();
    add_error_exception_rows();
    add_ucsutil_rows();
    add_transforms_rows();
    add_abs_rel_time_rows();
    add_calendar_rows();
    add_absolute_time_text_rows();
    add_relative_time_text_rows();
    add_simple_date_time_rows();
    add_thread_mutex_rows();
    add_static_instance_rows();
    add_process_info_rows();
    add_random_rows();
    add_cpu_info_rows();
    add_time_provider_rows();
    add_future_rows();
    add_result_rows();
    add_murmur_hash_rows();
    add_uuid_rows();
    add_object_key_rows();
    add_diagnostics_impl_win_common_rows();
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::AddCustomContext("compiler", "GCC " __VERSION__);
    benchmark::AddCustomContext("flags", BENCH_FLAGS);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    add_rows();
    age_heap();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}
