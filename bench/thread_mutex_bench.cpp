#include "tarvcore/thread_mutex.h"

#include <mutex>

#include "bench/support/row.h"
#include "bench/topics.h"
//
#include <windows.h>

namespace tarv_bench {

using namespace tarvcore;

void add_thread_mutex_rows() {
    add_row("mutex: acquire, release", "1.05 x of CRITICAL_SECTION",
            {{"ThreadMutex",
              [](benchmark::State& state) {
                  ThreadMutex mutex;
                  measure(state, [&] {
                      mutex.acquire();
                      mutex.release();
                  });
              }},
             {"CRITICAL_SECTION",
              [](benchmark::State& state) {
                  CRITICAL_SECTION section;
                  InitializeCriticalSection(&section);
                  measure(state, [&] {
                      EnterCriticalSection(&section);
                      LeaveCriticalSection(&section);
                  });
                  DeleteCriticalSection(&section);
              }},
             {"std::mutex", [](benchmark::State& state) {
                  std::mutex mutex;
                  measure(state, [&] {
                      mutex.lock();
                      mutex.unlock();
                  });
              }}});
}

}  // namespace tarv_bench
