// A hold on a running operation, to cancel it later.
#pragma once

#include "tarvcore/config.h"
#include "tarvcore/error_info.h"
#include "tarvcore/impl/async_op.h"
#include "tarvcore/ref_count_ptr.h"
#include "tarvcore/result.h"

namespace tarvcore {

// Knows an operation of any value type, or none, and cancels it once.  One handle is not for
// several threads at once, copies are.
//
//     AsyncOpHandle running = start_copy(from, to, result_future());
//     ...
//     running.cancel(false, {});
class AsyncOpHandle {
public:
    AsyncOpHandle() = default;
    // Of an empty result, an empty handle.
    AsyncOpHandle(const ResultBase& result) : op_(result.impl_.get()) {}

    AsyncOpHandle(const AsyncOpHandle&) = default;
    AsyncOpHandle& operator=(const AsyncOpHandle&) = default;
    AsyncOpHandle& operator=(const ResultBase& result) { return *this = AsyncOpHandle(result); }

    // Leaves the handle empty, also where the cancellation raises; an empty one does nothing.  See
    // ResultBase::cancel.
    void cancel(bool flag, const ErrorInfo::Ptr& reason) {
        const RefCountPtr<const impl::AsyncOp> op(op_.detach(), false);
        if (op) op->cancel(flag, reason);
    }

private:
    RefCountPtr<const impl::AsyncOp> op_;
};

static_assert(sizeof(AsyncOpHandle) == sizeof(void*));

}  // namespace tarvcore
