#include "tarvcore/error_params.h"

#include <emmintrin.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <ostream>
#include <string_view>
#include <vector>

#include "tarvcore/impl/measured_length.h"
#include "tarvcore/impl/stream_text.h"
#include "tarvcore/impl/string_hash.h"
#include "tarvcore/impl/unicode_codec.h"
#include "tarvcore/impl/vector_util.h"
#include "tarvcore/streamers.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/error_params.cpp#1 $");

namespace tarvcore {
namespace {

constexpr unsigned no_limit = 0xFFFFFFFF;

constexpr unsigned trace_name_limit = 128;
constexpr unsigned trace_value_limit = 256;

// Few errors have more parameters than this, and one allocation holds them.
constexpr std::size_t first_capacity = 4;

// Names are short: a call of the C runtime's memcmp would cost more.
bool equal_names(const char* a, const char* b, unsigned length) {
    while (length != 0 && a[length - 1] == b[length - 1])
        --length;
    return length == 0;
}

// A call of the C runtime's memcpy costs more than copying the few bytes of a piece.
TARVCORE_INLINE char* copy_piece(char* out, const char* text, std::size_t length) {
    if (length >= 8) {
        for (std::size_t i = 0; i + 8 < length; i += 8)
            std::memcpy(out + i, text + i, 8);
        std::memcpy(out + length - 8, text + length - 8, 8);
    } else if (length >= 4) {
        std::memcpy(out, text, 4);
        std::memcpy(out + length - 4, text + length - 4, 4);
    } else {
        for (std::size_t i = 0; i < length; ++i)
            out[i] = text[i];
    }
    return out + length;
}

// Gathers the pieces of a message, and joins them once their length is known: the text is the only
// allocation of a message of few pieces.
class MessagePieces {
public:
    TARVCORE_INLINE void append(const char* text, std::size_t length) {
        length_ += length;
        if (count_ < std::size(first_)) {
            first_[count_++] = {text, length};
        } else {
            more_.push_back({text, length});
        }
    }

    SourceString join() const {
        const auto length = static_cast<unsigned>(std::min<std::uint64_t>(length_, no_limit));
        return SourceString::create_filled(length, [this](char* out) {
            for (unsigned i = 0; i < count_; ++i)
                out = copy_piece(out, first_[i].text, first_[i].length);
            for (const Piece& piece : more_)
                out = copy_piece(out, piece.text, piece.length);
        });
    }

private:
    // Not a string_view, which would be cleared 32 times first.
    struct Piece {
        const char* text;
        std::size_t length;
    };

    std::uint64_t length_ = 0;
    unsigned count_ = 0;
    Piece first_[32];
    std::vector<Piece> more_;
};

const char* find_opening_brace(const char* text, const char* end) {
    const __m128i braces = _mm_set1_epi8('{');
    for (; end - text >= 16; text += 16) {
        const auto block = impl::load(text);
        const auto found = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(block, braces)));
        if (found != 0) return text + std::countr_zero(found);
    }
    return std::find(text, end, '{');
}

}  // namespace

ErrorParams& ErrorParams::add(const char* name, unsigned name_length, const char* value,
                              unsigned value_length) & {
    std::string text(value, value_length);
    insert_ref(name, name_length) = std::move(text);
    return *this;
}

ErrorParams& ErrorParams::add(LiteralName name, const char* value) & {
    return add(name, value ? std::string(value) : std::string());
}

ErrorParams& ErrorParams::add(LiteralName name, std::string value) & {
    insert_ref(name) = std::move(value);
    return *this;
}

ErrorParams& ErrorParams::add(LiteralName name, const SourceString& value) & {
    return add(name, value.as_string());
}

ErrorParams& ErrorParams::add_address(LiteralName name, const void* address) {
    return add(name, impl::stream_text(address));
}

ErrorParams& ErrorParams::add(const ErrorParams& other) & {
    ErrorParams result(*this);
    for (const Pair& pair : other.pairs_) {
        result.insert_ref(pair.name.text(), pair.name.size()) = pair.value;
    }
    swap(result);
    return *this;
}

ErrorParams::const_iterator ErrorParams::find(const char* name, unsigned length) const {
    const auto place = std::find_if(pairs_.begin(), pairs_.end(), [&](const Pair& pair) {
        return pair.name.size() == length && equal_names(name, pair.name.text(), length);
    });
    // Raises for a length that no name has.
    if (place == pairs_.end()) static_cast<void>(SourceString(name, length, true));
    return place;
}

const std::string& ErrorParams::get_value(const char* name, unsigned length) const {
    static const std::string absent;
    const auto pair = find(name, length);
    return pair == end() ? absent : pair->value;
}

bool ErrorParams::query_value(const char* name, unsigned length, std::string* value) const {
    const auto pair = find(name, length);
    if (pair == end()) return false;
    if (value != nullptr) *value = pair->value;
    return true;
}

unsigned ErrorParams::count(const char* name, unsigned length) const {
    return find(name, length) == end() ? 0 : 1;
}

int ErrorParams::compare(const ErrorParams& other) const {
    const std::size_t common = std::min(pairs_.size(), other.pairs_.size());
    for (std::size_t i = 0; i < common; ++i) {
        int order = pairs_[i].name.compare(other.pairs_[i].name);
        if (order == 0) order = pairs_[i].value.compare(other.pairs_[i].value);
        if (order != 0) return order < 0 ? -1 : 1;
    }
    return pairs_.size() < other.pairs_.size() ? -1 : pairs_.size() > other.pairs_.size();
}

std::uint32_t ErrorParams::hash() const {
    std::uint32_t hash = 0;
    for (const Pair& pair : pairs_) {
        hash = impl::combine_hash(hash, impl::ascii_string_hash(pair.name.as_string_view()));
        hash = impl::combine_hash(hash, impl::ascii_string_hash(pair.value));
    }
    return hash;
}

void ErrorParams::write_trace(std::ostream& os, const char* separator) const {
    // Nothing before the first pair, not even an empty text: the stream's width is for the name.
    const char* before = nullptr;
    for (const auto& [name, value] : pairs_) {
        if (before != nullptr) os << before;
        os << streamers::String(name.text(), name.size(), trace_name_limit, '\'') << " => "
           << streamers::String(value.data(), value.size(), trace_value_limit, '"');
        before = separator;
    }
}

SourceString ErrorParams::expanded_message_with_limit(const char* text, unsigned length,
                                                      unsigned limit) const {
    if (text == nullptr) return SourceString();
    length = impl::measured_length(text, length);

    const char* const end = text + length;
    const char* copied = text;  // up to here, placeholders included
    MessagePieces pieces;
    for (const char* next = text; (next = find_opening_brace(next, end)) != end;) {
        const char* const opening = next++;
        if (next == end || *next != '@') continue;
        const char* const name = ++next;
        const char* const closing = std::find(name, end, '}');
        if (closing == end) break;
        const auto pair = find(name, static_cast<unsigned>(closing - name));
        next = closing + 1;
        if (pair == pairs_.end()) continue;

        pieces.append(copied, static_cast<std::size_t>(opening - copied));
        // No limit is never less than a length.
        const std::string& value = pair->value;
        const unsigned shown = impl::utf8_prefix_length(value.data(), value.size(), limit);
        pieces.append(value.data(), shown);
        if (shown != value.size()) pieces.append("...", 3);
        copied = next;
    }
    pieces.append(copied, static_cast<std::size_t>(end - copied));
    return pieces.join();
}

std::string& ErrorParams::insert_ref(const char* name, unsigned length) {
    return insert_ref(name, length, false);
}

std::string& ErrorParams::insert_ref(LiteralName name) {
    return insert_ref(name.text(), name.length(), true);
}

std::string& ErrorParams::insert_ref(const char* name, unsigned length, bool is_reference) {
    SourceString new_name(name, length, is_reference);
    const std::string_view new_text = new_name.as_string_view();
    const auto place = std::find_if(pairs_.begin(), pairs_.end(), [&](const Pair& pair) {
        return pair.name.as_string_view() >= new_text;
    });
    if (place != pairs_.end() && place->name.as_string_view() == new_text) return place->value;

    const auto index = place - pairs_.begin();
    if (pairs_.empty()) pairs_.reserve(first_capacity);
    return pairs_.insert(pairs_.begin() + index, Pair{std::move(new_name), {}})->value;
}

}  // namespace tarvcore
