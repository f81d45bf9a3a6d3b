// Text that is referenced where it is a literal and shared where it is not.
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
#include "tarvcore/impl/dynamic_source_string_holder.h"
#include "tarvcore/interface_ptr.h"
#include "tarvcore/ref_count_ptr.h"
#include "tarvcore/string_trace_data.h"
#include "tarvcore/transfer.h"

namespace tarvcore {

class StringKey;

namespace impl {
inline constexpr char empty_text[] = "";
}

// A two-word handle on immutable NUL-terminated narrow text, in one of two forms:
//
// - a reference to text that outlives it: a literal, as a rule.  Nothing is copied, and the length
//   is measured when it is first asked for;
// - a dynamic copy, shared between all handles copied from one another.
//
// The empty text is always a reference.  Texts have less than 2^31 characters; a longer length
// given explicitly raises std::runtime_error.  Handles are values: copies may be used by different
// threads, and so may one handle that nobody changes (measuring is an atomic store of what any
// other thread would store).
//
//     SourceString message("Bad value '{@value}'", true);   // reference, nothing measured
//     SourceString name = SourceString::create_copy(buffer, length);
class TARVCORE_API SourceString {
public:
    constexpr SourceString() = default;

    // Dynamic copies.  Raise std::bad_alloc.
    SourceString(const char* text);
    SourceString(const char* text, unsigned length);
    // A reference of a length yet unmeasured, or a dynamic copy.
    constexpr SourceString(const char* text, bool is_reference) {
        if (is_reference) {
            text_ = text;
            length_ = unmeasured;
        } else {
            copy_dynamic(text, std::strlen(text));
        }
    }
    // A reference of that length, or a dynamic copy.  0x7FFFFFFF of a reference: yet unmeasured.
    constexpr SourceString(const char* text, unsigned length, bool is_reference) {
        if (length > max_length) length_error();
        if (is_reference) {
            text_ = text;
            length_ = static_cast<int>(length);
        } else {
            copy_dynamic(text, length);
        }
    }
    // A dynamic copy of the text of `source`, which keeps `source` alive and answers it to
    // `query_trace_data`.  An empty text is a reference, as everywhere, and forgets its source.
    explicit SourceString(InterfacePtr<const StringTraceData> source);
    // The same of the text of a key; see string_key.h.
    SourceString(const StringKey& key);

    // As the constructors, with names that tell which form it is.
    static constexpr SourceString create_reference(const char* text) { return {text, true}; }
    static SourceString create_copy(const char* text) { return {text, false}; }
    static SourceString create_copy(const char* text, unsigned length) {
        return {text, length, false};
    }
    // A dynamic text that `fill`, called with the place for its characters, puts there; it must not
    // throw.  It is not called for length 0.
    template <class Fill>
    static SourceString create_filled(unsigned length, Fill fill) {
        SourceString result;
        if (char* characters = result.alloc_dynamic(length)) fill(characters);
        return result;
    }

    TARVCORE_INLINE SourceString(const SourceString& other)
        : text_(other.text_), length_(other.load_length()) {
        if (length_ < 0) clone_dynamic();
    }
    constexpr SourceString(SourceString&& other) noexcept
        : text_(std::exchange(other.text_, impl::empty_text)),
          length_(std::exchange(other.length_, 0)) {}
    constexpr SourceString(TransferSource<SourceString> source) noexcept
        : SourceString(std::move(source.source())) {}

    TARVCORE_INLINE constexpr ~SourceString() {
        if (length_ < 0) dealloc_dynamic();
    }

    SourceString& operator=(SourceString other) noexcept {
        swap(other);
        return *this;
    }
    void assign(const SourceString& other) { *this = other; }
    void swap(SourceString& other) noexcept {
        std::swap(text_, other.text_);
        std::swap(length_, other.length_);
    }
    constexpr TransferSource<SourceString> transfer() {
        return TransferSource<SourceString>(*this);
    }

    // Whether it refers to text that is not its own.
    bool is_reference() const { return load_length() >= 0; }
    // Whether the length is known to be 0: an unmeasured reference to an empty text is not `empty`.
    bool empty() const { return load_length() == 0; }

    const char* text() const { return text_; }
    TARVCORE_INLINE unsigned size() const {
        const int length = load_length();
        if (length < 0) return static_cast<unsigned>(-length);
        return length == unmeasured ? measure() : static_cast<unsigned>(length);
    }
    const char* begin() const { return text_; }
    const char* end() const { return text_ + size(); }

    std::string as_string() const { return std::string(text_, size()); }
    std::string_view as_string_view() const { return {text_, size()}; }

    // Negative, zero or positive: byte by byte over the common length, then the shorter text first.
    // Handles on the same characters are equal without a look at them.
    int compare(const SourceString& other) const {
        return text_ == other.text_ ? 0 : compare_text(other.text_, other.size());
    }
    int compare(const char* text) const {
        return text_ == text ? 0 : compare_text(text, std::strlen(text));
    }
    int compare(const char* text, unsigned length) const {
        return text_ == text ? 0 : compare_text(text, length);
    }

    friend bool operator==(const SourceString& a, const SourceString& b) {
        return a.text_ == b.text_ || a.equals_text(b.text_, b.size());
    }
    friend bool operator==(const SourceString& a, const char* b) {
        return a.text_ == b || a.equals_text(b, std::strlen(b));
    }
    friend std::strong_ordering operator<=>(const SourceString& a, const SourceString& b) {
        return a.compare(b) <=> 0;
    }

    // The trace data of a dynamic text: what it was made from, or its own block.  Null for a
    // reference.
    InterfacePtr<const StringTraceData> query_trace_data() const;

    // Writes the characters, unformatted.
    friend TARVCORE_API std::ostream& operator<<(std::ostream& os, const SourceString& string);

private:
    static constexpr unsigned max_length = 0x7FFFFFFF;
    static constexpr int unmeasured = 0x7FFFFFFF;

    // The length field may be stored by a thread that measures while another one reads it.
    TARVCORE_INLINE int load_length() const { return __atomic_load_n(&length_, __ATOMIC_RELAXED); }
    unsigned measure() const;

    void copy_dynamic(const char* text, unsigned length,
                      InterfacePtr<const StringTraceData>&& source = {});
    // The place for the characters of a dynamic text, which are to be filled in; null for length 0.
    char* alloc_dynamic(unsigned length, InterfacePtr<const StringTraceData>&& source = {});
    TARVCORE_INLINE void clone_dynamic() const {
        (void)HolderPtr(impl::DynamicSourceStringHolder::from_text(text_)).detach();
    }
    TARVCORE_INLINE void dealloc_dynamic() {
        HolderPtr(impl::DynamicSourceStringHolder::from_text(text_), false).clear();
        text_ = nullptr;
    }
    [[noreturn]] TARVCORE_COLD static void length_error();

    int compare_text(const char* text, unsigned length) const;
    TARVCORE_INLINE bool equals_text(const char* text, unsigned length) const {
        return size() == length && std::memcmp(text_, text, length) == 0;
    }

    using HolderPtr = RefCountPtr<const impl::DynamicSourceStringHolder>;

    const char* text_ = impl::empty_text;
    // Length of a reference, or `unmeasured`; minus the length of a dynamic copy.
    mutable int length_ = 0;
};

static_assert(sizeof(SourceString) == 8);

}  // namespace tarvcore

template <>
struct std::hash<tarvcore::SourceString> {
    std::size_t operator()(const tarvcore::SourceString& string) const noexcept {
        return std::hash<std::string_view>()(string.as_string_view());
    }
};
