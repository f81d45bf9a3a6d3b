#include "tarvcore/ucsutil.h"

#include <unicode/ustring.h>
#include <utf8.h>
#include <windows.h>
#include <boost/nowide/utf/convert.hpp>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "bench/support/row.h"
#include "bench/topics.h"

namespace tarv_bench {
namespace {

enum Kind { ascii, latin, cjk, emoji };

// One text in all encodings; the results of conversions go to the buffers.
struct Text {
    std::string utf8;
    std::wstring utf16;
    std::vector<unsigned> ucs4;

    std::string utf8_buffer;
    std::wstring utf16_buffer;
    std::vector<unsigned> ucs4_buffer;
};

unsigned random_character(Kind kind, std::mt19937& random) {
    const auto among = [&](unsigned first, unsigned last) {
        return first + static_cast<unsigned>(random() % (last - first + 1));
    };
    const unsigned percent = among(0, 99);
    switch (kind) {
        case ascii:
            return among(' ', '~');
        case latin:
            return percent < 20 ? among(0xC0, 0x17F) : among(' ', '~');
        case cjk:
            return percent < 97 ? among(0x4E00, 0x9FFF) : among(' ', '~');
        default:
            return percent < 25   ? among(' ', '~')
                   : percent < 50 ? among(0xC0, 0x17F)
                   : percent < 75 ? among(0x4E00, 0x9FFF)
                                  : among(0x1F300, 0x1F5FF);
    }
}

unsigned bytes_as_utf8(unsigned c) {
    return c < 0x80 ? 1 : c < 0x800 ? 2 : c < 0x10000 ? 3 : 4;
}
unsigned bytes_as_utf16(unsigned c) {
    return c < 0x10000 ? 2 : 4;
}
unsigned bytes_as_ucs4(unsigned) {
    return 4;
}

// As many characters as fill `size` bytes of an encoding, the last ones ASCII where they would not.
Text make_text(Kind kind, unsigned size, unsigned (*bytes_of)(unsigned c)) {
    std::mt19937 random(kind);
    Text text;
    for (unsigned made = 0; made < size; made += bytes_of(text.ucs4.back())) {
        const bool last = made + 4 > size;
        const unsigned c = random_character(last ? ascii : kind, random);
        utf8::append(c, std::back_inserter(text.utf8));
        text.ucs4.push_back(c);
    }
    utf8::utf8to16(text.utf8.begin(), text.utf8.end(), std::back_inserter(text.utf16));
    text.utf8_buffer.resize(text.utf8.size() + 1);
    text.utf16_buffer.resize(text.utf16.size() + 1);
    text.ucs4_buffer.resize(text.ucs4.size());
    return text;
}

// A null destination: counts only.
int icu_to_utf16(const Text& text, wchar_t* destination, std::size_t capacity) {
    UErrorCode status = U_ZERO_ERROR;
    std::int32_t length = 0;
    u_strFromUTF8(reinterpret_cast<UChar*>(destination), static_cast<int>(capacity), &length,
                  text.utf8.data(), static_cast<int>(text.utf8.size()), &status);
    return length;
}
int icu_to_utf8(const Text& text, char* destination, std::size_t capacity) {
    UErrorCode status = U_ZERO_ERROR;
    std::int32_t length = 0;
    u_strToUTF8(destination, static_cast<int>(capacity), &length,
                reinterpret_cast<const UChar*>(text.utf16.data()),
                static_cast<int>(text.utf16.size()), &status);
    return length;
}

// Operations.  Each leaves its result in the buffer or answers it.  Sizes are those of the source.

struct Utf8ToUtf16 {
    static constexpr auto source_bytes = bytes_as_utf8;
    static bool right(const Text& text) {
        return text.utf16_buffer.compare(0, text.utf16.size(), text.utf16) == 0;
    }
    static unsigned ours(Text& t) {
        return tarvcore::utf8_to_wstr(t.utf8.data(), t.utf8.size(), t.utf16_buffer.data(),
                                      t.utf16.size(), 0, nullptr);
    }
    static const void* utfcpp(Text& t) {
        return &*utf8::utf8to16(t.utf8.begin(), t.utf8.end(), t.utf16_buffer.begin());
    }
    // Writes a terminator.
    static const void* nowide(Text& t) {
        return boost::nowide::utf::convert_buffer(t.utf16_buffer.data(), t.utf16_buffer.size(),
                                                  t.utf8.data(), t.utf8.data() + t.utf8.size());
    }
    static int icu(Text& t) { return icu_to_utf16(t, t.utf16_buffer.data(), t.utf16.size()); }
    static int windows(Text& t) {
        return MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, t.utf8.data(),
                                   static_cast<int>(t.utf8.size()), t.utf16_buffer.data(),
                                   static_cast<int>(t.utf16.size()));
    }
};

struct Utf16ToUtf8 {
    static constexpr auto source_bytes = bytes_as_utf16;
    static bool right(const Text& text) {
        return text.utf8_buffer.compare(0, text.utf8.size(), text.utf8) == 0;
    }
    static unsigned ours(Text& t) {
        return tarvcore::wstr_to_utf8(t.utf16.data(), t.utf16.size(), t.utf8_buffer.data(),
                                      t.utf8.size(), 0, nullptr);
    }
    static const void* utfcpp(Text& t) {
        return &*utf8::utf16to8(t.utf16.begin(), t.utf16.end(), t.utf8_buffer.begin());
    }
    static const void* nowide(Text& t) {
        return boost::nowide::utf::convert_buffer(t.utf8_buffer.data(), t.utf8_buffer.size(),
                                                  t.utf16.data(), t.utf16.data() + t.utf16.size());
    }
    static int icu(Text& t) { return icu_to_utf8(t, t.utf8_buffer.data(), t.utf8.size()); }
    static int windows(Text& t) {
        return WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, t.utf16.data(),
                                   static_cast<int>(t.utf16.size()), t.utf8_buffer.data(),
                                   static_cast<int>(t.utf8.size()), nullptr, nullptr);
    }
};

struct Utf8ToUcs4 {
    static constexpr auto source_bytes = bytes_as_utf8;
    static bool right(const Text& text) { return text.ucs4_buffer == text.ucs4; }
    static unsigned ours(Text& t) {
        return tarvcore::utf8_to_ucs4(t.utf8.data(), t.utf8.size(), t.ucs4_buffer.data(),
                                      t.ucs4.size(), 0, nullptr);
    }
    static const void* utfcpp(Text& t) {
        return utf8::utf8to32(t.utf8.begin(), t.utf8.end(), t.ucs4_buffer.data());
    }
};

struct Ucs4ToUtf8 {
    static constexpr auto source_bytes = bytes_as_ucs4;
    static bool right(const Text& text) { return Utf16ToUtf8::right(text); }
    static unsigned ours(Text& t) {
        return tarvcore::ucs4_to_utf8(t.ucs4.data(), t.ucs4.size(), t.utf8_buffer.data(),
                                      t.utf8.size(), 0, nullptr);
    }
    static const void* utfcpp(Text& t) {
        return &*utf8::utf32to8(t.ucs4.begin(), t.ucs4.end(), t.utf8_buffer.begin());
    }
};

struct Validation {
    static constexpr auto source_bytes = bytes_as_utf8;
    static bool right(const Text&) { return true; }
    static bool ours(Text& t) { return tarvcore::is_valid_utf8(t.utf8.data(), t.utf8.size()); }
    static bool utfcpp(Text& t) { return utf8::is_valid(t.utf8.begin(), t.utf8.end()); }
};

struct CountOfUtf8AsUtf16 {
    static constexpr auto source_bytes = bytes_as_utf8;
    static bool right(const Text&) { return true; }
    static unsigned ours(Text& t) {
        return tarvcore::utf8_to_wstr(t.utf8.data(), t.utf8.size(), nullptr, 0, 0, nullptr);
    }
    static int icu(Text& t) { return icu_to_utf16(t, nullptr, 0); }
    static int windows(Text& t) {
        return MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, t.utf8.data(),
                                   static_cast<int>(t.utf8.size()), nullptr, 0);
    }
};

struct CountOfUtf16AsUtf8 {
    static constexpr auto source_bytes = bytes_as_utf16;
    static bool right(const Text&) { return true; }
    static unsigned ours(Text& t) {
        return tarvcore::wstr_to_utf8(t.utf16.data(), t.utf16.size(), nullptr, 0, 0, nullptr);
    }
    static int icu(Text& t) { return icu_to_utf8(t, nullptr, 0); }
    static int windows(Text& t) {
        return WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, t.utf16.data(),
                                   static_cast<int>(t.utf16.size()), nullptr, 0, nullptr, nullptr);
    }
};

template <class Operation, auto function, Kind kind, unsigned size>
void run(benchmark::State& state) {
    Text text = make_text(kind, size, Operation::source_bytes);
    require(function(text) != 0 && Operation::right(text), "a converted text");
    measure(state, [&] {
        keep(text);
        keep(function(text));
    });
}

template <class Operation, Kind kind, unsigned size>
void add_text_row(const std::string& name, const char* goal) {
    static constexpr const char* kinds[] = {"ASCII", "Latin", "CJK", "emoji"};
    const std::string row = name + ", " + kinds[kind] + (size == 64 ? " 64 B" : " 64 KiB");
    constexpr auto candidate = []<auto function>() {
        return run<Operation, function, kind, size>;
    };
    const Candidate ours = {"tarvcore", candidate.template operator()<Operation::ours>()};
    if constexpr (requires { Operation::nowide; }) {
        add_row(row.c_str(), goal,
                {ours,
                 {"utfcpp", candidate.template operator()<Operation::utfcpp>()},
                 {"ICU", candidate.template operator()<Operation::icu>()},
                 {"Boost.Nowide", candidate.template operator()<Operation::nowide>()},
                 {"Windows", candidate.template operator()<Operation::windows>()}});
    } else if constexpr (requires { Operation::utfcpp; }) {
        add_row(row.c_str(), goal,
                {ours, {"utfcpp", candidate.template operator()<Operation::utfcpp>()}});
    } else {
        add_row(row.c_str(), goal,
                {ours,
                 {"ICU", candidate.template operator()<Operation::icu>()},
                 {"Windows", candidate.template operator()<Operation::windows>()}});
    }
}

// The goals for each kind of text, 64 bytes and then 64 KiB of it.
template <class Operation>
void add_rows(const std::string& name, const char* const (&goals)[8]) {
    add_text_row<Operation, ascii, 64>(name, goals[0]);
    add_text_row<Operation, latin, 64>(name, goals[1]);
    add_text_row<Operation, cjk, 64>(name, goals[2]);
    add_text_row<Operation, emoji, 64>(name, goals[3]);
    add_text_row<Operation, ascii, 65536>(name, goals[4]);
    add_text_row<Operation, latin, 65536>(name, goals[5]);
    add_text_row<Operation, cjk, 65536>(name, goals[6]);
    add_text_row<Operation, emoji, 65536>(name, goals[7]);
}

}  // namespace

void add_ucsutil_rows() {
    add_rows<Utf8ToUtf16>("UTF-8 to UTF-16", {"13 ns", "19 ns", "0.85 x of ICU", "38 ns", "2500 ns",
                                              "36000 ns", "0.75 x of ICU", "99000 ns"});
    add_rows<Utf16ToUtf8>("UTF-16 to UTF-8", {"12 ns", "20 ns", "31 ns", "31 ns", "0.12 x of ICU",
                                              "15000 ns", "0.3 x of ICU", "0.9 x of ICU"});
    add_rows<Validation>("validation of UTF-8", {"9 ns", "9 ns", "9 ns", "9 ns", "1000 ns",
                                                 "5000 ns", "5000 ns", "5000 ns"});
    add_rows<Utf8ToUcs4>("UTF-8 to UCS-4", {"0.9 x", "0.9 x", "0.9 x", "0.9 x", "4500 ns",
                                            "45000 ns", "27000 ns", "64000 ns"});
    add_rows<Ucs4ToUtf8>("UCS-4 to UTF-8", {"0.9 x", "0.9 x", "0.9 x", "0.9 x", "5500 ns",
                                            "14000 ns", "7400 ns", "121000 ns"});
    add_rows<CountOfUtf8AsUtf16>(
        "length of UTF-8 in UTF-16",
        {"0.5 x", "0.5 x", "0.5 x", "0.5 x", "2000 ns", "7000 ns", "7000 ns", "7000 ns"});
    add_rows<CountOfUtf16AsUtf8>(
        "length of UTF-16 in UTF-8",
        {"0.5 x", "0.5 x", "0.5 x", "0.5 x", "6000 ns", "6000 ns", "6000 ns", "6000 ns"});
}

}  // namespace tarv_bench
