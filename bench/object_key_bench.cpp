#include "tarvcore/object_key.h"

#include <boost/flyweight.hpp>

#include <algorithm>
#include <atomic>
#include <random>
#include <string>
#include <thread>
#include <unordered_set>
#include <vector>

#include "bench/support/row.h"
#include "bench/topics.h"
#include "tarvcore/string_key.h"
#include "tarvcore/uuid_key.h"
//
#include <windows.h>

namespace tarv_bench {
namespace {

using namespace tarvcore;
using Flyweight = boost::flyweight<std::string>;

// What users write who intern nothing: no handle, and nothing is ever taken out.
template <class Value>
class LockedSet {
public:
    LockedSet() { InitializeCriticalSection(&lock_); }
    ~LockedSet() { DeleteCriticalSection(&lock_); }
    LockedSet(const LockedSet&) = delete;
    LockedSet& operator=(const LockedSet&) = delete;

    const Value* operator()(const Value& value) {
        EnterCriticalSection(&lock_);
        const Value* const result = &*set_.insert(value).first;
        LeaveCriticalSection(&lock_);
        return result;
    }

private:
    CRITICAL_SECTION lock_;
    std::unordered_set<Value> set_;
};

StringKey make_key(const std::string& text) {
    return StringKey(text.data(), text.size());
}
Flyweight make_flyweight(const std::string& text) {
    return Flyweight(text);
}

// Texts as they are interned: names of some twenty characters.
std::vector<std::string> names(unsigned count) {
    std::vector<std::string> result;
    for (unsigned i = 0; i < count; ++i)
        result.push_back("account/" + std::to_string(i * 2'654'435'761u) + "/name");
    std::shuffle(result.begin(), result.end(), std::mt19937(72));
    return result;
}

// Makes a handle of each text, while another one keeps it.
template <unsigned count, auto make>
void existing(benchmark::State& state) {
    const std::vector<std::string> texts = names(count);
    std::vector<decltype(make(texts[0]))> kept;
    for (const std::string& text : texts)
        kept.push_back(make(text));
    measure_each(state, texts, [](const std::string& text) { keep(make(text)); });
}

template <unsigned count>
void existing_in_set(benchmark::State& state) {
    const std::vector<std::string> texts = names(count);
    LockedSet<std::string> set;
    measure_each(state, texts, [&](const std::string& text) { keep(set(text)); });
}

// A second thread that works whenever the first one does.
template <class Work>
class Helper {
public:
    explicit Helper(Work& shared) : work_(shared), thread_([this] { run(); }) {}
    ~Helper() {
        turn_ = stop;
        thread_.join();
    }
    Helper(const Helper&) = delete;
    Helper& operator=(const Helper&) = delete;

    void work_together() {
        turn_ = work;
        work_(0);
        while (turn_ == work) {
        }
    }

private:
    enum Turn { rest, work, stop };

    void run() {
        for (;;) {
            const Turn turn = turn_;
            if (turn == stop) return;
            if (turn == rest) continue;
            work_(1);
            turn_ = rest;
        }
    }

    Work& work_;
    std::atomic<Turn> turn_ = rest;
    std::thread thread_;
};

template <class Make>
void measure_two_threads(benchmark::State& state, Make make) {
    constexpr unsigned rounds = 50;
    // In an order of its own for each thread; else one would follow in the other's steps.
    std::vector<std::string> texts[] = {names(64), names(64)};
    std::reverse(texts[1].begin(), texts[1].end());
    const auto take_all = [&](unsigned thread) {
        for (unsigned i = 0; i < rounds; ++i)
            for (const std::string& text : texts[thread])
                keep(make(text));
    };
    Helper helper(take_all);
    measure(
        state, [&] { helper.work_together(); }, 2 * rounds * texts[0].size());
}

template <auto make>
void two_threads(benchmark::State& state) {
    std::vector<decltype(make(std::string()))> kept;
    for (const std::string& text : names(64))
        kept.push_back(make(text));
    measure_two_threads(state, make);
}

void two_threads_in_set(benchmark::State& state) {
    LockedSet<std::string> set;
    measure_two_threads(state, [&](const std::string& text) { return set(text); });
}

template <auto make>
void passing(benchmark::State& state) {
    measure_each(state, names(64), [](const std::string& text) { keep(make(text)); });
}

std::vector<Uuid> random_uuids(unsigned count) {
    std::vector<Uuid> result;
    for (unsigned i = 0; i < count; ++i)
        result.push_back(Uuid::create_random());
    return result;
}

void existing_uuid(benchmark::State& state) {
    const std::vector<Uuid> uuids = random_uuids(64);
    const std::vector<UuidKey> kept(uuids.begin(), uuids.end());
    measure_each(state, uuids, [](const Uuid& uuid) { keep(UuidKey(uuid)); });
}

void existing_uuid_in_set(benchmark::State& state) {
    LockedSet<Uuid> set;
    measure_each(state, random_uuids(64), [&](const Uuid& uuid) { keep(set(uuid)); });
}

}  // namespace

void add_object_key_rows() {
    add_row("key: of one of 64 texts", "0.67 x of boost::flyweight",
            {{"StringKey", existing<64, make_key>},
             {"boost::flyweight", existing<64, make_flyweight>},
             {"a set and a lock", existing_in_set<64>}});
    add_row("key: of one of 100,000 texts", "1 x of boost::flyweight",
            {{"StringKey", existing<100'000, make_key>},
             {"boost::flyweight", existing<100'000, make_flyweight>},
             {"a set and a lock", existing_in_set<100'000>}});
    add_row("key: of one of 64 texts, two threads", "0.67 x of boost::flyweight",
            {{"StringKey", two_threads<make_key>},
             {"boost::flyweight", two_threads<make_flyweight>},
             {"a set and a lock", two_threads_in_set}});
    add_row("key: of a new text, dropped", "300 ns",
            {{"StringKey", passing<make_key>}, {"boost::flyweight", passing<make_flyweight>}});
    add_row("key: of one of 64 identifiers", "75 ns",
            {{"UuidKey", existing_uuid}, {"a set and a lock", existing_uuid_in_set}});
}

}  // namespace tarv_bench
