// What every object that stands for a running operation has in common.
#pragma once

#include "tarvcore/config.h"
#include "tarvcore/error_info.h"
#include "tarvcore/ref_count.h"

namespace tarvcore::impl {

// The caller's side (results) and the operation's side (asynchronous handlers) alike.
class TARVCORE_API AsyncOp : public RefCounted<AtomicRefCount> {
public:
    // Asks for an end of the operation, with the cause or null.  Nothing here looks at the flag; it
    // is for the operations of other modules.
    virtual void cancel(bool flag, const ErrorInfo::Ptr& reason) const = 0;

protected:
    AsyncOp();
    ~AsyncOp() override;
};

}  // namespace tarvcore::impl
