// Casts that check.
#pragma once

#include <concepts>
#include <limits>
#include <memory>
#include <type_traits>
#include <typeinfo>

#include "tarvcore/config.h"
#include "tarvcore/ref_count_ptr.h"

namespace tarvcore {

namespace impl {

// Throw the ErrorException of a failed safe_cast: "error.tarvcore.cast...." with the source value
// and the name of the destination type as parameters.
[[noreturn]] TARVCORE_API void safe_cast_throw_negative_to_unsigned(const std::type_info& dest,
                                                                    long long value);
[[noreturn]] TARVCORE_API void safe_cast_throw_value_truncated(const std::type_info& dest,
                                                               unsigned long long value);
[[noreturn]] TARVCORE_API void safe_cast_throw_value_truncated(const std::type_info& dest,
                                                               long long value);
[[noreturn]] TARVCORE_API void safe_cast_throw_sign_reversal(const std::type_info& dest,
                                                             unsigned long long value);

// The exceptions of a failed dynamic_reference_cast: the object is of another type, or there is
// none.
class TARVCORE_API BadDynamicRefCast : public std::bad_cast {
public:
    ~BadDynamicRefCast() noexcept override;
    const char* what() const noexcept override;
};
class TARVCORE_API BadCastNullRef : public std::bad_cast {
public:
    ~BadCastNullRef() noexcept override;
    const char* what() const noexcept override;
};

// The second where `source` is null, else the first.
[[noreturn]] TARVCORE_API void throw_bad_dynamic_ref_cast(const void* source);

}  // namespace impl

// Converts an integer and raises what does not fit:
//
// - a negative value into an unsigned type: "error.tarvcore.cast.negativeToUnsigned";
// - an unsigned value into a signed type no wider than its own, whose sign would turn:
//   "error.tarvcore.cast.valueTooBig.signReversal";
// - any other value outside the range of the destination: "error.tarvcore.cast.valueTooBig".
//
//     const auto day = safe_cast<unsigned short>(count);
template <std::integral Dest, std::integral Source>
constexpr Dest safe_cast(Source value) {
    using Limits = std::numeric_limits<Dest>;
    if constexpr (std::is_signed_v<Source>) {
        const long long wide = value;
        if constexpr (std::is_unsigned_v<Dest>) {
            if (wide < 0) impl::safe_cast_throw_negative_to_unsigned(typeid(Dest), wide);
            if (static_cast<unsigned long long>(wide) > Limits::max()) {
                impl::safe_cast_throw_value_truncated(typeid(Dest), wide);
            }
        } else if (wide < Limits::min() || wide > Limits::max()) {
            impl::safe_cast_throw_value_truncated(typeid(Dest), wide);
        }
    } else {
        const unsigned long long wide = value;
        if (wide > static_cast<unsigned long long>(Limits::max())) {
            if constexpr (std::is_signed_v<Dest> && sizeof(Dest) >= sizeof(Source)) {
                impl::safe_cast_throw_sign_reversal(typeid(Dest), wide);
            } else {
                impl::safe_cast_throw_value_truncated(typeid(Dest), wide);
            }
        }
    }
    return static_cast<Dest>(value);
}

// Converts a reference, or the object behind a pointer, to a derived class.  Raises std::bad_cast
// (one of the two classes above), which ErrorInfo::from_exception knows, where the object is of
// another class or the pointer is null.
//
//     auto& file = dynamic_reference_cast<File>(stream);
//     auto& same = dynamic_reference_cast<File>(stream_pointer);   // T*, RefCountPtr or shared_ptr
template <class Target, class Source>
requires std::is_polymorphic_v<Source> Target& dynamic_reference_cast(Source& source) {
    auto* target = dynamic_cast<Target*>(std::addressof(source));
    if (target == nullptr) impl::throw_bad_dynamic_ref_cast(std::addressof(source));
    return *target;
}

// The same of what a pointer points to.
template <class Target, class Pointer>
requires requires(const Pointer& pointer) {
    requires std::is_polymorphic_v<std::remove_cvref_t<decltype(*pointer)>>;
}
Target& dynamic_reference_cast(const Pointer& pointer) {
    auto* source = std::to_address(pointer);
    auto* target = dynamic_cast<Target*>(source);
    if (target == nullptr) impl::throw_bad_dynamic_ref_cast(source);
    return *target;
}

}  // namespace tarvcore
