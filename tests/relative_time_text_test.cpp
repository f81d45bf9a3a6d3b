// Faults to catch: a form too early or too late by one; zeros of the fraction cut too far or not at
// all; fields padded that are not, or the other way round; a sign lost or overflown; a text that
// does not come back; width applied to a part.

#include <gtest/gtest.h>

#include <cstdio>
#include <iomanip>
#include <limits>
#include <random>
#include <sstream>

#include "tarvcore/abs_rel_time.h"
#include "tests/support/allocations.h"
#include "tests/support/trials.h"

namespace {

using tarvcore::RelativeTime;

constexpr std::int64_t min_count = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t max_count = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t s = 1'000'000'000;

std::string text_of(std::int64_t count) {
    return RelativeTime::nanoseconds(count).as_string();
}

// The forms one after the other, as printf prints them.
std::string printed(std::int64_t count) {
    const auto magnitude = count < 0 ? 0 - static_cast<std::uint64_t>(count) : count;
    const auto n = static_cast<int>(magnitude % s);
    const auto seconds = static_cast<std::int64_t>(magnitude / s);
    const auto days = static_cast<int>(seconds / 86400);
    const auto hours = static_cast<int>(seconds / 3600);
    const auto minutes = static_cast<int>(seconds / 60);
    const auto second = static_cast<int>(seconds % 60);
    const char* unit = "s";
    char text[64];
    if (seconds == 0 && n <= 1000) {
        std::snprintf(text, sizeof text, "%dn", n);
    } else if (seconds == 0 && n <= 1'000'000) {
        std::snprintf(text, sizeof text, "%d.%03d", n / 1000, n % 1000);
        unit = "us";
    } else if (seconds == 0) {
        std::snprintf(text, sizeof text, "%d.%06d", n / 1'000'000, n % 1'000'000);
        unit = "ms";
    } else if (seconds <= 60) {
        std::snprintf(text, sizeof text, "%d.%09d", static_cast<int>(seconds), n);
    } else if (seconds <= 3600) {
        std::snprintf(text, sizeof text, "%dm %02d.%09d", minutes, second, n);
    } else if (seconds <= 86400) {
        std::snprintf(text, sizeof text, "%dh %dm %d.%09d", hours, minutes % 60, second, n);
    } else {
        std::snprintf(text, sizeof text, "%dd %dh %dm %d.%09d", days, hours % 24, minutes % 60,
                      second, n);
    }
    std::string result = text;
    while (result.ends_with('0') && !result.ends_with(".0"))
        result.pop_back();
    return (count < 0 ? "-" : "") + result + unit;
}

TEST(RelativeTimeText, Forms) {
    const struct {
        std::int64_t count;
        const char* text;
    } rows[] = {
        {0, "0ns"},
        {999, "999ns"},
        {1000, "1000ns"},
        {1001, "1.001us"},
        {1100, "1.1us"},
        {999'999, "999.999us"},
        {1'000'000, "1000.0us"},
        {1'000'001, "1.000001ms"},
        {1'500'000, "1.5ms"},
        {100'000'000, "100.0ms"},
        {s - 1, "999.999999ms"},
        {s, "1.0s"},
        {5 * s, "5.0s"},
        {60 * s, "60.0s"},
        {61 * s - 1, "60.999999999s"},
        {61 * s, "1m 01.0s"},
        {90 * s, "1m 30.0s"},
        {3600 * s, "60m 00.0s"},
        {3601 * s - 1, "60m 00.999999999s"},
        {3601 * s, "1h 0m 1.0s"},
        {86400 * s, "24h 0m 0.0s"},
        {86401 * s - 1, "24h 0m 0.999999999s"},
        {86401 * s, "1d 0h 0m 1.0s"},
        {90061 * s + 250'000'000, "1d 1h 1m 1.25s"},
        {2 * 86400 * s, "2d 0h 0m 0.0s"},
        {1000 * 86400 * s, "1000d 0h 0m 0.0s"},
        {max_count - 1, "106751d 23h 47m 16.854775806s"},
        {max_count, "##INFINITE##"},
        {-1, "-1ns"},
        {-2 * s, "-2.0s"},
        {-max_count, "-106751d 23h 47m 16.854775807s"},
        {min_count, "-106751d 23h 47m 16.854775808s"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(text_of(row.count), row.text);
}

TEST(RelativeTimeText, AgreesWithPrintfAndComesBack) {
    constexpr std::int64_t readable = 106751LL * 86400 * s;
    std::mt19937_64 random(43);
    for (unsigned i = tarv_test::trials(50'000); i != 0; --i) {
        std::int64_t count = static_cast<std::int64_t>(random()) >> random() % 64;
        std::int64_t unit = 1;
        for (auto digits = random() % 10; digits != 0; --digits)
            unit *= 10;
        if (random() % 2) count = count / unit * unit;  // fractions of all lengths
        if (count == max_count) continue;

        const std::string text = text_of(count);
        ASSERT_EQ(text, printed(count));
        if (count > -readable && count < readable) {
            ASSERT_EQ(RelativeTime::from_string(text).as_nsec(), count) << text;
        } else {
            ASSERT_TRUE(RelativeTime::from_string_nothrow(text, nullptr)) << text;
        }
    }
}

TEST(RelativeTimeText, StreamsAsOneItem) {
    std::ostringstream os;
    os << std::setfill('.') << std::setw(8) << RelativeTime::seconds(-2) << '|' << std::left
       << std::setw(14) << RelativeTime::infinite << '|' << RelativeTime::zero;
    EXPECT_EQ(os.str(), "...-2.0s|##INFINITE##..|0ns");

    tarv_test::AllocationWatch watch;
    (void)RelativeTime::seconds(60).as_string();
    EXPECT_EQ(watch.allocations(), 0);
    (void)RelativeTime::min_time.as_string();
    EXPECT_EQ(watch.allocations(), 1);
}

}  // namespace
