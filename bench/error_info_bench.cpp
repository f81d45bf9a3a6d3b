#include "tarvcore/error_info.h"

#include <memory>
#include <string>
#include <system_error>

#include "bench/support/errors.h"
#include "bench/support/row.h"
#include "bench/topics.h"
#include "tarvcore/error_code_constants.h"

TARVCORE_SOURCE_FILE("$Id: //bench/error_info_bench.cpp#1 $");

namespace tarv_bench {
namespace {

using namespace tarvcore;

const ErrorCode& code = error::tarvcore_absoluteTime_invalidUtcString;

ErrorInfo::Ptr record_of_literals() {
    return ErrorInfo::create(code, message_text, TARVCORE_LOCATION(function_text));
}

template <class Make>
void make_and_destroy(benchmark::State& state, Make make) {
    measure(state, [&] { keep(make()); });
}

template <class Record>
void copy(benchmark::State& state, const Record& record) {
    measure(state, [&] {
        Record other(record);
        keep(other);
    });
}

// Hands the result of `make` up through `depth` frames which look at it, as callers do.
template <class Result, class Make>
[[gnu::noinline]] Result through_frames(int depth, Make make) {
    if (depth == 0) return make();
    Result result = through_frames<Result>(depth - 1, make);
    keep(result);
    return result;
}

}  // namespace

void add_error_info_rows() {
    add_row("record: three literals", "0.5 x of three std::string",
            {{"ErrorInfo", [](auto& state) { make_and_destroy(state, record_of_literals); }},
             {"three std::string",
              [](auto& state) { make_and_destroy(state, [] { return ThreeStrings(); }); }},
             {"std::system_error",
              [](auto& state) {
                  make_and_destroy(state, [] {
                      return std::system_error(EINVAL, std::generic_category(), message_text);
                  });
              }},
             {"absl::Status", [](auto& state) {
                  make_and_destroy(state,
                                   [] { return status_with_payloads(code_text, function_text); });
              }}});

    add_row("record: two parameters", "1 x",
            {{"ErrorInfo",
              [](auto& state) {
                  const std::string text = "2014-07-16T13:23:00+02:00";
                  const std::string position = "19";
                  make_and_destroy(state, [&] {
                      return ErrorInfo::create(
                          code, message_text,
                          ErrorParams().add("utcTime", text).add("position", position),
                          TARVCORE_LOCATION(function_text));
                  });
              }},
             {"absl::Status", [](auto& state) {
                  const std::string text = "2014-07-16T13:23:00+02:00";
                  const std::string position = "19";
                  make_and_destroy(state, [&] { return status_with_payloads(text, position); });
              }}});

    add_row("record: copy", "1.05 x",
            {{"ErrorInfo::Ptr", [](auto& state) { copy(state, record_of_literals()); }},
             {"shared_ptr<struct>",
              [](auto& state) { copy(state, std::make_shared<const ThreeStrings>()); }},
             {"absl::Status",
              [](auto& state) { copy(state, status_with_payloads(code_text, function_text)); }}});

    add_row("record: returned through 8 frames", "0.6 x",
            {{"ErrorInfo::Ptr",
              [](auto& state) {
                  make_and_destroy(
                      state, [] { return through_frames<ErrorInfo::Ptr>(8, record_of_literals); });
              }},
             {"absl::Status", [](auto& state) {
                  make_and_destroy(state, [] {
                      return through_frames<absl::Status>(8, [] {
                          return absl::Status(absl::StatusCode::kInvalidArgument, message_text);
                      });
                  });
              }}});
}

}  // namespace tarv_bench
