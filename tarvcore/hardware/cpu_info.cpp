#include "tarvcore/hardware/cpu_info.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "tarvcore/impl/cpu_model_tables.h"
//
#include <cpuid.h>
#include <x86intrin.h>

TARVCORE_SOURCE_FILE("$Id: //tarvcore/hardware/cpu_info.cpp#1 $");

namespace tarvcore::hardware {
namespace {

constexpr std::uint32_t extended_base = 0x80000000;
constexpr std::uint32_t hypervisor_base = 0x40000000;
constexpr unsigned cache_leaf = 4;
constexpr unsigned topology_leaf = 0x0B;

// A number of leaves that is read from a processor may be anything.
constexpr std::uint32_t most_leaves = 256;
constexpr unsigned most_subleaves = 16;

constexpr unsigned thread_level = 1;
constexpr unsigned core_level = 2;

constexpr const char* vendor_strings[] = {
    "GenuineIntel", "AuthenticAMD", "UMC UMC UMC ", "CyrixInstead", "NexGenDriven",
    "CentaurHauls", "RiseRiseRise", "Sis Sis Sis ", "GenuineTMx86", "Geode by NSC",
};
static_assert(std::size(vendor_strings) == CpuInfo::s_numSupportedBrands);
static_assert(static_cast<unsigned>(ECpuVendor::unknown) == CpuInfo::s_numSupportedBrands);

unsigned level_type(const CpuidRegisters& registers) {
    return registers.ecx() >> 8 & 0xFF;
}

unsigned processors_at(const CpuidRegisters& registers) {
    return registers.ebx() & 0xFFFF;
}

unsigned shift_to_next(const CpuidRegisters& registers) {
    return registers.eax() & 0xF;
}

// How often a number can be halved until it is 1.
unsigned halvings(unsigned number) {
    unsigned count = 0;
    for (; number > 1; number /= 2)
        ++count;
    return count;
}

void append_bytes(std::string& text, std::initializer_list<std::uint32_t> registers) {
    for (const std::uint32_t value : registers) {
        for (unsigned shift = 0; shift < 32; shift += 8)
            text += static_cast<char>(value >> shift & 0xFF);
    }
}

void cut_at_zero(std::string& text) {
    text.resize(std::min(text.find('\0'), text.size()));
}

std::string as_text(std::initializer_list<std::uint32_t> registers) {
    std::string text;
    append_bytes(text, registers);
    cut_at_zero(text);
    return text;
}

// The leaves that follow one whose registers are known.
void read_leaves(const CpuidSource& source, std::uint32_t base, std::uint32_t last,
                 const CpuidRegisters& first, std::vector<CpuidRegisters>& leaves) {
    const std::uint32_t count = std::min(last - base, most_leaves - 1) + 1;
    leaves.reserve(count);
    leaves.push_back(first);
    while (leaves.size() < count)
        leaves.push_back(source.read(base + leaves.size(), 0));
}

bool changes_flag(unsigned flag) {
    const unsigned before = __readeflags();
    __writeeflags(before ^ flag);
    const unsigned after = __readeflags();
    __writeeflags(before);
    return ((before ^ after) & flag) != 0;
}

}  // namespace

// The processor itself.
class CpuInfo::Instruction : public CpuidSource {
public:
    bool has_cpuid() const override { return CpuInfo::has_cpuid(); }
    CpuidRegisters read(std::uint32_t leaf, std::uint32_t subleaf) const override {
        CpuidRegisters registers;
        auto& [eax, ebx, ecx, edx] = registers.values;
        cpuid(leaf, subleaf, eax, ebx, ecx, edx);
        return registers;
    }
};

const std::uint32_t CpuInfo::HypervisorVendorIdHv1;
const unsigned CpuInfo::s_numSupportedBrands;

void CpuInfo::cpuid(unsigned leaf, unsigned subleaf, unsigned& eax, unsigned& ebx, unsigned& ecx,
                    unsigned& edx) {
    __cpuid_count(leaf, subleaf, eax, ebx, ecx, edx);
}

// The flag that switches alignment checks on came with the 486.
bool CpuInfo::is_386() {
    constexpr unsigned alignment_check = 1 << 18;
    return !changes_flag(alignment_check);
}

bool CpuInfo::has_cpuid() {
    constexpr unsigned identification = 1 << 21;
    return !is_386() && changes_flag(identification);
}

CpuInfo::CpuInfo() {
    populate_cpu_info(Instruction());
}

CpuInfo::CpuInfo(const CpuidSource& source) {
    populate_cpu_info(source);
}

bool CpuInfo::get_option_flag(EOptionFlag flag) {
    static const FlagWords flags = CpuInfo().flags_;
    const CpuOptionFlag& row = cpu_option_flags()[static_cast<unsigned>(flag)];
    return (flags[row.register_index] >> row.bit & 1) != 0;
}

bool CpuInfo::has_option(EOptionFlag flag) const {
    const CpuOptionFlag& row = cpu_option_flags()[static_cast<unsigned>(flag)];
    return flag_bit(row.register_index, row.bit);
}

void CpuInfo::populate_cpu_info(const CpuidSource& source) {
    if (!source.has_cpuid()) return;
    populate_leaves(source);
    populate_flags();
    populate_lists(source);
    populate_model();
}

void CpuInfo::populate_leaves(const CpuidSource& source) {
    const RegSet first = source.read(0, 0);
    read_leaves(source, 0, first.eax(), first, basic_);
    vendor_id_ = as_text({first.ebx(), first.edx(), first.ecx()});
    vendor_ = static_cast<ECpuVendor>(std::ranges::find(vendor_strings, vendor_id_) -
                                      std::begin(vendor_strings));

    // Processors without extended leaves answer something else.
    const RegSet first_extended = source.read(extended_base, 0);
    if (first_extended.eax() >= extended_base) {
        read_leaves(source, extended_base, first_extended.eax(), first_extended, extended_);
    }
}

void CpuInfo::populate_flags() {
    for (unsigned word = 0; word < flags_.size(); ++word) {
        const auto [leaf, reg] = cpu_flag_registers[word];
        std::uint32_t known = 0;
        for (const CpuOptionFlag& row : cpu_option_flags()) {
            using Gate = CpuOptionFlag::Gate;
            const bool is_meant = row.gate == Gate::any ||
                                  (row.gate == Gate::intel && is_intel()) ||
                                  (row.gate == Gate::amd && is_amd());
            if (is_meant && row.register_index == word) known |= 1u << row.bit;
        }
        const bool is_told = leaf != 7 || cpuid_last_extended_level() >= 7;
        const RegSet registers =
            leaf < extended_base ? basic(leaf) : extended(leaf - extended_base);
        flags_[word] = is_told ? registers.values[static_cast<unsigned>(reg)] & known : 0;
    }
}

// Those whose length no leaf tells, or only one of their own.
void CpuInfo::populate_lists(const CpuidSource& source) {
    if (hypervisor_present()) {
        const RegSet first_of_hypervisor = source.read(hypervisor_base, 0);
        // Hypervisors that say 0 have the leaf of their features all the same.
        const std::uint32_t last =
            first_of_hypervisor.eax() == 0 ? hypervisor_base + 1 : first_of_hypervisor.eax();
        read_leaves(source, hypervisor_base, std::max(last, hypervisor_base), first_of_hypervisor,
                    hypervisor_);
        hypervisor_vendor_id_ = as_text(
            {first_of_hypervisor.ebx(), first_of_hypervisor.ecx(), first_of_hypervisor.edx()});
    }

    if (basic_.size() > topology_leaf) {
        RegSet level = basic_[topology_leaf];
        while (level_type(level) != 0 && topology_.size() < most_subleaves) {
            topology_.push_back(level);
            level = source.read(topology_leaf, topology_.size());
        }
    }
    if (is_intel() && basic_.size() > cache_leaf) {
        IntelCacheLevel cache{basic_[cache_leaf]};
        while (cache.type() != IntelCacheLevel::Type::none &&
               cache_levels_.size() < most_subleaves) {
            cache_levels_.push_back(cache);
            cache.registers = source.read(cache_leaf, cache_levels_.size());
        }
    }
}

void CpuInfo::populate_model() {
    std::string name;
    for (unsigned index = 2; index <= 4; ++index) {
        const RegSet registers = extended(index);
        append_bytes(name, {registers.eax(), registers.ebx(), registers.ecx(), registers.edx()});
    }
    cut_at_zero(name);
    const auto begin = std::min(name.find_first_not_of(' '), name.size());
    brand_string_ = name.substr(begin, name.find_last_not_of(' ') + 1 - begin);

    impl::CpuModel model = impl::find_cpu_model(
        {vendor_, signature(), brand_index(), amd_extended_brand_id(), brand_string_});
    brand_id_name_ = std::move(model.description);
    family_ = model.family;
    brand_ = model.brand;
}

bool CpuInfo::is_fast_system_call_supported() const {
    // Without the bits that are of no field.  The type counts, so that upgrade processors pass;
    // this is meant.
    constexpr std::uint32_t signature_mask = 0x0FFF3FFF;
    constexpr std::uint32_t first_that_works = 0x633;
    return fast_system_call() &&
           (!is_intel() || (signature() & signature_mask) >= first_that_works);
}

bool CpuInfo::is_hyperthreading_enabled() const {
    return hyperthreading_capable() && logical_count() > core_count();
}

namespace {

bool bit_of(const CpuidRegisters& registers, int reg, int bit) {
    return bit >= 0 && bit < 32 && (registers.values[reg & 3] >> bit & 1) != 0;
}

// Also of a negative number, which then is larger than any there is.
unsigned index_of(int number) {
    return static_cast<unsigned>(number);
}

}  // namespace

bool CpuInfo::basic_bit_value(int leaf, int reg, int bit) const {
    return bit_of(basic(index_of(leaf)), reg, bit);
}

bool CpuInfo::extended_bit_value(int index, int reg, int bit) const {
    return bit_of(extended(index_of(index)), reg, bit);
}

bool CpuInfo::basic_subleaf_bit_value(int leaf, int subleaf, int reg, int bit) const {
    if (subleaf == 0) return basic_bit_value(leaf, reg, bit);
    const unsigned i = index_of(subleaf);
    if (leaf == topology_leaf && i < topology_.size()) return bit_of(topology_[i], reg, bit);
    if (leaf == cache_leaf && i < cache_levels_.size()) {
        return bit_of(cache_levels_[i].registers, reg, bit);
    }
    return false;
}

unsigned CpuInfo::logical_count() const {
    const unsigned count_of_leaf_1 = basic(1).ebx() >> 16 & 0xFF;
    if (cpuid_last_basic_level() < 1) return 1;
    if (is_intel()) {
        const auto core = std::ranges::find(topology_, core_level, level_type);
        if (core != topology_.end()) return processors_at(*core);
        if (hyperthreading_capable()) return count_of_leaf_1;
        return cpuid_last_basic_level() < static_cast<int>(cache_leaf) ? 1 : cores_per_package();
    }
    if (is_amd()) {
        // Where the extended leaves end in between, what the last one would tell is 0.
        const unsigned cores = cpuid_last_extended_level() >= 4 ? (extended(8).ecx() & 0xF) + 1 : 1;
        return hyperthreading_capable() && !cmp_legacy() ? cores * count_of_leaf_1 : cores;
    }
    return 1;
}

unsigned CpuInfo::core_count() const {
    if (is_intel()) {
        if (topology_.size() >= 2) {
            unsigned of_cores = 0;
            unsigned of_threads = 0;
            for (const RegSet& level : topology_) {
                if (level_type(level) == core_level) of_cores = processors_at(level);
                if (level_type(level) == thread_level) of_threads = processors_at(level);
            }
            if (of_cores >= 1 && of_threads >= 1) return of_cores / of_threads;
        }
        const bool has_cache_leaf = cpuid_last_basic_level() >= static_cast<int>(cache_leaf);
        return has_cache_leaf ? cores_per_package() + 1 : 1;
    }
    return is_amd() && cpuid_last_extended_level() >= 8 ? amd_physical_core_count() : 1;
}

std::uint8_t CpuInfo::core_apic_id_shift() const {
    if (!is_intel()) return 0;
    if (!topology_.empty()) return static_cast<std::uint8_t>(shift_to_next(topology_[0]));
    // Without the leaf of the topology there is one core at least.
    return static_cast<std::uint8_t>(halvings(logical_count() / core_count()));
}

std::uint8_t CpuInfo::package_apic_id_shift() const {
    if (!is_intel() && !is_amd()) return 0;
    if (is_intel() && topology_.size() >= 2) {
        return static_cast<std::uint8_t>(shift_to_next(topology_[1]));
    }
    const unsigned amd_shift = is_amd() ? extended(8).ecx() >> 12 & 0xF : 0;
    if (amd_shift != 0) return static_cast<std::uint8_t>(amd_shift);
    return static_cast<std::uint8_t>(core_apic_id_shift() + halvings(core_count() & 0xFF));
}

std::uint8_t CpuInfo::apic_id_core_mask() const {
    return static_cast<std::uint8_t>(0xFFu << core_apic_id_shift());
}

std::uint8_t CpuInfo::apic_id_package_mask() const {
    return static_cast<std::uint8_t>(0xFFu << package_apic_id_shift());
}

void CpuInfo::get_processor_serial_number(unsigned int& signature, std::uint64_t& serial) const {
    if (!processor_serial_number()) return;
    signature = this->signature();
    serial = std::uint64_t{basic(3).edx()} << 32 | basic(3).ecx();
}

}  // namespace tarvcore::hardware
