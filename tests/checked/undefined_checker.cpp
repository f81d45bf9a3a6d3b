// The handlers that code instrumented with -fsanitize=undefined calls when it meets undefined
// behaviour: they report what and where, and end the process.
#include <cstdint>
#include <cstdio>

#include "tests/checked/report.h"

namespace {

// Every record that the compiler passes begins with the place in the source.
struct Place {
    const char* file;
    std::uint32_t line;
    std::uint32_t column;
};

[[noreturn]] void report(const char* what, const Place& place) {
    char text[300];
    std::snprintf(text, sizeof text, "undefined behaviour checker: %s at %s:%u:%u", what,
                  place.file ? place.file : "?", static_cast<unsigned>(place.line),
                  static_cast<unsigned>(place.column));
    checked::report(text);
}

struct TypeMismatch {
    Place place;
    const void* type;
    std::uint8_t log_alignment;
    std::uint8_t access;
};

}  // namespace

// The second form is called where the compiler was told not to go on.
#define HANDLER(name, what)                                  \
    void __ubsan_handle_##name(const Place& place) {         \
        report(what, place);                                 \
    }                                                        \
    void __ubsan_handle_##name##_abort(const Place& place) { \
        report(what, place);                                 \
    }

extern "C" {

HANDLER(add_overflow, "overflow in an addition")
HANDLER(sub_overflow, "overflow in a subtraction")
HANDLER(mul_overflow, "overflow in a multiplication")
HANDLER(negate_overflow, "overflow in a negation")
HANDLER(divrem_overflow, "overflow in a division, or a division by zero")
HANDLER(shift_out_of_bounds, "shift out of bounds")
HANDLER(out_of_bounds, "index out of bounds")
HANDLER(vla_bound_not_positive, "array of no size")
HANDLER(load_invalid_value, "value that its type does not have")
HANDLER(pointer_overflow, "overflow of a pointer")
HANDLER(float_cast_overflow, "floating-point value out of the integer's range")
HANDLER(nonnull_arg, "null for an argument that must not be")
HANDLER(invalid_builtin, "zero for a function that counts its zero bits")
HANDLER(missing_return, "end of a function without its value")
HANDLER(builtin_unreachable, "a place said never to be reached")

void __ubsan_handle_type_mismatch_v1(const TypeMismatch& mismatch, std::uintptr_t address) {
    if (address == 0) report("use of a null pointer", mismatch.place);
    const std::uintptr_t alignment = std::uintptr_t{1} << mismatch.log_alignment;
    report(address % alignment ? "misaligned address" : "object too small for its use",
           mismatch.place);
}
void __ubsan_handle_type_mismatch_v1_abort(const TypeMismatch& mismatch, std::uintptr_t address) {
    __ubsan_handle_type_mismatch_v1(mismatch, address);
}

void __ubsan_handle_nonnull_return_v1(const void*, const Place& place) {
    report("null returned from a function that must not", place);
}
void __ubsan_handle_nonnull_return_v1_abort(const void*, const Place& place) {
    report("null returned from a function that must not", place);
}
}
