// Text to values and back, between encodings, and bytes as text.
#include <iostream>
#include <string>
#include <vector>

#include "tarvcore/tarvcore.h"

using namespace tarvcore;

int main() {
    const auto port = string_to<unsigned short>("8080");
    std::cout << std::boolalpha << "port " << to_string(port) << '\n';

    unsigned short none = 1;
    if (const auto error = string_to_nothrow("80800", &none)) {
        std::cout << error->expanded_message() << "; still " << none << '\n';
    }

    const std::string name = "Gr\xC3\xBC\xC3\x9F";  // UTF-8: 4 characters in 6 bytes
    const std::wstring wide = to_wstring(name);
    std::cout << name.size() << " bytes, " << wide.size()
              << " UTF-16 units, the same again: " << (to_string(wide) == name) << '\n';

    const std::string torn = name.substr(0, 3);
    std::cout << "valid: " << is_valid_utf8(torn.data(), torn.size()) << '\n';
    try {
        check_valid_utf8(torn.data(), torn.size());
    } catch (const ErrorException& e) {
        std::cout << e.error()->code() << '\n';
    }
    // Cut at a limit, without tearing a character apart.
    std::cout << utf8_limit_length(name.data(), name.size(), 3) << " bytes of 3 can be kept\n";

    const std::string text = Base64Transform::encode(name);
    std::cout << text << ' ' << HexTransform::encode(name) << '\n'
              << Base64Transform::decode<std::vector<unsigned char>>(text).size() << " bytes\n";
}
