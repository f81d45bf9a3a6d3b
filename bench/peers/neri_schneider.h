// Days to date and back as published by C. Neri and L. Schneider, "Euclidean affine functions and
// their application to calendar algorithms", Software: Practice and Experience 53 (2023), figures
// 12 and 13.  Days count from 1970-01-01; valid for some 11,700,000 years around it.
#pragma once

#include <cstdint>

namespace tarv_bench::neri_schneider {

struct Date {
    std::int32_t year;
    std::uint32_t month;
    std::uint32_t day;
};

// Shifts into the time after the algorithm's year 0: 82 cycles of 400 years.
constexpr std::uint32_t cycles = 82;
constexpr std::uint32_t day_shift = 719468 + 146097 * cycles;
constexpr std::uint32_t year_shift = 400 * cycles;

constexpr Date date_from_days(std::int32_t days) {
    const std::uint32_t n = static_cast<std::uint32_t>(days) + day_shift;
    // Century.
    const std::uint32_t n1 = 4 * n + 3;
    const std::uint32_t century = n1 / 146097;
    const std::uint32_t day_of_century = n1 % 146097 / 4;
    // Year, beginning in March.
    const std::uint32_t n2 = 4 * day_of_century + 3;
    const std::uint64_t p2 = std::uint64_t{2939745} * n2;
    const auto year_of_century = static_cast<std::uint32_t>(p2 >> 32);
    const std::uint32_t day_of_year = static_cast<std::uint32_t>(p2) / 2939745 / 4;
    const std::uint32_t year = 100 * century + year_of_century;
    // Month and day.
    const std::uint32_t n3 = 2141 * day_of_year + 197913;
    const std::uint32_t month = n3 >> 16;
    const std::uint32_t day = (n3 & 0xFFFF) / 2141;
    // The year from January on.
    const bool next_year = day_of_year >= 306;
    return {static_cast<std::int32_t>(year - year_shift + next_year),
            next_year ? month - 12 : month, day + 1};
}

constexpr std::int32_t days_from_date(const Date& date) {
    const bool last_year = date.month <= 2;
    const std::uint32_t year = static_cast<std::uint32_t>(date.year) + year_shift - last_year;
    const std::uint32_t month = last_year ? date.month + 12 : date.month;
    const std::uint32_t century = year / 100;
    const std::uint32_t year_days = 1461 * year / 4 - century + century / 4;
    const std::uint32_t month_days = (979 * month - 2919) / 32;
    return static_cast<std::int32_t>(year_days + month_days + date.day - 1 - day_shift);
}

static_assert(days_from_date({1970, 1, 1}) == 0 && days_from_date({2000, 3, 1}) == 11017);
static_assert(date_from_days(11016).day == 29 && date_from_days(-1).year == 1969);

}  // namespace tarv_bench::neri_schneider
