// Process-wide objects that are made when they are first asked for.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "tarvcore/config.h"
#include "tarvcore/impl/static_instance_cleanup.h"

namespace tarvcore {

// Holds one T of the whole process: made by the first call of `get`, destroyed when ACE's object
// manager shuts down or the library is unloaded, in reverse order of their making.  Unlike a
// static object of C++ it lives on while other modules' static objects are destroyed, and to use it
// after its end is an error instead of a crash.  Where the process ends and nobody has stopped
// ACE (see managed_fini), it is never destroyed.
//
// A holder is a global or static object; it is constant-initialised and has no destructor.  Several
// threads may call `get` at once, also the first time: one makes the object, the others wait.  T's
// constructor must not ask for the same holder's object.
//
//     static StaticInstance<KeyCache> cache;
//     cache.get().intern(text);
template <class T>
class StaticInstance : private impl::StaticInstanceBase {
public:
    // Makes no object yet.
    constexpr StaticInstance() = default;
    StaticInstance(const StaticInstance&) = delete;
    StaticInstance& operator=(const StaticInstance&) = delete;

    // Raises "error.tarvcore.objectManager.closed" once the object has been destroyed, and when the
    // object manager is gone before it could be made.  What T's constructor throws passes; the next
    // call tries again.
    T& get() {
        const std::uintptr_t state = state_.load(std::memory_order_acquire);
        return state > destroyed ? *reinterpret_cast<T*>(state) : make();
    }
    // As `get`.
    T* operator->() { return &get(); }

private:
    TARVCORE_COLD T& make() {
        for (std::uintptr_t state = none; !state_.compare_exchange_strong(state, making);) {
            if (state == destroyed) throw_destroyed_error();
            if (state != making) return *reinterpret_cast<T*>(state);
            wait_while_making(state_);
            state = none;
        }
        std::unique_ptr<T> object;
        try {
            object = std::make_unique<T>();
            register_cleanup_aux(destroy, this);
        } catch (...) {
            state_ = none;
            throw;
        }
        // Its destruction may have come already.
        std::uintptr_t state = making;
        const auto address = reinterpret_cast<std::uintptr_t>(object.get());
        if (!state_.compare_exchange_strong(state, address)) throw_destroyed_error();
        return *object.release();
    }

    static void destroy(void* holder) {
        auto& state = static_cast<StaticInstance*>(holder)->state_;
        const std::uintptr_t old = state.exchange(destroyed);
        if (old != making) delete reinterpret_cast<T*>(old);
    }

    std::atomic<std::uintptr_t> state_ = none;  // or the object's address
};

// Start and stop ACE for programs that do not do so themselves.  Calls are counted, also between
// threads: the first `managed_init` starts it, and the `managed_fini` that answers the last one
// stops it, which destroys the static instances.  The results are ACE's for these two calls, and 0
// for all others.
TARVCORE_API int managed_init();
TARVCORE_API int managed_fini();

}  // namespace tarvcore
