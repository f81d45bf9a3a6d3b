#include "tarvcore/uuid.h"

#include "tarvcore/error_code_constants.h"
#include "tarvcore/error_exception.h"
//
#include <windows.h>

TARVCORE_SOURCE_FILE("$Id: //tarvcore/uuid.cpp#1 $");

namespace tarvcore {
namespace {

static_assert(sizeof(GUID) == sizeof(Uuid) && alignof(GUID) == alignof(Uuid));

constexpr std::uint32_t high_word(std::uint64_t value) {
    return static_cast<std::uint32_t>(value >> 32);
}

[[noreturn]] TARVCORE_COLD void throw_parse_error() {
    throw_error(error::tarvcore_uuid_parse, "Failed to parse UUID from string",
                TARVCORE_LOCATION("tarvcore::Uuid::from_string()"));
}

}  // namespace

Uuid::Uuid(const BinaryData& data, EVersion version) : data_(data) {
    set_version(version);
}

Uuid::Uuid(EVersion version, unsigned short sequence, const NodeAddress& node,
           std::uint64_t timestamp) {
    set_word(0, static_cast<std::uint32_t>(timestamp));
    set_word(1, (version << 28) | (high_word(timestamp) & 0x0FFFFFFF));
    data_.bytes[8] = static_cast<unsigned char>((sequence >> 8 & 0x3F) | 0x80);
    data_.bytes[9] = static_cast<unsigned char>(sequence);
    std::memcpy(&data_.bytes[10], node.bytes, sizeof node.bytes);
}

Uuid::Uuid(EVersion version, unsigned short sequence, const NodeAddress& node,
           std::uint64_t timestamp, unsigned char flags)
    : Uuid(version, sequence, node, timestamp) {
    set_word(1, (version << 28) | std::uint32_t{flags} << 20 | (high_word(timestamp) & 0xFFFFF));
}

void Uuid::set_version(unsigned version) {
    data_.bytes[7] = static_cast<unsigned char>((byte(7) & 0x0F) | version << 4);
    data_.bytes[8] = static_cast<unsigned char>((byte(8) & 0x3F) | 0x80);
}

Uuid Uuid::from_windows_guid(const GUID& guid) {
    return std::bit_cast<Uuid>(guid);
}

GUID Uuid::as_windows_guid() const {
    return std::bit_cast<GUID>(*this);
}

Uuid Uuid::from_string(const char* text) {
    Uuid uuid;
    if (!from_string_nothrow(text, &uuid)) throw_parse_error();
    return uuid;
}

Uuid Uuid::from_string(const char* text, unsigned length) {
    Uuid uuid;
    if (!from_string_nothrow(text, length, &uuid)) throw_parse_error();
    return uuid;
}

std::uint64_t Uuid::timestamp() const {
    const bool sequential = version() == version_sequential;
    const std::uint64_t high = sequential ? big_endian(word(0)) : word(1);
    return (high & 0x0FFFFFFF) << 32 | (sequential ? big_endian(word(1)) : word(0));
}

unsigned Uuid::legacy_interaction_id() const {
    if (version() != version_legacy_interaction) return 0;
    unsigned id = 0;
    for (unsigned i = 11; i < 16; ++i)
        id = id * 100 + (byte(i) >> 4) * 10 + (byte(i) & 0x0F);
    return id;
}

unsigned char Uuid::legacy_interaction_id_flags() const {
    return version() == version_legacy_interaction ? data_.bytes[10] : 0;
}

bool Uuid::is_unresolved_legacy_interaction_id() const {
    return word(0) == 0 && word(1) == std::uint32_t{version_legacy_interaction} << 28 &&
           (byte(8) & 0x3F) == 0 && byte(9) == 0;
}

unsigned Uuid::write_binary(unsigned char* bytes) const {
    if (bytes != nullptr) std::memcpy(bytes, data_.bytes, sizeof data_.bytes);
    return BinaryData::size();
}

unsigned Uuid::read_binary(const unsigned char* bytes, Uuid& uuid) {
    if (bytes != nullptr) std::memcpy(uuid.data_.bytes, bytes, sizeof uuid.data_.bytes);
    return BinaryData::size();
}

}  // namespace tarvcore
