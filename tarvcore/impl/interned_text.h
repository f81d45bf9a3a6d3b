// The text behind string keys.
#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

#include "tarvcore/config.h"

namespace tarvcore::impl {

// A length directly followed by so many characters and a NUL.
class InternedText {
public:
    // There must be room for `extra_size` more bytes behind the object.
    explicit InternedText(std::string_view text) : size_(text.size()) {
        char* const characters = reinterpret_cast<char*>(this + 1);
        std::memcpy(characters, text.data(), text.size());
        characters[text.size()] = '\0';
    }
    constexpr InternedText() = default;
    InternedText(const InternedText&) = delete;
    InternedText& operator=(const InternedText&) = delete;

    static std::size_t extra_size(std::string_view text) { return text.size() + 1; }

    const char* text() const { return reinterpret_cast<const char*>(this + 1); }
    unsigned size() const { return size_; }
    std::string_view view() const { return {text(), size_}; }

private:
    unsigned size_ = 0;
};

struct EmptyInternedText {
    InternedText text;
    char terminator = '\0';
};

TARVCORE_API extern const EmptyInternedText empty_interned_text;

}  // namespace tarvcore::impl
