#include "tarvcore/single_use_task.h"

#include <utility>

#include "tarvcore/error_code_constants.h"
#include "tarvcore/error_exception.h"
#include "tarvcore/error_params.h"
#include "tarvcore/inner_operation.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/single_use_task.cpp#1 $");

namespace tarvcore {
namespace impl {
void throw_redundant_task_execution_error(const void* task, const SourceLocation& where) {
    throw_error(error::tarvcore_task_redundantExecution,
                "The single-use task at {@address} has been executed previously.",
                ErrorParams().add("address", task), where);
}

ErrorInfo::Ptr task_not_executed_error(const void* task, const SourceLocation& where) {
    return ErrorInfo::create(error::tarvcore_task_notExecuted,
                             "The task at {@address} was never executed.",
                             ErrorParams().add("address", task), where);
}

}  // namespace impl

SingleUseTask::SingleUseTask(std::function<void()> work, RefCountPtr<AsyncResultBase> handler,
                             const SourceLocation& where)
    : work_(std::move(work)), handler_(std::move(handler)), where_(where) {}

SingleUseTask::~SingleUseTask() {
    if (executed_ || handler_.is_null()) return;
    try {
        handler_->on_async_result_error(impl::task_not_executed_error(this, where_));
    } catch (...) {
        // The handler has its outcome; there is nobody else to tell.
    }
}

void SingleUseTask::run() {
    if (executed_.exchange(true)) impl::throw_redundant_task_execution_error(this, where_);
    // What the work holds is released when it has been done, not when the task ends.
    const auto work = std::exchange(work_, nullptr);
    const auto handler = std::exchange(handler_, nullptr);
    if (handler.is_null()) return work();
    try {
        work();
    } catch (const std::exception& e) {
        impl::signal_escaped_error(*handler, e);
    }
}

}  // namespace tarvcore
