// Base64, Base32 and hexadecimal digits once more, slowly and obviously.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

#include "tarvcore/error_exception.h"
#include "tarvcore/transforms.h"

namespace tarv_test {

// What an encoding is, in the words of the standard.
struct Rules {
    std::string alphabet;
    unsigned bits;        // of a character
    unsigned group;       // characters
    std::string also;     // characters that stand for others ...
    std::string instead;  // ... these
};

inline const Rules base64_rules = {
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/", 6, 4, "-_", "+/"};
inline const Rules base32_rules = {"ABCDEFGHIJKLMNOPQRSTUVWXYZ234567", 5, 8, "", ""};
inline const Rules hex_rules = {"0123456789abcdef", 4, 2, "ABCDEF", "abcdef"};

// Bit by bit.
inline std::string oracle_encode(const Rules& rules, std::string_view bytes, bool pad) {
    std::string text;
    for (unsigned bit = 0; bit < 8 * bytes.size();) {
        unsigned value = 0;
        for (const unsigned end = bit + rules.bits; bit != end; ++bit)
            value = 2 * value + (bit / 8 < bytes.size() && bytes[bit / 8] >> (7 - bit % 8) & 1);
        text += rules.alphabet[value];
    }
    while (pad && text.size() % rules.group != 0)
        text += '=';
    return text;
}

struct Decoded {
    std::string bytes;
    std::string fault;  // last segment of the code; empty where the text is good
    bool operator==(const Decoded&) const = default;
};

// Group by group, and each from several sides.
inline Decoded oracle_decode(const Rules& rules, std::string_view text, bool require_padding) {
    const bool has_padding = rules.group > 2;
    std::string bits;
    bool ended = false;
    for (std::size_t begin = 0; begin < text.size(); begin += rules.group) {
        const std::string_view group = text.substr(begin, rules.group);
        if (ended) return {"", group[0] == '=' ? "invalid" : "padding"};
        const std::size_t data =
            has_padding ? std::min(group.find('='), group.size()) : group.size();
        for (char c : group.substr(0, data)) {
            if (const auto other = rules.also.find(c); other != std::string::npos)
                c = rules.instead[other];
            const auto value = rules.alphabet.find(c);
            if (value == std::string::npos) return {"", "invalid"};
            for (unsigned bit = rules.bits; bit-- > 0;)
                bits += value >> bit & 1 ? '1' : '0';
        }
        if (group.find_first_not_of('=', data) != group.npos) return {"", "padding"};
        ended = data < group.size();
        if (group.size() < rules.group && (ended || require_padding)) return {"", "truncated"};
        if (data == rules.group) continue;
        if (data == 0 || data * rules.bits % 8 >= rules.bits) return {"", "truncated"};
        if (bits.find('1', bits.size() / 8 * 8) != std::string::npos) return {"", "invalid"};
    }
    Decoded result;
    for (std::size_t i = 0; i + 8 <= bits.size(); i += 8)
        result.bytes += static_cast<char>(std::stoul(bits.substr(i, 8), nullptr, 2));
    return result;
}

inline std::string fault_of(const tarvcore::ErrorInfo::Ptr& error) {
    if (!error) return {};
    const std::string code = error->code().as_string();
    return code.substr(code.rfind('.') + 1);
}

// What a decoder answers, or raises.
template <class Decode>
Decoded decoded(Decode decode) {
    try {
        return {decode(), ""};
    } catch (const tarvcore::ErrorException& e) {
        return {"", fault_of(e.error())};
    }
}

// In pieces of so many units.
template <class Transform>
std::string encoded_in_pieces(std::string_view bytes, bool pad, unsigned piece) {
    typename Transform::Encoder encoder(pad);
    std::string text(Transform::encoded_size(bytes.size(), pad) + 8, '?');
    char* end = text.data();
    for (unsigned i = 0; i < bytes.size(); i += piece) {
        const std::string_view part = bytes.substr(i, piece);
        end = encoder.write(part.begin(), part.end(), end);
    }
    return {text.data(), encoder.finish(end)};
}

template <class Transform>
Decoded decoded_in_pieces(std::string_view text, bool require_padding, unsigned piece) {
    return decoded([=] {
        typename Transform::Decoder decoder(require_padding);
        std::string bytes(Transform::max_decoded_size(text.size()) + 8, '?');
        char* end = bytes.data();
        for (unsigned i = 0; i < text.size(); i += piece) {
            const std::string_view part = text.substr(i, piece);
            end = decoder.write(part.begin(), part.end(), end);
        }
        decoder.finish();
        return std::string(bytes.data(), end);
    });
}

}  // namespace tarv_test
