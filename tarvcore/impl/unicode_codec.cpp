#include "tarvcore/impl/unicode_codec.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/impl/unicode_codec.cpp#1 $");

namespace tarvcore::impl {

unsigned encode_utf8(std::uint32_t c, char* destination) {
    if (c < 0x80) {
        destination[0] = static_cast<char>(c);
        return 1;
    }
    if (is_forbidden_code_point(c) || c > 0x7FFFFFFF) return 0;

    const unsigned length = c < 0x800       ? 2
                            : c < 0x10000   ? 3
                            : c < 0x200000  ? 4
                            : c < 0x4000000 ? 5
                                            : 6;
    for (unsigned i = length; --i > 0; c >>= 6) {
        destination[i] = static_cast<char>(0x80 | (c & 0x3F));
    }
    // The lead byte has as many high bits set as the sequence has bytes.
    destination[0] = static_cast<char>((0xFF00u >> length) | c);
    return length;
}

std::string utf16_to_utf8_replacing(const wchar_t* text, unsigned length, char replacement,
                                    unsigned enough) {
    std::string utf8;
    for (unsigned i = 0; i < length && utf8.size() <= enough;) {
        char sequence[max_utf8_sequence_length];
        const DecodedCharacter decoded = decode_utf16(text + i, length - i);
        if (decoded.units == 0) {
            utf8 += replacement;
            i += utf16_units_to_skip(text + i, length - i);
        } else {
            utf8.append(sequence, encode_utf8(decoded.code_point, sequence));
            i += decoded.units;
        }
    }
    return utf8;
}

}  // namespace tarvcore::impl
