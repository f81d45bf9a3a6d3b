#include "tarvcore/impl/base32_codec.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/impl/base32_codec.cpp#1 $");

namespace tarvcore::impl {

char* Base32Codec::encode(const unsigned char* bytes, unsigned size, char* text, bool pad) {
    return encode_last_group<Base32Codec>(bytes, size, text, pad);
}

unsigned Base32Codec::decode_groups(const char* text, unsigned length, unsigned char* bytes) {
    unsigned decoded = 0;
    for (; length - decoded >= chars_per_group; decoded += chars_per_group) {
        unsigned long long group = 0;
        for (unsigned i = 0; i < chars_per_group; ++i) {
            const unsigned code = static_cast<unsigned char>(text[decoded + i]);
            const unsigned value = code < 0x80 ? value_of(code) : invalid_mark;
            if (value >= padding_mark) return decoded;
            group = group << bits_per_char | value;
        }
        for (unsigned i = bytes_per_group; i-- > 0;)
            *bytes++ = static_cast<unsigned char>(group >> (8 * i));
    }
    return decoded;
}

TransformProgress Base32Codec::decode(const char* text, unsigned length, unsigned char* bytes,
                                      bool require_padding) {
    return decode_in_memory<Base32Codec>(text, length, bytes, require_padding);
}

}  // namespace tarvcore::impl
