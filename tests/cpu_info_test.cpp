// Faults to catch: a bit read from another leaf, register or place; a flag told of a vendor that
// means something else by it; counts, masks and shifts by the wrong leaf; what processors claim
// believed: reads beyond what is stored, loops without an end, division by zero; dumps that depend
// on their stream.

#include "tarvcore/hardware/cpu_info.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace tarvcore::hardware;

std::string dump_of(const std::string& name) {
    std::ifstream file(std::filesystem::path(TEST_DATA_FOLDER "/cpuid") / (name + ".txt"));
    EXPECT_TRUE(file.is_open()) << name;
    return {std::istreambuf_iterator<char>(file), {}};
}

CpuidRecording recording_of(const std::string& text) {
    CpuidRecording recording;
    EXPECT_GT(recording.add_text(text), 0u);
    return recording;
}

CpuInfo info_of(const std::string& text) {
    return CpuInfo(recording_of(text));
}

std::string flags_of(const CpuInfo& info) {
    std::string names;
    for (const CpuOptionFlag& row : cpu_option_flags()) {
        const auto flag = static_cast<EOptionFlag>(&row - cpu_option_flags().data());
        if (info.has_option(flag)) names += std::string(" ") + row.name;
    }
    return names;
}

// In the order of the table, four a digit, the first one the lowest bit.
std::string flag_digits(const CpuInfo& info) {
    std::string digits;
    unsigned digit = 0;
    unsigned count = 0;
#define ROW(name, gate, leaf, reg, bit, description)              \
    digit |= static_cast<unsigned>(info.name()) << (count++ % 4); \
    if (count % 4 == 0) {                                         \
        digits += "0123456789abcdef"[digit];                      \
        digit = 0;                                                \
    }
    TARVCORE_CPU_OPTION_FLAGS(ROW)
#undef ROW
    return digits + "0123456789abcdef"[digit];
}

// Facts that an independent decoder of the same values has confirmed, as far as it knows them.
const struct {
    const char *dump, *vendor;
    unsigned family, model, logical, cores, package_shift, core_shift, cache_kb;
    unsigned physical_bits, virtual_bits;
    const char *design, *brand, *brand_string, *description, *flags;
} real_processors[] = {
    {"AuthenticAMD0000524_K5", "AuthenticAMD", 5, 2, 1, 1, 0, 0, 0, 0, 0, "K5", "AMD-K5",
     "AMD-K5(tm) Processor", "AMD-K5 Model 2", "fb110000000000000000000000000"},
    {"AuthenticAMD0000562_K6", "AuthenticAMD", 5, 6, 1, 1, 0, 0, 0, 0, 0, "K6", "AMD-K6",
     "AMD-K6tm w/ multimedia extensions", "AMD-K6 Model 6", "fb100200000000000000000000000"},
    {"AuthenticAMD0000644_K7_Thunderbird", "AuthenticAMD", 6, 4, 1, 1, 0, 0, 256, 0, 0, "K7",
     "Athlon", "AMD Athlon(tm) Processor", "AMD Athlon Model 4", "ffdf1600000000000041300000000"},
    {"AuthenticAMD0000F4A_K8_Clawhammer", "AuthenticAMD", 15, 4, 1, 1, 0, 0, 512, 40, 48, "K8",
     "Athlon", "AMD Athlon(tm) 64 Processor 2800+", "AMD Athlon(tm) 64 Processor 2800+",
     "ffff5e100000000000c1300000f02"},
    {"AuthenticAMD0100F22_K10_Agena", "AuthenticAMD", 16, 2, 4, 4, 2, 0, 512, 48, 48, "K10",
     "unknown", "AMD Engineering Sample",
     "AMD Phenom(tm), AMD Athlon(tm) II, AMD Opteron(tm), family 10h",
     "ffff5e542080010000cffff0009f7"},
    {"AuthenticAMD0600F12_K15_Zambezi8C", "AuthenticAMD", 21, 1, 8, 8, 4, 0, 2048, 48, 48,
     "Bulldozer", "FX", "AMD FX(tm)-8150 Eight-Core Processor",
     "AMD FX(tm), AMD A-Series, AMD Opteron(tm), family 15h", "ffff5e5c28803d3000cfcfffd19d7"},
    {"AuthenticAMD0800F12_K17_Zen4", "AuthenticAMD", 23, 1, 16, 16, 6, 0, 512, 48, 48, "Zen",
     "EPYC", "AMD EPYC 7401P 24-Core Processor", "AMD Ryzen(tm), AMD EPYC(tm), family 17h",
     "ffff5e5c08c03d7100cf4e7440987"},
    {"AuthenticAMD0A20F10_K19_Vermeer1", "AuthenticAMD", 25, 1, 16, 16, 5, 0, 512, 48, 48, "Zen 3",
     "Ryzen", "AMD Ryzen 9 5950X 16-Core Processor", "AMD Ryzen(tm), AMD EPYC(tm), family 19h",
     "ffff5e5c28c03d7000cfcff6c5997"},
    {"AuthenticAMD0B20F40_K20_StrixPoint_06", "AuthenticAMD", 26, 4, 8, 8, 5, 0, 1024, 48, 48,
     "Zen 5", "Ryzen", "AMD Ryzen AI 9 HX 370 w/ Radeon 890M",
     "AMD Ryzen(tm), AMD EPYC(tm), family 1Ah", "ffff5e5c28c03d7000cfcff6c5997"},
    {"CentaurHauls0000698_C5P_Nehemiah", "CentaurHauls", 6, 9, 1, 1, 0, 0, 64, 0, 0, "unknown",
     "unknown", "VIA Nehemiah", "", "f3dd0e00000000000000000000000"},
    {"GenuineIntel0000480_486", "GenuineIntel", 4, 8, 1, 1, 0, 0, 0, 0, 0, "Intel486", "Intel486",
     "", "IntelDX4(TM), IntelDX4 OverDrive", "30000000000000000000000000000"},
    {"GenuineIntel0000525_P54C", "GenuineIntel", 5, 2, 1, 1, 0, 0, 0, 0, 0, "Pentium", "Pentium",
     "", "Pentium 75-200 Mhz", "fb100000000000000000000000000"},
    {"GenuineIntel0000633_P2_Klamath", "GenuineIntel", 6, 3, 1, 1, 0, 0, 0, 0, 0, "P6", "Pentium",
     "", "Pentium II model 3", "fff70200000000000000000000000"},
    {"GenuineIntel0000683_P3_Coppermine", "GenuineIntel", 6, 8, 1, 1, 0, 0, 0, 0, 0, "P6",
     "Pentium", "", "Pentium III model 8, Pentium III Xeon model 8, Celeron model 8",
     "ffff3e00000000000000000000000"},
    {"GenuineIntel0000695_PM_Banias", "GenuineIntel", 6, 9, 1, 1, 0, 0, 0, 0, 0, "Pentium M",
     "Celeron", "Intel(R) Celeron(R) M processor         1300MHz",
     "Intel Pentium M model 9, Intel Celeron M model 9", "fbffcf92000000000000000000000"},
    {"GenuineIntel00006F6_Conroe", "GenuineIntel", 6, 15, 2, 2, 1, 0, 4096, 36, 48, "Core", "Core",
     "Intel(R) Core(TM)2 CPU         X6800  @ 2.93GHz",
     "Intel Core 2, Intel Xeon, Intel Pentium Dual-Core, model F, 65 nm",
     "ffffdff6fe8300000080000000006"},
    {"GenuineIntel0000F29_P4_Northwood", "GenuineIntel", 15, 2, 2, 1, 1, 1, 0, 0, 0, "NetBurst",
     "Pentium", "Intel(R) Pentium(R) 4 CPU 2.80GHz",
     "Pentium 4, Intel Xeon, Celeron, model 2, 130 nm", "ffffdff2001100000000000000000"},
    {"GenuineIntel00106A4_Bloomfield", "GenuineIntel", 6, 26, 8, 4, 4, 1, 256, 36, 48, "Nehalem",
     "unknown", "Genuine Intel(R) CPU             000  @ 3.20GHz",
     "Intel Core i7, Intel Xeon, model 1A, 45 nm", "ffffdff6fe8331000088000000007"},
    {"GenuineIntel00206A7_SandyBridge", "GenuineIntel", 6, 42, 4, 4, 4, 1, 256, 36, 48,
     "Sandy Bridge", "Core", "Intel(R) Core(TM) i5-2400 CPU @ 3.10GHz",
     "2nd generation Intel Core, Intel Xeon E3, model 2A, 32 nm", "ffffdffeff877f300088000000007"},
    {"GenuineIntel00306C3_Haswell", "GenuineIntel", 6, 60, 8, 4, 4, 1, 256, 39, 48, "Haswell",
     "Core", "Intel(R) Core(TM) i7-4770 CPU @ 3.40GHz",
     "4th generation Intel Core, Intel Xeon E3 v3, model 3C", "ffffdffeffe7ffbee39c040000007"},
    {"GenuineIntel0050654_SkylakeX", "GenuineIntel", 6, 85, 20, 10, 5, 1, 256, 46, 48, "Skylake",
     "Core", "Intel(R) Core(TM) i9-7900X CPU @ 3.30GHz",
     "Intel Xeon Scalable, Intel Core X, model 55", "ffffdffefeefffbeffbc042000007"},
    {"GenuineIntel0090672_AlderLake_01_BC_AVX512", "GenuineIntel", 6, 151, 24, 12, 7, 1, 1280, 46,
     48, "Alder Lake", "Core", "12th Gen Intel(R) Core(TM) i9-12900K",
     "12th generation Intel Core, model 97", "ffffdffeffe7ffbee3bc042000007"},
    {"GenuineTMx860000543_Crusoe", "GenuineTMx86", 5, 4, 1, 1, 0, 0, 512, 0, 0, "unknown",
     "unknown", "Transmeta(tm) Crusoe(tm) Processor TM5800", "", "f3540200000000000000000000000"},
    {"RiseRiseRise0000504_mP6", "RiseRiseRise", 5, 0, 1, 1, 0, 0, 0, 0, 0, "unknown", "unknown", "",
     "", "11000200000000000000000000000"},
    {"Virtual_CPU_0000F4A_X1_x32", "Virtual CPU ", 15, 4, 1, 1, 0, 0, 512, 32, 32, "unknown",
     "unknown", "Virtual CPU @ 3.24GHz", "", "11140e5c088035000088002000007"},
};

TEST(CpuInfo, KnowsRealProcessors) {
    for (const auto& row : real_processors) {
        SCOPED_TRACE(row.dump);
        const CpuInfo info = info_of(dump_of(row.dump));
        const bool is_amd = info.vendor() == ECpuVendor::amd;
        EXPECT_EQ(info.vendor_id(), row.vendor);
        EXPECT_EQ(is_amd ? info.amd_effective_family() : info.intel_effective_family(), row.family);
        EXPECT_EQ(is_amd ? info.amd_effective_model() : info.intel_effective_model(), row.model);
        EXPECT_EQ(info.logical_count(), row.logical);
        EXPECT_EQ(info.core_count(), row.cores);
        EXPECT_EQ(info.package_apic_id_shift(), row.package_shift);
        EXPECT_EQ(info.core_apic_id_shift(), row.core_shift);
        EXPECT_EQ(info.cache_size(), row.cache_kb * 1024);
        EXPECT_EQ(info.num_physical_address_bits(), row.physical_bits);
        EXPECT_EQ(info.num_virtual_address_bits(), row.virtual_bits);
        EXPECT_STREQ(cpu_family_name(info.cpu_family()), row.design);
        EXPECT_STREQ(cpu_brand_name(info.cpu_brand()), row.brand);
        EXPECT_EQ(info.brand_string(), row.brand_string);
        EXPECT_EQ(info.brand_id_name(), row.description);
        EXPECT_EQ(flag_digits(info), row.flags) << flags_of(info);
    }
}

TEST(CpuInfo, TellsTheCachesOfIntelProcessors) {
    const std::vector<IntelCacheLevel> caches =
        info_of(dump_of("GenuineIntel00306C3_Haswell")).cache_levels();
    ASSERT_EQ(caches.size(), 4u);
    EXPECT_EQ(caches[1].type(), IntelCacheLevel::Type::instruction);
    EXPECT_EQ(caches[2].size(), 256u * 1024);
    EXPECT_EQ(caches[3].level(), 3u);
    EXPECT_EQ(caches[3].size(), 8u * 1024 * 1024);
    EXPECT_EQ(caches[3].sharing_threads(), 16u);
    EXPECT_EQ(caches[3].cores_per_package(), 7u);
}

// A processor of one's own making.
struct Processor : CpuidRecording {
    Processor(const char* vendor, std::uint32_t last_basic, std::uint32_t extended_count) {
        CpuidRegisters id{{last_basic}};
        const unsigned places[] = {1, 3, 2};
        for (unsigned i = 0; i < 12; ++i) {
            id.values[places[i / 4]] |= std::uint32_t{static_cast<unsigned char>(vendor[i])}
                                        << (i % 4 * 8);
        }
        add(0, 0, id);
        if (extended_count != 0) add(0x80000000, 0, {{0x80000000 + extended_count - 1}});
    }
    Processor& with(std::uint32_t leaf, const CpuidRegisters& registers, unsigned subleaf = 0) {
        add(leaf, subleaf, registers);
        return *this;
    }
};

constexpr char intel[] = "GenuineIntel";
constexpr char amd[] = "AuthenticAMD";
constexpr std::uint32_t htt = 1 << 28;

// Each bit alone, on processors of each vendor: it is one flag, or none.
TEST(CpuInfo, TellsAFlagOfItsVendorOnly) {
    const char* vendors[] = {intel, amd, "UMC UMC UMC ", "GenuineTMx86", "nobody knows"};
    std::map<CpuOptionFlag::Gate, unsigned> rows;
    for (const CpuOptionFlag& row : cpu_option_flags())
        ++rows[row.gate];
    EXPECT_EQ(rows[CpuOptionFlag::Gate::any], 47u);
    EXPECT_EQ(rows[CpuOptionFlag::Gate::intel], 35u);
    EXPECT_EQ(rows[CpuOptionFlag::Gate::amd], 33u);
    for (const char* vendor : vendors) {
        for (const CpuOptionFlag& row : cpu_option_flags()) {
            CpuidRegisters registers;
            registers.values[static_cast<unsigned>(row.reg)] = 1u << row.bit;
            const bool is_meant = row.gate == CpuOptionFlag::Gate::any ||
                                  (row.gate == CpuOptionFlag::Gate::intel && vendor == intel) ||
                                  (row.gate == CpuOptionFlag::Gate::amd && vendor == amd);
            const std::string expected = is_meant ? std::string(" ") + row.name : "";
            EXPECT_EQ(flags_of(CpuInfo(Processor(vendor, 7, 8).with(row.leaf, registers))),
                      expected);
            EXPECT_EQ(flags_of(CpuInfo(Processor(vendor, 0, 1).with(row.leaf, registers))), "");
        }
    }
}

TEST(CpuInfo, TellsLeaf7WhereTheExtendedLeavesReachAsFar) {
    const CpuidRegisters movsb{{0, 1 << 9}};
    EXPECT_FALSE(CpuInfo(Processor(intel, 7, 7).with(7, movsb)).enhanced_MOVSB_STOSB());
    EXPECT_TRUE(CpuInfo(Processor(intel, 7, 8).with(7, movsb)).enhanced_MOVSB_STOSB());
    EXPECT_FALSE(CpuInfo(Processor(intel, 6, 8).with(7, movsb)).enhanced_MOVSB_STOSB());
    EXPECT_TRUE(CpuInfo(Processor(intel, 7, 7).with(7, movsb)).basic_bit_value(7, 1, 9));
}

TEST(CpuInfo, TakesSignaturesApart) {
    const auto amd_model = [](std::uint32_t signature) {
        return CpuInfo(Processor(amd, 1, 0).with(1, {{signature}})).amd_effective_model();
    };
    EXPECT_EQ(amd_model(0x020FF0), 17u);
    EXPECT_EQ(amd_model(0x020F50), 5u);

    const auto fast_call = [](const char* vendor, std::uint32_t signature) {
        const CpuidRegisters leaf{{signature, 0, 0, 1 << 11}};
        return CpuInfo(Processor(vendor, 1, 0).with(1, leaf)).is_fast_system_call_supported();
    };
    EXPECT_FALSE(fast_call(intel, 0x632));
    EXPECT_TRUE(fast_call(intel, 0x633));
    EXPECT_TRUE(fast_call(intel, 0x1632)) << "the type counts";
    EXPECT_FALSE(fast_call(intel, 0xF000C632)) << "bits that are not of the signature";
    EXPECT_TRUE(fast_call(amd, 0x562));

    const CpuInfo info = info_of(dump_of("GenuineIntel0000683_P3_Coppermine"));
    unsigned signature = 0;
    std::uint64_t serial = 0;
    info.get_processor_serial_number(signature, serial);
    EXPECT_EQ(signature, info.processor_serial_number() ? 0x683u : 0u);
    const CpuidRegisters psn{{0x683, 0, 0, 1 << 18}};
    const CpuidRegisters number{{0, 0, 0x11112222, 0x33334444}};
    CpuInfo(Processor(intel, 3, 0).with(1, psn).with(3, number))
        .get_processor_serial_number(signature, serial);
    EXPECT_EQ(signature, 0x683u);
    EXPECT_EQ(serial, 0x3333444411112222u);
    CpuInfo(Processor(amd, 3, 0).with(1, {{1, 0, 0, 1 << 18}}).with(3, {}))
        .get_processor_serial_number(signature, serial);
    EXPECT_EQ(signature, 0x683u) << "changed, though the processor has no number";
}

struct Counts {
    unsigned logical, cores, core_shift, package_shift, core_mask, package_mask;
    friend bool operator==(const Counts&, const Counts&) = default;
    friend std::ostream& operator<<(std::ostream& os, const Counts& c) {
        return os << c.logical << ' ' << c.cores << ' ' << c.core_shift << ' ' << c.package_shift
                  << ' ' << c.core_mask << ' ' << c.package_mask;
    }
};

Counts counts_of(const CpuidSource& source) {
    const CpuInfo info(source);
    return {info.logical_count(),         info.core_count(),        info.core_apic_id_shift(),
            info.package_apic_id_shift(), info.apic_id_core_mask(), info.apic_id_package_mask()};
}

// Leaf 1 with that many logical processors; a level of leaf 0x0B; a data cache in leaf 4.
CpuidRegisters of_logical(unsigned count) {
    return {{0, count << 16, 0, htt}};
}
CpuidRegisters level(unsigned type, unsigned count, unsigned shift) {
    return {{shift, count, type << 8}};
}
CpuidRegisters cache_of(unsigned cores) {
    return {{cores << 26 | 1}};
}

TEST(CpuInfo, CountsByWhatTheLeavesTell) {
    const struct {
        const char* why;
        Processor processor;
        Counts counts;
    } rows[] = {
        {"leaf 0 alone", Processor(intel, 0, 0), {1, 1, 0, 0, 0xFF, 0xFF}},
        {"leaf 1", Processor(intel, 1, 0).with(1, of_logical(2)), {2, 1, 1, 1, 0xFE, 0xFE}},
        {"leaf 4", Processor(intel, 4, 0).with(4, cache_of(3)), {3, 4, 0, 2, 0xFF, 0xFC}},
        {"leaf 4 without caches", Processor(intel, 4, 0), {0, 1, 0, 0, 0xFF, 0xFF}},
        {"leaves 1 and 4",
         Processor(intel, 4, 0).with(1, of_logical(16)).with(4, cache_of(3)),
         {16, 4, 2, 4, 0xFC, 0xF0}},
        {"leaf 0x0B",
         Processor(intel, 11, 0)
             .with(1, of_logical(16))
             .with(11, level(1, 2, 1))
             .with(11, level(2, 12, 5), 1),
         {12, 6, 1, 5, 0xFE, 0xE0}},
        {"leaf 0x0B: fewer cores than threads",
         Processor(intel, 11, 0).with(11, level(1, 3, 1)).with(11, level(2, 2, 15), 1),
         {2, 0, 1, 15, 0xFE, 0}},
        {"leaf 0x0B: no threads",
         Processor(intel, 11, 0).with(11, level(1, 0, 0)).with(11, level(2, 4, 2), 1),
         {4, 1, 0, 2, 0xFF, 0xFC}},
        {"leaf 0x0B: one level",
         Processor(intel, 11, 0).with(11, level(2, 4, 3)),
         {4, 1, 3, 3, 0xF8, 0xF8}},
        {"AMD, leaf 1", Processor(amd, 1, 2).with(1, of_logical(2)), {2, 1, 0, 0, 0xFF, 0xFF}},
        {"AMD, legacy count",
         Processor(amd, 1, 2).with(1, of_logical(2)).with(0x80000001, {{0, 0, 2}}),
         {1, 1, 0, 0, 0xFF, 0xFF}},
        {"AMD, leaf 8 claimed only",
         Processor(amd, 1, 6).with(0x80000008, {{0, 0, 3}}),
         {1, 1, 0, 0, 0xFF, 0xFF}},
        {"AMD, leaf 8",
         Processor(amd, 1, 9).with(0x80000008, {{0, 0, 5}}),
         {6, 6, 0, 2, 0xFF, 0xFC}},
        {"AMD, leaf 8 with a width",
         Processor(amd, 1, 9).with(1, of_logical(2)).with(0x80000008, {{0, 0, 0x4003}}),
         {8, 4, 0, 4, 0xFF, 0xF0}},
        {"another vendor",
         Processor("CentaurHauls", 11, 9).with(1, of_logical(2)),
         {1, 1, 0, 0, 0xFF, 0xFF}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(counts_of(row.processor), row.counts) << row.why;
}

TEST(CpuInfo, NamesModelsByBrandIds) {
    const struct {
        const char* vendor;
        std::uint32_t signature, brand_index, brand_id;
        const char *name, *brand;
    } rows[] = {
        {amd, 0xF4A, 0, 0x0106, "AMD Athlon(tm) 64 Processor 2800+", "Athlon"},
        {amd, 0xF5A, 0, 14 << 6 | 4, "AMD Opteron(tm) Processor 146 HE", "Opteron"},
        {amd, 0x20F12, 0, 42 << 6 | 9, "Dual Core AMD Opteron(tm) Processor 290 SE", "Opteron"},
        {amd, 0xF48, 2 << 5 | 3, 0, "Mobile AMD Athlon(tm) 64 Processor 2500+", "Athlon"},
        {amd, 0xF4A, 0, 0, "AMD Engineering Sample 00", "unknown"},
        {amd, 0x40F12, 0, 0x0106, "AMD Athlon(tm) 64, AMD Opteron(tm), AMD Sempron(tm), family 0Fh",
         "unknown"},
        {amd, 0x671, 0, 0, "AMD Duron Model 7, Mobile AMD Duron Model 7", "Duron"},
        {amd, 0x3F00F00, 0, 0, "Unrecognized AMD CPU Brand String", "unknown"},
        {intel, 0x1542, 0, 0, "Pentium OverDrive with MMX(TM) technology for Pentium 75-133 Mhz",
         "Pentium"},
        {intel, 0x6B1, 3, 0, "Pentium III model B", "Xeon"},
        {intel, 0xFF0, 0, 0, "Unrecognized Intel CPU Brand String", "unknown"},
        {"RiseRiseRise", 0x504, 0, 0, "", "unknown"},
    };
    for (const auto& row : rows) {
        const CpuInfo info(Processor(row.vendor, 1, 2)
                               .with(1, {{row.signature, row.brand_index}})
                               .with(0x80000001, {{0, row.brand_id}}));
        EXPECT_EQ(info.brand_id_name(), row.name);
        EXPECT_STREQ(cpu_brand_name(info.cpu_brand()), row.brand) << row.name;
    }
}

TEST(CpuInfo, TrimsTheBrandString) {
    const auto brand_string = [](const CpuidRegisters& second, const CpuidRegisters& third) {
        return CpuInfo(Processor(intel, 1, 5)
                           .with(0x80000002, {{0x20202020, 0x20202041, 0x42202020, 0x20202020}})
                           .with(0x80000003, second)
                           .with(0x80000004, third))
            .brand_string();
    };
    const CpuidRegisters c{{0x43, 0x44, 0x20202020, 0x20202020}};
    const CpuidRegisters blanks{{0x20202020, 0x20202020, 0x20202020, 0x20202020}};
    EXPECT_EQ(brand_string({}, c), "A      B") << "what stands behind the zero";
    EXPECT_EQ(brand_string(c, c), "A      B    C");
    EXPECT_EQ(brand_string(blanks, blanks), "A      B");
}

TEST(CpuInfo, TellsOfHypervisors) {
    Processor processor(intel, 1, 0);
    processor.with(1, {{0, 0, 1u << 31}}).with(0x40000001, {{CpuInfo::HypervisorVendorIdHv1}});
    Processor old = processor;
    processor.with(0x40000000, {{0x40000005, 0x7263694D, 0x666F736F, 0x76482074}});
    EXPECT_EQ(CpuInfo(processor).hypervisor_vendor_id(), "Microsoft Hv");
    EXPECT_EQ(CpuInfo(processor).hypervisor_interface_id(), 0x31237648u);
    old.with(0x40000000, {{0, 0x4B4D564B, 0x564B4D56, 0x4D}});
    EXPECT_EQ(CpuInfo(old).hypervisor_vendor_id(), "KVMKVMKVM");
    EXPECT_EQ(CpuInfo(old).hypervisor_interface_id(), 0x31237648u);
}

TEST(CpuInfo, ReadsBitsOfWhatIsStoredOnly) {
    const CpuInfo info(Processor(intel, 11, 2)
                           .with(4, {{1, 2}})
                           .with(4, {{1, 4}}, 1)
                           .with(11, level(1, 1, 0))
                           .with(11, level(2, 8, 0), 1));
    EXPECT_TRUE(info.basic_bit_value(4, 1, 1));
    EXPECT_TRUE(info.basic_bit_value(4, 5, 1)) << "the register modulo 4";
    EXPECT_TRUE(info.basic_bit_value(4, -3, 1));
    EXPECT_TRUE(info.basic_subleaf_bit_value(4, 0, 1, 1));
    EXPECT_TRUE(info.basic_subleaf_bit_value(4, 1, 1, 2));
    EXPECT_TRUE(info.basic_subleaf_bit_value(11, 1, 1, 3));
    EXPECT_TRUE(info.extended_bit_value(0, 0, 31));
    EXPECT_EQ(info.cpuid_last_extended_level(), 1);
    for (const int beyond : {-1, 12, 0x7FFFFFFF}) {
        EXPECT_FALSE(info.basic_bit_value(beyond, 1, 1));
        EXPECT_FALSE(info.extended_bit_value(beyond, 0, 31));
        EXPECT_FALSE(info.basic_subleaf_bit_value(4, beyond, 1, 2));
        EXPECT_FALSE(info.basic_subleaf_bit_value(11, beyond, 1, 3));
    }
    for (const int bit : {-31, -1, 33, 0x7FFFFFFF})
        EXPECT_FALSE(info.basic_bit_value(4, 1, bit));
}

// Everything that there is to ask.
std::string all_answers(const CpuInfo& info) {
    std::ostringstream os;
    os << TraceRawCpuid(info) << TraceCpuidInfo(info) << info.as_string_for_hash(true);
    for (const IntelCacheLevel& cache : info.cache_levels())
        os << cache.size() << cache.sharing_threads();
    for (int i = -1; i < 300; ++i) {
        os << info.basic_bit_value(i, i, i) << info.extended_bit_value(i, i, i)
           << info.basic_subleaf_bit_value(4, i, i, i) << info.basic_subleaf_bit_value(11, i, i, i);
    }
    return os.str();
}

TEST(CpuInfo, BearsEveryFlippedBitAndEveryCut) {
    for (const char* name : {"GenuineIntel00206A7_SandyBridge", "GenuineIntel0000F29_P4_Northwood",
                             "AuthenticAMD0100F22_K10_Agena", "RiseRiseRise0000504_mP6"}) {
        const std::string dump = dump_of(name);
        for (std::size_t line = 0; line < dump.size(); line = dump.find('\n', line) + 1) {
            if (line != 0) all_answers(info_of(dump.substr(0, line)));
            const std::string leaf = dump.substr(line, dump.find('\n', line) - line + 1);
            for (unsigned digit = 16; digit < 16 + 35; ++digit) {
                if (leaf[digit] == '-') continue;
                for (unsigned bit = 1; bit < 16; bit *= 2) {
                    const unsigned value = std::stoul(leaf.substr(digit, 1), nullptr, 16) ^ bit;
                    std::string text = dump;
                    text[line + digit] = "0123456789ABCDEF"[value];
                    const CpuInfo info = info_of(text);
                    EXPECT_LT(info.cpuid_last_basic_level(), 256);
                    EXPECT_LT(info.cpuid_last_extended_level(), 256);
                    EXPECT_GT(all_answers(info).size(), 5000u);
                }
            }
        }
    }
}

// All claims are the largest there are, and no list ends.
struct Boaster : CpuidSource {
    bool has_cpuid() const override { return true; }
    CpuidRegisters read(std::uint32_t leaf, std::uint32_t subleaf) const override {
        ++reads;
        if (leaf == 0) return {{0xFFFFFFFF, 0x756E6547, 0x6C65746E, 0x49656E69}};
        if (leaf == 4) return {{1}};  // shared by nobody
        if (leaf == 11) return {{0, 0, 0x100 | subleaf}};
        return {{0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF}};
    }
    mutable unsigned reads = 0;
};

struct Nothing : CpuidSource {
    bool has_cpuid() const override { return false; }
    CpuidRegisters read(std::uint32_t, std::uint32_t) const override {
        ADD_FAILURE() << "the instruction is not there";
        return {};
    }
};

TEST(CpuInfo, BelievesNoProcessorEverything) {
    const Boaster boaster;
    const CpuInfo info(boaster);
    EXPECT_LT(boaster.reads, 3 * 256u + 40);
    EXPECT_EQ(info.cpuid_last_basic_level(), 255);
    EXPECT_EQ(info.cache_levels().size(), 16u);
    EXPECT_EQ(info.core_count(), 1u);
    EXPECT_NE(all_answers(info), "");

    const CpuInfo nothing{Nothing()};
    EXPECT_EQ(nothing.cpuid_last_basic_level(), -1);
    EXPECT_EQ(nothing.cpuid_last_extended_level(), -1);
    EXPECT_EQ(nothing.logical_count(), 1u);
    EXPECT_EQ(flags_of(nothing), "");
    EXPECT_NE(all_answers(nothing), "");
}

TEST(CpuInfo, DumpsTheSameToEveryStream) {
    const CpuInfo rise = info_of(dump_of("RiseRiseRise0000504_mP6"));
    std::ostringstream os;
    os << std::hex << std::showbase << std::setw(300) << TraceRawCpuid(rise);
    EXPECT_EQ(os.str(),
              "Famliy=5 brandString='' max basic leaf=1 max extended leaf=-1\n"
              "Leaf=0x00000000 EAX=0x00000001 EBX=0x65736952 ECX=0x65736952 EDX=0x65736952\n"
              "Leaf=0x00000001 EAX=0x00000504 EBX=0x00000000 ECX=0x00000000 EDX=0x00800011\n"
              "Processor Topology\n");
    os.str("");
    os << TraceCpuidInfo(info_of(dump_of("GenuineIntel00306C3_Haswell")));
    const std::string start =
        "Vendor Id=GenuineIntel\n"
        "Signature=0x000306c3 ExFamily=0 ExModel=3 Type=0 Family=6 Model=12 Stepping=3\n"
        "Intel extended Family=6 and Model=60\n"
        "Brand=4th generation Intel Core, Intel Xeon E3 v3, model 3C\n"
        "Family=Haswell\n"
        "Last Basic Leaf=13\n"
        "Last Extended Leaf=8\n"
        "Logical count=8 Core Count=4\n"
        "Hyperthreading is enabled\n"
        "APIC ID=0\n"
        "Logical CPUs=16\n"
        "APIC Package Mask=0xf0\n"
        " APIC Core Mask=0xfe\n"
        "APIC Package Shift=4 APIC Core Shift=1\n"
        "Brand Index=0\n"
        "Cache Line Flush Size=64 bytes\n"
        "Processor serial number=\n"
        "Min monitor line size=64\n"
        "Max monitor line size=64\n"
        "Brand string='Intel(R) Core(TM) i7-4770 CPU @ 3.40GHz'\n"
        "Cache line size=64\n"
        "L2 associativity=6\n"
        "L2 Cache size=262144\n"
        "Physical address bits=39\n"
        "Virtual address bits=48\n"
        "Floating point on chip: Yes\n";
    EXPECT_EQ(os.str().substr(0, start.size()), start);
    EXPECT_NE(os.str().find("\nSSE4a supported: No\n"), std::string::npos);
    EXPECT_TRUE(os.str().ends_with("\nLAHF and SAHF instructions supported in 64-bit mode: Yes\n"));
}

TEST(CpuInfo, HashesWhatStaysTheSame) {
    const auto text = [](std::uint32_t ecx, std::uint32_t edx, bool with_serial_number) {
        return CpuInfo(Processor(intel, 3, 0)
                           .with(1, {{0x683, 0xFF000000, ecx, edx}})
                           .with(3, {{0, 0, 1, 2}}))
            .as_string_for_hash(with_serial_number);
    };
    constexpr std::uint32_t osxsave = 1 << 27;
    constexpr std::uint32_t apic_and_serial = 1 << 9 | 1 << 18;
    EXPECT_EQ(text(osxsave, apic_and_serial, false), text(0, 0, false));
    EXPECT_NE(text(1, 0, false), text(0, 0, false));
    EXPECT_NE(text(0, apic_and_serial, true), text(0, apic_and_serial, false));
}

TEST(CpuInfo, ReadsThisProcessor) {
    const CpuInfo info;
    const CpuInfo copy = info;
    EXPECT_EQ(info.sse2(), __builtin_cpu_supports("sse2") != 0);
    EXPECT_EQ(info.popcnt_supported(), __builtin_cpu_supports("popcnt") != 0);
    EXPECT_EQ(info.vendor() == ECpuVendor::amd, __builtin_cpu_is("amd") != 0);
    EXPECT_EQ(info.vendor() == ECpuVendor::intel, __builtin_cpu_is("intel") != 0);
    EXPECT_TRUE(info.timestamp_counter());
    for (const CpuOptionFlag& row : cpu_option_flags()) {
        const auto flag = static_cast<EOptionFlag>(&row - cpu_option_flags().data());
        EXPECT_EQ(CpuInfo::get_option_flag(flag), copy.has_option(flag)) << row.name;
    }
}

TEST(CpuidRecording, TakesTheFirstProcessorOfAText) {
    CpuidRecording recording;
    EXPECT_EQ(recording.add_text("CPU #1\r\n"
                                 "CPUID 00000000: 00000001-00000002-00000003-00000004\r\n"
                                 "CPUID 0000000b: 0000000a-0000000B-0000000c-0000000d [SL 1f]\r\n"
                                 "CPUID 0000000b: 00000001-00000001-00000001-0000000\n"
                                 " CPUID 0000000b: 00000001-00000001-00000001-00000001\n"
                                 "CPUID 0000000g: 00000001-00000001-00000001-00000001\n"
                                 "CPUID 00000000: 00000009-00000009-00000009-00000009\n"
                                 "CPUID 00000001: 00000009-00000009-00000009-00000009"),
              2u);
    EXPECT_EQ(recording.read(0, 0).edx(), 4u);
    EXPECT_EQ(recording.read(11, 0x1F).ebx(), 11u);
    EXPECT_EQ(recording.read(11, 0).ebx(), 0u);
    EXPECT_EQ(recording.read(1, 0).eax(), 0u);
    EXPECT_EQ(recording.read(11, 0x1F).byte_at(4), 11);
    EXPECT_FALSE(CpuidRecording().has_cpuid());

    const std::string_view unended = "CPUID 00000001: 00000009-00000009-00000009-00000009";
    EXPECT_EQ(CpuidRecording().add_text(unended), 1u);
}

}  // namespace
