// Faults to catch: news taken for errors, or errors for news; an outer frame that a jump past the
// inner one ends; a frame that stays in the system's list.

#include "tarvcore/impl/fault_frame.h"

#include <gtest/gtest.h>

namespace {

using tarvcore::impl::survives;

const void* innermost_frame() {
    const void* frame = nullptr;
    asm volatile("movl %%fs:0, %0" : "=r"(frame));
    return frame;
}

LONG WINAPI go_on(EXCEPTION_POINTERS*) {
    return EXCEPTION_CONTINUE_EXECUTION;
}

TEST(FaultFrame, SeesErrorsOnly) {
    const auto filter = SetUnhandledExceptionFilter(go_on);
    const struct {
        DWORD code;
        bool is_survived;
    } rows[] = {{0x40010006, true}, {0x80001234, true}, {0xC0000000, false}, {0xE1234567, false}};
    const void* const outer = innermost_frame();
    for (const auto& row : rows) {
        bool goes_on = false;
        EXPECT_EQ(survives([&] {
                      RaiseException(row.code, 0, 0, nullptr);
                      goes_on = true;
                  }),
                  row.is_survived)
            << row.code;
        EXPECT_EQ(goes_on, row.is_survived) << row.code;
        EXPECT_EQ(innermost_frame(), outer);
    }
    SetUnhandledExceptionFilter(filter);
}

// The system tells every frame that a jump goes past.
TEST(FaultFrame, MayBeJumpedPast) {
    const void* const outer = innermost_frame();
    static jmp_buf outside;
    if (setjmp(outside) == 0) {
        survives([] { longjmp(outside, 1); });
        ADD_FAILURE() << "the jump ended in the frame";
    }
    EXPECT_EQ(innermost_frame(), outer);
}

}  // namespace
