#include "tarvcore/result.h"

#include <future>

#include "bench/support/row.h"
#include "bench/topics.h"
#include "tarvcore/barrier.h"
#include "tarvcore/result_control_kinds.h"

namespace tarv_bench {

using namespace tarvcore;

void add_result_rows() {
    add_row("result: value now, get", "120 ns",
            {{"Result<int>", [](benchmark::State& state) {
                  const auto control = result_ignored_if_async<int>();
                  measure(state, [&] {
                      const Result<int> result = control.signal_result(7);
                      keep(result.get());
                  });
              }}});
    add_row("result: success now, get", "60 ns",
            {{"Result<void>", [](benchmark::State& state) {
                  const auto control = result_ignored_if_async();
                  measure(state, [&] {
                      const Result<void> result = control.signal_result();
                      result.get();
                  });
              }}});
    add_row("result: success later, get", "1 x of std::promise",
            {{"Result<void>",
              [](benchmark::State& state) {
                  measure(state, [] {
                      const auto handler = result_future().create_async_handler();
                      const Result<void> result = handler->get_result();
                      handler->on_async_result_success();
                      result.get();
                  });
              }},
             {"std::promise", [](benchmark::State& state) {
                  measure(state, [] {
                      std::promise<void> promise;
                      auto future = promise.get_future();
                      promise.set_value();
                      future.get();
                      keep(future);
                  });
              }}});
    add_row("barrier: all ready of 1,000", "5000 ns",
            {{"AnyResultBarrier", [](benchmark::State& state) {
                  AnyResultBarrier barrier;
                  for (int i = 0; i < 1000; ++i) {
                      barrier.push_back(result_future<int>().signal_result(i));
                  }
                  require(barrier.all_ready(), "all are ready");
                  measure(state, [&] { keep(barrier.all_ready()); });
              }}});
}

}  // namespace tarv_bench
