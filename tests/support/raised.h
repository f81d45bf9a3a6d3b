// Errors as text to compare.
#pragma once

#include <exception>
#include <sstream>
#include <string>

#include "tarvcore/error_exception.h"

namespace tarv_test {

// All of what an operation raises, a line for the record and one for each cause:
//
//     CODE MESSAGE ['NAME' => "VALUE"] FUNCTION FILE
//     < CODE
//
// Empty where it raises nothing.
template <class Operation>
std::string raised(Operation operation) {
    try {
        operation();
        return {};
    } catch (const tarvcore::ErrorException& e) {
        const tarvcore::ErrorInfo& error = *e.error();
        std::ostringstream os;
        os << error.code().as_string() << ' ' << error.expanded_message().text() << " [";
        error.params().write_trace(os, ", ");
        os << "] " << error.location().function().text() << ' ' << error.location().file_path();
        for (auto cause = error.nested(); cause; cause = cause->nested())
            os << "\n< " << cause->code().as_string();
        return os.str();
    }
}

// What an operation's exception says of itself; empty where it raises none.
template <class Operation>
std::string raised_what(Operation operation) {
    try {
        operation();
        return {};
    } catch (const std::exception& e) {
        return e.what();
    }
}

}  // namespace tarv_test
