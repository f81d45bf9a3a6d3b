#include "tarvcore/impl/user_interface.h"

#include <bit>

#include <windows.h>

TARVCORE_SOURCE_FILE("$Id: //tarvcore/impl/user_interface.cpp#1 $");

namespace tarvcore::impl {
namespace {

constexpr UserInterfaceCalls system_calls = {
    [](const char* name) -> void* {
        static const HMODULE library =
            LoadLibraryExW(L"user32.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
        return library == nullptr ? nullptr : std::bit_cast<void*>(GetProcAddress(library, name));
    },
};

template <class Function>
Function find(const char* name) {
    return reinterpret_cast<Function>(user_interface_calls.load()->find(name));
}

}  // namespace

constinit std::atomic<const UserInterfaceCalls*> user_interface_calls = &system_calls;

int show_message_box(const wchar_t* text, unsigned flags) {
    const auto message_box = find<decltype(&MessageBoxW)>("MessageBoxW");
    return message_box == nullptr ? 0 : message_box(nullptr, text, L"Varnholt Core Library", flags);
}

bool is_modifier_held() {
    const auto key_state = find<decltype(&GetAsyncKeyState)>("GetAsyncKeyState");
    // The highest bit: it is down now.  The lowest: it was since somebody asked.
    const auto is_down = [key_state](int key) { return key_state(key) < 0; };
    return key_state != nullptr && (is_down(VK_SHIFT) || is_down(VK_CONTROL));
}

}  // namespace tarvcore::impl
