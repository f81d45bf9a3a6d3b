// Counts and failures of dynamic memory, on the calling thread, in the library and the test alike.
#pragma once

#include <gtest/gtest.h>

#include <new>

namespace tarv_test {

// Sees every operator new and delete of this thread while it lives; only one may live at a time.
class AllocationWatch {
public:
    AllocationWatch();
    ~AllocationWatch();
    AllocationWatch(const AllocationWatch&) = delete;
    AllocationWatch& operator=(const AllocationWatch&) = delete;

    int allocations() const;
    // Allocations less releases.
    int live() const;
    // Every allocation from the n-th on (the next is 0) fails.
    void fail_from(int n);
    void fail_none();
};

// Runs an operation with its first allocation failing, then with its second, and so on until it
// goes through.  `check` is called after every failure.  Memory must not leak in any run.
template <class Operation, class Check>
void fail_each_allocation(Operation operation, Check check) {
    for (int n = 0;; ++n) {
        ASSERT_LT(n, 1000) << "the operation never goes through";
        bool failed = false;
        int leaked = 0;
        {
            AllocationWatch watch;
            watch.fail_from(n);
            try {
                operation();
            } catch (const std::bad_alloc&) {
                failed = true;
            }
            watch.fail_none();
            leaked = watch.live();
        }
        if (!failed) {
            ASSERT_GT(n, 0) << "the operation allocates nothing: there is nothing to fail";
            return;
        }
        ASSERT_EQ(leaked, 0) << "allocation " << n << " failed and left blocks behind";
        check();
    }
}

}  // namespace tarv_test
