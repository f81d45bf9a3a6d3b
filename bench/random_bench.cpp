#include "tarvcore/random.h"

#include <boost/random/mersenne_twister.hpp>

#include <cstring>
#include <random>
#include <vector>

#include "bench/support/row.h"
#include "bench/topics.h"
//
#include <windows.h>

namespace tarv_bench {
namespace {

using namespace tarvcore;

// What users write who have no generator for several threads.
template <class Generator>
struct Locked {
    Locked() { InitializeCriticalSection(&lock); }
    ~Locked() { DeleteCriticalSection(&lock); }
    std::uint32_t operator()() {
        EnterCriticalSection(&lock);
        const std::uint32_t number = generator();
        LeaveCriticalSection(&lock);
        return number;
    }

    CRITICAL_SECTION lock;
    Generator generator;
};

template <class Generator>
void draw_locked(benchmark::State& state) {
    Locked<Generator> generator;
    measure(state, [&] { keep(generator()); });
}

template <class Generator>
void fill(benchmark::State& state) {
    Generator generator;
    std::vector<std::uint32_t> buffer(16 * 1024);
    measure(state, [&] {
        for (std::uint32_t& word : buffer)
            word = generator();
        keep(buffer);
    });
}

}  // namespace

void add_random_rows() {
    add_row("random: one number of 32 bits", "18 ns",
            {{"random_uint32",
              [](benchmark::State& state) { measure(state, [] { keep(random_uint32()); }); }},
             {"std::mt19937, locked", draw_locked<std::mt19937>},
             {"boost::mt19937, locked", draw_locked<boost::mt19937>}});
    add_row("random: fill 64 KiB", "9000 ns",
            {{"random_fill",
              [](benchmark::State& state) {
                  std::vector<char> buffer(64 * 1024);
                  measure(state, [&] {
                      random_fill(buffer.data(), buffer.size());
                      keep(buffer);
                  });
              }},
             {"std::mt19937", fill<std::mt19937>},
             {"boost::mt19937", fill<boost::mt19937>}});
}

}  // namespace tarv_bench
