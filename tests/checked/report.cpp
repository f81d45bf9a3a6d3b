#include "tests/checked/report.h"

#include <windows.h>

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstdio>

namespace checked {
namespace {

// The process may hold any lock and its heap may be broken: the text is put together on the stack
// and written by the system.
class Text {
public:
    [[gnu::format(__MINGW_PRINTF_FORMAT, 2, 3)]] void add(const char* format, ...) {
        std::va_list arguments;
        va_start(arguments, format);
        const int room = static_cast<int>(sizeof text_) - length_;
        length_ += std::clamp(
            std::vsnprintf(text_ + length_, static_cast<unsigned>(room), format, arguments), 0,
            room - 1);
        va_end(arguments);
    }
    void write() const {
        DWORD written;
        WriteFile(GetStdHandle(STD_ERROR_HANDLE), text_, static_cast<DWORD>(length_), &written,
                  nullptr);
    }

private:
    char text_[2000];
    int length_ = 0;
};

// The program's path as the build machine knows it.
void add_program(Text* text) {
    char path[MAX_PATH] = "";
    GetModuleFileNameA(nullptr, path, sizeof path);
    std::replace(path, path + sizeof path, '\\', '/');
    text->add("%s", path[0] != '\0' && path[1] == ':' ? path + 2 : path);
}

bool in_program(std::uintptr_t address) {
    MEMORY_BASIC_INFORMATION region;
    return VirtualQuery(reinterpret_cast<const void*>(address), &region, sizeof region) &&
           region.AllocationBase == GetModuleHandleW(nullptr);
}

// Return addresses, found along the chain of frame pointers; the builds with checkers keep it.
void add_calls(Text* text) {
    const auto* frame = static_cast<const std::uintptr_t*>(__builtin_frame_address(0));
    MEMORY_BASIC_INFORMATION stack;
    VirtualQuery(frame, &stack, sizeof stack);
    const auto* const end = reinterpret_cast<const std::uintptr_t*>(
        static_cast<const char*>(stack.BaseAddress) + stack.RegionSize - 8);
    for (int depth = 0; depth < 16 && frame < end && in_program(frame[1]); ++depth) {
        // Of the call itself, not of what follows it.
        text->add(" %x", static_cast<unsigned>(frame[1] - 1));
        const auto* const next = reinterpret_cast<const std::uintptr_t*>(frame[0]);
        if (next <= frame) break;
        frame = next;
    }
}

}  // namespace

void report(const char* text) {
    Text message;
    message.add("%s\n    i686-w64-mingw32-addr2line -Cfipe \"", text);
    add_program(&message);
    message.add("\"");
    add_calls(&message);
    message.add("\n");
    message.write();
    TerminateProcess(GetCurrentProcess(), kExitStatus);
    __builtin_unreachable();
}

}  // namespace checked
