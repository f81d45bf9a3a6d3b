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

// Null also within a hook.
template <class Function>
Function usable(const std::atomic<Function>& hook) {
    return is_in_hook ? nullptr : hook.load();
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

TraceTexts& TraceTexts::add(std::string_view text) {
    if (!std::exchange(is_empty_, false)) data_ += '\0';
    const std::size_t begin = data_.size();
    data_ += text;
    std::replace(data_.begin() + static_cast<std::ptrdiff_t>(begin), data_.end(), '\0', ' ');
    return *this;
}

unsigned diagnostic_trace_period() {
    const auto function = usable(period_function);
    const HookCall call;
    return function == nullptr ? 0 : function();
}

bool wants_diagnostic_traces() {
    const auto function = usable(query_function);
    const HookCall call;
    return function == nullptr || function(SourceLocation(), SourceString(), nullptr, 0);
}

void write_diagnostic_trace(const SourceLocation& where, const SourceString& format,
                            const TraceTexts& texts) {
    if (const auto function = usable(trace_function); function != nullptr) {
        const HookCall call;
        function(where, format, texts.data().c_str(), texts.data().size());
        return;
    }
    write_default_trace("\n*** " + where.file_depot_path() + " - " +
                        filled(format.as_string_view(), texts.data()) + "\n");
}

void write_default_trace(const std::string& text) {
    DWORD written = 0;
    WriteFile(GetStdHandle(STD_ERROR_HANDLE), text.data(), text.size(), &written, nullptr);
    OutputDebugStringW(to_wstring(text, L'?', nullptr).c_str());
}

}  // namespace impl
}  // namespace tarvcore
