#include "tarvcore/future.h"

#include <absl/synchronization/notification.h>

#include <atomic>
#include <future>
#include <memory>
#include <thread>

#include "bench/peers/one_shot.h"
#include "bench/support/errors.h"
#include "bench/support/row.h"
#include "bench/topics.h"

namespace tarv_bench {
namespace {

using namespace tarvcore;

// One completion, which two parties hold.
struct Ours {
    Future<void> completion = Future<void>::create();

    void signal() { completion.signal(); }
    void wait() { completion.get(); }
};
struct ByHand {
    ByHand() = default;
    ByHand(const ByHand& other) : completion(other.completion) { completion->add_ref(); }
    ~ByHand() { completion->release(); }
    ByHand& operator=(const ByHand&) = delete;

    OneShot* completion = new OneShot;

    void signal() { completion->signal(); }
    void wait() { completion->wait(); }
};
struct Abseil {
    std::shared_ptr<absl::Notification> completion = std::make_shared<absl::Notification>();

    void signal() { completion->Notify(); }
    void wait() { completion->WaitForNotification(); }
};
struct Std {
    std::shared_ptr<std::promise<void>> completion = std::make_shared<std::promise<void>>();
    std::shared_future<void> future = completion->get_future().share();

    void signal() { completion->set_value(); }
    void wait() { future.get(); }
};

template <class Completion>
void create_signal_get(benchmark::State& state) {
    measure(state, [] {
        Completion completion;
        completion.signal();
        completion.wait();
        keep(completion);
    });
}

// std::promise alone does without what makes it shared.
void std_create_signal_get(benchmark::State& state) {
    measure(state, [] {
        std::promise<void> promise;
        auto future = promise.get_future();
        promise.set_value();
        future.get();
        keep(future);
    });
}

// Two threads wake each other in turn; half of a round is one hand-over.
template <class Completion>
void hand_over(benchmark::State& state) {
    struct Round {
        Completion there, back;
        std::shared_ptr<Round> next;
    };
    auto round = std::make_shared<Round>();
    std::atomic<bool> stop = false;
    std::thread partner([&stop, round]() mutable {
        for (;;) {
            round->there.wait();
            if (stop) return;
            round->next = std::make_shared<Round>();
            auto next = round->next;
            round->back.signal();
            round = next;
        }
    });
    measure(
        state,
        [&] {
            round->there.signal();
            round->back.wait();
            round = round->next;
        },
        2);
    stop = true;
    round->there.signal();
    partner.join();
}

const ErrorInfo::Ptr& error() {
    static const auto record = ErrorInfo::create(
        ErrorCode(code_text), message_text, SourceLocation(function_text, "future_bench.cpp", 1));
    return record;
}

}  // namespace

void add_future_rows() {
    add_row("future: create, signal, get", "150 ns",
            {{"Future<void>", create_signal_get<Ours>},
             {"a one-shot by hand", create_signal_get<ByHand>},
             {"absl::Notification", create_signal_get<Abseil>},
             {"std::promise", std_create_signal_get}});

    add_row("future: create, set error, read it", "180 ns",
            {{"Future<void>", [](benchmark::State& state) {
                  measure(state, [] {
                      const auto future = Future<void>::create();
                      future.set(error());
                      future.wait();
                      keep(future.error_info());
                  });
              }}});

    add_row("future: error through get", "2300 ns",
            {{"Future<void>",
              [](benchmark::State& state) {
                  measure(state, [] {
                      const auto future = Future<void>::create();
                      future.set(error());
                      try {
                          future.get();
                      } catch (const ErrorException& e) {
                          keep(e);
                      }
                  });
              }},
             {"std::promise", [](benchmark::State& state) {
                  measure(state, [] {
                      std::promise<void> promise;
                      auto future = promise.get_future();
                      promise.set_exception(std::make_exception_ptr(ThreeStringsException()));
                      try {
                          future.get();
                      } catch (const ThreeStringsException& e) {
                          keep(e);
                      }
                  });
              }}});

    add_row("future: wake a waiter", "1.1 x of a one-shot by hand",
            {{"Future<void>", hand_over<Ours>},
             {"a one-shot by hand", hand_over<ByHand>},
             {"absl::Notification", hand_over<Abseil>},
             {"std::promise", hand_over<Std>}});
}

}  // namespace tarv_bench
