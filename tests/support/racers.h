// Threads that get in each other's way.
#pragma once

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

namespace tarv_test {

// Each operation has a thread, which goes through all subjects in their order with its own copies,
// and drops each copy when it is done with it: all threads come by the same subjects at about the
// same time, and each of them is the last at some.
template <class Subject>
void race(std::vector<Subject> subjects,
          const std::vector<std::function<void(const Subject&)>>& operations) {
    std::atomic<std::size_t> arrived = 0;
    std::vector<std::thread> threads;
    for (const auto& operation : operations) {
        threads.emplace_back([&arrived, &operations, &operation, copies = subjects]() mutable {
            ++arrived;
            while (arrived <= operations.size())
                std::this_thread::yield();
            for (Subject& copy : copies) {
                const Subject own = std::move(copy);
                operation(own);
            }
        });
    }
    while (arrived < operations.size())
        std::this_thread::yield();
    subjects.clear();
    ++arrived;
    for (std::thread& thread : threads)
        thread.join();
}

}  // namespace tarv_test
