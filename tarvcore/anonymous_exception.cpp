// The record of an exception of unknown type.

#include <algorithm>
#include <cstdint>
#include <sstream>
#include <string>

#include <windows.h>

#include "tarvcore/error_code_constants.h"
#include "tarvcore/error_info.h"
#include "tarvcore/impl/unicode_kernels.h"
#include "tarvcore/streamers.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/anonymous_exception.cpp#1 $");

namespace tarvcore {
namespace {

constexpr unsigned max_frames = 62;         // the most that old systems can capture
constexpr std::uintptr_t max_dump = 0x200;  // bytes of the stack

std::string registers_text(const CONTEXT& context) {
    const struct {
        const char* name;
        DWORD value;
    } registers[] = {{"eax=", context.Eax},    {" ebx=", context.Ebx},  {" ecx=", context.Ecx},
                     {" edx=", context.Edx},   {"\nesi=", context.Esi}, {" edi=", context.Edi},
                     {" ebp=", context.Ebp},   {" esp=", context.Esp},  {"\neip=", context.Eip},
                     {" efl=", context.EFlags}};
    std::ostringstream text;
    for (const auto& [name, value] : registers)
        text << name << streamers::Hex(value, true);
    return std::move(text).str();
}

// "MODULE+OFFSET" where the address lies in a module.
void write_frame(std::ostream& os, void* address) {
    os << streamers::Pointer(address);
    HMODULE module = nullptr;
    wchar_t path[MAX_PATH];
    if (!GetModuleHandleExW(
            GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
            static_cast<const wchar_t*>(address), &module)) {
        return;
    }
    const DWORD length = GetModuleFileNameW(module, path, MAX_PATH);
    const std::string name = impl::utf16_to_utf8_replacing(path, length, '?');
    const auto offset =
        reinterpret_cast<std::uintptr_t>(address) - reinterpret_cast<std::uintptr_t>(module);
    os << ' ' << name.substr(name.find_last_of('\\') + 1) << '+' << streamers::Hex(offset, false);
}

std::string stack_trace_text() {
    void* frames[max_frames];
    const unsigned count = CaptureStackBackTrace(1, max_frames, frames, nullptr);
    std::ostringstream text;
    // The system ends some traces with a null address.
    for (unsigned i = 0; i < count && frames[i] != nullptr; ++i) {
        write_frame(text, frames[i]);
        text << '\n';
    }
    return std::move(text).str();
}

std::string stack_dump_text(const CONTEXT& context) {
    const std::uintptr_t top = context.Esp;
    const auto* const bytes = reinterpret_cast<const void*>(top);
    // The committed part of a stack ends at its base.
    MEMORY_BASIC_INFORMATION region = {};
    VirtualQuery(bytes, &region, sizeof region);
    const auto end = reinterpret_cast<std::uintptr_t>(region.BaseAddress) + region.RegionSize;
    const auto size =
        static_cast<unsigned>(top < end ? std::min<std::uintptr_t>(end - top, max_dump) : 0);
    std::ostringstream text;
    text << streamers::HexDump(bytes, size);
    return std::move(text).str();
}

}  // namespace

ErrorInfo::Ptr ErrorInfo::from_anonymous_exception(const SourceLocation& where) {
    CONTEXT context = {};
    RtlCaptureContext(&context);

    std::ostringstream thread;
    thread << streamers::Hex(GetCurrentThreadId(), false);
    ErrorParams params;
    params.add("registers", registers_text(context))
        .add("stackTrace", stack_trace_text())
        .add("stackDump", stack_dump_text(context))
        .add("processId", GetCurrentProcessId())
        .add("threadId", std::move(thread).str());
    return create(error::exception_unknown,
                  "Unknown exception occurred! \n\nRegisters: \n{@registers}\n\nStack Trace: "
                  "\n{@stackTrace}\nStack Dump: \n{@stackDump}",
                  std::move(params), where);
}

}  // namespace tarvcore
