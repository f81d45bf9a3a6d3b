// Faults to catch: a dump too many, or in the wrong period; credits that two threads take at once;
// the wrong line of the three, or texts in another order.

#include "tarvcore/diagnostics_impl.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "tarvcore/impl/debug_help.h"
#include "tarvcore/impl/dump_credits.h"
#include "tests/support/scoped_calls.h"
#include "tests/support/trace_hooks.h"

namespace {

using namespace tarvcore;
using tarv_test::TraceHooks;

TEST(DumpCredits, AreSixteenAPeriod) {
    impl::DumpCredits credits;
    unsigned period = 0;
    const auto taken = [&] {
        unsigned count = 0;
        while (credits.take([&] { return period; }))
            ++count;
        return count;
    };
    EXPECT_EQ(taken(), 16u);
    for (const unsigned next : {1u, 0xFFFFFFFFu, 0u}) {
        period = next;
        EXPECT_EQ(taken(), 16u) << next;
    }
}

TEST(DumpCredits, AreNeverOverdrawn) {
    for (int round = 0; round < 200; ++round) {
        impl::DumpCredits credits;
        std::atomic<unsigned> taken = 0;
        std::atomic<unsigned> missing = 8;
        std::vector<std::thread> threads;
        for (int i = 0; i < 8; ++i) {
            threads.emplace_back([&] {
                --missing;
                while (missing != 0)
                    std::this_thread::yield();
                for (int tries = 0; tries < 10; ++tries)
                    taken += credits.take([] { return 0u; });
            });
        }
        for (std::thread& thread : threads)
            thread.join();
        ASSERT_EQ(taken, 16u);
    }
}

// Whether the debugging-help library writes dumps, and how many it has been asked for.
bool writes_dumps;
unsigned dumps;

BOOL WINAPI write_dump(HANDLE, DWORD, HANDLE, MINIDUMP_TYPE type, PMINIDUMP_EXCEPTION_INFORMATION,
                       PMINIDUMP_USER_STREAM_INFORMATION, PMINIDUMP_CALLBACK_INFORMATION) {
    EXPECT_EQ(static_cast<unsigned>(type), 0x26u);
    ++dumps;
    return writes_dumps;
}

TEST(AnonymousExceptionReport, NamesThreadDumpAndError) {
    TraceHooks hooks;
    tarv_test::ScopedCalls<impl::DebugHelpCalls> calls(impl::debug_help_calls);
    calls->load = []() -> const impl::DebugHelp& {
        static impl::DebugHelp help = {};
        help.write_dump = write_dump;
        return help;
    };
    const auto report = [&](unsigned period, bool can_write) {
        TraceHooks::period = period;
        writes_dumps = can_write;
        TraceHooks::lines.clear();
        create_dump_and_trace_anonymous_exception(SourceLocation("f()", "$Id: //a/b.cpp#7 $", 1));
        ASSERT_EQ(TraceHooks::lines.size(), 1u);
        const auto& line = TraceHooks::lines.front();
        EXPECT_EQ(line.place, "//a/b.cpp#7");
        EXPECT_EQ(std::stoul(line.texts.front(), nullptr, 16), GetCurrentThreadId());
        EXPECT_TRUE(line.texts.back().starts_with("\nErrorCode:   error.exception.unknown\n"));
    };
    constexpr unsigned new_period = 12345;
    report(new_period, true);
    EXPECT_EQ(TraceHooks::lines.front().format,
              "Unknown exception occurred on thread {}.  Created memory dump: {}.  Error: {}");
    ASSERT_EQ(TraceHooks::lines.front().texts.size(), 3u);
    const std::string path = TraceHooks::lines.front().texts[1];
    EXPECT_TRUE(path.ends_with(".dmp") && DeleteFileA(path.c_str()) != 0) << path;

    report(new_period, false);
    EXPECT_EQ(TraceHooks::lines.front().format,
              "Unknown exception occurred on thread {} (unable to create dump).  Error: {}");
    EXPECT_EQ(TraceHooks::lines.front().texts.size(), 2u);

    for (unsigned i = 2; i < 16; ++i)
        report(new_period, false);
    dumps = 0;
    report(new_period, true);
    EXPECT_EQ(TraceHooks::lines.front().format,
              "Unknown exception occurred on thread {} (no dump created as dump credits "
              "exhausted).  Error: {}");
    EXPECT_EQ(dumps, 0u);
    report(new_period + 1, false);
    EXPECT_EQ(dumps, 1u);
}

}  // namespace
