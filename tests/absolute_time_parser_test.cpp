// Faults to catch: reading beyond the text; a sign, a blank or any other byte taken for a digit;
// the wrong message; fractions of the wrong field, or rounded at the wrong digit; limits off by
// one; an output touched by a failure.

#include "tarvcore/abs_rel_time.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <random>
#include <string>

#include "tests/support/allocations.h"
#include "tests/support/guarded_memory.h"
#include "tests/support/trials.h"

namespace {

using tarvcore::AbsoluteTime;
using tarvcore::ErrorInfo;

constexpr std::int64_t min_count = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t max_count = std::numeric_limits<std::int64_t>::max();
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

struct Outcome {
    std::string fault;
    std::int64_t count = 0;
};

// A reader that looks at one character after the other and computes nothing in advance.
class Oracle {
public:
    static Outcome read(const std::string& text) {
        Oracle oracle(text);
        try {
            return {"", oracle.read_all()};
        } catch (const std::string& fault) {
            return {fault, 0};
        }
    }

private:
    explicit Oracle(const std::string& text) : text_(text) {}

    bool at_end() const { return position_ == text_.size(); }
    char peek() const { return at_end() ? '\0' : text_[position_]; }
    bool is_next(const char* characters) const {
        return !at_end() && peek() != '\0' && std::strchr(characters, peek()) != nullptr;
    }
    bool is_digit() const { return is_next("0123456789"); }
    int digit(const std::string& fault) {
        if (!is_digit()) throw fault;
        return text_[position_++] - '0';
    }
    int number(int digits, const std::string& fault) {
        int value = 0;
        while (digits-- != 0)
            value = value * 10 + digit(fault);
        return value;
    }

    std::int64_t read_all() {
        if (text_.size() < 13) {
            std::string upper;
            for (const char c : text_)
                upper += static_cast<char>(c >= 'a' && c <= 'z' ? c - 32 : c);
            if (upper == "INF" || upper == "##INFINITE##") return max_count;
            throw text_fault;
        }
        const bool dashes = text_[4] == '-' && text_[7] == '-';
        const int year = number(4, date_fault);
        position_ += dashes;
        const int month = number(2, date_fault);
        position_ += dashes;
        const int day = number(2, date_fault);
        if (month < 1 || month > 12 || day < 1 || day > 31) throw date_fault;
        if (!is_next(" Tt")) throw separator_fault;
        ++position_;

        read_time();
        if (ns_ > ns_per_day) throw day_fault;
        if (year == 9999 && month == 12 && day == 31 && ns_ == ns_per_day - 1) return max_count;

        int days = day - 1;
        const auto is_leap = [](int y) { return y % 4 == 0 && (y % 100 != 0 || y % 400 == 0); };
        for (int y = 1970; y < year; ++y)
            days += is_leap(y) ? 366 : 365;
        for (int y = year; y < 1970; ++y)
            days -= is_leap(y) ? 366 : 365;
        const int lengths[] = {31, is_leap(year) ? 29 : 28, 31, 30, 31, 30, 31, 31, 30, 31, 30};
        for (int m = 1; m < month; ++m)
            days += lengths[m - 1];
        // The first and last instants lie 106752 days before and 106751 days after the epoch.
        if (days < -106752 || (days == -106752 && ns_ < 763'145'224'192)) throw range_fault;
        if (days > 106751 || (days == 106751 && ns_ >= 85'636'854'775'807)) throw range_fault;
        return days >= 0 ? days * ns_per_day + ns_ : (days + 1) * ns_per_day + (ns_ - ns_per_day);
    }

    void read_time() {
        const std::int64_t units[] = {3'600'000'000'000, 60'000'000'000, 1'000'000'000};
        const int limits[] = {24, 59, 60};
        bool colons = false;
        for (int field = 0; field < 3; ++field) {
            const int value = number(2, time_fault);
            if (value > limits[field]) throw time_fault;
            ns_ += value * units[field];
            if (at_end()) return;
            if (field == 0) colons = peek() == ':';
            if (colons && field == 1 && !is_next(":.Zz")) throw time_fault;
            if (is_next(".,")) {
                ++position_;
                return read_fraction(units[field]);
            }
            if (is_next("Zz")) return read_zone();
            if (is_next("+-")) throw zone_fault;
            if (field == 2 || (colons ? peek() != ':' : !is_digit())) throw time_fault;
            position_ += colons;
        }
    }

    void read_fraction(std::int64_t unit) {
        bool rounded = false;
        while (is_digit()) {
            const int value = digit(time_fault);
            unit /= 10;
            ns_ += value * unit;
            if (unit == 0 && !rounded) {
                ns_ += value >= 5;
                rounded = true;
            }
        }
        if (!at_end()) read_zone();
    }

    void read_zone() {
        if (!is_next("Zz")) throw time_fault;
        ++position_;
        if (!at_end()) throw end_fault;
    }

    const std::string& text_;
    std::size_t position_ = 0;
    std::int64_t ns_ = 0;
};

void check(const std::string& text) {
    const Outcome expected = Oracle::read(text);
    AbsoluteTime time = AbsoluteTime::from_nsec(42);
    const ErrorInfo::Ptr error = AbsoluteTime::from_string_nothrow(text.data(), text.size(), &time);
    ASSERT_EQ(AbsoluteTime::from_string_nothrow(text, nullptr).is_null(), error.is_null());
    if (error.is_null()) {
        ASSERT_EQ("", expected.fault) << text;
        ASSERT_EQ(time.as_nsec(), expected.count) << text;
        return;
    }
    ASSERT_EQ(time.as_nsec(), 42) << text;
    ASSERT_EQ(error->expanded_message().as_string(), expected.fault + '"' + text + '"');
    ASSERT_EQ(error->code().as_string_view(), "error.tarvcore.absoluteTime.invalidUtcString");
    ASSERT_EQ(error->params().get_value("utcTime", 7), text);
    ASSERT_EQ(error->location().function(), "tarvcore::AbsoluteTime::from_string_nothrow()");
    ASSERT_EQ(!error->nested().is_null(), expected.fault == range_fault);
    ASSERT_TRUE(error->nested().is_null() ||
                error->nested()->matches("error.tarvcore.absoluteTime.range"));
}

TEST(AbsoluteTimeParser, AcceptsAndRejects) {
    const struct {
        const char* text;
        std::string fault;
        std::int64_t count;
    } rows[] = {
        {"1970-01-02T10:30:00Z", "", 124'200'000'000'000},
        {"19700102T103000", "", 124'200'000'000'000},
        {"1970-01-02t10.5z", "", 124'200'000'000'000},
        {"19700102 1030,5", "", 124'230'000'000'000},
        {"1970-01-01 00:00:60", "", 60'000'000'000},
        {"2024-02-29T24:00:00Z", "", 1'709'251'200'000'000'000},
        {"2024-02-30T00:00:00Z", "", 1'709'251'200'000'000'000},
        {"1970-01-01T00:00:00.", "", 0},
        {"1970-01-01T00:00:00.1234567894999", "", 123'456'789},
        {"1970-01-01T00:00:00.1234567895Z", "", 123'456'790},
        {"1970-01-01T00:00.00000000015", "", 7},  // 6 ns, and a digit that rounds
        {"1970-01-01T00.0000000000010", "", 3},   // 3.6 ns are worth 3
        {"1970-01-01T00.0000000000009", "", 1},   // the digit beyond them rounds
        {"1970-01-01T00.00000000000049", "", 0},  // and no other
        {"1970-01-01T23:59:59.9999999995", "", ns_per_day},
        {"1677-09-21 00:12:43.145224192", "", min_count},
        {"2262-04-11 23:47:16.854775806", "", max_count - 1},
        {"9999-12-31T23:59:59.999999999Z", "", max_count},
        {"##infinite##", "", max_count},
        {"iNF", "", max_count},

        {"", text_fault, 0},
        {"INFI", text_fault, 0},
        {"2024-01-02", text_fault, 0},
        {"##INFINITE##Z", date_fault, 0},  // 13 characters are a date
        {"2024-00-02T10", date_fault, 0},
        {"2024-13-02T10", date_fault, 0},
        {"2024-01-00T10", date_fault, 0},
        {"2024-01-32T10", date_fault, 0},
        {"2024-0102T10:30", date_fault, 0},  // one dash
        {" 024-01-02T10", date_fault, 0},
        {"2024-01-+2T10", date_fault, 0},
        {"2024-01-02_10:30", separator_fault, 0},
        {"2024-01-0210:30", separator_fault, 0},
        {"2024-01-02T1:30", time_fault, 0},
        {"2024-01-02T25", time_fault, 0},
        {"2024-01-02T10:60", time_fault, 0},
        {"2024-01-02T10:30:61", time_fault, 0},
        {"2024-01-02T10:", time_fault, 0},
        {"2024-01-02T10:30:", time_fault, 0},
        {"2024-01-02T10:3000", time_fault, 0},  // colons everywhere or nowhere
        {"2024-01-02T1030:00", time_fault, 0},
        {"2024-01-02T10:30,5", time_fault, 0},      // not this comma
        {"2024-01-02T10:30+01:00", time_fault, 0},  // nor this sign
        {"2024-01-02T10:30:00.5.5", time_fault, 0},
        {"2024-01-02T10:30:00.5+01:00", time_fault, 0},  // a sign is no digit
        {"2024-01-02T10:30:00 Z", time_fault, 0},
        {"2024-01-02T10:30:00Zx", end_fault, 0},
        {"2024-01-02T10:30:00.5ZZ", end_fault, 0},
        {"2024-01-02T10:30:00+01:00", zone_fault, 0},
        {"2024-01-02T1030-01", zone_fault, 0},
        {"2024-01-02T10+0100", zone_fault, 0},
        {"2024-01-02T24:00:00.000000001", day_fault, 0},
        {"2024-01-02T24:00:01", day_fault, 0},
        {"2024-01-02T24.1", day_fault, 0},
        {"2262-04-11T23:47:16.854775807Z", range_fault, 0},
        {"1677-09-21T00:12:43.145224191Z", range_fault, 0},
        {"1677-09-20T24:00:00", range_fault, 0},
        {"0000-01-01T00", range_fault, 0},
        {"9999-12-31T24:00", range_fault, 0},
    };
    for (const auto& row : rows) {
        const Outcome oracle = Oracle::read(row.text);
        EXPECT_EQ(oracle.fault, row.fault) << row.text;
        EXPECT_EQ(oracle.count, row.count) << row.text;
        check(row.text);
    }
    try {
        AbsoluteTime::from_string("2024-01-02T10:30:00Zx", 20);
        AbsoluteTime::from_string("2024-01-02T10:30:00Zx", 21);
        FAIL();
    } catch (const std::exception& e) {
        EXPECT_NE(std::strstr(e.what(), "after 'Z'"), nullptr);
    }
}

const char* const good_texts[] = {"2014-07-16T13:23:00.123456789Z",
                                  "20140716 132300,5z",
                                  "2014-07-16t13:23.9999999999999999999",
                                  "20140716T13.99999999999999999999Z",
                                  "9999-12-31T23:59:59.999999999Z",
                                  "2262-04-11T23:47:16.854775806",
                                  "##INFINITE##",
                                  "inf"};

TEST(AbsoluteTimeParser, EveryByteAtEveryPosition) {
    for (const char* good : good_texts) {
        for (std::size_t position = 0; position < std::strlen(good); ++position) {
            std::string text = good;
            for (int byte = 0; byte < 256; ++byte) {
                text[position] = static_cast<char>(byte);
                ASSERT_NO_FATAL_FAILURE(check(text));
            }
        }
    }
}

TEST(AbsoluteTimeParser, ReadsNothingBehindTheText) {
    const tarv_test::GuardedMemory memory(100);
    for (const std::string good : good_texts) {
        for (unsigned length = 0; length <= good.size(); ++length) {
            const std::string cut = good.substr(0, length);
            ASSERT_NO_FATAL_FAILURE(check(cut));
            char* const text = memory.before_guard(length);
            std::memcpy(text, cut.data(), length);
            AbsoluteTime time;
            ASSERT_EQ(AbsoluteTime::from_string_nothrow(text, length, &time).is_null(),
                      Oracle::read(cut).fault.empty());
        }
    }
    EXPECT_TRUE(AbsoluteTime::from_string_nothrow(nullptr, 0, nullptr));
}

TEST(AbsoluteTimeParser, RandomTexts) {
    const char* const dates[] = {"2014-07-16", "20140716", "1677-09-21", "22620411", "2024-02-30"};
    const char* const separators[] = {" ", "T", "t", "", "-"};
    const char* const fields[] = {"00", "13", "23", "24", "59", "60", "5"};
    const char* const joints[] = {":", ":", "", "."};
    const char* const digits[] = {"", "5", "49999999999999", "99999999", "145224192", "854775807"};
    const char* const ends[] = {"", "Z", "z", "+01", "Z "};
    std::mt19937 random(8601);
    const auto any = [&random](const auto& list) { return list[random() % std::size(list)]; };
    unsigned accepted = 0;
    for (unsigned i = tarv_test::trials(30'000); i != 0; --i) {
        std::string text = std::string(any(dates)) + any(separators) + any(fields);
        const char* joint = any(joints);
        for (auto count = random() % 3; count != 0; --count)
            text += std::string(random() % 8 ? joint : any(joints)) + any(fields);
        if (random() % 2) text += std::string(random() % 4 ? "." : ",") + any(digits);
        text += any(ends);
        if (random() % 8 == 0 && !text.empty())
            text[random() % text.size()] = "0:.Z,- \0"[random() % 8];
        ASSERT_NO_FATAL_FAILURE(check(text));
        accepted += Oracle::read(text).fault.empty();
    }
    EXPECT_GT(accepted, tarv_test::trials(1000));
}

TEST(AbsoluteTimeParser, AMegabyteOfDigits) {
    const std::string digits(1 << 20, '9');
    for (const std::string good : {"2014-07-16T13:23:00.", "2014-07-16T13.", "2014-07-16T13:23:"}) {
        check(good + digits);
        check(good + digits + "Z");
    }
    check(digits);
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

}  // namespace
