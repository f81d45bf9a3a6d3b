#include "tarvcore/impl/sequential_uuids.h"

#include <cstring>

#include "ace/Guard_T.h"
#include "tarvcore/impl/uuid_calls.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/impl/sequential_uuids.cpp#1 $");

namespace tarvcore::impl {
namespace {

// The version takes the place of the time's last byte.
constexpr std::uint64_t hidden_bits = 0xFF;
constexpr unsigned char version_byte = Uuid::version_sequential << 4;

}  // namespace

void SequentialUuids::draw_nodes() {
    node1_ = uuid_calls.load()->random();
    node2_ = uuid_calls.load()->random();
}

Uuid SequentialUuids::next() {
    const ACE_Guard<ThreadMutex> guard(lock_);
    if (node1_ == 0) draw_nodes();
    // What does not show must not count as progress: the counter would begin anew beside
    // identifiers of the same time.
    const auto now = static_cast<std::uint64_t>(uuid_calls.load()->now().as_nsec());
    const std::uint64_t time = now & ~hidden_bits;
    if (time != last_time_) {
        if (time < last_time_) draw_nodes();
        counter_ = 0;
        last_time_ = time;
    }
    // Where the counter ends, the node goes on, as the next higher digit of the bytes' order.
    if (++counter_ == 0) node2_ = __builtin_bswap32(__builtin_bswap32(node2_) + 1);

    Uuid::BinaryData data;
    const std::uint64_t big_endian_time = __builtin_bswap64(time);
    std::memcpy(&data.bytes[0], &big_endian_time, 8);
    data.bytes[7] = version_byte;
    data.bytes[8] = static_cast<unsigned char>((node1_ & 0x0F) | 0x80);
    data.bytes[9] = static_cast<unsigned char>(node1_ >> 8);
    std::memcpy(&data.bytes[10], &node2_, 4);
    data.bytes[14] = static_cast<unsigned char>(counter_ >> 8);
    data.bytes[15] = static_cast<unsigned char>(counter_);
    return Uuid(data);
}

}  // namespace tarvcore::impl
