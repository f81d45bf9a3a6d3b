#include "tarvcore/stack_trace.h"

#include <cxxabi.h>

#include <atomic>
#include <cstdlib>
#include <memory>
#include <ostream>

#include "tarvcore/impl/debug_help.h"
#include "tarvcore/impl/fault_frame.h"
#include "tarvcore/impl/stack_walk.h"
#include "tarvcore/impl/stream_text.h"
#include "tarvcore/impl/unicode_kernels.h"
#include "tarvcore/streamers.h"
//
#include <psapi.h>

TARVCORE_SOURCE_FILE("$Id: //tarvcore/stack_trace.cpp#1 $");

namespace tarvcore {
namespace {

std::string utf8(const wchar_t* text) {
    return impl::utf16_to_utf8_replacing(text, std::char_traits<wchar_t>::length(text), '?');
}

std::string demangled(std::string name) {
    // The PDB's names have the underscore that C names have on this platform.
    const char* const mangled = name.c_str() + (name.starts_with("__Z") ? 1 : 0);
    struct Free {
        void operator()(char* memory) const { std::free(memory); }
    };
    int status = 0;
    const std::unique_ptr<char, Free> plain(
        abi::__cxa_demangle(mangled, nullptr, nullptr, &status));
    return status == 0 ? plain.get() : name;
}

// The symbol engine of the debugging-help library, for one thread at a time.  The first user starts
// it, the last one ends it, so that modules that come and go in between are seen.
class SymbolEngine {
public:
    SymbolEngine() {
        if (!help_.has_symbols() || !lock_.is_held() || is_broken_) return;
        if (process_ == nullptr) start();
    }
    ~SymbolEngine() {
        if (users_.fetch_sub(1) == 1 && is_usable()) end();
    }
    SymbolEngine(const SymbolEngine&) = delete;
    SymbolEngine& operator=(const SymbolEngine&) = delete;

    // Fills in what the engine knows of an instruction.
    void describe(std::uintptr_t instruction, StackFrame& frame) const {
        if (!is_usable()) return;
        constexpr unsigned longest_name = 1024;
        alignas(SYMBOL_INFOW) char memory[sizeof(SYMBOL_INFOW) + longest_name * sizeof(wchar_t)];
        auto& symbol = *new (memory) SYMBOL_INFOW();
        symbol.SizeOfStruct = sizeof symbol;
        symbol.MaxNameLen = longest_name;
        DWORD64 offset = 0;
        IMAGEHLP_LINEW64 line = {};
        line.SizeOfStruct = sizeof line;
        DWORD line_offset = 0;
        bool has_symbol = false;
        bool has_line = false;
        // Wine's comes to grief over long C++ names.
        is_broken_ = !impl::survives([&] {
            has_symbol = help_.symbol_at(process_, instruction, &offset, &symbol) != 0;
            has_line = help_.line_at(process_, instruction, &line_offset, &line) != 0;
        });
        if (is_broken_) return;
        if (has_symbol) {
            frame.function = demangled(utf8(symbol.Name));
            frame.offset = reinterpret_cast<std::uintptr_t>(frame.address) -
                           static_cast<std::uintptr_t>(symbol.Address);
        }
        if (has_line) {
            frame.file = utf8(line.FileName);
            frame.line = line.LineNumber;
        }
    }

private:
    bool is_usable() const { return lock_.is_held() && process_ != nullptr && !is_broken_; }

    void start() {
        // Its own handle: the program may have an engine for that of the process.
        HANDLE self = GetCurrentProcess();
        HANDLE handle = nullptr;
        if (DuplicateHandle(self, self, self, &handle, 0, FALSE, DUPLICATE_SAME_ACCESS) == 0)
            return;
        // Options are those of the process; the program's own are kept.
        help_.set_options(help_.options() | SYMOPT_LOAD_LINES | SYMOPT_DEFERRED_LOADS |
                          SYMOPT_FAIL_CRITICAL_ERRORS);
        if (help_.initialize(handle, nullptr, TRUE) != 0) {
            process_ = handle;
        } else {
            CloseHandle(handle);
        }
    }
    void end() {
        help_.clean_up(process_);
        CloseHandle(process_);
        process_ = nullptr;
    }

    // Those who wait for the lock are users, too.
    static constinit inline std::atomic<unsigned> users_ = 0;
    static constinit inline HANDLE process_ = nullptr;
    // For good: nobody knows what a fault within has left behind.
    static constinit inline bool is_broken_ = false;

    const impl::DebugHelp& help_ = impl::debug_help();
    const unsigned user_ = users_.fetch_add(1);
    const impl::DebugHelpLock lock_;
};

// The module that has an address.
void describe_module(StackFrame& frame) {
    HMODULE module = nullptr;
    if (GetModuleHandleExW(
            GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
            static_cast<const wchar_t*>(frame.address), &module) == 0) {
        return;
    }
    // The name alone: paths have any length.
    wchar_t name[MAX_PATH];
    const DWORD length = K32GetModuleBaseNameW(GetCurrentProcess(), module, name, MAX_PATH);
    frame.module = impl::utf16_to_utf8_replacing(name, length, '?');
    frame.offset =
        reinterpret_cast<std::uintptr_t>(frame.address) - reinterpret_cast<std::uintptr_t>(module);
}

}  // namespace

std::vector<StackFrame> impl::describe(const StackAddresses& stack) {
    std::vector<StackFrame> frames(stack.count);
    const SymbolEngine engine;
    for (unsigned i = 0; i < stack.count; ++i) {
        frames[i].address = stack.addresses[i];
        describe_module(frames[i]);
        // What a call returns to may belong to the next line, or to the next function.
        const bool is_call = i != 0 || !stack.first_is_instruction;
        const auto address = reinterpret_cast<std::uintptr_t>(frames[i].address);
        engine.describe(is_call ? address - 1 : address, frames[i]);
    }
    return frames;
}

std::string impl::stack_trace_text(const StackAddresses& stack) {
    std::string text;
    for (const StackFrame& frame : describe(stack))
        text += stream_text(frame) + '\n';
    return text;
}

std::vector<StackFrame> current_stack_trace() {
    CONTEXT context = {};
    TARVCORE_CAPTURE_CONTEXT(context);
    return impl::describe(impl::walk_own_stack(context));
}

std::ostream& operator<<(std::ostream& os, const StackFrame& frame) {
    os << streamers::Pointer(frame.address);
    if (!frame.module.empty()) os << ' ' << frame.module;
    if (!frame.function.empty()) os << (frame.module.empty() ? " " : "!") << frame.function;
    if (!frame.module.empty() || !frame.function.empty())
        os << '+' << streamers::Hex(frame.offset, false);
    if (!frame.file.empty()) os << " [" << frame.file << " @ " << std::to_string(frame.line) << ']';
    return os;
}

}  // namespace tarvcore
