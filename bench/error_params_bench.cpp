#include "tarvcore/error_params.h"

#include <absl/strings/str_cat.h>
#include <absl/strings/substitute.h>
#include <fmt/args.h>
#include <fmt/format.h>

#include <string>

#include "bench/support/row.h"
#include "bench/topics.h"

namespace tarv_bench {
namespace {

using namespace tarvcore;

struct Values {
    std::string file = "/etc/tarv/settings.conf";
    std::string line = "128";
    std::string key = "deadline";
};

const char* const expected = "File '/etc/tarv/settings.conf', line 128: unknown key 'deadline'";

template <class Expand>
void expand(benchmark::State& state, Expand expand) {
    require(expand() == expected, "expanded message");
    measure(state, [&] { keep(expand()); });
}

}  // namespace

void add_error_params_rows() {
    add_row("message: expand three parameters", "1 x of absl::Substitute",
            {{"ErrorParams",
              [](benchmark::State& state) {
                  const Values values;
                  ErrorParams params;
                  params.add("file", values.file).add("line", values.line).add("key", values.key);
                  const SourceString message("File '{@file}', line {@line}: unknown key '{@key}'",
                                             true);
                  expand(state, [&] { return params.expanded_message(message); });
              }},
             {"absl::Substitute",
              [](benchmark::State& state) {
                  expand(state, [v = Values()] {
                      return absl::Substitute("File '$0', line $1: unknown key '$2'", v.file,
                                              v.line, v.key);
                  });
              }},
             {"absl::StrCat",
              [](benchmark::State& state) {
                  expand(state, [v = Values()] {
                      return absl::StrCat("File '", v.file, "', line ", v.line, ": unknown key '",
                                          v.key, "'");
                  });
              }},
             {"fmt, named", [](benchmark::State& state) {
                  expand(state, [v = Values()] {
                      return fmt::format("File '{file}', line {line}: unknown key '{key}'",
                                         fmt::arg("file", v.file), fmt::arg("line", v.line),
                                         fmt::arg("key", v.key));
                  });
              }}});
}

}  // namespace tarv_bench
