// How a benchmark is written: rows of one table, each an operation of ours beside its peers'.
#pragma once

#include <benchmark/benchmark.h>

#include <initializer_list>

#include "tests/support/allocations.h"

namespace tarv_bench {

// The compiler must assume that the object is looked at and changed here.  (The harness's own
// DoNotOptimize is miscompiled for this target.)
template <class T>
void keep(T& object) {
    asm volatile("" : : "r"(&object) : "memory");
}
template <class T>
void keep(T&& object) {
    keep(object);
}

// One bar of a row: who is measured, and the function that does it by a call of `measure`.
struct Candidate {
    const char* name;
    void (*function)(benchmark::State&);
};

// Adds a row to the table.  The first candidate is ours, the others are its peers.  The goal is
// "10 ns", or a multiple of the fastest peer's time, "1.05 x", or of a named peer's, "1.5 x of
// std::string"; a row without peers has a goal in ns.
//
//     add_row("text: copy", "1.1 x", {
//         {"SourceString", [](benchmark::State& state) {
//             const SourceString text = ...;
//             measure(state, [&] { SourceString copy(text); keep(copy); });
//         }},
//         {"std::string", ...}});
void add_row(const char* operation, const char* goal, std::initializer_list<Candidate> candidates);

// Ends the program unless the condition holds: what is measured must be right, too.
void require(bool condition, const char* what);

// Its operation is called at one place only, so that the compiler expands it there.
template <class Operation>
[[gnu::noinline]] void repeat(Operation& operation, unsigned count) {
    for (; count != 0; --count)
        operation();
}

// Counts the operation's allocations and times it.  The first run, in which the first throw sorts
// the unwinder's tables and lengths are measured for good, stays out of both.
template <class Operation>
void measure(benchmark::State& state, Operation operation) {
    repeat(operation, 1);
    {
        const tarv_test::AllocationWatch watch;
        repeat(operation, 1);
        state.counters["allocations"] = watch.allocations();
    }
    while (state.KeepRunningBatch(state.max_iterations))
        repeat(operation, static_cast<unsigned>(state.max_iterations));
}

// The same for an operation on one input, which is too short to be timed alone: every iteration
// takes all inputs, and the table shows the time for one.
template <class Inputs, class Operation>
void measure_each(benchmark::State& state, const Inputs& inputs, Operation operation) {
    measure(state, [&] {
        for (const auto& input : inputs)
            operation(input);
    });
    state.counters["inputs"] = static_cast<double>(inputs.size());
}

}  // namespace tarv_bench
