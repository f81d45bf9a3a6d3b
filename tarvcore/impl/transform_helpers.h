// The tables and the errors of the binary-to-text transforms, one class an encoding.
#pragma once

#include "tarvcore/config.h"
#include "tarvcore/error_info.h"
#include "tarvcore/impl/transform_tables.h"

namespace tarvcore::impl {

// What is wrong with a text.
enum class TransformFault { none, invalid_character, truncated_sequence, padding };

// `error` answers the record that is raised for a fault, which must be one of the encoding.

class TARVCORE_API TransformHelperBase64 {
public:
    static const char* const sm_fromBinaryTable;
    // By character code: the value in either alphabet, 128 for the padding character, else 0xFF.
    static const ValueTable sm_toBinaryTable;

    // Raises unless `c` is the padding character.
    static void check_padding_char(int c);
    [[noreturn]] static void raise_invalid_character_error();
    [[noreturn]] static void raise_truncated_sequence_error();

    static ErrorInfo::Ptr error(TransformFault fault);
};

class TARVCORE_API TransformHelperBase32 {
public:
    static const char* const sm_fromBinaryTable;
    // By the number of bits left over after the last whole group of five: how many padding
    // characters complete the text.
    static const int sm_padcountTable[5];

    [[noreturn]] static void raise_invalid_character_error();
    [[noreturn]] static void raise_truncated_sequence_error();
    [[noreturn]] static void raise_padding_error();

    static ErrorInfo::Ptr error(TransformFault fault);
};

class TARVCORE_API TransformHelperHex {
public:
    static const char* const sm_fromBinaryTable;

    // The value of a digit of either case; raises what is none.
    static unsigned char nibble_from_charval(int c);
    [[noreturn]] static void raise_invalid_character_error();
    [[noreturn]] static void raise_truncated_sequence_error();

    static ErrorInfo::Ptr error(TransformFault fault);
};

}  // namespace tarvcore::impl
