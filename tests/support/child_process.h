// Programs run by tests.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tarv_test {

struct Outcome {
    unsigned long status;
    std::string output;
    std::string errors;
};

struct ChildOptions {
    std::string input = {};
    bool has_input = true;     // else standard input cannot be read
    bool reads_output = true;  // else the pipe at standard output has no reader from the start
};

// Runs a program that stands in the folder of the test program, to its end.  Arguments arrive as
// they are given here.  Several threads may run programs at once.
Outcome run_program(const std::wstring& name, const std::vector<std::wstring>& arguments,
                    const ChildOptions& options = {});

}  // namespace tarv_test
