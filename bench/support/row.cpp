#include "bench/support/row.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace tarv_bench {
namespace {

// What else the machine does only ever adds to a time; on a busy one, medians tell more about that.
double fastest(const std::vector<double>& times) {
    return *std::min_element(times.begin(), times.end());
}

}  // namespace

void add_row(const char* operation, const char* goal, std::initializer_list<Candidate> candidates) {
    // The script that makes the table finds the goals here.
    benchmark::AddCustomContext(std::string("goal: ") + operation, goal);
    for (const Candidate& candidate : candidates) {
        const std::string name = std::string(operation) + '/' + candidate.name;
        benchmark::RegisterBenchmark(name.c_str(), candidate.function)
            ->UseManualTime()
            ->Iterations(1)
            ->ComputeStatistics("fastest", fastest);
    }
}

void require(bool condition, const char* what) {
    if (condition) return;
    std::fprintf(stderr, "wrong result: %s\n", what);
    std::exit(1);
}

}  // namespace tarv_bench
