#include "tarvcore/hardware/cpu_models.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/hardware/cpu_models.cpp#1 $");

namespace tarvcore::hardware {

const char* cpu_family_name(ECpuFamily family) {
    switch (family) {
        case ECpuFamily::unknown:
            break;
        case ECpuFamily::i486:
            return "Intel486";
        case ECpuFamily::pentium:
            return "Pentium";
        case ECpuFamily::p6:
            return "P6";
        case ECpuFamily::pentium_m:
            return "Pentium M";
        case ECpuFamily::netburst:
            return "NetBurst";
        case ECpuFamily::core:
            return "Core";
        case ECpuFamily::nehalem:
            return "Nehalem";
        case ECpuFamily::sandy_bridge:
            return "Sandy Bridge";
        case ECpuFamily::haswell:
            return "Haswell";
        case ECpuFamily::skylake:
            return "Skylake";
        case ECpuFamily::ice_lake:
            return "Ice Lake";
        case ECpuFamily::alder_lake:
            return "Alder Lake";
        case ECpuFamily::core_ultra:
            return "Core Ultra";
        case ECpuFamily::atom:
            return "Atom";
        case ECpuFamily::xeon_phi:
            return "Xeon Phi";
        case ECpuFamily::am486:
            return "Am486";
        case ECpuFamily::k5:
            return "K5";
        case ECpuFamily::k6:
            return "K6";
        case ECpuFamily::k7:
            return "K7";
        case ECpuFamily::k8:
            return "K8";
        case ECpuFamily::k10:
            return "K10";
        case ECpuFamily::bobcat:
            return "Bobcat";
        case ECpuFamily::bulldozer:
            return "Bulldozer";
        case ECpuFamily::jaguar:
            return "Jaguar";
        case ECpuFamily::zen:
            return "Zen";
        case ECpuFamily::zen3:
            return "Zen 3";
        case ECpuFamily::zen5:
            return "Zen 5";
    }
    return "unknown";
}

const char* cpu_brand_name(ECpuBrand brand) {
    switch (brand) {
        case ECpuBrand::unknown:
            break;
        case ECpuBrand::intel_486:
            return "Intel486";
        case ECpuBrand::pentium:
            return "Pentium";
        case ECpuBrand::celeron:
            return "Celeron";
        case ECpuBrand::xeon:
            return "Xeon";
        case ECpuBrand::core:
            return "Core";
        case ECpuBrand::atom:
            return "Atom";
        case ECpuBrand::amd_486:
            return "Am486";
        case ECpuBrand::k5:
            return "AMD-K5";
        case ECpuBrand::k6:
            return "AMD-K6";
        case ECpuBrand::duron:
            return "Duron";
        case ECpuBrand::athlon:
            return "Athlon";
        case ECpuBrand::sempron:
            return "Sempron";
        case ECpuBrand::turion:
            return "Turion";
        case ECpuBrand::phenom:
            return "Phenom";
        case ECpuBrand::opteron:
            return "Opteron";
        case ECpuBrand::fx:
            return "FX";
        case ECpuBrand::ryzen:
            return "Ryzen";
        case ECpuBrand::epyc:
            return "EPYC";
    }
    return "unknown";
}

}  // namespace tarvcore::hardware
