// The hash recurrences that the library's records share.
#pragma once

#include <cstdint>
#include <string_view>

namespace tarvcore::impl {

// s = 5 * s + byte over signed bytes, from 0.
constexpr std::uint32_t ascii_string_hash(std::string_view text) {
    std::uint32_t hash = 0;
    for (const char c : text) {
        hash = 5 * hash + static_cast<std::uint32_t>(static_cast<signed char>(c));
    }
    return hash;
}

// Adds the hash of one more field to that of the fields before it.
constexpr std::uint32_t combine_hash(std::uint32_t hash, std::uint32_t field) {
    return hash ^ (field + 0x9E3779B9 + (hash << 6) + (hash >> 2));
}

}  // namespace tarvcore::impl
