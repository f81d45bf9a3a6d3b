// How a benchmark is written: rows of one table, each an operation of ours beside its peers'.
#pragma once

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstddef>
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
// std::string"; a row without peers has a goal in ns, or an empty one.
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

template <class Operation>
std::chrono::duration<double> time_of(Operation& operation, unsigned count) {
    const auto start = std::chrono::steady_clock::now();
    repeat(operation, count);
    return std::chrono::steady_clock::now() - start;
}

// How many operations take so long that the clock's steps do not matter, and so short that the
// system rarely takes the processor away.  Twice in a row: once may be the system's doing.  By then
// the caches know the operation, and what happens only once has happened, as the unwinder's sorting
// of its tables at the first throw.
template <class Operation>
unsigned batch_size(Operation& operation) {
    unsigned size = 1;
    for (int times = 0; times < 2;) {
        if (time_of(operation, size).count() >= 250e-6) {
            ++times;
        } else {
            size *= 2;
            times = 0;
        }
    }
    return size;
}

// Counts the allocations of an operation and times it.  Both are divided by `inputs`.
template <class Operation>
void measure(benchmark::State& state, Operation operation, std::size_t inputs = 1) {
    const unsigned batch = batch_size(operation);
    {
        const tarv_test::AllocationWatch watch;
        repeat(operation, 1);
        state.counters["allocations"] = watch.allocations() / static_cast<double>(inputs);
    }
    for (auto _ : state) {
        state.SetIterationTime(time_of(operation, batch).count() / batch /
                               static_cast<double>(inputs));
    }
}

// The same for an operation on one input that is too short to be timed alone: takes all inputs.
template <class Inputs, class Operation>
void measure_each(benchmark::State& state, const Inputs& inputs, Operation operation) {
    const auto take_all = [&] {
        for (const auto& input : inputs)
            operation(input);
    };
    measure(state, take_all, inputs.size());
}

}  // namespace tarv_bench
