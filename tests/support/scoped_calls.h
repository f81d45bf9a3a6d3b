// System calls that answer what a test wants.
#pragma once

#include <atomic>

namespace tarv_test {

// Puts a copy of a seam's table in its place while it lives.  Replace functions before the copy is
// called:
//
//     ScopedCalls calls(impl::priority_calls);
//     calls->set_thread_priority = [](void*, long) { return false; };
template <class Calls>
class ScopedCalls {
public:
    explicit ScopedCalls(std::atomic<const Calls*>& seam) : seam_(seam), old_(seam), calls_(*old_) {
        seam_ = &calls_;
    }
    ~ScopedCalls() { seam_ = old_; }
    ScopedCalls(const ScopedCalls&) = delete;
    ScopedCalls& operator=(const ScopedCalls&) = delete;

    Calls* operator->() { return &calls_; }

private:
    std::atomic<const Calls*>& seam_;
    const Calls* old_;
    Calls calls_;
};

}  // namespace tarv_test
