// Small handles that are the same or not.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string_view>
#include <utility>

#include "tarvcore/config.h"
#include "tarvcore/interface_ptr.h"
#include "tarvcore/object_key_token.h"
#include "tarvcore/ref_count_ptr.h"
#include "tarvcore/string_trace_data.h"

namespace tarvcore {

// What all families of keys can do.  A key is a pointer to a token, and two keys are the same where
// their tokens have the same key value: to compare and to hash them takes one address each.  Keys
// are values; distinct ones may be used by different threads.
//
// Their order is that of addresses: good for containers, and another one in every process.
template <class Token>
class ObjectKeyBase {
public:
    // An address that stands for the key.  What is there is not to be looked at.
    const void* key_value() const {
        return token_ ? token_->key_value() : Token::default_key_value();
    }
    std::uint32_t hash() const { return reinterpret_cast<std::uint32_t>(key_value()); }

    // Back to the default key.
    void clear() { token_.clear(); }

    // What keys of one value share; never null.
    const RefCountPtr<const Token>& token() const {
        return token_ ? token_ : Token::default_token();
    }
    // The trace text; see ObjectKeyToken.
    InterfacePtr<const StringTraceData> query_trace_data() const {
        return token()->query_trace_data();
    }
    void write_trace(std::ostream& os) const { token()->write_trace(os); }

    friend bool operator==(const ObjectKeyBase& a, const ObjectKeyBase& b) {
        return a.key_value() == b.key_value();
    }
    friend std::strong_ordering operator<=>(const ObjectKeyBase& a, const ObjectKeyBase& b) {
        return std::compare_three_way()(a.key_value(), b.key_value());
    }
    // The trace text.
    friend std::ostream& operator<<(std::ostream& os, const ObjectKeyBase& key) {
        key.write_trace(os);
        return os;
    }

protected:
    constexpr ObjectKeyBase() = default;
    // Null: the default key.
    explicit ObjectKeyBase(RefCountPtr<const Token> token) : token_(std::move(token)) {}

private:
    RefCountPtr<const Token> token_;  // null stands for the default token
};

// The key of something: unique, made on demand, or one that another family of keys has made.  The
// default is the null key.
//
//     const ObjectKey session = ObjectKey::create_unique_with_label("session");
//     if (session != other) log << session;
class TARVCORE_API ObjectKey : public ObjectKeyBase<ObjectKeyToken> {
public:
    constexpr ObjectKey() = default;
    // Null: the null key.
    explicit ObjectKey(RefCountPtr<const ObjectKeyToken> token) : ObjectKeyBase(std::move(token)) {}

    // Different from all other keys while it, or a copy of it, lives.  Traces show its address, or
    // the label.
    static ObjectKey create_unique();
    static ObjectKey create_unique_with_label(const char* label, unsigned length);
    static ObjectKey create_unique_with_label(std::string_view label) {
        return create_unique_with_label(label.data(), label.size());
    }

    bool is_null() const { return key_value() == nullptr; }
};

}  // namespace tarvcore

template <>
struct std::hash<tarvcore::ObjectKey> {
    std::size_t operator()(const tarvcore::ObjectKey& key) const noexcept { return key.hash(); }
};
