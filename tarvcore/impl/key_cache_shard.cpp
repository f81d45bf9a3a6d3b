#include "tarvcore/impl/key_cache_shard.h"

#include <new>
#include <utility>

#include "ace/Guard_T.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/impl/key_cache_shard.cpp#1 $");

namespace tarvcore::impl {
namespace {

constexpr unsigned max_entries_per_bucket = 4;

// Who holds the lock is about to release it: to sleep would take longer by far.
constexpr unsigned spins_before_sleep = 1000;

}  // namespace

KeyCacheItem::~KeyCacheItem() = default;

void KeyCacheShard::open(unsigned bucket_count) {
    chains_ = new KeyCacheItem* [bucket_count * chains_per_bucket] {};
    chain_count_ = bucket_count * chains_per_bucket;
    lock_.set_spin_count(spins_before_sleep);
}

KeyCacheShard::~KeyCacheShard() {
    for (unsigned i = 0; i < chain_count_; ++i) {
        for (KeyCacheItem* item = chains_[i]; item != nullptr; item = item->next_)
            item->shard_ = nullptr;
    }
    delete[] chains_;
    while (void* spare = take_spare())
        operator delete(spare);
}

void KeyCacheShard::insert(KeyCacheItem& item) {
    if (++entry_count_ > bucket_count() * max_entries_per_bucket) grow();
    item.shard_ = this;
    ++item.use_count_;
    KeyCacheItem*& head = *chain_of(item.hash_);
    item.next_ = head;
    head = &item;
    ++modification_count_;
}

// Where there is no memory for more buckets, the chains become longer instead.
void KeyCacheShard::grow() {
    const unsigned new_bucket_count = grown_bucket_count(bucket_count());
    if (new_bucket_count == bucket_count()) return;
    const unsigned old_count = chain_count_;
    const unsigned new_count = new_bucket_count * chains_per_bucket;
    auto** new_chains = new (std::nothrow) KeyCacheItem* [new_count] {};
    if (new_chains == nullptr) return;
    KeyCacheItem** const old_chains = std::exchange(chains_, new_chains);
    chain_count_ = new_count;
    for (unsigned i = 0; i < old_count; ++i) {
        for (KeyCacheItem* item = old_chains[i]; item != nullptr;) {
            KeyCacheItem* const next = item->next_;
            KeyCacheItem*& head = *chain_of(item->hash_);
            item->next_ = head;
            head = item;
            item = next;
        }
    }
    delete[] old_chains;
}

void KeyCacheShard::unlink(KeyCacheItem& item) {
    KeyCacheItem** link = chain_of(item.hash_);
    while (*link != &item)
        link = &(*link)->next_;
    *link = item.next_;
    --entry_count_;
    ++modification_count_;
}

void* KeyCacheShard::take_spare() {
    Spare* const spare = spares_;
    if (spare != nullptr) {
        spares_ = spare->next;
        --spare_count_;
    }
    return spare;
}

bool KeyCacheShard::keep_spare(void* memory) {
    if (spare_count_ == max_spare_count) return false;
    spares_ = new (memory) Spare{spares_};
    ++spare_count_;
    return true;
}

void KeyCacheShard::release(KeyCacheItem* item, void* token_memory) {
    if (KeyCacheShard* const shard = item->shard_) {
        const ACE_Guard<ThreadMutex> guard(shard->lock_);
        if (token_memory != nullptr && shard->keep_spare(token_memory)) token_memory = nullptr;
        if (--item->use_count_ == 0) {
            shard->unlink(*item);
        } else {
            item = nullptr;
        }
    } else {
        item = nullptr;
    }
    // Without the lock.
    delete item;
    operator delete(token_memory);
}

}  // namespace tarvcore::impl
