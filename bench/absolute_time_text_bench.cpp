#define BOOST_DATE_TIME_POSIX_TIME_STD_CONFIG  // nanoseconds

#include <absl/time/time.h>
#include <date/date.h>
#include <fmt/compile.h>
#include <boost/date_time/posix_time/posix_time.hpp>

#include <chrono>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "bench/peers/fixed_offset_parser.h"
#include "bench/support/instants.h"
#include "bench/support/row.h"
#include "bench/topics.h"
#include "tarvcore/abs_rel_time.h"

namespace tarv_bench {
namespace {

using namespace tarvcore;

using SysTime = date::sys_time<std::chrono::nanoseconds>;

SysTime sys_time(std::int64_t count) {
    return SysTime(std::chrono::nanoseconds(count));
}

std::string our_text(std::int64_t count) {
    return AbsoluteTime::from_nsec(count).as_iso8601_string();
}

template <class Parse>
void parse(benchmark::State& state, Parse parse) {
    std::vector<std::string> texts;
    for (const std::int64_t instant : random_instants()) {
        texts.push_back(our_text(instant));
        require(parse(texts.back()) == instant, texts.back().c_str());
    }
    measure_each(state, texts, [&](const std::string& text) { keep(parse(text)); });
}

template <class Print>
void print(benchmark::State& state, Print print) {
    const auto instants = random_instants();
    for (const std::int64_t instant : instants)
        require(print(instant) == our_text(instant), our_text(instant).c_str());
    measure_each(state, instants, [&](std::int64_t instant) { keep(print(instant)); });
}

struct Fields {
    explicit Fields(std::int64_t count)
        : day(date::floor<date::days>(sys_time(count))), date(day), time(sys_time(count) - day) {}

    date::sys_days day;
    date::year_month_day date;
    date::hh_mm_ss<std::chrono::nanoseconds> time;
};

template <class Format>
auto format_fields(std::int64_t count, Format format) {
    const Fields fields(count);
    return format(static_cast<int>(fields.date.year()), static_cast<unsigned>(fields.date.month()),
                  static_cast<unsigned>(fields.date.day()),
                  static_cast<int>(fields.time.hours().count()),
                  static_cast<int>(fields.time.minutes().count()),
                  static_cast<int>(fields.time.seconds().count()),
                  static_cast<int>(fields.time.subseconds().count()));
}

}  // namespace

void add_absolute_time_text_rows() {
    add_row("time: parse ISO 8601", "1.5 x of a fixed-offset parser",
            {{"AbsoluteTime",
              [](auto& state) {
                  parse(state, [](const std::string& text) {
                      AbsoluteTime time;
                      return AbsoluteTime::from_string_nothrow(text, &time) ? 0 : time.as_nsec();
                  });
              }},
             {"a fixed-offset parser",
              [](auto& state) {
                  parse(state, [](const std::string& text) {
                      std::int64_t count = 0;
                      return parse_fixed_offset(text.data(), text.size(), &count) ? count : 0;
                  });
              }},
             {"date",
              [](auto& state) {
                  parse(state, [](const std::string& text) {
                      std::istringstream stream(text);
                      SysTime time;
                      stream >> date::parse("%FT%TZ", time);
                      return stream ? std::int64_t{time.time_since_epoch().count()} : 0;
                  });
              }},
             {"Abseil",
              [](auto& state) {
                  parse(state, [](const std::string& text) {
                      absl::Time time;
                      const bool good = absl::ParseTime(absl::RFC3339_full, text, &time, nullptr);
                      return good ? absl::ToUnixNanos(time) : 0;
                  });
              }},
             {"Boost", [](auto& state) {
                  parse(state, [](const std::string& text) {
                      using namespace boost::posix_time;
                      static const ptime epoch(boost::gregorian::date(1970, 1, 1));
                      // It knows no "Z".
                      const std::string plain(text, 0, text.size() - 1);
                      const ptime time = from_iso_extended_string(plain);
                      return std::int64_t{(time - epoch).total_nanoseconds()};
                  });
              }}});

    add_row("time: print ISO 8601", "120 ns",
            {{"AbsoluteTime", [](auto& state) { print(state, our_text); }},
             {"fmt, compiled",
              [](auto& state) {
                  print(state, [](std::int64_t count) {
                      return format_fields(count, [](auto... fields) {
                          return fmt::format(
                              FMT_COMPILE("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}.{:09}Z"), fields...);
                      });
                  });
              }},
             {"snprintf",
              [](auto& state) {
                  print(state, [](std::int64_t count) {
                      return format_fields(count, [](auto... fields) {
                          char text[64];
                          std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02d.%09dZ",
                                        fields...);
                          return std::string(text);
                      });
                  });
              }},
             {"Abseil",
              [](auto& state) {
                  print(state, [](std::int64_t count) {
                      return absl::FormatTime("%Y-%m-%dT%H:%M:%E9SZ", absl::FromUnixNanos(count),
                                              absl::UTCTimeZone());
                  });
              }},
             {"date", [](auto& state) {
                  print(state,
                        [](std::int64_t count) { return date::format("%FT%TZ", sys_time(count)); });
              }}});
}

}  // namespace tarv_bench
