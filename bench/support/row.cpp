#include "bench/support/row.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace tarv_bench {

void add_row(const char* operation, const char* goal, std::initializer_list<Candidate> candidates) {
    // The script that makes the table finds the goals here.
    benchmark::AddCustomContext(std::string("goal: ") + operation, goal);
    for (const Candidate& candidate : candidates) {
        const std::string name = std::string(operation) + '/' + candidate.name;
        benchmark::RegisterBenchmark(name.c_str(), candidate.function)->UseRealTime();
    }
}

void require(bool condition, const char* what) {
    if (condition) return;
    std::fprintf(stderr, "wrong result: %s\n", what);
    std::exit(1);
}

}  // namespace tarv_bench
