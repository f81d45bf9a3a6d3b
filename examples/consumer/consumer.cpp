// What programs do with the library, in a page: errors, operations that complete later, keys,
// assertions.
#include <cstdlib>
#include <iostream>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "tarvcore/tarvcore.h"

TARVCORE_SOURCE_FILE("$Id: //consumer/consumer.cpp#1 $");

using namespace tarvcore;

namespace {

// The first road: what cannot be read raises, and is told apart from other errors by its family.
void read_time(const std::string& text) {
    try {
        const AbsoluteTime time = AbsoluteTime::from_string(text);
        std::cout << text << " is " << time.as_nsec() << " ns\n";
    } catch (const ErrorException& e) {
        if (!e.matches("error.tarvcore.absoluteTime")) throw;
        std::cout << e.what() << '\n';
    }
}

// The second road: an operation that a thread completes when it is told to.
class Kitchen {
public:
    ~Kitchen() {
        open();
        for (std::thread& thread : threads_)
            thread.join();
    }

    Result<std::string> order(const std::string& dish, const ResultControl<std::string>& control) {
        auto handler = control.create_async_handler();
        threads_.emplace_back([opened = opened_, dish, handler] {
            opened.wait();
            handler->on_async_result_success("one " + dish);
        });
        return handler->get_result();
    }
    void open() { opened_.signal(); }

private:
    const Future<void> opened_ = Future<void>::create();
    std::vector<std::thread> threads_;
};

void wait_and_cancel() {
    Kitchen kitchen;
    const Result<std::string> soup = kitchen.order("soup", result_future<std::string>());
    const Result<std::string> stew = kitchen.order("stew", result_future<std::string>());
    std::cout << "in time: " << soup.wait(RelativeTime::milliseconds(10)) << '\n';

    stew.cancel(false, {});
    kitchen.open();
    std::cout << "in time: " << soup.wait(RelativeTime::seconds(60)) << ", " << soup.get() << '\n';
    try {
        std::cout << stew.get() << '\n';
    } catch (const ErrorException& e) {
        std::cout << "cancelled: " << e.matches(error::tarvcore_result_cancelled) << '\n';
    }
}

// Keys are compared by one address, and go into every container.
void look_up() {
    const Uuid id = Uuid::from_string("8f1f4c2a-7b63-4d0e-9c55-1c7f3a90d2e4");
    std::map<UuidKey, std::string> names;
    names[UuidKey(id)] = "Mensa";
    std::cout << id << " is " << names.at(UuidKey(id)) << '\n';
}

bool holds(bool condition, const char* expression, const char* file, unsigned line) {
    return condition || report_failed_debug_assert(file, line, nullptr, expression, nullptr);
}
#define ASSERT(x) ((void)(holds((x), #x, __FILE__, __LINE__) || (std::abort(), false)))

// Without the variable, a message box asks what to do.
void fail_an_assertion() {
    _putenv("ZOLT_ASSERT_THROW_ALWAYS=1");
    try {
        ASSERT(1 + 1 == 3);
    } catch (const ErrorException& e) {
        std::cout << e.error()->code() << ": " << e.error()->params().get_value("expression")
                  << '\n';
    }
}

}  // namespace

// Called by tarvcore::main, with arguments in UTF-8.
int tarvcore_main(int argc, char** argv) {
    std::cout << std::boolalpha;
    read_time("2014-07-16T13:23:00Z");
    read_time(argc > 1 ? argv[1] : "2014-07-16X13:23:00Z");
    wait_and_cancel();
    look_up();
    fail_an_assertion();
    return EXIT_SUCCESS;
}
