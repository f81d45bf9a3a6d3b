// What the vendors say about the models of processors.
#pragma once

#include <cstdint>
#include <string>

#include "tarvcore/hardware/cpu_models.h"

namespace tarvcore::impl {

// What models are told apart by.
struct CpuSignature {
    hardware::ECpuVendor vendor = hardware::ECpuVendor::unknown;
    std::uint32_t signature = 0;          // leaf 1 EAX
    std::uint32_t brand_index = 0;        // leaf 1 EBX bits 0-7
    std::uint32_t extended_brand_id = 0;  // leaf 0x80000001 EBX bits 0-15
    std::string brand_string;
};

struct CpuModel {
    std::string description;
    hardware::ECpuFamily family = hardware::ECpuFamily::unknown;
    hardware::ECpuBrand brand = hardware::ECpuBrand::unknown;
};

// The first row that fits.  There are rows of Intel's and AMD's processors; of others there is no
// description.
CpuModel find_cpu_model(const CpuSignature& signature);

}  // namespace tarvcore::impl
