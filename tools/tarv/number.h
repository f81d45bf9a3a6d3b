// Numbers as the tool reads them.
#pragma once

#include <string_view>

#include "tarvcore/error_info.h"

namespace tarv {

// A whole text that is a decimal number: digits, before them "-" or nothing.  Errors are
// "error.tarv.number" and, for what does not fit into 64 bits, "error.tarv.number.range"; `number`
// is left alone then.
[[nodiscard]] tarvcore::ErrorInfo::Ptr parse_number(std::string_view text, long long* number);

}  // namespace tarv
