// Texts of which only some is known.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string_view>

namespace tarv_test {

inline bool matches(std::string_view text, std::string_view pattern) {
    constexpr std::string_view any = "…";
    const auto gap = pattern.find(any);
    if (gap == pattern.npos) return pattern == text;
    if (text.substr(0, gap) != pattern.substr(0, gap)) return false;
    const std::string_view rest = pattern.substr(gap + any.size());
    const bool lines =
        (gap == 0 || text[gap - 1] == '\n') && (rest.empty() || rest.starts_with('\n'));
    const auto end = lines ? text.npos : text.find('\n', gap);
    for (auto i = gap; i <= std::min(end, text.size()); ++i) {
        if (matches(text.substr(i), rest)) return true;
    }
    return false;
}

// Whether a text is like its pattern, in which "…" stands for any text within a line, and on a line
// of its own for any number of lines.
inline testing::AssertionResult agrees(std::string_view text, std::string_view pattern) {
    if (matches(text, pattern)) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "expected:\n" << pattern << "\nbut it was:\n" << text;
}

}  // namespace tarv_test
