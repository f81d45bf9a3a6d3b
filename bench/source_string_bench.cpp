#include "tarvcore/source_string.h"

#include <absl/strings/cord.h>

#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "bench/support/row.h"
#include "bench/topics.h"

namespace tarv_bench {
namespace {

using namespace tarvcore;

constexpr char literal[] = "Unable to convert '{@value}' to '{@type}'";
constexpr unsigned length = sizeof literal - 1;
static_assert(length == 41);

// A text that the compiler cannot look into.
std::string run_time_text() {
    std::string text = literal;
    keep(text);
    return text;
}

using SharedString = std::shared_ptr<const std::string>;

template <class Text>
Text make_dynamic(const std::string& text) {
    return Text(text);
}
template <>
SourceString make_dynamic(const std::string& text) {
    return SourceString(text.data(), static_cast<unsigned>(text.size()));
}
template <>
SharedString make_dynamic(const std::string& text) {
    return std::make_shared<const std::string>(text);
}

template <class Text>
Text make_from_literal() {
    return Text(literal);
}
template <>
SourceString make_from_literal() {
    return SourceString(literal, true);
}

template <class Text>
void from_literal(benchmark::State& state) {
    measure(state, [] {
        Text text = make_from_literal<Text>();
        keep(text);
    });
}

template <class Text>
void from_run_time_text(benchmark::State& state) {
    const std::string source = run_time_text();
    measure(state, [&] {
        Text text = make_dynamic<Text>(source);
        keep(text);
    });
}

template <class Text>
void copy(benchmark::State& state, const Text& text) {
    measure(state, [&] {
        Text other(text);
        keep(other);
    });
}

template <class Text>
void copy_of_literal(benchmark::State& state) {
    copy(state, make_from_literal<Text>());
}

template <class Text>
void copy_of_dynamic(benchmark::State& state) {
    copy(state, make_dynamic<Text>(run_time_text()));
}

template <class Text>
void move_there_and_back(benchmark::State& state) {
    Text text = make_dynamic<Text>(run_time_text());
    measure(state, [&] {
        Text other(std::move(text));
        keep(other);
        text = std::move(other);
        keep(text);
    });
}

template <class Text>
void equal(benchmark::State& state, const Text& a, const Text& b) {
    measure(state, [&] {
        keep(a);
        keep(b);
        keep(a == b);
    });
}

template <class Text>
void equal_apart(benchmark::State& state) {
    equal(state, make_dynamic<Text>(run_time_text()), make_dynamic<Text>(run_time_text()));
}

template <class Text>
void equal_shared(benchmark::State& state) {
    const Text text = make_dynamic<Text>(run_time_text());
    equal(state, text, Text(text));
}

}  // namespace

void add_source_string_rows() {
    add_row("text: from a literal", "1 ns",
            {{"SourceString", from_literal<SourceString>},
             {"const char*", from_literal<const char*>},
             {"std::string", from_literal<std::string>}});

    add_row("text: copy of a literal", "1 ns",
            {{"SourceString", copy_of_literal<SourceString>},
             {"absl::Cord", copy_of_literal<absl::Cord>},
             {"std::string", copy_of_literal<std::string>}});

    add_row("text: from 41 characters", "1.05 x",
            {{"SourceString", from_run_time_text<SourceString>},
             {"std::string", from_run_time_text<std::string>},
             {"absl::Cord", from_run_time_text<absl::Cord>},
             {"make_shared<string>", from_run_time_text<SharedString>}});

    add_row("text: copy of a dynamic one", "1.1 x",
            {{"SourceString", copy_of_dynamic<SourceString>},
             {"shared_ptr<string>", copy_of_dynamic<SharedString>},
             {"absl::Cord", copy_of_dynamic<absl::Cord>}});

    add_row("text: move there and back", "1.05 x",
            {{"SourceString", move_there_and_back<SourceString>},
             {"shared_ptr<string>", move_there_and_back<SharedString>},
             {"std::string", move_there_and_back<std::string>}});

    add_row(
        "text: equal, 41 characters", "1.05 x",
        {{"SourceString", equal_apart<SourceString>}, {"std::string", equal_apart<std::string>}});

    add_row(
        "text: equal, copies of one", "0.3 x",
        {{"SourceString", equal_shared<SourceString>}, {"std::string", equal_shared<std::string>}});
}

}  // namespace tarv_bench
