#include "tarvcore/error_code.h"

#include <string_view>

#include "bench/support/row.h"
#include "bench/topics.h"
#include "tarvcore/error_code_constants.h"

namespace tarv_bench {
namespace {

using namespace tarvcore;

constexpr std::string_view code_text = "error.tarvcore.absoluteTime.invalidUtcString";
constexpr std::string_view family_text = "error.tarvcore.absoluteTime";

template <class Pattern>
void matches(benchmark::State& state, const Pattern& pattern) {
    const ErrorCode code = error::tarvcore_absoluteTime_invalidUtcString;
    require(code == code_text.data() && code.matches(pattern), "ErrorCode::matches");
    measure(state, [&] {
        keep(code);
        keep(code.matches(pattern));
    });
}

// What a program without the library would write.
bool view_matches(std::string_view code, std::string_view family) {
    return code.starts_with(family) && (code.size() == family.size() || code[family.size()] == '.');
}

void matches_of_views(benchmark::State& state) {
    std::string_view code = code_text;
    measure(state, [&] {
        keep(code);
        keep(view_matches(code, family_text));
    });
}

}  // namespace

void add_error_code_rows() {
    add_row("code: matches a literal", "10 ns",
            {{"ErrorCode",
              [](benchmark::State& state) {
                  measure(state, [code = ErrorCode(code_text.data(), true)] {
                      keep(code);
                      keep(code.matches("error.tarvcore.absoluteTime"));
                  });
              }},
             {"std::string_view", matches_of_views}});

    add_row("code: matches a constant", "10 ns",
            {{"ErrorCode",
              [](benchmark::State& state) { matches(state, error::tarvcore_absoluteTime); }},
             {"std::string_view", matches_of_views}});
}

}  // namespace tarv_bench
