// A failed assertion, an exception that nobody knows, and the calls that led to a place.
#include <cstdlib>
#include <iostream>

#include "tarvcore/tarvcore.h"

using namespace tarvcore;

TARVCORE_SOURCE_FILE("$Id: //examples/diagnostics.cpp#1 $");

// An assertion of the program's own.
#define EXAMPLE_ASSERT(x) \
    ((x) || report_failed_debug_assert(__FILE__, __LINE__, __func__, #x, nullptr) || stop())

namespace {

// A program with a debugger breaks into it here.
bool stop() {
    std::abort();
}

void divide(int by) {
    (void)EXAMPLE_ASSERT(by != 0);
}

void print(const ErrorInfo& error, const char* name, unsigned length) {
    std::cout << name << ": " << error.params().get_value(name, length) << '\n';
}

[[gnu::noinline]] void print_call() {
    const StackFrame innermost = current_stack_trace().front();
    std::cout << "called from " << innermost.module << ", " << innermost.function << '\n';
}

}  // namespace

int main() {
    // With ZOLT_ASSERT_THROW_ALWAYS=1 nobody has to answer a box: the assertion raises.
    try {
        divide(0);
    } catch (const ErrorException& e) {
        std::cout << e.error()->code() << '\n';
        print(*e.error(), "function", 8);
        print(*e.error(), "expression", 10);
    }

    // What a `catch (...)` can still say.
    try {
        throw 42;
    } catch (...) {
        const auto error = ErrorInfo::from_anonymous_exception(TARVCORE_LOCATION("main()"));
        std::cout << error->code() << ", with " << error->params().size() << " parameters\n";
    }

    print_call();
}
