#include "tools/tarv/text_pieces.h"

#include <algorithm>
#include <cstring>
#include <span>

#include "tarvcore/config.h"
#include "tarvcore/impl/unicode_codec.h"
#include "tarvcore/ucsutil.h"

TARVCORE_SOURCE_FILE("$Id: //tools/tarv/text_pieces.cpp#1 $");

namespace tarv {
namespace {

using tarvcore::impl::is_high_surrogate;
using tarvcore::impl::is_utf8_continuation;
using tarvcore::impl::max_utf8_sequence_length;

constexpr unsigned buffer_size = 1 << 16;

// A high surrogate takes the unit behind it along, which may be another one: of a row of them it is
// the last one that may be left without, if their number is odd.
unsigned cut_utf16(std::string_view text) {
    unsigned size = text.size() / 2 * 2;
    unsigned surrogates = 0;
    for (; surrogates < size / 2; ++surrogates) {
        unsigned short unit = 0;
        std::memcpy(&unit, text.data() + size - 2 * (surrogates + 1), sizeof unit);
        if (!is_high_surrogate(unit)) break;
    }
    return surrogates % 2 != 0 ? size - 2 : size;
}

}  // namespace

TextPieces::TextPieces(ByteSource& source, Encoding encoding, bool replaced)
    : source_(source), encoding_(encoding), replaced_(replaced), buffer_(buffer_size) {}

std::string_view TextPieces::next() {
    unsigned size = 0;
    do {
        if (at_end_) break;
        fill();
        size = cut();
    } while (size == 0);
    const std::string_view piece(buffer_.data() + begin_, size);
    begin_ += size;
    return piece;
}

void TextPieces::fill() {
    std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
    end_ -= begin_;
    begin_ = 0;
    const unsigned count = source_.read(std::span(buffer_).subspan(end_));
    end_ += count;
    at_end_ = end_ != buffer_.size();
}

unsigned TextPieces::cut() {
    if (at_end_) return end_;
    switch (encoding_) {
        case Encoding::utf8:
            return cut_utf8();
        case Encoding::utf16le:
            return cut_utf16({buffer_.data(), end_});
        case Encoding::utf32le:
            return end_ / 4 * 4;
    }
    return end_;
}

unsigned TextPieces::cut_utf8() {
    const char* const text = buffer_.data();
    // Of a sequence that starts in front of this place all bytes are there.
    const unsigned size = tarvcore::utf8_limit_length(text, end_, end_ - max_utf8_sequence_length);
    if (!replaced_) {
        // What is wrong with a bad one depends on the bytes behind it.
        return size != 0 && tarvcore::is_valid_utf8(text, size) ? size : end_;
    }
    if (size == 0) shorten_first();
    return size;
}

void TextPieces::shorten_first() {
    const auto begin = buffer_.begin();
    const auto behind = std::find_if_not(begin + 1, begin + end_, is_utf8_continuation);
    const auto end = std::copy(behind, begin + end_, begin + max_utf8_sequence_length + 1);
    end_ = static_cast<unsigned>(end - begin);
}

}  // namespace tarv
