// An interface, and what keeps the object behind it alive.
#pragma once

#include <utility>

#include "tarvcore/ref_count.h"
#include "tarvcore/ref_count_ptr.h"

namespace tarvcore {

// A pointer to an interface together with a reference that keeps the object behind it alive.  Owner
// is the type of that reference.
template <class Interface, class Owner = RefCountPtr<const RefCounted<AtomicRefCount>>>
class InterfacePtr {
public:
    constexpr InterfacePtr() = default;
    // `owner` keeps the object, and is asked for nothing else.
    InterfacePtr(Interface* object, Owner owner) : interface_(object), owner_(std::move(owner)) {}
    InterfacePtr(const InterfacePtr&) = default;
    InterfacePtr(InterfacePtr&& other) noexcept
        : interface_(std::exchange(other.interface_, nullptr)), owner_(std::move(other.owner_)) {}
    InterfacePtr& operator=(InterfacePtr other) noexcept {
        std::swap(interface_, other.interface_);
        std::swap(owner_, other.owner_);
        return *this;
    }

    Interface* get() const { return interface_; }
    Interface* operator->() const { return interface_; }
    Interface& operator*() const { return *interface_; }
    bool is_null() const { return interface_ == nullptr; }
    explicit operator bool() const { return interface_ != nullptr; }

    const Owner& owner() const { return owner_; }

private:
    Interface* interface_ = nullptr;
    Owner owner_;
};

}  // namespace tarvcore
