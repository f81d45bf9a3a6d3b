// Windows' user interface, which is loaded when first needed: most processes never do.
#pragma once

#include <atomic>

#include "tarvcore/config.h"

namespace tarvcore::impl {

struct UserInterfaceCalls {
    // A function of that name; null where it cannot be had.
    void* (*find)(const char* name);
};

// The table in use; tests put one of their own in its place.
TARVCORE_API extern std::atomic<const UserInterfaceCalls*> user_interface_calls;

// Shows a message box without a parent, and answers the button; 0 where there is none to show.
int show_message_box(const wchar_t* text, unsigned flags);

// Whether SHIFT or CTRL is held down.
bool is_modifier_held();

}  // namespace tarvcore::impl
