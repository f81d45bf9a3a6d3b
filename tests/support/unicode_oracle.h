// The encodings once more, slowly and obviously, and texts to try conversions with.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace tarv_test {

using Bytes = std::vector<char>;
using Units16 = std::vector<std::uint16_t>;
using Units32 = std::vector<std::uint32_t>;

inline bool oracle_allowed(std::uint32_t c) {
    const bool surrogate = c / 0x800 == 0x1B;
    return !surrogate && c != 0xFEFF && c != 0xFFFE && c != 0xFFFF && c < 0x80000000;
}

// RFC 2279's table, built bit by bit.
inline std::string oracle_utf8(std::uint32_t c) {
    if (c < 0x80) return std::string(1, static_cast<char>(c));
    const int payload_bits[] = {11, 16, 21, 26, 31};
    for (int continuation = 1; continuation <= 5; ++continuation) {
        if (c >> payload_bits[continuation - 1] != 0) continue;
        const int lead_mark = 0x100 - (0x80 >> continuation);
        std::string text(1,
                         static_cast<char>(lead_mark + static_cast<int>(c >> (6 * continuation))));
        for (int i = continuation; i-- > 0;)
            text += static_cast<char>(0x80 + (c >> (6 * i)) % 64);
        return text;
    }
    return {};
}

inline Units16 oracle_utf16(std::uint32_t c) {
    if (c < 0x10000) return {static_cast<std::uint16_t>(c)};
    if (c >= 0x110000) return {};
    return {static_cast<std::uint16_t>(0xD800 + (c - 0x10000) / 0x400),
            static_cast<std::uint16_t>(0xDC00 + (c - 0x10000) % 0x400)};
}

struct OracleCharacter {
    std::uint32_t code_point;
    unsigned units;  // 0: none
};

// What the bytes claim to be, believed if it is written just so.
inline OracleCharacter oracle_decode(const Bytes& text, std::size_t at) {
    const auto lead = static_cast<unsigned char>(text[at]);
    unsigned units = 1;
    std::uint32_t c = lead;
    if (lead >= 0xC0) {
        while (units < 8 && (lead & (0x80 >> units)) != 0)
            ++units;
        if (units > 6 || at + units > text.size()) return {0, 0};
        c = lead % (0x80u >> units);
        for (unsigned i = 1; i < units; ++i)
            c = c * 64 + static_cast<unsigned char>(text[at + i]) % 64;
    }
    const std::string expected = oracle_utf8(c);
    if (!oracle_allowed(c) || expected.size() != units) return {0, 0};
    for (unsigned i = 0; i < units; ++i)
        if (expected[i] != text[at + i]) return {0, 0};
    return {c, units};
}

inline OracleCharacter oracle_decode(const Units16& text, std::size_t at) {
    if (oracle_allowed(text[at])) return {text[at], 1};
    if (text[at] / 0x400 != 0x36 || at + 1 == text.size() || text[at + 1] / 0x400 != 0x37) {
        return {0, 0};
    }
    return {0x10000 + text[at] % 0x400u * 0x400 + text[at + 1] % 0x400u, 2};
}

inline OracleCharacter oracle_decode(const Units32& text, std::size_t at) {
    return {text[at], oracle_allowed(text[at]) ? 1u : 0u};
}

inline void oracle_encode(std::uint32_t c, Bytes& text) {
    const std::string units = oracle_utf8(c);
    text.insert(text.end(), units.begin(), units.end());
}
inline void oracle_encode(std::uint32_t c, Units16& text) {
    const Units16 units = oracle_utf16(c);
    text.insert(text.end(), units.begin(), units.end());
}
inline void oracle_encode(std::uint32_t c, Units32& text) {
    text.push_back(c);
}

// Characters of one kind of text, with some of the others among them.
class CharacterSource {
public:
    explicit CharacterSource(std::uint32_t seed) : random_(seed) {}

    std::uint32_t below(std::uint32_t limit) { return random_() % limit; }

    void choose_kind() {
        kind_ = below(kinds);
        purity_ = below(3) * 50;
    }
    std::uint32_t next() {
        std::uint32_t c;
        do {
            c = of_kind(below(100) < purity_ ? kind_ : below(kinds));
        } while (!oracle_allowed(c));
        return c;
    }

private:
    static constexpr std::uint32_t kinds = 9;

    std::uint32_t of_kind(std::uint32_t kind) {
        constexpr struct {
            std::uint32_t first, count;
        } ranges[kinds] = {{0, 0x80},           {0, 0x80},        {0x80, 0x780},
                           {0x7F0, 0x20},       {0x800, 0xF800},  {0xE000, 0x2000},
                           {0x10000, 0x100000}, {0x1F300, 0x400}, {0x110000, 0x7FEF0000}};
        return ranges[kind].first + below(ranges[kind].count);
    }

    std::mt19937 random_;
    std::uint32_t kind_ = 0;
    std::uint32_t purity_ = 100;
};

}  // namespace tarv_test
