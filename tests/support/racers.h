// Threads that get in each other's way.
#pragma once

#include <functional>
#include <utility>
#include <vector>

#include "tests/support/threads.h"

namespace tarv_test {

// Each operation has a thread, which goes through all subjects in their order with its own copies,
// and drops each copy when it is done with it: all threads come by the same subjects at about the
// same time, and each of them is the last at some.
template <class Subject>
void race(std::vector<Subject> subjects,
          const std::vector<std::function<void(const Subject&)>>& operations) {
    std::vector<std::vector<Subject>> copies(operations.size(), subjects);
    subjects.clear();
    run_threads(operations.size(), [&](unsigned i) {
        for (Subject& copy : copies[i]) {
            const Subject own = std::move(copy);
            operations[i](own);
        }
    });
}

}  // namespace tarv_test
