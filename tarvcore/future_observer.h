// Who is told that a future has completed.
#pragma once

#include "tarvcore/error_info.h"

namespace tarvcore {

// Is told, once, that a future has completed: by the thread that completes it, before anybody sees
// it ready, and while it is locked.  So an observer must not signal, wait for, or change the
// observers of the future that it is called for; to ask for its state is allowed, and it is still
// pending.  It may drop the future, and the handler that would have signalled it.
//
// What an observer throws does not hold the completion up: the others are told, the future
// completes, and then the first exception goes to who has signalled.
//
//     struct Announcer final : RefCounted<AtomicRefCount>, IFutureObserverBase {
//         void on_future_error(const ErrorInfo::Ptr& error) override { log << *error; }
//         void on_future_success() override { log << "done"; }
//     };
//     future.add_observer(RefCountPtr(new Announcer));    // lives until it is told
class IFutureObserverBase {
public:
    // One of the two is called.
    virtual void on_future_error(const ErrorInfo::Ptr& error) = 0;
    virtual void on_future_success() = 0;

protected:
    ~IFutureObserverBase() = default;
};

}  // namespace tarvcore
