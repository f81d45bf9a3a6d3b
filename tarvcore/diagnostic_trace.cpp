#include "tarvcore/diagnostic_trace.h"

#include <algorithm>
#include <atomic>
#include <string_view>
#include <utility>

#include "tarvcore/impl/trace_line.h"
#include "tarvcore/to_string.h"
//
#include <windows.h>

TARVCORE_SOURCE_FILE("$Id: //tarvcore/diagnostic_trace.cpp#1 $");

namespace tarvcore {
namespace {

constinit std::atomic<DiagnosticTracePeriodFunction> period_function = nullptr;
constinit std::atomic<DiagnosticTraceFunction> trace_function = nullptr;
constinit std::atomic<DiagnosticTraceFunction> query_function = nullptr;

// Whether this thread is within a hook: what happens in there does not go to hooks again.
thread_local constinit bool is_in_hook = false;

class HookCall {
public:
    HookCall() = default;
    ~HookCall() { is_in_hook = was_in_hook_; }
    HookCall(const HookCall&) = delete;
    HookCall& operator=(const HookCall&) = delete;

private:
    const bool was_in_hook_ = std::exchange(is_in_hook, true);
};

// Lets a hook be called; false where there is none, within a hook, and where the hook raises.
template <class Function, class Call>
bool calls(const std::atomic<Function>& hook, Call call) {
    const Function function = is_in_hook ? nullptr : hook.load();
    if (function == nullptr) return false;
    const HookCall in_hook;
    try {
        call(function);
    } catch (...) {
        return false;
    }
    return true;
}

// Each place gets the next text; places without one stay as they are.
std::string filled(std::string_view format, std::string_view texts) {
    constexpr std::string_view place = "{}";
    std::string line;
    bool has_text = true;
    for (;;) {
        const std::size_t at = has_text ? format.find(place) : std::string_view::npos;
        line += format.substr(0, at);
        if (at == std::string_view::npos) return line;
        format.remove_prefix(at + place.size());
        const std::size_t end = texts.find('\0');
        line += texts.substr(0, end);
        has_text = end != std::string_view::npos;
        texts.remove_prefix(has_text ? end + 1 : texts.size());
    }
}

}  // namespace

void set_diagnostic_trace_handlers(DiagnosticTracePeriodFunction period_fn,
                                   DiagnosticTraceFunction trace_fn,
                                   DiagnosticTraceFunction query_fn) {
    period_function.exchange(period_fn);
    trace_function.exchange(trace_fn);
    query_function.exchange(query_fn);
}

namespace impl {

constinit std::atomic<unsigned> longest_hook_call = 60'000;

TraceTexts& TraceTexts::add(std::string_view text) {
    if (!std::exchange(is_empty_, false)) data_ += '\0';
    const std::size_t begin = data_.size();
    data_ += text;
    std::replace(data_.begin() + static_cast<std::ptrdiff_t>(begin), data_.end(), '\0', ' ');
    return *this;
}

bool has_diagnostic_hooks() {
    return period_function.load() != nullptr || trace_function.load() != nullptr;
}

unsigned diagnostic_trace_period() {
    unsigned period = 0;
    calls(period_function, [&](auto function) { period = function(); });
    return period;
}

bool wants_diagnostic_traces() {
    bool is_wanted = true;
    calls(query_function, [&](auto function) {
        is_wanted = function(SourceLocation(), SourceString(), nullptr, 0);
    });
    return is_wanted;
}

void write_diagnostic_trace(const SourceLocation& where, const SourceString& format,
                            const TraceTexts& texts) {
    const bool is_written = calls(trace_function, [&](auto function) {
        function(where, format, texts.data().c_str(), texts.data().size());
    });
    if (is_written) return;
    const std::string line = "\n*** " + where.file_depot_path() + " - " +
                             filled(format.as_string_view(), texts.data()) + "\n";
    write_to_standard_error(line);
    OutputDebugStringW(to_wstring(line, L'?', nullptr).c_str());
}

void write_to_standard_error(std::string_view text) {
    DWORD written = 0;
    WriteFile(GetStdHandle(STD_ERROR_HANDLE), text.data(), text.size(), &written, nullptr);
}

}  // namespace impl
}  // namespace tarvcore
