// Hexadecimal digits for memory; see transform_frame.h.
#pragma once

#include "tarvcore/config.h"
#include "tarvcore/impl/transform_frame.h"
#include "tarvcore/impl/transform_helpers.h"
#include "tarvcore/impl/transform_tables.h"

namespace tarvcore::impl {

struct HexCodec {
    using Helper = TransformHelperHex;

    static constexpr unsigned bits_per_char = 4;
    static constexpr unsigned bytes_per_group = 1;
    static constexpr unsigned chars_per_group = 2;
    static constexpr bool has_padding = false;
    static constexpr const char* alphabet = hex_alphabet;

    static constexpr unsigned value_of(unsigned code) { return hex_values[code]; }

    TARVCORE_API static char* encode(const unsigned char* bytes, unsigned size, char* text,
                                     bool pad);
    TARVCORE_API static unsigned decode_groups(const char* text, unsigned length,
                                               unsigned char* bytes);
    TARVCORE_API static TransformProgress decode(const char* text, unsigned length,
                                                 unsigned char* bytes, bool require_padding);
};

}  // namespace tarvcore::impl
