// Faults to catch: a byte read or written beyond the end; paths above the baseline that answer
// anything else than the baseline; a bad character missed where blocks meet; counts that differ
// from what is written; a character put into room it does not fit.

#include "tarvcore/impl/unicode_kernels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/support/conversion_oracle.h"
#include "tests/support/guarded_memory.h"
#include "tests/support/simd_levels.h"
#include "tests/support/trials.h"

namespace {

using namespace tarvcore::impl;
using namespace tarv_test;

// Before any test forces another one.
const SimdLevel first_level = simd_level();

TEST(SimdLevel, IsTheMachinesUntilAnotherIsForced) {
    const SimdLevel expected = __builtin_cpu_supports("avx2")     ? SimdLevel::avx2
                               : __builtin_cpu_supports("sse4.1") ? SimdLevel::sse41
                               : __builtin_cpu_supports("ssse3")  ? SimdLevel::ssse3
                                                                  : SimdLevel::sse2;
    EXPECT_EQ(first_level, expected);
}

class UnicodeKernels : public testing::Test {
protected:
    ~UnicodeKernels() override { force_simd_level(SimdLevel::avx2); }

    // Room for a text right in front of a guard, and a text put there.
    template <class T>
    static T* last(const GuardedMemory& memory, std::size_t count) {
        return reinterpret_cast<T*>(memory.before_guard(static_cast<unsigned>(count * sizeof(T))));
    }
    template <class T>
    const T* put(const std::vector<T>& text) const {
        T* const begin = last<T>(source_memory_, text.size());
        std::copy(text.begin(), text.end(), begin);
        return begin;
    }

    // Converts and counts on every level, the source and the room each right in front of a guard.
    template <class Unit, class SourceUnit>
    void check(Conversion<SourceUnit, Unit> convert, const std::vector<SourceUnit>& source,
               unsigned capacity) const {
        std::vector<Unit> expected;
        const auto progress = fields(expected_progress(source, capacity, expected));
        const SourceUnit* const text = put(source);
        Unit* const room = last<Unit>(destination_memory_, capacity);
        at_each_level([&](SimdLevel level) {
            // What another level has left there would be right.
            std::fill_n(room, capacity, static_cast<Unit>(0xA5A5A5A5));
            const auto result = fields(convert(text, source.size(), room, capacity));
            const auto count = fields(convert(text, source.size(), nullptr, capacity));
            ASSERT_TRUE(result == progress && count == progress &&
                        std::equal(expected.begin(), expected.end(), room))
                << testing::PrintToString(std::tuple(result, count)) << " for "
                << testing::PrintToString(progress) << ", level " << static_cast<int>(level)
                << ", capacity " << capacity << ", to " << sizeof(Unit)
                << " bytes\nsource: " << testing::PrintToString(source)
                << "\nexpected: " << testing::PrintToString(expected);
        });
    }
    void check_utf8(const Bytes& source, unsigned capacity) const {
        check(convert_utf8_to_utf16, source, capacity);
        check(convert_utf8_to_ucs4, source, capacity);
    }

    // With room to spare, exactly enough and anything less.
    template <class Unit, class SourceUnit>
    void check_capacities(Conversion<SourceUnit, Unit> convert,
                          const std::vector<SourceUnit>& source, CharacterSource& random) const {
        std::vector<Unit> converted;
        const unsigned needed = expected_progress(source, 0xFFFFFFFF, converted).written;
        for (const unsigned capacity :
             {needed + random.below(80), needed, needed - (needed != 0), random.below(needed + 1)})
            check(convert, source, capacity);
    }

    const GuardedMemory source_memory_{1 << 16};
    const GuardedMemory destination_memory_{1 << 18};
};

TEST_F(UnicodeKernels, ConvertLikeTheOracle) {
    CharacterSource random(3);
    const unsigned count = trials(2500);
    for (unsigned trial = 0; trial < count && !HasFatalFailure(); ++trial) {
        random.choose_kind();
        Bytes utf8;
        Units16 utf16;
        Units32 ucs4;
        for (unsigned length = random.below(trial % 8 == 0 ? 600 : 90); length > 0; --length) {
            const std::uint32_t c = random.next();
            oracle_encode(c, utf8);
            oracle_encode(c, utf16);
            oracle_encode(c, ucs4);
        }
        // Every other text is damaged somewhere.
        if (trial % 2 == 1 && !ucs4.empty()) {
            const unsigned damage = random.below(0x10000);
            utf8[random.below(utf8.size())] ^= static_cast<char>(1 + damage % 255);
            ucs4[random.below(ucs4.size())] = 0xD000 + damage;
            if (!utf16.empty()) {
                utf16[random.below(utf16.size())] = static_cast<std::uint16_t>(0xD000 + damage / 4);
            }
            if (damage % 4 == 0) utf8.erase(utf8.end() - 1);
        }
        check_capacities(convert_utf8_to_utf16, utf8, random);
        check_capacities(convert_utf8_to_ucs4, utf8, random);
        check_capacities(convert_utf16_to_utf8, utf16, random);
        check_capacities(convert_ucs4_to_utf8, ucs4, random);
    }
}

// More units than a vector's lanes can count to.
TEST_F(UnicodeKernels, CountLongTexts) {
    const Units16 utf16(150'000, 0x4E00);
    EXPECT_EQ(convert_utf16_to_utf8(utf16.data(), utf16.size(), nullptr, 0xFFFFFFFF).written,
              450'000u);
}

// Sequences at every place of a block, cut off after every byte.
TEST_F(UnicodeKernels, SeeTheEndOfTheSource) {
    for (const std::uint32_t c : {0x7Fu, 0x80u, 0x7FFu, 0x800u, 0xFFFDu, 0x10000u, 0x10FFFFu,
                                  0x110000u, 0x1FFFFFu, 0x200000u, 0x4000000u, 0x7FFFFFFFu}) {
        for (unsigned before = 0; before < 80; ++before) {
            Bytes text(before, 'a');
            for (const char byte : oracle_utf8(c)) {
                text.push_back(byte);
                ASSERT_NO_FATAL_FAILURE(check_utf8(text, 100));
                const bool good = oracle_decode(text, before).units != 0;
                ASSERT_EQ(valid_utf8_prefix(put(text), text.size()), good ? text.size() : before);
            }
        }
    }
}

// Any first byte with seconds of every kind around a block's end, where blocks of every kind meet.
TEST_F(UnicodeKernels, SeeABadSequenceAcrossBlocks) {
    const std::string befores[] = {"a", "\u00E9", "\u6F22", "\U0001F600"};
    const std::string afters[] = {"a", "\u00E9", "\x80" + std::string("a"),
                                  "\x80\x80" + std::string("a")};
    for (unsigned pair = 0; pair < 256 * 8 && !HasFatalFailure(); ++pair) {
        const char first = static_cast<char>(pair / 8);
        const char second = "\x7F\x80\x8F\x90\x9F\xA0\xBF\xC0"[pair % 8];
        for (const std::string& before : befores) {
            for (const std::string& after : afters) {
                std::string text(pair % 3, 'b');
                while (text.size() + before.size() <= 15)
                    text += before;
                text.resize(15, 'b');
                text += first + (second + after);
                text.resize(40, 'c');
                check_utf8({text.begin(), text.end()}, 40);
            }
        }
    }
}

// Every UTF-16 unit at every place of a block, alone and followed by units of each kind.
TEST_F(UnicodeKernels, KnowEveryUtf16Unit) {
    const std::uint16_t others[] = {'a', 0xE9, 0x4E00, 0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xFEFF};
    for (std::uint32_t unit = 0; unit < 0x10000 && !HasFatalFailure(); ++unit) {
        const bool special = unit >= 0xD7FF && (unit <= 0xE000 || unit >= 0xFEFE);
        if (!special && unit % 64 > 1) continue;
        Units16 text(unit % 32, static_cast<std::uint16_t>(unit % 5 * 0x400 + 'a'));
        text.push_back(static_cast<std::uint16_t>(unit));
        check(convert_utf16_to_utf8, text, 200);
        text.push_back(others[unit / 32 % std::size(others)]);
        text.resize(48, 'z');
        check(convert_utf16_to_utf8, text, 200);
    }
}

// Texts, one a level with blocks, in which a string lies across the border of two.
class BorderTexts {
public:
    BorderTexts() {
        // Not ASCII at the start, which would be taken before any blocks are formed.
        for (Row& row : rows_)
            oracle_utf8(0xE9).copy(row.text.data(), 2);
    }

    // Whether validation there comes to what it comes to for the string alone.
    bool agree(const char* string, unsigned length, unsigned valid) {
        return std::ranges::all_of(rows_, [=](Row& row) {
            std::copy(string, string + length, row.text.begin() + row.place);
            force_simd_level(row.level);
            return valid_utf8_prefix(row.text.data(), row.text.size()) ==
                   (valid == length ? row.text.size() : row.place + valid);
        });
    }

private:
    struct Row {
        SimdLevel level;
        unsigned place;
        Bytes text;
    };
    Row rows_[2] = {{SimdLevel::ssse3, 14, Bytes(40, 'a')}, {SimdLevel::avx2, 62, Bytes(160, 'a')}};
};

TEST_F(UnicodeKernels, KnowEveryShortUtf8String) {
    unsigned valid[4] = {};
    BorderTexts texts;
    for (std::uint32_t bytes = 0; bytes < 0x1000000; ++bytes) {
        const Bytes three = {static_cast<char>(bytes >> 16), static_cast<char>(bytes >> 8),
                             static_cast<char>(bytes)};
        unsigned expected = 0;
        while (expected < 3) {
            const unsigned units = oracle_decode(three, expected).units;
            if (units == 0) break;
            expected += units;
        }
        ASSERT_EQ(valid_utf8_prefix(three.data(), 3), expected) << std::hex << bytes;
        ASSERT_TRUE(texts.agree(three.data(), 3, expected)) << std::hex << bytes;
        valid[3] += expected == 3;
        if (bytes % 0x100 == 0) valid[2] += valid_utf8_prefix(three.data(), 2) == 2;
        if (bytes % 0x10000 == 0) valid[1] += valid_utf8_prefix(three.data(), 1) == 1;
    }
    EXPECT_EQ(valid[1], 128u);
    EXPECT_EQ(valid[2], 18304u);
    EXPECT_EQ(valid[3], 2650109u);
}

TEST_F(UnicodeKernels, KnowEveryUtf8StringOfFourBytes) {
    if (!is_long_run()) GTEST_SKIP() << "make test-long does that";
    unsigned valid = 0;
    BorderTexts texts;
    for (std::uint32_t bytes = 0;; ++bytes) {
        const char four[] = {static_cast<char>(bytes >> 24), static_cast<char>(bytes >> 16),
                             static_cast<char>(bytes >> 8), static_cast<char>(bytes)};
        force_simd_level(SimdLevel::sse2);
        const unsigned prefix = valid_utf8_prefix(four, 4);
        valid += prefix == 4;
        ASSERT_TRUE(texts.agree(four, 4, prefix)) << std::hex << bytes;
        if (bytes == 0xFFFFFFFF) break;
    }
    EXPECT_EQ(valid, 384253184u);
}

}  // namespace
