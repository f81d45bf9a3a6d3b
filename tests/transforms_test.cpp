// Faults to catch: a wrong table entry; groups cut in the wrong place, at the end of a text or of a
// vector; a character or a length let through; the wrong fault, or not the first one; anything
// touched outside source and destination; iterators and pieces that take another way and another
// result; outputs changed by a failed call.

#include "tarvcore/transforms.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <list>
#include <random>
#include <span>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/guarded_memory.h"
#include "tests/support/raised.h"
#include "tests/support/simd_levels.h"
#include "tests/support/transform_oracle.h"

namespace {

using namespace tarv_test;
using namespace tarvcore;
using impl::TransformHelperBase32;
using impl::TransformHelperBase64;
using impl::TransformHelperHex;

// In the checked build the code is slow, and every n-th case has to do.
#if defined(TARVCORE_STATIC)
constexpr unsigned stride = 61;
#else
constexpr unsigned stride = 1;
#endif

std::string random_bytes(unsigned size) {
    static std::mt19937 generator(20140716);
    std::string bytes(size, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(generator());
    return bytes;
}

struct Base64 : Base64Transform {
    static const Rules& rules() { return base64_rules; }
};
struct Base32 : Base32Transform {
    static const Rules& rules() { return base32_rules; }
};
struct Hex : HexTransform {
    static const Rules& rules() { return hex_rules; }
};

template <class Encoding>
class Transforms : public testing::Test {
protected:
    // On every level, source and destination against the ends, and then the begins, of their pages.
    void check_encode(std::string_view bytes, bool pad) {
        const std::string expected = oracle_encode(Encoding::rules(), bytes, pad);
        ASSERT_EQ(Encoding::encoded_size(bytes.size(), pad), expected.size());
        at_each_level_and_end([&](bool at_end) {
            char* const source = place(bytes_, bytes, at_end);
            char* const text = place(text_, std::string(expected.size(), '?'), at_end);
            char* const end = Encoding::encode(source, source + bytes.size(), text, pad);
            ASSERT_EQ(std::string_view(text, end), expected);
        });
    }
    void check_decode(std::string_view text, bool require_padding) {
        const Decoded expected = oracle_decode(Encoding::rules(), text, require_padding);
        // A good text needs no more room than its bytes.
        const std::string room(expected.fault.empty() ? expected.bytes.size()
                                                      : Encoding::max_decoded_size(text.size()),
                               '?');
        at_each_level_and_end([&](bool at_end) {
            char* const source = place(text_, text, at_end);
            char* const bytes = place(bytes_, room, at_end);
            const Decoded result = decoded([&] {
                char* const end = source + text.size();
                return std::string(bytes, Encoding::decode(source, end, bytes, require_padding));
            });
            ASSERT_EQ(result.fault, expected.fault) << text;
            ASSERT_EQ(result.bytes, expected.bytes) << text;
        });
    }

private:
    template <class Check>
    static void at_each_level_and_end(Check check) {
        at_each_level([&](SimdLevel level) {
            SCOPED_TRACE(static_cast<int>(level));
            for (const bool at_end : {true, false}) {
                if (!testing::Test::HasFatalFailure()) check(at_end);
            }
        });
    }
    static char* place(const GuardedMemory& memory, std::string_view content, bool at_end) {
        char* const begin = at_end ? memory.before_guard(content.size()) : memory.after_guard();
        std::ranges::copy(content, begin);
        return begin;
    }

    GuardedMemory bytes_{4096};
    GuardedMemory text_{4096};
};

using Encodings = testing::Types<Base64, Base32, Hex>;
TYPED_TEST_SUITE(Transforms, Encodings);

TEST(Transform, AnswersThePublishedVectors) {
    const struct {
        const char *bytes, *base64, *base32, *hex;
    } rows[] = {
        {"", "", "", ""},
        {"f", "Zg==", "MY======", "66"},
        {"fo", "Zm8=", "MZXQ====", "666f"},
        {"foo", "Zm9v", "MZXW6===", "666f6f"},
        {"foob", "Zm9vYg==", "MZXW6YQ=", "666f6f62"},
        {"fooba", "Zm9vYmE=", "MZXW6YTB", "666f6f6261"},
        {"foobar", "Zm9vYmFy", "MZXW6YTBOI======", "666f6f626172"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Base64::encode(row.bytes), row.base64);
        EXPECT_EQ(Base32::encode(row.bytes), row.base32);
        EXPECT_EQ(Hex::encode(row.bytes), row.hex);
    }
    EXPECT_EQ(Base64::encode("f", false), "Zg");
    EXPECT_EQ(Base64::decode("-_+/"), Base64::decode("+/-_"));
    EXPECT_EQ(Hex::decode("aBCdEf"), "\xAB\xCD\xEF");
    EXPECT_THROW(Base32::decode("mzxw6ytb"), ErrorException) << "lower case is not its alphabet";
}

TEST(Transform, AnswersTheFaultsOfTextsThatAreAlmostGood) {
    const struct {
        const char *base64, *fault, *why;
    } rows[] = {
        {"Zg==\n", "padding", "nothing follows the padding"},
        {"Zg===", "invalid", "not even padding"},
        {"Zm9v\nZm9v", "invalid", "lines"},
        {"Zm9vZg=", "truncated", "half the padding"},
        {"Zg=v", "padding", "data within padding"},
        {"Z===", "truncated", "no byte ends after six bits"},
        {"====", "truncated", "padding of nothing"},
        {"Zh==", "invalid", "four bits too many are not zero"},
        {"Zm8", "truncated", "no padding"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(decoded([&] { return Base64::decode(row.base64); }).fault, row.fault) << row.why;
        EXPECT_EQ(oracle_decode(base64_rules, row.base64, true).fault, row.fault) << row.why;
    }
    EXPECT_EQ(Base64::decode("Zm8", false), "fo");
    EXPECT_EQ(Base64::decode("Zm8=", false), "fo");
}

TYPED_TEST(Transforms, EveryInputOfUpToThreeBytes) {
    for (unsigned size = 0; size <= 3; ++size) {
        for (unsigned value = 0; value < 1u << (8 * size); value += size < 3 ? 1 : stride) {
            const std::string_view bytes(reinterpret_cast<const char*>(&value), size);
            char text[8];
            char* const end = TypeParam::encode(bytes.begin(), bytes.end(), text);
            ASSERT_EQ(std::string_view(text, end), oracle_encode(TypeParam::rules(), bytes, true));
            char decoded[8];
            char* const decoded_end = TypeParam::decode(text, end, decoded);
            ASSERT_EQ(std::string_view(decoded, decoded_end), bytes) << value;
        }
    }
}

TYPED_TEST(Transforms, EveryLengthWithinItsMemory) {
    for (unsigned size = 0; size < 300; ++size) {
        const std::string bytes = random_bytes(size);
        for (const bool pad : {true, false}) {
            ASSERT_NO_FATAL_FAILURE(this->check_encode(bytes, pad));
            const std::string text = oracle_encode(TypeParam::rules(), bytes, pad);
            ASSERT_NO_FATAL_FAILURE(this->check_decode(text, pad));
        }
    }
}

TYPED_TEST(Transforms, EveryTruncation) {
    // Texts that end in each way that there is.
    for (unsigned size = 96; size < 101; ++size) {
        for (const bool pad : {true, false}) {
            const std::string text = oracle_encode(TypeParam::rules(), random_bytes(size), pad);
            for (unsigned length = 0; length < text.size(); ++length)
                ASSERT_NO_FATAL_FAILURE(this->check_decode({text.data(), length}, pad));
        }
    }
}

TYPED_TEST(Transforms, EveryByteAtEveryPlace) {
    const std::string good = oracle_encode(TypeParam::rules(), random_bytes(97), true);
    for (unsigned place = 0; place < good.size(); ++place) {
        for (unsigned byte = 0; byte < 256; byte += byte < 128 ? 1 : stride) {
            std::string text = good;
            text[place] = static_cast<char>(byte);
            ASSERT_NO_FATAL_FAILURE(this->check_decode(text, true));
        }
    }
}

TYPED_TEST(Transforms, EveryShortTextOfDataPaddingAndRubbish) {
    constexpr char characters[] = {'A', '4', '=', '!'};
    for (unsigned length = 0; length <= 9; ++length) {
        for (unsigned number = 0; number < 1u << (2 * length); number += stride) {
            std::string text;
            for (unsigned i = 0; i < length; ++i)
                text += characters[number >> (2 * i) & 3];
            for (const bool pad : {true, false}) {
                const Decoded expected = oracle_decode(TypeParam::rules(), text, pad);
                std::string bytes = "before";
                const auto error = TypeParam::decode_nothrow(text, &bytes, pad);
                ASSERT_EQ(fault_of(error), expected.fault) << text << ' ' << pad;
                ASSERT_EQ(bytes, error ? "before" : expected.bytes) << text << ' ' << pad;
            }
        }
    }
}

TYPED_TEST(Transforms, AllIteratorsAndContainersAnswerTheSame) {
    const std::string bytes = random_bytes(83);
    const std::string text = oracle_encode(TypeParam::rules(), bytes, true);

    const std::list<unsigned char> list(bytes.begin(), bytes.end());
    std::string out = "x";
    TypeParam::encode(list.begin(), list.end(), out);
    TypeParam::encode(bytes.begin(), bytes.end(), out);
    EXPECT_EQ(out, "x" + text + text);
    std::istringstream source(bytes);
    std::ostringstream sink;
    TypeParam::encode(std::istreambuf_iterator<char>(source), std::istreambuf_iterator<char>(),
                      std::ostreambuf_iterator<char>(sink));
    EXPECT_EQ(sink.str(), text);
    const auto numbers = std::as_bytes(std::span(bytes));
    EXPECT_EQ(TypeParam::encode(numbers), text);

    const std::wstring wide(text.begin(), text.end());
    out.clear();
    TypeParam::decode(wide.begin(), wide.end(), std::back_inserter(out));
    EXPECT_EQ(out, bytes);
    std::wstring above_ascii = wide;
    above_ascii[1] = static_cast<wchar_t>(above_ascii[1] + 0x100);
    EXPECT_THROW(TypeParam::decode(above_ascii.begin(), above_ascii.end(), out), ErrorException);
    EXPECT_EQ(out, bytes) << "as before the failure";
    EXPECT_THROW(TypeParam::decode(text.begin(), text.end() - 1, out), ErrorException);
    EXPECT_EQ(out, bytes) << "as before the failure";
    TypeParam::decode(text.begin(), text.end(), out);
    EXPECT_EQ(out, bytes + bytes);
    const auto decoded = TypeParam::template decode<std::vector<std::byte>>(text);
    EXPECT_TRUE(std::ranges::equal(decoded, numbers));
}

TYPED_TEST(Transforms, PiecesAnswerTheSameAsTheWhole) {
    const std::string bytes = random_bytes(149);
    const std::string text = oracle_encode(TypeParam::rules(), bytes, true);
    // A fault is found in whatever piece it is.
    const std::string texts[] = {text, text + text + "!", text.substr(1)};
    for (unsigned piece = 1; piece <= 2 * text.size(); ++piece) {
        ASSERT_EQ(encoded_in_pieces<TypeParam>(bytes, true, piece), text) << piece;
        for (const std::string& each : texts) {
            const Decoded expected = oracle_decode(TypeParam::rules(), each, true);
            ASSERT_EQ(decoded_in_pieces<TypeParam>(each, true, piece), expected) << piece;
        }
    }
}

TEST(Transform, SizesDoNotWrap) {
    EXPECT_EQ(Base64::encoded_size(0xBFFFFFFD, true), 0xFFFFFFFCu);
    EXPECT_THROW((void)Base64::encoded_size(0xBFFFFFFE, true), std::length_error);
    EXPECT_THROW((void)Hex::encoded_size(0x80000000), std::length_error);
    EXPECT_EQ(Base64::max_decoded_size(0xFFFFFFFF), 0xBFFFFFFFu);
}

TEST(Transform, RaisersTellWhatAndWhere) {
    const struct {
        void (*raise)();
        std::string code;
        std::string message;
        std::string function;
    } rows[] = {
        {[] { TransformHelperBase64::check_padding_char('A'); }, "base64.padding",
         "Encountered non-padding character in padding of base-64 sequence",
         "Base64::check_padding_char()"},
        {TransformHelperBase64::raise_invalid_character_error, "base64.invalid",
         "Invalid character in base-64 sequence", "Base64::raise_invalid_character_error()"},
        {TransformHelperBase64::raise_truncated_sequence_error, "base64.truncated",
         "Truncated base-64 sequence", "Base64::raise_truncated_sequence_error()"},
        {TransformHelperBase32::raise_invalid_character_error, "base32.invalid",
         "Invalid character in base-32 sequence", "Base32::raise_invalid_character_error()"},
        {TransformHelperBase32::raise_truncated_sequence_error, "base32.truncated",
         "Truncated base-32 sequence", "Base32::raise_truncated_sequence_error()"},
        {TransformHelperBase32::raise_padding_error, "base32.padding",
         "Encountered non-padding character in padding of base-32 sequence",
         "Base32::raise_padding_error()"},
        {[] { TransformHelperHex::nibble_from_charval('g'); }, "hex.invalid",
         "Invalid character in hex sequence, expecting: 0-9a-fA-F",
         "Hex::raise_invalid_character_error()"},
        {TransformHelperHex::raise_truncated_sequence_error, "hex.truncated",
         "Truncated hex sequence (odd number of hex characters)",
         "Hex::raise_truncated_sequence_error()"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(raised(row.raise), "error.tarvcore.transforms." + row.code + ' ' + row.message +
                                         " [] tarvcore::impl::TransformHelper" + row.function +
                                         " //tarvcore/impl/transform_helpers.cpp");
    }
    EXPECT_THROW(TransformHelperBase64::check_padding_char(200), ErrorException);
    EXPECT_THROW(TransformHelperBase64::check_padding_char(-67), ErrorException);
    TransformHelperBase64::check_padding_char('=');
    EXPECT_EQ(TransformHelperHex::nibble_from_charval('F'), 15);
}

}  // namespace
