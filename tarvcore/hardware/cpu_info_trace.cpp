#include <ostream>
#include <string_view>

#include "tarvcore/hardware/cpu_info.h"
#include "tarvcore/impl/stream_text.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/hardware/cpu_info_trace.cpp#1 $");

namespace tarvcore::hardware {
namespace {

using streamers::Hex;

constexpr std::uint32_t extended_base = 0x80000000;
constexpr std::uint32_t hypervisor_base = 0x40000000;
constexpr std::uint32_t topology_leaf = 0x0B;

std::string hex(std::uint32_t value) {
    return impl::stream_text(Hex(value, true));
}

// With the signature, as 96 bits; empty where there is none.
std::string serial_number_text(const CpuInfo& info) {
    if (!info.processor_serial_number()) return {};
    unsigned signature = 0;
    std::uint64_t serial = 0;
    info.get_processor_serial_number(signature, serial);
    return hex(signature) + impl::stream_text(Hex(serial, true)).substr(2);
}

// Puts labels and values behind each other, whatever the stream's flags and locale are.
class Text {
public:
    Text& add(std::string_view label, std::string_view value) {
        text_ += label;
        text_ += value;
        return *this;
    }
    Text& add(std::string_view label, std::uint64_t value) {
        return add(label, std::to_string(value));
    }
    Text& add(std::string_view label, int value) { return add(label, std::to_string(value)); }
    Text& add(std::string_view label, unsigned value) { return add(label, std::uint64_t{value}); }
    Text& add_hex(std::string_view label, std::uint32_t value) { return add(label, hex(value)); }
    Text& end_line() { return add("\n", ""); }

    void write_to(std::ostream& os) const {
        os.write(text_.data(), static_cast<std::streamsize>(text_.size()));
    }

private:
    std::string text_;
};

}  // namespace

std::string CpuInfo::regset_to_string(std::uint32_t leaf, const RegSet& registers) {
    return "Leaf=" + hex(leaf) + " EAX=" + hex(registers.eax()) + " EBX=" + hex(registers.ebx()) +
           " ECX=" + hex(registers.ecx()) + " EDX=" + hex(registers.edx()) + '\n';
}

void CpuInfo::dump_raw_cpuid(std::ostream& os) const {
    Text text;
    const auto add_leaves = [&text](std::uint32_t base, const std::vector<RegSet>& leaves) {
        for (const RegSet& registers : leaves)
            text.add("", regset_to_string(base++, registers));
    };
    // Programs that read the dump know the first label by its spelling.
    text.add("Famliy=", sig_family())
        .add(" brandString='", brand_string_)
        .add("' max basic leaf=", cpuid_last_basic_level())
        .add(" max extended leaf=", cpuid_last_extended_level())
        .end_line();
    add_leaves(0, basic_);
    add_leaves(extended_base, extended_);
    text.add("Processor Topology\n", "");
    for (const RegSet& level : topology_)
        text.add("", regset_to_string(topology_leaf, level));
    if (!hypervisor_.empty()) text.add("Hypervisor CPUID\n", "");
    add_leaves(hypervisor_base, hypervisor_);
    text.write_to(os);
}

void CpuInfo::dump_cpuid_info(std::ostream& os) const {
    constexpr unsigned bytes_per_flush_unit = 8;
    Text text;
    text.add("Vendor Id=", vendor_id_).end_line();
    text.add_hex("Signature=", signature())
        .add(" ExFamily=", sig_extended_family())
        .add(" ExModel=", sig_extended_model())
        .add(" Type=", sig_processor_type())
        .add(" Family=", sig_family())
        .add(" Model=", sig_model())
        .add(" Stepping=", sig_stepping())
        .end_line();
    if (is_intel()) {
        text.add("Intel extended Family=", intel_effective_family())
            .add(" and Model=", intel_effective_model())
            .end_line();
    }
    if (is_amd()) {
        text.add("AMD extended Family=", amd_effective_family())
            .add(" and Model=", amd_effective_model())
            .end_line();
        text.add_hex("AMD Extended Brand ID=", amd_extended_brand_id()).end_line();
        text.add("AMD Physical Core Count=", amd_physical_core_count()).end_line();
        text.add("AMD lines per tag=", lines_per_tag()).end_line();
    }
    text.add("Brand=", brand_id_name_).end_line();
    text.add("Family=", cpu_family_name(family_)).end_line();
    text.add("Last Basic Leaf=", cpuid_last_basic_level()).end_line();
    text.add("Last Extended Leaf=", cpuid_last_extended_level()).end_line();
    text.add("Logical count=", logical_count()).add(" Core Count=", core_count()).end_line();
    text.add("Hyperthreading is", is_hyperthreading_enabled() ? "" : " not").add(" enabled\n", "");
    text.add("APIC ID=", apic_id()).end_line();
    text.add("Logical CPUs=", basic(1).ebx() >> 16 & 0xFF).end_line();
    text.add("APIC Package Mask=", impl::stream_text(Hex(apic_id_package_mask(), true)))
        .add("\n APIC Core Mask=", impl::stream_text(Hex(apic_id_core_mask(), true)))
        .end_line();
    text.add("APIC Package Shift=", unsigned{package_apic_id_shift()})
        .add(" APIC Core Shift=", unsigned{core_apic_id_shift()})
        .end_line();
    text.add("Brand Index=", brand_index()).end_line();
    text.add("Cache Line Flush Size=", clflush_line_size() * bytes_per_flush_unit)
        .add(" bytes\n", "");
    text.add("Processor serial number=", serial_number_text(*this)).end_line();
    text.add("Min monitor line size=", min_monitor_line_size()).end_line();
    text.add("Max monitor line size=", max_monitor_line_size()).end_line();
    text.add("Brand string='", brand_string_).add("'\n", "");
    text.add("Cache line size=", cache_line_size()).end_line();
    text.add("L2 associativity=", static_cast<unsigned>(L2_associativity())).end_line();
    text.add("L2 Cache size=", cache_size()).end_line();
    text.add("Physical address bits=", num_physical_address_bits()).end_line();
    text.add("Virtual address bits=", num_virtual_address_bits()).end_line();
    for (const CpuOptionFlag& row : cpu_option_flags()) {
        const bool is_set = flag_bit(row.register_index, row.bit);
        text.add(row.description, is_set ? ": Yes" : ": No").end_line();
    }
    text.write_to(os);
}

std::string CpuInfo::as_string_for_hash(bool with_serial_number) const {
    // What the operating system and the firmware switch.
    constexpr EOptionFlag switched[] = {EOptionFlag::apic_on_chip, EOptionFlag::osxsave_supported,
                                        EOptionFlag::processor_serial_number};
    auto flags = flags_;
    for (const EOptionFlag flag : switched) {
        const CpuOptionFlag& row = cpu_option_flags()[static_cast<unsigned>(flag)];
        flags[row.register_index] &= ~(1u << row.bit);
    }

    std::string text = vendor_id_ + '|' + hex(signature()) + '|' + brand_string_;
    for (const std::uint32_t word : flags)
        text += '|' + hex(word);
    if (with_serial_number) text += '|' + serial_number_text(*this);
    return text;
}

void TraceRawCpuid::write_trace(std::ostream& os) const {
    info_.dump_raw_cpuid(os);
}

void TraceCpuidInfo::write_trace(std::ostream& os) const {
    info_.dump_cpuid_info(os);
}

}  // namespace tarvcore::hardware
