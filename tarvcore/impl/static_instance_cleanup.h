// The ordered end of process-wide objects.
#pragma once

#include <atomic>
#include <cstdint>
#include <deque>

#include "ace/Thread_Mutex.h"
#include "tarvcore/config.h"

namespace tarvcore::impl {

// The calls by which clean-up is asked for; tests inject their own.
struct ObjectManagerCalls {
    // -1 and errno where the manager does not take the function any more.
    int (*at_exit)(void* object, void (*function)(void* object, void*));
};

// Functions to be called when ACE's object manager shuts down or this library is unloaded, the last
// registered one first.  One for the process; never destroyed, since other modules' clean-up may
// come late.
class TARVCORE_API StaticInstanceCleanup {
public:
    // Registers with the object manager; where that fails, says so on standard error.
    explicit StaticInstanceCleanup(const ObjectManagerCalls& calls);
    StaticInstanceCleanup(const StaticInstanceCleanup&) = delete;
    StaticInstanceCleanup& operator=(const StaticInstanceCleanup&) = delete;
    ~StaticInstanceCleanup();

    static StaticInstanceCleanup& instance();

    // Raises "error.tarvcore.objectManager.closed" after the run.
    void register_for_cleanup(void (*function)(void*), void* pointer);

    // Calls the functions, each without the lock, so that it may register more: they are called,
    // too.  What one throws passes; it has been removed, and the others stay.
    void run();

private:
    struct Entry {
        void (*function)(void*);
        void* pointer;
    };

    ACE_Thread_Mutex lock_;
    std::deque<Entry> entries_;
    bool closed_ = false;
};

// What the holders of process-wide objects have in common.
class TARVCORE_API StaticInstanceBase {
public:
    // See StaticInstanceCleanup.
    static void register_cleanup_aux(void (*function)(void*), void* pointer);
    [[noreturn]] static void throw_destroyed_error();

protected:
    // States of a holder; any other is its object's address.
    static constexpr std::uintptr_t none = 0;
    static constexpr std::uintptr_t making = 1;
    static constexpr std::uintptr_t destroyed = 2;

    // Returns when another thread has made the object, or failed to.  At the end of the process,
    // when that thread is no more, raises the error of an object that is gone.
    static void wait_while_making(const std::atomic<std::uintptr_t>& state);
};

}  // namespace tarvcore::impl
