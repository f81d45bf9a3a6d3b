// The hash tables under the caches of keys.
#pragma once

#include <cstdint>

#include "tarvcore/config.h"
#include "tarvcore/string_trace_data.h"
#include "tarvcore/thread_mutex.h"

namespace tarvcore::impl {

class KeyCacheShard;

// An entry, as its shard sees it: a value that has this hash, with the number of its uses.
class TARVCORE_API KeyCacheItem : public StringTraceData {
public:
    ~KeyCacheItem() override;

    std::uint32_t hash() const { return hash_; }

protected:
    explicit KeyCacheItem(std::uint32_t hash) : hash_(hash) {}

private:
    friend class KeyCacheShard;

    unsigned use_count_ = 0;          // under the shard's lock
    KeyCacheShard* shard_ = nullptr;  // also when the shard is gone
    KeyCacheItem* next_ = nullptr;
    const std::uint32_t hash_;
};

// How many buckets a table gets that has outgrown so many: the next prime of a ladder that is not
// below four times the number, and at the ladder's end the same number again.
constexpr unsigned grown_bucket_count(unsigned bucket_count) {
    constexpr unsigned ladder[] = {251, 1021, 4093, 16381, 65537};
    for (const unsigned step : ladder)
        if (bucket_count * 4 <= step) return step;
    return 262151;
}

// A table of entries under a lock of its own.  Threads that use different shards do not wait for
// each other.  An entry lives as long as it has uses.
//
// Shards also keep the memory of a few tokens that have gone, for the next ones: a lock is held
// whenever one comes or goes, and a new block would cost more than all the rest.
class TARVCORE_API KeyCacheShard {
public:
    KeyCacheShard() = default;
    KeyCacheShard(const KeyCacheShard&) = delete;
    KeyCacheShard& operator=(const KeyCacheShard&) = delete;
    // The entries stay, without a shard: they are for those who use them.
    ~KeyCacheShard();

    // Before all else.
    void open(unsigned bucket_count);

    ThreadMutex& lock() { return lock_; }

    // The others, but `release`, are for whoever holds the lock.

    // Changes whenever an entry comes or goes.
    unsigned modification_count() const { return modification_count_; }
    unsigned entry_count() const { return entry_count_; }
    unsigned bucket_count() const { return chain_count_ / chains_per_bucket; }

    // The first entry of that hash that fits, or null.
    template <class Predicate>
    KeyCacheItem* find(std::uint32_t hash, Predicate fits) const {
        KeyCacheItem* item = *chain_of(hash);
        while (item != nullptr && !(item->hash_ == hash && fits(*item)))
            item = item->next_;
        return item;
    }
    static void add_use(KeyCacheItem& item) { ++item.use_count_; }
    // Takes the entry over, with a use.
    void insert(KeyCacheItem& item);
    // Memory for a token, or null: there is none, and the caller has to get it elsewhere.
    void* take_spare();

    // Gives back a use, without the lock held, and a token's memory, unless that is null.  The last
    // use takes the entry out of its shard and deletes it.  Where the shard is gone, nothing
    // happens to the entry.
    static void release(KeyCacheItem* item, void* token_memory);

private:
    struct Spare {
        Spare* next;
    };
    static constexpr unsigned max_spare_count = 64;

    // A bucket's entries are in two chains, entries of one hash in the same: where there are many,
    // each that stands in the way costs a line fetched from memory.  More chains would gain half as
    // much again, and take another 130 KiB in each process.
    static constexpr unsigned chains_per_bucket = 2;

    KeyCacheItem** chain_of(std::uint32_t hash) const { return &chains_[hash % chain_count_]; }
    void grow();
    void unlink(KeyCacheItem& item);
    bool keep_spare(void* memory);

    // Shards share no cache line.
    alignas(64) ThreadMutex lock_;
    unsigned modification_count_ = 0;
    unsigned chain_count_ = 0;
    KeyCacheItem** chains_ = nullptr;  // their heads
    unsigned entry_count_ = 0;
    Spare* spares_ = nullptr;
    unsigned spare_count_ = 0;
};

}  // namespace tarvcore::impl
