// From a verb's words to what it is asked to do, and its help.
#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

#include "tools/tarv/families.h"

namespace tarv {

// "time parse", or the family's name where that is the verb.
std::string full_name(const Family& family, const Verb& verb);

std::string usage_of(const Family& family, const Verb& verb);

// Sorts a verb's words into options and inputs.  An input may be any text: what begins with "-" and
// a letter is taken for an option before "--" only, and nothing is looked into.  That is why the
// inputs are what the parser leaves over; those that it knows about it would unpack ("[a,b]").
class VerbParser {
public:
    VerbParser(const Family& family, Verb& verb);

    std::string help() const { return app_.help(); }

    // Once.  Raises UsageError, or what the parser below raises: CLI::CallForHelp among it.
    Request parse(std::vector<std::string> words);

private:
    bool takes_input() const { return *verb_.description().inputs != '\0'; }

    Verb& verb_;
    CLI::App app_;
    Request request_;
};

}  // namespace tarv
