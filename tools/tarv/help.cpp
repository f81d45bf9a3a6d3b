#include "tools/tarv/help.h"

#include <algorithm>
#include <numeric>
#include <string_view>
#include <utility>
#include <vector>

#include "tarvcore/config.h"
#include "tarvmoduleregistry/module_registry.h"
#include "tools/tarv/verb_parser.h"

TARVCORE_SOURCE_FILE("$Id: //tools/tarv/help.cpp#1 $");

namespace tarv {
namespace {

constexpr char introduction[] =
    "tarv: the operations of the core library, on arguments or on lines of standard input\n"
    "\n"
    "Usage: tarv VERB [OPTIONS] INPUT...    answer the arguments\n"
    "       tarv VERB [OPTIONS] -           answer every line of standard input\n"
    "       tarv help VERB                  what the verb takes and answers, with examples\n";

constexpr char conclusion[] =
    "\n"
    "Exit status: 0 all inputs were good, 1 one failed or a stream did, 2 the command is wrong.\n";

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

// Letters to insert, leave out, replace, or exchange with their neighbours: the optimal string
// alignment distance.
unsigned distance(const std::string& a, const std::string& b) {
    std::vector<std::vector<unsigned>> d(a.size() + 1, std::vector<unsigned>(b.size() + 1));
    std::iota(d[0].begin(), d[0].end(), 0u);
    for (unsigned i = 1; i <= a.size(); ++i) {
        d[i][0] = i;
        for (unsigned k = 1; k <= b.size(); ++k) {
            const bool same = a[i - 1] == b[k - 1];
            d[i][k] = std::min({d[i - 1][k] + 1, d[i][k - 1] + 1, d[i - 1][k - 1] + !same});
            if (i > 1 && k > 1 && a[i - 1] == b[k - 2] && a[i - 2] == b[k - 1])
                d[i][k] = std::min(d[i][k], d[i - 2][k - 2] + 1);
        }
    }
    return d[a.size()][b.size()];
}

std::string from_xml(std::string text) {
    constexpr std::pair<std::string_view, char> entities[] = {
        {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}, {"&amp;", '&'}};
    for (const auto& [entity, character] : entities) {
        for (auto i = text.find(entity); i != text.npos; i = text.find(entity, i + 1))
            text.replace(i, entity.size(), 1, character);
    }
    return text;
}

// What an element <Item name="NAME"> of the module information holds.
std::string item(const std::string& information, const std::string& name) {
    const std::string tag = "<Item name=\"" + name + "\">";
    const auto begin = information.find(tag);
    if (begin == information.npos) return "unknown";
    const auto text = begin + tag.size();
    return from_xml(information.substr(text, information.find('<', text) - text));
}

}  // namespace

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
    return text + "\n\"tarv help " + family.name +
           " VERB\" says what a verb takes and answers, with examples.\n";
}

std::vector<std::string> names_of_families() {
    std::vector<std::string> names;
    for (const Family& family : families())
        names.push_back(family.name);
    return names;
}

std::vector<std::string> names_of_verbs(const Verbs& verbs) {
    std::vector<std::string> names;
    for (const auto& verb : verbs)
        names.push_back(verb->description().name);
    return names;
}

std::string joined(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names)
        text += (text.empty() ? "" : ", ") + name;
    return text;
}

std::string no_such_verb(const std::string& word, const std::vector<std::string>& names) {
    if (word.starts_with('-')) return word + " comes too early: options follow the verb";
    std::string complaint = "there is no verb \"" + word + '"';
    const auto nearest = std::ranges::min_element(
        names, {}, [&](const std::string& name) { return distance(word, name); });
    // More than a third of the letters wrong is another word.
    if (distance(word, *nearest) * 3 > word.size()) return complaint;
    return complaint + "; is it \"" + *nearest + "\"?";
}

std::string version_text() {
    tarvmoduleregistry::ModuleInfo information;
    tarvmoduleregistry::query_module_info("tarvcore", &information);
    const auto of = [&](const char* name) { return item(information.text, name); };
    return "tarv " + of("FileVersion") + "\n" + of("OriginalFilename") + ", build " +
           of("ZOLTBuildName") + ' ' + of("ZOLTBuildNum") + " of change " +
           of("ZOLTBuildChangelist") + ", " + of("ZOLTBuildTimestamp") + " UTC on " +
           of("ZOLTBuildMachine") + '\n' + of("LegalCopyright") + '\n';
}

}  // namespace tarv
