// Hashes of bytes and text.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "tarvcore/config.h"

// MurmurHash3 for 32-bit x86 (MurmurHash3_x86_32) as published by its author, Austin Appleby.  It
// is for tables, not against adversaries.  Unless the caller gives a seed, the process draws one at
// random when it first hashes, so that values differ from process to process: never store or send
// them.  Lengths count modulo 2^32.
namespace tarvcore {

// The digest of a whole input, with the process's seed; for wide text, of its UTF-16 units in
// memory's order.  Any alignment; nothing beyond the input is read.
[[nodiscard]] TARVCORE_API std::uint32_t murmur_hash(const char* text, unsigned size);
[[nodiscard]] TARVCORE_API std::uint32_t murmur_hash(const wchar_t* text, unsigned count);

// Takes an input in pieces.  The digest does not depend on where they were cut.  One context is not
// for several threads at once.
//
//     MurmurHashContext context;
//     context.update(name, name_length).update(&id, sizeof id);
//     table[context.calculate_digest() % table_size] ...
class TARVCORE_API MurmurHashContext {
public:
    // With the process's seed, or another one.  Where there is no memory for the state, the context
    // has none: it takes pieces without effect, and its digest is 0.
    MurmurHashContext();
    explicit MurmurHashContext(std::uint32_t seed);
    MurmurHashContext(const MurmurHashContext& other);
    // Leaves the source without a state.
    MurmurHashContext(MurmurHashContext&& other) noexcept = default;
    ~MurmurHashContext() = default;

    MurmurHashContext& operator=(MurmurHashContext other) noexcept {
        swap(other);
        return *this;
    }
    void swap(MurmurHashContext& other) noexcept { state_.swap(other.state_); }

    // Forgets the pieces, not the seed.
    void reset();

    // Take the next piece.
    MurmurHashContext& update(const void* data, unsigned size);
    MurmurHashContext& update(const char* text, unsigned size) {
        return update(static_cast<const void*>(text), size);
    }
    MurmurHashContext& update(const wchar_t* text, unsigned count) {
        return update(static_cast<const void*>(text), count * sizeof *text);
    }

    // Of all pieces so far; more may follow.
    [[nodiscard]] std::uint32_t calculate_digest() const;

private:
    struct State {
        std::uint32_t seed;
        std::uint32_t length;
        std::uint32_t hash;
        // The last bytes, the latest on top; the lower 4 - pending_count bytes mean nothing.
        std::uint32_t pending;
        std::uint32_t pending_count;  // 0 to 3
    };

    std::unique_ptr<State> state_;
};

}  // namespace tarvcore
