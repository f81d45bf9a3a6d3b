// Durations: their text and their count of nanoseconds.
#include <string>

#include "tarvcore/abs_rel_time.h"
#include "tarvcore/config.h"
#include "tarvcore/error_info.h"
#include "tools/tarv/count.h"
#include "tools/tarv/families.h"

TARVCORE_SOURCE_FILE("$Id: //tools/tarv/duration_verbs.cpp#1 $");

namespace tarv {
namespace {

using tarvcore::ErrorInfo;
using tarvcore::RelativeTime;

class ParseVerb : public LineVerb {
public:
    ParseVerb()
        : LineVerb(
              {"parse", "TEXT...", "Duration text to nanoseconds",
               "TEXT is a sum of numbers with a unit each: d, h, m, s, ms, us or ns. A \"-\" at\n"
               "its start makes the whole negative.\n",
               "$ tarv duration parse \"1d 2h 3m 4.5s\" 250ms 1h30m -1.5h\n"
               "93784500000000\n"
               "250000000\n"
               "5400000000000\n"
               "-5400000000000\n"}) {}

protected:
    ErrorInfo::Ptr convert(Fields fields, Result& result) override {
        RelativeTime time;
        if (auto error = RelativeTime::from_string_nothrow(std::string(fields[0]), &time)) {
            return error;
        }
        add_count(result, time);
        return {};
    }
};

class FormatVerb : public LineVerb {
public:
    FormatVerb()
        : LineVerb(
              {"format", "NANOSECONDS...", "Nanoseconds to duration text",
               "Counts may be negative, or infinite. Answers the units that the count asks for.\n",
               "$ tarv duration format 1500000 93784500000000 infinite\n"
               "1.5ms\n"
               "1d 2h 3m 4.5s\n"
               "##INFINITE##\n"}) {}

protected:
    ErrorInfo::Ptr convert(Fields fields, Result& result) override {
        RelativeTime time;
        if (auto error = parse_count(fields[0], &time)) return error;
        result.text("text", time.as_string());
        return {};
    }
};

}  // namespace

Verbs duration_verbs() {
    Verbs verbs;
    verbs.push_back(std::make_unique<ParseVerb>());
    verbs.push_back(std::make_unique<FormatVerb>());
    return verbs;
}

}  // namespace tarv
