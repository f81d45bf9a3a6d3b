// A program whose main function is intercepted: says its arguments, then ends as the first asks.

#include <cstdio>
#include <stdexcept>
#include <string>

#include "tarvcore/error_code_constants.h"
#include "tarvcore/error_exception.h"
#include "tarvcore/impl/debug_help.h"

TARVCORE_SOURCE_FILE("$Id: //tests/children/main_intercept_child.cpp#1 $");

int tarvcore_main(int argc, char** argv) {
    using namespace tarvcore;
    // Dumps take seconds.
    static constexpr impl::DebugHelpCalls none = {[]() -> const impl::DebugHelp& {
        static constexpr impl::DebugHelp help = {};
        return help;
    }};
    impl::debug_help_calls = &none;

    for (int i = 1; i < argc; ++i)
        std::puts(argv[i]);
    std::fflush(stdout);
    const std::string way = argv[1];
    if (way == "ours") throw_error(error::tarvcore_uuid_parse, "Bad UUID", SourceLocation());
    if (way == "standard") throw std::runtime_error("it went wrong");
    if (way == "unknown") throw 42;
    return argv[argc] == nullptr ? 7 : 8;
}
