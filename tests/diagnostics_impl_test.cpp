// Faults to catch: a dump too many, or in the wrong period; credits that two threads take at once;
// the wrong line of the three, or texts in another order.

#include "tarvcore/diagnostics_impl.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>

#include "tarvcore/impl/debug_help.h"
#include "tarvcore/impl/dump_credits.h"
#include "tarvcore/impl/stream_text.h"
#include "tarvcore/streamers.h"
#include "tests/support/allocations.h"
#include "tests/support/pattern.h"
#include "tests/support/scoped_calls.h"
#include "tests/support/threads.h"
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
        tarv_test::run_threads(8, [&](unsigned) {
            for (int tries = 0; tries < 10; ++tries)
                taken += credits.take([] { return 0u; });
        });
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
    const std::string thread = impl::stream_text(streamers::Hex(GetCurrentThreadId(), false));
    const auto report = [&](unsigned period, bool can_write, const std::string& format,
                            const std::string& path = "") {
        TraceHooks::period = period;
        TraceHooks::lines.clear();
        writes_dumps = can_write;
        dumps = 0;
        create_dump_and_trace_anonymous_exception(SourceLocation("f()", "$Id: //a/b.cpp#7 $", 1));
        ASSERT_EQ(TraceHooks::lines.size(), 1u);
        EXPECT_TRUE(tarv_test::agrees(TraceHooks::lines.front(),
                                      "//a/b.cpp#7|Unknown exception occurred on thread {}" +
                                          format + "  Error: {}|" + thread + '|' + path +
                                          "\nErrorCode:   error.exception.unknown\n…"));
    };
    const std::string failed = " (unable to create dump).";
    constexpr unsigned period = 12345;
    report(period, true, ".  Created memory dump: {}.", "….dmp|");
    std::string path = TraceHooks::lines.front();
    path.erase(path.find(".dmp|") + 4).erase(0, path.rfind('|') + 1);
    EXPECT_TRUE(DeleteFileA(path.c_str()) != 0) << path;
    for (unsigned i = 1; i < 16; ++i)
        report(period, false, failed);
    EXPECT_EQ(dumps, 1u);
    report(period, true, " (no dump created as dump credits exhausted).");
    EXPECT_EQ(dumps, 0u);
    report(period + 1, false, failed);
    EXPECT_EQ(dumps, 1u);

    // Whatever there is no memory for is left out, and nobody hears of it.
    TraceHooks::lines.clear();
    testing::internal::CaptureStderr();
    for (int failures = 0; TraceHooks::lines.empty(); ++failures) {
        ASSERT_LT(failures, 1000);
        tarv_test::AllocationWatch watch;
        watch.fail_from(failures);
        create_dump_and_trace_anonymous_exception(SourceLocation("f()", "$Id: //a/b.cpp#7 $", 1));
        watch.fail_none();
    }
    testing::internal::GetCapturedStderr();
}

}  // namespace
