// The text of identifiers.
#pragma once

#include "tarvcore/config.h"
#include "tarvcore/uuid.h"

namespace tarvcore::impl {

constexpr unsigned uuid_text_length(Uuid::EFormat format) {
    return format == Uuid::format_plain ? 32 : format == Uuid::format_braced ? 38 : 36;
}

// Answers the end of what it has written; what is no format is hyphenated.
char* write_uuid(const Uuid::BinaryData& data, Uuid::EFormat format, char* text);

// Whether the text is one of the forms; else `data` is left alone.
bool parse_uuid(const char* text, unsigned length, Uuid::BinaryData& data);

}  // namespace tarvcore::impl
