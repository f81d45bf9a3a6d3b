#include "tarvcore/error_params.h"

#include <algorithm>
#include <cstring>
#include <ostream>

#include "tarvcore/impl/string_hash.h"
#include "tarvcore/impl/unicode_codec.h"
#include "tarvcore/streamers.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/error_params.cpp#1 $");

namespace tarvcore {
namespace {

constexpr unsigned measure = 0xFFFFFFFF;
constexpr unsigned no_limit = 0xFFFFFFFF;

constexpr unsigned trace_name_limit = 128;
constexpr unsigned trace_value_limit = 256;

// Few errors have more parameters than this, and one allocation holds them.
constexpr std::size_t first_capacity = 4;

// Collects text on the stack while it is as short as most messages are.  A call of the C runtime's
// memcpy or of a string's append costs more than copying the few bytes of a piece.
class MessageBuffer {
public:
    void append(const char* text, unsigned length) {
        if (!spilled_.empty() || length > sizeof stack_ - length_) return spill(text, length);
        char* out = stack_ + length_;
        length_ += length;
        for (; length >= 8; length -= 8, text += 8, out += 8)
            std::memcpy(out, text, 8);
        for (; length != 0; --length)
            *out++ = *text++;
    }

    SourceString as_source_string() const {
        return spilled_.empty() ? SourceString(stack_, length_)
                                : SourceString(spilled_.data(), spilled_.size());
    }

private:
    TARVCORE_COLD void spill(const char* text, unsigned length) {
        if (spilled_.empty()) spilled_.assign(stack_, length_);
        spilled_.append(text, length);
    }

    char stack_[512];
    unsigned length_ = 0;
    std::string spilled_;  // everything, once the stack does not hold it
};

const char* find_character(const char* text, const char* end, char character) {
    while (text != end && *text != character)
        ++text;
    return text;
}

int sign(int order) {
    return (order > 0) - (order < 0);
}

}  // namespace

ErrorParams& ErrorParams::add(const char* name, unsigned name_length, const char* value,
                              unsigned value_length) {
    std::string text(value, value_length);
    insert_ref(name, name_length) = std::move(text);
    return *this;
}

ErrorParams& ErrorParams::add(LiteralName name, const char* value) {
    return add(name, value ? std::string(value) : std::string());
}

ErrorParams& ErrorParams::add(LiteralName name, std::string value) {
    insert_ref(name) = std::move(value);
    return *this;
}

ErrorParams& ErrorParams::add(LiteralName name, const SourceString& value) {
    return add(name, value.as_string());
}

ErrorParams& ErrorParams::add(const ErrorParams& other) {
    ErrorParams result(*this);
    for (const Pair& pair : other.pairs_) {
        result.insert_ref(pair.name.text(), pair.name.size()) = pair.value;
    }
    swap(result);
    return *this;
}

ErrorParams::const_iterator ErrorParams::find(const char* name, unsigned length) const {
    // Names differ early, if not in their length: a call of memcmp would cost more.
    return std::find_if(pairs_.begin(), pairs_.end(), [&](const Pair& pair) {
        return pair.name.size() == length && std::equal(name, name + length, pair.name.text());
    });
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
        if (order != 0) return sign(order);
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
    const char* before = "";
    for (const auto& [name, value] : pairs_) {
        os << before << streamers::String(name.text(), name.size(), trace_name_limit, '\'')
           << " => " << streamers::String(value.data(), value.size(), trace_value_limit, '"');
        before = separator;
    }
}

SourceString ErrorParams::expanded_message(const char* text, unsigned length) const {
    return expanded_message_with_limit(text, length, no_limit);
}

SourceString ErrorParams::expanded_message(const SourceString& text) const {
    return expanded_message_with_limit(text, no_limit);
}

SourceString ErrorParams::expanded_message_with_limit(const SourceString& text,
                                                      unsigned limit) const {
    return expanded_message_with_limit(text.text(), text.size(), limit);
}

SourceString ErrorParams::expanded_message_with_limit(const char* text, unsigned length,
                                                      unsigned limit) const {
    if (text == nullptr) return SourceString();
    if (length == measure) length = std::strlen(text);

    const char* const source_end = text + length;
    const char* copied = text;  // up to here, placeholders included
    MessageBuffer expanded;
    for (const char* next = text; (next = find_character(next, source_end, '{')) != source_end;) {
        const char* const opening = next++;
        if (next == source_end || *next != '@') continue;
        const char* const name = ++next;
        const char* const closing = find_character(name, source_end, '}');
        if (closing == source_end) break;
        const auto pair = find(name, static_cast<unsigned>(closing - name));
        next = closing + 1;
        if (pair == end()) continue;

        expanded.append(copied, static_cast<unsigned>(opening - copied));
        // No limit is never less than a length.
        const std::string& value = pair->value;
        const unsigned shown = impl::utf8_prefix_length(value.data(), value.size(), limit);
        expanded.append(value.data(), shown);
        if (shown != value.size()) expanded.append("...", 3);
        copied = next;
    }
    if (copied == text) return SourceString(text, length);
    expanded.append(copied, static_cast<unsigned>(source_end - copied));
    return expanded.as_source_string();
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
