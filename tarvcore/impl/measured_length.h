// Lengths of text that callers may leave out.
#pragma once

#include <string>

namespace tarvcore::impl {

constexpr unsigned up_to_terminator = 0xFFFFFFFF;

// The length given, or measured where that is `up_to_terminator`.
template <class Character>
unsigned measured_length(const Character* text, unsigned length) {
    return length == up_to_terminator ? std::char_traits<Character>::length(text) : length;
}

}  // namespace tarvcore::impl
