#include <ostream>
#include <string_view>

#include "tarvcore/impl/hex_vectors.h"
#include "tarvcore/impl/vector_util.h"
#include "tarvcore/uuid.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/uuid_text.cpp#1 $");

namespace tarvcore {
namespace {

using namespace impl;
using Data = Uuid::BinaryData;

// Where the four separators stand in the hyphenated form, and the groups behind them.
constexpr unsigned separators[] = {8, 13, 18, 23};

// The stored order of bytes 0 to 7 to that of the text, or back.  Each stands in two bytes.
__m128i swap_numbers(__m128i pairs) {
    constexpr int data1 = _MM_SHUFFLE(0, 1, 2, 3);
    constexpr int data2_and_3 = _MM_SHUFFLE(2, 3, 0, 1);
    return _mm_shufflehi_epi16(_mm_shufflelo_epi16(pairs, data1), data2_and_3);
}

struct Digits {
    __m128i first;
    __m128i second;
};

Digits digits_of(const Data& data) {
    const __m128i bytes = load(data.bytes);
    const __m128i higher = digits_sse2(_mm_and_si128(_mm_srli_epi32(bytes, 4), _mm_set1_epi8(15)));
    const __m128i lower = digits_sse2(_mm_and_si128(bytes, _mm_set1_epi8(15)));
    return {swap_numbers(_mm_unpacklo_epi8(higher, lower)), _mm_unpackhi_epi8(higher, lower)};
}

// The blocks go over separators and the groups behind them, which are written after them.
char* write_hyphenated(const Digits& digits, char* text) {
    store(text, digits.first);
    store(text + 20, digits.second);
    store_quarter(text + 9, _mm_srli_si128(digits.first, 8));
    store_quarter(text + 14, _mm_srli_si128(digits.first, 12));
    store_quarter(text + 19, digits.second);
    for (const unsigned at : separators)
        text[at] = '-';
    return text + 36;
}

Digits hyphenated_digits(const char* text) {
    const __m128i second_and_third =
        _mm_unpacklo_epi32(load_quarter(text + 9), load_quarter(text + 14));
    // All but the first of the last five groups of four.
    const __m128i rest = _mm_and_si128(load(text + 20), _mm_setr_epi32(0, -1, -1, -1));
    return {_mm_unpacklo_epi64(load_half(text), second_and_third),
            _mm_or_si128(load_quarter(text + 19), rest)};
}

bool has_separators(const char* text) {
    unsigned difference = 0;
    for (const unsigned at : separators)
        difference |= static_cast<unsigned char>(text[at] ^ '-');
    return difference == 0;
}

bool store_values(const Digits& digits, Data& data) {
    const __m128i first = values_sse2(digits.first);
    const __m128i second = values_sse2(digits.second);
    if (!are_values_sse2(_mm_or_si128(first, second))) return false;
    const __m128i bytes =
        _mm_packus_epi16(swap_numbers(pair_values_sse2(first)), pair_values_sse2(second));
    store(data.bytes, bytes);
    return true;
}

constexpr unsigned text_length(Uuid::EFormat format) {
    return format == Uuid::format_plain ? 32 : format == Uuid::format_braced ? 38 : 36;
}

// Answers the end of what it has written; what is no format is hyphenated.
char* write_uuid(const Data& data, Uuid::EFormat format, char* text) {
    const Digits digits = digits_of(data);
    if (format == Uuid::format_plain) {
        store(text, digits.first);
        store(text + 16, digits.second);
        return text + 32;
    }
    if (format != Uuid::format_braced) return write_hyphenated(digits, text);
    *text = '{';
    char* const end = write_hyphenated(digits, text + 1);
    *end = '}';
    return end + 1;
}

// Whether the text is one of the forms; else `data` is left alone.
bool parse_uuid(const char* text, unsigned length, Data& data) {
    if (length == 32) return store_values({load(text), load(text + 16)}, data);
    if (length == 38) {
        if (text[0] != '{' || text[37] != '}') return false;
        ++text;
    } else if (length != 36) {
        return false;
    }
    return has_separators(text) && store_values(hyphenated_digits(text), data);
}

constexpr unsigned null_terminated_limit = Uuid::max_text_length + 1;

// Of a text that may be good; of a longer one, some length that is not.
unsigned measured(const char* text) {
    unsigned length = 0;
    while (length != null_terminated_limit && text[length] != '\0')
        ++length;
    return length;
}

}  // namespace

bool Uuid::from_string_nothrow(const char* text, Uuid* uuid) {
    return from_string_nothrow(text, measured(text), uuid);
}

bool Uuid::from_string_nothrow(const char* text, unsigned length, Uuid* uuid) {
    Uuid ignored;
    return parse_uuid(text, length, uuid != nullptr ? uuid->data_ : ignored.data_);
}

std::string Uuid::as_string(EFormat format) const {
    std::string text(text_length(format), '\0');
    write_text(text.data(), format);
    return text;
}

char* Uuid::write_text(char* text, EFormat format) const {
    return write_uuid(data_, format, text);
}

std::ostream& operator<<(std::ostream& os, const Uuid& uuid) {
    return os << Uuid::Trace(uuid, Uuid::format_hyphenated);
}

std::ostream& operator<<(std::ostream& os, const Uuid::Trace& trace) {
    char text[Uuid::max_text_length];
    return os << std::string_view(text, trace.uuid_.write_text(text, trace.format_));
}

}  // namespace tarvcore
