// A fuzzer of one target.
#include "tests/fuzz/targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    tarv_fuzz::FUZZ_TARGET({data, size});
    return 0;
}
