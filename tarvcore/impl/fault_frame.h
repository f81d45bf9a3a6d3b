// Faults of the system, such as access violations, of one thread in one piece of code.
#pragma once

#include <setjmp.h>

#include <windows.h>

namespace tarvcore::impl {

// While it lives, calls a function on a fault of this thread that nobody within handles.  The frame
// is one of the system's list of handlers on x86, linked through the thread's block: it stands on
// the thread's stack, and frames end in the reverse order of their begins.
class FaultFrame {
public:
    // Does not return.
    using Function = void (*)(FaultFrame& frame);

    explicit FaultFrame(Function on_fault) : on_fault_(on_fault) {
        asm volatile("movl %%fs:0, %0" : "=r"(registration_.outer));
        asm volatile("movl %0, %%fs:0" : : "r"(&registration_) : "memory");
    }
    ~FaultFrame() { asm volatile("movl %0, %%fs:0" : : "r"(registration_.outer) : "memory"); }
    FaultFrame(const FaultFrame&) = delete;
    FaultFrame& operator=(const FaultFrame&) = delete;

private:
    struct Registration {
        Registration* outer;
        int (*handler)(EXCEPTION_RECORD* fault, Registration* registration, CONTEXT* context,
                       void* dispatcher);
        FaultFrame* frame;
    };

    static int handle(EXCEPTION_RECORD* fault, Registration* registration, CONTEXT*, void*) {
        constexpr int go_on_searching = 1;
        constexpr DWORD first_error = 0xC0000000;  // below are warnings and news
        constexpr DWORD unwinding = 6;
        const bool is_error =
            fault->ExceptionCode >= first_error && (fault->ExceptionFlags & unwinding) == 0;
        if (is_error) registration->frame->on_fault_(*registration->frame);
        return go_on_searching;
    }

    Function on_fault_;
    Registration registration_ = {nullptr, handle, this};
};

// Calls code of others; false: it came to grief.  Nothing of it is cleaned up then.
template <class Code>
[[gnu::noinline]] bool survives(Code code) {
    struct Place : FaultFrame {
        Place()
            : FaultFrame([](FaultFrame& frame) { longjmp(static_cast<Place&>(frame).buffer, 1); }) {
        }
        jmp_buf buffer;
    } place;
    if (setjmp(place.buffer) != 0) return false;
    code();
    return true;
}

}  // namespace tarvcore::impl
