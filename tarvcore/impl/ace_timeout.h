// The optional time-out of ACE's blocking calls.
#pragma once

#include "ace/Time_Value.h"

namespace tarvcore::impl {

// Converts to the pointer that ACE wants: null, which blocks without limit, or that of a time value
// within the proxy, which must outlive the call.
//
//     event.wait(deadline.as_ace_timeout(), ...);
class AceTimeoutProxy {
public:
    AceTimeoutProxy(bool is_infinite, long seconds, long microseconds)
        : infinite(is_infinite), value(seconds, microseconds) {}

    operator const ACE_Time_Value*() const { return infinite ? nullptr : &value; }

    bool infinite;
    ACE_Time_Value value;
};

}  // namespace tarvcore::impl
