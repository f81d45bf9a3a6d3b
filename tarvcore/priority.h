// Scheduling priorities: of threads, and of this process.
#pragma once

#include "ace/OS_NS_Thread.h"
#include "tarvcore/config.h"
#include "tarvcore/streamers.h"

namespace tarvcore {

// Gives a thread another priority while the guard lives, and then the one back that it had before,
// whatever others have set meanwhile.  Guards of one thread may be nested; the outermost one's old
// priority is the last to be set.  Copies restore too: each sets its old priority, on its thread.
//
// Priorities are those of Windows: steps above and below the class of the process.  Threads are
// named by their handles, which the guard does not own.  The handle of ACE_Thread_ID(), the calling
// thread, stands for whichever thread uses it: a guard made with it is destroyed by the same
// thread.
//
// Failures raise "error.tarvcore.hardware.threadPriority" with the error of Windows as its cause.
// That includes the destructor: where it runs because of another exception, the process ends.
//
//     {
//         const ScopedThreadPriority raised(ScopedThreadPriority::threadPriorityAboveNormal);
//         fill_audio_buffer();
//     }
class TARVCORE_API ScopedThreadPriority {
public:
    class TracePriority;

    // Idle and TimeCritical are beyond the steps: they hardly depend on the class.
    static const long threadPriorityIdle = -15;
    static const long threadPriorityLowest = -2;
    static const long threadPriorityBelowNormal = -1;
    static const long threadPriorityNormal = 0;
    static const long threadPriorityAboveNormal = 1;
    static const long threadPriorityHighest = 2;
    static const long threadPriorityTimeCritical = 15;

    // If either the old priority cannot be read or the new one not be set, there is no guard and
    // the thread is as before.
    explicit ScopedThreadPriority(long priority, const ACE_Thread_ID& thread = ACE_Thread_ID());
    ~ScopedThreadPriority() noexcept(false);
    ScopedThreadPriority(const ScopedThreadPriority&) = default;
    ScopedThreadPriority& operator=(const ScopedThreadPriority&) = default;

    long old_thread_priority() const { return old_thread_priority_; }

    // Not undone by anybody.
    static void set_thread_priority(const ACE_Thread_ID& thread, long priority);
    static long get_thread_priority(const ACE_Thread_ID& thread);

    // "Idle", "Lowest", "BelowNormal", "Normal", "AboveNormal", "Highest" or "TimeCritical"; empty
    // for any other priority.
    static const char* thread_priority_as_string(long priority);
    // The priority of one of these labels in any case.  Length 0xFFFFFFFF: up to the terminator.
    // Any other text raises with EINVAL as the cause.
    static long thread_priority_from_string(const char* text, unsigned length);

private:
    long old_thread_priority_;
    ACE_Thread_ID thread_;
};

// Prints a priority's label; "##UNKNOWN(7)##" where it has none.
class TARVCORE_API ScopedThreadPriority::TracePriority
    : public streamers::Streamable<ScopedThreadPriority::TracePriority> {
public:
    // Any number.
    explicit TracePriority(long priority) : priority_(priority) {}

    void write_trace(std::ostream& os) const;

private:
    long priority_;
};

// The same for the priority class of this process, which moves the priorities of all its threads.
// Guards of several threads that overlap restore in the order of their ends: that is for the caller
// to prevent.  Failures raise "error.tarvcore.hardware.priorityClass".
class TARVCORE_API ScopedPriorityClass {
public:
    class TraceClass;

    // As Windows numbers them.
    static const unsigned long priorityClassIdle = 0x40;
    static const unsigned long priorityClassBelowNormal = 0x4000;
    static const unsigned long priorityClassNormal = 0x20;
    static const unsigned long priorityClassAboveNormal = 0x8000;
    static const unsigned long priorityClassHigh = 0x80;
    static const unsigned long priorityClassRealtime = 0x100;

    // If either the old class cannot be read or the new one not be set, there is no guard.
    explicit ScopedPriorityClass(unsigned long priority_class);
    ~ScopedPriorityClass() noexcept(false);
    ScopedPriorityClass(const ScopedPriorityClass&) = default;
    ScopedPriorityClass& operator=(const ScopedPriorityClass&) = default;

    unsigned long old_priority_class() const { return old_priority_class_; }

    // Not undone by anybody.
    static void set_process_priority_class(unsigned long priority_class);
    static unsigned long get_process_priority_class();

    // "Idle", "BelowNormal", "Normal", "AboveNormal", "High" or "Realtime"; else as for threads.
    static const char* process_priority_class_as_string(unsigned long priority_class);
    static unsigned long process_priority_class_from_string(const char* text, unsigned length);

private:
    unsigned long old_priority_class_;
};

// Prints a class's label; "##UNKNOWN(7)##" where it has none.
class TARVCORE_API ScopedPriorityClass::TraceClass
    : public streamers::Streamable<ScopedPriorityClass::TraceClass> {
public:
    // Any number.
    explicit TraceClass(unsigned long priority_class) : priority_class_(priority_class) {}

    void write_trace(std::ostream& os) const;

private:
    unsigned long priority_class_;
};

}  // namespace tarvcore
