// Every conversion of Unicode, at every level of instructions, beside the slow oracle.
#include <algorithm>
#include <cstring>
#include <vector>

#include "tarvcore/ucsutil.h"
#include "tests/fuzz/targets.h"
#include "tests/support/conversion_oracle.h"
#include "tests/support/simd_levels.h"

namespace tarv_fuzz {
namespace {

using namespace tarv_test;
using namespace tarvcore;

// The input's bytes as units, in memory that ends where they do.
template <class Unit>
std::vector<Unit> units_of(Input input) {
    std::vector<Unit> units(input.size() / sizeof(Unit));
    if (!units.empty()) std::memcpy(units.data(), input.data(), units.size() * sizeof(Unit));
    return units;
}

template <class Unit, class SourceUnit>
void check_bulk(Conversion<SourceUnit, Unit> convert, const std::vector<SourceUnit>& source,
                unsigned missing) {
    std::vector<Unit> whole;
    const unsigned needed = expected_progress(source, 0xFFFFFFFF, whole).written;
    const unsigned capacity = needed - std::min(needed, missing);
    std::vector<Unit> expected;
    const auto progress = fields(expected_progress(source, capacity, expected));
    at_each_level([&](SimdLevel) {
        // Memory of its own, so that the checkers see its end.
        std::vector<Unit> room(capacity + (capacity == 0));
        require(fields(convert(source.data(), source.size(), room.data(), capacity)) == progress,
                "a conversion's progress");
        require(std::equal(expected.begin(), expected.end(), room.begin()), "a conversion's units");
        require(fields(convert(source.data(), source.size(), nullptr, capacity)) == progress,
                "a count's progress");
    });
}

unsigned units_to_skip(const Bytes& source, unsigned at) {
    const auto is_continuation = [](char byte) { return (byte & 0xC0) == 0x80; };
    return std::find_if_not(source.begin() + at + 1, source.end(), is_continuation) -
           (source.begin() + at);
}
unsigned units_to_skip(const Units16& source, unsigned at) {
    return source[at] / 0x400 == 0x36 && at + 1 < source.size() ? 2 : 1;
}
unsigned units_to_skip(const Units32&, unsigned) {
    return 1;
}

// One of the functions for whole strings, with a replacement.
template <class Unit, class SourceUnit>
void check_whole(unsigned function(const SourceUnit*, unsigned, Unit*, unsigned, Unit, int*),
                 const std::vector<SourceUnit>& source) {
    constexpr Unit replacement = '?';
    std::vector<Unit> expected;
    int first_bad = -1;
    for (unsigned read = 0; read < source.size();) {
        const unsigned written = expected.size();
        const OracleCharacter decoded = oracle_decode(source, read);
        if (decoded.units != 0) oracle_encode(decoded.code_point, expected);
        if (expected.size() != written) {
            read += decoded.units;
            continue;
        }
        if (first_bad == -1) first_bad = static_cast<int>(read);
        expected.push_back(replacement);
        read += units_to_skip(source, read);
    }
    int index = 0;
    const unsigned count = function(source.data(), source.size(), nullptr, 0, replacement, &index);
    require(count == expected.size() && index == first_bad, "a count with replacements");
    std::vector<Unit> units(count + (count == 0));
    require(function(source.data(), source.size(), units.data(), count, replacement, nullptr) ==
                    count &&
                std::equal(expected.begin(), expected.end(), units.begin()),
            "a conversion with replacements");
}

}  // namespace

void run_unicode(Input input) {
    const unsigned missing = take_byte(input) % 8;
    const auto utf8 = units_of<char>(input);
    const auto utf16 = units_of<std::uint16_t>(input);
    const auto ucs4 = units_of<std::uint32_t>(input);
    check_bulk(impl::convert_utf8_to_utf16, utf8, missing);
    check_bulk(impl::convert_utf8_to_ucs4, utf8, missing);
    check_bulk(impl::convert_utf16_to_utf8, utf16, missing);
    check_bulk(impl::convert_ucs4_to_utf8, ucs4, missing);
    check_whole(utf8_to_utf16, utf8);
    check_whole(utf8_to_ucs4, utf8);
    check_whole(utf16_to_utf8, utf16);
    check_whole(ucs4_to_utf8, ucs4);

    Units32 decoded;
    const bool valid = expected_progress(utf8, 0xFFFFFFFF, decoded).read == utf8.size();
    at_each_level([&](SimdLevel) {
        require(is_valid_utf8(utf8.data(), utf8.size()) == valid, "validation");
    });
}

}  // namespace tarv_fuzz
