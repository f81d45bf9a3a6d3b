#include "tarvcore/static_instance.h"

#include <cerrno>
#include <iostream>

#include "ace/Guard_T.h"
#include "ace/Init_ACE.h"
#include "ace/Object_Manager.h"
#include "tarvcore/atomic_op.h"
#include "tarvcore/error_code_constants.h"
#include "tarvcore/error_exception.h"
#include "tarvcore/impl/process_end.h"
//
#include <windows.h>

TARVCORE_SOURCE_FILE("$Id: //tarvcore/static_instance.cpp#1 $");

namespace tarvcore {
namespace impl {
namespace {

// The lines that records show, wherever this stands.
constexpr unsigned at_exit_line = 62;
constexpr unsigned closed_line = 93;
constexpr unsigned destroyed_line = 228;

constexpr ObjectManagerCalls ace_calls = {
    [](void* object, void (*function)(void*, void*)) {
        return ACE_Object_Manager::at_exit(object, function, nullptr);
    },
};

// Where this DLL is unloaded before ACE shuts down, ACE must not call it any more: this is the
// shutdown then.
struct AtUnload {
    StaticInstanceCleanup& cleanup;

    ~AtUnload() {
        if (process_is_ending() || ACE_Object_Manager::shutting_down()) return;
        ACE_Object_Manager::remove_at_exit(&cleanup);
#if !defined(TARVCORE_STATIC)  // a program's end is no unload
        cleanup.run();
#endif
    }
};

}  // namespace

StaticInstanceCleanup::StaticInstanceCleanup(const ObjectManagerCalls& calls) {
    const auto run_this = [](void* self, void*) {
        static_cast<StaticInstanceCleanup*>(self)->run();
    };
    if (calls.at_exit(this, run_this) != -1) return;
    const auto error =
        ErrorInfo::from_errno({"tarvcore::impl::StaticInstanceCleanup::StaticInstanceCleanup()",
                               source_file_id, at_exit_line},
                              errno);
    std::cerr << "tarvcore: Error registering with ACE Object Manager for cleanup: " << error;
}

StaticInstanceCleanup::~StaticInstanceCleanup() = default;

StaticInstanceCleanup& StaticInstanceCleanup::instance() {
    static StaticInstanceCleanup& cleanup = *new StaticInstanceCleanup(ace_calls);
    static const AtUnload at_unload{cleanup};
    return cleanup;
}

void StaticInstanceCleanup::register_for_cleanup(void (*function)(void*), void* pointer) {
    const ACE_Guard<ACE_Thread_Mutex> guard(lock_);
    if (closed_) {
        throw_error(error::tarvcore_objectManager_closed,
                    "Cannot register objects for cleanup after object manager has already been "
                    "closed",
                    LiteralLocation{"tarvcore::impl::StaticInstanceCleanup::register_for_cleanup()",
                                    source_file_id, closed_line});
    }
    entries_.push_back({function, pointer});
}

void StaticInstanceCleanup::run() {
    for (;;) {
        Entry entry;
        {
            const ACE_Guard<ACE_Thread_Mutex> guard(lock_);
            if (entries_.empty()) {
                closed_ = true;
                return;
            }
            entry = entries_.back();
            entries_.pop_back();
        }
        entry.function(entry.pointer);
    }
}

void StaticInstanceBase::register_cleanup_aux(void (*function)(void*), void* pointer) {
    StaticInstanceCleanup::instance().register_for_cleanup(function, pointer);
}

void StaticInstanceBase::throw_destroyed_error() {
    throw_error(error::tarvcore_objectManager_closed,
                "Attempt to access static that has already been destroyed through object manager.  "
                "If this error is raised during application startup, it may be due to an "
                "initialization order issue (static object is being accessed before it has been "
                "constructed).",
                LiteralLocation{"tarvcore::impl::StaticInstanceBase::throw_destroyed_error()",
                                source_file_id, destroyed_line});
}

void StaticInstanceBase::wait_while_making(const std::atomic<std::uintptr_t>& state) {
    while (state == making) {
        if (process_is_ending()) throw_destroyed_error();
        // Also to a thread of lower priority.
        if (SwitchToThread() == 0) Sleep(1);
    }
}

}  // namespace impl

namespace {

constinit unsigned starts = 0;

}  // namespace

int managed_init() {
    return AtomicOp<unsigned>::increment(&starts) == 1 ? ACE::init() : 0;
}

int managed_fini() {
    if (AtomicOp<unsigned>::decrement(&starts) != 0) return 0;
    // 1: others have started ACE as well, and have not stopped it.
    int result = 0;
    do {
        result = ACE::fini();
    } while (result == 1);
    return result;
}

}  // namespace tarvcore
