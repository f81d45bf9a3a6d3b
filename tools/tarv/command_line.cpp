#include "tools/tarv/command_line.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <utility>

#include "tarvcore/config.h"
#include "tools/tarv/families.h"

TARVCORE_SOURCE_FILE("$Id: //tools/tarv/command_line.cpp#1 $");

namespace tarv {
namespace {

constexpr char introduction[] =
    "tarv: the operations of the core library, on arguments or on lines of standard input\n"
    "\n"
    "Usage: tarv VERB [OPTIONS] INPUT...    answer the arguments\n"
    "       tarv VERB [OPTIONS] -           answer every line of standard input\n"
    "       tarv VERB --help                what the verb takes and answers\n";

constexpr char conclusion[] =
    "\n"
    "Exit status: 0 all inputs were good, 1 one failed or a stream did, 2 the command is wrong.\n";

bool asks_for_help(const std::string& word) {
    return word == "--help" || word == "-h";
}

std::string full_name(const Family& family, const Verb& verb) {
    const std::string name = verb.description().name;
    return name.empty() ? family.name : family.name + (' ' + name);
}

void append_row(std::string& text, const std::string& name, const std::string& summary) {
    constexpr unsigned column = 20;
    const unsigned padding = column - std::min<unsigned>(column - 2, name.size());
    text += "  " + name + std::string(padding, ' ') + summary + '\n';
}

void append_verbs(std::string& text, const Family& family) {
    for (const auto& verb : family.verbs()) {
        append_row(text, full_name(family, *verb), verb->description().summary);
    }
}

std::string tool_help() {
    std::string text = introduction;
    text += "\nVerbs:\n";
    for (const Family& family : families()) {
        append_verbs(text, family);
    }
    return text + conclusion;
}

std::string family_help(const Family& family) {
    std::string text = std::string(family.summary) + "\n\nVerbs:\n";
    append_verbs(text, family);
    return text + "\n\"tarv " + family.name +
           " VERB --help\" says what a verb takes and answers.\n";
}

std::string names_of_families() {
    std::string names;
    for (const Family& family : families()) {
        if (!names.empty()) names += ", ";
        names += family.name;
    }
    return names;
}

std::string names_of_verbs(const Verbs& verbs) {
    std::string names;
    for (const auto& verb : verbs) {
        if (!names.empty()) names += ", ";
        names += verb->description().name;
    }
    return names;
}

std::string usage_of(const Family& family, const Verb& verb) {
    const std::string start = "tarv " + full_name(family, verb);
    if (*verb.description().inputs == '\0') return "Usage: " + start + " [OPTIONS]\n";
    std::string text = "Usage: " + start + " [OPTIONS] " + verb.description().inputs + '\n';
    if (verb.reads_lines()) text += "       " + start + " [OPTIONS] -\n";
    return text;
}

// The parser's own help, with what it cannot know put in.
class HelpText : public CLI::Formatter {
public:
    explicit HelpText(std::string usage) : usage_(std::move(usage)) { column_width(22); }

    std::string make_usage(const CLI::App*, std::string) const override { return '\n' + usage_; }

private:
    std::string usage_;
};

// Sorts a verb's words into options and inputs.  An input may be any text: what begins with "-" and
// a letter is taken for an option before "--" only, and nothing is looked into.  That is why the
// inputs are what the parser leaves over; those that it knows about it would unpack ("[a,b]").
class VerbParser {
public:
    VerbParser(const Family& family, Verb& verb)
        : verb_(verb), app_(verb.description().summary, "") {
        app_.formatter(std::make_shared<HelpText>(usage_of(family, verb)));
        app_.allow_windows_style_options(false);
        app_.allow_extras();
        app_.set_help_flag("-h,--help", "Print this text");
        app_.footer(verb.description().details);
        verb.add_options(app_);
        if (verb.has_json()) {
            app_.add_flag("--json", request_.json, "Answer with one JSON object a line");
        }
        if (verb.reads_lines()) {
            app_.add_flag("--crlf", request_.crlf, "Lines of standard input end in CR LF");
        }
    }

    std::string help() const { return app_.help(); }

    Request parse(std::vector<std::string> words) {
        std::ranges::reverse(words);
        app_.parse(words);

        bool any_text = false;  // after "--"
        for (std::string& word : app_.remaining()) {
            if (!any_text && word == "--") {
                any_text = true;
                continue;
            }
            if (!any_text && looks_like_option(word)) {
                throw UsageError("there is no option " + word +
                                 (takes_input() ? " (if it is an input, put -- before it)" : ""));
            }
            if (!any_text && word == "-") request_.has_dash = true;
            request_.inputs.push_back(std::move(word));
        }
        if (!takes_input() && !request_.inputs.empty()) {
            throw UsageError("takes no input: " + request_.inputs.front());
        }
        return std::move(request_);
    }

private:
    bool takes_input() const { return *verb_.description().inputs != '\0'; }

    // Negative numbers do not.
    static bool looks_like_option(const std::string& word) {
        return word.size() > 1 && word[0] == '-' && !(word[1] >= '0' && word[1] <= '9');
    }

    Verb& verb_;
    CLI::App app_;
    Request request_;
};

std::string no_such_verb(const std::string& word) {
    if (word.starts_with('-')) return word + " comes too early: options follow the verb";
    return "there is no verb \"" + word + '"';
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

template <class Range>
auto find_by_name(const Range& range, const std::string& name, auto name_of) {
    return std::ranges::find_if(range, [&](const auto& item) { return name == name_of(item); });
}

}  // namespace

Status run_command_line(const std::vector<std::string>& words, Output& output, Output& errors) {
    if (words.empty()) {
        return complain(errors, "tarv", "which verb?",
                        "Usage: tarv VERB [OPTIONS] INPUT...\nVerbs: " + names_of_families() +
                            "\nA first look: tarv tour\n");
    }
    if (asks_for_help(words[0])) {
        output.write(tool_help());
        return Status::good;
    }
    const auto table = families();
    const auto family = find_by_name(table, words[0], [](const Family& f) { return f.name; });
    if (family == table.end()) {
        return complain(errors, "tarv", no_such_verb(words[0]),
                        "Verbs: " + names_of_families() + '\n');
    }

    const Verbs verbs = family->verbs();
    if (*verbs[0]->description().name == '\0') {
        return run_verb(*family, *verbs[0], {words.begin() + 1, words.end()}, output, errors);
    }
    const std::string name = std::string("tarv ") + family->name;
    const std::string choice = "Verbs: " + names_of_verbs(verbs) + '\n';
    if (words.size() == 1) return complain(errors, name, "which verb?", choice);
    if (asks_for_help(words[1])) {
        output.write(family_help(*family));
        return Status::good;
    }
    const auto verb =
        find_by_name(verbs, words[1], [](const auto& v) { return v->description().name; });
    if (verb == verbs.end()) {
        return complain(errors, name, no_such_verb(words[1]), choice);
    }
    return run_verb(*family, **verb, {words.begin() + 2, words.end()}, output, errors);
}

}  // namespace tarv
