// Faults to catch: reading beyond the text; a sign, a blank or any other byte taken for a digit;
// the wrong message; fractions of the wrong field, or rounded at the wrong digit; limits off by
// one; an output touched by a failure.  In texts that are written: zeros of the fraction cut too
// far or not at all; fields without their leading zeros; a text that does not come back; width
// applied to a part.

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <iomanip>
#include <random>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "tarvcore/abs_rel_time.h"
#include "tarvcore/error_exception.h"
#include "tests/support/allocations.h"
#include "tests/support/time_texts.h"
#include "tests/support/trials.h"

namespace {

using namespace tarvcore;
using tarv_test::Outcome;
using tarv_test::SlowReader;
using tarv_test::told;

constexpr std::int64_t ns_per_day = 86'400'000'000'000;

// Messages up to the text that was read.
const std::string text_fault = "Invalid UTC time string: ";
const std::string date_fault = "Invalid date in UTC time string: ";
const std::string separator_fault =
    "Invalid date/time separator in UTC time string.  Expecting ' ' or 'T': ";
const std::string time_fault = "Invalid time in UTC time string ";
const std::string end_fault = "Invalid time in UTC time string (unexpected characters after 'Z') ";
const std::string zone_fault =
    "Invalid time in UTC time string (time must be UTC, no timezone offset) ";
const std::string day_fault =
    "Invalid time in UTC time string.  Time must be 00:00:00...24:00:00 (inclusive). ";
const std::string range_fault = "Components of UTC date/time string exceeds date range: ";

// A reader that looks at one character after the other and computes nothing in advance.
class Oracle : public SlowReader {
public:
    explicit Oracle(std::string_view text) : SlowReader(text) {}

    std::int64_t read_all() {
        if (rest_.size() < 13) {
            static const std::regex infinite("inf|##infinite##", std::regex::icase);
            if (std::regex_match(rest_.begin(), rest_.end(), infinite)) return INT64_MAX;
            throw text_fault;
        }
        const bool dashes = rest_[4] == '-' && rest_[7] == '-';
        const int year = number(4, date_fault);
        rest_.remove_prefix(dashes);
        const int month = number(2, date_fault);
        rest_.remove_prefix(dashes);
        const int day = number(2, date_fault);
        if (month < 1 || month > 12 || day < 1 || day > 31) throw date_fault;
        if (!is_next(" Tt")) throw separator_fault;
        rest_.remove_prefix(1);

        read_time();
        if (ns_ > ns_per_day) throw day_fault;
        if (year == 9999 && month == 12 && day == 31 && ns_ == ns_per_day - 1) return INT64_MAX;

        const std::chrono::sys_days first = std::chrono::year(year) / month / 1;
        const auto days = first.time_since_epoch().count() + day - 1;
        // Exact, or far out of range.
        const long double count = static_cast<long double>(ns_per_day) * days + ns_;
        if (count < INT64_MIN || count >= INT64_MAX) throw range_fault;
        return static_cast<std::int64_t>(count);
    }

private:
    int number(int digits, const std::string& fault) {
        int value = 0;
        for (; digits != 0; --digits, rest_.remove_prefix(1)) {
            if (!is_digit()) throw fault;
            value = value * 10 + (rest_[0] - '0');
        }
        return value;
    }

    void read_time() {
        const std::int64_t units[] = {3'600'000'000'000, 60'000'000'000, 1'000'000'000};
        const int limits[] = {24, 59, 60};
        bool colons = false;
        for (int field = 0; field < 3; ++field) {
            const int value = number(2, time_fault);
            if (value > limits[field]) throw time_fault;
            ns_ += value * units[field];
            if (rest_.empty()) return;
            if (field == 0) colons = is_next(":");
            if (colons && field == 1 && !is_next(":.Zz")) throw time_fault;
            if (is_next(".,")) return read_fraction(units[field]);
            if (is_next("Zz")) return read_zone();
            if (is_next("+-")) throw zone_fault;
            if (field == 2 || (colons ? !is_next(":") : !is_digit())) throw time_fault;
            rest_.remove_prefix(colons);
        }
    }

    void read_fraction(std::int64_t unit) {
        bool rounded = false;
        for (rest_.remove_prefix(1); is_digit();) {
            const int value = number(1, time_fault);
            unit /= 10;
            ns_ += value * unit;
            if (unit == 0 && !rounded) {
                ns_ += value >= 5;
                rounded = true;
            }
        }
        if (!rest_.empty()) read_zone();
    }

    void read_zone() {
        if (!is_next("Zz")) throw time_fault;
        if (rest_.size() > 1) throw end_fault;
    }

    std::int64_t ns_ = 0;
};

void check(std::string_view text) {
    const Outcome expected = SlowReader::read<Oracle>(text);
    AbsoluteTime time = AbsoluteTime::from_nsec(42);
    const ErrorInfo::Ptr error = AbsoluteTime::from_string_nothrow(text.data(), text.size(), &time);
    ASSERT_EQ(AbsoluteTime::from_string_nothrow(std::string(text), nullptr).is_null(), !error);
    ASSERT_EQ(time.as_nsec(), expected.fault.empty() ? expected.count : 42) << text;
    ASSERT_EQ(error ? told(*error, "utcTime") : "",
              expected.fault.empty()
                  ? ""
                  : "error.tarvcore.absoluteTime.invalidUtcString\n" + expected.fault + '"' +
                        std::string(text) + "\"\n" + std::string(text) +
                        "\ntarvcore::AbsoluteTime::from_string_nothrow()");
    ASSERT_EQ(error && error->nested() ? error->nested()->code().as_string_view() : "",
              expected.fault == range_fault ? "error.tarvcore.absoluteTime.range" : "");
}

TEST(AbsoluteTimeParser, Accepts) {
    const struct {
        const char* text;
        std::int64_t count;
    } rows[] = {
        {"1970-01-02T10:30:00Z", 124'200'000'000'000},
        {"19700102T103000", 124'200'000'000'000},
        {"1970-01-02t10.5z", 124'200'000'000'000},
        {"19700102 1030,5", 124'230'000'000'000},
        {"1970-01-01 00:00:60", 60'000'000'000},
        {"2024-02-29T24:00:00Z", 1'709'251'200'000'000'000},
        {"2024-02-30T00:00:00Z", 1'709'251'200'000'000'000},
        {"1970-01-01T00:00:00.", 0},
        {"1970-01-01T00:00:00.1234567894999", 123'456'789},
        {"1970-01-01T00:00:00.1234567895Z", 123'456'790},
        {"1970-01-01T00:00.00000000015", 7},  // 6 ns, and a digit that rounds
        {"1970-01-01T00.0000000000010", 3},   // 3.6 ns are worth 3
        {"1970-01-01T00.0000000000009", 1},   // the digit beyond them rounds
        {"1970-01-01T00.00000000000049", 0},  // and no other
        {"1970-01-01T23:59:59.9999999995", ns_per_day},
        {"1677-09-21 00:12:43.145224192", INT64_MIN},
        {"2262-04-11 23:47:16.854775806", INT64_MAX - 1},
        {"9999-12-31T23:59:59.999999999Z", INT64_MAX},
        {"##infinite##", INT64_MAX},
        {"iNF", INT64_MAX},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(AbsoluteTime::from_string(row.text).as_nsec(), row.count) << row.text;
        check(row.text);
    }
}

TEST(AbsoluteTimeParser, Rejects) {
    const struct {
        std::string fault;
        std::vector<const char*> texts;
    } rows[] = {
        {text_fault, {"", "INFI", "2024-01-02"}},
        // 13 characters are a date.
        {date_fault, {"##INFINITE##Z", "2024-00-02T10", "2024-13-02T10", "2024-01-00T10"}},
        // One dash; no digits.
        {date_fault, {"2024-01-32T10", "2024-0102T10:30", " 024-01-02T10", "2024-01-+2T10"}},
        {separator_fault, {"2024-01-02_10:30", "2024-01-0210:30"}},
        {time_fault, {"2024-01-02T1:30", "2024-01-02T25", "2024-01-02T10:60"}},
        {time_fault, {"2024-01-02T10:30:61", "2024-01-02T10:", "2024-01-02T10:30:"}},
        // Colons everywhere or nowhere.
        {time_fault, {"2024-01-02T10:3000", "2024-01-02T1030:00"}},
        // Not this comma, nor this sign; a sign is no digit.
        {time_fault, {"2024-01-02T10:30,5", "2024-01-02T10:30+01:00"}},
        {time_fault, {"2024-01-02T10:30:00.5.5", "2024-01-02T10:30:00.5+01:00"}},
        {time_fault, {"2024-01-02T10:30:00 Z"}},
        {end_fault, {"2024-01-02T10:30:00Zx", "2024-01-02T10:30:00.5ZZ"}},
        {zone_fault, {"2024-01-02T10:30:00+01:00", "2024-01-02T1030-01", "2024-01-02T10+0100"}},
        {day_fault, {"2024-01-02T24:00:00.000000001", "2024-01-02T24:00:01", "2024-01-02T24.1"}},
        {range_fault, {"2262-04-11T23:47:16.854775807Z", "1677-09-21T00:12:43.145224191Z"}},
        {range_fault, {"1677-09-20T24:00:00", "0000-01-01T00", "9999-12-31T24:00"}},
    };
    for (const auto& row : rows) {
        for (const char* text : row.texts) {
            EXPECT_EQ(SlowReader::read<Oracle>(text).fault, row.fault) << text;
            check(text);
        }
    }
    EXPECT_NO_THROW(AbsoluteTime::from_string("2024-01-02T10:30:00Zx", 20));
    EXPECT_THROW(AbsoluteTime::from_string("2024-01-02T10:30:00Zx", 21), ErrorException);
    EXPECT_TRUE(AbsoluteTime::from_string_nothrow(nullptr, 0, nullptr));
}

TEST(AbsoluteTimeParser, DamagedTexts) {
    tarv_test::check_damaged({"2014-07-16T13:23:00.123456789Z", "20140716 132300,5z",
                              "2014-07-16t13:23.9999999999999999999",
                              "20140716T13.99999999999999999999Z", "9999-12-31T23:59:59.999999999Z",
                              "2262-04-11T23:47:16.854775806", "1677-09-21 00:12:43.145224192",
                              "2024-02-30T24:00:00,000z", "20000229 2400", "##INFINITE##", "inf"},
                             check);
}

TEST(AbsoluteTimeParser, AMegabyteOfDigits) {
    const std::string digits(1 << 20, '9');
    check(digits);
    for (const std::string good : {"2014-07-16T13:23:00.", "2014-07-16T13.", "2014-07-16T13:23:"}) {
        check(good + digits);
        check(good + digits + "Z");
    }
}

TEST(AbsoluteTimeParser, LeavesNothingBehindWithoutMemory) {
    AbsoluteTime time;
    tarv_test::fail_each_allocation(
        [&] {
            (void)AbsoluteTime::from_string_nothrow("2262-04-12T00:00:00.000000000Z", 30, &time);
        },
        [&] { EXPECT_EQ(time, AbsoluteTime::zero); });
    tarv_test::AllocationWatch watch;
    EXPECT_TRUE(AbsoluteTime::from_string_nothrow("2014-07-16T13:23:00.1Z", 22, &time).is_null());
    EXPECT_EQ(watch.allocations(), 0);
}

TEST(AbsoluteTimeText, Examples) {
    const struct {
        AbsoluteTime time;
        const char* plain;
        const char* iso;
    } rows[] = {
        {AbsoluteTime::zero, "1970-01-01 00:00:00.0", "1970-01-01T00:00:00.0Z"},
        {AbsoluteTime::from_nsec(100'010'000), "1970-01-01 00:00:00.10001",
         "1970-01-01T00:00:00.10001Z"},
        {AbsoluteTime::min_time, "1677-09-21 00:12:43.145224192", "1677-09-21T00:12:43.145224192Z"},
        {AbsoluteTime::max_time, "2262-04-11 23:47:16.854775806", "2262-04-11T23:47:16.854775806Z"},
        {AbsoluteTime::infinite, "##INFINITE##", "9999-12-31T23:59:59.999999999Z"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.time.as_string(), row.plain);
        EXPECT_EQ(row.time.as_iso8601_string(), row.iso);
    }
}

TEST(AbsoluteTimeText, AgreesWithPrintfAndComesBack) {
    std::mt19937_64 random(1970);
    for (unsigned i = tarv_test::trials(20'000); i != 0; --i) {
        auto time = AbsoluteTime::from_nsec(static_cast<std::int64_t>(random()));
        const auto unit = static_cast<std::int64_t>(std::pow(10, random() % 10));
        time.set_nsec(time.as_nsec() / unit * unit);  // fractions of all lengths

        const auto fields = time.as_components();
        char text[40];
        std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02u:%02u:%02u.%09u", fields.year(),
                      fields.month(), fields.day(), fields.hour(), fields.minute(), fields.second(),
                      static_cast<unsigned>(fields.nanosecond()));
        std::string expected(text);
        while (expected.ends_with('0') && !expected.ends_with(".0"))
            expected.pop_back();
        ASSERT_EQ(time.as_iso8601_string(), expected + 'Z');
        ASSERT_EQ(AbsoluteTime::from_string(expected), time);
        expected[10] = ' ';
        ASSERT_EQ(time.as_string(), expected);
    }
}

TEST(AbsoluteTimeText, StreamsAsOneItem) {
    std::ostringstream os;
    os << std::setfill('.') << std::setw(23) << AbsoluteTime::zero << '|' << std::left
       << std::setw(14) << AbsoluteTime::infinite << '|' << AbsoluteTime::min_time;
    EXPECT_EQ(os.str(), "..1970-01-01 00:00:00.0|##INFINITE##..|1677-09-21 00:12:43.145224192");

    tarv_test::AllocationWatch watch;
    (void)AbsoluteTime::zero.as_iso8601_string();
    EXPECT_EQ(watch.allocations(), 1);
}

}  // namespace
