#include "tarvcore/string_trace_data.h"

#include <ostream>

TARVCORE_SOURCE_FILE("$Id: //tarvcore/string_trace_data.cpp#1 $");

namespace tarvcore {
namespace {

constinit const StringTraceHandlers* installed_handlers = nullptr;

const StringTraceHandlers* handlers_for(const std::ostream& os) {
    const auto* handlers = __atomic_load_n(&installed_handlers, __ATOMIC_ACQUIRE);
    return handlers && handlers->supported_by_stream(os) ? handlers : nullptr;
}

}  // namespace

const StringTraceHandlers* set_string_trace_handlers(const StringTraceHandlers* handlers) {
    return __atomic_exchange_n(&installed_handlers, handlers, __ATOMIC_ACQ_REL);
}

StringTraceData::~StringTraceData() = default;

std::uint32_t StringTraceData::query_trace_file_offset(unsigned sink) const {
    if (sink >= max_trace_sink_count) return 0;
    return __atomic_load_n(&trace_file_offsets_[sink], __ATOMIC_ACQUIRE);
}

void StringTraceData::set_trace_file_offset(unsigned sink, std::uint32_t offset) const {
    if (sink >= max_trace_sink_count) return;
    __atomic_store_n(&trace_file_offsets_[sink], offset, __ATOMIC_RELEASE);
}

bool StringTraceData::supported_by_stream(const std::ostream& os) {
    return handlers_for(os) != nullptr;
}

void StringTraceData::write_to_stream(std::ostream& os) const {
    const StringTraceHandlers* handlers = handlers_for(os);
    if (handlers && handlers->write_to_stream(os, *this)) return;
    const std::string_view text = query_trace_text();
    os.write(text.data(), static_cast<std::streamsize>(text.size()));
}

}  // namespace tarvcore
