// Identifiers that are compared by address.
#pragma once

#include <cstddef>
#include <functional>

#include "tarvcore/config.h"
#include "tarvcore/object_key.h"
#include "tarvcore/uuid.h"

namespace tarvcore {
namespace impl {

TARVCORE_API extern const Uuid null_uuid;

// The token of an identifier; its key value is the address of the interned one.
class TARVCORE_API UuidKeyToken : public ObjectKeyToken {
public:
    const Uuid& uuid() const { return uuid_at(key_value()); }
    static const Uuid& uuid_at(const void* key_value) {
        return *static_cast<const Uuid*>(key_value);
    }

    // The token of the null identifier.
    static const RefCountPtr<const UuidKeyToken>& default_token();
    static const void* default_key_value() { return &null_uuid; }

protected:
    explicit UuidKeyToken(const Uuid* uuid) : ObjectKeyToken(uuid) {}
    ~UuidKeyToken() override;
};

}  // namespace impl

// An identifier of which the process holds one copy; see StringKey.  The default is the null
// identifier, which is not looked up.
class TARVCORE_API UuidKey : public ObjectKeyBase<impl::UuidKeyToken> {
public:
    constexpr UuidKey() = default;
    // See StringKey for what it costs and raises.
    explicit UuidKey(const Uuid& uuid);

    // As the constructor.
    static UuidKey from_uuid(const Uuid& uuid) { return UuidKey(uuid); }

    // Lives as long as the key or another one of that identifier.
    const Uuid& uuid() const { return impl::UuidKeyToken::uuid_at(key_value()); }

    // The same key among keys of all kinds.  That of the null identifier is not the null key.
    ObjectKey as_object_key() const { return ObjectKey(token()); }
};

namespace impl {

// How many identifiers there are.
TARVCORE_API unsigned uuid_key_count();

}  // namespace impl
}  // namespace tarvcore

template <>
struct std::hash<tarvcore::UuidKey> {
    std::size_t operator()(const tarvcore::UuidKey& key) const noexcept { return key.hash(); }
};
