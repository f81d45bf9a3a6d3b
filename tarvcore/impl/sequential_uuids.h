// Identifiers that sort in the order in which they were made.
#pragma once

#include <cstdint>

#include "tarvcore/config.h"
#include "tarvcore/thread_mutex.h"
#include "tarvcore/uuid.h"

namespace tarvcore::impl {

// A series of sequential identifiers; see Uuid::create_sequential.  Any number of threads may take
// them at once.
class TARVCORE_API SequentialUuids {
public:
    Uuid next();

private:
    void draw_nodes();

    ThreadMutex lock_;
    std::uint64_t last_time_ = 0;  // as it shows
    std::uint16_t counter_ = 0;
    std::uint32_t node1_ = 0;  // 0: not drawn yet
    std::uint32_t node2_ = 0;
};

}  // namespace tarvcore::impl
