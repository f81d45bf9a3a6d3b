// Which iterators, ranges and containers the binary-to-text transforms take.
#pragma once

#include <concepts>
#include <cstddef>
#include <iterator>
#include <ranges>
#include <string_view>
#include <type_traits>

#include "tarvcore/config.h"

namespace tarvcore::impl {

// A flag that is made of nothing but a bool: a length or a pointer at its place is a mistake.
class Flag {
public:
    template <std::same_as<bool> Bool>
    constexpr Flag(Bool value) : value_(value) {}
    constexpr operator bool() const { return value_; }

private:
    bool value_;
};

template <class T>
concept CharacterType = std::integral<T> && !std::same_as<std::remove_cv_t<T>, bool>;
template <class T>
concept ByteType = sizeof(T) == 1 && (CharacterType<T> || std::same_as<T, std::byte>);

template <class Iterator>
concept ByteInput = std::input_iterator<Iterator> && ByteType<std::iter_value_t<Iterator>>;
template <class Iterator>
concept ByteOutput =
    std::output_iterator<Iterator, unsigned char> || std::output_iterator<Iterator, std::byte>;
template <class Iterator>
concept TextInput = std::input_iterator<Iterator> && CharacterType<std::iter_value_t<Iterator>>;
template <class Iterator>
concept TextOutput = std::output_iterator<Iterator, char>;

// Bytes in memory, whatever their type is called.
template <class Iterator>
concept InMemory = std::contiguous_iterator<Iterator> && ByteType<std::iter_value_t<Iterator>>;

// Bytes in memory that are no text as such: texts, among them literals with their terminators, go
// the way of std::string_view.
template <class Range>
concept ByteRange = std::ranges::contiguous_range<const Range> &&
                    ByteType<std::ranges::range_value_t<const Range>> &&
                    !std::convertible_to<const Range&, std::string_view> &&
                    !std::same_as<std::remove_all_extents_t<Range>, char>;

// A std::string, a std::vector of bytes, or the like.
template <class Container>
concept ByteContainer = std::default_initializable<Container> &&
    InMemory<typename Container::iterator> && requires(Container& container) {
    container.resize(container.size());
};

// A byte as a number.
template <class T>
constexpr unsigned byte_value(T byte) {
    return static_cast<unsigned char>(byte);
}

// A character's code; 0x80 stands for all that are not below it.  Characters may be wide, and must
// not lose the bits that make them different.
template <class T>
constexpr unsigned character_code(T character) {
    const auto code = static_cast<std::make_unsigned_t<T>>(character);
    return code < 0x80 ? static_cast<unsigned>(code) : 0x80;
}

}  // namespace tarvcore::impl
