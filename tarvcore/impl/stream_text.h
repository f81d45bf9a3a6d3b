// Values as the text that streams make of them.
#pragma once

#include <locale>
#include <sstream>
#include <string>

namespace tarvcore::impl {

// What `<<` writes, whatever the global locale: for handles "0x" and hexadecimal digits.
template <class Value>
std::string stream_text(const Value& value) {
    std::ostringstream os;
    os.imbue(std::locale::classic());
    os << value;
    return os.str();
}

}  // namespace tarvcore::impl
