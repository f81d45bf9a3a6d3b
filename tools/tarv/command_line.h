// From the words of the command line to a verb at work.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tools/tarv/output.h"
#include "tools/tarv/verb.h"

namespace tarv {

// The tool's exit statuses.
enum class Status {
    good = 0,
    some_failed = 1,  // an input, or a stream
    usage = 2,
};

// Runs the command line (without the program's name), help and complaints about it included.
Status run_command_line(const std::vector<std::string>& words, Output& output, Output& errors);

}  // namespace tarv
