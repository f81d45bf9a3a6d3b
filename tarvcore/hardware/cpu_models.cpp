#include "tarvcore/hardware/cpu_models.h"

#include <iterator>

TARVCORE_SOURCE_FILE("$Id: //tarvcore/hardware/cpu_models.cpp#1 $");

namespace tarvcore::hardware {
namespace {

// In the order of the enumerations.
constexpr const char* family_names[] = {
    "unknown", "Intel486",     "Pentium",   "P6",      "Pentium M", "NetBurst",   "Core",
    "Nehalem", "Sandy Bridge", "Haswell",   "Skylake", "Ice Lake",  "Alder Lake", "Core Ultra",
    "Atom",    "Xeon Phi",     "Am486",     "K5",      "K6",        "K7",         "K8",
    "K10",     "Bobcat",       "Bulldozer", "Jaguar",  "Zen",       "Zen 3",      "Zen 5",
};
constexpr const char* brand_names[] = {
    "unknown", "Intel486", "Pentium", "Celeron", "Xeon",   "Core",    "Atom",
    "Am486",   "AMD-K5",   "AMD-K6",  "Duron",   "Athlon", "Sempron", "Turion",
    "Phenom",  "Opteron",  "FX",      "Ryzen",   "EPYC",
};
static_assert(std::size(family_names) == static_cast<unsigned>(ECpuFamily::zen5) + 1);
static_assert(std::size(brand_names) == static_cast<unsigned>(ECpuBrand::epyc) + 1);

template <unsigned count, class Kind>
const char* name_of(const char* const (&names)[count], Kind kind) {
    const auto index = static_cast<unsigned>(kind);
    return names[index < count ? index : 0];
}

}  // namespace

const char* cpu_family_name(ECpuFamily family) {
    return name_of(family_names, family);
}

const char* cpu_brand_name(ECpuBrand brand) {
    return name_of(brand_names, brand);
}

}  // namespace tarvcore::hardware
