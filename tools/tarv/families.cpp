#include "tools/tarv/families.h"

#include <algorithm>

#include "tarvcore/config.h"

TARVCORE_SOURCE_FILE("$Id: //tools/tarv/families.cpp#1 $");

namespace tarv {

std::span<const Family> families() {
    static constexpr Family table[] = {
        {"help", "What a verb takes and answers, with examples", help_verbs},
        {"tour", "The library at work, told step by step", tour_verbs},
        {"demo", "Reports of failures made on purpose", demo_verbs},
        {"time", "Points in time: text, nanoseconds since 1970, calendar", time_verbs},
        {"duration", "Durations: text, nanoseconds", duration_verbs},
        {"datetime", "Points in time with a zone offset", datetime_verbs},
        {"uuid", "Identifiers of 128 bits", uuid_verbs},
        {"encode", "Bytes as text: Base64, Base32, hexadecimal digits", encode_verbs},
        {"decode", "Bytes from text: Base64, Base32, hexadecimal digits", decode_verbs},
        {"text", "Text in UTF-8, UTF-16 and UTF-32", text_verbs},
        {"hash", "Hashes of bytes: MurmurHash3 of 32 bits", hash_verbs},
        {"error", "Error codes and messages, and those of the operating system", error_verbs},
        {"cpu", "What the processor says about itself", cpu_verbs},
        {"env", "The values of environment variables", env_verbs},
        {"random", "Random numbers", random_verbs},
    };
    return table;
}

const Family* find_family(std::string_view name) {
    const auto table = families();
    const auto found =
        std::ranges::find_if(table, [&](const Family& family) { return name == family.name; });
    return found == table.end() ? nullptr : &*found;
}

Verb* find_verb(const Verbs& verbs, std::string_view name) {
    const auto found = std::ranges::find_if(
        verbs, [&](const auto& verb) { return name == verb->description().name; });
    return found == verbs.end() ? nullptr : found->get();
}

}  // namespace tarv
