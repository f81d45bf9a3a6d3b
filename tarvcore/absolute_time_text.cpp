// The text of instants.

#include <ostream>
#include <string_view>

#include "tarvcore/abs_rel_time.h"
#include "tarvcore/impl/time_text.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/absolute_time_text.cpp#1 $");

namespace tarvcore {

using impl::infinite_text;
using impl::max_instant_length;
using impl::write_instant;

std::string AbsoluteTime::as_string() const {
    if (is_infinite()) return std::string(infinite_text);
    char text[max_instant_length + 1];
    return std::string(text, write_instant(text, as_nsec(), ' '));
}

std::string AbsoluteTime::as_iso8601_string() const {
    if (is_infinite()) return "9999-12-31T23:59:59.999999999Z";
    char text[max_instant_length + 1];
    char* end = write_instant(text, as_nsec(), 'T');
    *end++ = 'Z';
    return std::string(text, end);
}

std::ostream& operator<<(std::ostream& os, const AbsoluteTime& time) {
    if (time.is_infinite()) return os << infinite_text;
    char text[max_instant_length + 1];
    return os << std::string_view(text, write_instant(text, time.as_nsec(), ' '));
}

}  // namespace tarvcore
