// Faults to catch: a seeding or a generation other than the stated one; vector code that differs
// from the plain algorithm at a border; bytes of a fill that are left out, written twice or
// outside; threads that get the same numbers.

#include "tarvcore/random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cstring>
#include <random>
#include <set>
#include <thread>
#include <vector>

#include "tarvcore/impl/random_generator.h"
#include "tarvcore/impl/simd_level.h"
#include "tests/support/guarded_memory.h"

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

// The textbook's twist and tempering, word by word.
struct Model {
    std::array<std::uint32_t, 624> state;
    unsigned position = 624;

    void twist() {
        for (unsigned i = 0; i < 624; ++i) {
            const std::uint32_t y = (state[i] & 0x80000000) + (state[(i + 1) % 624] & 0x7FFFFFFF);
            state[i] = state[(i + 397) % 624] ^ (y >> 1) ^ (y % 2 == 0 ? 0 : 0x9908B0DF);
        }
        position = 0;
    }
    static std::uint32_t temper(std::uint32_t y) {
        y ^= y >> 11;
        y ^= (y << 7) & 0x9D2C5680;
        y ^= (y << 15) & 0xEFC60000;
        return y ^ (y >> 18);
    }
};

struct SeededModel : Model {
    std::uint64_t tsc = first_counter;

    SeededModel() {
        state[0] = 0x89ABCDEF;
        state[1] = 0x01234567;
        state[2] = 1111;
        state[3] = 2222;
        state[4] = 3333;
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
        twist();
    }
    std::uint32_t draw() {
        if (position == 624) generate();
        return temper(state[position++]);
    }
};

TEST(Random, ModelIsTheMersenneTwister) {
    Model model;
    model.state[0] = 5489;
    for (unsigned i = 1; i < 624; ++i) {
        model.state[i] = (model.state[i - 1] ^ (model.state[i - 1] >> 30)) * 1812433253 + i;
    }
    std::mt19937 standard;
    for (int i = 0; i < 3000; ++i) {
        if (model.position == 624) model.twist();
        ASSERT_EQ(Model::temper(model.state[model.position++]), standard());
    }
}

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
    SeededModel model;
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
    constexpr unsigned thread_count = 4;
    std::atomic<unsigned> missing = thread_count;
    std::vector<std::vector<std::uint32_t>> drawn(thread_count);
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < thread_count; ++i) {
        threads.emplace_back([&, i] {
            --missing;
            while (missing != 0)
                std::this_thread::yield();
            std::vector<std::uint32_t>& mine = drawn[i];
            mine.resize(1 << 18);
            if (i % 2 == 0) {
                random_fill(mine.data(), mine.size() * 4);
            } else {
                std::generate(mine.begin(), mine.end(), random_uint32);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();

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
    std::uint64_t set = 0;
    std::uint64_t clear = 0;
    const auto look = [&](std::uint64_t bits) {
        set |= bits;
        clear |= ~bits;
    };
    const auto expect_all = [&](const char* kind, std::uint64_t mask) {
        EXPECT_EQ(set & mask, mask) << kind;
        EXPECT_EQ(clear & mask, mask) << kind;
        set = clear = 0;
    };
    const auto check = [&](const char* kind, auto draw) {
        for (int i = 0; i < 200; ++i)
            look(static_cast<std::uint64_t>(draw()));
        expect_all(kind, sizeof(draw()) == 8 ? ~std::uint64_t{0} : 0xFFFFFFFF);
    };
    check("int", random_int);
    check("uint", random_uint);
    check("int32", random_int32);
    check("uint32", random_uint32);
    check("long", random_long);
    check("ulong", random_ulong);
    check("int64", random_int64);
    check("uint64", random_uint64);
    for (int i = 0; i < 100'000; ++i) {
        const double value = random_double();
        ASSERT_GE(value, 0.0);
        ASSERT_LT(value, 1.0);
        const double scaled = value * 0x1p53;
        ASSERT_EQ(scaled, static_cast<double>(static_cast<std::uint64_t>(scaled)));
        look(static_cast<std::uint64_t>(scaled));
    }
    expect_all("double", (std::uint64_t{1} << 53) - 1);
}

}  // namespace
