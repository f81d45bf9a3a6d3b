// Faults to catch: identifiers that repeat or do not sort, with a clock that stands, goes on by
// less than shows, jumps ahead or is set back; a counter that ends; threads that get the same ones.

#include "tarvcore/impl/sequential_uuids.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <unordered_set>
#include <vector>

#include "tarvcore/impl/uuid_calls.h"
#include "tests/support/scoped_calls.h"
#include "tests/support/threads.h"

namespace {

using namespace tarvcore;

std::int64_t now;
std::uint32_t draws;

// A clock and a source of bits in the test's hand.
class SequentialUuids : public testing::Test {
protected:
    SequentialUuids() : calls_(impl::uuid_calls) {
        now = 0x1122334455667700;
        draws = 0;
        calls_->now = [] { return AbsoluteTime::from_nsec(now); };
        calls_->random = [] { return 0xFEB0C000 + ++draws; };
    }

    // The next ones, which must all be new and, unless the clock was set back, greater.
    Uuid take(unsigned count = 1) {
        for (; count != 0; --count) {
            const Uuid uuid = uuids_.next();
            EXPECT_TRUE(seen_.insert(uuid).second) << uuid;
            EXPECT_LT(last_, uuid);
            last_ = uuid;
        }
        return last_;
    }
    void set_back(std::int64_t by) {
        now -= by;
        last_ = Uuid();
    }
    impl::SequentialUuids uuids_;

private:
    tarv_test::ScopedCalls<impl::UuidCalls> calls_;
    std::unordered_set<Uuid> seen_;
    Uuid last_;
};

TEST_F(SequentialUuids, AreMadeOfTimeNodesAndCounter) {
    // Time 0x11223344556677 and version; node1 0xFEB0C001: its low half byte and its second byte;
    // node2; counter.  Texts have the bytes of the first three groups in reverse.
    EXPECT_EQ(take().as_string(), "44332211-6655-d077-81c0-02c0b0fe0001");
    EXPECT_EQ(take().as_string(), "44332211-6655-d077-81c0-02c0b0fe0002");
    now += 0x100;
    EXPECT_EQ(take().as_string(), "44332211-6655-d078-81c0-02c0b0fe0001");
    EXPECT_EQ(draws, 2u);
    EXPECT_EQ(take().version(), Uuid::version_sequential);
    EXPECT_EQ(take().timestamp(), 0x01223344556678D0u);
}

TEST_F(SequentialUuids, GoOnWhileTheClockStands) {
    EXPECT_EQ(take(65'535).as_string(), "44332211-6655-d077-81c0-02c0b0feffff");
    EXPECT_EQ(take().as_string(), "44332211-6655-d077-81c0-02c0b0ff0000");
    EXPECT_EQ(take(70'000 - 65'536).as_string(), "44332211-6655-d077-81c0-02c0b0ff1170");
    // The node carries into its next byte.
    EXPECT_EQ(take(65'536).as_string(), "44332211-6655-d077-81c0-02c0b1001170");
}

TEST_F(SequentialUuids, CountOnWithinOneVisibleTime) {
    for (unsigned tick = 1; tick <= 5000; ++tick) {
        take(tick % 3 + 1);
        now += 100;
    }
    now = 0x1122334455777700;
    EXPECT_EQ(take().as_string(), "44332211-7755-d077-81c0-02c0b0fe0001");
    now += 0xFF;
    EXPECT_EQ(take().as_string(), "44332211-7755-d077-81c0-02c0b0fe0002");
    set_back(0xFF);  // which does not show
    EXPECT_EQ(take().as_string(), "44332211-7755-d077-81c0-02c0b0fe0003");
    EXPECT_EQ(draws, 2u);
}

TEST_F(SequentialUuids, GetOtherNodesWhenTheClockIsSetBack) {
    take(3);
    now += 3'600'000'000'000;
    take(3);
    set_back(3'600'000'000'000);
    EXPECT_EQ(take().as_string(), "44332211-6655-d077-83c0-04c0b0fe0001");
    EXPECT_EQ(draws, 4u);
    set_back(0x100);
    EXPECT_EQ(take().as_string(), "44332211-6655-d076-85c0-06c0b0fe0001");
    now += 0x100;
    EXPECT_EQ(take().as_string(), "44332211-6655-d077-85c0-06c0b0fe0001");
}

// With the clock and the bits of the system.
TEST(Uuid, SequentialOnesDifferBetweenThreads) {
    const impl::UuidCalls& system = *impl::uuid_calls;
    const AbsoluteTime before = AbsoluteTime::now();
    const AbsoluteTime time = system.now();
    EXPECT_TRUE(before <= time && time <= AbsoluteTime::now());
    EXPECT_NE(system.random(), system.random());

    // So many that threads run at the same time on a busy machine, too.
    std::vector<std::vector<Uuid>> made(4, std::vector<Uuid>(100'000));
    tarv_test::run_threads(
        4, [&](unsigned i) { std::ranges::generate(made[i], Uuid::create_sequential); });
    std::vector<Uuid> all;
    for (const auto& mine : made) {
        EXPECT_TRUE(std::ranges::is_sorted(mine));
        all.insert(all.end(), mine.begin(), mine.end());
    }
    std::ranges::sort(all);
    EXPECT_EQ(std::ranges::adjacent_find(all), all.end());
}

}  // namespace
