// Binary-to-text transforms beside the slow oracle, whatever the instructions and the pieces.
#include <algorithm>
#include <string>
#include <vector>

#include "tests/fuzz/targets.h"
#include "tests/support/simd_levels.h"
#include "tests/support/transform_oracle.h"

namespace tarv_fuzz {
namespace {

using namespace tarv_test;
using namespace tarvcore;

template <class Transform>
void check(const Rules& rules, const std::vector<char>& input, bool pad, unsigned piece) {
    // Each input is bytes, and a text.
    const std::string_view whole(input.data(), input.size());
    const std::string text = oracle_encode(rules, whole, pad);
    const Decoded expected = oracle_decode(rules, whole, pad);
    at_each_level([&](SimdLevel) {
        std::vector<char> room(text.size());
        const auto end = Transform::encode(input.begin(), input.end(), room.begin(), pad);
        require(std::equal(text.begin(), text.end(), room.begin(), end), "encoded text");
        require(encoded_in_pieces<Transform>(whole, pad, piece) == text, "text in pieces");
        require(Transform::decode(text, pad) == whole, "a round trip");
        require(decoded([&] { return Transform::decode(whole, pad); }) == expected,
                "decoded bytes");
        require(decoded_in_pieces<Transform>(whole, pad, piece) == expected, "bytes in pieces");
    });
}

}  // namespace

void run_transforms(Input input) {
    const unsigned choice = take_byte(input);
    const std::vector<char> bytes(input.begin(), input.end());
    const bool pad = choice % 2 != 0;
    const unsigned piece = 1 + choice / 2;
    check<Base64Transform>(base64_rules, bytes, pad, piece);
    check<Base32Transform>(base32_rules, bytes, pad, piece);
    check<HexTransform>(hex_rules, bytes, pad, piece);
}

}  // namespace tarv_fuzz
