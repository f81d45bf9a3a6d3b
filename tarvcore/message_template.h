// What the functions that make errors take as message.
#pragma once

#include <utility>

#include "tarvcore/source_string.h"

namespace tarvcore {

// The message of an error before its parameters are put in.  A `const char*` is a literal, which is
// referenced and never copied; text that does not outlive the error comes as a SourceString.
struct MessageTemplate {
    // Made by the compiler where a function takes one.
    constexpr MessageTemplate(const char* literal) : text(literal, true) {}
    constexpr MessageTemplate(SourceString shared) : text(std::move(shared)) {}
    constexpr MessageTemplate(TransferSource<SourceString> source) : text(source) {}

    SourceString text;  // with places for parameters, as "{@name}"
};

}  // namespace tarvcore
