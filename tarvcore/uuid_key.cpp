#include "tarvcore/uuid_key.h"

#include <string_view>

#include "tarvcore/impl/object_key_cache.h"
#include "tarvcore/impl/process_key_cache.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/uuid_key.cpp#1 $");

namespace tarvcore {
namespace impl {

constinit const Uuid null_uuid;

struct UuidKeyCacheHashFunc {
    using Source = Uuid;

    std::uint32_t operator()(const Uuid& uuid) const { return uuid.hash(); }
};

class UuidKeyTraceStringFunc {
public:
    explicit UuidKeyTraceStringFunc(const Uuid& uuid) : end_(uuid.write_text(text_)) {}
    UuidKeyTraceStringFunc(const UuidKeyTraceStringFunc&) = delete;
    UuidKeyTraceStringFunc& operator=(const UuidKeyTraceStringFunc&) = delete;

    std::string_view operator()(const Uuid&) const { return {text_, end_}; }

private:
    char text_[Uuid::max_text_length];
    const char* end_;
};

// The token of the null identifier.
class DefaultUuidKeyTokenImpl final : public UuidKeyToken, StringTraceData {
public:
    DefaultUuidKeyTokenImpl() : UuidKeyToken(&null_uuid) {}

    InterfacePtr<const StringTraceData> query_trace_data() const override { return {this, this}; }

private:
    std::string_view query_trace_text() const override { return trace_(null_uuid); }

    UuidKeyTraceStringFunc trace_{null_uuid};
};

UuidKeyToken::~UuidKeyToken() = default;

const RefCountPtr<const UuidKeyToken>& UuidKeyToken::default_token() {
    // Never destroyed: keys may outlive the library's static objects.
    static const auto& token = *new RefCountPtr<const UuidKeyToken>(new DefaultUuidKeyTokenImpl);
    return token;
}

namespace {

using UuidKeyCache = ObjectKeyCache<UuidKeyToken, Uuid, UuidKeyCacheHashFunc, std::equal_to<Uuid>,
                                    UuidKeyTraceStringFunc>;

constinit UuidKeyCache cache;
const ProcessKeyCache while_loaded(cache, 5, 1021);

}  // namespace

unsigned uuid_key_count() {
    return cache.counts().entries;
}

}  // namespace impl

UuidKey::UuidKey(const Uuid& uuid)
    : ObjectKeyBase(uuid.is_null() ? nullptr : impl::cache.token_for(uuid)) {}

}  // namespace tarvcore
