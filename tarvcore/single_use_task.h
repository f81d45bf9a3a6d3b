// Work that is done once.
#pragma once

#include <atomic>
#include <functional>

#include "tarvcore/async_result.h"
#include "tarvcore/config.h"
#include "tarvcore/error_info.h"
#include "tarvcore/ref_count_ptr.h"
#include "tarvcore/source_location.h"

namespace tarvcore {
namespace impl {

// The errors of tasks at that address: of one that is run a second time, raised; of one that ends
// without having been run, answered, as destructors do not raise.
[[noreturn]] TARVCORE_API void throw_redundant_task_execution_error(const void* task,
                                                                    const SourceLocation& where);
TARVCORE_API ErrorInfo::Ptr task_not_executed_error(const void* task, const SourceLocation& where);

}  // namespace impl

// Work with the handler of the operation that it is part of.  It is run once: a std::exception that
// it lets escape is the operation's error, and so is "error.tarvcore.task.notExecuted" where the
// task ends without having been run.  The handler may be null: then what escapes goes to who has
// run the task.
//
// Any thread may run it.  It stays where it was made.
//
//     auto task = std::make_shared<SingleUseTask>([=] { handler->on_async_result_success(); },
//                                                 handler, TARVCORE_LOCATION("my::start()"));
//     pool.submit([task] { task->run(); });
class TARVCORE_API SingleUseTask {
public:
    // `where` is the place that the errors of this task tell.
    SingleUseTask(std::function<void()> work, RefCountPtr<AsyncResultBase> handler,
                  const SourceLocation& where);
    ~SingleUseTask();
    SingleUseTask(const SingleUseTask&) = delete;
    SingleUseTask& operator=(const SingleUseTask&) = delete;

    // A second time raises "error.tarvcore.task.redundantExecution", and does nothing.
    void run();

private:
    std::function<void()> work_;
    RefCountPtr<AsyncResultBase> handler_;
    SourceLocation where_;
    std::atomic<bool> executed_ = false;
};

}  // namespace tarvcore
