#include <absl/time/time.h>

#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "bench/support/row.h"
#include "bench/topics.h"
#include "tarvcore/abs_rel_time.h"

namespace tarv_bench {
namespace {

using namespace tarvcore;

// Nanoseconds of all magnitudes from a minute to 13 days, with nine decimals: the same for all.
// Their texts are too long to do without an allocation.
std::vector<std::int64_t> random_durations() {
    std::mt19937_64 random(43);
    std::vector<std::int64_t> durations;
    while (durations.size() != 128) {
        const auto count = static_cast<std::int64_t>(random() >> (14 + random() % 20));
        if (count >= 61'000'000'000 && count % 10 != 0) durations.push_back(count);
    }
    return durations;
}

template <class Print>
void print(benchmark::State& state, Print print) {
    measure_each(state, random_durations(), [&](std::int64_t count) { keep(print(count)); });
}

std::string abseil_text(std::int64_t count) {
    return absl::FormatDuration(absl::Nanoseconds(count));
}

// On Abseil's texts, such as 26h3m4.123456789s.
template <class Parse>
void parse(benchmark::State& state, Parse parse) {
    std::vector<std::string> texts;
    for (const std::int64_t count : random_durations()) {
        texts.push_back(abseil_text(count));
        require(parse(texts.back()) == count, texts.back().c_str());
    }
    measure_each(state, texts, [&](const std::string& text) { keep(parse(text)); });
}

}  // namespace

void add_relative_time_text_rows() {
    add_row("duration: parse", "60 ns",
            {{"RelativeTime",
              [](auto& state) {
                  parse(state, [](const std::string& text) {
                      RelativeTime time;
                      return RelativeTime::from_string_nothrow(text, &time) ? 0 : time.as_nsec();
                  });
              }},
             {"Abseil", [](auto& state) {
                  parse(state, [](const std::string& text) {
                      absl::Duration time;
                      return absl::ParseDuration(text, &time) ? absl::ToInt64Nanoseconds(time) : 0;
                  });
              }}});

    add_row("duration: print", "120 ns",
            {{"RelativeTime",
              [](auto& state) {
                  print(state, [](std::int64_t count) {
                      return RelativeTime::nanoseconds(count).as_string();
                  });
              }},
             {"Abseil", [](auto& state) { print(state, abseil_text); }},
             {"snprintf", [](auto& state) {
                  print(state, [](std::int64_t count) {
                      const std::lldiv_t seconds = std::lldiv(count, 1'000'000'000);
                      const auto all = static_cast<int>(seconds.quot);
                      char text[64];
                      std::snprintf(text, sizeof text, "%dd %dh %dm %d.%09ds", all / 86400,
                                    all / 3600 % 24, all / 60 % 60, all % 60,
                                    static_cast<int>(seconds.rem));
                      return std::string(text);
                  });
              }}});
}

}  // namespace tarv_bench
