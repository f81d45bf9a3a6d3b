#include "tarvcore/string_range.h"

#include <charconv>

TARVCORE_SOURCE_FILE("$Id: //tarvcore/string_range.cpp#1 $");

namespace tarvcore {
namespace {

// Digits of our own: those of a stream are its locale's.
char* write_position(char* out, char* end, unsigned position) {
    if (!StringRange::is_npos(position)) return std::to_chars(out, end, position).ptr;
    return std::copy_n("npos", 4, out);
}

}  // namespace

std::ostream& operator<<(std::ostream& os, const StringRange& range) {
    char text[2 * 10 + 4];
    char* const end = text + sizeof text;
    char* out = text;
    *out++ = '{';
    out = write_position(out, end, range.first());
    *out++ = ',';
    *out++ = ' ';
    out = write_position(out, end, range.size());
    *out++ = '}';
    return os << std::string_view(text, out);
}

}  // namespace tarvcore
