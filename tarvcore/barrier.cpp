#include "tarvcore/barrier.h"

#include <exception>

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

namespace {

// Does something to all entries, and raises at the end what was raised first, by an observer.
template <class Barrier, class Action>
void for_all(const Barrier& barrier, Action action) {
    std::exception_ptr failure;
    for (const auto& entry : barrier) {
        try {
            action(entry);
        } catch (...) {
            if (!failure) failure = std::current_exception();
        }
    }
    if (failure) std::rethrow_exception(failure);
}

}  // namespace

unsigned AnyFutureBarrier::set_error_if_not_ready(const ErrorInfo::Ptr& error) {
    unsigned count = 0;
    for_all(*this, [&](const AnyFuture& future) {
        if (future.set(error)) ++count;
    });
    return count;
}

void AnyResultBarrier::cancel(const ErrorInfo::Ptr& reason) const {
    for_all(*this, [&](const AnyResult& result) { result.cancel(true, reason); });
}

}  // namespace tarvcore
