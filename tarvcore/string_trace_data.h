// The hook through which a tracing facility recognises the library's shared texts.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string_view>

#include "tarvcore/config.h"

namespace tarvcore {

class StringTraceData;

// What a tracing facility installs.  Both are called on the thread that writes.
struct StringTraceHandlers {
    // Whether a stream is one of the facility's own.
    bool (*supported_by_stream)(const std::ostream& os);
    // Writes the text of `data`, or what the facility's trace file needs to find it again; false
    // when the caller should write the text itself.
    bool (*write_to_stream)(std::ostream& os, const StringTraceData& data);
};

// Installs the handlers for the whole process and answers the ones installed before; null: none.
// The handlers must live until others are installed and every thread has left them.
TARVCORE_API const StringTraceHandlers* set_string_trace_handlers(
    const StringTraceHandlers* handlers);

// Base of shared immutable texts: dynamic source strings, keys, cache entries.  A tracing facility
// that writes one text over and over can write it once for each of its sinks, remember here where,
// and refer to that place from then on.  Without handlers nothing of this is used.
class TARVCORE_API StringTraceData {
public:
    enum : unsigned { max_trace_sink_count = 2 };

    StringTraceData(const StringTraceData&) = delete;
    StringTraceData& operator=(const StringTraceData&) = delete;

    // The text; lives as long as the object.
    virtual std::string_view query_trace_text() const = 0;

    // Where a sink has the text: an offset of the sink's own making, 0 at first.  Sinks are
    // numbered from 0 below max_trace_sink_count; other numbers have no offset and take none.  Safe
    // to call from several threads.
    std::uint32_t query_trace_file_offset(unsigned sink) const;
    void set_trace_file_offset(unsigned sink, std::uint32_t offset) const;

    // What the handlers say; false where there are none.
    static bool supported_by_stream(const std::ostream& os);
    // Through the handlers where they want the stream, else the plain characters.
    void write_to_stream(std::ostream& os) const;

protected:
    constexpr StringTraceData() = default;
    virtual ~StringTraceData();

private:
    mutable std::uint32_t trace_file_offsets_[max_trace_sink_count] = {};
};

}  // namespace tarvcore
