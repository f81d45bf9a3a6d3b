// What a processor says about itself.
#pragma once

#include <array>
#include <cstdint>
#include <iosfwd>
#include <iterator>
#include <string>
#include <vector>

#include "tarvcore/config.h"
#include "tarvcore/hardware/cpu_models.h"
#include "tarvcore/hardware/cpu_option_flags.h"
#include "tarvcore/hardware/cpuid_source.h"
#include "tarvcore/streamers.h"

namespace tarvcore::hardware {

// How many lines of the second-level cache an address may be in, as AMD codes it; other numbers are
// of later processors.
enum class EL2Associativity : unsigned {
    disabled = 0,
    direct_mapped = 1,
    ways_2 = 2,
    ways_4 = 4,
    ways_8 = 6,
    ways_16 = 8,
    ways_32 = 10,
    ways_48 = 11,
    ways_64 = 12,
    ways_96 = 13,
    ways_128 = 14,
    fully = 15,
};

// A cache of an Intel processor: a subleaf of CPUID leaf 4.
struct IntelCacheLevel {
    // What is kept in it; `none` ends the list of caches.
    enum class Type : unsigned { none, data, instruction, unified };

    CpuidRegisters registers;  // the subleaf as it was read

    // See Type.
    constexpr Type type() const { return static_cast<Type>(registers.eax() & 0x1F); }
    // 1 for the nearest.
    constexpr unsigned level() const { return registers.eax() >> 5 & 7; }
    // A line may be anywhere in it.
    constexpr bool is_fully_associative() const { return (registers.eax() >> 9 & 1) != 0; }
    // How many numbers are set aside for the logical processors that share the cache; at least as
    // many as there are.
    constexpr unsigned sharing_threads() const { return (registers.eax() >> 14 & 0xFFF) + 1; }
    // The number as it is stored: one less than the core numbers that are set aside for a package.
    constexpr unsigned cores_per_package() const { return registers.eax() >> 26; }
    constexpr unsigned line_size() const { return (registers.ebx() & 0xFFF) + 1; }  // bytes
    // The factors of the size.
    constexpr unsigned partitions() const { return (registers.ebx() >> 12 & 0x3FF) + 1; }
    constexpr unsigned ways() const { return (registers.ebx() >> 22) + 1; }
    constexpr std::uint64_t sets() const { return std::uint64_t{registers.ecx()} + 1; }
    // Bytes, modulo 2^64.
    constexpr std::uint64_t size() const { return sets() * ways() * partitions() * line_size(); }
};

// The accessor of a feature.
#define TARVCORE_FLAG_ACCESSOR(name, gate, leaf, reg, bit, description)             \
    bool name() const {                                                             \
        constexpr unsigned word = cpu_flag_register_index(leaf, ECpuRegister::reg); \
        return flag_bit(word, bit);                                                 \
    }

// What the CPUID instruction answered when the object was made.
//
// All leaves are read at once: the basic and the extended ones, the caches of Intel processors, the
// topology and those of a hypervisor.  The accessors answer from what is stored; nothing here
// raises.  What a leaf would tell that the processor does not have is false or 0.  A processor that
// claims more leaves than 256 of a kind is believed for so many.
//
// An ordinary value: several threads may ask one at once.  Most of it is the same on all
// processors of a machine, but not apic_id() and what hangs on it; Cpu has them all.
//
//     const CpuInfo info;
//     if (info.avx2() && info.osxsave_supported()) log << info.brand_string();
//     log << TraceCpuidInfo(info);
class TARVCORE_API CpuInfo {
public:
    // The registers of a leaf.
    using RegSet = CpuidRegisters;

    // What hypervisor_interface_id() is where the interface is the one of the name "Hv#1".
    static const std::uint32_t HypervisorVendorIdHv1 = 0x31237648;
    // Vendor strings that are known.
    static const unsigned s_numSupportedBrands = 10;

    // Of the processor on which the thread runs.  It takes about a microsecond a leaf, several
    // where a hypervisor answers; there may be a hundred leaves.
    CpuInfo();
    explicit CpuInfo(const CpuidSource& source);

    // Whether the processor has a feature, for those who have no CpuInfo: looked up once for the
    // process, by the thread that asks first.
    [[nodiscard]] static bool get_option_flag(EOptionFlag flag);

    // Features: a `bool` each of the name in the table, such as `bool sse2() const`.  False on
    // processors of other vendors than the row's.  Those of leaf 7 (fsgsbase, bmi1, avx2 ...) are
    // false, too, where the extended leaves end before 0x80000007.  This is meant: the answers have
    // always been so, and programs count on the same path on the same machine.
    //
    // They say what the processor can, not what the operating system lets programs use.
    TARVCORE_CPU_OPTION_FLAGS(TARVCORE_FLAG_ACCESSOR)
    [[nodiscard]] bool has_option(EOptionFlag flag) const;

    // SYSENTER and SYSEXIT are there and work: of Intel's first processors with the flag, some do
    // not.
    bool is_fast_system_call_supported() const;
    // There are more logical processors than cores.
    bool is_hyperthreading_enabled() const;

    // Bits of a stored leaf; false where it is not stored.  Registers are 0 for EAX to 3 for EDX,
    // modulo 4.  Extended leaves count from 0x80000000: index 1 is leaf 0x80000001.  Subleaves
    // other than 0 are stored of leaf 0x0B, and on Intel processors of leaf 4.
    bool basic_bit_value(int leaf, int reg, int bit) const;
    bool extended_bit_value(int index, int reg, int bit) const;
    bool basic_subleaf_bit_value(int leaf, int subleaf, int reg, int bit) const;

    // -1 where there are none.  The extended one is an index as above.
    int cpuid_last_basic_level() const { return static_cast<int>(basic_.size()) - 1; }
    int cpuid_last_extended_level() const { return static_cast<int>(extended_.size()) - 1; }

    ECpuVendor vendor() const { return vendor_; }
    const std::string& vendor_id() const { return vendor_id_; }
    // The processor's own name for itself, without the blanks around it.  Early ones have none.
    const std::string& brand_string() const { return brand_string_; }
    // From the vendors' tables, by signature and brand id; empty for processors of other vendors
    // than Intel and AMD.
    const std::string& brand_id_name() const { return brand_id_name_; }
    // The design, as far as vendor, family and model tell it.
    ECpuFamily cpu_family() const { return family_; }
    // By the brand string; where it tells no brand, by brand index and brand id.
    ECpuBrand cpu_brand() const { return brand_; }

    // The signature and its parts.
    unsigned signature() const { return basic(1).eax(); }
    unsigned sig_stepping() const { return signature() & 0xF; }
    unsigned sig_model() const { return signature() >> 4 & 0xF; }
    unsigned sig_family() const { return signature() >> 8 & 0xF; }
    unsigned sig_processor_type() const { return signature() >> 12 & 3; }
    unsigned sig_extended_model() const { return signature() >> 16 & 0xF; }
    unsigned sig_extended_family() const { return signature() >> 20 & 0xFF; }
    unsigned intel_effective_family() const { return sig_family() + sig_extended_family(); }
    unsigned intel_effective_model() const { return (sig_extended_model() << 4) + sig_model(); }
    unsigned amd_effective_family() const {
        return sig_family() == 15 ? sig_family() + sig_extended_family() : sig_family();
    }
    // By the model alone, and a sum instead of a shift: these are meant, the numbers stand in
    // configurations.
    unsigned amd_effective_model() const {
        return sig_model() == 15 ? sig_extended_model() + 15 : sig_model();
    }
    // What some processors without a brand string have; 0 where there is none.
    unsigned brand_index() const { return basic(1).ebx() & 0xFF; }
    unsigned amd_extended_brand_id() const { return extended(1).ebx() & 0xFFFF; }

    // In units of 8 bytes.
    unsigned clflush_line_size() const { return basic(1).ebx() >> 8 & 0xFF; }
    // The second-level cache; 0 where the extended leaves do not tell it.  Sizes in bytes.
    unsigned cache_line_size() const { return extended(6).ecx() & 0xFF; }
    EL2Associativity L2_associativity() const {
        return static_cast<EL2Associativity>(extended(6).ecx() >> 12 & 0xF);
    }
    unsigned cache_size() const { return (extended(6).ecx() >> 16) * 1024; }
    // AMD only.
    unsigned lines_per_tag() const { return is_amd() ? extended(6).ecx() >> 8 & 0xF : 0; }
    // Intel only; the nearest one first.
    const std::vector<IntelCacheLevel>& cache_levels() const { return cache_levels_; }

    // 0 where the extended leaves do not tell them.
    unsigned num_physical_address_bits() const { return extended(8).eax() & 0xFF; }
    unsigned num_virtual_address_bits() const { return extended(8).eax() >> 8 & 0xFF; }

    // What MONITOR watches, in bytes.
    unsigned min_monitor_line_size() const { return basic(5).eax() & 0xFFFF; }
    unsigned max_monitor_line_size() const { return basic(5).ebx() & 0xFFFF; }

    // The lower eight bits of the number by which interrupts find the processor.
    unsigned apic_id() const { return hyperthreading_capable() ? basic(1).ebx() >> 24 : 0; }

    // Logical processors and cores of a package, as the leaves count them, each in its way: where
    // leaf 4 is what there is, logical_count() is the number as stored and core_count() one more.
    // On AMD processors both see sixteen cores at most where leaf 0x80000008 tells them.  This is
    // meant: the masks below are made to fit.  1 for other vendors.
    unsigned logical_count() const;
    unsigned core_count() const;
    unsigned amd_physical_core_count() const {
        return cpuid_last_extended_level() >= 8 ? (extended(8).ecx() & 0xF) + 1 : 0;
    }

    // An APIC id has from its top the numbers of package, core and thread: where they begin, in
    // bits, and what masks those below them away.
    std::uint8_t core_apic_id_shift() const;
    std::uint8_t package_apic_id_shift() const;
    std::uint8_t apic_id_core_mask() const;
    std::uint8_t apic_id_package_mask() const;

    // What the hypervisor says where there is one: the name of its vendor, and which interface it
    // has.
    const std::string& hypervisor_vendor_id() const { return hypervisor_vendor_id_; }
    std::uint32_t hypervisor_interface_id() const {
        return hypervisor_.size() >= 2 ? hypervisor_[1].eax() : 0;
    }

    // Leaves its arguments as they are on processors that do not tell their number.
    void get_processor_serial_number(unsigned int& signature, std::uint64_t& serial) const;

    // A text to be hashed by who wants to know a machine or a kind of machine again: vendor,
    // signature, brand string and features.  It is the same on all processors of one kind, and does
    // not change with what the operating system or the firmware switch on and off (XSAVE, the APIC,
    // the serial number).  With `with_serial_number` also the serial number, where there is one.
    std::string as_string_for_hash(bool with_serial_number) const;

    // The stored values, a line each.
    void dump_raw_cpuid(std::ostream& os) const;
    // What they mean, a line each; the features last.
    void dump_cpuid_info(std::ostream& os) const;

private:
    class Instruction;
    using FlagWords = std::array<std::uint32_t, std::size(cpu_flag_registers)>;

    static void cpuid(unsigned leaf, unsigned subleaf, unsigned& eax, unsigned& ebx, unsigned& ecx,
                      unsigned& edx);
    static bool has_cpuid();
    static bool is_386();
    static std::string regset_to_string(std::uint32_t leaf, const RegSet& registers);

    bool flag_bit(unsigned word, unsigned bit) const { return (flags_[word] >> bit & 1) != 0; }

    void populate_cpu_info(const CpuidSource& source);
    void populate_leaves(const CpuidSource& source);
    void populate_flags();
    void populate_lists(const CpuidSource& source);
    void populate_model();

    bool is_intel() const { return vendor_ == ECpuVendor::intel; }
    bool is_amd() const { return vendor_ == ECpuVendor::amd; }
    RegSet basic(unsigned leaf) const { return leaf < basic_.size() ? basic_[leaf] : RegSet(); }
    RegSet extended(unsigned index) const {
        return index < extended_.size() ? extended_[index] : RegSet();
    }
    // 0 where leaf 4 tells of no cache.
    unsigned cores_per_package() const {
        return cache_levels_.empty() ? 0 : cache_levels_[0].cores_per_package();
    }

    ECpuVendor vendor_ = ECpuVendor::unknown;
    std::string vendor_id_;
    std::string brand_string_;
    std::string brand_id_name_;
    std::vector<RegSet> basic_;       // leaves from 0 on
    std::vector<RegSet> extended_;    // leaves from 0x80000000 on
    std::vector<RegSet> topology_;    // subleaves of leaf 0x0B
    std::vector<RegSet> hypervisor_;  // leaves from 0x40000000 on
    std::vector<IntelCacheLevel> cache_levels_;
    std::string hypervisor_vendor_id_;
    ECpuFamily family_ = ECpuFamily::unknown;
    ECpuBrand brand_ = ECpuBrand::unknown;
    // The registers that have features, without what the vendor does not mean by them.
    FlagWords flags_ = {};
};

#undef TARVCORE_FLAG_ACCESSOR

// See dump_raw_cpuid of CpuInfo.
class TARVCORE_API TraceRawCpuid : public streamers::Streamable<TraceRawCpuid> {
public:
    // Keeps a reference.
    explicit TraceRawCpuid(const CpuInfo& info) : info_(info) {}

    void write_trace(std::ostream& os) const;

private:
    const CpuInfo& info_;
};

// See dump_cpuid_info of CpuInfo.
class TARVCORE_API TraceCpuidInfo : public streamers::Streamable<TraceCpuidInfo> {
public:
    // Keeps a reference.
    explicit TraceCpuidInfo(const CpuInfo& info) : info_(info) {}

    void write_trace(std::ostream& os) const;

private:
    const CpuInfo& info_;
};

}  // namespace tarvcore::hardware
