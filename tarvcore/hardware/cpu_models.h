// Kinds of processors.
#pragma once

#include "tarvcore/config.h"

namespace tarvcore::hardware {

// The vendor strings that are known; their order is that of the strings in cpu_info.cpp.
enum class ECpuVendor : unsigned {
    intel,
    amd,
    umc,
    cyrix,
    nexgen,
    centaur,
    rise,
    sis,
    transmeta,
    geode,
    unknown,
};

// Processors of one design, as far as vendor, family and model tell it.  A design with its shrink
// and its small changes is one: `skylake` goes on to the tenth generation of its line.
enum class ECpuFamily : unsigned {
    unknown,
    i486,
    pentium,
    p6,  // Pentium Pro, II and III
    pentium_m,
    netburst,
    core,
    nehalem,
    sandy_bridge,
    haswell,
    skylake,
    ice_lake,
    alder_lake,
    core_ultra,
    atom,
    xeon_phi,
    am486,
    k5,
    k6,
    k7,
    k8,
    k10,
    bobcat,
    bulldozer,
    jaguar,
    zen,
    zen3,
    zen5,
};

// Lines of products, under the name that the vendor sells them by.
enum class ECpuBrand : unsigned {
    unknown,
    intel_486,
    pentium,
    celeron,
    xeon,
    core,
    atom,
    amd_486,
    k5,
    k6,
    duron,
    athlon,
    sempron,
    turion,
    phenom,
    opteron,
    fx,
    ryzen,
    epyc,
};

// For readers: "Sandy Bridge", "K8", "Athlon"; "unknown", also of a value that is none of them.
TARVCORE_API const char* cpu_family_name(ECpuFamily family);
TARVCORE_API const char* cpu_brand_name(ECpuBrand brand);

}  // namespace tarvcore::hardware
