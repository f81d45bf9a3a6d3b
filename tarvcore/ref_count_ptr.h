// The owning pointer to shared objects.
#pragma once

#include <concepts>
#include <cstddef>
#include <functional>
#include <utility>

#include "tarvcore/config.h"
#include "tarvcore/ref_count.h"
#include "tarvcore/transfer.h"

namespace tarvcore {

// Holds one reference to a T, or none.  T derives from RefCounted<...>, or offers the same pair
// `add_ref() const` and `release() const`, reached as a friend.
//
// Every operation that replaces the pointer stores the new one before it releases the old one, so
// that a `destroy` which re-enters this pointer finds the new value, and assigning a pointer to
// itself is harmless.
//
// Distinct pointers to one object may be used by different threads when the object counts
// atomically; one RefCountPtr object is not for several threads at once.
//
//     RefCountPtr<const ErrorInfo> error = parse(text, &value);
//     if (error) log(error->message());
template <class T>
class TARVCORE_MAY_ALIAS RefCountPtr {
public:
    using element_type = T;

    constexpr RefCountPtr() = default;
    // Takes a reference; null is allowed.
    constexpr RefCountPtr(std::nullptr_t) {}
    RefCountPtr(T* object) : object_(safe_add_ref(object)) {}
    // With `add_ref` false, adopts a reference which the caller holds already.  Always expanded: a
    // pointer whose address no function has got, and which was moved from, is seen to be null, and
    // the unwinder need not stop for it.
    TARVCORE_INLINE RefCountPtr(T* object, bool add_ref)
        : object_(add_ref ? safe_add_ref(object) : object) {}

    // The pointer is stored before the count changes: a store between two locked instructions would
    // make the second one wait.
    RefCountPtr(const RefCountPtr& other) : object_(other.object_) { safe_add_ref(object_); }
    constexpr RefCountPtr(RefCountPtr&& other) noexcept
        : object_(std::exchange(other.object_, nullptr)) {}
    constexpr RefCountPtr(TransferSource<RefCountPtr> source) noexcept
        : RefCountPtr(std::move(source.source())) {}
    template <class U>
    requires std::convertible_to<U*, T*> RefCountPtr(const RefCountPtr<U>& other)
        : RefCountPtr(other.get()) {}
    template <class U>
    requires std::convertible_to<U*, T*>
    constexpr RefCountPtr(RefCountPtr<U>&& other) noexcept : object_(other.detach()) {}

    constexpr ~RefCountPtr() {
        if (object_) object_->release();
    }

    RefCountPtr& operator=(RefCountPtr other) noexcept {
        swap(other);
        return *this;
    }
    RefCountPtr& operator=(T* object) {
        reset(object);
        return *this;
    }

    // Takes a reference to the new one, and releases the old one.
    void reset(T* object) { attach(safe_add_ref(object)); }
    // Adopts a reference which the caller holds already.
    void attach(T* object) {
        T* old = std::exchange(object_, object);
        if (old) old->release();
    }
    // Hands the reference to the caller.
    [[nodiscard]] constexpr T* detach() { return std::exchange(object_, nullptr); }
    void clear() { attach(nullptr); }
    constexpr void swap(RefCountPtr& other) noexcept { std::swap(object_, other.object_); }

    constexpr T* get() const { return object_; }
    // The same as `get`; says that the caller knows the pointer not to be null.
    constexpr T* checked_get() const { return object_; }
    constexpr T* operator->() const { return object_; }
    constexpr T& operator*() const { return *object_; }

    constexpr bool is_null() const { return object_ == nullptr; }
    constexpr bool operator!() const { return object_ == nullptr; }

    // A truth value that converts to no number.
    using SafeBool = T* RefCountPtr::*;
    constexpr operator SafeBool() const { return object_ ? &RefCountPtr::object_ : nullptr; }

    // The same pointer seen as one to a const object; no count changes.
    const RefCountPtr<const T>& as_const_ptr() const {
        static_assert(sizeof(RefCountPtr<const T>) == sizeof(RefCountPtr));
        return reinterpret_cast<const RefCountPtr<const T>&>(*this);
    }

    constexpr TransferSource<RefCountPtr> transfer() { return TransferSource<RefCountPtr>(*this); }

private:
    static T* safe_add_ref(T* object) {
        if (object) object->add_ref();
        return object;
    }

    T* object_ = nullptr;
};

// Pointers are equal when they point at the same object.
template <class T, class U>
constexpr bool operator==(const RefCountPtr<T>& a, const RefCountPtr<U>& b) {
    return a.get() == b.get();
}
template <class T, class U>
constexpr bool operator==(const RefCountPtr<T>& a, U* b) {
    return a.get() == b;
}
template <class T>
constexpr bool operator==(const RefCountPtr<T>& a, std::nullptr_t) {
    return a.is_null();
}

template <class T>
constexpr void swap(RefCountPtr<T>& a, RefCountPtr<T>& b) noexcept {
    a.swap(b);
}

}  // namespace tarvcore

template <class T>
struct std::hash<tarvcore::RefCountPtr<T>> {
    std::size_t operator()(const tarvcore::RefCountPtr<T>& pointer) const noexcept {
        return std::hash<T*>()(pointer.get());
    }
};
