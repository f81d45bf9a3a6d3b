#include "tarvcore/barrier.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/barrier.cpp#1 $");

namespace tarvcore {

BadFutureCast::BadFutureCast() noexcept = default;
BadFutureCast::~BadFutureCast() noexcept = default;

const char* BadFutureCast::what() const noexcept {
    return "AnyFutureBarrier : bad future cast";
}

namespace impl {

BadResultCast::BadResultCast() noexcept = default;
BadResultCast::~BadResultCast() noexcept = default;

const char* BadResultCast::what() const noexcept {
    return "AnyResultBarrier : bad result cast";
}

void raise_bad_future_cast() {
    throw BadFutureCast();
}

void raise_bad_result_cast() {
    throw BadResultCast();
}

}  // namespace impl

unsigned AnyFutureBarrier::set_error_if_not_ready(const ErrorInfo::Ptr& error) {
    unsigned count = 0;
    for (const AnyFuture& future : *this) {
        if (future.set(error)) ++count;
    }
    return count;
}

void AnyResultBarrier::cancel(const ErrorInfo::Ptr& reason) const {
    for (const AnyResult& result : *this) {
        result.cancel(true, reason);
    }
}

}  // namespace tarvcore
