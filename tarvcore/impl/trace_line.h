// The library's way to the diagnostic trace hooks.
#pragma once

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

unsigned diagnostic_trace_period();
bool wants_diagnostic_traces();
void write_diagnostic_trace(const SourceLocation& where, const SourceString& format,
                            const TraceTexts& texts);

// Writes a text to standard error, past the C runtime, and to the debugger's output.
void write_default_trace(const std::string& text);

}  // namespace tarvcore::impl
