// The caches behind the keys of texts and identifiers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "ace/Guard_T.h"
#include "tarvcore/config.h"
#include "tarvcore/impl/key_cache_shard.h"
#include "tarvcore/interface_ptr.h"
#include "tarvcore/ref_count_ptr.h"
#include "tarvcore/string_trace_data.h"

namespace tarvcore::impl {

struct KeyCacheCounts {
    unsigned entries;
    unsigned buckets;
};

// One entry for each value that some token stands for.
//
//     Token        what is derived from; made of a pointer to the value, which is its key value
//     Value        what an entry holds, made of a Hash::Source; `Value::extra_size`, if there is
//                  one, tells how many bytes it needs behind itself for one
//     Hash, Equal  of a Source; of a value and a Source
//     TraceString  made of a Source, and called with the value tells the trace text
//
// Without shards, before `open` and after `close`, every look-up raises.  Neither constructor nor
// destructor do anything: static objects of this type can be used as long as the process lives.
template <class Token, class Value, class Hash, class Equal, class TraceString>
class ObjectKeyCache {
public:
    using Source = typename Hash::Source;
    using TokenPtr = RefCountPtr<const Token>;

    constexpr ObjectKeyCache() = default;
    ObjectKeyCache(const ObjectKeyCache&) = delete;
    ObjectKeyCache& operator=(const ObjectKeyCache&) = delete;

    // While nobody else uses the cache.  Tokens may go after `close` as well; each entry that has
    // one then stays for ever.
    void open(unsigned shard_count, unsigned bucket_count) {
        auto shards = std::make_unique<KeyCacheShard[]>(shard_count);
        for (unsigned i = 0; i < shard_count; ++i)
            shards[i].open(bucket_count);
        shards_ = shards.release();
        shard_count_ = shard_count;
    }
    void close() {
        shard_count_ = 0;
        delete[] std::exchange(shards_, nullptr);
    }
    // The same without a look at the shards.
    void abandon() { shard_count_ = 0; }

    // A new token of the value, and its entry, new or not.  Raises std::bad_alloc.
    TokenPtr token_for(const Source& source) {
        if (shard_count_ == 0) throw_no_shards();
        const std::uint32_t hash = Hash()(source);
        KeyCacheShard& shard = shards_[hash % shard_count_];
        const auto fits = [&source](const KeyCacheItem& item) {
            return Equal()(static_cast<const CacheItem&>(item).value(), source);
        };

        std::unique_ptr<CacheItem> made;
        ACE_Guard<ThreadMutex> guard(shard.lock());
        for (;;) {
            // The first one of that hash is nearly always the right one.  It is compared without
            // the lock; meanwhile its use keeps it.
            if (KeyCacheItem* const first = shard.find(hash, [](auto&) { return true; })) {
                void* const memory = take(*first, shard);
                guard.release();
                if (fits(*first)) return make_token(*first, memory);
                KeyCacheShard::release(first, memory);
                guard.acquire();
                if (KeyCacheItem* const item = shard.find(hash, fits)) {
                    void* const item_memory = take(*item, shard);
                    guard.release();
                    return make_token(*item, item_memory);
                }
            }
            const unsigned seen = shard.modification_count();
            if (!made) {
                guard.release();
                made.reset(CacheItem::create(source, hash));
                guard.acquire();
            }
            if (seen != shard.modification_count()) continue;  // it may have come, too
            CacheItem& item = *made.release();
            shard.insert(item);
            void* const memory = shard.take_spare();
            guard.release();
            return make_token(item, memory);
        }
    }

    // Of all shards.
    KeyCacheCounts counts() {
        KeyCacheCounts sum = {0, 0};
        for (unsigned i = 0; i < shard_count_; ++i) {
            const ACE_Guard<ThreadMutex> guard(shards_[i].lock());
            sum.entries += shards_[i].entry_count();
            sum.buckets += shards_[i].bucket_count();
        }
        return sum;
    }

private:
    class CacheItem final : public KeyCacheItem {
    public:
        static CacheItem* create(const Source& source, std::uint32_t hash) {
            Extra extra = {0};
            if constexpr (requires { Value::extra_size(source); }) {
                extra.size = Value::extra_size(source);
            }
            return new (extra) CacheItem(source, hash);
        }
        // Of a size that the compiler does not know.
        static void operator delete(void* block) { ::operator delete(block); }

        const Value& value() const { return value_; }
        std::string_view query_trace_text() const override { return trace_(value_); }

    private:
        CacheItem(const Source& source, std::uint32_t hash)
            : KeyCacheItem(hash), trace_(source), value_(source) {}

        struct Extra {
            std::size_t size;
        };
        static void* operator new(std::size_t size, Extra extra) {
            return ::operator new(size + extra.size);
        }
        static void operator delete(void* block, Extra) { ::operator delete(block); }

        [[no_unique_address]] TraceString trace_;
        Value value_;  // last: more of it may follow
    };

    // One use of an entry.
    class TokenImpl final : public Token {
    public:
        explicit TokenImpl(CacheItem& item) : Token(&item.value()), item_(item) {}

        InterfacePtr<const StringTraceData> query_trace_data() const override {
            return {&item_, this};
        }

    private:
        ~TokenImpl() override = default;
        // There is nothing to destroy but the use.
        void destroy() const override {
            KeyCacheShard::release(&item_, const_cast<TokenImpl*>(this));
        }

        CacheItem& item_;
    };

    [[noreturn]] TARVCORE_COLD static void throw_no_shards() {
        throw std::runtime_error(
            "tarvcore::impl::ObjectKeyCache not constructed or already destroyed");
    }

    // With the lock held.
    static void* take(KeyCacheItem& item, KeyCacheShard& shard) {
        KeyCacheShard::add_use(item);
        return shard.take_spare();
    }
    // Takes over a use of the entry.
    static TokenPtr make_token(KeyCacheItem& item, void* memory) {
        if (memory == nullptr) memory = operator new(sizeof(TokenImpl), std::nothrow);
        if (memory == nullptr) {
            KeyCacheShard::release(&item, nullptr);
            throw std::bad_alloc();
        }
        return TokenPtr(new (memory) TokenImpl(static_cast<CacheItem&>(item)));
    }

    unsigned shard_count_ = 0;
    KeyCacheShard* shards_ = nullptr;
};

}  // namespace tarvcore::impl
