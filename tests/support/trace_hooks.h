// What the library tells the diagnostic trace hooks.
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "tarvcore/diagnostic_trace.h"

namespace tarv_test {

// Takes the process's diagnostic lines while it lives; one at a time.
class TraceHooks {
public:
    struct Line {
        std::string place;
        std::string format;
        std::vector<std::string> texts;
    };

    TraceHooks() {
        lines.clear();
        wants_lines = true;
        period = 0;
        tarvcore::set_diagnostic_trace_handlers(
            [] { return period; }, take,
            [](const auto&, const auto& format, const char* data, unsigned size) {
                return wants_lines && format.empty() && data == nullptr && size == 0;
            });
    }
    ~TraceHooks() { tarvcore::set_diagnostic_trace_handlers(nullptr, nullptr, nullptr); }
    TraceHooks(const TraceHooks&) = delete;
    TraceHooks& operator=(const TraceHooks&) = delete;

    static inline std::vector<Line> lines;
    static inline bool wants_lines;
    static inline unsigned period;

private:
    static bool take(const tarvcore::SourceLocation& where, const tarvcore::SourceString& format,
                     const char* data, unsigned size) {
        static std::mutex mutex;
        const std::lock_guard guard(mutex);
        Line line = {where.file_depot_path(), format.as_string(), {}};
        // Each text ends with a NUL, the last one with that which is not counted.
        for (unsigned at = 0; at <= size; at += line.texts.back().size() + 1)
            line.texts.emplace_back(data + at);
        lines.push_back(std::move(line));
        return true;
    }
};

}  // namespace tarv_test
