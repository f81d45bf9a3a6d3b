// Faults to catch: a wrong boundary between sequence lengths; surrogates or non-characters let
// through; the wrong number of units passed over after bad input.

#include "tarvcore/impl/unicode_codec.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/unicode_oracle.h"

namespace {

using namespace tarvcore::impl;
using namespace tarv_test;

TEST(UnicodeCodec, EncodesEveryCodePointOfUnicodeAndTheBoundariesAbove) {
    const auto check = [](std::uint32_t c) {
        char buffer[max_utf8_sequence_length];
        const unsigned length = encode_utf8(c, buffer);
        const std::string expected = oracle_allowed(c) ? oracle_utf8(c) : std::string();
        ASSERT_EQ(std::string(buffer, length), expected) << std::hex << c;
    };
    for (std::uint32_t c = 0; c < 0x120000; ++c)
        check(c);
    for (int bit = 16; bit < 32; ++bit) {
        for (const std::uint32_t near : {-1u, 0u, 1u})
            check((1u << bit) + near);
    }
    check(0xFFFFFFFF);
}

TEST(UnicodeCodec, DecodesEveryUnitAndPairsOfEveryKind) {
    for (std::uint32_t unit = 0; unit < 0x10000; ++unit) {
        const wchar_t text[] = {static_cast<wchar_t>(unit), 0xDC00};
        const auto [code_point, units] = decode_utf16(text, 1);
        ASSERT_EQ(units, oracle_allowed(unit) ? 1u : 0u) << std::hex << unit;
        if (units == 1) {
            ASSERT_EQ(code_point, unit);
        }
        ASSERT_EQ(decode_utf16(text, 2).units, unit / 0x400 == 0x36   ? 2u
                                               : oracle_allowed(unit) ? 1u
                                                                      : 0u)
            << std::hex << unit;
    }
    for (std::uint32_t c = 0x10000; c < 0x110000; ++c) {
        const wchar_t pair[] = {static_cast<wchar_t>(0xD800 + (c - 0x10000) / 0x400),
                                static_cast<wchar_t>(0xDC00 + (c - 0x10000) % 0x400)};
        ASSERT_EQ(decode_utf16(pair, 2).code_point, c);
    }
}

}  // namespace
