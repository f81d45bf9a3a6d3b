#include "tarvcore/hardware/cpu_option_flags.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/hardware/cpu_option_flags.cpp#1 $");

namespace tarvcore::hardware {

std::span<const CpuOptionFlag> cpu_option_flags() {
    using Gate = CpuOptionFlag::Gate;
    static constexpr CpuOptionFlag table[] = {
#define ROW(name, gate, leaf, reg, bit, description) \
    {#name,                                          \
     Gate::gate,                                     \
     leaf,                                           \
     ECpuRegister::reg,                              \
     bit,                                            \
     description,                                    \
     cpu_flag_register_index(leaf, ECpuRegister::reg)},
        TARVCORE_CPU_OPTION_FLAGS(ROW)
#undef ROW
    };
    return table;
}

}  // namespace tarvcore::hardware
