// Faults to catch: zero reported one step early or late; the dead revived; a count that is lost;
// `destroy` called twice, never, or past an override.

#include "tarvcore/ref_count.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <utility>
#include <vector>

#include "tarvcore/ref_count_ptr.h"
#include "tests/support/racers.h"
#include "tests/support/threads.h"

namespace {

using namespace tarvcore;

template <class Counter>
class RefCountTest : public testing::Test {};
using Counters = testing::Types<AtomicRefCount, NonAtomicRefCount>;
TYPED_TEST_SUITE(RefCountTest, Counters, );

TYPED_TEST(RefCountTest, CountsToOneAndBack) {
    TypeParam count;
    EXPECT_FALSE(count.has_refs());
    count.increment();
    EXPECT_TRUE(count.is_unique());
    count.increment();
    EXPECT_FALSE(count.is_unique());
    EXPECT_FALSE(count.decrement());
    EXPECT_TRUE(count.decrement());
    EXPECT_FALSE(count.has_refs());
    EXPECT_TRUE(TypeParam(1).is_unique());
}

TEST(AtomicStrongWeakRefCount, DoesNotReviveTheDead) {
    AtomicStrongWeakRefCount count;
    count.increment_weak();
    EXPECT_TRUE(count.increment_strong());
    EXPECT_FALSE(count.decrement_strong());
    EXPECT_TRUE(count.decrement_strong());
    EXPECT_FALSE(count.increment_strong());
    EXPECT_FALSE(count.has_strong_refs());
    EXPECT_FALSE(count.decrement_weak());
    EXPECT_TRUE(count.decrement_weak());
}

TEST(AtomicStrongWeakRefCount, LosesNothingBetweenThreads) {
    constexpr int each = 2'000'000;
    AtomicStrongWeakRefCount count;
    tarv_test::run_threads(2, [&](unsigned) {
        for (int i = 0; i < each; ++i)
            EXPECT_TRUE(count.increment_strong());
    });
    for (int i = 0; i < 2 * each; ++i)
        ASSERT_FALSE(count.decrement_strong());
    EXPECT_TRUE(count.decrement_strong());
}

// A second reference comes while the only one goes.
TEST(AtomicStrongWeakRefCount, DiesOnceWhoeverComesMeanwhile) {
    using Count = std::shared_ptr<AtomicStrongWeakRefCount>;
    std::vector<Count> counts(20'000);
    std::ranges::generate(counts, [] { return std::make_shared<AtomicStrongWeakRefCount>(); });
    std::atomic<int> deaths = 0;
    const auto drop = [&](const Count& count) { deaths += count->decrement_strong(); };
    const auto take_and_drop = [&](const Count& count) {
        if (count->increment_strong()) drop(count);
    };
    tarv_test::race<Count>(std::move(counts), {drop, take_and_drop});
    EXPECT_EQ(deaths, 20'000);
}

template <class Counter>
class Recycled : public RefCounted<Counter> {
public:
    explicit Recycled(std::atomic<int>& destroyed) : destroyed_(destroyed) {}
    ~Recycled() override = default;

protected:
    void destroy() const override {
        ++destroyed_;
        delete this;
    }

private:
    std::atomic<int>& destroyed_;
};

TYPED_TEST(RefCountTest, LastReleaseDestroysOnceThroughTheOverride) {
    std::atomic<int> destroyed = 0;
    RefCountPtr<Recycled<TypeParam>> first(new Recycled<TypeParam>(destroyed));
    EXPECT_TRUE(first->has_unique_ref());
    RefCountPtr<RefCounted<TypeParam>> second(first);
    EXPECT_FALSE(first->has_unique_ref());
    first.clear();
    EXPECT_EQ(destroyed, 0);
    second.clear();
    EXPECT_EQ(destroyed, 1);
}

TEST(RefCounted, ThreadsAgreeOnTheLastReference) {
    using Ptr = RefCountPtr<Recycled<AtomicRefCount>>;
    std::atomic<int> destroyed = 0;
    std::vector<Ptr> objects;
    for (int i = 0; i < 10; ++i)
        objects.emplace_back(new Recycled<AtomicRefCount>(destroyed));
    const auto count_up_and_down = [](const Ptr& shared) {
        for (int round = 0; round < 50'000; ++round)
            RefCountPtr(shared).clear();
    };
    tarv_test::race<Ptr>(std::move(objects), {count_up_and_down, count_up_and_down,
                                              count_up_and_down, count_up_and_down});
    EXPECT_EQ(destroyed, 10);
}

}  // namespace
