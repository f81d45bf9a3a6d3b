// Faults to catch: a step other than the published one; a tail of the wrong bytes; bytes lost or
// taken twice where pieces meet; reading beyond the input; a seed that is the same in every
// process.

#include "tarvcore/murmur_hash.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <string>
#include <utility>

#include "tests/support/allocations.h"
#include "tests/support/child_process.h"
#include "tests/support/guarded_memory.h"
#include "tests/support/trials.h"

namespace {

using namespace tarvcore;

// The published algorithm, byte by byte.
std::uint32_t model(std::uint32_t seed, const std::string& bytes) {
    const auto scrambled = [](std::uint32_t k) {
        k *= 0xcc9e2d51;
        k = k << 15 | k >> 17;
        return k * 0x1b873593;
    };
    std::uint32_t h = seed;
    std::uint32_t k = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        k |= std::uint32_t{static_cast<unsigned char>(bytes[i])} << i % 4 * 8;
        if (i % 4 != 3) continue;
        h ^= scrambled(k);
        h = (h << 13 | h >> 19) * 5 + 0xe6546b64;
        k = 0;
    }
    h ^= scrambled(k);
    h ^= bytes.size();
    h = (h ^ h >> 16) * 0x85ebca6b;
    h = (h ^ h >> 13) * 0xc2b2ae35;
    return h ^ h >> 16;
}

std::uint32_t digest(std::uint32_t seed, const std::string& bytes) {
    return MurmurHashContext(seed).update(bytes.data(), bytes.size()).calculate_digest();
}

TEST(MurmurHash, PublishedVectors) {
    const struct {
        std::string bytes;
        std::uint32_t seed;
        std::uint32_t hash;
    } rows[] = {
        {"", 0, 0},
        {"", 1, 0x514E28B7},
        {std::string(1, '\0'), 0, 0x514E28B7},
        {"\x21\x43\x65\x87", 0, 0xF55B516B},
        {"\x21\x43\x65\x87", 0x5082EDEE, 0x2362F9DE},
        {"\x21\x43\x65", 0, 0x7E4A8634},
        {"The quick brown fox jumps over the lazy dog", 0x9747B28C, 0x2FA826CD},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(digest(row.seed, row.bytes), row.hash) << row.bytes;
    }
}

TEST(MurmurHash, IsTheModelForEveryLengthAndCutAndAlignment) {
    const std::uint32_t of_nothing = murmur_hash("", 0);
    EXPECT_NE(of_nothing, 0u) << "as with the seed 0";
    const tarv_test::GuardedMemory memory(4096);
    std::mt19937 random(73);
    for (unsigned trial = 0; trial < tarv_test::trials(4000); ++trial) {
        std::string bytes(random() % (trial % 100 == 0 ? 2000 : 40), '\0');
        std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random()); });
        // Every alignment, with what must not be read right behind or right before it.
        char* input = memory.before_guard(bytes.size());
        if (trial % 2 == 0) input = memory.after_guard();
        bytes.copy(input, bytes.size());

        const std::uint32_t seed = random();
        MurmurHashContext context(seed);
        MurmurHashContext of_process;
        for (unsigned done = 0; done != bytes.size();) {
            const unsigned size = std::min<unsigned>(random() % 18, bytes.size() - done);
            if (size % 2 == 0) {
                context.update(reinterpret_cast<const wchar_t*>(input + done), size / 2);
            } else {
                context.update(input + done, size);
            }
            of_process.update(input + done, size);
            done += size;
            ASSERT_EQ(context.calculate_digest(), model(seed, bytes.substr(0, done)))
                << "cut at " << done << " by " << size;
            ASSERT_EQ(of_process.calculate_digest(), murmur_hash(input, done));
            ASSERT_EQ(murmur_hash(reinterpret_cast<const wchar_t*>(input), done / 2),
                      murmur_hash(input, done / 2 * 2));
        }
        of_process.reset();
        ASSERT_EQ(of_process.calculate_digest(), of_nothing);
    }
}

TEST(MurmurHashContext, CopiesGoTheirOwnWays) {
    MurmurHashContext first(7);
    first.update("abcde", 5);
    MurmurHashContext second(first);
    first.update("f", 1);
    second.update("g", 1);
    EXPECT_EQ(first.calculate_digest(), digest(7, "abcdef"));
    EXPECT_EQ(second.calculate_digest(), digest(7, "abcdeg"));
    second = first;
    EXPECT_EQ(second.update("h", 1).calculate_digest(), digest(7, "abcdefh"));
    second.reset();
    EXPECT_EQ(second.update("i", 1).calculate_digest(), digest(7, "i"));
    MurmurHashContext third(std::move(first));
    EXPECT_EQ(third.calculate_digest(), digest(7, "abcdef"));
}

TEST(MurmurHashContext, GoesWithoutMemory) {
    const MurmurHashContext full(7);
    tarv_test::AllocationWatch watch;
    watch.fail_from(0);
    MurmurHashContext empty(7);
    MurmurHashContext copy(empty.update("abc", 3));
    const MurmurHashContext no_copy(full);
    watch.fail_none();
    EXPECT_EQ(no_copy.calculate_digest(), 0u);
    copy.reset();
    EXPECT_EQ(copy.update("abc", 3).calculate_digest(), 0u);
    copy = MurmurHashContext(7);
    EXPECT_EQ(copy.update("abc", 3).calculate_digest(), digest(7, "abc"));
}

TEST(MurmurHash, HasOneSeedInAProcessAndAnotherInAnother) {
    std::set<std::string> hashes;
    for (int i = 0; i < 8; ++i) {
        const auto outcome = tarv_test::run_program(L"murmur_hash_child.exe", {});
        EXPECT_EQ(outcome.status, 0u) << "threads differ";
        EXPECT_TRUE(hashes.insert(outcome.output).second) << outcome.output;
    }
}

}  // namespace
