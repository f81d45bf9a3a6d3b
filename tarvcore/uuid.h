// 128-bit identifiers.
#pragma once

#include <bit>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>

#include "tarvcore/config.h"
#include "tarvcore/impl/equal_16_bytes.h"

struct _GUID;  // of Windows; its users include <windows.h>

namespace tarvcore {

// An identifier of 16 bytes, laid out as the GUID of Windows: Data1 (bytes 0 to 3), Data2 (4 and 5)
// and Data3 (6 and 7) are little-endian numbers, bytes 8 to 15 stand as they are.  The upper half
// of byte 7 is the version.  The null identifier, of zeros, is the default.
//
// Identifiers are plain values: distinct ones may be used by different threads, and every
// `create_…` by all at once.  What is random here is not secret (see random.h).
//
//     const Uuid id = Uuid::create_random();
//     log << id;                                            // 7c9e6679-7425-40de-944b-e07fc1f90ae7
//     if (Uuid other; Uuid::from_string_nothrow(text, &other) && other == id) ...
class TARVCORE_API Uuid {
public:
    // Others may occur in identifiers from elsewhere.
    enum EVersion : unsigned {
        version_time_based = 1,
        version_random = 4,
        version_legacy_interaction = 12,
        version_sequential = 13,
    };
    // The forms of the text.
    enum EFormat : unsigned {
        format_hyphenated = 0,  // 7c9e6679-7425-40de-944b-e07fc1f90ae7
        format_plain = 1,       // 7c9e6679742540de944be07fc1f90ae7
        format_braced = 2,      // {7c9e6679-7425-40de-944b-e07fc1f90ae7}
    };
    // Characters of the longest form.
    static constexpr unsigned max_text_length = 38;

    // The stored bytes.
    struct BinaryData {
        unsigned char bytes[16];  // in the order of memory

        // Always 16.
        static constexpr unsigned size() { return 16; }
    };
    // What tells the makers of time-based identifiers apart.
    struct NodeAddress {
        unsigned char bytes[6];  // of the identifier's end
    };

    constexpr Uuid() = default;
    // Those bytes, whatever they are.
    constexpr explicit Uuid(const BinaryData& data) : data_(data) {}
    // Those bytes with the version and the variant (binary 10 on top of byte 8) put in.
    Uuid(const BinaryData& data, EVersion version);
    // From the fields of a time-based identifier: 60 bits of the timestamp, 14 of the sequence.
    Uuid(EVersion version, unsigned short sequence, const NodeAddress& node,
         std::uint64_t timestamp);
    // With `flags` in the eight bits below the version; 52 bits of the timestamp.
    Uuid(EVersion version, unsigned short sequence, const NodeAddress& node,
         std::uint64_t timestamp, unsigned char flags);

    // The same bytes.
    static Uuid from_windows_guid(const ::_GUID& guid);
    ::_GUID as_windows_guid() const;

    // Version 4.  With flags, those are in the eight bits below the version.
    static Uuid create_random();
    static Uuid create_random(unsigned char flags);

    // Version 13: the time in nanoseconds since 1970 in front, less its last eight bits, then bits
    // that the process has drawn, and a counter.  No two are the same; those that the process makes
    // sort by time, and where the time shows the same, in the order in which they were made, unless
    // the clock is set back.
    static Uuid create_sequential();

    // Version 12: the decimal digits of a 32-bit number in the last five bytes, the flags before
    // them.  The rest is random, and zero in an unresolved one.
    static Uuid create_legacy_interaction_id(unsigned id, unsigned char flags = 0);
    static Uuid create_unresolved_legacy_interaction_id(unsigned id, unsigned char flags = 0);

    // 32, 36 or 38 characters in one of the forms, digits of either case; nothing before, between
    // and behind them.  Without a length, up to the terminator.  The raising ones raise
    // "error.tarvcore.uuid.parse".  The others leave `*uuid` untouched where they fail; with a null
    // pointer they only tell whether the text is good.
    static Uuid from_string(const char* text);
    static Uuid from_string(const char* text, unsigned length);
    static Uuid from_string(std::string_view text) { return from_string(text.data(), text.size()); }
    [[nodiscard]] static bool from_string_nothrow(const char* text, Uuid* uuid);
    [[nodiscard]] static bool from_string_nothrow(const char* text, unsigned length, Uuid* uuid);
    [[nodiscard]] static bool from_string_nothrow(std::string_view text, Uuid* uuid) {
        return from_string_nothrow(text.data(), text.size(), uuid);
    }

    // Lower-case digits.
    std::string as_string(EFormat format = format_hyphenated) const;
    // The same into a buffer, without a terminator; answers the end of the text, which has 36, 32
    // or 38 characters.
    char* write_text(char* text, EFormat format = format_hyphenated) const;

    bool is_null() const { return (word(0) | word(1) | word(2) | word(3)) == 0; }
    void clear() { *this = Uuid(); }
    void swap(Uuid& other) noexcept { std::swap(data_, other.data_); }

    // The upper half of byte 7, whatever it is.
    EVersion version() const { return static_cast<EVersion>(byte(7) >> 4); }
    // The eight bits below the version.
    unsigned char custom_flags() const {
        return static_cast<unsigned char>(byte(7) << 4 | byte(6) >> 4);
    }
    // 14 bits.
    unsigned short sequence() const {
        return static_cast<unsigned short>((byte(8) & 0x3F) << 8 | byte(9));
    }
    // 60 bits: those given at construction, with custom flags among them.  Of a sequential
    // identifier: the lower 60 of the 64 bits of its time, in which byte 7 (version and all) stands
    // for the last eight.
    std::uint64_t timestamp() const;
    // The last six bytes, and all of them.
    void get_node_address(NodeAddress& node) const { std::memcpy(node.bytes, &data_.bytes[10], 6); }
    void get_binary_data(BinaryData& data) const { data = data_; }

    // 0 and false for all but version 12.  That the digits are decimal is not checked.
    unsigned legacy_interaction_id() const;
    unsigned char legacy_interaction_id_flags() const;
    bool is_unresolved_legacy_interaction_id() const;

    // Copy the stored bytes; answer their number, 16.  With a null pointer, that is all they do.
    unsigned write_binary(unsigned char* bytes) const;
    static unsigned read_binary(const unsigned char* bytes, Uuid& uuid);

    // The four words, joined by exclusive or.
    std::uint32_t hash() const { return word(0) ^ word(1) ^ word(2) ^ word(3); }

    friend bool operator==(const Uuid& a, const Uuid& b) {
        return impl::equal_16_bytes(a.data_.bytes, b.data_.bytes);
    }
    // By the stored bytes, the first that differs: not the order of the texts.
    friend std::strong_ordering operator<=>(const Uuid& a, const Uuid& b) {
        for (unsigned i = 0; i < 3; ++i) {
            if (a.word(i) != b.word(i)) return big_endian(a.word(i)) <=> big_endian(b.word(i));
        }
        return big_endian(a.word(3)) <=> big_endian(b.word(3));
    }

    // The order of the texts.
    struct StringLess {
        // Whether `a` comes before `b`.
        bool operator()(const Uuid& a, const Uuid& b) const {
            if (a.word(0) != b.word(0)) return a.word(0) < b.word(0);
            if (a.word(1) != b.word(1)) return std::rotl(a.word(1), 16) < std::rotl(b.word(1), 16);
            if (a.word(2) != b.word(2)) return big_endian(a.word(2)) < big_endian(b.word(2));
            return big_endian(a.word(3)) < big_endian(b.word(3));
        }
    };

    // Prints in a given form.
    class Trace;

    // Hyphenated.
    friend TARVCORE_API std::ostream& operator<<(std::ostream& os, const Uuid& uuid);

private:
    unsigned byte(unsigned i) const { return data_.bytes[i]; }
    std::uint32_t word(unsigned i) const {
        std::uint32_t value;
        std::memcpy(&value, &data_.bytes[i * 4], sizeof value);
        return value;
    }
    void set_word(unsigned i, std::uint32_t value) {
        std::memcpy(&data_.bytes[i * 4], &value, sizeof value);
    }
    static constexpr std::uint32_t big_endian(std::uint32_t word) {
        return __builtin_bswap32(word);
    }
    void set_version(unsigned version);

    alignas(4) BinaryData data_ = {};
};

static_assert(sizeof(Uuid) == 16);

// Prints an identifier in a given form.
class Uuid::Trace {
public:
    // Keeps a copy.
    Trace(const Uuid& uuid, EFormat format) : uuid_(uuid), format_(format) {}

    friend TARVCORE_API std::ostream& operator<<(std::ostream& os, const Trace& trace);

private:
    Uuid uuid_;
    EFormat format_;
};

}  // namespace tarvcore

template <>
struct std::hash<tarvcore::Uuid> {
    std::size_t operator()(const tarvcore::Uuid& uuid) const noexcept { return uuid.hash(); }
};
