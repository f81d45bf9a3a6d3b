#include "tarvcore/impl/sequential_uuids.h"
#include "tarvcore/impl/uuid_calls.h"
#include "tarvcore/random.h"
#include "tarvcore/uuid.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/uuid_creation.cpp#1 $");

namespace tarvcore {
namespace {

constexpr impl::UuidCalls system_calls = {
    [] { return AbsoluteTime::now(); },
    random_uint32,
    random_fill,
};

using Data = Uuid::BinaryData;

Uuid make_legacy(Data& data, unsigned id, unsigned char flags) {
    data.bytes[10] = flags;
    for (unsigned i = 15; i > 10; --i, id /= 100)
        data.bytes[i] = static_cast<unsigned char>(id / 10 % 10 << 4 | id % 10);
    return Uuid(data, Uuid::version_legacy_interaction);
}

bool begins_with_zeros(const Data& data) {
    std::uint64_t front;
    std::memcpy(&front, data.bytes, sizeof front);
    return front == 0;
}

}  // namespace

constinit std::atomic<const impl::UuidCalls*> impl::uuid_calls = &system_calls;

Uuid Uuid::create_random() {
    Data data;
    impl::uuid_calls.load()->random_fill(data.bytes, sizeof data.bytes);
    return Uuid(data, version_random);
}

Uuid Uuid::create_random(unsigned char flags) {
    Uuid uuid = create_random();
    uuid.data_.bytes[7] = static_cast<unsigned char>(flags >> 4 | version_random << 4);
    uuid.data_.bytes[6] = static_cast<unsigned char>((uuid.byte(6) & 0x0F) | flags << 4);
    return uuid;
}

Uuid Uuid::create_sequential() {
    // Never destroyed: others may make identifiers while the process ends.
    static auto& uuids = *new impl::SequentialUuids;
    return uuids.next();
}

Uuid Uuid::create_legacy_interaction_id(unsigned id, unsigned char flags) {
    Data data;
    // What begins with zeros is an unresolved one.
    do {
        impl::uuid_calls.load()->random_fill(data.bytes, 10);
    } while (begins_with_zeros(data));
    return make_legacy(data, id, flags);
}

Uuid Uuid::create_unresolved_legacy_interaction_id(unsigned id, unsigned char flags) {
    Data data = {};
    return make_legacy(data, id, flags);
}

}  // namespace tarvcore
