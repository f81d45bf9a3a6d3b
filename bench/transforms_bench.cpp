#include "tarvcore/transforms.h"

#include <absl/strings/escaping.h>
#include <boost/algorithm/hex.hpp>
#include <boost/beast/core/detail/base64.hpp>

#include <random>
#include <string>

#include "bench/support/row.h"
#include "bench/topics.h"
#include "tarvcore/impl/simd_level.h"

namespace tarv_bench {
namespace {

using tarvcore::Base32Transform;
using tarvcore::Base64Transform;
using tarvcore::HexTransform;
using tarvcore::impl::SimdLevel;

// Random bytes and their text; results go to the buffers.
struct Sample {
    std::string bytes;
    std::string text;
    std::string bytes_buffer;
    std::string text_buffer;
};

template <class Transform>
Sample make_sample(unsigned size) {
    std::mt19937 random(size);
    Sample sample;
    sample.bytes.resize(size);
    for (char& byte : sample.bytes)
        byte = static_cast<char>(random());
    sample.text = Transform::encode(sample.bytes);
    sample.bytes_buffer.resize(Transform::max_decoded_size(sample.text.size()));
    sample.text_buffer.resize(sample.text.size());
    return sample;
}

// One way to do both operations for one encoding.

template <class TransformType, SimdLevel highest = SimdLevel::avx2>
struct Ours {
    using Transform = TransformType;
    static constexpr SimdLevel level = highest;
    static void encode(Sample& s) {
        Transform::encode(s.bytes.begin(), s.bytes.end(), s.text_buffer.begin());
    }
    static void decode(Sample& s) {
        Transform::decode(s.text.begin(), s.text.end(), s.bytes_buffer.begin());
    }
};

struct AbslBase64 {
    using Transform = Base64Transform;
    static constexpr SimdLevel level = SimdLevel::avx2;
    static void encode(Sample& s) { absl::Base64Escape(s.bytes, &s.text_buffer); }
    static void decode(Sample& s) { absl::Base64Unescape(s.text, &s.bytes_buffer); }
};

struct BeastBase64 {
    using Transform = Base64Transform;
    static constexpr SimdLevel level = SimdLevel::avx2;
    static void encode(Sample& s) {
        boost::beast::detail::base64::encode(s.text_buffer.data(), s.bytes.data(), s.bytes.size());
    }
    static void decode(Sample& s) {
        boost::beast::detail::base64::decode(s.bytes_buffer.data(), s.text.data(), s.text.size());
    }
};

struct AbslHex {
    using Transform = HexTransform;
    static constexpr SimdLevel level = SimdLevel::avx2;
    static void encode(Sample& s) { s.text_buffer = absl::BytesToHexString(s.bytes); }
    // Takes anything for a digit.
    static void decode(Sample& s) { s.bytes_buffer = absl::HexStringToBytes(s.text); }
};

struct BoostHex {
    using Transform = HexTransform;
    static constexpr SimdLevel level = SimdLevel::avx2;
    static void encode(Sample& s) {
        boost::algorithm::hex_lower(s.bytes.begin(), s.bytes.end(), s.text_buffer.begin());
    }
    static void decode(Sample& s) {
        boost::algorithm::unhex(s.text.begin(), s.text.end(), s.bytes_buffer.begin());
    }
};

template <class Way, unsigned size>
void encode(benchmark::State& state) {
    Sample sample = make_sample<typename Way::Transform>(size);
    tarvcore::impl::force_simd_level(Way::level);
    measure(state, [&] {
        Way::encode(sample);
        keep(sample.text_buffer[0]);
    });
    tarvcore::impl::force_simd_level(SimdLevel::avx2);
    require(sample.text_buffer == sample.text, "encoded text");
}

template <class Way, unsigned size>
void decode(benchmark::State& state) {
    Sample sample = make_sample<typename Way::Transform>(size);
    tarvcore::impl::force_simd_level(Way::level);
    measure(state, [&] {
        Way::decode(sample);
        keep(sample.bytes_buffer[0]);
    });
    tarvcore::impl::force_simd_level(SimdLevel::avx2);
    require(sample.bytes_buffer.compare(0, size, sample.bytes) == 0, "decoded bytes");
}

constexpr unsigned large = 65536;

}  // namespace

void add_transforms_rows() {
    using Base64 = Ours<Base64Transform>;
    using Base64Ssse3 = Ours<Base64Transform, SimdLevel::ssse3>;
    using Base64Sse2 = Ours<Base64Transform, SimdLevel::sse2>;
    add_row("Base64: encode 64 B", "0.4 x",
            {{"tarvcore", encode<Base64, 64>},
             {"absl", encode<AbslBase64, 64>},
             {"boost::beast", encode<BeastBase64, 64>}});
    add_row("Base64: decode 64 B", "0.4 x",
            {{"tarvcore", decode<Base64, 64>},
             {"absl", decode<AbslBase64, 64>},
             {"boost::beast", decode<BeastBase64, 64>}});
    add_row("Base64: encode 64 KiB", "0.13 x",
            {{"tarvcore", encode<Base64, large>},
             {"absl", encode<AbslBase64, large>},
             {"boost::beast", encode<BeastBase64, large>}});
    add_row("Base64: decode 64 KiB", "0.13 x",
            {{"tarvcore", decode<Base64, large>},
             {"absl", decode<AbslBase64, large>},
             {"boost::beast", decode<BeastBase64, large>}});
    add_row("Base64: encode 64 KiB, SSSE3", "7000 ns", {{"tarvcore", encode<Base64Ssse3, large>}});
    add_row("Base64: decode 64 KiB, SSSE3", "6700 ns", {{"tarvcore", decode<Base64Ssse3, large>}});
    // What others measure: a text of 64 KiB.
    add_row("Base64: decode 48 KiB, SSSE3", "5850 ns",
            {{"tarvcore", decode<Base64Ssse3, large / 4 * 3>}});
    add_row("Base64: decode 48 KiB", "4030 ns", {{"tarvcore", decode<Base64, large / 4 * 3>}});
    add_row("Base64: decode 48 KiB, SSE2", "15300 ns",
            {{"tarvcore", decode<Base64Sse2, large / 4 * 3>}});
    add_row("Base64: encode 64 KiB, SSE2", "10600 ns",
            {{"tarvcore", encode<Base64Sse2, large>},
             {"absl", encode<AbslBase64, large>},
             {"boost::beast", encode<BeastBase64, large>}});
    add_row("Base64: decode 64 KiB, SSE2", "0.6 x",
            {{"tarvcore", decode<Base64Sse2, large>},
             {"absl", decode<AbslBase64, large>},
             {"boost::beast", decode<BeastBase64, large>}});

    // Of Base32 there is no peer at hand; the goals are half of what one of pair tables takes.
    using Base32 = Ours<Base32Transform>;
    add_row("Base32: encode 64 B", "18 ns", {{"tarvcore", encode<Base32, 64>}});
    add_row("Base32: decode 64 B", "39 ns", {{"tarvcore", decode<Base32, 64>}});
    add_row("Base32: encode 64 KiB", "17000 ns", {{"tarvcore", encode<Base32, large>}});
    add_row("Base32: decode 64 KiB", "32000 ns", {{"tarvcore", decode<Base32, large>}});
    using Base32Sse2 = Ours<Base32Transform, SimdLevel::sse2>;
    add_row("Base32: encode 64 KiB, SSE2", "25600 ns", {{"tarvcore", encode<Base32Sse2, large>}});
    add_row("Base32: decode 64 KiB, SSE2", "46000 ns", {{"tarvcore", decode<Base32Sse2, large>}});

    using Hex = Ours<HexTransform>;
    using HexSse2 = Ours<HexTransform, SimdLevel::sse2>;
    add_row("hex: encode 64 B", "0.2 x",
            {{"tarvcore", encode<Hex, 64>},
             {"absl", encode<AbslHex, 64>},
             {"boost::algorithm", encode<BoostHex, 64>}});
    add_row("hex: decode 64 B", "0.15 x",
            {{"tarvcore", decode<Hex, 64>},
             {"absl", decode<AbslHex, 64>},
             {"boost::algorithm", decode<BoostHex, 64>}});
    add_row("hex: encode 64 KiB", "0.1 x",
            {{"tarvcore", encode<Hex, large>},
             {"absl", encode<AbslHex, large>},
             {"boost::algorithm", encode<BoostHex, large>}});
    add_row("hex: decode 64 KiB", "0.18 x",
            {{"tarvcore", decode<Hex, large>},
             {"absl", decode<AbslHex, large>},
             {"boost::algorithm", decode<BoostHex, large>}});
    add_row("hex: encode 64 KiB, SSE2", "0.2 x",
            {{"tarvcore", encode<HexSse2, large>},
             {"absl", encode<AbslHex, large>},
             {"boost::algorithm", encode<BoostHex, large>}});
    add_row("hex: decode 64 KiB, SSE2", "0.3 x",
            {{"tarvcore", decode<HexSse2, large>},
             {"absl", decode<AbslHex, large>},
             {"boost::algorithm", decode<BoostHex, large>}});
}

}  // namespace tarv_bench
