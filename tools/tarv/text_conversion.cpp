#include "tools/tarv/text_conversion.h"

#include <cstring>
#include <vector>

#include "tarvcore/config.h"
#include "tarvcore/error_composer.h"
#include "tarvcore/ucsutil.h"

TARVCORE_SOURCE_FILE("$Id: //tools/tarv/text_conversion.cpp#1 $");

namespace tarv {
namespace {

using tarvcore::ErrorCode;
using tarvcore::ErrorComposer;

template <class Unit>
std::vector<Unit> units_of(std::string_view bytes) {
    if (bytes.size() % sizeof(Unit) != 0) {
        ErrorComposer("Text ends inside a unit of {@size} bytes")
            .param("size", sizeof(Unit))
            .throw_error(ErrorCode("error.tarv.text.units", true),
                         TARVCORE_LOCATION("tarv::units_of()"));
    }
    std::vector<Unit> units(bytes.size() / sizeof(Unit));
    if (!bytes.empty()) std::memcpy(units.data(), bytes.data(), bytes.size());
    return units;
}

template <class Unit>
std::string bytes_of(const std::vector<Unit>& units) {
    return std::string(reinterpret_cast<const char*>(units.data()), units.size() * sizeof(Unit));
}

// One of the library's functions: first to learn the size, then to convert.
template <class Unit, class SourceUnit>
std::vector<Unit> converted(unsigned function(const SourceUnit*, unsigned, Unit*, unsigned, Unit,
                                              int*),
                            const std::vector<SourceUnit>& source, Unit replacement) {
    const unsigned length = source.size();
    const unsigned size = function(source.data(), length, nullptr, 0, replacement, nullptr);
    std::vector<Unit> result(size);
    function(source.data(), length, result.data(), size, replacement, nullptr);
    return result;
}

}  // namespace

std::string TextConversion::operator()(std::string_view bytes) const {
    using namespace tarvcore;
    // The library converts from and to UTF-8: that is in the middle.  A byte that is none of UTF-8
    // tells the second step where the first one has replaced.
    const char mark = to_ == Encoding::utf8 ? static_cast<char>(replacement_)
                      : replaces()          ? '\xFF'
                                            : '\0';
    std::vector<char> utf8;
    switch (from_) {
        case Encoding::utf8:
            utf8 = units_of<char>(bytes);
            break;
        case Encoding::utf16le:
            utf8 = converted(utf16_to_utf8, units_of<unsigned short>(bytes), mark);
            break;
        case Encoding::utf32le:
            utf8 = converted(ucs4_to_utf8, units_of<unsigned>(bytes), mark);
            break;
    }
    switch (to_) {
        case Encoding::utf8:
            if (from_ != Encoding::utf8) break;
            return bytes_of(
                converted(ucs4_to_utf8, converted(utf8_to_ucs4, utf8, replacement_), '\0'));
        case Encoding::utf16le:
            return bytes_of(
                converted(utf8_to_utf16, utf8, static_cast<unsigned short>(replacement_)));
        case Encoding::utf32le:
            return bytes_of(converted(utf8_to_ucs4, utf8, replacement_));
    }
    return bytes_of(utf8);
}

}  // namespace tarv
