// A thread to do things to.
#pragma once

#include <ace/OS_NS_Thread.h>

#include <future>
#include <thread>

#include <windows.h>

namespace tarv_test {

// Does nothing until the object's end.
class OtherThread {
public:
    OtherThread() {
        std::promise<DWORD> started;
        thread_ = std::thread([this, &started] {
            started.set_value(GetCurrentThreadId());
            end_.get_future().wait();
        });
        const DWORD id = started.get_future().get();
        id_ = ACE_Thread_ID(id, OpenThread(THREAD_ALL_ACCESS, FALSE, id));
    }
    ~OtherThread() {
        end_.set_value();
        thread_.join();
        CloseHandle(id_.handle());
    }
    OtherThread(const OtherThread&) = delete;
    OtherThread& operator=(const OtherThread&) = delete;

    const ACE_Thread_ID& id() const { return id_; }

private:
    std::promise<void> end_;
    std::thread thread_;
    ACE_Thread_ID id_;
};

}  // namespace tarv_test
