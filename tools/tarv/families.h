// The table of verbs.
#pragma once

#include <span>
#include <string_view>

#include "tools/tarv/verb.h"

namespace tarv {

// Verbs that share their first word: "time" for "time parse" and its like.
struct Family {
    const char* name;
    const char* summary;
    Verbs (*verbs)();
};

std::span<const Family> families();

// Null where there is none of that name; a family that is a verb itself has one without a name.
const Family* find_family(std::string_view name);
Verb* find_verb(const Verbs& verbs, std::string_view name);

// One for each family; those of a file NAME_verbs.cpp belong together.
Verbs help_verbs();
Verbs tour_verbs();
Verbs demo_verbs();
Verbs time_verbs();
Verbs duration_verbs();
Verbs datetime_verbs();
Verbs uuid_verbs();
Verbs encode_verbs();
Verbs decode_verbs();
Verbs text_verbs();
Verbs hash_verbs();
Verbs error_verbs();
Verbs cpu_verbs();
Verbs env_verbs();
Verbs random_verbs();

}  // namespace tarv
