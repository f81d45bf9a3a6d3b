// Points in time: their text, their count of nanoseconds, their calendar fields.
#include <CLI/CLI.hpp>

#include <array>
#include <string>

#include "tarvcore/abs_rel_time.h"
#include "tarvcore/config.h"
#include "tarvcore/error_info.h"
#include "tarvcore/safe_cast.h"
#include "tools/tarv/count.h"
#include "tools/tarv/families.h"
#include "tools/tarv/number.h"

TARVCORE_SOURCE_FILE("$Id: //tools/tarv/time_verbs.cpp#1 $");

namespace tarv {
namespace {

using tarvcore::AbsoluteTime;
using tarvcore::ErrorInfo;
using tarvcore::safe_cast;

class ParseVerb : public LineVerb {
public:
    ParseVerb()
        : LineVerb(
              {"parse", "TEXT...", "Time text to nanoseconds",
               "TEXT is a date and a time of day in UTC, as ISO 8601 writes them, or INF. Answers\n"
               "nanoseconds since 1970-01-01 00:00:00 UTC, or infinite.\n",
               "$ tarv time parse 2014-07-16T13:23:00Z \"2014-07-16 13:23:00.5\" 20140716T1323\n"
               "1405516980000000000\n"
               "1405516980500000000\n"
               "1405516980000000000\n"}) {}

protected:
    ErrorInfo::Ptr convert(Fields fields, Result& result) override {
        AbsoluteTime time;
        const std::string_view text = fields[0];
        if (auto error = AbsoluteTime::from_string_nothrow(text.data(), text.size(), &time)) {
            return error;
        }
        add_count(result, time);
        return {};
    }
};

class FormatVerb : public LineVerb {
public:
    FormatVerb()
        : LineVerb({"format", "NANOSECONDS...", "Nanoseconds to time text",
                    "Counts are from 1970-01-01 00:00:00 UTC on and may be negative, or infinite.\n"
                    "Answers ISO 8601 text.\n",
                    "$ tarv time format 1405516980000000000\n"
                    "2014-07-16T13:23:00.0Z\n"}) {}

    void add_options(CLI::App& app) override {
        app.add_flag("--plain", plain_, "With a blank in the middle and no Z at the end");
    }

protected:
    ErrorInfo::Ptr convert(Fields fields, Result& result) override {
        AbsoluteTime time;
        if (auto error = parse_count(fields[0], &time)) return error;
        result.text("text", plain_ ? time.as_string() : time.as_iso8601_string());
        return {};
    }

private:
    bool plain_ = false;
};

class PartsVerb : public LineVerb {
public:
    PartsVerb()
        : LineVerb(
              {"parts", "NANOSECONDS...", "Nanoseconds to calendar fields",
               "Answers YEAR MONTH DAY HOUR MINUTE SECOND NANOSECOND WEEKDAY JDN: weekdays count\n"
               "from 0 for Monday, JDN is the Julian day number. An infinite time is the last\n"
               "nanosecond of the year 9999.\n",
               "$ tarv time parts 1405516980000000000\n"
               "2014 7 16 13 23 0 0 2 2456855\n"}) {}

protected:
    ErrorInfo::Ptr convert(Fields fields, Result& result) override {
        AbsoluteTime time;
        if (auto error = parse_count(fields[0], &time)) return error;
        const AbsoluteTime::Components parts = time.as_components();
        result.number("year", parts.year());
        result.number("month", parts.month());
        result.number("day", parts.day());
        result.number("hour", parts.hour());
        result.number("minute", parts.minute());
        result.number("second", parts.second());
        result.number("nanosecond", parts.nanosecond());
        result.number("weekday", parts.day_of_week());
        result.number("jdn", parts.julian_day());
        return {};
    }
};

class ComposeVerb : public LineVerb {
public:
    ComposeVerb()
        : LineVerb(
              {"compose", "YEAR MONTH DAY HOUR MINUTE SECOND NANOSECOND",
               "Calendar fields to nanoseconds",
               "Answers nanoseconds since 1970-01-01 00:00:00 UTC, or infinite. Fields beyond\n"
               "their bounds count on into larger ones: day 30 of February is a day in March. On\n"
               "a line of standard input one blank stands between fields.\n",
               "$ tarv time compose 2014 7 16 13 23 0 0\n"
               "1405516980000000000\n"},
              {field_count, field_count, ' '}) {}

protected:
    ErrorInfo::Ptr convert(Fields fields, Result& result) override {
        std::array<long long, field_count> numbers{};
        for (unsigned i = 0; i < field_count; ++i) {
            if (auto error = parse_number(fields[i], &numbers[i])) return error;
        }
        const auto [year, month, day, hour, minute, second, nanosecond] = numbers;
        const AbsoluteTime::Components parts(
            safe_cast<short>(year), safe_cast<unsigned short>(month),
            safe_cast<unsigned short>(day), safe_cast<unsigned short>(hour),
            safe_cast<unsigned short>(minute), safe_cast<unsigned short>(second),
            safe_cast<unsigned>(nanosecond));
        AbsoluteTime time;
        if (auto error = AbsoluteTime::from_components_nothrow(parts, &time)) return error;
        add_count(result, time);
        return {};
    }

private:
    static constexpr unsigned field_count = 7;
};

class NowVerb : public Verb {
public:
    NowVerb()
        : Verb({"now", "", "The time now, as ISO 8601 text", "",
                "$ tarv time now\n"
                "\u2026\n"}) {}

    bool run(const Request& request, Output& output, Output&) override {
        Result result(output, request.json ? Result::Form::json : Result::Form::block);
        result.text("text", AbsoluteTime::now().as_iso8601_string());
        result.finish();
        return true;
    }
};

}  // namespace

Verbs time_verbs() {
    Verbs verbs;
    verbs.push_back(std::make_unique<ParseVerb>());
    verbs.push_back(std::make_unique<FormatVerb>());
    verbs.push_back(std::make_unique<PartsVerb>());
    verbs.push_back(std::make_unique<ComposeVerb>());
    verbs.push_back(std::make_unique<NowVerb>());
    return verbs;
}

}  // namespace tarv
