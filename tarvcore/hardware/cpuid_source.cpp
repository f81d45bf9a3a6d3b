#include "tarvcore/hardware/cpuid_source.h"

#include <algorithm>
#include <charconv>

TARVCORE_SOURCE_FILE("$Id: //tarvcore/hardware/cpuid_source.cpp#1 $");

namespace tarvcore::hardware {
namespace {

// Takes what is expected from the front of a line.
class LineReader {
public:
    explicit LineReader(std::string_view line) : rest_(line) {}

    bool word(std::string_view expected) {
        if (!rest_.starts_with(expected)) return false;
        rest_.remove_prefix(expected.size());
        return true;
    }
    bool hex(unsigned digits, std::uint32_t* value) {
        if (rest_.size() < digits) return false;
        const char* const end = rest_.data() + digits;
        if (std::from_chars(rest_.data(), end, *value, 16).ptr != end) return false;
        rest_.remove_prefix(digits);
        return true;
    }

private:
    std::string_view rest_;
};

struct Line {
    std::uint32_t leaf = 0;
    std::uint32_t subleaf = 0;
    CpuidRegisters registers;
};

bool read_line(std::string_view text, Line* line) {
    LineReader reader(text);
    std::uint32_t* const values = line->registers.values;
    if (!reader.word("CPUID ") || !reader.hex(8, &line->leaf) || !reader.word(": ") ||
        !reader.hex(8, &values[0]) || !reader.word("-") || !reader.hex(8, &values[1]) ||
        !reader.word("-") || !reader.hex(8, &values[2]) || !reader.word("-") ||
        !reader.hex(8, &values[3])) {
        return false;
    }
    return !reader.word(" [SL ") || reader.hex(2, &line->subleaf);
}

}  // namespace

CpuidSource::~CpuidSource() = default;

void CpuidRecording::add(std::uint32_t leaf, std::uint32_t subleaf,
                         const CpuidRegisters& registers) {
    leaves_.try_emplace({leaf, subleaf}, registers);
}

unsigned CpuidRecording::add_text(std::string_view text) {
    unsigned count = 0;
    while (!text.empty()) {
        const auto length = std::min(text.find('\n'), text.size() - 1) + 1;
        Line line;
        if (read_line(text.substr(0, length), &line)) {
            if (count != 0 && line.leaf == 0) break;
            add(line.leaf, line.subleaf, line.registers);
            ++count;
        }
        text.remove_prefix(length);
    }
    return count;
}

bool CpuidRecording::has_cpuid() const {
    return !leaves_.empty();
}

CpuidRegisters CpuidRecording::read(std::uint32_t leaf, std::uint32_t subleaf) const {
    const auto found = leaves_.find({leaf, subleaf});
    return found == leaves_.end() ? CpuidRegisters() : found->second;
}

}  // namespace tarvcore::hardware
