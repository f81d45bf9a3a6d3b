#include "tarvcore/murmur_hash.h"

#include <atomic>
#include <bit>
#include <cstring>
#include <new>

#include "tarvcore/random.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/murmur_hash.cpp#1 $");

namespace tarvcore {
namespace {

constexpr unsigned word_size = 4;

// Drawn when it is first needed.  Threads that are here at once each draw one; the first one
// counts.
constinit std::atomic<std::uint32_t> default_seed = 0;

TARVCORE_COLD std::uint32_t draw_default_seed() {
    std::uint32_t seed;
    do {
        seed = static_cast<std::uint32_t>(random_int64());
    } while (seed == 0);
    std::uint32_t none = 0;
    return default_seed.compare_exchange_strong(none, seed) ? seed : none;
}

inline std::uint32_t process_seed() {
    const std::uint32_t seed = default_seed.load(std::memory_order_relaxed);
    return seed != 0 ? seed : draw_default_seed();
}

inline std::uint32_t word_at(const unsigned char* bytes) {
    std::uint32_t word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

constexpr std::uint32_t scrambled(std::uint32_t word) {
    return std::rotl(word * 0xCC9E2D51, 15) * 0x1B873593;
}

constexpr std::uint32_t mix_word(std::uint32_t hash, std::uint32_t word) {
    return std::rotl(hash ^ scrambled(word), 13) * 5 + 0xE6546B64;
}

inline std::uint32_t mix_words(std::uint32_t hash, const unsigned char* bytes, unsigned count) {
    for (; count != 0; --count, bytes += word_size)
        hash = mix_word(hash, word_at(bytes));
    return hash;
}

// `tail`: the bytes behind the last whole word, 0 without any.
constexpr std::uint32_t finish(std::uint32_t hash, std::uint32_t tail, std::uint32_t length) {
    hash ^= scrambled(tail) ^ length;
    hash ^= hash >> 16;
    hash *= 0x85EBCA6B;
    hash ^= hash >> 13;
    hash *= 0xC2B2AE35;
    return hash ^ hash >> 16;
}

// The upper `count` bytes of the four latest ones, as a number; `count` is less than 4.
constexpr std::uint32_t tail_of(std::uint32_t latest, unsigned count) {
    return count != 0 ? latest >> (word_size - count) * 8 : 0;
}

constexpr std::uint32_t shift_in(std::uint32_t latest, unsigned char byte) {
    return std::uint32_t{byte} << 24 | latest >> 8;
}

std::uint32_t hash_bytes(std::uint32_t seed, const unsigned char* bytes, unsigned size) {
    const std::uint32_t hash = mix_words(seed, bytes, size / word_size);
    const unsigned rest = size % word_size;
    std::uint32_t latest = 0;
    if (size >= word_size) {
        latest = word_at(bytes + size - word_size);
    } else {
        for (unsigned i = 0; i < size; ++i)
            latest = shift_in(latest, bytes[i]);
    }
    return finish(hash, tail_of(latest, rest), size);
}

}  // namespace

std::uint32_t murmur_hash(const char* text, unsigned size) {
    return hash_bytes(process_seed(), reinterpret_cast<const unsigned char*>(text), size);
}

std::uint32_t murmur_hash(const wchar_t* text, unsigned count) {
    return hash_bytes(process_seed(), reinterpret_cast<const unsigned char*>(text),
                      count * sizeof *text);
}

MurmurHashContext::MurmurHashContext() : MurmurHashContext(process_seed()) {}

MurmurHashContext::MurmurHashContext(std::uint32_t seed)
    : state_(new (std::nothrow) State{seed, 0, seed, 0, 0}) {}

MurmurHashContext::MurmurHashContext(const MurmurHashContext& other)
    : state_(other.state_ ? new (std::nothrow) State(*other.state_) : nullptr) {}

void MurmurHashContext::reset() {
    if (state_) *state_ = {state_->seed, 0, state_->seed, 0, 0};
}

MurmurHashContext& MurmurHashContext::update(const void* data, unsigned size) {
    if (!state_) return *this;
    State& state = *state_;
    const auto* bytes = static_cast<const unsigned char*>(data);
    state.length += size;
    if (size < word_size) {
        for (; size != 0; --size, ++bytes) {
            state.pending = shift_in(state.pending, *bytes);
            if (++state.pending_count != word_size) continue;
            state.hash = mix_word(state.hash, state.pending);
            state.pending_count = 0;
        }
        return *this;
    }

    const unsigned char* const last_word = bytes + size - word_size;
    std::uint32_t hash = state.hash;
    if (const unsigned count = state.pending_count; count != 0) {
        hash = mix_word(hash, tail_of(state.pending, count) | word_at(bytes) << count * 8);
        bytes += word_size - count;
        size -= word_size - count;
    }
    state.hash = mix_words(hash, bytes, size / word_size);
    state.pending = word_at(last_word);
    state.pending_count = size % word_size;
    return *this;
}

std::uint32_t MurmurHashContext::calculate_digest() const {
    if (!state_) return 0;
    return finish(state_->hash, tail_of(state_->pending, state_->pending_count), state_->length);
}

}  // namespace tarvcore
