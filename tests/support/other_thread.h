// A thread to do things to.
#pragma once

#include <ace/OS_NS_Thread.h>

#include <future>
#include <thread>

#include <pthread.h>
#include <windows.h>

namespace tarv_test {

// Does nothing until the object's end.
class OtherThread {
public:
    ~OtherThread() {
        end_.set_value();
        thread_.join();
    }

    ACE_Thread_ID id() {
        void* const handle = pthread_gethandle(thread_.native_handle());
        return {GetThreadId(handle), handle};
    }

private:
    std::promise<void> end_;
    std::thread thread_{[this] { end_.get_future().wait(); }};
};

}  // namespace tarv_test
