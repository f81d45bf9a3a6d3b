// Memory whose neighbours must not be touched.
#pragma once

#include <gtest/gtest.h>

#include <windows.h>

namespace tarv_test {

// Blocks that end where a page begins that faults at a touch, or begin where such a page ends.
class GuardedMemory {
public:
    // Blocks have up to `room` bytes.
    explicit GuardedMemory(unsigned room) : size_((room + page - 1) / page * page) {
        void* const pages =
            VirtualAlloc(nullptr, size_ + 2 * page, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
        begin_ = static_cast<char*>(pages) + page;
        DWORD old = 0;
        EXPECT_TRUE(pages != nullptr && VirtualProtect(pages, page, PAGE_NOACCESS, &old) &&
                    VirtualProtect(begin_ + size_, page, PAGE_NOACCESS, &old));
    }
    ~GuardedMemory() { VirtualFree(begin_ - page, 0, MEM_RELEASE); }
    GuardedMemory(const GuardedMemory&) = delete;
    GuardedMemory& operator=(const GuardedMemory&) = delete;

    char* before_guard(unsigned size) const { return begin_ + size_ - size; }
    char* after_guard() const { return begin_; }

private:
    static constexpr unsigned page = 4096;

    unsigned size_;
    char* begin_;
};

}  // namespace tarv_test
