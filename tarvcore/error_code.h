// Dotted, hierarchical error codes.
#pragma once

#include <compare>
#include <cstddef>
#include <cstring>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>

#include "tarvcore/config.h"
#include "tarvcore/impl/measured_length.h"
#include "tarvcore/source_string.h"
#include "tarvcore/transfer.h"

namespace tarvcore {

// A case-sensitive text of segments separated by dots, from the general to the particular:
// "error.tarvcore.uuid.parse".  The first segment is "error", the second names the owner; an error
// belongs to the family of every prefix of its code that ends at a dot, and handlers test for
// families.
//
// Storage is a SourceString's: codes that are constants refer to literals, others share a copy.
//
//     if (code.matches("error.tarvcore.uuid")) ...          // this code or any below it
//     ErrorCode mine("error.myprogram.config", true);
//     mine.append_segment("missing");                       // "error.myprogram.config.missing"
class TARVCORE_API ErrorCode {
public:
    // The empty code.
    constexpr ErrorCode() = default;
    // Dynamic copies; with `is_reference`, references to text that outlives the code.  A length of
    // 2^31 or more raises std::runtime_error.
    ErrorCode(const char* text) : text_(text) {}
    constexpr ErrorCode(const char* text, bool is_reference) : text_(text, is_reference) {}
    constexpr ErrorCode(const char* text, unsigned length, bool is_reference)
        : text_(text, length, is_reference) {}
    explicit ErrorCode(SourceString text) : text_(std::move(text)) {}

    ErrorCode(const ErrorCode&) = default;
    constexpr ErrorCode(ErrorCode&&) = default;
    constexpr ErrorCode(TransferSource<ErrorCode> source) noexcept
        : ErrorCode(std::move(source.source())) {}
    constexpr ~ErrorCode() = default;

    ErrorCode& operator=(ErrorCode other) noexcept {
        swap(other);
        return *this;
    }
    void assign(const ErrorCode& other) { *this = other; }
    void assign(const char* text) { *this = ErrorCode(text); }
    void assign(const char* text, bool is_reference) { *this = ErrorCode(text, is_reference); }
    void assign(const char* text, unsigned length) { *this = ErrorCode(text, length, false); }
    void assign(const char* text, unsigned length, bool is_reference) {
        *this = ErrorCode(text, length, is_reference);
    }
    void clear() { *this = ErrorCode(); }
    void swap(ErrorCode& other) noexcept { text_.swap(other.text_); }
    constexpr TransferSource<ErrorCode> transfer() { return TransferSource<ErrorCode>(*this); }

    // The code of an errno value: one of the constants below error::errno_, or
    // "error.errno.NUMBER" for a value without a name.  Without argument: the calling thread's
    // errno.
    static ErrorCode from_errno(long value);
    static ErrorCode from_errno();

    // Whether the length is known to be 0.
    bool empty() const { return text_.empty(); }
    const char* text() const { return text_.text(); }
    unsigned size() const { return text_.size(); }
    const SourceString& as_source_string() const { return text_; }
    std::string as_string() const { return text_.as_string(); }
    std::string_view as_string_view() const { return text_.as_string_view(); }

    // Whether this code is the pattern or lies below it.  A null pattern, the empty one and "."
    // match every code (the last one every code that is not empty); no code lies below a pattern
    // that ends in a dot.  Length 0xFFFFFFFF: up to the terminator.
    bool matches(const ErrorCode& pattern) const { return matches(pattern.text(), pattern.size()); }
    bool matches(const SourceString& pattern) const {
        return matches(pattern.text(), pattern.size());
    }
    bool matches(const char* pattern) const { return matches(pattern, 0xFFFFFFFF); }
    TARVCORE_INLINE bool matches(const char* pattern, unsigned length) const;

    // Appends "." and the segment; to the empty code, the segment alone.  A null segment changes
    // nothing.  Length 0xFFFFFFFF: up to the terminator.
    void append_segment(const char* segment, unsigned length = 0xFFFFFFFF);

    // Negative, zero or positive: byte by byte over the common length, then the shorter code first.
    int compare(const ErrorCode& other) const { return text_.compare(other.text_); }

    friend bool operator==(const ErrorCode& a, const ErrorCode& b) { return a.text_ == b.text_; }
    friend bool operator==(const ErrorCode& a, const char* b) { return a.text_ == b; }
    friend std::strong_ordering operator<=>(const ErrorCode& a, const ErrorCode& b) {
        return a.compare(b) <=> 0;
    }
    friend std::strong_ordering operator<=>(const ErrorCode& a, const char* b) {
        return a.text_.compare(b) <=> 0;
    }

    friend std::ostream& operator<<(std::ostream& os, const ErrorCode& code) {
        return os << code.text_;
    }

private:
    SourceString text_;
};

static_assert(sizeof(ErrorCode) == 8);

inline bool ErrorCode::matches(const char* pattern, unsigned length) const {
    if (pattern == nullptr) return true;
    length = impl::measured_length(pattern, length);
    // The length is tested before all else: "." does not match the empty code.
    if (length > size()) return false;
    if (length == 0 || (length == 1 && pattern[0] == '.')) return true;
    const char after = text()[length];
    return (after == '\0' || after == '.') && std::memcmp(text(), pattern, length) == 0;
}

}  // namespace tarvcore

template <>
struct std::hash<tarvcore::ErrorCode> {
    std::size_t operator()(const tarvcore::ErrorCode& code) const noexcept {
        return std::hash<tarvcore::SourceString>()(code.as_source_string());
    }
};
