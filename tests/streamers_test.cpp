// Faults to catch: sign extension; too few digits; a UTF-8 sequence cut in two; width and fill
// applied to a part; short lines of a dump out of column; allocation where there is no need for
// any.

#include "tarvcore/streamers.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <ostream>
#include <sstream>
#include <streambuf>
#include <string>

#include "tests/support/allocations.h"

namespace {

using namespace tarvcore::streamers;

template <class Wrapper>
std::string text_of(const Wrapper& wrapper) {
    std::ostringstream os;
    os << wrapper;
    return os.str();
}

TEST(Hex, WidthOfTheArgumentDecidesTheDigits) {
    EXPECT_EQ(text_of(Hex(0, false)), "0x0");
    EXPECT_EQ(text_of(Hex(static_cast<unsigned char>(0x0f), true)), "0x0f");
    EXPECT_EQ(text_of(Hex(static_cast<char>(-1), false)), "0xff");
    EXPECT_EQ(text_of(Hex(static_cast<short>(-2), false)), "0xfffe");
    EXPECT_EQ(text_of(Hex(static_cast<unsigned short>(0xA), true)), "0x000a");
    EXPECT_EQ(text_of(Hex(-1, true)) + text_of(Hex(-1L, false)), "0xffffffff0xffffffff");
    EXPECT_EQ(text_of(Hex(1LL, true)), "0x0000000000000001");
    EXPECT_EQ(text_of(Hex(0xFEDCBA9876543210ULL, false)), "0xfedcba9876543210");
    EXPECT_EQ(text_of(Hex(reinterpret_cast<const void*>(0xABC), true)), "0x00000abc");
    EXPECT_EQ(text_of(Pointer(nullptr)), "0x00000000");
    EXPECT_EQ(text_of(Boolean(true)) + text_of(Boolean(false)), "truefalse");

    std::ostringstream os;
    Hex::write_trace_impl(os, 0x12, 40);
    EXPECT_EQ(os.str(), "0x" + std::string(38, '0') + "12");
}

TEST(String, CutsBetweenCharacters) {
    const struct {
        const char* text;
        unsigned limit;
        const char* printed;
    } rows[] = {
        {"abcdef", 3, "\"abc...\""},    {"abcdef", 6, "\"abcdef\""},
        {"abcdef", 0, "\"...\""},       {"", 0, "\"\""},
        {"a\xC3\xA9", 2, "\"a...\""},   {"a\xC3\xA9", 3, "\"a\xC3\xA9\""},
        {"\x80\x80\x80", 2, "\"...\""}, {"say \"hi\"\n", 99, "\"say \"hi\"\n\""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(text_of(String(row.text, std::strlen(row.text), row.limit, '"')), row.printed);
    }
    EXPECT_EQ(text_of(String("abc", 3, 2, '\0')), "ab...");
    EXPECT_EQ(String::maxlenDefault, WString::maxlenDefault);  // bound to references
    EXPECT_EQ(text_of(String(std::string(257, 'x').c_str())),
              '"' + std::string(256, 'x') + "...\"");
    EXPECT_EQ(text_of(String(std::string(256, 'x').c_str())), '"' + std::string(256, 'x') + '"');
}

TEST(String, StreamsWidthCoversTheWholeItem) {
    std::ostringstream os;
    os << std::setfill('.') << std::setw(8) << String("abcdef", 6, 3, '|');
    os << std::left << std::setw(5) << String("ab", 2, 9, '|');
    EXPECT_EQ(os.str(), "|..abc...||ab...|");
}

TEST(WString, ShowsWhatIsNoCharacterAsQuestionMark) {
    EXPECT_EQ(text_of(WString(L"a\u00E9\u20AC")), "\"a\xC3\xA9\xE2\x82\xAC\"");
    EXPECT_EQ(text_of(WString(L"\xD83D\xDE00")), "\"\xF0\x9F\x98\x80\"");
    EXPECT_EQ(text_of(WString(L"\xDE00 \xFEFF\xFFFF")), "\"? ??\"");
    EXPECT_EQ(text_of(WString(L"\xD83D")), "\"?\"");
    EXPECT_EQ(text_of(WString(L"ab\0c", 0xFFFFFFFF)), "\"ab\"");
    EXPECT_EQ(text_of(WString(L"\xD83Dxy")), "\"?y\"") << "the unit after goes with it";
    EXPECT_EQ(text_of(WString(std::wstring(300, L'\xDC00').c_str(), 300, 5, '"')), "\"?????...\"");
    EXPECT_EQ(text_of(WString(L"\u00E9\u00E9\u00E9", 3, 5, '"')), "\"\xC3\xA9\xC3\xA9...\"");
    EXPECT_EQ(text_of(WString(std::wstring(300, L'x').c_str())),
              '"' + std::string(256, 'x') + "...\"");
}

TEST(HexDump, KeepsItsColumns) {
    const auto* const at_0x1000 = reinterpret_cast<const void*>(0x1000);
    EXPECT_EQ(text_of(HexDump("ABC", 3, at_0x1000, nullptr)),
              "00001000: 41 42 43 " + std::string(39, ' ') + ": ABC" + std::string(13, ' ') + "\n");

    unsigned char bytes[17];
    for (unsigned i = 0; i < 17; ++i)
        bytes[i] = static_cast<unsigned char>(0x78 + i);
    bytes[0] = 31;
    bytes[16] = 255;
    EXPECT_EQ(text_of(HexDump(bytes, 17, reinterpret_cast<const void*>(0xFFFFFFF0), "> ")),
              "> fffffff0: 1f 79 7a 7b 7c 7d 7e 7f 80 81 82 83 84 85 86 87 : .yz{|}~\x7F........\n"
              "> 00000000: ff " +
                  std::string(45, ' ') + ": ." + std::string(15, ' ') + "\n");
    EXPECT_EQ(text_of(HexDump(nullptr, 5)) + text_of(HexDump(bytes, 0)), "");
}

TEST(Streamers, AllocateNothing) {
    struct Sink : std::streambuf {
        int overflow(int c) override { return c; }
        std::streamsize xsputn(const char*, std::streamsize n) override { return n; }
    } sink;
    std::ostream os(&sink);
    char data[100] = {};
    tarv_test::AllocationWatch watch;
    os << Hex(-1LL, true) << Pointer(data) << HexDump(data, sizeof data, "  ") << Boolean(true)
       << String("a long text, longer than any small buffer", 41, 20, '"');
    EXPECT_EQ(watch.allocations(), 0);
}

}  // namespace
