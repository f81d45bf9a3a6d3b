// What bulk conversions must come to, character by character.
#pragma once

#include <tuple>
#include <vector>

#include "tarvcore/impl/unicode_kernels.h"
#include "tests/support/unicode_oracle.h"

namespace tarv_test {

using tarvcore::impl::ConversionStatus;
using tarvcore::impl::Progress;

// One of the bulk conversions.
template <class SourceUnit, class Unit>
using Conversion = Progress(const SourceUnit*, unsigned, Unit*, unsigned);

// To compare, and to print.
inline auto fields(const Progress& progress) {
    return std::tuple(progress.read, progress.written, static_cast<int>(progress.status));
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

}  // namespace tarv_test
