// Signals handlers in the scope of their calls and outside, and says what comes of it.

#include "tarvcore/result_control.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tarvcore/result_control_kinds.h"
#include "tests/support/raised.h"
//
#include <fcntl.h>
#include <io.h>

namespace {

using namespace tarvcore;

using Handler = RefCountPtr<AsyncResult<void>>;
using Control = ResultControlFutureRef<void>;

std::unique_ptr<Control> make_control() {
    return std::make_unique<Control>(Future<void>::create());
}

// Whether it passes.
template <class Operation>
bool say(const char* place, Operation operation) {
    const std::string error = tarv_test::raised(operation);
    std::printf("%s: %s\n", place, error.empty() ? "passes" : error.c_str());
    return error.empty();
}

// Unlinks the controls of one thread in every order; those that are left are still known.
void unlink_in_all_orders(bool checked) {
    std::vector<int> order = {0, 1, 2, 3};
    do {
        std::unique_ptr<Control> controls[4];
        Handler handlers[4];
        for (int i = 0; i < 4; ++i) {
            controls[i] = make_control();
            controls[i]->create_async_handler();
            handlers[i] = controls[i]->create_async_handler();  // a second one, of the same call
        }
        for (const int unlinked : order) {
            controls[unlinked].reset();
            for (int i = 0; i < 4; ++i) {
                // A signal that is refused changes nothing: the null error comes after the check.
                const std::string error =
                    tarv_test::raised([&] { handlers[i]->on_async_result_error({}); });
                const bool refused =
                    error.starts_with("error.tarvcore.result.invalidAsyncSignalScope");
                if (refused != (checked && controls[i] != nullptr))
                    throw_error(error::tarvcore, "", SourceLocation());
            }
        }
    } while (std::next_permutation(order.begin(), order.end()));
}

}  // namespace

int main() {
    _setmode(_fileno(stdout), _O_BINARY);
    bool checked = false;
    {
        const auto control = make_control();
        const Handler handler = control->create_async_handler();
        checked = !say("within the call", [&] { handler->on_async_result_success(); });
        say("from another thread", [&] {
            std::string error;
            std::thread([&] {
                error = tarv_test::raised([&] { handler->on_async_result_error({}); });
            }).join();
            if (!error.starts_with("error.tarvcore.result.badParameter"))
                throw_error(error::tarvcore, "", SourceLocation());
        });
        say("through the control", [&] { control->signal_result(); });
    }
    say("dropped by another thread", [&] {
        const auto own = make_control();
        const Handler handler = own->create_async_handler();
        std::unique_ptr<Control> control;
        std::thread([&] {
            control = make_control();
            control->create_async_handler();
        }).join();
        control.reset();
        const bool passes = tarv_test::raised([&] { handler->on_async_result_success(); }).empty();
        if (passes == checked) throw_error(error::tarvcore, "", SourceLocation());
    });
    say("in all orders", [&] { unlink_in_all_orders(checked); });
    return 0;
}
