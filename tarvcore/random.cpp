#include "tarvcore/random.h"

#include "tarvcore/impl/random_generator.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/random.cpp#1 $");

namespace tarvcore {

void random_fill(void* buffer, unsigned int size) {
    impl::RandomGenerator::instance().fill(buffer, size);
}

std::uint32_t random_uint32() {
    return impl::RandomGenerator::instance().draw();
}

std::uint64_t random_uint64() {
    const std::uint64_t high = random_uint32();
    return high << 32 | random_uint32();
}

int random_int() {
    return static_cast<int>(random_uint32());
}

unsigned int random_uint() {
    return random_uint32();
}

std::int32_t random_int32() {
    return static_cast<std::int32_t>(random_uint32());
}

long random_long() {
    return static_cast<long>(random_uint32());
}

unsigned long random_ulong() {
    return random_uint32();
}

std::int64_t random_int64() {
    return static_cast<std::int64_t>(random_uint64());
}

double random_double() {
    const double high = random_uint32() & 0x1FFFFF;
    return (high * 4294967296.0 + random_uint32()) * 0x1p-53;
}

}  // namespace tarvcore
