#include "tarvcore/thread_condition.h"

#include "tarvcore/impl/ace_timeout.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/thread_condition.cpp#1 $");

namespace tarvcore {

ThreadCondition::ThreadCondition(ThreadMutex& mutex) : mutex_(mutex) {
    ACE_OS::cond_init(&condition_, static_cast<short>(USYNC_THREAD));
}

ThreadCondition::~ThreadCondition() {
    ACE_OS::cond_destroy(&condition_);
}

int ThreadCondition::wait() {
    return ACE_OS::cond_wait(&condition_, mutex_.native());
}

int ThreadCondition::wait(const ACE_Time_Value* deadline) {
    if (deadline == nullptr) return wait();
    // Some systems' waits store what is left of the time.
    ACE_Time_Value until = *deadline;
    return ACE_OS::cond_timedwait(&condition_, mutex_.native(), &until);
}

int ThreadCondition::wait(const AbsoluteTime& deadline) {
    return wait(deadline.as_ace_timeout());
}

int ThreadCondition::signal() {
    return ACE_OS::cond_signal(&condition_);
}

int ThreadCondition::broadcast() {
    return ACE_OS::cond_broadcast(&condition_);
}

}  // namespace tarvcore
