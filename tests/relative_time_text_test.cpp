// Faults to catch: reading beyond the text; a limit off by one; the wrong message, or the right one
// too late; decimals of the wrong worth, or rounded; a byte taken for a digit or a blank; a sum
// that traps or saturates; an output touched by a failure.  In texts that are written: a form too
// early or too late by one; zeros of the fraction cut too far or not at all; fields padded that are
// not, or the other way round; a sign lost or overflown; a text that does not come back; width
// applied to a part.

#include <gtest/gtest.h>

#include <cstring>
#include <iomanip>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
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

constexpr std::int64_t s = 1'000'000'000;
constexpr std::int64_t hour = 3600 * s;
constexpr std::int64_t day = 24 * hour;

// Messages up to the text that was read.
const std::string syntax = "Syntax error processing time string ";
const std::string overflow = "Value overflow processing time string ";
const std::string type_fault = "Invalid field type in time string ";
const std::string end_fault = "Unexpected end of string in time string ";
const std::string value_fault = "Invalid value in time string ";

struct Unit {
    const char* name;
    std::int64_t ns;
    std::uint64_t limit;
};

constexpr Unit units[] = {
    {"d", day, 106751},
    {"h", hour, 2562047},
    {"m", 60 * s, 153722867},
    {"s", s, 9223372036},
    {"ms", 1'000'000, 9223372036854},
    {"us", 1000, 9223372036854775},
    {"ns", 1, 9223372036854775800u},
};

// A reader that takes texts apart and computes afterwards.
class Oracle : public SlowReader {
public:
    explicit Oracle(std::string_view text) : SlowReader(text) {}

    std::int64_t read_all() {
        const bool is_negative = is_next("-");
        if (is_negative) rest_.remove_prefix(1);
        std::uint64_t sum = 0;
        for (take(" "); !rest_.empty(); take(" "))
            sum += read_field();
        return static_cast<std::int64_t>(is_negative ? 0 - sum : sum);
    }

private:
    std::string take(std::string_view characters) {
        std::string taken;
        for (; is_next(characters); rest_.remove_prefix(1))
            taken += rest_[0];
        return taken;
    }

    std::uint64_t read_field() {
        std::string whole = take("0123456789");
        const bool has_whole = !whole.empty();
        whole.erase(0, whole.find_first_not_of('0'));
        const std::string last = "9223372036854775799";
        if (whole.size() > 19 || (whole.size() == 19 && whole > last)) throw overflow;
        std::string decimals;
        if (is_next(".")) {
            rest_.remove_prefix(1);
            decimals = take("0123456789");
        }
        if (is_next(". ")) throw syntax;
        if (!has_whole && decimals.empty()) throw value_fault;

        const Unit unit = read_unit();
        const auto number = whole.empty() ? 0 : std::stoull(whole);
        if (number >= unit.limit) throw overflow;
        std::int64_t fraction = 0;
        for (std::size_t i = std::min<std::size_t>(decimals.size(), 11); i != 0; --i)
            fraction = (fraction + (decimals[i - 1] - '0') * unit.ns) / 10;
        return number * static_cast<std::uint64_t>(unit.ns) + static_cast<std::uint64_t>(fraction);
    }

    Unit read_unit() {
        constexpr std::string_view behind_minutes = "0123456789 ";
        const bool is_last = rest_.size() <= 1;
        const bool is_minute = is_last || behind_minutes.find(rest_[1]) != behind_minutes.npos;
        for (const Unit& unit : units) {
            if (!rest_.starts_with(unit.name) || (unit.ns == 60 * s && !is_minute)) continue;
            rest_.remove_prefix(std::strlen(unit.name));
            return unit;
        }
        throw is_next("m")         ? syntax
        : is_next("un") && is_last ? end_fault
        : is_next("un")            ? type_fault
                                   : value_fault;
    }
};

void check(std::string_view view) {
    const std::string text(view);
    const Outcome expected = SlowReader::read<Oracle>(text);
    RelativeTime time = RelativeTime::nanoseconds(42);
    const ErrorInfo::Ptr error = RelativeTime::from_string_nothrow(text, &time);
    ASSERT_EQ(RelativeTime::from_string_nothrow(text, nullptr).is_null(), error.is_null());
    ASSERT_EQ(time.as_nsec(), expected.fault.empty() ? expected.count : 42) << text;
    const std::string length = std::to_string(text.size());
    ASSERT_EQ(error ? told(*error, "timeString") : "",
              expected.fault.empty()
                  ? ""
                  : "error.tarvcore.relativeTime.invalidTimeString\n" + expected.fault + '"' +
                        text + "\", length=" + length + '\n' + text +
                        "\ntarvcore::RelativeTime::field_from_string()");
    ASSERT_EQ(error ? error->params().get_value("length", 6) : length, length);
}

TEST(RelativeTimeParser, Accepts) {
    const struct {
        const char* text;
        std::int64_t count;
    } rows[] = {
        {"", 0},
        {"-", 0},
        {"1.5h", 5400 * s},
        {"  2d   3h  ", 51 * hour},
        {"- 1m 1s", -61 * s},
        {"3s1m1s1m5ns", 124 * s + 5},
        {".5s 5.s", 5 * s + s / 2},
        {"0.00000000001d", 864},
        {"0.00000000001h", 36},
        {"0.00000000001m 0.00000000002m", 1},
        {"0.000000000009999d", 0},  // the twelfth decimal
        {"1.9999999999999999s", 2 * s - 1},
        {"00000000000000000000000000001s", s},
        {"9223372036854775799ns 8ns", INT64_MAX},
        {"9223372036854775799ns 8ns 1ns", INT64_MIN},  // not infinite on the way
        {"-9223372036854775799ns 8ns", -INT64_MAX},
        {"-9223372036854775799ns 9ns", INT64_MIN},
        {"106750d 106750d 106750d", 3 * 106750 * std::uint64_t{day}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(RelativeTime::from_string(row.text).as_nsec(), row.count) << row.text;
        check(row.text);
    }
}

TEST(RelativeTimeParser, Rejects) {
    const struct {
        std::string fault;
        std::vector<const char*> texts;
    } rows[] = {
        {syntax, {"5 s", "5 ", "1..5s", "1.5.s", "1. 5s", "..", "1mh", "1m.5s"}},
        // Before anything behind the digits is seen.
        {overflow, {"9223372036854775800ns", "9223372036854775800 s", "10000000000000000000"}},
        {end_fault, {"10n", "1s 10u"}},
        {type_fault, {"10nx", "10u s"}},
        {value_fault, {"10x", "10", "1.", "3s1m5", "1M", "1\ts", "1s\t1s", "##INFINITE##"}},
        // A unit without a number, and signs anywhere but at the very start.
        {value_fault, {"s", ".ms", ".", "n", "+1s", " -1s", "--1s", "1s -1s"}},
    };
    for (const auto& row : rows) {
        for (const char* text : row.texts) {
            EXPECT_EQ(SlowReader::read<Oracle>(text).fault, row.fault) << text;
            check(text);
        }
    }
    EXPECT_THROW(RelativeTime::from_string("1"), ErrorException);
}

TEST(RelativeTimeParser, LimitsOfEachUnit) {
    for (const Unit& unit : units) {
        const std::string below = std::to_string(unit.limit - 1);
        const std::int64_t count = static_cast<std::int64_t>((unit.limit - 1)) * unit.ns;
        EXPECT_EQ(RelativeTime::from_string(below + unit.name).as_nsec(), count);
        check(below + ".99999999999" + unit.name);
        for (const auto too_many : {unit.limit, unit.limit + 1}) {
            const std::string text = std::to_string(too_many) + unit.name;
            EXPECT_EQ(SlowReader::read<Oracle>(text).fault, overflow);
            check(text);
        }
    }
}

TEST(RelativeTimeParser, DamagedTexts) {
    tarv_test::check_damaged({"-1d 2h03m 4.123456789012s5ms 6.7us 8ns", "12m", "9223372036u"},
                             check);
}

TEST(RelativeTimeParser, AMegabyteOfDigits) {
    const std::string nines(1 << 20, '9');
    const std::string zeros(1 << 20, '0');
    check(nines);
    check('.' + nines + 's');
    check(zeros + '.' + zeros + "m " + zeros + 'd');
}

TEST(RelativeTimeParser, LeavesNothingBehindWithoutMemory) {
    const std::string good = "1d 2h 3m 4.5s";
    const std::string bad = good + " 7.25 minutes";
    RelativeTime time;
    tarv_test::fail_each_allocation([&] { (void)RelativeTime::from_string_nothrow(bad, &time); },
                                    [&] { EXPECT_EQ(time, RelativeTime::zero); });
    tarv_test::AllocationWatch watch;
    EXPECT_TRUE(RelativeTime::from_string_nothrow(good, &time).is_null());
    EXPECT_EQ(watch.allocations(), 0);
}

TEST(RelativeTimeText, Forms) {
    const struct {
        std::int64_t count;
        const char* text;
    } rows[] = {
        {0, "0ns"},
        {1000, "1000ns"},
        {1001, "1.001us"},
        {1100, "1.1us"},
        {1'000'000, "1000.0us"},
        {1'000'001, "1.000001ms"},
        {100'000'000, "100.0ms"},
        {s - 1, "999.999999ms"},
        {s, "1.0s"},
        {61 * s - 1, "60.999999999s"},
        {61 * s, "1m 01.0s"},
        {3601 * s - 1, "60m 00.999999999s"},
        {3601 * s, "1h 0m 1.0s"},
        {day + s - 1, "24h 0m 0.999999999s"},
        {day + s, "1d 0h 0m 1.0s"},
        {day + hour + 61 * s + 250'000'000, "1d 1h 1m 1.25s"},
        {1000 * day, "1000d 0h 0m 0.0s"},
        {INT64_MAX, "##INFINITE##"},
        {-1, "-1ns"},
        {INT64_MIN, "-106751d 23h 47m 16.854775808s"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(RelativeTime::nanoseconds(row.count).as_string(), row.text);
}

TEST(RelativeTimeText, ComesBack) {
    std::mt19937_64 random(43);
    for (unsigned i = tarv_test::trials(50'000); i != 0; --i) {
        const auto count = static_cast<std::int64_t>(random()) >> random() % 64;
        const std::string text = RelativeTime::nanoseconds(count).as_string();
        RelativeTime time;
        const auto error = RelativeTime::from_string_nothrow(text, &time);
        // The last day cannot be read.
        ASSERT_EQ(error.is_null(), std::abs(count / day) < 106751) << text;
        if (!error) {
            ASSERT_EQ(time.as_nsec(), count) << text;
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
