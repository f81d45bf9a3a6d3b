#include "tarvcore/priority.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <ostream>

#include "tarvcore/error_code_constants.h"
#include "tarvcore/error_composer.h"
#include "tarvcore/impl/measured_length.h"
#include "tarvcore/impl/priority_calls.h"
#include "tarvcore/string_util.h"
#include "tarvcore/to_string.h"

#include <windows.h>

TARVCORE_SOURCE_FILE("$Id: //tarvcore/priority.cpp#1 $");

namespace tarvcore {
namespace {

constexpr impl::PriorityCalls system_calls = {
    [](void* thread, long priority) { return SetThreadPriority(thread, priority) != 0; },
    [](void* thread) -> long { return GetThreadPriority(thread); },
    [](unsigned long priority_class) {
        return SetPriorityClass(GetCurrentProcess(), priority_class) != 0;
    },
    [] { return GetPriorityClass(GetCurrentProcess()); },
    [] { return GetLastError(); },
};

template <class Value>
struct LabelRow {
    const char* label;
    Value value;
};

using Thread = ScopedThreadPriority;
using Process = ScopedPriorityClass;

constexpr LabelRow<long> thread_priorities[] = {
    {"Idle", Thread::threadPriorityIdle},
    {"Lowest", Thread::threadPriorityLowest},
    {"BelowNormal", Thread::threadPriorityBelowNormal},
    {"Normal", Thread::threadPriorityNormal},
    {"AboveNormal", Thread::threadPriorityAboveNormal},
    {"Highest", Thread::threadPriorityHighest},
    {"TimeCritical", Thread::threadPriorityTimeCritical},
};

constexpr LabelRow<unsigned long> priority_classes[] = {
    {"Idle", Process::priorityClassIdle},     {"BelowNormal", Process::priorityClassBelowNormal},
    {"Normal", Process::priorityClassNormal}, {"AboveNormal", Process::priorityClassAboveNormal},
    {"High", Process::priorityClassHigh},     {"Realtime", Process::priorityClassRealtime},
};

static_assert(Thread::threadPriorityIdle == THREAD_PRIORITY_IDLE &&
              Thread::threadPriorityLowest == THREAD_PRIORITY_LOWEST &&
              Thread::threadPriorityBelowNormal == THREAD_PRIORITY_BELOW_NORMAL &&
              Thread::threadPriorityNormal == THREAD_PRIORITY_NORMAL &&
              Thread::threadPriorityAboveNormal == THREAD_PRIORITY_ABOVE_NORMAL &&
              Thread::threadPriorityHighest == THREAD_PRIORITY_HIGHEST &&
              Thread::threadPriorityTimeCritical == THREAD_PRIORITY_TIME_CRITICAL);
static_assert(Process::priorityClassIdle == IDLE_PRIORITY_CLASS &&
              Process::priorityClassBelowNormal == BELOW_NORMAL_PRIORITY_CLASS &&
              Process::priorityClassNormal == NORMAL_PRIORITY_CLASS &&
              Process::priorityClassAboveNormal == ABOVE_NORMAL_PRIORITY_CLASS &&
              Process::priorityClassHigh == HIGH_PRIORITY_CLASS &&
              Process::priorityClassRealtime == REALTIME_PRIORITY_CLASS);

// The label of the first row with that value; empty where there is none.
template <class Value, std::size_t count>
const char* label_of(const LabelRow<Value> (&rows)[count], Value value) {
    const auto* const row = std::ranges::find(rows, value, &LabelRow<Value>::value);
    return row != std::end(rows) ? row->label : "";
}

// The first row with that label; null where there is none.
template <class Value, std::size_t count>
const LabelRow<Value>* find_label(const LabelRow<Value> (&rows)[count], const char* text,
                                  unsigned length) {
    const auto* const row = std::ranges::find_if(rows, [=](const LabelRow<Value>& each) {
        return string_equal_nocase_ascii(each.label, impl::up_to_terminator, text, length);
    });
    return row != std::end(rows) ? row : nullptr;
}

template <class Value>
void write_label(std::ostream& os, const char* label, Value value) {
    if (*label != '\0') {
        os << label;
    } else {
        os << "##UNKNOWN(" << value << ")##";
    }
}

}  // namespace

constinit std::atomic<const impl::PriorityCalls*> impl::priority_calls = &system_calls;

const long ScopedThreadPriority::threadPriorityIdle;
const long ScopedThreadPriority::threadPriorityLowest;
const long ScopedThreadPriority::threadPriorityBelowNormal;
const long ScopedThreadPriority::threadPriorityNormal;
const long ScopedThreadPriority::threadPriorityAboveNormal;
const long ScopedThreadPriority::threadPriorityHighest;
const long ScopedThreadPriority::threadPriorityTimeCritical;

const unsigned long ScopedPriorityClass::priorityClassIdle;
const unsigned long ScopedPriorityClass::priorityClassBelowNormal;
const unsigned long ScopedPriorityClass::priorityClassNormal;
const unsigned long ScopedPriorityClass::priorityClassAboveNormal;
const unsigned long ScopedPriorityClass::priorityClassHigh;
const unsigned long ScopedPriorityClass::priorityClassRealtime;

// Several of the messages below name a parameter that they are not given, and one lacks its closing
// parenthesis.  This is meant: logs are searched for these very texts.

ScopedThreadPriority::ScopedThreadPriority(long priority, const ACE_Thread_ID& thread)
    : old_thread_priority_(get_thread_priority(thread)), thread_(thread) {
    set_thread_priority(thread_, priority);
}

ScopedThreadPriority::~ScopedThreadPriority() noexcept(false) {
    set_thread_priority(thread_, old_thread_priority_);
}

void ScopedThreadPriority::set_thread_priority(const ACE_Thread_ID& thread, long priority) {
    const impl::PriorityCalls& calls = *impl::priority_calls;
    if (calls.set_thread_priority(thread.handle(), priority)) return;
    const unsigned long cause = calls.last_error();
    ErrorComposer("SetThreadPriority({@threadHandle}, {@priority}")
        .param("threadId", thread.handle())
        .param("priority", priority)
        .throw_with_nested_winerror(
            error::tarvcore_hardware_threadPriority,
            TARVCORE_LOCATION("tarvcore::ScopedThreadPriority::set_thread_priority()"), cause,
            true);
}

long ScopedThreadPriority::get_thread_priority(const ACE_Thread_ID& thread) {
    const impl::PriorityCalls& calls = *impl::priority_calls;
    const long priority = calls.thread_priority(thread.handle());
    if (priority != THREAD_PRIORITY_ERROR_RETURN) return priority;
    const unsigned long cause = calls.last_error();
    ErrorComposer("GetThreadPriority({@threadHandle})")
        .param("threadHandle", thread.handle())
        .throw_with_nested_winerror(
            error::tarvcore_hardware_threadPriority,
            TARVCORE_LOCATION("tarvcore::ScopedThreadPriority::get_thread_priority()"), cause,
            true);
}

const char* ScopedThreadPriority::thread_priority_as_string(long priority) {
    return label_of(thread_priorities, priority);
}

long ScopedThreadPriority::thread_priority_from_string(const char* text, unsigned length) {
    if (const auto* row = find_label(thread_priorities, text, length)) return row->value;
    ErrorComposer("Unknown thread priority label: '{@label}'")
        .param("label", to_string(text, length))
        .throw_with_nested_errno(
            error::tarvcore_hardware_threadPriority,
            TARVCORE_LOCATION("tarvcore::ScopedThreadPriority::thread_priority_from_string()"),
            EINVAL);
}

void ScopedThreadPriority::TracePriority::write_trace(std::ostream& os) const {
    write_label(os, thread_priority_as_string(priority_), priority_);
}

ScopedPriorityClass::ScopedPriorityClass(unsigned long priority_class)
    : old_priority_class_(get_process_priority_class()) {
    set_process_priority_class(priority_class);
}

ScopedPriorityClass::~ScopedPriorityClass() noexcept(false) {
    set_process_priority_class(old_priority_class_);
}

void ScopedPriorityClass::set_process_priority_class(unsigned long priority_class) {
    const impl::PriorityCalls& calls = *impl::priority_calls;
    if (calls.set_process_priority_class(priority_class)) return;
    const unsigned long cause = calls.last_error();
    ErrorComposer("SetPriorityClass({@processId}, {@priority})")
        .param("processId", GetCurrentProcess())
        .param("priority", priority_class)
        .throw_with_nested_winerror(
            error::tarvcore_hardware_priorityClass,
            TARVCORE_LOCATION("tarvcore::ScopedPriorityClass::set_process_priority_class()"), cause,
            true);
}

unsigned long ScopedPriorityClass::get_process_priority_class() {
    const impl::PriorityCalls& calls = *impl::priority_calls;
    const unsigned long priority_class = calls.process_priority_class();
    if (priority_class != 0) return priority_class;
    const unsigned long cause = calls.last_error();
    ErrorComposer("GetPriorityClass({@processId})")
        .param("processId", GetCurrentProcess())
        .throw_with_nested_winerror(
            error::tarvcore_hardware_priorityClass,
            TARVCORE_LOCATION("tarvcore::ScopedPriorityClass::get_process_priority_class()"), cause,
            true);
}

const char* ScopedPriorityClass::process_priority_class_as_string(unsigned long priority_class) {
    return label_of(priority_classes, priority_class);
}

unsigned long ScopedPriorityClass::process_priority_class_from_string(const char* text,
                                                                      unsigned length) {
    if (const auto* row = find_label(priority_classes, text, length)) return row->value;
    ErrorComposer("Unknown process priority class label: '{@priorityClass}'")
        .param("label", to_string(text, length))
        .throw_with_nested_errno(
            error::tarvcore_hardware_priorityClass,
            TARVCORE_LOCATION(
                "tarvcore::ScopedPriorityClass::process_priority_class_from_string()"),
            EINVAL);
}

void ScopedPriorityClass::TraceClass::write_trace(std::ostream& os) const {
    write_label(os, process_priority_class_as_string(priority_class_), priority_class_);
}

}  // namespace tarvcore
