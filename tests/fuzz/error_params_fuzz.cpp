// Messages put together from templates and parameters, beside a search for one place at a time.
#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "tarvcore/error_params.h"
#include "tests/fuzz/targets.h"

namespace tarv_fuzz {
namespace {

using Values = std::map<std::string, std::string>;

// The next field of the input, which 0xFF ends.
std::string take_field(Input& input) {
    const auto end = std::find(input.begin(), input.end(), 0xFF);
    std::string field(input.begin(), end);
    input = input.subspan(field.size());
    take_byte(input);
    return field;
}

std::string shown(const std::string& value, unsigned limit) {
    if (value.size() <= limit) return value;
    while (limit != 0 && (value[limit] & 0xC0) == 0x80)
        --limit;
    return value.substr(0, limit) + "...";
}

std::string expanded(const std::string& text, const Values& values, unsigned limit) {
    std::string message;
    for (std::size_t at = 0;;) {
        const auto opener = text.find("{@", at);
        const auto closer = opener == text.npos ? text.npos : text.find('}', opener);
        if (closer == text.npos) return message + text.substr(at);
        message += text.substr(at, opener - at);
        at = closer + 1;
        const auto value = values.find(text.substr(opener + 2, closer - opener - 2));
        message +=
            value == values.end() ? text.substr(opener, at - opener) : shown(value->second, limit);
    }
}

}  // namespace

void run_error_params(Input input) {
    const unsigned choice = take_byte(input);
    const unsigned limit = choice == 0xFF ? 0xFFFFFFFF : choice;
    const std::string text = take_field(input);
    Values values;
    tarvcore::ErrorParams params;
    while (!input.empty()) {
        const std::string name = take_field(input);
        const std::string value = take_field(input);
        values[name] = value;
        params.add(name.data(), name.size(), value.data(), value.size());
    }
    require(params.size() == values.size(), "the number of parameters");
    require(std::ranges::equal(params, values,
                               [](const auto& pair, const auto& expected) {
                                   return pair.name.as_string() == expected.first &&
                                          pair.value == expected.second;
                               }),
            "the parameters and their order");
    // In memory that ends where the template does.
    const std::vector<char> exact(text.begin(), text.end());
    const auto message = params.expanded_message_with_limit(exact.data(), exact.size(), limit);
    require(message.as_string() == expanded(text, values, limit), "a message");
}

}  // namespace tarv_fuzz
