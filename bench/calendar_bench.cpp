#include <absl/time/civil_time.h>
#include <absl/time/time.h>
#include <date/date.h>

#include <chrono>
#include <vector>

#include "bench/peers/neri_schneider.h"
#include "bench/support/instants.h"
#include "bench/support/row.h"
#include "bench/topics.h"
#include "tarvcore/abs_rel_time.h"

namespace tarv_bench {
namespace {

using namespace tarvcore;
using Components = AbsoluteTime::Components;

constexpr int jdn_of_epoch = 2440588;

std::vector<int> random_days(int first) {
    std::vector<int> days;
    for (const std::int64_t instant : random_instants()) {
        const auto day = date::floor<date::days>(
            date::sys_time<std::chrono::nanoseconds>(std::chrono::nanoseconds(instant)));
        days.push_back(first + day.time_since_epoch().count());
    }
    return days;
}

Components our_date(int day) {
    return Components(day);
}
int our_days(const Components& date) {
    return date.julian_day();
}

date::year_month_day hinnant_date(int day) {
    return date::sys_days(date::days(day));
}
int hinnant_days(const date::year_month_day& date) {
    return date::sys_days(date).time_since_epoch().count();
}

// Converts random days, or their dates back, with a pair of functions that undo one another.
template <class ToDate, class ToDays>
void to_date(benchmark::State& state, int epoch, ToDate to_date, ToDays to_days) {
    const std::vector<int> days = random_days(epoch);
    for (const int day : days)
        require(to_days(to_date(day)) == day, "a date's days");
    measure_each(state, days, [&](int day) { keep(to_date(day)); });
}
template <class ToDate, class ToDays>
void to_days(benchmark::State& state, int epoch, ToDate to_date, ToDays to_days) {
    std::vector<decltype(to_date(0))> dates;
    for (const int day : random_days(epoch))
        dates.push_back(to_date(day));
    measure_each(state, dates, [&](const auto& date) { keep(to_days(date)); });
}

}  // namespace

void add_calendar_rows() {
    add_row("calendar: days to date", "1.3 x of Neri and Schneider",
            {{"Components", [](auto& state) { to_date(state, jdn_of_epoch, our_date, our_days); }},
             {"Neri and Schneider",
              [](auto& state) {
                  using namespace neri_schneider;
                  to_date(state, 0, date_from_days, days_from_date);
              }},
             {"date", [](auto& state) { to_date(state, 0, hinnant_date, hinnant_days); }}});

    add_row("calendar: date to days", "1.3 x of Neri and Schneider",
            {{"Components", [](auto& state) { to_days(state, jdn_of_epoch, our_date, our_days); }},
             {"Neri and Schneider",
              [](auto& state) {
                  using namespace neri_schneider;
                  to_days(state, 0, date_from_days, days_from_date);
              }},
             {"date", [](auto& state) { to_days(state, 0, hinnant_date, hinnant_days); }}});

    add_row("calendar: instant to fields", "0.45 x",
            {{"AbsoluteTime",
              [](auto& state) {
                  measure_each(state, random_instants(), [](std::int64_t count) {
                      keep(AbsoluteTime::from_nsec(count).as_components());
                  });
              }},
             {"date",
              [](auto& state) {
                  measure_each(state, random_instants(), [](std::int64_t count) {
                      const date::sys_time<std::chrono::nanoseconds> time{
                          std::chrono::nanoseconds(count)};
                      const auto day = date::floor<date::days>(time);
                      keep(date::year_month_day(day));
                      keep(date::hh_mm_ss<std::chrono::nanoseconds>(time - day));
                  });
              }},
             {"Abseil", [](auto& state) {
                  const absl::TimeZone utc = absl::UTCTimeZone();
                  measure_each(state, random_instants(), [&](std::int64_t count) {
                      keep(utc.At(absl::FromUnixNanos(count)));
                  });
              }}});
}

}  // namespace tarv_bench
