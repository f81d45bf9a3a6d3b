// What the library tells the diagnostic trace hooks.
#pragma once

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

#include "tarvcore/diagnostic_trace.h"

namespace tarv_test {

// Takes the process's diagnostic lines while it lives; one at a time.
class TraceHooks {
public:
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

    // PLACE|FORMAT|TEXT|TEXT...
    static inline std::vector<std::string> lines;
    static inline bool wants_lines;
    static inline unsigned period;

private:
    static bool take(const tarvcore::SourceLocation& where, const tarvcore::SourceString& format,
                     const char* data, unsigned size) {
        std::string texts(data, size + 1);  // each ends with a NUL, the last one's is not counted
        std::replace(texts.begin(), texts.end(), '\0', '|');
        static std::mutex mutex;
        const std::lock_guard guard(mutex);
        lines.push_back(where.file_depot_path() + '|' + format.as_string() + '|' + texts);
        return true;
    }
};

}  // namespace tarv_test
