#include "tarvcore/impl/cpu_model_tables.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>

TARVCORE_SOURCE_FILE("$Id: //tarvcore/impl/cpu_model_tables.cpp#1 $");

namespace tarvcore::impl {
namespace {

using hardware::ECpuBrand;
using hardware::ECpuFamily;
using hardware::ECpuVendor;

struct SignatureFields {
    explicit SignatureFields(std::uint32_t eax)
        : type(eax >> 12 & 3),
          base_family(eax >> 8 & 0xF),
          base_model(eax >> 4 & 0xF),
          family(base_family + (eax >> 20 & 0xFF)),
          model(base_model + (eax >> 12 & 0xF0)) {}

    unsigned type, base_family, base_model;
    unsigned family, model;  // with the extended fields
};

struct IntelRow {
    unsigned family, first_model, last_model;
    bool overdrive;  // upgrades only: processor type 1
    const char* description;
    ECpuFamily design;
};

// After Intel's application note 485, "Intel Processor Identification and the CPUID Instruction",
// up to models of 2011, and after the table of signatures in volume 4 of Intel's "Software
// Developer's Manual" for later ones.  Models are hexadecimal in the descriptions.
constexpr IntelRow intel_rows[] = {
    {4, 0x0, 0x1, false, "Intel486(TM) DX", ECpuFamily::i486},
    {4, 0x2, 0x2, false, "Intel486 SX", ECpuFamily::i486},
    {4, 0x3, 0x3, true, "IntelDX2 OverDrive", ECpuFamily::i486},
    {4, 0x3, 0x3, false, "Intel487, IntelDX2", ECpuFamily::i486},
    {4, 0x4, 0x4, false, "Intel486 SL", ECpuFamily::i486},
    {4, 0x5, 0x5, false, "IntelSX2(TM)", ECpuFamily::i486},
    {4, 0x7, 0x7, false, "Write-Back Enhanced IntelDX2", ECpuFamily::i486},
    {4, 0x8, 0x8, false, "IntelDX4(TM), IntelDX4 OverDrive", ECpuFamily::i486},
    {5, 0x1, 0x1, true, "Pentium OverDrive for Pentium 60-66 Mhz", ECpuFamily::pentium},
    {5, 0x2, 0x2, true, "Pentium OverDrive for Pentium 75-133 Mhz", ECpuFamily::pentium},
    {5, 0x3, 0x3, true, "Pentium OverDrive for Intel486 based systems", ECpuFamily::pentium},
    {5, 0x4, 0x4, true, "Pentium OverDrive with MMX(TM) technology for Pentium 75-133 Mhz",
     ECpuFamily::pentium},
    {5, 0x1, 0x1, false, "Pentium(R) 60-66 Mhz", ECpuFamily::pentium},
    {5, 0x2, 0x2, false, "Pentium 75-200 Mhz", ECpuFamily::pentium},
    {5, 0x4, 0x4, false, "Pentium with MMX(TM) technology 166-200 Mhz", ECpuFamily::pentium},
    {6, 0x01, 0x01, false, "Pentium Pro", ECpuFamily::p6},
    {6, 0x03, 0x03, true, "Pentium II OverDrive", ECpuFamily::p6},
    {6, 0x03, 0x03, false, "Pentium II model 3", ECpuFamily::p6},
    {6, 0x05, 0x05, false, "Pentium II model 5, Pentium II Xeon model 5, Celeron model 5",
     ECpuFamily::p6},
    {6, 0x06, 0x06, false, "Celeron, model 6", ECpuFamily::p6},
    {6, 0x07, 0x07, false, "Pentium III model 7, Pentium III Xeon model 7", ECpuFamily::p6},
    {6, 0x08, 0x08, false, "Pentium III model 8, Pentium III Xeon model 8, Celeron model 8",
     ECpuFamily::p6},
    {6, 0x09, 0x09, false, "Intel Pentium M model 9, Intel Celeron M model 9",
     ECpuFamily::pentium_m},
    {6, 0x0A, 0x0A, false, "Pentium III Xeon model A", ECpuFamily::p6},
    {6, 0x0B, 0x0B, false, "Pentium III model B", ECpuFamily::p6},
    {6, 0x0D, 0x0D, false, "Intel Pentium M model D 90 nm", ECpuFamily::pentium_m},
    {6, 0x0E, 0x0E, false, "Intel Core Duo, Intel Core Solo, model E, 65 nm",
     ECpuFamily::pentium_m},
    {6, 0x0F, 0x0F, false, "Intel Core 2, Intel Xeon, Intel Pentium Dual-Core, model F, 65 nm",
     ECpuFamily::core},
    {6, 0x15, 0x15, false, "Intel EP80579 Integrated Processor, model 15", ECpuFamily::pentium_m},
    {6, 0x16, 0x16, false, "Intel Celeron model 16, 65 nm", ECpuFamily::core},
    {6, 0x17, 0x17, false, "Intel Core 2, Intel Xeon, model 17, 45 nm", ECpuFamily::core},
    {6, 0x1D, 0x1D, false, "Intel Xeon MP model 1D, 45 nm", ECpuFamily::core},
    {6, 0x1C, 0x1C, false, "Intel Atom model 1C, 45 nm", ECpuFamily::atom},
    {6, 0x26, 0x27, false, "Intel Atom models 26 and 27", ECpuFamily::atom},
    {6, 0x35, 0x36, false, "Intel Atom models 35 and 36, 32 nm", ECpuFamily::atom},
    {6, 0x1A, 0x1A, false, "Intel Core i7, Intel Xeon, model 1A, 45 nm", ECpuFamily::nehalem},
    {6, 0x1E, 0x1F, false, "Intel Core i5, Intel Core i7, Intel Xeon, models 1E and 1F, 45 nm",
     ECpuFamily::nehalem},
    {6, 0x2E, 0x2E, false, "Intel Xeon MP model 2E, 45 nm", ECpuFamily::nehalem},
    {6, 0x25, 0x25, false, "Intel Core i3, i5 and i7 model 25, 32 nm", ECpuFamily::nehalem},
    {6, 0x2C, 0x2C, false, "Intel Core i7, Intel Xeon, model 2C, 32 nm", ECpuFamily::nehalem},
    {6, 0x2F, 0x2F, false, "Intel Xeon MP model 2F, 32 nm", ECpuFamily::nehalem},
    {6, 0x2A, 0x2A, false, "2nd generation Intel Core, Intel Xeon E3, model 2A, 32 nm",
     ECpuFamily::sandy_bridge},
    {6, 0x2D, 0x2D, false, "Intel Core i7, Intel Xeon E5, model 2D, 32 nm",
     ECpuFamily::sandy_bridge},
    {6, 0x3A, 0x3A, false, "3rd generation Intel Core, Intel Xeon E3 v2, model 3A, 22 nm",
     ECpuFamily::sandy_bridge},
    {6, 0x3E, 0x3E, false, "Intel Core i7, Intel Xeon E5 v2 and E7 v2, model 3E, 22 nm",
     ECpuFamily::sandy_bridge},
    {6, 0x3C, 0x3C, false, "4th generation Intel Core, Intel Xeon E3 v3, model 3C",
     ECpuFamily::haswell},
    {6, 0x3F, 0x3F, false, "Intel Core i7, Intel Xeon E5 v3 and E7 v3, model 3F",
     ECpuFamily::haswell},
    {6, 0x45, 0x46, false, "4th generation Intel Core, models 45 and 46", ECpuFamily::haswell},
    {6, 0x3D, 0x3D, false, "5th generation Intel Core, Intel Core M, model 3D",
     ECpuFamily::haswell},
    {6, 0x47, 0x47, false, "5th generation Intel Core, Intel Xeon E3 v4, model 47",
     ECpuFamily::haswell},
    {6, 0x4F, 0x4F, false, "Intel Core i7, Intel Xeon E5 v4 and E7 v4, model 4F",
     ECpuFamily::haswell},
    {6, 0x56, 0x56, false, "Intel Xeon D model 56", ECpuFamily::haswell},
    {6, 0x4E, 0x4E, false, "6th generation Intel Core, Intel Core M, model 4E",
     ECpuFamily::skylake},
    {6, 0x5E, 0x5E, false, "6th generation Intel Core, Intel Xeon E3 v5, model 5E",
     ECpuFamily::skylake},
    {6, 0x55, 0x55, false, "Intel Xeon Scalable, Intel Core X, model 55", ECpuFamily::skylake},
    {6, 0x8E, 0x8E, false, "7th to 10th generation Intel Core, model 8E", ECpuFamily::skylake},
    {6, 0x9E, 0x9E, false, "7th to 9th generation Intel Core, Intel Xeon E, model 9E",
     ECpuFamily::skylake},
    {6, 0xA5, 0xA6, false, "10th generation Intel Core, models A5 and A6", ECpuFamily::skylake},
    {6, 0x66, 0x66, false, "Intel Core model 66", ECpuFamily::ice_lake},
    {6, 0x6A, 0x6A, false, "3rd generation Intel Xeon Scalable, model 6A", ECpuFamily::ice_lake},
    {6, 0x6C, 0x6C, false, "Intel Xeon D model 6C", ECpuFamily::ice_lake},
    {6, 0x7D, 0x7E, false, "10th generation Intel Core, models 7D and 7E", ECpuFamily::ice_lake},
    {6, 0x8C, 0x8D, false, "11th generation Intel Core, models 8C and 8D", ECpuFamily::ice_lake},
    {6, 0xA7, 0xA7, false, "11th generation Intel Core, Intel Xeon E, model A7",
     ECpuFamily::ice_lake},
    {6, 0x8F, 0x8F, false, "4th generation Intel Xeon Scalable, model 8F", ECpuFamily::alder_lake},
    {6, 0xCF, 0xCF, false, "5th generation Intel Xeon Scalable, model CF", ECpuFamily::alder_lake},
    {6, 0x97, 0x97, false, "12th generation Intel Core, model 97", ECpuFamily::alder_lake},
    {6, 0x9A, 0x9A, false, "12th generation Intel Core, model 9A", ECpuFamily::alder_lake},
    {6, 0xB7, 0xB7, false, "13th generation Intel Core, model B7", ECpuFamily::alder_lake},
    {6, 0xBA, 0xBA, false, "13th generation Intel Core, model BA", ECpuFamily::alder_lake},
    {6, 0xBF, 0xBF, false, "13th generation Intel Core, model BF", ECpuFamily::alder_lake},
    {6, 0xAA, 0xAA, false, "Intel Core Ultra model AA", ECpuFamily::core_ultra},
    {6, 0x37, 0x37, false, "Intel Atom, Intel Celeron, Intel Pentium, model 37", ECpuFamily::atom},
    {6, 0x4A, 0x4A, false, "Intel Atom model 4A", ECpuFamily::atom},
    {6, 0x4C, 0x4D, false, "Intel Atom models 4C and 4D", ECpuFamily::atom},
    {6, 0x5A, 0x5A, false, "Intel Atom model 5A", ECpuFamily::atom},
    {6, 0x5C, 0x5D, false, "Intel Atom, Intel Celeron, Intel Pentium, models 5C and 5D",
     ECpuFamily::atom},
    {6, 0x5F, 0x5F, false, "Intel Atom model 5F", ECpuFamily::atom},
    {6, 0x7A, 0x7A, false, "Intel Atom, Intel Celeron, Intel Pentium, model 7A", ECpuFamily::atom},
    {6, 0x86, 0x86, false, "Intel Atom model 86", ECpuFamily::atom},
    {6, 0x96, 0x96, false, "Intel Atom model 96", ECpuFamily::atom},
    {6, 0x9C, 0x9C, false, "Intel Celeron, Intel Pentium, model 9C", ECpuFamily::atom},
    {6, 0xBE, 0xBE, false, "Intel Processor N model BE", ECpuFamily::atom},
    {6, 0x57, 0x57, false, "Intel Xeon Phi model 57", ECpuFamily::xeon_phi},
    {6, 0x85, 0x85, false, "Intel Xeon Phi model 85", ECpuFamily::xeon_phi},
    {15, 0x0, 0x1, false, "Pentium 4, Intel Xeon, models 0 and 1, 180 nm", ECpuFamily::netburst},
    {15, 0x2, 0x2, false, "Pentium 4, Intel Xeon, Celeron, model 2, 130 nm", ECpuFamily::netburst},
    {15, 0x3, 0x3, false, "Pentium 4, Intel Xeon, Celeron D, model 3, 90 nm", ECpuFamily::netburst},
    {15, 0x4, 0x4, false, "Pentium 4, Pentium D, Intel Xeon, Celeron D, model 4, 90 nm",
     ECpuFamily::netburst},
    {15, 0x6, 0x6, false, "Pentium 4, Pentium D, Intel Xeon, Celeron D, model 6, 65 nm",
     ECpuFamily::netburst},
};

struct AmdRow {
    unsigned family, first_model, last_model;
    const char* description;
    ECpuFamily design;
};

constexpr unsigned any_model = 0xFF;
constexpr unsigned k8_family = 15;

// After AMD's publication 20734, "AMD Processor Recognition", up to K7, and after the revision
// guides of later families.
constexpr AmdRow amd_rows[] = {
    {4, 0x3, 0x3, "Am486DX2-WT", ECpuFamily::am486},
    {4, 0x7, 0x7, "Am486DX2-WB", ECpuFamily::am486},
    {4, 0x8, 0x8, "Am486DX4-WT, Am5x86-WT", ECpuFamily::am486},
    {4, 0x9, 0x9, "Am486DX4-WB, Am5x86-WB", ECpuFamily::am486},
    {4, 0xE, 0xE, "Am5x86-WT", ECpuFamily::am486},
    {4, 0xF, 0xF, "Am5x86-WB", ECpuFamily::am486},
    {5, 0x0, 0x0, "AMD-K5 Model 0", ECpuFamily::k5},
    {5, 0x1, 0x1, "AMD-K5 Model 1", ECpuFamily::k5},
    {5, 0x2, 0x2, "AMD-K5 Model 2", ECpuFamily::k5},
    {5, 0x3, 0x3, "AMD-K5 Model 3", ECpuFamily::k5},
    {5, 0x6, 0x6, "AMD-K6 Model 6", ECpuFamily::k6},
    {5, 0x7, 0x7, "AMD-K6 Model 7", ECpuFamily::k6},
    {5, 0x8, 0x8, "AMD-K6-2 Model 8", ECpuFamily::k6},
    {5, 0x9, 0x9, "AMD-K6-III Model 9", ECpuFamily::k6},
    {5, 0xD, 0xD, "AMD-K6-2+, AMD-K6-III+ Model D", ECpuFamily::k6},
    {6, 0x1, 0x1, "AMD Athlon Model 1", ECpuFamily::k7},
    {6, 0x2, 0x2, "AMD Athlon Model 2", ECpuFamily::k7},
    {6, 0x3, 0x3, "AMD Duron Model 3, Mobile AMD Duron Model 3", ECpuFamily::k7},
    {6, 0x4, 0x4, "AMD Athlon Model 4", ECpuFamily::k7},
    {6, 0x6, 0x6, "AMD Athlon MP Model 6, AMD Athlon XP Model 6, Mobile AMD Athlon 4 Model 6",
     ECpuFamily::k7},
    {6, 0x7, 0x7, "AMD Duron Model 7, Mobile AMD Duron Model 7", ECpuFamily::k7},
    {6, 0x8, 0x8, "AMD Athlon MP Model 8, AMD Athlon XP Model 8, AMD Duron Model 8",
     ECpuFamily::k7},
    {6, 0xA, 0xA, "AMD Athlon MP Model 10, AMD Athlon XP Model 10, AMD Sempron Model 10",
     ECpuFamily::k7},
    // From revision F on the brand id is coded in another way, with the kind of package.
    {k8_family, 0x00, any_model, "AMD Athlon(tm) 64, AMD Opteron(tm), AMD Sempron(tm), family 0Fh",
     ECpuFamily::k8},
    {0x10, 0x00, any_model, "AMD Phenom(tm), AMD Athlon(tm) II, AMD Opteron(tm), family 10h",
     ECpuFamily::k10},
    {0x11, 0x00, any_model, "AMD Turion(tm) X2 Ultra, AMD Athlon(tm) X2, family 11h",
     ECpuFamily::k10},
    {0x12, 0x00, any_model, "AMD A-Series, AMD Athlon(tm) II, family 12h", ECpuFamily::k10},
    {0x14, 0x00, any_model, "AMD C-Series, AMD E-Series, family 14h", ECpuFamily::bobcat},
    {0x15, 0x00, any_model, "AMD FX(tm), AMD A-Series, AMD Opteron(tm), family 15h",
     ECpuFamily::bulldozer},
    {0x16, 0x00, any_model, "AMD A-Series, AMD E-Series, family 16h", ECpuFamily::jaguar},
    {0x17, 0x00, any_model, "AMD Ryzen(tm), AMD EPYC(tm), family 17h", ECpuFamily::zen},
    {0x19, 0x00, any_model, "AMD Ryzen(tm), AMD EPYC(tm), family 19h", ECpuFamily::zen3},
    {0x1A, 0x00, any_model, "AMD Ryzen(tm), AMD EPYC(tm), family 1Ah", ECpuFamily::zen5},
};

// The brand id of a K8 up to revision E: which row, and a number from which the model number in the
// name is made.
struct BrandIdRow {
    unsigned index;
    const char* format;
    unsigned base, step;
};

// After AMD's publication 25759, "Revision Guide for AMD Athlon 64 and AMD Opteron Processors".
constexpr BrandIdRow brand_id_rows[] = {
    {0x00, "AMD Engineering Sample %02d", 0, 1},
    {0x04, "AMD Athlon(tm) 64 Processor %02d00+", 22, 1},
    {0x05, "AMD Athlon(tm) 64 X2 Dual Core Processor %02d00+", 22, 1},
    {0x08, "Mobile AMD Athlon(tm) 64 Processor %02d00+", 22, 1},
    {0x09, "Mobile AMD Athlon(tm) 64 Processor %02d00+", 22, 1},
    {0x0A, "AMD Turion(tm) 64 Mobile Technology ML-%02d", 22, 1},
    {0x0B, "AMD Turion(tm) 64 Mobile Technology MT-%02d", 22, 1},
    {0x0C, "AMD Opteron(tm) Processor 1%02d", 38, 2},
    {0x0D, "AMD Opteron(tm) Processor 1%02d", 38, 2},
    {0x0E, "AMD Opteron(tm) Processor 1%02d HE", 38, 2},
    {0x0F, "AMD Opteron(tm) Processor 1%02d EE", 38, 2},
    {0x10, "AMD Opteron(tm) Processor 2%02d", 38, 2},
    {0x11, "AMD Opteron(tm) Processor 2%02d", 38, 2},
    {0x12, "AMD Opteron(tm) Processor 2%02d HE", 38, 2},
    {0x13, "AMD Opteron(tm) Processor 2%02d EE", 38, 2},
    {0x14, "AMD Opteron(tm) Processor 8%02d", 38, 2},
    {0x15, "AMD Opteron(tm) Processor 8%02d", 38, 2},
    {0x16, "AMD Opteron(tm) Processor 8%02d HE", 38, 2},
    {0x17, "AMD Opteron(tm) Processor 8%02d EE", 38, 2},
    {0x18, "AMD Athlon(tm) 64 Processor %02d00+", 9, 1},
    {0x1D, "Mobile AMD Athlon(tm) XP-M Processor %02d00+", 22, 1},
    {0x1E, "Mobile AMD Athlon(tm) XP-M Processor %02d00+", 22, 1},
    {0x20, "AMD Athlon(tm) XP Processor %02d00+", 22, 1},
    {0x21, "Mobile AMD Sempron(tm) Processor %02d00+", 24, 1},
    {0x22, "AMD Sempron(tm) Processor %02d00+", 24, 1},
    {0x23, "Mobile AMD Sempron(tm) Processor %02d00+", 24, 1},
    {0x24, "AMD Athlon(tm) 64 FX-%02d Processor", 24, 1},
    {0x26, "AMD Sempron(tm) Processor %02d00+", 24, 1},
    {0x29, "Dual Core AMD Opteron(tm) Processor 1%02d SE", 45, 5},
    {0x2A, "Dual Core AMD Opteron(tm) Processor 2%02d SE", 45, 5},
    {0x2B, "Dual Core AMD Opteron(tm) Processor 8%02d SE", 45, 5},
    {0x2C, "Dual Core AMD Opteron(tm) Processor 1%02d", 45, 5},
    {0x2D, "Dual Core AMD Opteron(tm) Processor 1%02d", 45, 5},
    {0x2E, "Dual Core AMD Opteron(tm) Processor 1%02d HE", 45, 5},
    {0x2F, "Dual Core AMD Opteron(tm) Processor 1%02d EE", 45, 5},
    {0x30, "Dual Core AMD Opteron(tm) Processor 2%02d", 45, 5},
    {0x31, "Dual Core AMD Opteron(tm) Processor 2%02d", 45, 5},
    {0x32, "Dual Core AMD Opteron(tm) Processor 2%02d HE", 45, 5},
    {0x33, "Dual Core AMD Opteron(tm) Processor 2%02d EE", 45, 5},
    {0x34, "Dual Core AMD Opteron(tm) Processor 8%02d", 45, 5},
    {0x35, "Dual Core AMD Opteron(tm) Processor 8%02d", 45, 5},
    {0x36, "Dual Core AMD Opteron(tm) Processor 8%02d HE", 45, 5},
    {0x37, "Dual Core AMD Opteron(tm) Processor 8%02d EE", 45, 5},
    {0x38, "Dual Core AMD Opteron(tm) Processor 1%02d", 45, 5},
    {0x39, "Dual Core AMD Opteron(tm) Processor 2%02d", 45, 5},
    {0x3A, "Dual Core AMD Opteron(tm) Processor 8%02d", 45, 5},
    {0x3B, "Dual Core AMD Opteron(tm) Processor 1%02d", 45, 5},
    {0x3C, "Dual Core AMD Opteron(tm) Processor 2%02d", 45, 5},
    {0x3D, "Dual Core AMD Opteron(tm) Processor 8%02d", 45, 5},
};

// The brand index, again after application note 485; the numbers that are missing are of no brand.
struct BrandIndexRow {
    unsigned index;
    ECpuBrand brand;
};

constexpr BrandIndexRow brand_index_rows[] = {
    {0x01, ECpuBrand::celeron}, {0x02, ECpuBrand::pentium}, {0x03, ECpuBrand::xeon},
    {0x04, ECpuBrand::pentium}, {0x06, ECpuBrand::pentium}, {0x07, ECpuBrand::celeron},
    {0x08, ECpuBrand::pentium}, {0x09, ECpuBrand::pentium}, {0x0A, ECpuBrand::celeron},
    {0x0B, ECpuBrand::xeon},    {0x0C, ECpuBrand::xeon},    {0x0E, ECpuBrand::pentium},
    {0x0F, ECpuBrand::celeron}, {0x12, ECpuBrand::celeron}, {0x13, ECpuBrand::celeron},
    {0x14, ECpuBrand::celeron}, {0x16, ECpuBrand::pentium}, {0x17, ECpuBrand::celeron},
};

// Names of brands in names of processors; the first that is there counts, so "Celeron" before the
// "Pentium" that some of them are after.
struct BrandWord {
    std::string_view word;
    ECpuBrand brand;
};

constexpr BrandWord brand_words[] = {
    {"Xeon", ECpuBrand::xeon},          {"Celeron", ECpuBrand::celeron},
    {"Atom", ECpuBrand::atom},          {"Pentium", ECpuBrand::pentium},
    {"Core(TM)", ECpuBrand::core},      {"Intel Core", ECpuBrand::core},
    {"Intel486", ECpuBrand::intel_486}, {"IntelDX", ECpuBrand::intel_486},
    {"IntelSX", ECpuBrand::intel_486},  {"Am486", ECpuBrand::amd_486},
    {"Am5x86", ECpuBrand::amd_486},     {"AMD-K5", ECpuBrand::k5},
    {"AMD-K6", ECpuBrand::k6},          {"EPYC", ECpuBrand::epyc},
    {"Ryzen", ECpuBrand::ryzen},        {"AMD FX", ECpuBrand::fx},
    {"Opteron", ECpuBrand::opteron},    {"Phenom", ECpuBrand::phenom},
    {"Turion", ECpuBrand::turion},      {"Sempron", ECpuBrand::sempron},
    {"Duron", ECpuBrand::duron},        {"Athlon", ECpuBrand::athlon},
};

ECpuBrand brand_in(std::string_view name) {
    for (const auto& [word, brand] : brand_words) {
        if (name.find(word) != name.npos) return brand;
    }
    return ECpuBrand::unknown;
}

// A description of several products, with commas between them, must be of one brand.
ECpuBrand only_brand_in(std::string_view description) {
    const ECpuBrand brand = brand_in(description.substr(0, description.find(',')));
    for (auto comma = description.find(','); comma != description.npos;
         comma = description.find(',')) {
        description.remove_prefix(comma + 1);
        const ECpuBrand other = brand_in(description.substr(0, description.find(',')));
        if (other != brand && other != ECpuBrand::unknown) return ECpuBrand::unknown;
    }
    return brand;
}

ECpuBrand brand_of_index(unsigned index) {
    const auto* const row = std::ranges::find(brand_index_rows, index, &BrandIndexRow::index);
    return row == std::end(brand_index_rows) ? ECpuBrand::unknown : row->brand;
}

CpuModel find_intel_model(const SignatureFields& fields) {
    for (const IntelRow& row : intel_rows) {
        if (fields.family == row.family && fields.model >= row.first_model &&
            fields.model <= row.last_model && (!row.overdrive || fields.type == 1)) {
            return {row.description, row.design, ECpuBrand::unknown};
        }
    }
    return {"Unrecognized Intel CPU Brand String", ECpuFamily::unknown, ECpuBrand::unknown};
}

// Empty where the table has no row.
std::string k8_name(const CpuSignature& signature) {
    // An eight-bit brand id of the first models has the place of Intel's brand index.
    const bool short_id = signature.brand_index != 0;
    const unsigned index =
        short_id ? signature.brand_index >> 5 << 2 : signature.extended_brand_id >> 6 & 0x3F;
    const unsigned number =
        short_id ? signature.brand_index & 0x1F : signature.extended_brand_id & 0x3F;
    const auto* const row = std::ranges::find(brand_id_rows, index, &BrandIdRow::index);
    if (row == std::end(brand_id_rows)) return {};
    constexpr std::string_view place = "%02d";
    std::string name = row->format;
    const std::string digits = std::to_string(row->base + row->step * number);
    return name.replace(name.find(place), place.size(), digits.size() < 2 ? '0' + digits : digits);
}

CpuModel find_amd_model(const SignatureFields& fields, const CpuSignature& signature) {
    constexpr unsigned first_revision_f_model = 0x40;
    for (const AmdRow& row : amd_rows) {
        if (fields.family != row.family || fields.model < row.first_model ||
            fields.model > row.last_model) {
            continue;
        }
        CpuModel model{row.description, row.design, ECpuBrand::unknown};
        if (fields.family == k8_family && fields.model < first_revision_f_model) {
            if (std::string name = k8_name(signature); !name.empty()) model.description = name;
        }
        return model;
    }
    return {"Unrecognized AMD CPU Brand String", ECpuFamily::unknown, ECpuBrand::unknown};
}

}  // namespace

CpuModel find_cpu_model(const CpuSignature& signature) {
    const SignatureFields fields(signature.signature);
    const bool is_intel = signature.vendor == ECpuVendor::intel;
    if (!is_intel && signature.vendor != ECpuVendor::amd) return {};

    CpuModel model = is_intel ? find_intel_model(fields) : find_amd_model(fields, signature);
    model.brand = brand_in(signature.brand_string);
    if (model.brand == ECpuBrand::unknown && is_intel) {
        model.brand = brand_of_index(signature.brand_index);
    }
    if (model.brand == ECpuBrand::unknown) model.brand = only_brand_in(model.description);
    return model;
}

}  // namespace tarvcore::impl
