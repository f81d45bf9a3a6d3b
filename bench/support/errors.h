// What the benchmarks of errors have in common: the texts of an error, and the peers that carry
// them.
#pragma once

#include <absl/status/status.h>
#include <absl/strings/cord.h>

#include <exception>
#include <string>

namespace tarv_bench {

inline constexpr char code_text[] = "error.tarvcore.absoluteTime.invalidUtcString";
inline constexpr char message_text[] = "Invalid UTC time string: \"{@utcTime}\"";
inline constexpr char function_text[] = "tarvcore::AbsoluteTime::from_string_nothrow()";

// The plain way to describe an error.
struct ThreeStrings {
    std::string code = code_text;
    std::string message = message_text;
    std::string function = function_text;
};

struct ThreeStringsException : std::exception, ThreeStrings {};

inline absl::Status status_with_payloads(absl::string_view first, absl::string_view second) {
    absl::Status status(absl::StatusCode::kInvalidArgument, message_text);
    status.SetPayload("first", absl::Cord(first));
    status.SetPayload("second", absl::Cord(second));
    return status;
}

}  // namespace tarv_bench
