// Faults to catch: a bit read from another leaf, register or place; a flag told of a vendor that
// means something else by it; counts, masks and shifts by the wrong leaf; what processors claim
// believed: reads beyond what is stored, loops without an end, division by zero; dumps that depend
// on their stream.

#include "tarvcore/hardware/cpu_info.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iterator>
#include <sstream>
#include <string>
#include <utility>

#include "tarvcore/impl/simd_level.h"

namespace {

using namespace tarvcore::hardware;

std::string text_of(const std::string& name) {
    std::ifstream file(std::filesystem::path(TEST_DATA_FOLDER "/cpuid") / name);
    EXPECT_TRUE(file.is_open()) << name;
    return {std::istreambuf_iterator<char>(file), {}};
}

CpuInfo info_of(const std::string& text) {
    CpuidRecording recording;
    EXPECT_GT(recording.add_text(text), 0u);
    return CpuInfo(recording);
}

template <class Trace>
std::string trace_of(const CpuInfo& info) {
    std::ostringstream os;
    os << std::hex << std::showbase << std::setw(300) << Trace(info);
    return os.str();
}

// Those of a register on a line.
std::string flags_of(const CpuInfo& info) {
#define ACCESSOR(name, gate, leaf, reg, bit, description) &CpuInfo::name,
    static bool (CpuInfo::*const accessors[])() const = {TARVCORE_CPU_OPTION_FLAGS(ACCESSOR)};
#undef ACCESSOR
    std::string names;
    unsigned last = -1u;
    for (const CpuOptionFlag& row : cpu_option_flags()) {
        const auto i = static_cast<unsigned>(&row - cpu_option_flags().data());
        const bool is_set = (info.*accessors[i])();
        EXPECT_EQ(info.has_option(EOptionFlag{i}), is_set) << row.name;
        if (!is_set) continue;
        names += (row.register_index == last ? ' ' : '\n') + std::string(row.name);
        last = row.register_index;
    }
    return names;
}

// Logical processors and cores; where in the APIC id core and package are: shifts, masks.
std::string counts_of(const CpuInfo& info) {
    std::ostringstream os;
    os << info.logical_count() << ' ' << info.core_count() << ", "
       << unsigned{info.core_apic_id_shift()} << ' ' << unsigned{info.package_apic_id_shift()}
       << ", " << std::hex << unsigned{info.apic_id_core_mask()} << ' '
       << unsigned{info.apic_id_package_mask()};
    return os.str();
}

// As facts.txt has them.
std::string facts_of(const CpuInfo& info) {
    constexpr const char* types[] = {"", "data", "instruction", "unified"};
    const bool is_amd = info.vendor() == ECpuVendor::amd;
    std::ostringstream os;
    os << info.vendor_id() << " family "
       << (is_amd ? info.amd_effective_family() : info.intel_effective_family()) << " model "
       << (is_amd ? info.amd_effective_model() : info.intel_effective_model()) << ": "
       << cpu_family_name(info.cpu_family()) << ", " << cpu_brand_name(info.cpu_brand()) << "\n'"
       << info.brand_string() << "'\n'" << info.brand_id_name() << "'\n"
       << "processors, shifts, masks: " << counts_of(info) << '\n'
       << info.cache_size() << " bytes of cache, addresses of " << info.num_physical_address_bits()
       << " and " << info.num_virtual_address_bits() << " bits";
    for (const IntelCacheLevel& cache : info.cache_levels()) {
        os << "\nL" << cache.level() << ' ' << types[static_cast<unsigned>(cache.type())] << ": "
           << cache.size() << " bytes in lines of " << cache.line_size() << ", "
           << cache.sharing_threads() << " threads, " << cache.cores_per_package() << " cores";
    }
    return os.str() + flags_of(info) + '\n';
}

TEST(CpuInfo, KnowsRealProcessors) {
    std::istringstream facts(text_of("facts.txt"));
    int count = 0;
    for (std::string name; std::getline(facts, name); ++count) {
        std::string expected;
        for (std::string line; std::getline(facts, line) && !line.empty();)
            expected += line + '\n';
        EXPECT_EQ(facts_of(info_of(text_of(name + ".txt"))), expected) << name;
    }
    EXPECT_EQ(count, 25);
}

// A processor of one's own making.
struct Processor : CpuidRecording {
    Processor(const char* vendor, std::uint32_t last_basic, std::uint32_t extended_count) {
        std::uint32_t words[3];
        std::memcpy(words, vendor, sizeof words);
        add(0, 0, {{last_basic, words[0], words[2], words[1]}});
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
    const std::pair<const char*, unsigned> vendors[] = {
        {intel, 82}, {amd, 80}, {"UMC UMC UMC ", 47}, {"GenuineTMx86", 47}, {"nobody knows", 47}};
    for (const auto& [vendor, flags] : vendors) {
        unsigned meant = 0;
        for (const CpuOptionFlag& row : cpu_option_flags()) {
            CpuidRegisters registers;
            registers.values[static_cast<unsigned>(row.reg)] = 1u << row.bit;
            const bool is_meant = row.gate == CpuOptionFlag::Gate::any ||
                                  (row.gate == CpuOptionFlag::Gate::intel && vendor == intel) ||
                                  (row.gate == CpuOptionFlag::Gate::amd && vendor == amd);
            meant += is_meant;
            const std::string expected = is_meant ? std::string("\n") + row.name : "";
            EXPECT_EQ(flags_of(CpuInfo(Processor(vendor, 7, 8).with(row.leaf, registers))),
                      expected);
            EXPECT_EQ(flags_of(CpuInfo(Processor(vendor, 0, 1).with(row.leaf, registers))), "");
        }
        EXPECT_EQ(meant, flags) << vendor;
    }
}

TEST(CpuInfo, TellsLeaf7WhereTheExtendedLeavesReachAsFar) {
    const auto info = [](unsigned basic, unsigned extended) {
        return CpuInfo(Processor(intel, basic, extended).with(7, {{0, 1 << 9}}));
    };
    EXPECT_TRUE(info(7, 8).enhanced_MOVSB_STOSB());
    EXPECT_FALSE(info(7, 7).enhanced_MOVSB_STOSB() || info(6, 8).enhanced_MOVSB_STOSB());
    EXPECT_TRUE(info(7, 7).basic_bit_value(7, 1, 9));
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

    unsigned number_signature = 1;
    std::uint64_t serial = 2;
    for (const char* vendor : {amd, intel}) {
        EXPECT_EQ(number_signature, 1u) << "changed, though the processor has no number";
        EXPECT_EQ(serial, 2u);
        const CpuInfo info(Processor(vendor, 3, 0)
                               .with(1, {{0x683, 0, 0, 1 << 18}})
                               .with(3, {{0, 0, 0x11112222, 0x33334444}}));
        info.get_processor_serial_number(number_signature, serial);
        EXPECT_EQ(info.as_string_for_hash(true).ends_with("|0x000006833333444411112222"),
                  vendor == intel);
    }
    EXPECT_EQ(number_signature, 0x683u);
    EXPECT_EQ(serial, 0x3333444411112222u);
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
        const char* counts;
    } rows[] = {
        {"leaf 0 alone", Processor(intel, 0, 0), "1 1, 0 0, ff ff"},
        {"leaf 1", Processor(intel, 1, 0).with(1, of_logical(2)), "2 1, 1 1, fe fe"},
        {"leaf 4", Processor(intel, 4, 0).with(4, cache_of(3)), "3 4, 0 2, ff fc"},
        {"leaf 4 without caches", Processor(intel, 4, 0), "0 1, 0 0, ff ff"},
        {"leaves 1 and 4", Processor(intel, 4, 0).with(1, of_logical(16)).with(4, cache_of(3)),
         "16 4, 2 4, fc f0"},
        {"leaf 0x0B",
         Processor(intel, 11, 0)
             .with(1, of_logical(16))
             .with(11, level(1, 2, 1))
             .with(11, level(2, 12, 5), 1),
         "12 6, 1 5, fe e0"},
        {"leaf 0x0B: fewer cores than threads",
         Processor(intel, 11, 0).with(11, level(1, 3, 1)).with(11, level(2, 2, 15), 1),
         "2 0, 1 15, fe 0"},
        {"leaf 0x0B: no threads",
         Processor(intel, 11, 0).with(11, level(1, 0, 0)).with(11, level(2, 4, 2), 1),
         "4 1, 0 2, ff fc"},
        {"leaf 0x0B: one level", Processor(intel, 11, 0).with(11, level(2, 4, 3)),
         "4 1, 3 3, f8 f8"},
        {"AMD, leaf 1", Processor(amd, 1, 2).with(1, of_logical(2)), "2 1, 0 0, ff ff"},
        {"AMD, legacy count",
         Processor(amd, 1, 2).with(1, of_logical(2)).with(0x80000001, {{0, 0, 2}}),
         "1 1, 0 0, ff ff"},
        {"AMD, leaf 8 claimed only", Processor(amd, 1, 6).with(0x80000008, {{0, 0, 3}}),
         "1 1, 0 0, ff ff"},
        {"AMD, leaf 8", Processor(amd, 1, 9).with(0x80000008, {{0, 0, 5}}), "6 6, 0 2, ff fc"},
        {"AMD, leaf 8 with a width",
         Processor(amd, 1, 9).with(1, of_logical(2)).with(0x80000008, {{0, 0, 0x4003}}),
         "8 4, 0 4, ff f0"},
        {"another vendor", Processor("CentaurHauls", 11, 9).with(1, of_logical(2)),
         "1 1, 0 0, ff ff"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(counts_of(CpuInfo(row.processor)), row.counts) << row.why;
}

TEST(CpuInfo, NamesModelsByBrandIds) {
    const struct {
        const char* vendor;
        std::uint32_t signature, brand_index, brand_id;
        const char *name, *kind;
    } rows[] = {
        {amd, 0x494, 0, 0, "Am486DX4-WB, Am5x86-WB", "Am486, Am486"},
        {amd, 0x450, 0, 0, "Unrecognized AMD CPU Brand String", "unknown, unknown"},
        {amd, 0x671, 0, 0, "AMD Duron Model 7, Mobile AMD Duron Model 7", "K7, Duron"},
        {amd, 0xF4A, 0, 0x0106, "AMD Athlon(tm) 64 Processor 2800+", "K8, Athlon"},
        {amd, 0xF5A, 0, 14 << 6 | 4, "AMD Opteron(tm) Processor 146 HE", "K8, Opteron"},
        {amd, 0x20F12, 0, 42 << 6 | 9, "Dual Core AMD Opteron(tm) Processor 290 SE", "K8, Opteron"},
        {amd, 0xF48, 2 << 5 | 3, 0, "Mobile AMD Athlon(tm) 64 Processor 2500+", "K8, Athlon"},
        {amd, 0x20F42, 0, 10 << 6 | 8, "AMD Turion(tm) 64 Mobile Technology ML-30", "K8, Turion"},
        {amd, 0x20FC2, 0, 38 << 6 | 4, "AMD Sempron(tm) Processor 2800+", "K8, Sempron"},
        {amd, 0xF4A, 0, 0, "AMD Engineering Sample 00", "K8, unknown"},
        {amd, 0xF4A, 0, 0xFFFF, "AMD Athlon(tm) 64, AMD Opteron(tm), AMD Sempron(tm), family 0Fh",
         "K8, unknown"},
        {amd, 0x40F12, 0, 0x0106, "AMD Athlon(tm) 64, AMD Opteron(tm), AMD Sempron(tm), family 0Fh",
         "K8, unknown"},
        {amd, 0x700F01, 0, 0, "AMD A-Series, AMD E-Series, family 16h", "Jaguar, unknown"},
        {amd, 0x3F00F00, 0, 0, "Unrecognized AMD CPU Brand String", "unknown, unknown"},
        {intel, 0x1542, 0, 0, "Pentium OverDrive with MMX(TM) technology for Pentium 75-133 Mhz",
         "Pentium, Pentium"},
        {intel, 0x6B1, 3, 0, "Pentium III model B", "P6, Xeon"},
        {intel, 0x106C2, 0, 0, "Intel Atom model 1C, 45 nm", "Atom, Atom"},
        {intel, 0x40661, 0, 0, "4th generation Intel Core, models 45 and 46", "Haswell, Core"},
        {intel, 0x50670, 0, 0, "Intel Xeon Phi model 57", "Xeon Phi, Xeon"},
        {intel, 0xFF0, 0, 0, "Unrecognized Intel CPU Brand String", "unknown, unknown"},
        {"RiseRiseRise", 0x504, 0, 0, "", "unknown, unknown"},
    };
    const auto kind_of = [](ECpuFamily family, ECpuBrand brand) {
        return std::string(cpu_family_name(family)) + ", " + cpu_brand_name(brand);
    };
    for (const auto& row : rows) {
        const CpuInfo info(Processor(row.vendor, 1, 2)
                               .with(1, {{row.signature, row.brand_index}})
                               .with(0x80000001, {{0, row.brand_id}}));
        EXPECT_EQ(info.brand_id_name(), row.name);
        EXPECT_EQ(kind_of(info.cpu_family(), info.cpu_brand()), row.kind) << row.name;
    }
    EXPECT_EQ(kind_of(ECpuFamily::zen5, ECpuBrand::phenom), "Zen 5, Phenom");
    EXPECT_EQ(kind_of(ECpuFamily{28}, ECpuBrand{19}), "unknown, unknown");
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
    const std::string raw = trace_of<TraceRawCpuid>(CpuInfo(processor));
    EXPECT_NE(raw.find("\nHypervisor CPUID\nLeaf=0x40000000 EAX=0x40000005 EBX=0x7263694d "),
              std::string::npos)
        << raw;
    old.with(0x40000000, {{0, 0x4B4D564B, 0x564B4D56, 0x4D}});
    EXPECT_EQ(CpuInfo(old).hypervisor_vendor_id(), "KVMKVMKVM");
    EXPECT_EQ(CpuInfo(old).hypervisor_interface_id(), 0x31237648u);
}

TEST(CpuInfo, ReadsBitsOfWhatIsStoredOnly) {
    const CpuInfo info(Processor(intel, 11, 2)
                           .with(4, {{1, 2}})
                           .with(4, {{1, 0, 0, 4}}, 1)
                           .with(11, level(1, 1, 0))
                           .with(11, level(2, 8, 0), 1));
    EXPECT_TRUE(info.basic_bit_value(4, 1, 1));
    EXPECT_TRUE(info.basic_bit_value(4, 5, 1)) << "the register modulo 4";
    EXPECT_TRUE(info.basic_bit_value(4, -3, 1));
    EXPECT_TRUE(info.basic_subleaf_bit_value(4, 0, 1, 1));
    EXPECT_TRUE(info.basic_subleaf_bit_value(4, 1, 3, 2));
    EXPECT_TRUE(info.basic_subleaf_bit_value(11, 1, 1, 3));
    EXPECT_TRUE(info.extended_bit_value(0, 0, 31));
    EXPECT_EQ(info.cpuid_last_extended_level(), 1);
    for (const int beyond : {-1, 12, 0x7FFFFFFF}) {
        EXPECT_FALSE(info.basic_bit_value(beyond, 1, 1));
        EXPECT_FALSE(info.extended_bit_value(beyond, 0, 31));
        EXPECT_FALSE(info.basic_subleaf_bit_value(4, beyond, 3, 2));
        EXPECT_FALSE(info.basic_subleaf_bit_value(11, beyond, 1, 3));
    }
    for (const int bit : {-31, -1, 33, 0x7FFFFFFF})
        EXPECT_FALSE(info.basic_bit_value(4, 1, bit));
}

// Everything that there is to ask.
std::string all_answers(const CpuInfo& info) {
    std::ostringstream os;
    os << trace_of<TraceRawCpuid>(info) << trace_of<TraceCpuidInfo>(info)
       << info.as_string_for_hash(true);
    for (const IntelCacheLevel& cache : info.cache_levels())
        os << cache.size() << cache.sharing_threads();
    for (int i = -1; i < 300; ++i) {
        os << info.basic_bit_value(i, i, i) << info.extended_bit_value(i, i, i)
           << info.basic_subleaf_bit_value(4, i, i, i) << info.basic_subleaf_bit_value(11, i, i, i);
    }
    return os.str();
}

TEST(CpuInfo, BearsEveryFlippedBitAndEveryCut) {
    for (const char* name :
         {"GenuineIntel00206A7_SandyBridge.txt", "GenuineIntel0000F29_P4_Northwood.txt",
          "AuthenticAMD0100F22_K10_Agena.txt", "RiseRiseRise0000504_mP6.txt"}) {
        const std::string dump = text_of(name);
        for (std::size_t i = 1; i < dump.size(); ++i) {
            const std::size_t column = i - 1 - dump.rfind('\n', i - 1);
            if (column == 0) all_answers(info_of(dump.substr(0, i)));
            if (column < 16 || column >= 16 + 35 || dump[i] == '-') continue;
            for (unsigned bit = 1; bit < 16; bit *= 2) {
                std::string text = dump;
                text[i] = "0123456789ABCDEF"[std::stoul(dump.substr(i, 1), nullptr, 16) ^ bit];
                const CpuInfo info = info_of(text);
                EXPECT_LT(info.cpuid_last_basic_level(), 256);
                EXPECT_LT(info.cpuid_last_extended_level(), 256);
                EXPECT_GT(all_answers(info).size(), 5000u);
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

TEST(CpuInfo, BelievesNoProcessorEverything) {
    const Boaster boaster;
    const CpuInfo info(boaster);
    EXPECT_LT(boaster.reads, 3 * 256u + 40);
    EXPECT_EQ(info.cpuid_last_basic_level(), 255);
    EXPECT_EQ(info.cache_levels().size(), 16u);
    EXPECT_EQ(info.core_count(), 1u);
    EXPECT_NE(all_answers(info), "");

    const CpuInfo nothing{CpuidRecording()};
    EXPECT_EQ(nothing.cpuid_last_basic_level(), -1);
    EXPECT_EQ(nothing.cpuid_last_extended_level(), -1);
    EXPECT_EQ(nothing.logical_count(), 1u);
    EXPECT_EQ(flags_of(nothing), "");
    EXPECT_NE(all_answers(nothing), "");
}

TEST(CpuInfo, DumpsTheSameToEveryStream) {
    EXPECT_EQ(trace_of<TraceRawCpuid>(info_of(text_of("RiseRiseRise0000504_mP6.txt"))),
              "Famliy=5 brandString='' max basic leaf=1 max extended leaf=-1\n"
              "Leaf=0x00000000 EAX=0x00000001 EBX=0x65736952 ECX=0x65736952 EDX=0x65736952\n"
              "Leaf=0x00000001 EAX=0x00000504 EBX=0x00000000 ECX=0x00000000 EDX=0x00800011\n"
              "Processor Topology\n");
    for (const std::string name : {"GenuineIntel00306C3_Haswell", "AuthenticAMD0100F22_K10_Agena"})
        EXPECT_EQ(trace_of<TraceCpuidInfo>(info_of(text_of(name + ".txt"))),
                  text_of(name + ".dump"));
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
    EXPECT_EQ(info.sse2(), __builtin_cpu_supports("sse2") != 0);
    EXPECT_EQ(info.popcnt_supported(), __builtin_cpu_supports("popcnt") != 0);
    EXPECT_EQ(info.vendor() == ECpuVendor::amd, __builtin_cpu_is("amd") != 0);
    EXPECT_EQ(info.vendor() == ECpuVendor::intel, __builtin_cpu_is("intel") != 0);
    EXPECT_TRUE(info.timestamp_counter());
    for (const CpuOptionFlag& row : cpu_option_flags()) {
        const auto flag = static_cast<EOptionFlag>(&row - cpu_option_flags().data());
        EXPECT_EQ(CpuInfo::get_option_flag(flag), info.has_option(flag)) << row.name;
    }
}

// Tests that go through the levels leave out those that are not found.
TEST(SimdLevel, IsWhatThisProcessorHas) {
    using tarvcore::impl::simd_level;
    using tarvcore::impl::SimdLevel;
    const CpuInfo info;
    EXPECT_EQ(simd_level() >= SimdLevel::ssse3, info.ssse3());
    EXPECT_EQ(simd_level() >= SimdLevel::sse41, info.ssse3() && info.sse4_1());
    // By its bit: the flag is told of one vendor only.
    EXPECT_EQ(simd_level() == SimdLevel::avx2,
              info.basic_bit_value(7, 1, 5) && info.osxsave_supported());
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

    const std::string_view unended = "CPUID 00000001: 00000009-00000009-00000009-00000009";
    EXPECT_EQ(CpuidRecording().add_text(unended), 1u);

    // Up to the subleaf a line must be whole and right, and then its digits.
    const std::string good = "CPUID 0000000b: 0000000a-0000000B-0000000c-0000000d [SL 1f]";
    const std::size_t end = good.find(" [");
    const std::size_t subleaf = good.find("1f");
    for (std::size_t i = 0; i < good.size(); ++i) {
        std::string wrong = good;
        wrong.erase(i, 1);
        const unsigned count = i >= end && i - subleaf > 1;
        EXPECT_EQ(CpuidRecording().add_text(wrong), count) << wrong;
        EXPECT_EQ(CpuidRecording().add_text(good.substr(0, i)), count) << i;
    }
}

}  // namespace
