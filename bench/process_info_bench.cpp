#include "tarvcore/process_info.h"

#include <string>

#include "bench/support/row.h"
#include "bench/topics.h"
//
#include <windows.h>

namespace tarv_bench {

using namespace tarvcore;

void add_process_info_rows() {
    SetEnvironmentVariableW(L"TARV_BENCH", std::wstring(100, L'v').c_str());
    add_row("environment: 100 characters", "1.2 x",
            {{"get_environment_variable",
              [](benchmark::State& state) {
                  measure(state, [] { keep(get_environment_variable("TARV_BENCH", 10, nullptr)); });
              }},
             {"GetEnvironmentVariableW", [](benchmark::State& state) {
                  measure(state, [] {
                      wchar_t buffer[2048];
                      require(GetEnvironmentVariableW(L"TARV_BENCH", buffer, 2048) == 100,
                              "length");
                      keep(buffer);
                  });
              }}});
}

}  // namespace tarv_bench
