// An operation that completes on another thread, waited for with a time-out, and observed; one that
// is cancelled from outside; one whose handler is dropped.
#include <chrono>
#include <iostream>
#include <thread>
#include <utility>
#include <vector>

#include "tarvcore/tarvcore.h"

using namespace tarvcore;

namespace {

// Counts the primes below a limit, on a thread of its own, unless it is told to stop.
class PrimeCounter {
public:
    ~PrimeCounter() {
        for (std::thread& thread : threads_)
            thread.join();
    }

    Result<unsigned> start(unsigned limit, const ResultControl<unsigned>& control) {
        if (limit < 3) return control.signal_result(0);
        auto handler = control.create_async_handler();
        threads_.emplace_back([limit, handler] {
            unsigned count = 0;
            for (unsigned n = 2; n < limit && !handler->cancelled(); ++n) {
                if (is_prime(n)) ++count;
            }
            handler->on_async_result_success(count);
        });
        return handler->get_result();
    }

    // Forgets what it has promised.
    Result<unsigned> start_and_forget(const ResultControl<unsigned>& control) {
        return control.create_async_handler()->get_result();
    }

private:
    static bool is_prime(unsigned n) {
        for (unsigned divisor = 2; divisor <= n / divisor; ++divisor) {
            if (n % divisor == 0) return false;
        }
        return true;
    }

    std::vector<std::thread> threads_;
};

// Is told by the thread that completes the operation, before anybody sees it complete.
struct Announcer final : RefCounted<AtomicRefCount>, IFutureObserverBase {
    void on_future_error(const ErrorInfo::Ptr&) override { std::cout << "it has failed\n"; }
    void on_future_success() override { std::cout << "it is done\n"; }
};

void print(const char* what, const Result<unsigned>& result) {
    std::cout << what << ": ";
    try {
        std::cout << result.get() << '\n';
    } catch (const ErrorException& e) {
        std::cout << e.error()->code().as_string_view() << ", "
                  << e.error()->expanded_message().as_string_view() << '\n';
    }
}

}  // namespace

int main() {
    PrimeCounter counter;
    print("now", counter.start(2, result_future<unsigned>()));

    const auto future = Future<unsigned>::create();
    future.add_observer(RefCountPtr(new Announcer));  // which lives until it is told
    const Result<unsigned> waited_for = counter.start(1000, result_future(future));
    if (!waited_for.wait(RelativeTime::seconds(60))) return 1;
    print("later", waited_for);

    const Result<unsigned> endless = counter.start(4'000'000'000, result_future<unsigned>());
    if (endless.wait(RelativeTime::milliseconds(1))) return 1;
    endless.cancel(false, {});
    print("cancelled", endless);

    print("dropped", counter.start_and_forget(result_future<unsigned>()));
    print("not wanted later", counter.start(1000, result_error_if_async<unsigned>()));
    return 0;
}
