// Base32 for memory; see transform_frame.h.
#pragma once

#include "tarvcore/config.h"
#include "tarvcore/impl/transform_frame.h"
#include "tarvcore/impl/transform_helpers.h"
#include "tarvcore/impl/transform_tables.h"

namespace tarvcore::impl {

struct Base32Codec {
    using Helper = TransformHelperBase32;

    static constexpr unsigned bits_per_char = 5;
    static constexpr unsigned bytes_per_group = 5;
    static constexpr unsigned chars_per_group = 8;
    static constexpr bool has_padding = true;
    static constexpr const char* alphabet = base32_alphabet;

    static constexpr unsigned value_of(unsigned code) { return base32_values[code]; }
    static unsigned padding_count(unsigned bits) {
        return static_cast<unsigned>(Helper::sm_padcountTable[bits]);
    }

    TARVCORE_API static char* encode(const unsigned char* bytes, unsigned size, char* text,
                                     bool pad);
    TARVCORE_API static unsigned decode_groups(const char* text, unsigned length,
                                               unsigned char* bytes);
    TARVCORE_API static TransformProgress decode(const char* text, unsigned length,
                                                 unsigned char* bytes, bool require_padding);
};

}  // namespace tarvcore::impl
