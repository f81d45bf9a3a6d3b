// Faults to catch: offsets folded a day too far, or at the wrong end; a sign on the wrong half; the
// instant compared in place of the local time; an offset where none belongs; bytes taken for
// digits; the wrong message; an output touched by a failure.

#include "tarvcore/simple_date_time.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <iomanip>
#include <limits>
#include <random>
#include <sstream>
#include <unordered_set>
#include <vector>

#include "tests/support/allocations.h"
#include "tests/support/raised.h"
#include "tests/support/time_texts.h"

namespace {

using namespace tarvcore;
using tarv_test::raised;

constexpr std::int64_t ns_per_minute = 60'000'000'000;
const AbsoluteTime instant = AbsoluteTime::from_nsec(1'405'516'980'250'000'000);

SimpleDateTime parsed(std::string_view text) {
    return SimpleDateTime::from_string(text.data(), text.size());
}

// Messages, up to the text that was read where there is a colon.
const std::string end_fault =
    "Invalid timezone offset in date/time string (nothing allowed after 'Z' designator): ";
const std::string offset_fault =
    "Invalid timezone offset in date/time string (must be hh:mm, hhmm, or hh): ";
const std::string minutes_fault = "Minutes in timezone must be 0...59: ";
const std::string base_fault =
    "Parsing UTC base of simple date/time failed (must be ISO8601).  Argument: ";
const std::string infinite_fault = "Timezone offset must be 0 if base-UTC time is infinite";

// Answers the fault of a text, or its time.
std::string expected(const std::string& text, SimpleDateTime* time) {
    std::string base = text;
    int minutes = 0;
    const auto last = text.find_last_of("Zz+- Tt");
    const char designator = last == text.npos ? '\0' : text[last];
    if ((designator == 'Z' || designator == 'z') && last + 1 != text.size()) return end_fault;
    if (designator == '+' || designator == '-') {
        base.resize(last);
        std::string digits = text.substr(last + 1);
        if (digits.size() == 5 && digits[2] == ':') digits.erase(2, 1);
        if (digits.find_first_not_of("0123456789") != digits.npos) return offset_fault;
        if (digits.size() == 2) digits += "00";
        if (digits.size() != 4) return offset_fault;
        if (digits[2] > '5') return minutes_fault;
        minutes = std::stoi(digits) / 100 * 60 + std::stoi(digits) % 100;
        if (designator == '-') minutes = -minutes;
    }
    AbsoluteTime utc;
    if (AbsoluteTime::from_string_nothrow(base, &utc)) return base_fault;
    if (utc.is_infinite() && minutes != 0) return infinite_fault;
    *time = SimpleDateTime(utc, minutes);
    return "";
}

void check(std::string_view view) {
    const std::string text(view);
    const SimpleDateTime untouched(instant, 42);
    SimpleDateTime whole = untouched;
    const std::string fault = expected(text, &whole);
    SimpleDateTime time = untouched;
    const auto error = SimpleDateTime::from_string_nothrow(view.data(), view.size(), &time);
    ASSERT_EQ(time.as_string(), whole.as_string()) << text;
    ASSERT_EQ(SimpleDateTime::from_string_nothrow(view.data(), view.size(), nullptr).is_null(),
              !error);
    const std::string told = error ? tarv_test::told(*error, "dateTime") : "";
    ASSERT_EQ(told, fault.empty() ? ""
                    : fault == infinite_fault
                        ? "error.tarvcore.simpleDateTime.timezoneOffset\n" + fault + '\n' + text +
                              "\ntarvcore::SimpleDateTime::set()"
                        : "error.tarvcore.simpleDateTime.invalidString\n" + fault + '"' + text +
                              "\"\n" + text + "\ntarvcore::SimpleDateTime::from_string_nothrow()");
    ASSERT_EQ(error && error->nested() ? error->nested()->code().as_string() : "",
              fault == base_fault ? "error.tarvcore.absoluteTime.invalidUtcString" : "");
}

TEST(SimpleDateTime, EveryMinuteIsFoldedPrintedAndRead) {
    constexpr int last = 99 * 60 + 59;
    for (int minutes = -last; minutes <= last; ++minutes) {
        int offset = minutes;
        while (minutes > 720 && offset >= 720)
            offset -= 1440;
        while (minutes < -720 && offset <= -720)
            offset += 1440;
        const SimpleDateTime time(instant, minutes);
        ASSERT_EQ(time.timezone_offset(), offset) << minutes;
        ASSERT_EQ(time.timezone_offset_as_relative_time(), RelativeTime::minutes(offset));
        ASSERT_EQ(time.utc(), instant + RelativeTime::minutes(minutes - offset)) << minutes;
        ASSERT_EQ(time.as_local_time(), instant + RelativeTime::minutes(minutes)) << minutes;
        ASSERT_EQ(SimpleDateTime(instant, RelativeTime::minutes(minutes)).utc(), time.utc());

        const int magnitude = minutes < 0 ? -minutes : minutes;
        for (const char* colon : {":", ""}) {
            char text[16];
            std::snprintf(text, sizeof text, "%c%02d%s%02d", minutes < 0 ? '-' : '+',
                          magnitude / 60, colon, magnitude % 60);
            const SimpleDateTime read = parsed(instant.as_string() + text);
            ASSERT_EQ(read.utc(), time.utc()) << text;
            ASSERT_EQ(read.timezone_offset(), offset) << text;
            if (*colon != '\0' && minutes == offset && minutes != 0) {
                ASSERT_EQ(time.as_string(), instant.as_string() + text);
            }
        }
    }
}

TEST(SimpleDateTime, OffsetsAtTheEndsOfTheirTypes) {
    for (const int minutes : {std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        const SimpleDateTime time(instant, minutes);
        EXPECT_LE(std::abs(time.timezone_offset()), 720);
        // Modulo 2^64.
        EXPECT_EQ(static_cast<std::uint64_t>(time.as_local_time().as_nsec()),
                  static_cast<std::uint64_t>(instant.as_nsec()) +
                      static_cast<std::uint64_t>(minutes) * ns_per_minute);
    }
    EXPECT_EQ(SimpleDateTime(instant, RelativeTime::max_time).timezone_offset(),
              153722867 % 1440 - 1440);
    EXPECT_EQ(SimpleDateTime(instant, RelativeTime(-119.9)).timezone_offset(), -1);
}

TEST(SimpleDateTime, InfiniteHasNoOffset) {
    SimpleDateTime time(instant, 42);
    const std::string place = "] tarvcore::SimpleDateTime::set() //tarvcore/simple_date_time.cpp";
    const std::string code = "error.tarvcore.simpleDateTime.timezoneOffset ";
    const std::string offset = code + infinite_fault + " [";
    EXPECT_EQ(raised([&] { time.set(AbsoluteTime::infinite, -5); }),
              offset + "'timezoneOffset' => \"-5\"" + place);
    EXPECT_EQ(raised([&] { time.set(AbsoluteTime::infinite, RelativeTime::days(1)); }),
              offset + "'timezoneOffset' => \"1440\"" + place);
    EXPECT_EQ(raised([&] { time.set(instant, RelativeTime::infinite); }),
              code + "An infinite timezoneOffset is not valid [" + place);
    EXPECT_EQ(time.timezone_offset(), 42);

    const SimpleDateTime infinite(AbsoluteTime::infinite, 0);
    EXPECT_TRUE(infinite.as_local_time().is_infinite());
    EXPECT_EQ(parsed("inf-00:00"), infinite);
}

TEST(SimpleDateTime, ComparesLocalTimes) {
    const SimpleDateTime plain(instant);
    const SimpleDateTime east(instant, 60);
    const SimpleDateTime later(instant + RelativeTime::minutes(60));
    EXPECT_NE(plain, east);
    EXPECT_EQ(later, east);
    EXPECT_TRUE(plain < east && east <= later && SimpleDateTime(instant, -1) < plain);
    EXPECT_EQ(east.hash(), later.as_local_time().hash());
    EXPECT_EQ((std::unordered_set<SimpleDateTime>{plain, east, later}.size()), 2u);
}

TEST(SimpleDateTime, Text) {
    EXPECT_EQ(SimpleDateTime().as_string(), "1970-01-01 00:00:00.0Z");
    EXPECT_EQ(SimpleDateTime(instant, -90).as_string(), "2014-07-16 13:23:00.25-01:30");
    std::ostringstream os;
    os << std::setfill('.') << std::setw(28) << SimpleDateTime(AbsoluteTime::zero, 720) << '|'
       << std::left << std::setw(14) << SimpleDateTime(AbsoluteTime::infinite);
    EXPECT_EQ(os.str(), ".1970-01-01 00:00:00.0+12:00|##INFINITE##..");
    tarv_test::AllocationWatch watch;
    (void)SimpleDateTime(AbsoluteTime::min_time, -720).as_string();
    EXPECT_EQ(watch.allocations(), 1);
}

TEST(SimpleDateTime, Accepts) {
    const struct {
        const char* text;
        int offset;
    } rows[] = {
        {"2014-07-16T13:23:00.25+05", 300},    {"20140716 132300,25-0530", -330},
        {"2014-07-16T13:23:00.25+05:30", 330}, {"2014-07-16T13:23:00.25z", 0},
        {"2014-07-16 13:23:00.25", 0},         {"2014-07-16t13:23:00.25Z+01:00", 60},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(parsed(row.text).utc(), instant) << row.text;
        EXPECT_EQ(parsed(row.text).timezone_offset(), row.offset) << row.text;
    }
}

TEST(SimpleDateTime, Rejects) {
    const struct {
        std::string fault;
        std::vector<const char*> texts;
    } rows[] = {
        {end_fault, {"2014-07-16T13:23:00Zx", "Z0"}},
        {offset_fault, {"2014-07-16T13+5:30", "2014-07-16T13+05:30:00", "2014-07-16T13+5a", "-"}},
        {minutes_fault, {"2014-07-16T13+05:60", "2014-07-16T13-0599", "+00:60"}},
        // The last of them is a blank, or a sign that belongs to the date.
        {base_fault, {"", "2014-07-16", "2014-07-16T13:23:00Z ", "2014-07-16T13:23 +01:00"}},
        {base_fault, {"2014-07-16T13:23:00+01:00Z", "2014-07-16T13:23:00ZZ", "INFZ", "+01:00"}},
        {infinite_fault, {"INF+01"}},
    };
    for (const auto& row : rows) {
        for (const char* text : row.texts) {
            SimpleDateTime time;
            EXPECT_EQ(expected(text, &time), row.fault) << text;
            check(text);
        }
    }
    EXPECT_THROW(parsed("INF+01"), ErrorException);
}

TEST(SimpleDateTime, HostileTexts) {
    tarv_test::check_damaged({"2014-07-16T13:23:00.25+05:30", "20140716T1323-0530",
                              "2014-07-16 13+05", "2014-07-16T13:23Z", "##INFINITE##+00"},
                             check);
    EXPECT_TRUE(SimpleDateTime::from_string_nothrow(nullptr, 0, nullptr));
    check(std::string(1 << 20, '0'));
    check(std::string(1 << 20, '+'));

    SimpleDateTime time;
    tarv_test::fail_each_allocation(
        [&] { (void)SimpleDateTime::from_string_nothrow("2014-07-16T13:23:61+02:00", 25, &time); },
        [&] { EXPECT_EQ(time, SimpleDateTime()); });
}

}  // namespace
