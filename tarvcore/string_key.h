// Texts that are compared by address.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "tarvcore/config.h"
#include "tarvcore/impl/interned_text.h"
#include "tarvcore/object_key.h"
#include "tarvcore/transfer.h"

namespace tarvcore {
namespace impl {

// The token of a text; its key value is the address of the interned text.
class TARVCORE_API StringKeyToken : public ObjectKeyToken {
public:
    static const InternedText& text_at(const void* key_value) {
        return *static_cast<const InternedText*>(key_value);
    }

    // The token of the empty text.
    static const RefCountPtr<const StringKeyToken>& default_token();
    static const void* default_key_value() { return &empty_interned_text; }

protected:
    explicit StringKeyToken(const InternedText* text) : ObjectKeyToken(text) {}
    ~StringKeyToken() override;
};

}  // namespace impl

// A text of which the process holds one copy, however many keys there are: the same texts give the
// same key.  To make a key costs a look-up under a lock, and memory where the text is new; all else
// costs nothing.  The text goes when its last key does.  The default is the empty text, which is
// not looked up.
//
// Making a key raises std::bad_alloc, and std::runtime_error once the library has been unloaded.
//
//     const StringKey name("sales");
//     std::unordered_map<StringKey, Account> accounts;
class TARVCORE_API StringKey : public ObjectKeyBase<impl::StringKeyToken> {
public:
    constexpr StringKey() = default;
    // Without a length, up to the terminator; 0xFFFFFFFF is a length like any other.
    StringKey(const char* text);
    StringKey(const char* text, unsigned length) : ObjectKeyBase(token_from_string(text, length)) {}
    StringKey(std::string_view text) : StringKey(text.data(), text.size()) {}
    StringKey(TransferSource<StringKey> source) noexcept : StringKey(std::move(source.source())) {}

    // As the constructors.
    static StringKey from_string(const char* text) { return StringKey(text); }
    static StringKey from_string(const char* text, unsigned length) { return {text, length}; }
    static StringKey from_string(std::string_view text) { return text; }

    TransferSource<StringKey> transfer() { return TransferSource<StringKey>(*this); }

    // NUL-terminated; lives as long as the key or another one of that text.
    const char* text() const { return interned().text(); }
    unsigned size() const { return interned().size(); }
    bool empty() const { return size() == 0; }
    std::string_view as_string_view() const { return interned().view(); }
    std::string as_string() const { return std::string(as_string_view()); }

private:
    // Null for the empty text.
    static RefCountPtr<const impl::StringKeyToken> token_from_string(const char* text,
                                                                     unsigned length);
    const impl::InternedText& interned() const {
        return impl::StringKeyToken::text_at(key_value());
    }
};

namespace impl {

// How many texts there are.
TARVCORE_API unsigned string_key_count();

}  // namespace impl
}  // namespace tarvcore

template <>
struct std::hash<tarvcore::StringKey> {
    std::size_t operator()(const tarvcore::StringKey& key) const noexcept { return key.hash(); }
};
