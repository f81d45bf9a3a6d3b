#include "tools/tarv/command_line.h"

#include "tarvcore/config.h"
#include "tools/tarv/families.h"
#include "tools/tarv/help.h"
#include "tools/tarv/verb_parser.h"

TARVCORE_SOURCE_FILE("$Id: //tools/tarv/command_line.cpp#1 $");

namespace tarv {
namespace {

bool asks_for_help(const std::string& word) {
    return word == "--help" || word == "-h";
}

Status complain(Output& errors, const std::string& name, const std::string& why,
                const std::string& usage) {
    errors.write(name + ": " + why + '\n' + usage + "\"" + name + " --help\" says more.\n");
    return Status::usage;
}

Status run_verb(const Family& family, Verb& verb, const std::vector<std::string>& words,
                Output& output, Output& errors) {
    const std::string name = "tarv " + full_name(family, verb);
    try {
        VerbParser parser(family, verb);
        try {
            const Request request = parser.parse(words);
            return verb.run(request, output, errors) ? Status::good : Status::some_failed;
        } catch (const CLI::CallForHelp&) {
            output.write(parser.help());
            return Status::good;
        }
    } catch (const CLI::ParseError& e) {
        return complain(errors, name, e.what(), usage_of(family, verb));
    } catch (const UsageError& e) {
        return complain(errors, name, e.what(), usage_of(family, verb));
    }
}

}  // namespace

Status run_command_line(const std::vector<std::string>& words, Output& output, Output& errors) {
    if (words.empty()) {
        return complain(errors, "tarv", "which verb?",
                        "Usage: tarv VERB [OPTIONS] INPUT...\nVerbs: " +
                            joined(names_of_families()) + "\nA first look: tarv tour\n");
    }
    if (asks_for_help(words[0])) {
        output.write(tool_help());
        return Status::good;
    }
    if (words[0] == "--version") {
        output.write(version_text());
        return Status::good;
    }
    const Family* const family = find_family(words[0]);
    if (family == nullptr) {
        const auto names = names_of_families();
        return complain(errors, "tarv", no_such_verb(words[0], names),
                        "Verbs: " + joined(names) + '\n');
    }

    const Verbs verbs = family->verbs();
    if (Verb* const only = find_verb(verbs, "")) {
        return run_verb(*family, *only, {words.begin() + 1, words.end()}, output, errors);
    }
    const std::string name = std::string("tarv ") + family->name;
    const auto names = names_of_verbs(verbs);
    const std::string choice = "Verbs: " + joined(names) + '\n';
    if (words.size() == 1) return complain(errors, name, "which verb?", choice);
    if (asks_for_help(words[1])) {
        output.write(family_help(*family));
        return Status::good;
    }
    Verb* const verb = find_verb(verbs, words[1]);
    if (verb == nullptr) return complain(errors, name, no_such_verb(words[1], names), choice);
    return run_verb(*family, *verb, {words.begin() + 2, words.end()}, output, errors);
}

}  // namespace tarv
