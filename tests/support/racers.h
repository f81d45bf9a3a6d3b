// Threads that get in each other's way.
#pragma once

#include <atomic>
#include <functional>
#include <random>
#include <thread>
#include <utility>
#include <vector>

#include "tests/support/threads.h"

namespace tarv_test {

// Each operation has a thread, which goes through all subjects in their order with its own copies,
// and drops each copy when it is done with it.  All threads meet at every subject: one that ran
// ahead would be alone with each.  They do not see at the same moment that all are there, and so
// begin a few nanoseconds later, every time another number.
template <class Subject>
void race(std::vector<Subject> subjects,
          const std::vector<std::function<void(const Subject&)>>& operations) {
    std::vector<std::vector<Subject>> copies(operations.size(), subjects);
    subjects.clear();
    std::atomic<std::size_t> arrivals = 0;
    run_threads(operations.size(), [&](unsigned i) {
        std::minstd_rand random(i + 1);
        std::size_t expected = 0;
        for (Subject& copy : copies[i]) {
            const Subject own = std::move(copy);
            expected += operations.size();
            ++arrivals;
            for (unsigned looks = 0; arrivals < expected; ++looks)
                if (looks > 100) std::this_thread::yield();
            for (unsigned steps = random() % 500; steps != 0; --steps)
                asm volatile("");
            operations[i](own);
        }
    });
}

}  // namespace tarv_test
