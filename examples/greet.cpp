// A program whose main function is intercepted: its arguments are UTF-8 whatever the code page, and
// an exception that it does not catch is told, with its record, and makes the exit status 1.
#include <iostream>
#include <string_view>

#include "tarvcore/tarvcore.h"

TARVCORE_SOURCE_FILE("$Id: //examples/greet.cpp#1 $");

using namespace tarvcore;

namespace {

constinit const ErrorCode nobody("error.greet.nobody", true);

void greet(std::string_view name, int position) {
    if (name.empty()) {
        throw_error(nobody, "Argument {@position} is empty",
                    ErrorParams().add("position", position), TARVCORE_LOCATION("greet()"));
    }
    std::cout << "Hello " << name << ", " << name.size() << " bytes" << std::endl;
}

}  // namespace

int tarvcore_main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i)
        greet(argv[i], i);
    return 0;
}
