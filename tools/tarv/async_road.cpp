// The road of operations that complete later.
#include <string>
#include <thread>

#include "tarvcore/config.h"
#include "tarvcore/error_exception.h"
#include "tarvcore/result_control_kinds.h"
#include "tools/tarv/story.h"

TARVCORE_SOURCE_FILE("$Id: //tools/tarv/async_road.cpp#1 $");

namespace tarv {
namespace {

using namespace tarvcore;

// Counts the primes below a limit on a thread of its own, once it may begin.
class PrimeCounter {
public:
    ~PrimeCounter() {
        begin();  // where something has gone wrong before
        if (thread_.joinable()) thread_.join();
    }

    Result<unsigned> start(unsigned limit, const ResultControl<unsigned>& control) {
        const auto handler = control.create_async_handler();
        thread_ = std::thread([begin = begin_, seen = stop_was_seen_, limit, handler] {
            begin.wait();
            seen.signal(handler->cancelled());
            handler->on_async_result_success(primes_below(limit));
        });
        return handler->get_result();
    }
    void begin() { begin_.signal(); }
    // What the operation has been told when it began.
    bool was_told_to_stop() const { return stop_was_seen_.get(); }

private:
    static unsigned primes_below(unsigned limit) {
        unsigned count = 0;
        for (unsigned n = 2; n < limit; ++n) {
            unsigned divisor = 2;
            while (n % divisor != 0)
                ++divisor;
            if (divisor == n) ++count;
        }
        return count;
    }

    const Future<void> begin_ = Future<void>::create();
    const Future<bool> stop_was_seen_ = Future<bool>::create();
    std::thread thread_;
};

std::string answer(const char* question, bool is_true) {
    return std::string(question) + (is_true ? " is true" : " is false");
}

// What comes of a result: its value, or its error and the causes below.
std::string outcome_of(const Result<unsigned>& result) {
    try {
        return "result.get() is " + std::to_string(result.get());
    } catch (const ErrorException& e) {
        std::string text = "result.get() throws";
        for (auto error = e.error(); error; error = error->nested()) {
            text +=
                '\n' + error->code().as_string() + "\n    " + error->expanded_message().as_string();
        }
        return text;
    }
}

void completes_later(Story& story) {
    PrimeCounter counter;
    story.step(
        "An operation that may take its time is called with a control, which says what the\n"
        "caller wants of it. This caller will wait, and so the result is a future:");
    story.lines("Result<unsigned> result = counter.start(1000, result_future<unsigned>())");
    const Result<unsigned> result = counter.start(1000, result_future<unsigned>());
    story.prose(
        "The operation has asked the control for a handler, has given it to a thread, and has\n"
        "come back:");
    story.lines(answer("result.is_ready()", result.is_ready()));

    story.step("The caller waits, but not for ever. A time that is over is no error:");
    story.lines(answer("result.wait(RelativeTime::milliseconds(20))",
                       result.wait(RelativeTime::milliseconds(20))));

    story.step("Now the thread gets on, and signals its handler from there:");
    counter.begin();
    story.lines(
        answer("result.wait(RelativeTime::seconds(60))", result.wait(RelativeTime::seconds(60))) +
        '\n' + outcome_of(result));
}

void is_cancelled(Story& story) {
    PrimeCounter counter;
    story.step("Another one is cancelled from outside, and told why:");
    const Result<unsigned> result = counter.start(1000, result_future<unsigned>());
    story.lines("result.cancel(false, reason)");
    result.cancel(false, ErrorInfo::create(ErrorCode("error.tour.closing"), "The tour is closing",
                                           TARVCORE_LOCATION("tarv::is_cancelled()")));
    story.prose("The caller does not have to wait any more:");
    story.lines(outcome_of(result));

    counter.begin();
    story.prose(
        "The operation learns of it when it asks its handler. If it does not, no harm is done:\n"
        "what it signals now is dropped.");
    story.lines(answer("handler->cancelled()", counter.was_told_to_stop()));
}

void is_forgotten(Story& story) {
    story.step(
        "A third one forgets what it has promised. Its handler dies without a signal, and sees\n"
        "to it that nobody waits for ever:");
    const auto forget = [](const ResultControl<unsigned>& control) {
        return control.create_async_handler()->get_result();
    };
    story.lines(outcome_of(forget(result_future<unsigned>())));
}

}  // namespace

void async_road(Story& story) {
    story.title("Second road: an operation that completes later");
    completes_later(story);
    is_cancelled(story);
    is_forgotten(story);
}

}  // namespace tarv
