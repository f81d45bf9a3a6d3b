// What fuzzers began with and found, once more.  Each file is an input of the target after whose
// folder it is named.

#include "tests/fuzz/targets.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

namespace {

using tarv_fuzz::Target;

class Fuzz : public testing::TestWithParam<Target> {};

TEST_P(Fuzz, InputsThatAreKept) {
    unsigned count = 0;
    const std::filesystem::path folder = TEST_DATA_FOLDER "/fuzz";
    for (const auto& entry : std::filesystem::directory_iterator(folder / GetParam().name)) {
        std::ifstream file(entry.path(), std::ios::binary);
        ASSERT_TRUE(file.is_open()) << entry.path();
        const std::vector<char> bytes(std::istreambuf_iterator<char>(file), {});
        EXPECT_NO_THROW(
            GetParam().run({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}))
            << entry.path();
        ++count;
    }
    EXPECT_GT(count, 0u);
}

INSTANTIATE_TEST_SUITE_P(Targets, Fuzz, testing::ValuesIn(tarv_fuzz::targets),
                         [](const auto& target) { return std::string(target.param.name); });

}  // namespace
