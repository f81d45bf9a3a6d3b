// Faults to catch: guards that act on another thread or restore in the wrong order; failures that
// pass unseen, in destructors above all; messages that were put right; a label found in the other
// table or in part.

#include "tarvcore/priority.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <utility>

#include "tarvcore/impl/priority_calls.h"
#include "tests/support/guarded_memory.h"
#include "tests/support/other_thread.h"
#include "tests/support/raised.h"
#include "tests/support/scoped_calls.h"

namespace {

using namespace tarvcore;
using tarv_test::OtherThread;
using tarv_test::raised;
using tarv_test::ScopedCalls;
using Thread = ScopedThreadPriority;
using Process = ScopedPriorityClass;

const std::string thread_error = "error.tarvcore.hardware.threadPriority ";
const std::string process_error = "error.tarvcore.hardware.priorityClass ";

TEST(ScopedThreadPriority, RestoresInReverseOrder) {
    OtherThread other;
    const auto priority = [&other] { return Thread::get_thread_priority(other.id()); };
    const auto own = [] { return Thread::get_thread_priority(ACE_Thread_ID()); };
    {
        const Thread outer(Thread::threadPriorityAboveNormal, other.id());
        EXPECT_EQ(outer.old_thread_priority(), 0);
        {
            const Thread inner(Thread::threadPriorityTimeCritical, other.id());
            EXPECT_EQ(inner.old_thread_priority(), 1);
            EXPECT_EQ(priority(), Thread::threadPriorityTimeCritical);
            EXPECT_EQ(own(), 0);
        }
        EXPECT_EQ(priority(), 1);
        const Thread of_caller(Thread::threadPriorityLowest);
        EXPECT_EQ(own(), -2);
        Thread::set_thread_priority(other.id(), Thread::threadPriorityIdle);
    }
    EXPECT_EQ(priority(), 0);
    EXPECT_EQ(own(), 0);
}

TEST(ScopedThreadPriority, RestoresForEveryCopy) {
    OtherThread other;
    OtherThread another;
    const Thread guard(1, other.id());
    {
        Thread assigned(-1, another.id());
        assigned = guard;
    }
    EXPECT_EQ(Thread::get_thread_priority(other.id()), 0);
    EXPECT_EQ(Thread::get_thread_priority(another.id()), -1) << "forgotten by the assignment";
}

TEST(ScopedThreadPriority, RaisesForABadHandle) {
    const ACE_Thread_ID bad(1, reinterpret_cast<ACE_hthread_t>(0xbad0));
    const std::string causes =
        "() //tarvcore/priority.cpp\n< error.errno.EBADF\n< error.os.windows.6";
    EXPECT_EQ(raised([&bad] { Thread::set_thread_priority(bad, 2); }),
              thread_error +
                  "SetThreadPriority({@threadHandle}, 2 ['priority' => \"2\", 'threadId' => "
                  "\"0xbad0\"] tarvcore::ScopedThreadPriority::set_thread_priority" +
                  causes);
    ScopedCalls calls(impl::priority_calls);
    calls->set_thread_priority = [](void*, long) { return ADD_FAILURE() << "is set", true; };
    EXPECT_EQ(raised([&bad] { const Thread guard(2, bad); }),
              thread_error +
                  "GetThreadPriority(0xbad0) ['threadHandle' => \"0xbad0\"] "
                  "tarvcore::ScopedThreadPriority::get_thread_priority" +
                  causes);
}

TEST(ScopedThreadPriority, LetsFailuresOutOfTheDestructor) {
    static long failing;
    ScopedCalls calls(impl::priority_calls);
    calls->set_thread_priority = [](void*, long priority) { return priority != failing; };
    calls->thread_priority = [](void*) { return 1L; };
    // Without a guard, nothing is restored: it is the first failure that comes out.
    for (failing = 1; failing <= 3; ++failing) {
        const std::string error = raised([] { const Thread guard(2); });
        const std::string call = "SetThreadPriority({@threadHandle}, " + std::to_string(failing);
        EXPECT_EQ(error.find(thread_error + call) == 0, failing != 3) << error;
    }
}

TEST(ScopedPriorityClass, SetsTheClassOfTheProcess) {
    const unsigned long old = GetPriorityClass(GetCurrentProcess());
    {
        const Process outer(Process::priorityClassBelowNormal);
        EXPECT_EQ(outer.old_priority_class(), old);
        EXPECT_EQ(Process::get_process_priority_class(), 0x4000u);
        const Process inner(Process::priorityClassIdle);
        EXPECT_EQ(inner.old_priority_class(), 0x4000u);
        EXPECT_EQ(GetPriorityClass(GetCurrentProcess()), Process::priorityClassIdle);
    }
    EXPECT_EQ(Process::get_process_priority_class(), old);
}

TEST(ScopedPriorityClass, RaisesWhatWindowsRefuses) {
    const std::string causes =
        "_process_priority_class() //tarvcore/priority.cpp\n< error.errno.EACCES\n< "
        "error.os.windows.5";
    const std::string set_error =
        process_error +
        "SetPriorityClass(0xffffffff, 128) ['priority' => \"128\", 'processId' => "
        "\"0xffffffff\"] tarvcore::ScopedPriorityClass::set" +
        causes;
    ScopedCalls calls(impl::priority_calls);
    calls->last_error = [] { return 5UL; };
    calls->process_priority_class = [] { return 0x80UL; };
    calls->set_process_priority_class = [](unsigned long wanted) { return wanted != 0x80; };
    EXPECT_EQ(raised([] { const Process guard(0x20); }), set_error);
    EXPECT_EQ(raised([] { Process::set_process_priority_class(0x80); }), set_error);
    calls->process_priority_class = [] { return 0UL; };
    EXPECT_EQ(raised([] { const Process guard(0x20); }),
              process_error +
                  "GetPriorityClass(0xffffffff) ['processId' => \"0xffffffff\"] "
                  "tarvcore::ScopedPriorityClass::get" +
                  causes);
}

TEST(PriorityLabels, ArePrinted) {
    std::ostringstream os;
    for (const long priority : {-16, -15, -2, -1, 0, 1, 2, 3, 15})
        os << Thread::TracePriority(priority) << ' ';
    for (const unsigned long value : {0x20u, 0x40u, 0x80u, 0x100u, 0x4000u, 0x8000u, 0x80000000u})
        os << Process::TraceClass(value) << ' ';
    EXPECT_EQ(os.str(),
              "##UNKNOWN(-16)## Idle Lowest BelowNormal Normal AboveNormal Highest ##UNKNOWN(3)## "
              "TimeCritical Normal Idle High Realtime BelowNormal AboveNormal "
              "##UNKNOWN(2147483648)## ");
    EXPECT_STREQ(Thread::thread_priority_as_string(3), "");
}

TEST(PriorityLabels, AreComparedWholeAndWithoutCase) {
    const tarv_test::GuardedMemory memory(16);
    const auto unterminated = [&memory](const std::string& text) {
        char* const copy = memory.before_guard(text.size());
        text.copy(copy, text.size());
        return copy;
    };
    EXPECT_EQ(Thread::thread_priority_from_string(unterminated("abovenormal"), 11), 1);
    EXPECT_EQ(Thread::thread_priority_from_string("Normality", 6), 0);
    EXPECT_EQ(Thread::thread_priority_from_string("Idle", 0xFFFFFFFF), -15);
    EXPECT_EQ(Process::process_priority_class_from_string(unterminated("HIGH"), 4), 0x80u);
    EXPECT_EQ(Process::process_priority_class_from_string("Idle", 0xFFFFFFFF), 0x40u);
    EXPECT_NE(raised([] { Thread::thread_priority_from_string(nullptr, 0); }), "");

    for (const std::string bad : {"Normal ", " Normal", "High", "", "N\xD6RMAL"}) {
        const char* const label = unterminated(bad);
        EXPECT_NE(raised([&] { Thread::thread_priority_from_string(label, bad.size()); }), "");
    }
    EXPECT_NE(raised([] { Process::process_priority_class_from_string("", 0); }), "");
    EXPECT_EQ(raised([] { Thread::thread_priority_from_string("Norma", 5); }),
              thread_error +
                  "Unknown thread priority label: 'Norma' ['label' => \"Norma\"] "
                  "tarvcore::ScopedThreadPriority::thread_priority_from_string() "
                  "//tarvcore/priority.cpp\n< error.errno.EINVAL");
    EXPECT_EQ(raised([] { Process::process_priority_class_from_string("Highest", 7); }),
              process_error +
                  "Unknown process priority class label: '{@priorityClass}' "
                  "['label' => \"Highest\"] "
                  "tarvcore::ScopedPriorityClass::process_priority_class_from_string() "
                  "//tarvcore/priority.cpp\n< error.errno.EINVAL");
}

}  // namespace
