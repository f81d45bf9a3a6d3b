// Faults to catch: sums that wrap past npos; an unbounded range taken for a long one or a cut one;
// a slice that reads beyond its string; width applied to a part.

#include "tarvcore/string_range.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <iomanip>
#include <sstream>
#include <string>

namespace {

using tarvcore::SourceString;
using tarvcore::StringRange;
using tarvcore::StringSliceTraits;

constexpr unsigned npos = StringRange::npos;

template <class... Parts>
std::string text_of(const Parts&... parts) {
    std::ostringstream os;
    (os << ... << parts);
    return os.str();
}

TEST(StringRange, KeepsItsStart) {
    EXPECT_TRUE(StringRange(npos, 3).empty() && StringRange(3, 0).empty());
    EXPECT_FALSE(StringRange(0, npos).empty());
    EXPECT_EQ(StringRange(5, 1).last(9), StringRange(5, 4));
    EXPECT_EQ(StringRange(5, 1).last(4), StringRange(5, 0));
    EXPECT_EQ(StringRange(5, 1).last(npos), StringRange(5, npos));
    EXPECT_EQ(StringRange(npos, 1).last(npos), StringRange(npos, 0));
}

// Positions as 64-bit numbers, with npos far beyond all of them.
constexpr std::uint64_t far = std::uint64_t{1} << 40;

std::uint64_t wide(unsigned position) {
    return position == npos ? far : position;
}
std::uint64_t wide_sum(unsigned a, unsigned b) {
    const std::uint64_t sum = wide(a) + wide(b);
    return sum >= npos ? far : sum;
}
unsigned narrow(std::uint64_t position) {
    return position >= npos ? npos : static_cast<unsigned>(position);
}

TEST(StringRange, AgreesWithWideArithmetic) {
    const unsigned numbers[] = {0, 1, 2, 3, 5, 10, 0x7FFFFFFF, npos - 3, npos - 2, npos - 1, npos};
    for (const unsigned first : numbers) {
        for (const unsigned size : numbers) {
            const StringRange range(first, size);
            const std::uint64_t end = wide_sum(first, size);
            ASSERT_EQ(range.last(), narrow(end));
            for (const unsigned a : numbers) {
                for (const unsigned b : numbers) {
                    const StringRange other(a, b);
                    SCOPED_TRACE(testing::Message() << range << other);
                    const std::uint64_t start = std::min(wide_sum(first, a), end);
                    StringRange sub(narrow(start), 0);
                    if (start != far) {
                        const auto room = static_cast<unsigned>(narrow(end) - start);
                        sub.size(size == npos ? b : std::min(b, room));
                    }
                    ASSERT_EQ(range.subrange(other), sub);

                    const std::uint64_t begin = std::max(wide(first), wide(a));
                    const std::uint64_t stop = std::min(end, wide_sum(a, b));
                    StringRange common;
                    if (begin != far && stop >= begin) {
                        common.set(narrow(begin), stop == far ? npos : narrow(stop - begin));
                    }
                    ASSERT_EQ(range.intersection(other), common);

                    StringRange rest;
                    if (size == npos) rest.set(narrow(wide_sum(first, a)), npos);
                    if (size != npos && wide(a) + wide(b) < size) rest.set(first + a, size - a - b);
                    ASSERT_EQ(StringRange(range).shrink(a, b), rest);
                }
            }
        }
    }
    EXPECT_EQ(StringRange(2, 10).subrange(3, 100), StringRange(5, 7));
    EXPECT_EQ(StringRange(2, npos).subrange(StringRange(3, 100)), StringRange(5, 100));
    EXPECT_EQ(StringRange(0, 10).intersection(5, 10), StringRange(5, 5));
}

TEST(StringRange, OrdersByStartThenSize) {
    EXPECT_LT(StringRange(1, npos), StringRange(2, 0));
    EXPECT_LT(StringRange(2, 0x7FFFFFFF), StringRange(2, 0x80000000));
    EXPECT_GE(StringRange(2, 3), StringRange(2, 3));
}

TEST(StringRange, PrintsAsOneItem) {
    EXPECT_EQ(text_of(StringRange(0, 4294967294u), StringRange(npos, npos)),
              "{0, 4294967294}{npos, npos}");
    EXPECT_EQ(text_of(std::left, std::setfill('.'), std::setw(8), StringRange(5, 7), '|'),
              "{5, 7}..|");
}

template <class String>
std::string slice(const String& string, const StringRange& range) {
    using Traits = StringSliceTraits<String>;
    return {Traits::string_begin(string, range), Traits::string_end(string, range)};
}

template <class String>
void check_slices(const String& string) {
    using Traits = StringSliceTraits<String>;
    ASSERT_EQ(Traits::string_size(string), 4u);
    EXPECT_EQ(slice(string, StringRange(1, 2)), "bc");
    EXPECT_EQ(slice(string, StringRange(1, npos)), "bcd");
    const StringRange range(1, 2);
    EXPECT_EQ(std::string(Traits::string_rbegin(string, range), Traits::string_rend(string, range)),
              "cb");

    using Char = std::remove_cvref_t<decltype(*Traits::string_data(string))>;
    std::basic_ostringstream<Char> os;
    os << std::setfill(Char('.')) << std::setw(4);
    Traits::write_stream(os, string, range);
    const auto written = os.str();
    EXPECT_EQ(std::string(written.begin(), written.end()), "..bc");

    const auto* empty = Traits::empty_string_pointer();
    EXPECT_FALSE(Traits::is_null_pointer(empty));
    EXPECT_TRUE(Traits::equal_pointers(empty, Traits::empty_string_pointer()));
}

TEST(StringSliceTraits, SlicesEveryKindOfString) {
    const SourceString dynamic = SourceString::create_copy("abcd");
    const SourceString reference = SourceString::create_reference("abcd");
    check_slices<std::string>("abcd");
    check_slices<std::wstring>(L"abcd");
    check_slices<const char*>("abcd");
    check_slices<const wchar_t*>(L"abcd");
    check_slices<const SourceString*>(&dynamic);
    check_slices<const SourceString*>(&reference);
}

TEST(StringSliceTraits, CutsWhatReachesBeyondAStringOfKnownSize) {
    const std::string text = "abcd";
    for (const StringRange range : {StringRange(2, 100), StringRange(2, npos - 2)})
        EXPECT_EQ(slice(text, range), "cd");
    for (const StringRange range : {StringRange(5, 1), StringRange(npos, 1), StringRange(9, npos)})
        EXPECT_EQ(slice(text, range), "");
}

}  // namespace
