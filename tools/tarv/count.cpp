#include "tools/tarv/count.h"

#include "tarvcore/config.h"
#include "tools/tarv/number.h"

TARVCORE_SOURCE_FILE("$Id: //tools/tarv/count.cpp#1 $");

namespace tarv {
namespace {

constexpr std::string_view infinite = "infinite";

}  // namespace

tarvcore::ErrorInfo::Ptr parse_count(std::string_view text, tarvcore::impl::TimeBase* time) {
    if (text == infinite) {
        time->set_infinite();
        return {};
    }
    long long count = 0;
    auto error = parse_number(text, &count);
    if (!error) time->set_nsec(count);
    return error;
}

void add_count(Result& result, const tarvcore::impl::TimeBase& time) {
    if (time.is_infinite()) {
        result.text("nanoseconds", infinite);
    } else {
        result.number("nanoseconds", time.as_nsec());
    }
}

}  // namespace tarv
