// Threads that begin together.
#pragma once

#include <atomic>
#include <thread>
#include <vector>

namespace tarv_test {

// Runs an operation in so many threads at once, each with its number, to the end of all.
template <class Operation>
void run_threads(unsigned count, const Operation& operation) {
    std::atomic<unsigned> missing = count;
    std::vector<std::thread> threads;
    for (unsigned number = 0; number < count; ++number) {
        threads.emplace_back([&, number] {
            --missing;
            while (missing != 0)
                std::this_thread::yield();
            operation(number);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

}  // namespace tarv_test
