#include "tarvcore/simple_date_time.h"

#include <absl/time/time.h>
#include <date/date.h>

#include <chrono>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "bench/support/instants.h"
#include "bench/support/row.h"
#include "bench/topics.h"

namespace tarv_bench {
namespace {

using namespace tarvcore;

// Instants, each with an offset in minutes other than 0.
std::vector<SimpleDateTime> random_date_times() {
    std::vector<SimpleDateTime> times;
    int offset = -720;
    for (const std::int64_t instant : random_instants())
        times.emplace_back(AbsoluteTime::from_nsec(instant), offset += 11);
    return times;
}

std::string our_text(const SimpleDateTime& time) {
    return time.as_string();
}

// `is_local`: takes the digits for local time, as peers do, in place of UTC.
template <class Parse>
void parse(benchmark::State& state, bool is_local, Parse parse) {
    std::vector<std::string> texts;
    for (const SimpleDateTime& time : random_date_times()) {
        texts.push_back(our_text(time));
        texts.back()[10] = 'T';
        const RelativeTime offset = time.timezone_offset_as_relative_time();
        const AbsoluteTime instant = is_local ? time.utc() - offset : time.utc();
        require(parse(texts.back()) == instant.as_nsec(), texts.back().c_str());
    }
    measure_each(state, texts, [&](const std::string& text) { keep(parse(text)); });
}

template <class Print>
void print(benchmark::State& state, Print print) {
    const auto times = random_date_times();
    for (const SimpleDateTime& time : times)
        require(print(time) == our_text(time), our_text(time).c_str());
    measure_each(state, times, [&](const SimpleDateTime& time) { keep(print(time)); });
}

}  // namespace

void add_simple_date_time_rows() {
    add_row("date-time: parse with offset", "0.05 x",
            {{"SimpleDateTime",
              [](auto& state) {
                  parse(state, false, [](const std::string& text) {
                      SimpleDateTime time;
                      const auto error =
                          SimpleDateTime::from_string_nothrow(text.data(), text.size(), &time);
                      return error ? 0 : time.utc().as_nsec();
                  });
              }},
             {"date",
              [](auto& state) {
                  parse(state, true, [](const std::string& text) {
                      std::istringstream stream(text);
                      date::sys_time<std::chrono::nanoseconds> time;
                      stream >> date::parse("%FT%T%Ez", time);
                      return stream ? std::int64_t{time.time_since_epoch().count()} : 0;
                  });
              }},
             {"Abseil", [](auto& state) {
                  parse(state, true, [](const std::string& text) {
                      absl::Time time;
                      const bool good = absl::ParseTime(absl::RFC3339_full, text, &time, nullptr);
                      return good ? absl::ToUnixNanos(time) : 0;
                  });
              }}});

    add_row("date-time: print with offset", "0.35 x",
            {{"SimpleDateTime", [](auto& state) { print(state, our_text); }},
             {"snprintf",
              [](auto& state) {
                  print(state, [](const SimpleDateTime& time) {
                      const AbsoluteTime::Components fields = time.utc().as_components();
                      const int offset = time.timezone_offset();
                      const int magnitude = offset < 0 ? -offset : offset;
                      char text[64];
                      std::snprintf(text, sizeof text,
                                    "%04d-%02d-%02d %02d:%02d:%02d.%09d%c%02d:%02d", fields.year(),
                                    fields.month(), fields.day(), fields.hour(), fields.minute(),
                                    fields.second(), static_cast<int>(fields.nanosecond()),
                                    offset < 0 ? '-' : '+', magnitude / 60, magnitude % 60);
                      return std::string(text);
                  });
              }},
             {"Abseil", [](auto& state) {
                  print(state, [](const SimpleDateTime& time) {
                      return absl::FormatTime("%Y-%m-%d %H:%M:%E9S%Ez",
                                              absl::FromUnixNanos(time.utc().as_nsec()) -
                                                  absl::Minutes(time.timezone_offset()),
                                              absl::FixedTimeZone(time.timezone_offset() * 60));
                  });
              }}});
}

}  // namespace tarv_bench
