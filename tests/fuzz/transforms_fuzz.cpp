// Binary-to-text transforms: round trips, and one answer whatever the instructions, the iterators
// and the pieces.
#include <algorithm>
#include <list>
#include <string>
#include <vector>

#include "tarvcore/error_exception.h"
#include "tarvcore/impl/simd_level.h"
#include "tarvcore/transforms.h"
#include "tests/fuzz/targets.h"

namespace tarv_fuzz {
namespace {

using namespace tarvcore;
using impl::SimdLevel;
using Bytes = std::vector<char>;

// A text's bytes; or, where it has none, the code of its error.
struct Decoded {
    std::string bytes;
    std::string fault;
    bool operator==(const Decoded&) const = default;
};

template <class Decode>
Decoded decoded(Decode decode) {
    try {
        return {decode(), ""};
    } catch (const ErrorException& e) {
        return {"", e.error()->code().as_string()};
    }
}

// The text as the encoder would have written it.
template <class Transform>
std::string canonical(std::string text) {
    for (char& c : text) {
        if constexpr (std::is_same_v<Transform, Base64Transform>)
            c = c == '-' ? '+' : c == '_' ? '/' : c;
        if constexpr (std::is_same_v<Transform, HexTransform>)
            c = c >= 'A' && c <= 'F' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return text;
}

template <class Transform>
void check_encoding(const Bytes& bytes, bool pad) {
    impl::force_simd_level(SimdLevel::sse2);
    const std::string text = Transform::encode(bytes, pad);
    for (const SimdLevel level : {SimdLevel::sse2, SimdLevel::ssse3, SimdLevel::avx2}) {
        impl::force_simd_level(level);
        Bytes room(text.size());
        const auto end = Transform::encode(bytes.begin(), bytes.end(), room.begin(), pad);
        require(std::equal(text.begin(), text.end(), room.begin(), end), "encoded text");
        require(Transform::template decode<Bytes>(text, pad) == bytes, "a round trip");
    }
}

template <class Transform>
void check_decoding(const Bytes& text, bool require_padding, unsigned piece) {
    // A list goes character by character.
    const std::list<char> characters(text.begin(), text.end());
    const Decoded expected = decoded([&] {
        std::string bytes;
        Transform::decode(characters.begin(), characters.end(), bytes, require_padding);
        return bytes;
    });
    for (const SimdLevel level : {SimdLevel::sse2, SimdLevel::ssse3, SimdLevel::avx2}) {
        impl::force_simd_level(level);
        require(decoded([&] {
                    return Transform::decode(std::string_view(text.data(), text.size()),
                                             require_padding);
                }) == expected,
                "decoded bytes");
        require(decoded([&] {
                    std::string bytes(Transform::max_decoded_size(text.size()) + 16, '\0');
                    char* end = bytes.data();
                    typename Transform::Decoder decoder(require_padding);
                    for (unsigned i = 0; i < text.size(); i += piece) {
                        const unsigned size = std::min<unsigned>(piece, text.size() - i);
                        end = decoder.write(text.data() + i, text.data() + i + size, end);
                    }
                    decoder.finish();
                    bytes.resize(end - bytes.data());
                    return bytes;
                }) == expected,
                "bytes decoded in pieces");
    }
    if (!expected.fault.empty()) return;
    const bool padded = std::find(text.begin(), text.end(), '=') != text.end();
    require(Transform::encode(expected.bytes, padded) ==
                canonical<Transform>({text.begin(), text.end()}),
            "a text that its bytes do not make");
}

template <class Transform>
void check(const Bytes& bytes, bool pad, unsigned piece) {
    check_encoding<Transform>(bytes, pad);
    check_decoding<Transform>(bytes, pad, piece);
}

}  // namespace

void run_transforms(Input input) {
    const unsigned choice = take_byte(input);
    const Bytes bytes(input.begin(), input.end());
    const bool pad = choice % 2 != 0;
    const unsigned piece = 1 + choice / 2;
    check<Base64Transform>(bytes, pad, piece);
    check<Base32Transform>(bytes, pad, piece);
    check<HexTransform>(bytes, pad, piece);
}

}  // namespace tarv_fuzz
