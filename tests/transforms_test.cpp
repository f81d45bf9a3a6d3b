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

#include "tarvcore/error_exception.h"
#include "tarvcore/impl/simd_level.h"
#include "tests/support/guarded_memory.h"

namespace {

using namespace tarvcore;
using impl::SimdLevel;
using impl::TransformHelperBase32;
using impl::TransformHelperBase64;
using impl::TransformHelperHex;
using tarv_test::GuardedMemory;

// In the checked build the code is slow, and every n-th case has to do.
#if defined(TARVCORE_STATIC)
constexpr unsigned stride = 61;
#else
constexpr unsigned stride = 1;
#endif

// What an encoding is, in the words of the standard.
struct Rules {
    std::string alphabet;
    unsigned bits;        // of a character
    unsigned group;       // characters
    std::string also;     // characters that stand for others ...
    std::string instead;  // ... these
};

const Rules base64_rules = {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/", 6,
                            4, "-_", "+/"};
const Rules base32_rules = {"ABCDEFGHIJKLMNOPQRSTUVWXYZ234567", 5, 8, "", ""};
const Rules hex_rules = {"0123456789abcdef", 4, 2, "ABCDEF", "abcdef"};

// Bit by bit.
std::string oracle_encode(const Rules& rules, std::string_view bytes, bool pad) {
    std::string bits;
    for (const char byte : bytes) {
        for (int i = 7; i >= 0; --i)
            bits += byte >> i & 1 ? '1' : '0';
    }
    std::string text;
    for (std::size_t i = 0; i < bits.size(); i += rules.bits) {
        std::string digit = bits.substr(i, rules.bits);
        digit.resize(rules.bits, '0');
        text += rules.alphabet[std::stoul(digit, nullptr, 2)];
    }
    while (pad && text.size() % rules.group != 0)
        text += '=';
    return text;
}

struct Decoded {
    std::string bytes;
    std::string fault;  // last segment of the code; empty where the text is good
};

// Group by group, and each from several sides.
Decoded oracle_decode(const Rules& rules, std::string_view text, bool require_padding) {
    const bool has_padding = rules.group > 2;
    std::string bits;
    Decoded result;
    bool ended = false;
    for (std::size_t begin = 0; begin < text.size(); begin += rules.group) {
        const std::string_view group = text.substr(begin, rules.group);
        if (ended) return {"", group[0] == '=' ? "invalid" : "padding"};
        const std::size_t data =
            has_padding ? std::min(group.find('='), group.size()) : group.size();
        for (std::size_t i = 0; i < data; ++i) {
            char c = group[i];
            if (const auto other = rules.also.find(c); other != std::string::npos)
                c = rules.instead[other];
            const auto value = rules.alphabet.find(c);
            if (value == std::string::npos) return {"", "invalid"};
            for (unsigned bit = rules.bits; bit-- > 0;)
                bits += value >> bit & 1 ? '1' : '0';
        }
        if (group.find_first_not_of('=', data) != group.npos) return {"", "padding"};
        ended = data < group.size();
        if (group.size() < rules.group && (ended || require_padding)) return {"", "truncated"};
        if (data == rules.group) continue;
        if (data == 0 || data * rules.bits % 8 >= rules.bits) return {"", "truncated"};
        if (bits.find('1', bits.size() / 8 * 8) != std::string::npos) return {"", "invalid"};
    }
    for (std::size_t i = 0; i + 8 <= bits.size(); i += 8)
        result.bytes += static_cast<char>(std::stoul(bits.substr(i, 8), nullptr, 2));
    return result;
}

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

std::string fault_of(const ErrorInfo::Ptr& error) {
    if (!error) return {};
    const std::string code = error->code().as_string();
    return code.substr(code.rfind('.') + 1);
}

template <class Encoding>
class Transforms : public testing::Test {
protected:
    ~Transforms() override { impl::force_simd_level(SimdLevel::avx2); }

    static const Rules& rules() { return Encoding::rules(); }

    // At every level of instructions that this machine has.
    template <class Check>
    void at_each_level(Check check) {
        for (const SimdLevel level :
             {SimdLevel::sse2, SimdLevel::ssse3, SimdLevel::sse41, SimdLevel::avx2}) {
            impl::force_simd_level(level);
            if (impl::simd_level() != level) continue;
            SCOPED_TRACE(static_cast<int>(level));
            check();
            if (this->HasFatalFailure()) return;
        }
    }

    // Source and destination against the ends, and then the begins, of their pages.
    void check_encode(std::string_view bytes, bool pad, const std::string& expected) {
        ASSERT_EQ(Encoding::encoded_size(bytes.size(), pad), expected.size());
        for (const bool at_end : {true, false}) {
            char* const source = place(bytes_, bytes, at_end);
            char* const text = place(text_, std::string(expected.size(), '?'), at_end);
            char* const end = Encoding::encode(source, source + bytes.size(), text, pad);
            ASSERT_EQ(std::string_view(text, end), expected);
        }
    }
    void check_decode(std::string_view text, bool require_padding, const Decoded& expected) {
        // A good text needs no more room than its bytes.
        const bool good = expected.fault.empty();
        const std::string bytes(
            good ? expected.bytes.size() : Encoding::max_decoded_size(text.size()), '?');
        for (const bool at_end : {true, false}) {
            char* const source = place(text_, text, at_end);
            char* const destination = place(bytes_, bytes, at_end);
            std::string fault;
            char* end = destination;
            try {
                end = Encoding::decode(source, source + text.size(), destination, require_padding);
            } catch (const ErrorException& e) {
                fault = fault_of(e.error());
            }
            ASSERT_EQ(fault, expected.fault) << text;
            if (good) {
                ASSERT_EQ(std::string_view(destination, end), expected.bytes) << text;
            }
        }
    }

private:
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
        EXPECT_EQ(Base64::decode(row.base64), row.bytes);
        EXPECT_EQ(Base32::decode(row.base32), row.bytes);
        EXPECT_EQ(Hex::decode(row.hex), row.bytes);
    }
    EXPECT_EQ(Base64::encode("f", false), "Zg");
    EXPECT_EQ(Base32::encode("fo", false), "MZXQ");
    EXPECT_EQ(Base64::decode("-_+/"), Base64::decode("+/-_"));
    EXPECT_EQ(Hex::decode("aBCdEf"), "\xAB\xCD\xEF");
}

TEST(Transform, AnswersTheFaultsOfTextsThatAreAlmostGood) {
    const struct {
        const char *base64, *fault, *why;
    } rows[] = {
        {"Zg==\n", "padding", "nothing follows the padding"},
        {"Zg===", "invalid", "not even padding"},
        {"Zg==Zg==", "padding", "nor another text"},
        {"Zm9v\nZm9v", "invalid", "lines"},
        {"Zm9vZg=", "truncated", "half the padding"},
        {"Zg=v", "padding", "data within padding"},
        {"Z===", "truncated", "no byte ends after six bits"},
        {"====", "truncated", "padding of nothing"},
        {"Zh==", "invalid", "four bits too many are not zero"},
        {"Zm9=", "invalid", "two bits too many are not zero"},
        {"Zm8", "truncated", "no padding"},
    };
    for (const auto& row : rows) {
        std::string bytes;
        EXPECT_EQ(fault_of(Base64::decode_nothrow(row.base64, &bytes)), row.fault) << row.why;
        EXPECT_EQ(oracle_decode(base64_rules, row.base64, true).fault, row.fault) << row.why;
    }
    EXPECT_EQ(Base64::decode("Zm8", false), "fo");
    EXPECT_EQ(Base64::decode("Zm8=", false), "fo");
    EXPECT_THROW(Base64::decode("Zg=", false), ErrorException);
    EXPECT_THROW(Base32::decode("MZXW6YT", true), ErrorException);
    EXPECT_THROW(Base32::decode("mzxw6ytb"), ErrorException) << "lower case is not its alphabet";
}

TYPED_TEST(Transforms, EveryInputOfUpToThreeBytes) {
    const Rules& rules = this->rules();
    for (unsigned size = 0; size <= 3; ++size) {
        const unsigned chars = (8 * size + rules.bits - 1) / rules.bits;
        for (unsigned value = 0; value < 1u << (8 * size); value += size < 3 ? 1 : stride) {
            const unsigned char bytes[] = {static_cast<unsigned char>(value),
                                           static_cast<unsigned char>(value >> 8),
                                           static_cast<unsigned char>(value >> 16)};
            const unsigned number = (bytes[0] << 16 | bytes[1] << 8 | bytes[2]) >> (24 - 8 * size);
            const unsigned shifted = number << (chars * rules.bits - 8 * size);
            char text[8];
            char* const end = TypeParam::encode(bytes, bytes + size, text, true);
            for (unsigned i = 0; i < 8u && text + i != end; ++i) {
                const unsigned shift = rules.bits * (chars - 1 - i);
                ASSERT_EQ(
                    text[i],
                    i >= chars ? '=' : rules.alphabet[shifted >> shift & ((1u << rules.bits) - 1)])
                    << value;
            }
            ASSERT_EQ((end - text) % rules.group, 0u);
            ASSERT_EQ(text + chars + (rules.group - chars % rules.group) % rules.group, end);
            unsigned char decoded[8];
            ASSERT_EQ(TypeParam::decode(text, end, decoded), decoded + size);
            ASSERT_TRUE(std::equal(bytes, bytes + size, decoded)) << value;
        }
    }
}

TYPED_TEST(Transforms, EveryLengthWithinItsMemory) {
    for (unsigned size = 0; size < 300; ++size) {
        const std::string bytes = random_bytes(size);
        for (const bool pad : {true, false}) {
            const std::string text = oracle_encode(this->rules(), bytes, pad);
            this->at_each_level([&] {
                this->check_encode(bytes, pad, text);
                this->check_decode(text, pad, {bytes, ""});
            });
            if (this->HasFatalFailure()) return;
        }
    }
}

TYPED_TEST(Transforms, EveryTruncation) {
    for (const bool pad : {true, false}) {
        // Texts that end in each way that there is.
        for (unsigned size = 96; size < 101; ++size) {
            const std::string text = oracle_encode(this->rules(), random_bytes(size), pad);
            for (unsigned length = 0; length < text.size(); ++length) {
                const std::string_view begin(text.data(), length);
                const Decoded expected = oracle_decode(this->rules(), begin, pad);
                this->at_each_level([&] { this->check_decode(begin, pad, expected); });
                if (this->HasFatalFailure()) return;
            }
        }
    }
}

TYPED_TEST(Transforms, EveryByteAtEveryPlace) {
    const std::string good = oracle_encode(this->rules(), random_bytes(97), true);
    for (unsigned place = 0; place < good.size(); ++place) {
        for (unsigned byte = 0; byte < 256; byte += byte < 128 ? 1 : stride) {
            std::string text = good;
            text[place] = static_cast<char>(byte);
            const Decoded expected = oracle_decode(this->rules(), text, true);
            this->at_each_level([&] { this->check_decode(text, true, expected); });
            if (this->HasFatalFailure()) return;
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
                const Decoded expected = oracle_decode(this->rules(), text, pad);
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
    const std::string text = TypeParam::encode(bytes);
    ASSERT_EQ(text, oracle_encode(this->rules(), bytes, true));

    const std::list<unsigned char> list(bytes.begin(), bytes.end());
    std::string out;
    TypeParam::encode(list.begin(), list.end(), std::back_inserter(out));
    EXPECT_EQ(out, text);
    out = "x";
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
    EXPECT_EQ(TypeParam::encode(std::vector<unsigned char>(bytes.begin(), bytes.end())), text);

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
    const std::string text = oracle_encode(this->rules(), bytes, true);
    for (unsigned piece = 1; piece <= text.size(); ++piece) {
        typename TypeParam::Encoder encoder;
        typename TypeParam::Decoder decoder;
        std::string encoded(text.size(), '?');
        std::string decoded(bytes.size(), '?');
        char* end = encoded.data();
        for (unsigned i = 0; i < bytes.size(); i += piece) {
            const std::string part = bytes.substr(i, piece);
            end = encoder.write(part.begin(), part.end(), end);
        }
        ASSERT_EQ(encoder.finish(end), encoded.data() + encoded.size());
        ASSERT_EQ(encoded, text) << piece;
        end = decoded.data();
        for (unsigned i = 0; i < text.size(); i += piece) {
            const std::string part = text.substr(i, piece);
            end = decoder.write(part.begin(), part.end(), end);
        }
        decoder.finish();
        ASSERT_EQ(end, decoded.data() + decoded.size());
        ASSERT_EQ(decoded, bytes) << piece;
    }

    // A fault is found in whatever piece it is.
    for (const std::string& bad : {text + text + "!", text.substr(1)}) {
        const std::string expected = oracle_decode(this->rules(), bad, true).fault;
        for (unsigned piece = 1; piece <= bad.size(); ++piece) {
            typename TypeParam::Decoder decoder;
            std::vector<unsigned char> decoded(bad.size());
            std::string fault;
            try {
                for (unsigned i = 0; i < bad.size(); i += piece) {
                    const std::string part = bad.substr(i, piece);
                    decoder.write(part.begin(), part.end(), decoded.begin());
                }
                decoder.finish();
            } catch (const ErrorException& e) {
                fault = fault_of(e.error());
            }
            ASSERT_EQ(fault, expected) << piece;
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
        const char* code;
        const char* message;
        const char* function;
    } rows[] = {
        {[] { TransformHelperBase64::check_padding_char('A'); }, "base64.padding",
         "Encountered non-padding character in padding of base-64 sequence",
         "Base64::check_padding_char()"},
        {[] { TransformHelperBase64::check_padding_char(200); }, "base64.padding",
         "Encountered non-padding character in padding of base-64 sequence",
         "Base64::check_padding_char()"},
        {[] { TransformHelperBase64::check_padding_char(-67); }, "base64.padding",
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
        try {
            row.raise();
            ADD_FAILURE() << row.function;
        } catch (const ErrorException& e) {
            const ErrorInfo& error = *e.error();
            EXPECT_EQ(error.code().as_string(),
                      std::string("error.tarvcore.transforms.") + row.code);
            EXPECT_EQ(error.message(), row.message);
            EXPECT_EQ(error.location().function().as_string(),
                      std::string("tarvcore::impl::TransformHelper") + row.function);
            EXPECT_GT(error.location().line(), 0u);
        }
    }
    TransformHelperBase64::check_padding_char('=');
    EXPECT_EQ(TransformHelperHex::nibble_from_charval('F'), 15);
}

}  // namespace
