#include "tarvcore/future.h"

#include <algorithm>
#include <cerrno>
#include <exception>
#include <memory>

#include "tarvcore/error_code_constants.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/future.cpp#1 $");

namespace tarvcore::impl {
namespace {

// Ends the lock with the scope.
using ScopedLock =
    std::unique_ptr<CompletionWord, decltype([](CompletionWord* word) { word->unlock(); })>;

void tell(IFutureObserverBase& observer, const ErrorInfo::Ptr& error) {
    if (error) {
        observer.on_future_error(error);
    } else {
        observer.on_future_success();
    }
}

TARVCORE_COLD void raise_null_error() {
    throw_error(error::tarvcore_future_nullError, "Cannot signal Future with a NULL error",
                TARVCORE_LOCATION("tarvcore::impl::FutureImplBase::set()"));
}

}  // namespace

FutureImplBase::FutureImplBase() = default;
FutureImplBase::~FutureImplBase() = default;

bool FutureImplBase::set(ErrorInfo::Ptr error) {
    if (error.is_null()) raise_null_error();
    if (!begin()) return false;
    finish(std::move(error));
    return true;
}

bool FutureImplBase::set_success() {
    if (!begin()) return false;
    finish({});
    return true;
}

void FutureImplBase::finish(ErrorInfo::Ptr error) {
    if (!observers_.empty()) return finish_observed(std::move(error));
    error_.swap(error);
    signal_ready();
}

TARVCORE_COLD void FutureImplBase::finish_observed(ErrorInfo::Ptr error) {
    // An observer may drop the last handle, and the handler.
    const RefCountPtr<FutureImplBase> self(this);
    word_.decide();
    std::exception_ptr failure;
    for (const Observer& observer : observers_) {
        try {
            tell(*observer, error);
        } catch (...) {
            if (!failure) failure = std::current_exception();
        }
    }
    // Their owners may die with this, and do what they like then: the lock is no more.
    const std::vector<Observer> told = std::move(observers_);
    observers_.clear();
    error_.swap(error);
    signal_ready();
    if (failure) std::rethrow_exception(failure);
}

bool FutureImplBase::add_observer(Observer observer) {
    if (begin()) {
        const ScopedLock lock(&word_);
        if (find_observer(observer.get()) != observers_.data() + observers_.size()) return false;
        observers_.push_back(std::move(observer));
    } else {
        // It may drop the future.
        tell(*observer, ErrorInfo::Ptr(error_));
    }
    return true;
}

bool FutureImplBase::remove_observer(IFutureObserverBase* observer) {
    if (!begin()) return false;
    Observer removed;  // dies after the lock
    const ScopedLock lock(&word_);
    const auto entry = observers_.begin() + (find_observer(observer) - observers_.data());
    if (entry == observers_.end()) return false;
    removed = std::move(*entry);
    observers_.erase(entry);
    return true;
}

FutureImplBase::Observer* FutureImplBase::find_observer(IFutureObserverBase* observer) {
    return std::find_if(observers_.data(), observers_.data() + observers_.size(),
                        [observer](const Observer& entry) { return entry.get() == observer; });
}

bool FutureImplBase::wait_slowly(const WaitLimit& limit) const {
    if (word_.wait(limit) == 0) return true;
    if (errno == ETIME) return false;
    throw_errno(TARVCORE_LOCATION("tarvcore::impl::FutureImplBase::wait()"), errno);
}

}  // namespace tarvcore::impl
