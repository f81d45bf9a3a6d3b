// What the tool says about itself and its verbs.
#pragma once

#include <string>
#include <vector>

#include "tools/tarv/families.h"

namespace tarv {

std::string tool_help();
// Of the verbs that the family has.
std::string family_help(const Family& family);

std::vector<std::string> names_of_families();
std::vector<std::string> names_of_verbs(const Verbs& verbs);
// With commas between them.
std::string joined(const std::vector<std::string>& names);

// Complains about a word that is none of the names; asks whether one was meant that is much like
// it.
std::string no_such_verb(const std::string& word, const std::vector<std::string>& names);

// "tarv 2.1.0.16", and the library's build as its module information has it.
std::string version_text();

}  // namespace tarv
