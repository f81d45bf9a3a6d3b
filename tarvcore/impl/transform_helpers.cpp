#include "tarvcore/impl/transform_helpers.h"

#include <utility>

#include "tarvcore/error_code_constants.h"
#include "tarvcore/error_exception.h"
#include "tarvcore/impl/transform_tables.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/impl/transform_helpers.cpp#1 $");

namespace tarvcore::impl {
namespace {

// Out of range where the code is negative, too.
unsigned char value_of(const ValueTable& table, int c) {
    const auto code = static_cast<unsigned>(c);
    return code < table.size() ? table[code] : invalid_mark;
}

}  // namespace

constinit const char* const TransformHelperBase64::sm_fromBinaryTable = base64_alphabet;
constinit const ValueTable TransformHelperBase64::sm_toBinaryTable = base64_values;

void TransformHelperBase64::check_padding_char(int c) {
    if (value_of(sm_toBinaryTable, c) != padding_mark) throw_error(error(TransformFault::padding));
}

void TransformHelperBase64::raise_invalid_character_error() {
    throw_error(error(TransformFault::invalid_character));
}

void TransformHelperBase64::raise_truncated_sequence_error() {
    throw_error(error(TransformFault::truncated_sequence));
}

// A fault has one record, whether it is raised or answered: the raiser's name stands in both.
TARVCORE_COLD ErrorInfo::Ptr TransformHelperBase64::error(TransformFault fault) {
    if (fault == TransformFault::invalid_character) {
        return ErrorInfo::create(
            error::tarvcore_transforms_base64_invalid, "Invalid character in base-64 sequence",
            TARVCORE_LOCATION(
                "tarvcore::impl::TransformHelperBase64::raise_invalid_character_error()"));
    }
    if (fault == TransformFault::truncated_sequence) {
        return ErrorInfo::create(
            error::tarvcore_transforms_base64_truncated, "Truncated base-64 sequence",
            TARVCORE_LOCATION(
                "tarvcore::impl::TransformHelperBase64::raise_truncated_sequence_error()"));
    }
    return ErrorInfo::create(
        error::tarvcore_transforms_base64_padding,
        "Encountered non-padding character in padding of base-64 sequence",
        TARVCORE_LOCATION("tarvcore::impl::TransformHelperBase64::check_padding_char()"));
}

constinit const char* const TransformHelperBase32::sm_fromBinaryTable = base32_alphabet;
constinit const int TransformHelperBase32::sm_padcountTable[5] = {0, 4, 1, 6, 3};

void TransformHelperBase32::raise_invalid_character_error() {
    throw_error(error(TransformFault::invalid_character));
}

void TransformHelperBase32::raise_truncated_sequence_error() {
    throw_error(error(TransformFault::truncated_sequence));
}

void TransformHelperBase32::raise_padding_error() {
    throw_error(error(TransformFault::padding));
}

// A fault has one record, whether it is raised or answered: the raiser's name stands in both.
TARVCORE_COLD ErrorInfo::Ptr TransformHelperBase32::error(TransformFault fault) {
    if (fault == TransformFault::invalid_character) {
        return ErrorInfo::create(
            error::tarvcore_transforms_base32_invalid, "Invalid character in base-32 sequence",
            TARVCORE_LOCATION(
                "tarvcore::impl::TransformHelperBase32::raise_invalid_character_error()"));
    }
    if (fault == TransformFault::truncated_sequence) {
        return ErrorInfo::create(
            error::tarvcore_transforms_base32_truncated, "Truncated base-32 sequence",
            TARVCORE_LOCATION(
                "tarvcore::impl::TransformHelperBase32::raise_truncated_sequence_error()"));
    }
    return ErrorInfo::create(
        error::tarvcore_transforms_base32_padding,
        "Encountered non-padding character in padding of base-32 sequence",
        TARVCORE_LOCATION("tarvcore::impl::TransformHelperBase32::raise_padding_error()"));
}

constinit const char* const TransformHelperHex::sm_fromBinaryTable = hex_alphabet;

unsigned char TransformHelperHex::nibble_from_charval(int c) {
    const unsigned char nibble = value_of(hex_values, c);
    if (nibble == invalid_mark) raise_invalid_character_error();
    return nibble;
}

void TransformHelperHex::raise_invalid_character_error() {
    throw_error(error(TransformFault::invalid_character));
}

void TransformHelperHex::raise_truncated_sequence_error() {
    throw_error(error(TransformFault::truncated_sequence));
}

// A fault has one record, whether it is raised or answered: the raiser's name stands in both.
TARVCORE_COLD ErrorInfo::Ptr TransformHelperHex::error(TransformFault fault) {
    if (fault == TransformFault::invalid_character) {
        return ErrorInfo::create(
            error::tarvcore_transforms_hex_invalid,
            "Invalid character in hex sequence, expecting: 0-9a-fA-F",
            TARVCORE_LOCATION(
                "tarvcore::impl::TransformHelperHex::raise_invalid_character_error()"));
    }
    return ErrorInfo::create(
        error::tarvcore_transforms_hex_truncated,
        "Truncated hex sequence (odd number of hex characters)",
        TARVCORE_LOCATION("tarvcore::impl::TransformHelperHex::raise_truncated_sequence_error()"));
}

}  // namespace tarvcore::impl
