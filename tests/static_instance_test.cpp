// Faults to catch: two objects of one holder; clean-up in another order, or under the lock; an
// object that is used after its end; a constructor that fails and leaves a broken holder.

#include "tarvcore/static_instance.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/support/child_process.h"
#include "tests/support/raised.h"
#include "tests/support/threads.h"

namespace {

using namespace tarvcore;
using impl::StaticInstanceCleanup;

constexpr impl::ObjectManagerCalls willing_calls = {
    [](void*, void (*)(void*, void*)) { return 0; }};
constexpr impl::ObjectManagerCalls refusing_calls = {[](void*, void (*)(void*, void*)) {
    errno = EAGAIN;
    return -1;
}};

// A clean-up function with what it needs.
struct Step {
    StaticInstanceCleanup& cleanup;
    std::string& diary;
    char name;
    Step* next = nullptr;  // registered by this step
    bool throws = false;

    void expect() { cleanup.register_for_cleanup(take, this); }

    static void take(void* pointer) {
        const Step& self = *static_cast<Step*>(pointer);
        self.diary += self.name;
        if (self.next != nullptr) self.next->expect();
        if (self.throws) throw std::runtime_error("step");
    }
};

TEST(StaticInstanceCleanup, RunsBackwardsToTheEnd) {
    StaticInstanceCleanup cleanup(willing_calls);
    std::string diary;
    Step e{cleanup, diary, 'E'};
    Step d{cleanup, diary, 'D', &e};
    Step a{cleanup, diary, 'A'};
    Step b{cleanup, diary, 'B', &d, true};
    Step c{cleanup, diary, 'C'};
    a.expect();
    b.expect();
    c.expect();
    EXPECT_THROW(cleanup.run(), std::runtime_error);
    EXPECT_EQ(diary, "CB");
    c.expect();  // not closed yet
    cleanup.run();
    EXPECT_EQ(diary, "CBCDEA");
    cleanup.run();
    EXPECT_EQ(diary, "CBCDEA");
    EXPECT_EQ(
        tarv_test::raised([&] { a.expect(); }),
        "error.tarvcore.objectManager.closed Cannot register objects for cleanup after object "
        "manager has already been closed [] "
        "tarvcore::impl::StaticInstanceCleanup::register_for_cleanup() "
        "//tarvcore/static_instance.cpp");
}

TEST(StaticInstanceCleanup, SaysThatItWillNotBeRun) {
    testing::internal::CaptureStderr();
    StaticInstanceCleanup cleanup(refusing_calls);
    const std::string text = testing::internal::GetCapturedStderr();
    EXPECT_EQ(text.find("tarvcore: Error registering with ACE Object Manager for cleanup: \n"), 0u);
    EXPECT_NE(text.find("error.errno.EAGAIN"), std::string::npos) << text;
    EXPECT_NE(text.find("StaticInstanceCleanup::StaticInstanceCleanup()"), std::string::npos);
}

struct Counted {
    Counted() {
        if (failures > 0 && failures-- > 0) throw std::runtime_error("construction");
        ++made;
    }
    int value = 42;

    static inline std::atomic<int> made = 0;
    static inline std::atomic<int> failures = 0;
};

TEST(StaticInstance, IsMadeOnceByManyThreads) {
    for (int round = 0; round < 100; ++round) {
        // Never destroyed, as its object is not: it goes when the process does.
        auto& instance = *new StaticInstance<Counted>;
        Counted::made = 0;
        std::vector<Counted*> seen(4);
        tarv_test::run_threads(seen.size(), [&](unsigned i) { seen[i] = &instance.get(); });
        ASSERT_EQ(Counted::made, 1);
        ASSERT_EQ(std::set<Counted*>(seen.begin(), seen.end()).size(), 1u);
    }
}

TEST(StaticInstance, TriesAgainAfterAFailure) {
    auto& instance = *new StaticInstance<Counted>;
    Counted::failures = 1;
    EXPECT_THROW(instance.get(), std::runtime_error);
    EXPECT_EQ(instance->value, 42);
}

// The ends of processes, seen from outside: see static_instance_child.cpp.
TEST(StaticInstance, EndsWithAce) {
    const struct {
        const wchar_t* ending;
        const char* output;
    } rows[] = {
        {L"none", "main\n"},  // nobody stops ACE
        {L"fini",
         "main\nstill second\n~third\n~second\n~first\n"
         "used: error.tarvcore.objectManager.closed 228\n~fourth\n"
         "made: error.tarvcore.objectManager.closed 93\n"},
        {L"static", "main\n~third\n~second\n~first\n"},
        {L"busy", "main\n"},
#if !defined(TARVCORE_STATIC)
        {L"unload", "called\nregistered\nmain\n~third\n~second\n~first\n"},
#endif
    };
    for (const auto& row : rows) {
        const auto outcome = tarv_test::run_program(L"static_instance_child.exe", {row.ending});
        EXPECT_EQ(outcome.output, row.output);
        EXPECT_EQ(outcome.errors, "");
        EXPECT_EQ(outcome.status, 0u);
    }
}

}  // namespace
