// Waiting for many things together.
#pragma once

#include <typeinfo>
#include <utility>
#include <vector>

#include "tarvcore/abs_rel_time.h"
#include "tarvcore/config.h"
#include "tarvcore/error_info.h"
#include "tarvcore/future.h"
#include "tarvcore/ref_count_ptr.h"
#include "tarvcore/result.h"

namespace tarvcore {

// Raised where an entry of a barrier is read as a future of another value type.
class TARVCORE_API BadFutureCast : public std::bad_cast {
public:
    BadFutureCast() noexcept;
    ~BadFutureCast() noexcept override;
    const char* what() const noexcept override;
};

namespace impl {

// The same for results.
class TARVCORE_API BadResultCast : public std::bad_cast {
public:
    BadResultCast() noexcept;
    ~BadResultCast() noexcept override;
    const char* what() const noexcept override;
};

[[noreturn]] TARVCORE_API void raise_bad_future_cast();
[[noreturn]] TARVCORE_API void raise_bad_result_cast();

// What both kinds of barriers have in common: a list of entries, asked in their order.
template <class Entry>
class BarrierBase {
public:
    using iterator = typename std::vector<Entry>::iterator;
    using const_iterator = typename std::vector<Entry>::const_iterator;

    iterator begin() { return entries_.begin(); }
    iterator end() { return entries_.end(); }
    const_iterator begin() const { return entries_.begin(); }
    const_iterator end() const { return entries_.end(); }
    unsigned size() const { return entries_.size(); }
    bool empty() const { return entries_.empty(); }

    void push_back(Entry entry) { entries_.push_back(std::move(entry)); }
    // The next position.
    iterator erase(const_iterator position) { return entries_.erase(position); }
    void clear() { entries_.clear(); }
    // Those that are pending stay, in their order.
    void remove_all_ready() {
        std::erase_if(entries_, [](const Entry& entry) { return entry.is_ready(); });
    }

    // Of an empty barrier, `any_ready` and `all_ready` are true and the others false.  This is
    // meant: there is nothing left to wait for, and nothing that has succeeded or failed.
    bool any_ready() const { return empty() || any(&Entry::is_ready); }
    bool any_failed() const { return any(&Entry::has_error); }
    bool any_successful() const { return any(&Entry::has_value); }
    bool all_ready() const { return all(&Entry::is_ready); }
    bool all_failed() const { return !empty() && all(&Entry::has_error); }
    bool all_successful() const { return !empty() && all(&Entry::has_value); }

    // Block until all are ready, one after the other.  False: the time was over before one of them
    // was, and those behind it were not looked at.  Times are those of the system's clock, also
    // where a time-out is given: setting the clock moves its end.
    void wait() const { wait(AbsoluteTime::infinite); }
    bool wait(const AbsoluteTime& deadline) const {
        for (const Entry& entry : entries_) {
            if (!entry.is_ready() && !entry.wait(deadline)) return false;
        }
        return true;
    }
    bool wait(const RelativeTime& timeout) const {
        const AbsoluteTime now = AbsoluteTime::now();
        return wait(timeout < AbsoluteTime::max_time - now ? now + timeout
                                                           : AbsoluteTime::infinite);
    }

protected:
    void swap(BarrierBase& other) noexcept { entries_.swap(other.entries_); }

private:
    using Question = bool (Entry::*)() const;

    bool any(Question question) const {
        for (const Entry& entry : entries_) {
            if ((entry.*question)()) return true;
        }
        return false;
    }
    bool all(Question question) const {
        for (const Entry& entry : entries_) {
            if (!(entry.*question)()) return false;
        }
        return true;
    }

    std::vector<Entry> entries_;
};

// A future of any value type.
class TARVCORE_API AnyFuture {
public:
    // Shares the future.
    template <class T>
    AnyFuture(const Future<T>& future) : impl_(future.impl().get()) {}

    bool is_ready() const { return impl_->is_ready(); }
    bool has_error() const { return impl_->has_error(); }
    bool has_value() const { return impl_->has_value(); }
    ErrorInfo::Ptr error_info() const { return impl_->error_info(); }
    // See Future::set.
    bool set(ErrorInfo::Ptr error) const { return impl_->set(std::move(error)); }
    // A deadline before now only looks.
    bool wait(const AbsoluteTime& deadline) const { return impl_->wait(deadline); }

    // Where the value's type is another one, raises BadFutureCast.
    template <class T>
    operator Future<T>() const {
        auto* const impl = dynamic_cast<FutureImpl<T>*>(impl_.get());
        if (impl == nullptr) raise_bad_future_cast();
        return Future<T>(RefCountPtr<FutureImpl<T>>(impl));
    }

private:
    RefCountPtr<FutureImplBase> impl_;
};

}  // namespace impl

// A list of futures, of any value types, to wait for together.  Copies share the futures.  A
// barrier is one thread's; its futures may be completed by others meanwhile.
//
//     AnyFutureBarrier barrier;
//     for (const auto& part : parts) barrier.push_back(part.done());
//     if (!barrier.wait(RelativeTime::seconds(5))) barrier.set_error_if_not_ready(too_late);
class TARVCORE_API AnyFutureBarrier : public impl::BarrierBase<impl::AnyFuture> {
public:
    // What a barrier's entries are: converts from and to futures of all value types.
    using AnyFuture = impl::AnyFuture;

    void swap(AnyFutureBarrier& other) noexcept { BarrierBase::swap(other); }

    // Completes all that are pending with that error; answers how many that were.  A null one
    // raises "error.tarvcore.future.nullError".  What an observer raises is raised at the end.
    unsigned set_error_if_not_ready(const ErrorInfo::Ptr& error);
};

namespace impl {

// A result of any value type.
class TARVCORE_API AnyResult : public ResultBase {
public:
    // Shares the state.
    AnyResult(const ResultBase& result) : ResultBase(result) {}

    using ResultBase::wait;
    // A deadline before now only looks.
    bool wait(const AbsoluteTime& deadline) const {
        // What remains of the earliest times would count as infinite.
        const bool is_over = deadline < AbsoluteTime::zero;
        return wait(is_over ? RelativeTime::zero : deadline.remaining());
    }

    // Where the value's type is another one, raises BadResultCast.
    template <class T>
    operator Result<T>() const {
        auto result = Result<T>::dynamic_cast_from(*this);
        if (is_waitable() && !result.is_waitable()) raise_bad_result_cast();
        return result;
    }
};

}  // namespace impl

// A list of results, of any value types, to wait for together; see AnyFutureBarrier.  An empty
// result among them is never ready, and to wait for it raises "error.tarvcore.result.notWaitable".
class TARVCORE_API AnyResultBarrier : public impl::BarrierBase<impl::AnyResult> {
public:
    // What a barrier's entries are: converts from and to results of all value types.
    using AnyResult = impl::AnyResult;

    void swap(AnyResultBarrier& other) noexcept { BarrierBase::swap(other); }

    // See ResultBase::cancel.
    void cancel(const ErrorInfo::Ptr& reason) const;
};

}  // namespace tarvcore
