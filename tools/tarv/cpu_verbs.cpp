// What processors say about themselves.
#include <CLI/CLI.hpp>

#include <sstream>
#include <string>

#include "tarvcore/config.h"
#include "tarvcore/error_composer.h"
#include "tarvcore/hardware/cpu_info.h"
#include "tools/tarv/byte_source.h"
#include "tools/tarv/families.h"

TARVCORE_SOURCE_FILE("$Id: //tools/tarv/cpu_verbs.cpp#1 $");

namespace tarv {
namespace {

using tarvcore::hardware::CpuidRecording;
using tarvcore::hardware::CpuInfo;

CpuidRecording read_recording(const std::string& path) {
    ByteSource source(path);
    std::string text;
    char piece[1 << 14];
    while (const unsigned size = source.read(piece))
        text.append(piece, size);

    CpuidRecording recording;
    if (recording.add_text(text) == 0) {
        tarvcore::ErrorComposer("There are no CPUID values in \"{@path}\"")
            .param("path", path)
            .throw_error(tarvcore::ErrorCode("error.tarv.cpu.noValues", true),
                         TARVCORE_LOCATION("tarv::read_recording()"));
    }
    return recording;
}

void add_fields(const CpuInfo& info, Result& result) {
    const auto add_flag = [&result](const char* name, bool value) { result.truth(name, value); };
    const auto add_number = [&result](const char* name, auto value) {
        result.number(name, static_cast<long long>(value));
    };
    result.text("vendor_id", info.vendor_id());
    result.text("brand_string", info.brand_string());
    result.text("brand_id_name", info.brand_id_name());
    result.text("hypervisor_vendor_id", info.hypervisor_vendor_id());
    result.text("cpu_family", cpu_family_name(info.cpu_family()));
    result.text("cpu_brand", cpu_brand_name(info.cpu_brand()));
#define NUMBER(name) add_number(#name, info.name())
    NUMBER(vendor);
    NUMBER(cpuid_last_basic_level);
    NUMBER(cpuid_last_extended_level);
    NUMBER(signature);
    NUMBER(sig_stepping);
    NUMBER(sig_model);
    NUMBER(sig_family);
    NUMBER(sig_processor_type);
    NUMBER(sig_extended_model);
    NUMBER(sig_extended_family);
    NUMBER(intel_effective_family);
    NUMBER(intel_effective_model);
    NUMBER(amd_effective_family);
    NUMBER(amd_effective_model);
    NUMBER(brand_index);
    NUMBER(amd_extended_brand_id);
    NUMBER(clflush_line_size);
    NUMBER(apic_id);
    NUMBER(hypervisor_interface_id);
    NUMBER(cache_line_size);
    NUMBER(L2_associativity);
    NUMBER(cache_size);
    NUMBER(lines_per_tag);
    NUMBER(num_physical_address_bits);
    NUMBER(num_virtual_address_bits);
    NUMBER(min_monitor_line_size);
    NUMBER(max_monitor_line_size);
    NUMBER(logical_count);
    NUMBER(core_count);
    NUMBER(amd_physical_core_count);
    NUMBER(core_apic_id_shift);
    NUMBER(package_apic_id_shift);
    NUMBER(apic_id_core_mask);
    NUMBER(apic_id_package_mask);
#undef NUMBER
    add_flag("is_fast_system_call_supported", info.is_fast_system_call_supported());
    add_flag("is_hyperthreading_enabled", info.is_hyperthreading_enabled());
#define ROW(name, gate, leaf, reg, bit, description) add_flag(#name, info.name());
    TARVCORE_CPU_OPTION_FLAGS(ROW)
#undef ROW
}

class CpuVerb : public Verb {
public:
    CpuVerb()
        : Verb({"", "", "What the processor says about itself",
                "What the CPUID instruction answers on the processor that runs the tool, and what\n"
                "that means; or what it has answered elsewhere: a file of lines\n"
                "CPUID LEAF: EAX-EBX-ECX-EDX [SL SUBLEAF], in hexadecimal.\n",
                "$ tarv cpu --json\n"
                "\u2026\n"}) {}

    void add_options(CLI::App& app) override {
        app.add_flag("--raw", raw_, "The values as they are");
        app.add_option("--from", file_, "Values from a file; - is standard input")
            ->type_name("FILE");
    }

    bool run(const Request& request, Output& output, Output&) override {
        if (raw_ && request.json) throw UsageError("--raw and --json do not go together");
        Result result(output, request.json ? Result::Form::json : Result::Form::block);
        answer(result);
        result.finish();
        return true;
    }

private:
    void answer(Result& result) const {
        const CpuInfo info = file_.empty() ? CpuInfo() : CpuInfo(read_recording(file_));
        if (result.form() == Result::Form::json) return add_fields(info, result);
        std::ostringstream lines;
        raw_ ? info.dump_raw_cpuid(lines) : info.dump_cpuid_info(lines);
        result.block(lines.str());
    }

    std::string file_;
    bool raw_ = false;
};

}  // namespace

Verbs cpu_verbs() {
    Verbs verbs;
    verbs.push_back(std::make_unique<CpuVerb>());
    return verbs;
}

}  // namespace tarv
