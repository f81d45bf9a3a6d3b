#include "tarvcore/string_key.h"

#include <cstring>

#include "tarvcore/impl/object_key_cache.h"
#include "tarvcore/impl/process_key_cache.h"
#include "tarvcore/murmur_hash.h"
#include "tarvcore/source_string.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/string_key.cpp#1 $");

namespace tarvcore {
namespace impl {

constinit const EmptyInternedText empty_interned_text;

struct StringKeyCacheHashFunc {
    using Source = std::string_view;

    std::uint32_t operator()(std::string_view text) const {
        return murmur_hash(text.data(), text.size());
    }
};

struct StringKeyCacheEqualFunc {
    bool operator()(const InternedText& a, std::string_view b) const { return a.view() == b; }
};

struct StringKeyTraceStringFunc {
    explicit StringKeyTraceStringFunc(std::string_view) {}

    std::string_view operator()(const InternedText& text) const { return text.view(); }
};

// The token of the empty text.
class DefaultStringKeyTokenImpl final : public StringKeyToken, StringTraceData {
public:
    DefaultStringKeyTokenImpl() : StringKeyToken(&empty_interned_text.text) {}

    InterfacePtr<const StringTraceData> query_trace_data() const override { return {this, this}; }

private:
    std::string_view query_trace_text() const override { return {}; }
};

StringKeyToken::~StringKeyToken() = default;

const RefCountPtr<const StringKeyToken>& StringKeyToken::default_token() {
    // Never destroyed: keys may outlive the library's static objects.
    static const auto& token =
        *new RefCountPtr<const StringKeyToken>(new DefaultStringKeyTokenImpl);
    return token;
}

namespace {

using StringKeyCache = ObjectKeyCache<StringKeyToken, InternedText, StringKeyCacheHashFunc,
                                      StringKeyCacheEqualFunc, StringKeyTraceStringFunc>;

constinit StringKeyCache cache;
const ProcessKeyCache while_loaded(cache, 13, 2039);

}  // namespace

unsigned string_key_count() {
    return cache.counts().entries;
}

}  // namespace impl

StringKey::StringKey(const char* text) : StringKey(text, std::strlen(text)) {}

RefCountPtr<const impl::StringKeyToken> StringKey::token_from_string(const char* text,
                                                                     unsigned length) {
    if (length == 0) return {};
    return impl::cache.token_for({text, length});
}

SourceString::SourceString(const StringKey& key) : SourceString(key.query_trace_data()) {}

}  // namespace tarvcore
