// Named parameters of an error, and the expansion of message templates.
#pragma once

#include <charconv>
#include <compare>
#include <concepts>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "tarvcore/config.h"
#include "tarvcore/source_string.h"
#include "tarvcore/transfer.h"

namespace tarvcore {
namespace impl {

template <class Pointer>
concept Address = std::same_as<Pointer, const void*> || std::same_as<Pointer, void*>;

}  // namespace impl

// The name of a parameter written as a literal: measured by the compiler and never copied.
// Anything but a literal (or another static array) does not compile.
class LiteralName {
public:
    // Not null.
    consteval LiteralName(const char* name) : text_(name), length_(std::string_view(name).size()) {}

    constexpr const char* text() const { return text_; }
    constexpr unsigned length() const { return length_; }

private:
    const char* text_;
    unsigned length_;
};

// A map from name to value, both text, that is ordered by name: byte by byte, the shorter first.
// Values are UTF-8 by convention; nothing checks it.
//
// Message templates name the parameters: "Bad {@type} value '{@value}'" with type => int and
// value => -1 expands to "Bad int value '-1'".  Errors are raised with the template and the
// parameters; the text is put together only when somebody looks at it.
//
// An ordinary value; names longer than 2^31-1 characters raise std::runtime_error, and a call that
// runs out of memory leaves the set as it was.
//
//     ErrorParams params;
//     params.add("type", "int").add("value", -1);
//     params.expanded_message("Bad {@type} value '{@value}'");
class TARVCORE_API ErrorParams {
public:
    // A parameter.
    struct Pair {
        SourceString name;  // as it was added
        std::string value;  // UTF-8
    };
    using const_iterator = std::vector<Pair>::const_iterator;

    ErrorParams() = default;
    ErrorParams(const ErrorParams&) = default;
    ErrorParams(ErrorParams&&) noexcept = default;
    ErrorParams(TransferSource<ErrorParams> source) noexcept
        : ErrorParams(std::move(source.source())) {}
    ~ErrorParams() = default;

    ErrorParams& operator=(ErrorParams other) noexcept {
        swap(other);
        return *this;
    }
    void assign(TransferSource<ErrorParams> source) noexcept { *this = ErrorParams(source); }
    void swap(ErrorParams& other) noexcept { pairs_.swap(other.pairs_); }
    void clear() { pairs_.clear(); }
    TransferSource<ErrorParams> transfer() { return TransferSource<ErrorParams>(*this); }

    // Set a value, replacing the one that the name has already.  The first form copies the name; a
    // literal is referenced, and must outlive every record that has it: it does but where its
    // module is unloaded before.
    ErrorParams& add(const char* name, unsigned name_length, const char* value,
                     unsigned value_length) &;
    ErrorParams& add(LiteralName name, const char* value) &;
    ErrorParams& add(LiteralName name, std::string value) &;
    ErrorParams& add(LiteralName name, std::string_view value) & {
        return add(name, std::string(value));
    }
    ErrorParams& add(LiteralName name, const SourceString& value) &;
    template <std::integral Integer>
    ErrorParams& add(LiteralName name, Integer value) &;
    // An address or a handle, as "0x" and hexadecimal digits.  Other pointers are not taken for
    // one.
    template <impl::Address Pointer>
    ErrorParams& add(LiteralName name, Pointer address) & {
        return add_address(name, address);
    }
    // How many digits are wanted is for the caller to say: give the text.
    template <std::floating_point Number>
    ErrorParams& add(LiteralName name, Number value) & = delete;
    // Every pair of the other set; its values win.
    ErrorParams& add(const ErrorParams& other) &;

    // The same on a temporary, which is passed on as one: an error takes it without a copy.
    ErrorParams&& add(const char* name, unsigned name_length, const char* value,
                      unsigned value_length) && {
        return std::move(add(name, name_length, value, value_length));
    }
    template <class Value>
    ErrorParams&& add(LiteralName name, Value&& value) && {
        return std::move(add(name, std::forward<Value>(value)));
    }
    ErrorParams&& add(const ErrorParams& other) && { return std::move(add(other)); }

    const_iterator begin() const { return pairs_.begin(); }
    const_iterator end() const { return pairs_.end(); }
    unsigned size() const { return pairs_.size(); }
    bool empty() const { return pairs_.empty(); }

    // `end()` where there is none.
    const_iterator find(const char* name, unsigned length) const;
    const_iterator find(std::string_view name) const { return find(name.data(), name.size()); }
    // The value; the empty string, which is always the same object, where there is none.
    const std::string& get_value(const char* name, unsigned length) const;
    const std::string& get_value(std::string_view name) const {
        return get_value(name.data(), name.size());
    }
    // False, and nothing stored, when the name is absent.  `value` may be null.
    bool query_value(const char* name, unsigned length, std::string* value) const;
    bool query_value(std::string_view name, std::string* value) const {
        return query_value(name.data(), name.size(), value);
    }
    // 0 or 1.
    unsigned count(const char* name, unsigned length) const;
    unsigned count(std::string_view name) const { return count(name.data(), name.size()); }

    // -1, 0 or 1: pair by pair, each by name and then by value; then the smaller set first.
    int compare(const ErrorParams& other) const;
    friend bool operator==(const ErrorParams& a, const ErrorParams& b) {
        return a.size() == b.size() && a.compare(b) == 0;
    }
    friend std::strong_ordering operator<=>(const ErrorParams& a, const ErrorParams& b) {
        return a.compare(b) <=> 0;
    }
    std::uint32_t hash() const;

    // 'name' => "value" for every pair, names cut at 128 bytes and values at 256, with the
    // separator between pairs.
    void write_trace(std::ostream& os, const char* separator) const;

    // The template with every {@name} replaced by its value.  Unknown names stay as they are
    // written, as does everything from an opener that has no "}".  Names may contain any character
    // but "}"; values are not expanded again.  With a limit, longer values are cut to that many
    // bytes, not inside a UTF-8 sequence, and followed by "...".  A null template is empty; length
    // 0xFFFFFFFF: up to the terminator; limit 0xFFFFFFFF: none.
    SourceString expanded_message(const char* text, unsigned length = 0xFFFFFFFF) const {
        return expanded_message_with_limit(text, length, 0xFFFFFFFF);
    }
    SourceString expanded_message(const SourceString& text) const {
        return expanded_message_with_limit(text, 0xFFFFFFFF);
    }
    SourceString expanded_message_with_limit(const char* text, unsigned length,
                                             unsigned limit) const;
    SourceString expanded_message_with_limit(const SourceString& text, unsigned limit) const {
        return expanded_message_with_limit(text.text(), text.size(), limit);
    }

private:
    // The value of a name, which is put in with an empty value where it is absent: as a copy, or as
    // a reference to the literal.
    std::string& insert_ref(const char* name, unsigned length);
    std::string& insert_ref(LiteralName name);
    std::string& insert_ref(const char* name, unsigned length, bool is_reference);

    ErrorParams& add_address(LiteralName name, const void* address);

    std::vector<Pair> pairs_;
};

template <std::integral Integer>
ErrorParams& ErrorParams::add(LiteralName name, Integer value) & {
    if constexpr (std::same_as<Integer, bool>) {
        return add(name, value ? "true" : "false");
    } else {
        // Characters are shown as numbers.
        using Number = std::conditional_t<std::is_signed_v<Integer>, long long, unsigned long long>;
        char digits[20];
        const auto result = std::to_chars(digits, digits + sizeof digits, Number{value});
        return add(name, std::string(digits, result.ptr));
    }
}

}  // namespace tarvcore
