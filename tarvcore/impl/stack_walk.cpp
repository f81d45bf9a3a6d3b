#include "tarvcore/impl/stack_walk.h"

#include <unwind.h>

#include <cstdint>

TARVCORE_SOURCE_FILE("$Id: //tarvcore/impl/stack_walk.cpp#1 $");

namespace tarvcore::impl {
namespace {

void append(StackAddresses& stack, std::uintptr_t address) {
    if (stack.count < max_stack_frames)
        stack.addresses[stack.count++] = reinterpret_cast<const void*>(address);
}

// A frame pointer points to that of the caller, with the address to return to behind it.
void follow_frame_pointers(std::uintptr_t frame, std::uintptr_t above, StackAddresses& stack) {
    const std::uintptr_t end = readable_end(above);
    while (stack.count < max_stack_frames && frame >= above && frame % sizeof(void*) == 0 &&
           frame < end && end - frame >= 2 * sizeof(void*)) {
        const auto* const words = reinterpret_cast<const std::uintptr_t*>(frame);
        if (words[1] == 0) return;
        append(stack, words[1]);
        above = frame + 2 * sizeof(void*);
        frame = words[0];
    }
}

struct Unwinding {
    std::uintptr_t start;  // the stack pointer of the first frame that is wanted
    StackAddresses* stack;
    std::uintptr_t stack_pointer = 0;  // of the last one
    std::uintptr_t frame_pointer = 0;
};

_Unwind_Reason_Code visit(_Unwind_Context* context, void* argument) {
    constexpr int frame_pointer_register = 5;  // in DWARF's numbering for this processor
    auto& unwinding = *static_cast<Unwinding*>(argument);
    const std::uintptr_t stack_pointer = _Unwind_GetCFA(context);
    if (stack_pointer < unwinding.start) return _URC_NO_REASON;
    append(*unwinding.stack, _Unwind_GetIP(context));
    unwinding.stack_pointer = stack_pointer;
    unwinding.frame_pointer =
        static_cast<std::uintptr_t>(_Unwind_GetGR(context, frame_pointer_register));
    return _URC_NO_REASON;
}

}  // namespace

std::uintptr_t readable_end(std::uintptr_t address) {
    constexpr DWORD forbidding = PAGE_NOACCESS | PAGE_GUARD;
    MEMORY_BASIC_INFORMATION region = {};
    if (VirtualQuery(reinterpret_cast<const void*>(address), &region, sizeof region) == 0 ||
        region.State != MEM_COMMIT || (region.Protect & forbidding) != 0) {
        return address;
    }
    return reinterpret_cast<std::uintptr_t>(region.BaseAddress) + region.RegionSize;
}

StackAddresses walk_own_stack(const CONTEXT& context) {
    StackAddresses stack;
    Unwinding unwinding = {context.Esp, &stack};
    _Unwind_Backtrace(visit, &unwinding);
    if (stack.count == 0) return walk_frame_pointers(context);
    follow_frame_pointers(unwinding.frame_pointer, unwinding.stack_pointer, stack);
    return stack;
}

StackAddresses walk_frame_pointers(const CONTEXT& context) {
    StackAddresses stack;
    stack.first_is_instruction = true;
    append(stack, context.Eip);
    follow_frame_pointers(context.Ebp, context.Esp, stack);
    return stack;
}

}  // namespace tarvcore::impl
