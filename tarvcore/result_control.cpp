#include "tarvcore/result_control.h"

#include <string>
#include <string_view>

#include "ace/OS_NS_Thread.h"
#include "tarvcore/atomic_op.h"
#include "tarvcore/error_code_constants.h"
#include "tarvcore/error_exception.h"
#include "tarvcore/impl/process_end.h"
#include "tarvcore/process_info.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/result_control.cpp#1 $");

namespace tarvcore {
namespace {

bool checks_wanted() {
    constexpr std::string_view name = "TARVCORE_CHECK_ASYNC_RESULT_SIGNALING";
    bool found = false;
    std::string value;
    try {
        value = get_environment_variable(name.data(), name.size(), &found);
    } catch (const ErrorException&) {
        // There is one, and it is no text.
        return true;
    }
    return found && (value.empty() ||
                     std::string_view("0NnFf").find(value.front()) == std::string_view::npos);
}

// Whether signalling is checked, and the controls that are active on each thread if so.
class SignalingChecks {
public:
    SignalingChecks() : on_(checks_wanted() && ACE_OS::thr_keycreate(&key_, nullptr) == 0) {}
    ~SignalingChecks() {
        if (on_ && !impl::process_is_ending()) ACE_OS::thr_keyfree(key_);
    }
    SignalingChecks(const SignalingChecks&) = delete;
    SignalingChecks& operator=(const SignalingChecks&) = delete;

    bool on() const { return on_; }

    // The control that this thread has activated last, of those that still are.
    const ResultControlBase* head() const {
        void* control = nullptr;
        ACE_OS::thr_getspecific(key_, &control);
        return static_cast<const ResultControlBase*>(control);
    }
    void set_head(const ResultControlBase* control) const {
        ACE_OS::thr_setspecific(key_, const_cast<ResultControlBase*>(control));
    }

private:
    ACE_thread_key_t key_{};
    bool on_;
};

const SignalingChecks& checks() {
    static const SignalingChecks checks;
    return checks;
}

// The environment is read at load.
[[maybe_unused]] const SignalingChecks& read_at_load = checks();

constinit unsigned last_activation_id = 0;

}  // namespace

ResultControlBase::~ResultControlBase() {
    if (activation_id_ != 0) deactivate();
}

unsigned ResultControlBase::activate() const {
    if (activation_id_ != 0 || !checks().on()) return activation_id_;
    do {
        activation_id_ = AtomicOp<unsigned>::increment(&last_activation_id);
    } while (activation_id_ == 0);
    previous_ = checks().head();
    checks().set_head(this);
    return activation_id_;
}

void ResultControlBase::deactivate() {
    const ResultControlBase* control = checks().head();
    if (control == this) return checks().set_head(previous_);
    while (control != nullptr && control->previous_ != this) {
        control = control->previous_;
    }
    if (control != nullptr) control->previous_ = previous_;
}

void ResultControlBase::validate_async_signal(unsigned id) {
    const ResultControlBase* control = checks().head();
    while (control != nullptr && control->activation_id_ != id) {
        control = control->previous_;
    }
    if (control == nullptr) return;
    throw_error(error::tarvcore_result_invalidAsyncSignalScope,
                "Attempt to use an AsyncResult object to signal a result synchronously.",
                TARVCORE_LOCATION("tarvcore::ResultControlBase::validate_async_signal()"));
}

AsyncResultBase::AsyncResultBase(const ResultControlBase& control)
    : activation_id_(control.activate()) {}

AsyncResultBase::~AsyncResultBase() = default;

void AsyncResultBase::on_async_result_error(const ErrorInfo::Ptr& error) {
    validate_signal();
    impl::raise_if_null(error);
    async_error_impl(error);
}

void AsyncResultBase::validate_activated_signal() const {
    ResultControlBase::validate_async_signal(activation_id_);
}

}  // namespace tarvcore
