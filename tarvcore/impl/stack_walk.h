// From a thread's registers to the addresses of the calls that led there.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <windows.h>

#include "tarvcore/stack_trace.h"

// Puts the registers of the calling function's caller into a CONTEXT, with the address to which the
// calling function will return.  The system's function goes by the frame pointer of its caller,
// which asking for it makes sure that there is.
#define TARVCORE_CAPTURE_CONTEXT(context)                                    \
    do {                                                                     \
        [[maybe_unused]] void* volatile frame_ = __builtin_frame_address(0); \
        RtlCaptureContext(&(context));                                       \
    } while (false)

namespace tarvcore::impl {

constexpr unsigned max_stack_frames = 62;

// Addresses to which calls return, innermost first, and how many they are.
struct StackAddresses {
    const void* addresses[max_stack_frames];
    unsigned count = 0;
    bool first_is_instruction = false;  // the one that the context is of
};

// The calls that led to the place in the calling thread that the context is of, by unwind
// information and, where that ends, by frame pointers.
StackAddresses walk_own_stack(const CONTEXT& context);

// The same by frame pointers alone, the context's instruction first: what a fault has left behind
// may be anything.  Nothing outside the thread's stack is read.
TARVCORE_API StackAddresses walk_frame_pointers(const CONTEXT& context);

// Where the memory ends that can be read from an address on; the address itself where none can.
// From within a stack, that is the stack's outer end.
std::uintptr_t readable_end(std::uintptr_t address);

// What is known of these addresses.
TARVCORE_API std::vector<StackFrame> describe(const StackAddresses& stack);

// A line for each.
std::string stack_trace_text(const StackAddresses& stack);

}  // namespace tarvcore::impl
