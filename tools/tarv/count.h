// Counts of nanoseconds as the tool reads and writes them: decimal, or "infinite".
#pragma once

#include <string_view>

#include "tarvcore/error_info.h"
#include "tarvcore/impl/time_base.h"
#include "tools/tarv/result.h"

namespace tarv {

// Errors are those of `parse_number`; `time` is left alone then.
[[nodiscard]] tarvcore::ErrorInfo::Ptr parse_count(std::string_view text,
                                                   tarvcore::impl::TimeBase* time);

// As the field "nanoseconds".
void add_count(Result& result, const tarvcore::impl::TimeBase& time);

}  // namespace tarv
