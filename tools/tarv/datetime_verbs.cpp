// Points in time with a zone offset: their text, their count of nanoseconds and their minutes.
#include <string_view>

#include "tarvcore/abs_rel_time.h"
#include "tarvcore/config.h"
#include "tarvcore/error_info.h"
#include "tarvcore/safe_cast.h"
#include "tarvcore/simple_date_time.h"
#include "tools/tarv/count.h"
#include "tools/tarv/families.h"
#include "tools/tarv/number.h"

TARVCORE_SOURCE_FILE("$Id: //tools/tarv/datetime_verbs.cpp#1 $");

namespace tarv {
namespace {

using tarvcore::AbsoluteTime;
using tarvcore::ErrorInfo;
using tarvcore::safe_cast;
using tarvcore::SimpleDateTime;

class ParseVerb : public LineVerb {
public:
    ParseVerb()
        : LineVerb(
              {"parse", "TEXT...", "Time text with a zone offset to its parts",
               "TEXT is a date and a time of day in UTC, as ISO 8601 writes them, and the offset\n"
               "of local time from it: Z, +hh, +hhmm, +hh:mm, or nothing. Answers NANOSECONDS\n"
               "OFFSET_MINUTES TEXT: nanoseconds since 1970-01-01 00:00:00 UTC, or infinite. The\n"
               "offset is brought within 12 hours by moving whole days onto the time.\n",
               "$ tarv datetime parse 2014-07-16T13:23:00+02:00 \"2014-07-16 13:23-0930\"\n"
               "1405516980000000000 120 2014-07-16 13:23:00.0+02:00\n"
               "1405516980000000000 -570 2014-07-16 13:23:00.0-09:30\n"}) {}

protected:
    ErrorInfo::Ptr convert(Fields fields, Result& result) override {
        SimpleDateTime time;
        const std::string_view text = fields[0];
        if (auto error = SimpleDateTime::from_string_nothrow(text.data(), text.size(), &time)) {
            return error;
        }
        add_count(result, time.utc());
        result.number("offset_minutes", time.timezone_offset());
        result.text("text", time.as_string());
        return {};
    }
};

class FormatVerb : public LineVerb {
public:
    FormatVerb()
        : LineVerb(
              {"format", "NANOSECONDS OFFSET_MINUTES", "A time and a zone offset to text",
               "The count is from 1970-01-01 00:00:00 UTC on, or infinite; the offset is how far\n"
               "local time is ahead. The answer's digits are UTC. On a line of standard input one\n"
               "blank stands between the fields.\n",
               "$ tarv datetime format 1405516980000000000 120\n"
               "2014-07-16 13:23:00.0+02:00\n"},
              {field_count, field_count, ' '}) {}

protected:
    ErrorInfo::Ptr convert(Fields fields, Result& result) override {
        AbsoluteTime utc;
        if (auto error = parse_count(fields[0], &utc)) return error;
        long long offset = 0;
        if (auto error = parse_number(fields[1], &offset)) return error;
        result.text("text", SimpleDateTime(utc, safe_cast<int>(offset)).as_string());
        return {};
    }

private:
    static constexpr unsigned field_count = 2;
};

}  // namespace

Verbs datetime_verbs() {
    Verbs verbs;
    verbs.push_back(std::make_unique<ParseVerb>());
    verbs.push_back(std::make_unique<FormatVerb>());
    return verbs;
}

}  // namespace tarv
