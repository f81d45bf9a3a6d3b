// The library's way to the diagnostic trace hooks.
#pragma once

#include <atomic>
#include <string>
#include <string_view>

#include "tarvcore/config.h"
#include "tarvcore/source_location.h"
#include "tarvcore/source_string.h"

namespace tarvcore::impl {

// The texts that fill a line's places, in order.
class TraceTexts {
public:
    // A NUL within a text becomes a blank.
    TraceTexts& add(std::string_view text);

    const std::string& data() const { return data_; }

private:
    std::string data_;
    bool is_empty_ = true;
};

// Whether there is a hook that the report of a fault calls; and how long one may take then, in
// milliseconds.  Tests wait for less.
bool has_diagnostic_hooks();
TARVCORE_API extern std::atomic<unsigned> longest_hook_call;

unsigned diagnostic_trace_period();
bool wants_diagnostic_traces();
void write_diagnostic_trace(const SourceLocation& where, const SourceString& format,
                            const TraceTexts& texts);

// Past the C runtime, and without memory.
void write_to_standard_error(std::string_view text);

}  // namespace tarvcore::impl
