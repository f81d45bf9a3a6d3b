#include "tools/tarv/verb_parser.h"

#include <algorithm>
#include <memory>
#include <sstream>
#include <utility>

#include "tarvcore/config.h"

TARVCORE_SOURCE_FILE("$Id: //tools/tarv/verb_parser.cpp#1 $");

namespace tarv {
namespace {

// The parser's own help, with what it cannot know put in.
class HelpText : public CLI::Formatter {
public:
    explicit HelpText(std::string usage) : usage_(std::move(usage)) { column_width(22); }

    std::string make_usage(const CLI::App*, std::string) const override { return '\n' + usage_; }

private:
    std::string usage_;
};

std::string details_and_examples(const Description& description) {
    std::string text = description.details;
    if (!text.empty()) text += '\n';
    text += "Examples:\n";
    std::istringstream examples(description.examples);
    for (std::string line; std::getline(examples, line);)
        text += "  " + line + '\n';
    text.pop_back();
    return text;
}

// Negative numbers do not.
bool looks_like_option(const std::string& word) {
    return word.size() > 1 && word[0] == '-' && !(word[1] >= '0' && word[1] <= '9');
}

}  // namespace

std::string full_name(const Family& family, const Verb& verb) {
    const std::string name = verb.description().name;
    return name.empty() ? family.name : family.name + (' ' + name);
}

std::string usage_of(const Family& family, const Verb& verb) {
    const std::string start = "tarv " + full_name(family, verb);
    if (*verb.description().inputs == '\0') return "Usage: " + start + " [OPTIONS]\n";
    std::string text = "Usage: " + start + " [OPTIONS] " + verb.description().inputs + '\n';
    if (verb.reads_lines()) text += "       " + start + " [OPTIONS] -\n";
    return text;
}

VerbParser::VerbParser(const Family& family, Verb& verb)
    : verb_(verb), app_(verb.description().summary, "") {
    app_.formatter(std::make_shared<HelpText>(usage_of(family, verb)));
    app_.allow_windows_style_options(false);
    app_.allow_extras();
    app_.set_help_flag("-h,--help", "Print this text");
    app_.footer(details_and_examples(verb.description()));
    verb.add_options(app_);
    if (verb.has_json()) {
        app_.add_flag("--json", request_.json, "Answer with one JSON object a line");
    }
    if (verb.reads_lines()) {
        app_.add_flag("--crlf", request_.crlf, "Lines of standard input end in CR LF");
    }
}

Request VerbParser::parse(std::vector<std::string> words) {
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

}  // namespace tarv
