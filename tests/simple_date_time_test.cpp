// Faults to catch: offsets folded a day too far, or at the wrong end; a sign on the wrong half; the
// instant compared in place of the local time; an offset where none belongs; bytes taken for
// digits; the wrong message; an output touched by a failure.

#include "tarvcore/simple_date_time.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <iomanip>
#include <limits>
#include <random>
#include <sstream>
#include <unordered_set>
#include <vector>

#include "tarvcore/error_exception.h"
#include "tests/support/allocations.h"
#include "tests/support/guarded_memory.h"
#include "tests/support/trials.h"

namespace {

using tarvcore::AbsoluteTime;
using tarvcore::ErrorException;
using tarvcore::ErrorInfo;
using tarvcore::RelativeTime;
using tarvcore::SimpleDateTime;

constexpr std::int64_t ns_per_minute = 60'000'000'000;
const AbsoluteTime instant = AbsoluteTime::from_nsec(1'405'516'980'250'000'000);

// Messages up to the text that was read.
const std::string end_fault =
    "Invalid timezone offset in date/time string (nothing allowed after 'Z' designator): ";
const std::string offset_fault =
    "Invalid timezone offset in date/time string (must be hh:mm, hhmm, or hh): ";
const std::string minutes_fault = "Minutes in timezone must be 0...59: ";
const std::string base_fault =
    "Parsing UTC base of simple date/time failed (must be ISO8601).  Argument: ";

SimpleDateTime parsed(const std::string& text) {
    return SimpleDateTime::from_string(text.data(), text.size());
}

struct Outcome {
    std::string fault;
    AbsoluteTime utc;
    int minutes = 0;
};

Outcome expected(const std::string& text) {
    Outcome outcome;
    std::string base = text;
    const auto last = text.find_last_of("Zz+- Tt");
    if (last != text.npos && std::strchr("Zz", text[last]) && last + 1 != text.size()) {
        return {end_fault, {}};
    }
    if (last != text.npos && std::strchr("+-", text[last])) {
        base.resize(last);
        std::string digits = text.substr(last + 1);
        if (digits.size() == 5 && digits[2] == ':') digits.erase(2, 1);
        if (digits.find_first_not_of("0123456789") != digits.npos) return {offset_fault, {}};
        if (digits.size() == 2) digits += "00";
        if (digits.size() != 4) return {offset_fault, {}};
        if (digits[2] > '5') return {minutes_fault, {}};
        outcome.minutes = std::stoi(digits) / 100 * 60 + std::stoi(digits) % 100;
        if (text[last] == '-') outcome.minutes *= -1;
    }
    if (AbsoluteTime::from_string_nothrow(base, &outcome.utc)) outcome.fault = base_fault;
    return outcome;
}

void check(const std::string& text) {
    const Outcome outcome = expected(text);
    SimpleDateTime time(instant, 42);
    const auto error = SimpleDateTime::from_string_nothrow(text.data(), text.size(), &time);
    if (error.is_null()) {
        ASSERT_EQ("", outcome.fault) << text;
        const SimpleDateTime whole(outcome.utc, outcome.minutes);
        ASSERT_TRUE(time.utc() == whole.utc()) << text;
        ASSERT_EQ(time.timezone_offset(), whole.timezone_offset()) << text;
        return;
    }
    ASSERT_EQ(time.timezone_offset(), 42) << text;
    ASSERT_EQ(error->params().get_value("dateTime", 8), text);
    if (error->matches("error.tarvcore.simpleDateTime.timezoneOffset")) {
        ASSERT_TRUE(outcome.utc.is_infinite() && outcome.minutes != 0) << text;
        return;
    }
    ASSERT_EQ(error->expanded_message().as_string(), outcome.fault + '"' + text + '"');
    ASSERT_EQ(error->code().as_string_view(), "error.tarvcore.simpleDateTime.invalidString");
    ASSERT_EQ(error->location().function(), "tarvcore::SimpleDateTime::from_string_nothrow()");
    ASSERT_EQ(!error->nested().is_null(), outcome.fault == base_fault);
    ASSERT_TRUE(error->nested().is_null() ||
                error->nested()->matches("error.tarvcore.absoluteTime.invalidUtcString"));
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
    const auto refused = [](const auto& utc, const auto& offset, const char* message) {
        SimpleDateTime time(instant, 42);
        try {
            time.set(utc, offset);
            ADD_FAILURE() << message;
        } catch (const ErrorException& e) {
            EXPECT_TRUE(e.matches("error.tarvcore.simpleDateTime.timezoneOffset"));
            EXPECT_EQ(e.error()->expanded_message().as_string_view(), message);
            EXPECT_EQ(e.error()->location().function(), "tarvcore::SimpleDateTime::set()");
            EXPECT_EQ(time.timezone_offset(), 42);
            return e.error();
        }
        return ErrorInfo::Ptr();
    };
    const char* const offset_message = "Timezone offset must be 0 if base-UTC time is infinite";
    const auto error = refused(AbsoluteTime::infinite, -5, offset_message);
    EXPECT_EQ(error->params().get_value("timezoneOffset", 14), "-5");
    refused(AbsoluteTime::infinite, RelativeTime::days(1), offset_message);
    refused(instant, RelativeTime::infinite, "An infinite timezoneOffset is not valid");
    EXPECT_THROW(parsed("INF+01"), ErrorException);

    const SimpleDateTime infinite(AbsoluteTime::infinite, 0);
    EXPECT_TRUE(infinite.as_local_time().is_infinite());
    EXPECT_EQ(infinite.as_string(), "##INFINITE##");
    EXPECT_EQ(parsed("##INFINITE##"), infinite);
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
        {"2014-07-16T13:23:00.25-00:00", 0},
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
        {offset_fault,
         {"2014-07-16T13+5:30", "2014-07-16T13+", "2014-07-16T13+5", "2014-07-16T13-053",
          "2014-07-16T13+05.30", "2014-07-16T13+05:3", "2014-07-16T13+05:30:00",
          "2014-07-16T13+05:", "2014-07-16T13+5a", "-"}},
        {minutes_fault, {"2014-07-16T13+05:60", "2014-07-16T13-0599", "+00:60"}},
        // The last of them is a blank, or a sign that belongs to the date.
        {base_fault,
         {"", "2014", "2014-07-16", "2014-07-16T13:23:00Z ", "2014-07-16T13:23 +01:00",
          "2014-07-16T13:23:00+01:00Z", "2014-07-16T13:23:00ZZ", "INFZ", "+01:00"}},
    };
    for (const auto& row : rows) {
        for (const char* text : row.texts) {
            EXPECT_EQ(expected(text).fault, row.fault) << text;
            check(text);
        }
    }
}

TEST(SimpleDateTime, HostileTexts) {
    const tarv_test::GuardedMemory memory(100);
    for (const std::string good : {"2014-07-16T13:23:00.25+05:30", "20140716T1323-0530",
                                   "2014-07-16 13+05", "2014-07-16T13:23Z", "##INFINITE##+00"}) {
        for (unsigned length = 0; length <= good.size(); ++length) {
            char* const cut = memory.before_guard(length);
            std::memcpy(cut, good.data(), length);
            const bool is_good = expected(good.substr(0, length)).fault.empty();
            ASSERT_EQ(SimpleDateTime::from_string_nothrow(cut, length, nullptr).is_null(), is_good);
        }
        for (std::size_t position = 0; position < good.size(); ++position) {
            std::string text = good;
            for (int byte = 0; byte < 256; ++byte) {
                text[position] = static_cast<char>(byte);
                ASSERT_NO_FATAL_FAILURE(check(text));
            }
        }
    }
    EXPECT_TRUE(SimpleDateTime::from_string_nothrow(nullptr, 0, nullptr));
    check(std::string(1 << 20, '0'));
    check(std::string(1 << 20, '+'));

    SimpleDateTime time;
    tarv_test::fail_each_allocation(
        [&] { (void)SimpleDateTime::from_string_nothrow("2014-07-16T13:23:61+02:00", 25, &time); },
        [&] { EXPECT_EQ(time, SimpleDateTime()); });
}

}  // namespace
