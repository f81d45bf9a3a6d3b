// Slices of strings: the range of positions, and one way to apply it to every kind of string.
#pragma once

#include <algorithm>
#include <compare>
#include <cwchar>
#include <iterator>
#include <ostream>
#include <string>
#include <string_view>

#include "tarvcore/config.h"
#include "tarvcore/source_string.h"

namespace tarvcore {

// A slice of a string by start and length.  It says nothing about which string, so it may lie
// beyond the end of the one it is applied to; a size of `npos` reaches to the end of any.  A start
// of `npos` is no position: such a range is empty.  An ordinary value; ordered by start, then size.
//
//     StringRange(2, 10).subrange(3, 100)                  // {5, 7}
//     StringRange(2, StringRange::npos).subrange(3, 100)   // {5, 100}
class StringRange {
public:
    // No position; as a size, up to the end.
    static constexpr unsigned npos = 0xFFFFFFFF;

    constexpr StringRange() = default;
    // Any numbers.
    constexpr StringRange(unsigned first, unsigned size) : first_(first), size_(size) {}

    // As the constructor.
    constexpr void set(unsigned first, unsigned size) { *this = StringRange(first, size); }
    constexpr void clear() { *this = StringRange(); }
    constexpr void swap(StringRange& other) noexcept { std::swap(*this, other); }

    // Whether it is `npos`.
    static constexpr bool is_npos(unsigned value) { return value == npos; }

    constexpr unsigned first() const { return first_; }
    constexpr unsigned size() const { return size_; }
    constexpr bool empty() const { return size_ == 0 || is_npos(first_); }
    // Whether it reaches to the end of any string.
    constexpr bool unbounded() const { return is_npos(size_); }
    // One past the end; `npos` where that is no position.
    constexpr unsigned last() const { return sum(first_, size_); }

    // Keep the start.
    constexpr StringRange& size(unsigned size) {
        size_ = size;
        return *this;
    }
    constexpr StringRange& last(unsigned last) {
        const bool to_the_end = is_npos(last) && !is_npos(first_);
        return size(to_the_end ? npos : last > first_ ? last - first_ : 0);
    }

    // The slice of this slice: positions count from its start, and what lies beyond its end is cut
    // off.
    constexpr StringRange subrange(unsigned offset, unsigned length) const {
        const unsigned start = std::min(sum(first_, offset), last());
        if (is_npos(start)) return {start, 0};
        return {start, unbounded() ? length : std::min(length, last() - start)};
    }
    constexpr StringRange subrange(const StringRange& range) const {
        return subrange(range.first_, range.size_);
    }

    // What both have in common; {0, 0} where they lie apart.
    constexpr StringRange intersection(unsigned first, unsigned size) const {
        const unsigned start = std::max(first_, first);
        const unsigned end = std::min(last(), sum(first, size));
        if (is_npos(start) || end < start) return {};
        return {start, is_npos(end) ? npos : end - start};
    }
    constexpr StringRange intersection(const StringRange& range) const {
        return intersection(range.first_, range.size_);
    }

    // Takes that many positions off both ends.  {0, 0} where nothing would be left; an unbounded
    // range has no back to take from.
    constexpr StringRange& shrink(unsigned front, unsigned back) {
        if (unbounded()) {
            first_ = sum(first_, front);
        } else if (is_npos(front) || is_npos(back) || sum(front, back) >= size_) {
            clear();
        } else {
            first_ += front;
            size_ -= front + back;
        }
        return *this;
    }

    friend constexpr bool operator==(const StringRange&, const StringRange&) = default;
    friend constexpr auto operator<=>(const StringRange&, const StringRange&) = default;

    // As "{first, size}" in decimal, with "npos" for that value; the field width covers the whole.
    friend TARVCORE_API std::ostream& operator<<(std::ostream& os, const StringRange& range);

private:
    // Saturates at npos.
    static constexpr unsigned sum(unsigned a, unsigned b) { return b > npos - a ? npos : a + b; }

    unsigned first_ = 0;
    unsigned size_ = 0;
};

// What code that works on every kind of string asks one for.  There is a specialisation for each of
// std::string, std::wstring, const char*, const wchar_t* and const SourceString*, all with the same
// static members:
//
//     empty_string_pointer()           a pointer to a static empty string
//     is_null_pointer(p), equal_pointers(p, q)
//     string_data(s), string_size(s)
//     string_begin(s, range), string_end(s, range), string_rbegin(s, range), string_rend(s, range)
//     write_stream(os, s, range)       the slice as one item, with the stream's width and fill
//
// Strings that know their size cut a range that reaches beyond it.  C strings do not: such a range
// must fit, or be unbounded, which ends it at the terminator.
template <class String>
struct StringSliceTraits;

namespace impl {

template <class Char>
inline constexpr Char empty_characters[] = {0};
template <class Char>
inline constinit const std::basic_string<Char> empty_string;
inline constinit const SourceString empty_source_string;

// The members that rest on `string_begin` and `string_end` alone.
template <class Traits, class String, class Char>
struct StringSliceOperations {
    using Iterator = const Char*;
    using ReverseIterator = std::reverse_iterator<Iterator>;

    static bool is_null_pointer(const void* p) { return p == nullptr; }
    static bool equal_pointers(const void* p, const void* q) { return p == q; }

    static ReverseIterator string_rbegin(const String& s, const StringRange& range) {
        return ReverseIterator(Traits::string_end(s, range));
    }
    static ReverseIterator string_rend(const String& s, const StringRange& range) {
        return ReverseIterator(Traits::string_begin(s, range));
    }

    static void write_stream(std::basic_ostream<Char>& os, const String& s,
                             const StringRange& range) {
        os << std::basic_string_view<Char>(Traits::string_begin(s, range),
                                           Traits::string_end(s, range));
    }
};

// For strings that know their size.
template <class Traits, class String, class Char>
struct CountedStringSlice : StringSliceOperations<Traits, String, Char> {
    static const Char* string_begin(const String& s, const StringRange& range) {
        return Traits::string_data(s) + std::min(range.first(), Traits::string_size(s));
    }
    static const Char* string_end(const String& s, const StringRange& range) {
        return Traits::string_data(s) + std::min(range.last(), Traits::string_size(s));
    }
};

template <class Char>
struct StandardStringSlice
    : CountedStringSlice<StandardStringSlice<Char>, std::basic_string<Char>, Char> {
    using String = std::basic_string<Char>;

    static const String* empty_string_pointer() { return &empty_string<Char>; }
    static const Char* string_data(const String& s) { return s.data(); }
    static unsigned string_size(const String& s) { return s.size(); }
};

template <class Char>
struct CStringSlice : StringSliceOperations<CStringSlice<Char>, const Char*, Char> {
    static const Char* empty_string_pointer() { return empty_characters<Char>; }
    static const Char* string_data(const Char* s) { return s; }
    static unsigned string_size(const Char* s) { return std::char_traits<Char>::length(s); }

    static const Char* string_begin(const Char* s, const StringRange& range) {
        return s + range.first();
    }
    static const Char* string_end(const Char* s, const StringRange& range) {
        if (!range.unbounded()) return s + range.last();
        const Char* begin = string_begin(s, range);
        return begin + string_size(begin);
    }
};

struct SourceStringSlice : CountedStringSlice<SourceStringSlice, const SourceString*, char> {
    static const SourceString* empty_string_pointer() { return &empty_source_string; }
    static const char* string_data(const SourceString* s) { return s->text(); }
    static unsigned string_size(const SourceString* s) { return s->size(); }
};

}  // namespace impl

template <>
struct StringSliceTraits<std::string> : impl::StandardStringSlice<char> {};
template <>
struct StringSliceTraits<std::wstring> : impl::StandardStringSlice<wchar_t> {};
template <>
struct StringSliceTraits<const char*> : impl::CStringSlice<char> {};
template <>
struct StringSliceTraits<const wchar_t*> : impl::CStringSlice<wchar_t> {};
template <>
struct StringSliceTraits<const SourceString*> : impl::SourceStringSlice {};

}  // namespace tarvcore
