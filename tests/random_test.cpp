// Faults to catch: a seeding or a generation other than the stated one; vector code that differs
// from the plain algorithm at a border; bytes of a fill that are left out, written twice or
// outside; threads that get the same numbers.

#include "tarvcore/random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <functional>
#include <random>
#include <set>
#include <sstream>
#include <vector>

#include "tarvcore/impl/random_generator.h"
#include "tarvcore/impl/simd_level.h"
#include "tests/support/guarded_memory.h"
#include "tests/support/threads.h"

namespace {

using namespace tarvcore;
using impl::RandomGenerator;

constexpr std::uint64_t first_counter = 0xFEDCBA9876543210;
thread_local std::uint64_t counter = 0;

std::uint64_t next_counter() {
    counter += 0x100000001;
    return first_counter + counter;
}

constexpr impl::EntropyCalls fixed_calls = {
    [] { return AbsoluteTime::from_nsec(0x0123456789ABCDEF); },
    []() -> std::uint32_t { return 1111; },
    []() -> std::uint32_t { return 2222; },
    []() -> std::uint32_t { return 3333; },
    next_counter,
};

// The standard's generator with the library's seeding.
struct Model {
    std::array<std::uint32_t, 624> state = {0x89ABCDEF, 0x01234567, 1111, 2222, 3333};
    std::array<std::uint32_t, 624> generation;
    unsigned position = 0;
    std::uint64_t tsc = first_counter;

    Model() {
        tsc += 0x100000001;
        state[5] = static_cast<std::uint32_t>(tsc);
        state[6] = static_cast<std::uint32_t>(tsc >> 32);
        for (unsigned k = 7; k < 624; ++k)
            state[k] = (state[k - 7] ^ (state[k - 7] >> 30)) * 1812433253 + k;
        for (int i = 0; i < 97; ++i)
            generate();
    }
    void generate() {
        tsc += 0x100000001;
        state[0] ^= static_cast<std::uint32_t>(tsc);
        state[1] ^= static_cast<std::uint32_t>(tsc >> 32);
        state[2] ^= ~static_cast<std::uint32_t>(tsc);
        state[3] ^= ~static_cast<std::uint32_t>(tsc >> 32);
        // A generator takes and tells its state as text, with the words that are used up behind.
        std::stringstream text;
        for (const std::uint32_t word : state)
            text << word << ' ';
        std::mt19937 standard;
        text << state.size() << ' ';
        text >> standard;
        std::ranges::generate(generation, std::ref(standard));
        text << standard;
        for (std::uint32_t& word : state)
            text >> word;
        position = 0;
    }
    std::uint32_t draw() {
        if (position == 624) generate();
        return generation[position++];
    }
};

class RandomAtEveryLevel : public testing::TestWithParam<impl::SimdLevel> {
protected:
    RandomAtEveryLevel() { impl::force_simd_level(GetParam()); }
    ~RandomAtEveryLevel() override { impl::force_simd_level(impl::SimdLevel::avx2); }
};

INSTANTIATE_TEST_SUITE_P(Random, RandomAtEveryLevel,
                         testing::Values(impl::SimdLevel::sse2, impl::SimdLevel::avx2));

TEST_P(RandomAtEveryLevel, DrawsAndFillsAsTheModel) {
    counter = 0;
    RandomGenerator generator(fixed_calls);
    Model model;
    tarv_test::GuardedMemory memory(1 << 16);
    std::mt19937 choice(1);
    // Sizes about a word, a vector, a generation and several of them, at every alignment.
    const unsigned sizes[] = {0, 1, 3, 4, 5, 15, 16, 19, 64, 2491, 2495, 2496, 2497, 4992, 10'001};
    for (int trial = 0; trial < 3000; ++trial) {
        for (auto draws = choice() % 5; draws != 0; --draws)
            ASSERT_EQ(generator.draw(), model.draw());

        const unsigned size = sizes[choice() % std::size(sizes)];
        std::vector<char> expected(size);
        for (unsigned i = 0; i < size; i += 4) {
            const std::uint32_t word = model.draw();
            std::memcpy(expected.data() + i, &word, std::min(4u, size - i));
        }
        char* const buffer = memory.before_guard(size);
        buffer[-1] = 'x';
        generator.fill(buffer, size);
        ASSERT_EQ(buffer[-1], 'x');
        ASSERT_TRUE(std::equal(expected.begin(), expected.end(), buffer)) << size;
    }
}

// Also the process's first numbers: several threads ask for them at once.
TEST(Random, ThreadsShareOneSequence) {
    std::vector<std::vector<std::uint32_t>> drawn(4);
    tarv_test::run_threads(drawn.size(), [&](unsigned i) {
        std::vector<std::uint32_t>& mine = drawn[i];
        mine.resize(1 << 18);
        const auto middle = mine.begin() + (1 << 17);
        // So often that threads come in between.
        for (int fills = 0; fills < 40; ++fills)
            random_fill(mine.data(), 4 << 17);
        std::generate(middle, mine.end(), random_uint32);
    });

    // Four words that two threads share would be no chance: 2^-128 for each pair of places.
    std::set<std::array<std::uint32_t, 4>> tuples;
    std::array<std::uint64_t, 32> ones = {};
    for (const auto& mine : drawn) {
        for (unsigned i = 0; i < mine.size(); i += 4)
            ASSERT_TRUE(tuples.insert({mine[i], mine[i + 1], mine[i + 2], mine[i + 3]}).second);
        for (const std::uint32_t word : mine)
            for (unsigned bit = 0; bit < 32; ++bit)
                ones[bit] += word >> bit & 1;
    }
    // 2^20 words: a standard deviation of 512 about half of them; six of them each way.
    for (const std::uint64_t count : ones)
        EXPECT_NEAR(static_cast<double>(count), 1 << 19, 6 * 512);
}

TEST(Random, EveryKindUsesAllItsBits) {
    const auto check = [](const char* kind, auto draw, unsigned bits) {
        std::uint64_t set = 0;
        std::uint64_t clear = 0;
        for (int i = 0; i < 200; ++i) {
            const auto value = static_cast<std::uint64_t>(draw());
            set |= value;
            clear |= ~value;
        }
        const std::uint64_t all = ~std::uint64_t{0} >> (64 - bits);
        EXPECT_EQ(set & clear & all, all) << kind;
    };
    check("int", random_int, 32);
    check("uint", random_uint, 32);
    check("int32", random_int32, 32);
    check("uint32", random_uint32, 32);
    check("long", random_long, 32);
    check("ulong", random_ulong, 32);
    check("int64", random_int64, 64);
    check("uint64", random_uint64, 64);
    const auto digits_of_double = [] {
        const double digits = random_double() * 0x1p53;
        const auto whole = static_cast<std::uint64_t>(digits);
        EXPECT_EQ(static_cast<double>(whole), digits);
        EXPECT_EQ(whole >> 53, 0u);
        return whole;
    };
    check("double", digits_of_double, 53);
}

}  // namespace
