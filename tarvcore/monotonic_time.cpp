#include "tarvcore/monotonic_time.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/monotonic_time.cpp#1 $");

namespace tarvcore {

constinit const MonotonicTimeBase MonotonicTimeBase::min_time(
    RelativeTime::nanoseconds(TIMEVALUE_MIN));
constinit const MonotonicTimeBase MonotonicTimeBase::max_time(
    RelativeTime::nanoseconds(TIMEVALUE_MAX));
constinit const MonotonicTimeBase MonotonicTimeBase::zero;
constinit const MonotonicTimeBase MonotonicTimeBase::infinite(
    RelativeTime::nanoseconds(TIMEVALUE_INFINITE));

}  // namespace tarvcore
