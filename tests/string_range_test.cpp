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

TEST(StringRange, EndSaturates) {
    EXPECT_EQ(StringRange(5, 10).last(), 15u);
    EXPECT_EQ(StringRange(5, npos).last(), npos);
    EXPECT_EQ(StringRange(npos - 3, 3).last(), npos);
    EXPECT_EQ(StringRange(npos - 3, 4).last(), npos);
    EXPECT_TRUE(StringRange(npos, 3).empty());
    EXPECT_TRUE(StringRange(3, 0).empty());
    EXPECT_FALSE(StringRange(0, npos).empty());

    EXPECT_EQ(StringRange(5, 1).last(9), StringRange(5, 4));
    EXPECT_EQ(StringRange(5, 1).last(5), StringRange(5, 0));
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
                    const std::string inputs = text_of(range, ' ', StringRange(a, b));
                    const std::uint64_t start = std::min(wide_sum(first, a), end);
                    StringRange sub(narrow(start), 0);
                    if (start != far) {
                        const auto room = static_cast<unsigned>(narrow(end) - start);
                        sub.size(size == npos ? b : std::min(b, room));
                    }
                    ASSERT_EQ(range.subrange(a, b), sub) << inputs;

                    const std::uint64_t begin = std::max(wide(first), wide(a));
                    const std::uint64_t stop = std::min(end, wide_sum(a, b));
                    StringRange common;
                    if (begin != far && stop >= begin) {
                        common.set(narrow(begin), stop == far ? npos : narrow(stop - begin));
                    }
                    ASSERT_EQ(range.intersection(StringRange(a, b)), common) << inputs;

                    StringRange shrunk(range);
                    shrunk.shrink(a, b);
                    if (size == npos) {
                        ASSERT_EQ(shrunk, StringRange(narrow(wide_sum(first, a)), npos)) << inputs;
                    } else if (wide(a) + wide(b) < size) {
                        ASSERT_EQ(shrunk, StringRange(first + a, size - a - b)) << inputs;
                    } else {
                        ASSERT_EQ(shrunk, StringRange()) << inputs;
                    }
                }
            }
        }
    }
    EXPECT_EQ(StringRange(2, 10).subrange(3, 100), StringRange(5, 7));
    EXPECT_EQ(StringRange(2, npos).subrange(StringRange(3, 100)), StringRange(5, 100));
    EXPECT_EQ(StringRange(0, 10).intersection(5, 10), StringRange(5, 5));
    EXPECT_EQ(StringRange(2, 10).shrink(3, 3), StringRange(5, 4));
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

template <class String, class Char>
void check_slices(const String& string) {
    using Traits = StringSliceTraits<String>;
    using Text = std::basic_string<Char>;
    const auto slice = [&](const StringRange& range) {
        return Text(Traits::string_begin(string, range), Traits::string_end(string, range));
    };
    const Char abcd[] = {'a', 'b', 'c', 'd', 0};
    ASSERT_EQ(Traits::string_size(string), 4u);
    EXPECT_EQ(Traits::string_data(string)[3], 'd');
    EXPECT_EQ(slice(StringRange(1, 2)), Text(abcd + 1, 2));
    EXPECT_EQ(slice(StringRange(4, 0)), Text());
    EXPECT_EQ(slice(StringRange(1, npos)), Text(abcd + 1));

    const StringRange range(1, 2);
    EXPECT_EQ(Text(Traits::string_rbegin(string, range), Traits::string_rend(string, range)),
              Text(1, 'c') + Text(1, 'b'));

    std::basic_ostringstream<Char> os;
    os << std::setfill(Char('.')) << std::setw(4);
    Traits::write_stream(os, string, range);
    EXPECT_EQ(os.str(), Text(2, '.') + Text(abcd + 1, 2));

    const auto* empty = Traits::empty_string_pointer();
    EXPECT_FALSE(Traits::is_null_pointer(empty));
    EXPECT_TRUE(Traits::equal_pointers(empty, Traits::empty_string_pointer()));
}

TEST(StringSliceTraits, SlicesEveryKindOfString) {
    const SourceString dynamic = SourceString::create_copy("abcd");
    const SourceString reference = SourceString::create_reference("abcd");
    check_slices<std::string, char>("abcd");
    check_slices<std::wstring, wchar_t>(L"abcd");
    check_slices<const char*, char>("abcd");
    check_slices<const wchar_t*, wchar_t>(L"abcd");
    check_slices<const SourceString*, char>(&dynamic);
    check_slices<const SourceString*, char>(&reference);
}

TEST(StringSliceTraits, CutsWhatReachesBeyondAStringOfKnownSize) {
    using Traits = StringSliceTraits<std::string>;
    const std::string text = "abcd";
    for (const StringRange range : {StringRange(2, 100), StringRange(2, npos - 2)}) {
        EXPECT_EQ(std::string(Traits::string_begin(text, range), Traits::string_end(text, range)),
                  "cd");
    }
    for (const StringRange range :
         {StringRange(5, 1), StringRange(npos, 1), StringRange(9, npos)}) {
        EXPECT_EQ(Traits::string_begin(text, range), Traits::string_end(text, range));
    }
}

}  // namespace
