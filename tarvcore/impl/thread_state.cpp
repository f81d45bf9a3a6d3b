#include "tarvcore/impl/thread_state.h"

#include <algorithm>
#include <cstdint>
#include <sstream>
#include <string>

#include "tarvcore/impl/stream_text.h"
#include "tarvcore/streamers.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/impl/thread_state.cpp#1 $");

namespace tarvcore::impl {
namespace {

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

// Byte by byte, past the checkers of memory: what lies between variables is wanted, too.
[[gnu::no_sanitize_address]] void copy_stack(const volatile unsigned char* stack, unsigned size,
                                             unsigned char* copy) {
    for (unsigned i = 0; i < size; ++i)
        copy[i] = stack[i];
}

std::string stack_dump_text(const CONTEXT& context) {
    const std::uintptr_t top = context.Esp;
    const auto* const bytes = reinterpret_cast<const unsigned char*>(top);
    const auto size =
        static_cast<unsigned>(std::min<std::uintptr_t>(readable_end(top) - top, max_dump));
    unsigned char copy[max_dump];
    copy_stack(bytes, size, copy);
    return stream_text(streamers::HexDump(copy, size, bytes, nullptr));
}

}  // namespace

ErrorParams thread_state(unsigned long thread, const CONTEXT& context,
                         const StackAddresses& stack) {
    ErrorParams params;
    params.add("registers", registers_text(context))
        .add("stackTrace", stack_trace_text(stack))
        .add("stackDump", stack_dump_text(context))
        .add("processId", GetCurrentProcessId())
        .add("threadId", stream_text(streamers::Hex(thread, false)));
    return params;
}

}  // namespace tarvcore::impl
