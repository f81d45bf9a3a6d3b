// An error with a cause: raised, caught by its family, and shown.
#include <iostream>

#include "tarvcore/tarvcore.h"

using namespace tarvcore;

TARVCORE_SOURCE_FILE("$Id: //examples/errors.cpp#1 $");

namespace {

const ErrorCode error_config("error.example.config", true);
const ErrorCode error_config_unreadable("error.example.config.unreadable", true);

// Stands for a call of Windows that has failed.
unsigned long open_file() {
    return 5;
}

void load(const char* path) {
    if (const unsigned long failure = open_file(); failure != 0) {
        ErrorComposer("Cannot read the configuration \"{@path}\"")
            .param("path", path)
            .throw_with_nested_winerror(error_config_unreadable, TARVCORE_LOCATION("load()"),
                                        failure, true);
    }
}

// A form that answers the record instead: null where all is well.
[[nodiscard]] ErrorInfo::Ptr load_nothrow(const char* path) try {
    load(path);
    return {};
} catch (const ErrorException& e) {
    return e.error();
}

}  // namespace

int main() {
    try {
        load("server.conf");
    } catch (const ErrorException& e) {
        if (!e.matches(error_config)) throw;  // another family is for others to handle
        std::cout << e.error()->expanded_message() << '\n';
    }

    const ErrorInfo::Ptr error = load_nothrow("client.conf");
    for (const ErrorInfo* record = error.get(); record; record = record->nested().get()) {
        std::cout << record->code() << '\n';
    }
    std::cout << std::boolalpha << "caused by the system: " << error->any_matches("error.os")
              << '\n'
              << "its number: " << error->first_matching("error.os")->native_code() << '\n';
}
