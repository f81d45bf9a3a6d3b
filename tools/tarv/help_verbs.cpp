// The help, asked for as a verb.
#include <string>

#include "tarvcore/config.h"
#include "tools/tarv/help.h"
#include "tools/tarv/verb_parser.h"

TARVCORE_SOURCE_FILE("$Id: //tools/tarv/help_verbs.cpp#1 $");

namespace tarv {
namespace {

class HelpVerb : public Verb {
public:
    HelpVerb()
        : Verb({"", "[VERB...]", "What a verb takes and answers, with examples",
                "Without a verb the list of all. With --json an object for each, for programs.\n",
                "$ tarv help time\n"
                "Points in time: text, nanoseconds since 1970, calendar\n"
                "\u2026\n"}) {}

    bool run(const Request& request, Output& output, Output&) override {
        const auto& words = request.inputs;
        if (words.empty()) {
            if (!request.json) output.write(tool_help());
            for (const Family& family : families())
                if (request.json) write_objects(family, output);
            return true;
        }
        const Family* const family = find_family(words[0]);
        if (family == nullptr) throw no_such(words[0], names_of_families());
        const Verbs verbs = family->verbs();
        Verb* verb = find_verb(verbs, "");
        if (words.size() > (verb == nullptr ? 2u : 1u))
            throw UsageError("too many words: " + words.back());
        if (words.size() == 2) {
            verb = find_verb(verbs, words[1]);
            if (verb == nullptr) throw no_such(words[1], names_of_verbs(verbs));
        }
        if (request.json) {
            verb == nullptr ? write_objects(*family, output) : write_object(*family, *verb, output);
        } else {
            output.write(verb == nullptr ? family_help(*family)
                                         : VerbParser(*family, *verb).help());
        }
        return true;
    }

private:
    static UsageError no_such(const std::string& word, const std::vector<std::string>& names) {
        return UsageError(no_such_verb(word, names) + "\nVerbs: " + joined(names));
    }

    static void write_object(const Family& family, Verb& verb, Output& output) {
        Result result(output, Result::Form::json);
        result.text("verb", full_name(family, verb));
        result.text("summary", verb.description().summary);
        result.text("help", VerbParser(family, verb).help());
        result.text("examples", verb.description().examples);
        result.finish();
    }

    static void write_objects(const Family& family, Output& output) {
        for (const auto& verb : family.verbs())
            write_object(family, *verb, output);
    }
};

}  // namespace

Verbs help_verbs() {
    Verbs verbs;
    verbs.push_back(std::make_unique<HelpVerb>());
    return verbs;
}

}  // namespace tarv
