// Two threads and a lock, an object of the whole process, clocks and numbers.
#include <deque>
#include <iostream>
#include <thread>

#include "ace/Guard_T.h"
#include "tarvcore/tarvcore.h"

using namespace tarvcore;

namespace {

// What one thread hands to another.
class Queue {
public:
    void push(int value) {
        const ACE_Guard<ThreadMutex> guard(lock_);
        values_.push_back(value);
        filled_.signal();
    }

    // False where nothing has come by then.
    bool pop(int& value, const AbsoluteTime& deadline) {
        const ACE_Guard<ThreadMutex> guard(lock_);
        while (values_.empty()) {  // threads may wake without a signal
            if (filled_.wait(deadline) == -1) return false;
        }
        value = values_.front();
        values_.pop_front();
        return true;
    }

private:
    ThreadMutex lock_;
    ThreadCondition filled_{lock_};
    std::deque<int> values_;
};

StaticInstance<Queue> jobs;  // made by the first who asks

}  // namespace

int main() {
    managed_init();
    std::thread worker([] { jobs->push(42); });
    int value = 0;
    const bool came = jobs->pop(value, AbsoluteTime::now() + RelativeTime::seconds(60));
    worker.join();
    std::cout << std::boolalpha << "came: " << came << ", " << value << '\n';

    const TimeProviderQpc clock;
    const RelativeTime start = clock.now();
    const bool again = jobs->pop(value, AbsoluteTime::now() + RelativeTime::milliseconds(20));
    std::cout << "again: " << again << ", waited: " << (clock.now() - start > RelativeTime::zero)
              << '\n';

    bool found = true;
    const std::string text = get_environment_variable("NO_SUCH_VARIABLE", 16, &found);
    std::cout << "found: " << found << ", empty: " << text.empty() << '\n';

    const double chance = random_double();
    std::cout << "a chance: " << (chance >= 0 && chance < 1) << '\n';

    const hardware::CpuInfo cpu;
    std::cout << "SSE2: " << cpu.sse2() << '\n';
    managed_fini();
}
