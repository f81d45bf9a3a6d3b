// Faults to catch: zeros of the fraction cut too far or not at all; fields without their leading
// zeros; a text that does not come back; width applied to a part.

#include "tarvcore/abs_rel_time.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <iomanip>
#include <random>
#include <sstream>

#include "tests/support/allocations.h"
#include "tests/support/trials.h"

namespace {

using tarvcore::AbsoluteTime;

TEST(AbsoluteTimeText, Examples) {
    const struct {
        AbsoluteTime time;
        const char* plain;
        const char* iso;
    } rows[] = {
        {AbsoluteTime::zero, "1970-01-01 00:00:00.0", "1970-01-01T00:00:00.0Z"},
        {AbsoluteTime::from_nsec(1), "1970-01-01 00:00:00.000000001",
         "1970-01-01T00:00:00.000000001Z"},
        {AbsoluteTime::from_nsec(-1), "1969-12-31 23:59:59.999999999",
         "1969-12-31T23:59:59.999999999Z"},
        {AbsoluteTime::from_nsec(1'405'516'980'500'000'000), "2014-07-16 13:23:00.5",
         "2014-07-16T13:23:00.5Z"},
        {AbsoluteTime::from_nsec(100'010'000), "1970-01-01 00:00:00.10001",
         "1970-01-01T00:00:00.10001Z"},
        {AbsoluteTime::min_time, "1677-09-21 00:12:43.145224192", "1677-09-21T00:12:43.145224192Z"},
        {AbsoluteTime::max_time, "2262-04-11 23:47:16.854775806", "2262-04-11T23:47:16.854775806Z"},
        {AbsoluteTime::infinite, "##INFINITE##", "9999-12-31T23:59:59.999999999Z"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.time.as_string(), row.plain);
        EXPECT_EQ(row.time.as_iso8601_string(), row.iso);
        EXPECT_EQ(AbsoluteTime::from_string(row.plain), row.time);
        EXPECT_EQ(AbsoluteTime::from_string(row.iso), row.time);
    }
}

TEST(AbsoluteTimeText, AgreesWithPrintfAndComesBack) {
    std::mt19937_64 random(1970);
    for (unsigned i = tarv_test::trials(20'000); i != 0; --i) {
        auto time = AbsoluteTime::from_nsec(static_cast<std::int64_t>(random()));
        std::int64_t unit = 1;
        for (auto digits = random() % 10; digits != 0; --digits)
            unit *= 10;
        time.set_nsec(time.as_nsec() / unit * unit);  // fractions of all lengths

        const auto fields = time.as_components();
        char text[40];
        std::snprintf(text, sizeof text, "%04d-%02u-%02u %02u:%02u:%02u.%09u", fields.year(),
                      fields.month(), fields.day(), fields.hour(), fields.minute(), fields.second(),
                      static_cast<unsigned>(fields.nanosecond()));
        std::string expected(text);
        while (expected.ends_with('0') && !expected.ends_with(".0"))
            expected.pop_back();
        ASSERT_EQ(time.as_string(), expected);
        expected[10] = 'T';
        ASSERT_EQ(time.as_iso8601_string(), expected + 'Z');
        ASSERT_EQ(AbsoluteTime::from_string(expected), time);
    }
}

TEST(AbsoluteTimeText, StreamsAsOneItem) {
    std::ostringstream os;
    os << std::setfill('.') << std::setw(23) << AbsoluteTime::zero << '|' << std::left
       << std::setw(14) << AbsoluteTime::infinite << '|' << AbsoluteTime::zero;
    EXPECT_EQ(os.str(), "..1970-01-01 00:00:00.0|##INFINITE##..|1970-01-01 00:00:00.0");

    tarv_test::AllocationWatch watch;
    (void)AbsoluteTime::zero.as_iso8601_string();
    EXPECT_EQ(watch.allocations(), 1);
}

}  // namespace
