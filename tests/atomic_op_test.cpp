// Faults to catch: the wrong one of old and new value; the arguments of compare_exchange swapped;
// 64-bit values torn or their halves swapped; lost updates; the doubled addend of `add`
// "corrected".

#include "tarvcore/atomic_op.h"

#include <gtest/gtest.h>

#include "tests/support/threads.h"

namespace {

using tarvcore::AtomicOp;

template <class T>
class AtomicOpTest : public testing::Test {};
using Types = testing::Types<unsigned int, long, unsigned long, unsigned long long>;
TYPED_TEST_SUITE(AtomicOpTest, Types, );

TYPED_TEST(AtomicOpTest, AnswersAndStores) {
    using T = TypeParam;
    T x = 10;
    EXPECT_EQ(AtomicOp<T>::increment(&x), T{11});
    EXPECT_EQ(AtomicOp<T>::decrement(&x), T{10});
    EXPECT_EQ(AtomicOp<T>::add(&x, 5), T{20});
    EXPECT_EQ(x, T{15});
    EXPECT_EQ(AtomicOp<T>::exchange(&x, 3), T{15});
    EXPECT_EQ(AtomicOp<T>::compare_exchange(&x, 7, 3), T{3});
    EXPECT_EQ(x, T{7});
    EXPECT_EQ(AtomicOp<T>::compare_exchange(&x, 9, 4), T{7});
    EXPECT_EQ(AtomicOp<T>::read(&x), T{7});
    AtomicOp<T>::write(&x, 1);
    EXPECT_EQ(x, T{1});
}

TYPED_TEST(AtomicOpTest, Wraps) {
    using T = TypeParam;
    constexpr T highest_bit = T{1} << (8 * sizeof(T) - 1);
    T x = 0;
    EXPECT_EQ(AtomicOp<T>::decrement(&x), static_cast<T>(-1));
    EXPECT_EQ(AtomicOp<T>::increment(&x), T{0});
    x = static_cast<T>(~highest_bit);
    EXPECT_EQ(AtomicOp<T>::increment(&x), highest_bit);
}

// Of 64 bits both halves go on by 1, and stay equal: a torn value shows.
TYPED_TEST(AtomicOpTest, LosesNothingBetweenThreads) {
    using T = TypeParam;
    constexpr T one = static_cast<T>(0x0000000100000001);
    constexpr int rounds = 1'000'000;
    T x = 0;
    tarv_test::run_threads(2, [&x](unsigned) {
        for (int i = 0; i < rounds; ++i) {
            AtomicOp<T>::add(&x, one);
            ASSERT_EQ(AtomicOp<T>::read(&x) % one, T{0});
        }
    });
    EXPECT_EQ(x, 2 * rounds * one);
}

TEST(AtomicOp64, CarriesBetweenTheHalves) {
    unsigned long long x = 0x0000000100000000;
    EXPECT_EQ(AtomicOp<unsigned long long>::read(&x), 0x0000000100000000u);
    EXPECT_EQ(AtomicOp<unsigned long long>::decrement(&x), 0x00000000FFFFFFFFu);
    EXPECT_EQ(AtomicOp<unsigned long long>::increment(&x), 0x0000000100000000u);
    EXPECT_EQ(AtomicOp<unsigned long long>::compare_exchange(&x, 5, 0x00000000), 0x100000000u);
    EXPECT_EQ(x, 0x0000000100000000u);
}

}  // namespace
