// The features that a processor may have.
#pragma once

#include <cstdint>
#include <span>

#include "tarvcore/config.h"

// One row for each feature: its name, for whose processors it is told ("any", or the one vendor on
// whose processors the bit means this), the CPUID leaf, the register and the bit, and a description
// for readers.  The accessors of CpuInfo, its dumps and EOptionFlag are made of these rows.
//
// The bits of leaf 7 count only where extended leaves up to 0x80000007 are there: see CpuInfo.
// clang-format off
#define TARVCORE_CPU_OPTION_FLAGS(ROW) \
    ROW(floating_point, any, 1, edx, 0, "Floating point on chip") \
    ROW(virtual_mode_extensions, any, 1, edx, 1, "Virtual mode extensions") \
    ROW(debugging_extensions, any, 1, edx, 2, "Debugging extensions") \
    ROW(page_size_extension, any, 1, edx, 3, "Page size extensions") \
    ROW(timestamp_counter, any, 1, edx, 4, "Timestamp counter") \
    ROW(model_specific_registers, any, 1, edx, 5, "Model-specific registers") \
    ROW(physical_address_extensions, any, 1, edx, 6, "Physical address extensions") \
    ROW(machine_check_exception, any, 1, edx, 7, "Machine check exception") \
    ROW(compare_and_exchange_8_bytes, any, 1, edx, 8, "Compare and exchange 8 bytes") \
    ROW(apic_on_chip, any, 1, edx, 9, "Apic on chip") \
    ROW(fast_system_call, any, 1, edx, 11, "Fast system call (SYSENTER/SYSEXIT)") \
    ROW(memory_type_range_registers, any, 1, edx, 12, "Memory type range registers") \
    ROW(page_global_enable, any, 1, edx, 13, "Page global bit supported") \
    ROW(machine_check_architecture, any, 1, edx, 14, "Machine check architecture is supported") \
    ROW(conditional_move, any, 1, edx, 15, "Conditional move supported") \
    ROW(page_attribute_table, any, 1, edx, 16, "Page attribute table supported") \
    ROW(page_size_extension_36bit, any, 1, edx, 17, "Page size extension (36-bit)") \
    ROW(processor_serial_number, intel, 1, edx, 18, "Processor serial number supported") \
    ROW(clflush_supported, any, 1, edx, 19, "CLFLUSH instruction supported") \
    ROW(debug_store, intel, 1, edx, 21, "Debug store supported") \
    ROW(acpi, intel, 1, edx, 22, "ACPI supported") \
    ROW(mmx, any, 1, edx, 23, "MMX supported") \
    ROW(fast_floating_point_save_restore, any, 1, edx, 24, "Fast floating point save/restore supported") \
    ROW(sse, any, 1, edx, 25, "SSE supported") \
    ROW(sse2, any, 1, edx, 26, "SSE2 supported") \
    ROW(self_snoop, intel, 1, edx, 27, "Self snoop supported") \
    ROW(hyperthreading_capable, any, 1, edx, 28, "Hyperthreading capable") \
    ROW(thermal_monitor, intel, 1, edx, 29, "Thermal monitor supported") \
    ROW(emulated_on_itanium, intel, 1, edx, 30, "Emulated on Itanium") \
    ROW(pending_break_enable, any, 1, edx, 31, "Pending break enable supported") \
    ROW(sse3, any, 1, ecx, 0, "SSE3 supported") \
    ROW(pclmuldq, any, 1, ecx, 1, "PCLMULQDQ instruction supported") \
    ROW(debug_store_64bit, intel, 1, ecx, 2, "64-bit debug store supported") \
    ROW(monitor_mwait_supported, any, 1, ecx, 3, "MONITOR and MWAIT instructions supported") \
    ROW(cpl_qualified_debug_store, intel, 1, ecx, 4, "CPL qualified debug store supported") \
    ROW(virtual_machine_extensions, intel, 1, ecx, 5, "Virtual machine extensions (VMX) supported") \
    ROW(safer_mode_extensions, intel, 1, ecx, 6, "Safer mode extensions (SMX) supported") \
    ROW(enhanced_speedstep_technology, intel, 1, ecx, 7, "Enhanced SpeedStep technology supported") \
    ROW(thermal_monitor_2, intel, 1, ecx, 8, "Thermal monitor 2 supported") \
    ROW(ssse3, any, 1, ecx, 9, "SSSE3 supported") \
    ROW(context_id, intel, 1, ecx, 10, "L1 context id supported") \
    ROW(sdbg, intel, 1, ecx, 11, "Silicon debug interface supported") \
    ROW(fused_multiply_add, any, 1, ecx, 12, "Fused multiply-add (FMA3) supported") \
    ROW(compare_and_exchange_16_bytes, any, 1, ecx, 13, "Compare and exchange 16 bytes") \
    ROW(can_disable_task_priority_messages, intel, 1, ecx, 14, "Task priority messages can be disabled") \
    ROW(performance_capabilities_MSR, intel, 1, ecx, 15, "Performance capabilities MSR supported") \
    ROW(processor_context_identifiers, intel, 1, ecx, 17, "Processor context identifiers supported") \
    ROW(direct_cache_access, intel, 1, ecx, 18, "Direct cache access supported") \
    ROW(sse4_1, any, 1, ecx, 19, "SSE4.1 supported") \
    ROW(sse4_2, any, 1, ecx, 20, "SSE4.2 supported") \
    ROW(x2_apic_supported, intel, 1, ecx, 21, "x2APIC supported") \
    ROW(movbe_supported, intel, 1, ecx, 22, "MOVBE instruction supported") \
    ROW(popcnt_supported, any, 1, ecx, 23, "POPCNT instruction supported") \
    ROW(tsc_deadline, intel, 1, ecx, 24, "Timestamp counter deadline timer supported") \
    ROW(aes, any, 1, ecx, 25, "AES instructions supported") \
    ROW(xsave_xstor_supported, any, 1, ecx, 26, "XSAVE and XRSTOR instructions supported") \
    ROW(osxsave_supported, any, 1, ecx, 27, "XSAVE enabled by the operating system") \
    ROW(avx, any, 1, ecx, 28, "AVX supported") \
    ROW(f16c, amd, 1, ecx, 29, "Half-precision conversions (F16C) supported") \
    ROW(rdrand, intel, 1, ecx, 30, "RDRAND instruction supported") \
    ROW(hypervisor_present, any, 1, ecx, 31, "Hypervisor present") \
    ROW(fsgsbase, intel, 7, ebx, 0, "FS and GS base instructions supported") \
    ROW(ia32_tsc_adjust_msr, intel, 7, ebx, 1, "Timestamp counter adjust MSR supported") \
    ROW(bmi1, intel, 7, ebx, 3, "Bit manipulation instructions 1 supported") \
    ROW(hle, intel, 7, ebx, 4, "Hardware lock elision supported") \
    ROW(avx2, intel, 7, ebx, 5, "AVX2 supported") \
    ROW(smep, intel, 7, ebx, 7, "Supervisor mode execution prevention supported") \
    ROW(bmi2, intel, 7, ebx, 8, "Bit manipulation instructions 2 supported") \
    ROW(enhanced_MOVSB_STOSB, intel, 7, ebx, 9, "Enhanced MOVSB and STOSB supported") \
    ROW(invpcid, intel, 7, ebx, 10, "INVPCID instruction supported") \
    ROW(rtm, intel, 7, ebx, 11, "Restricted transactional memory supported") \
    ROW(platform_quality_of_service_monitoring, intel, 7, ebx, 12, "Platform quality of service monitoring supported") \
    ROW(fpu_cs_and_ds_deprecated, intel, 7, ebx, 13, "FPU CS and DS values deprecated") \
    ROW(platform_quality_of_service_enforcement, intel, 7, ebx, 15, "Platform quality of service enforcement supported") \
    ROW(syscall_sysret, any, 0x80000001, edx, 11, "SYSCALL and SYSRET instructions supported") \
    ROW(execution_disable_bit, any, 0x80000001, edx, 20, "Execution disable bit supported") \
    ROW(mmx_amd_extensions, amd, 0x80000001, edx, 22, "AMD extensions to MMX supported") \
    ROW(fast_fxsave_fxrestore, amd, 0x80000001, edx, 25, "Fast FXSAVE and FXRSTOR supported") \
    ROW(page_1gb, any, 0x80000001, edx, 26, "1 GB pages supported") \
    ROW(read_timestamp_counter_and_processor_id, any, 0x80000001, edx, 27, "RDTSCP instruction supported") \
    ROW(amd_3dnow_extensions, amd, 0x80000001, edx, 30, "AMD extensions to 3DNow! supported") \
    ROW(amd_3dnow, amd, 0x80000001, edx, 31, "3DNow! supported") \
    ROW(cmp_legacy, amd, 0x80000001, ecx, 1, "Core multi-processing legacy mode") \
    ROW(secure_virtual_machine, amd, 0x80000001, ecx, 2, "Secure virtual machine (SVM) supported") \
    ROW(extended_apic_space, amd, 0x80000001, ecx, 3, "Extended APIC space supported") \
    ROW(cr8_available, amd, 0x80000001, ecx, 4, "CR8 available in 32-bit mode") \
    ROW(advanced_bit_manipulation, any, 0x80000001, ecx, 5, "Advanced bit manipulation (LZCNT) supported") \
    ROW(sse4a, amd, 0x80000001, ecx, 6, "SSE4a supported") \
    ROW(misaligned_sse, amd, 0x80000001, ecx, 7, "Misaligned SSE mode supported") \
    ROW(amd_3dnow_prefetch, any, 0x80000001, ecx, 8, "PREFETCH and PREFETCHW instructions supported") \
    ROW(os_visible_workaround, amd, 0x80000001, ecx, 9, "OS visible workarounds supported") \
    ROW(instruction_based_sampling, amd, 0x80000001, ecx, 10, "Instruction based sampling supported") \
    ROW(xop, amd, 0x80000001, ecx, 11, "XOP instructions supported") \
    ROW(skinit_supported, amd, 0x80000001, ecx, 12, "SKINIT and STGI instructions supported") \
    ROW(watchdog_timer, amd, 0x80000001, ecx, 13, "Watchdog timer supported") \
    ROW(lightweight_profiling_support, amd, 0x80000001, ecx, 15, "Lightweight profiling supported") \
    ROW(fma4, amd, 0x80000001, ecx, 16, "Four-operand fused multiply-add (FMA4) supported") \
    ROW(tbm, amd, 0x80000001, ecx, 21, "Trailing bit manipulation supported") \
    ROW(cpuid_topology_extensions, amd, 0x80000001, ecx, 22, "CPUID topology extensions supported") \
    ROW(processor_performance_counter_extensions, amd, 0x80000001, ecx, 23, "Processor performance counter extensions supported") \
    ROW(nb_performance_counter_extensions, amd, 0x80000001, ecx, 24, "Northbridge performance counter extensions supported") \
    ROW(streaming_performance_monitor_architecture, amd, 0x80000001, ecx, 25, "Streaming performance monitor architecture supported") \
    ROW(data_access_breakpoint_extension, amd, 0x80000001, ecx, 26, "Data access breakpoint extension supported") \
    ROW(performance_timestamp_counter, amd, 0x80000001, ecx, 27, "Performance timestamp counter supported") \
    ROW(amd_power_temperature_sensor, amd, 0x80000007, edx, 0, "Temperature sensor") \
    ROW(amd_power_frequency_id_control, amd, 0x80000007, edx, 1, "Frequency id control") \
    ROW(amd_power_voltage_id_control, amd, 0x80000007, edx, 2, "Voltage id control") \
    ROW(amd_power_thermtrip, amd, 0x80000007, edx, 3, "Thermal trip") \
    ROW(amd_power_hardware_thermal_control, amd, 0x80000007, edx, 4, "Hardware thermal control") \
    ROW(amd_power_software_thermal_control, amd, 0x80000007, edx, 5, "Software thermal control") \
    ROW(amd_power_100_mhz_multiplier_control, amd, 0x80000007, edx, 6, "100 MHz multiplier control") \
    ROW(amd_power_hardware_pstate_control, amd, 0x80000007, edx, 7, "Hardware P-state control") \
    ROW(tsc_invariant, any, 0x80000007, edx, 8, "Timestamp counter is invariant") \
    ROW(em64t, any, 0x80000001, edx, 29, "64-bit mode (EM64T) supported") \
    ROW(lahf_sahf, any, 0x80000001, ecx, 0, "LAHF and SAHF instructions supported in 64-bit mode")
// clang-format on

namespace tarvcore::hardware {

// A feature, by the name of the accessor of CpuInfo that tells of it.
enum class EOptionFlag : unsigned {
#define TARVCORE_FLAG_NAME(name, gate, leaf, reg, bit, description) name,
    TARVCORE_CPU_OPTION_FLAGS(TARVCORE_FLAG_NAME)
#undef TARVCORE_FLAG_NAME
};

// The registers that CPUID answers in.
enum class ECpuRegister : unsigned { eax, ebx, ecx, edx };

// The registers that have features.
struct CpuFlagRegister {
    std::uint32_t leaf;  // of CPUID
    ECpuRegister reg;    // of its answer
};
// All of them.
inline constexpr CpuFlagRegister cpu_flag_registers[] = {
    {1, ECpuRegister::edx},          {1, ECpuRegister::ecx},
    {7, ECpuRegister::ebx},          {0x80000001, ECpuRegister::edx},
    {0x80000001, ECpuRegister::ecx}, {0x80000007, ECpuRegister::edx},
};
// The place of one of them; a register that is not there has none, and is no constant expression.
constexpr unsigned cpu_flag_register_index(std::uint32_t leaf, ECpuRegister reg) {
    unsigned i = 0;
    while (cpu_flag_registers[i].leaf != leaf || cpu_flag_registers[i].reg != reg)
        ++i;
    return i;
}

// A row of the table.
struct CpuOptionFlag {
    // For whose processors it is told.
    enum class Gate { any, intel, amd };

    const char* name;         // that of the accessor
    Gate gate;                // see Gate
    std::uint32_t leaf;       // of CPUID
    ECpuRegister reg;         // of its answer
    unsigned bit;             // 0 to 31
    const char* description;  // for readers
    unsigned register_index;  // into cpu_flag_registers
};

// All of them; the row of a flag stands at its number.
TARVCORE_API std::span<const CpuOptionFlag> cpu_option_flags();

}  // namespace tarvcore::hardware
