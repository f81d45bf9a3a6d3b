// The caches that the process has while the library is loaded.
#pragma once

#include "tarvcore/impl/process_end.h"

namespace tarvcore::impl {

// Opens a cache at load and ends it at unload.
template <class Cache>
class ProcessKeyCache {
public:
    ProcessKeyCache(Cache& cache, unsigned shard_count, unsigned bucket_count) : cache_(cache) {
        cache.open(shard_count, bucket_count);
    }
    ~ProcessKeyCache() {
        // At the end of the process a thread may have been stopped within a shard.
        if (process_is_ending()) {
            cache_.abandon();
        } else {
            cache_.close();
        }
    }
    ProcessKeyCache(const ProcessKeyCache&) = delete;
    ProcessKeyCache& operator=(const ProcessKeyCache&) = delete;

private:
    Cache& cache_;
};

}  // namespace tarvcore::impl
