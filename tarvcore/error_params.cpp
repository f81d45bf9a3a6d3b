#include "tarvcore/error_params.h"

#include <algorithm>
#include <cstring>
#include <memory_resource>
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

template <class Text>
void append_limited(Text& out, const std::string& value, unsigned limit) {
    // A limit of 0xFFFFFFFF is never less than a length, so that no test for it is needed.
    const unsigned shown = impl::utf8_prefix_length(value.data(), value.size(), limit);
    out.append(value.data(), shown);
    if (shown != value.size()) out.append("...");
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
    return std::find_if(pairs_.begin(), pairs_.end(), [&](const Pair& pair) {
        return pair.name.size() == length && std::memcmp(pair.name.text(), name, length) == 0;
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
    constexpr std::string_view opener = "{@";
    if (text == nullptr) return SourceString();
    const std::string_view source(text, length == measure ? std::strlen(text) : length);
    std::size_t opening = source.find(opener);
    if (opening == std::string_view::npos) return SourceString(source.data(), source.size());

    // Most messages fit here, so that the result is the only allocation.
    char storage[1024];
    std::pmr::monotonic_buffer_resource memory(storage, sizeof storage);
    std::pmr::string expanded(&memory);
    expanded.reserve(sizeof storage - 1);

    std::size_t copied = 0;  // of `source`, placeholders included
    while (opening != std::string_view::npos) {
        const std::size_t closing = source.find('}', opening + opener.size());
        if (closing == std::string_view::npos) break;
        const std::size_t name = opening + opener.size();
        const auto pair = find(source.data() + name, closing - name);
        if (pair != end()) {
            expanded.append(source, copied, opening - copied);
            append_limited(expanded, pair->value, limit);
            copied = closing + 1;
        }
        opening = source.find(opener, closing + 1);
    }
    expanded.append(source, copied);
    return SourceString(expanded.data(), expanded.size());
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
