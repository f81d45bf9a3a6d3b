#include "tarvcore/impl/system_message.h"

#include <memory>

#include <windows.h>

#include "tarvcore/config.h"
#include "tarvcore/impl/unicode_kernels.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/impl/system_message.cpp#1 $");

namespace tarvcore::impl {

std::string system_message(unsigned long number) {
    constexpr DWORD flags =
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_SYSTEM;
    wchar_t* allocated = nullptr;
    const DWORD length =
        FormatMessageW(flags, nullptr, number, MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT),
                       reinterpret_cast<wchar_t*>(&allocated), 0, nullptr);
    if (length == 0) return std::string();
    const std::unique_ptr<wchar_t, decltype(&LocalFree)> buffer(allocated, &LocalFree);

    std::string text = utf16_to_utf8_replacing(buffer.get(), length, '?');
    text.erase(text.find_last_not_of(" \r\n\t") + 1);
    return text;
}

}  // namespace tarvcore::impl
