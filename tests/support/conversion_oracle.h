// What bulk conversions must come to, character by character.
#pragma once

#include <vector>

#include "tarvcore/impl/unicode_kernels.h"
#include "tests/support/unicode_oracle.h"

namespace tarv_test {

using tarvcore::impl::ConversionStatus;
using tarvcore::impl::Progress;
using tarvcore::impl::Utf16Unit;

// One conversion under any name.
inline Progress bulk_convert(const char* source, unsigned length, std::uint16_t* destination,
                             unsigned capacity) {
    return tarvcore::impl::convert_utf8_to_utf16(
        source, length, reinterpret_cast<Utf16Unit*>(destination), capacity);
}
inline Progress bulk_convert(const char* source, unsigned length, std::uint32_t* destination,
                             unsigned capacity) {
    return tarvcore::impl::convert_utf8_to_ucs4(source, length, destination, capacity);
}
inline Progress bulk_convert(const std::uint16_t* source, unsigned length, char* destination,
                             unsigned capacity) {
    return tarvcore::impl::convert_utf16_to_utf8(reinterpret_cast<const Utf16Unit*>(source), length,
                                                 destination, capacity);
}
inline Progress bulk_convert(const std::uint32_t* source, unsigned length, char* destination,
                             unsigned capacity) {
    return tarvcore::impl::convert_ucs4_to_utf8(source, length, destination, capacity);
}

// What a conversion must come to, and the units it must write.
template <class Unit, class SourceUnit>
Progress expected_progress(const std::vector<SourceUnit>& source, unsigned capacity,
                           std::vector<Unit>& destination) {
    unsigned read = 0;
    while (read < source.size()) {
        const auto written = static_cast<unsigned>(destination.size());
        const OracleCharacter decoded = oracle_decode(source, read);
        if (decoded.units == 0) return {read, written, ConversionStatus::invalid};
        oracle_encode(decoded.code_point, destination);
        if (destination.size() == written) return {read, written, ConversionStatus::unencodable};
        if (destination.size() > capacity) {
            destination.resize(written);
            return {read, written, ConversionStatus::full};
        }
        read += decoded.units;
    }
    return {read, static_cast<unsigned>(destination.size()), ConversionStatus::done};
}

inline bool same(const Progress& a, const Progress& b) {
    return a.read == b.read && a.written == b.written && a.status == b.status;
}

}  // namespace tarv_test
