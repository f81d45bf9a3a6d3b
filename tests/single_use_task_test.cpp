// Faults to catch: work that is done twice, or not at all without anybody hearing of it; an
// operation that is cancelled twice through one handle.

#include "tarvcore/single_use_task.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>

#include "tarvcore/async_op_handle.h"
#include "tarvcore/result_control_kinds.h"
#include "tests/support/racers.h"
#include "tests/support/raised.h"

namespace {

using namespace tarvcore;
using tarv_test::raised;

const SourceLocation where("f()", "//file", 1);

std::string address_of(const void* task) {
    std::ostringstream os;
    os << task;
    return os.str();
}

TEST(SingleUseTask, RunsOnce) {
    std::atomic<int> runs = 0, race_runs = 0, refusals = 0;
    SingleUseTask task([&] { ++runs; }, nullptr, where);
    task.run();
    const std::string address = address_of(&task);
    EXPECT_EQ(raised([&] { task.run(); }),
              "error.tarvcore.task.redundantExecution The single-use task at " + address +
                  " has been executed previously. ['address' => \"" + address + "\"] f() //file");
    EXPECT_EQ(runs, 1);
    SingleUseTask failing([] { throw std::runtime_error("work"); }, nullptr, where);
    EXPECT_THROW(failing.run(), std::runtime_error);
    {
        const SingleUseTask never([] { FAIL(); }, nullptr, where);
    }

    using Task = std::shared_ptr<SingleUseTask>;
    std::vector<Task> tasks;
    for (int i = 0; i < 10'000; ++i)
        tasks.push_back(std::make_shared<SingleUseTask>([&] { ++race_runs; }, nullptr, where));
    const auto run = [&](const Task& task_to_run) {
        refusals += !raised([&] { task_to_run->run(); }).empty();
    };
    tarv_test::race<Task>(std::move(tasks), {run, run});
    EXPECT_EQ(race_runs, 10'000);
    EXPECT_EQ(refusals, 10'000);
}

TEST(SingleUseTask, TellsItsHandler) {
    const struct {
        bool is_run;
        std::function<void(AsyncResult<void>&)> work;
        std::string code;
    } rows[] = {
        {true, [](auto& handler) { handler.on_async_result_success(); }, ""},
        {true, [](auto&) { throw std::out_of_range("work"); },
         "error.exception.logic_error.out_of_range"},
        {true, [](auto&) {}, "error.tarvcore.result.notSignaled"},
        {false, [](auto&) {}, "error.tarvcore.task.notExecuted"},
    };
    for (const auto& row : rows) {
        RefCountPtr<AsyncResult<void>> handler = result_future().create_async_handler();
        const Result<void> result = handler->get_result();
        std::string address;
        {
            SingleUseTask task([&row, handler] { row.work(*handler); }, handler, where);
            handler.clear();
            address = address_of(&task);
            if (row.is_run) task.run();
            EXPECT_EQ(result.is_ready(), row.is_run) << row.code << ": work is not kept";
        }
        const std::string error = raised([&] { result.get(); });
        if (!row.is_run) {
            EXPECT_EQ(error, row.code + " The task at " + address +
                                 " was never executed. ['address' => \"" + address +
                                 "\"] f() //file");
        }
        EXPECT_EQ(error.substr(0, error.find(' ')), row.code);
    }

    // Who drops a task is not told what its handler raises.
    struct Raiser final : IFutureObserverBase {
        void on_future_error(const ErrorInfo::Ptr&) override { throw std::runtime_error("raised"); }
        void on_future_success() override {}
    } raiser;
    const auto future = Future<void>::create();
    future.add_observer(&raiser);
    {
        const SingleUseTask never([] {}, result_future(future).create_async_handler(), where);
    }
    EXPECT_EQ(future.error_info()->code(), error::tarvcore_task_notExecuted);
}

TEST(AsyncOpHandle, CancelsOnce) {
    const auto future = Future<void>::create();
    const Result<void> pending(new impl::FutureResultImpl<void>(future));
    AsyncOpHandle handle = pending;
    AsyncOpHandle copy = handle;
    handle = AsyncOpHandle(Result<int>());
    handle.cancel(true, {});
    EXPECT_FALSE(pending.is_ready()) << "empty";
    copy.cancel(true, {});
    EXPECT_TRUE(impl::result_was_cancelled(pending.error_info()));

    // Empty before the operation is told, which may use the handle in turn.
    struct Observer final : IFutureObserverBase {
        AsyncOpHandle* handle;
        void on_future_error(const ErrorInfo::Ptr&) override {
            handle->cancel(true, {});
            throw std::runtime_error("observer");
        }
        void on_future_success() override {}
    } observer;
    const auto observed = Future<int>::create();
    AsyncOpHandle once{Result<int>(new impl::FutureResultImpl<int>(observed))};
    observer.handle = &once;
    observed.add_observer(&observer);
    EXPECT_THROW(once.cancel(false, {}), std::runtime_error);
    EXPECT_TRUE(observed.has_error());
}

}  // namespace
