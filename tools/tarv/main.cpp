// tarv: the library's operations on the command line.
#include <exception>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "tarvcore/config.h"
#include "tarvcore/error_exception.h"
#include "tarvcore/to_string.h"
#include "tools/tarv/command_line.h"
#include "tools/tarv/output.h"

TARVCORE_SOURCE_FILE("$Id: //tools/tarv/main.cpp#1 $");

// Read by the compiler's start-up code: "*" in an argument stands for itself.
extern "C" int _dowildcard;
int _dowildcard = 0;

namespace {

using tarv::Output;
using tarv::Status;
using tarvcore::ErrorException;
using tarvcore::ErrorInfo;

Status run(int argc, wchar_t** argv, Output& output, Output& errors) {
    std::vector<std::string> words;
    for (int i = 1; i < argc; ++i) {
        try {
            words.push_back(tarvcore::to_string(std::wstring(argv[i])));
        } catch (const ErrorException&) {
            errors.write("tarv: argument " + std::to_string(i) + " is not valid Unicode text\n");
            return Status::usage;
        }
    }
    return tarv::run_command_line(words, output, errors);
}

// A failure of the tool's own work, as opposed to a bad input: the error and its causes on a line.
std::string line_about(const ErrorInfo& record) {
    std::string line = "tarv";
    for (const ErrorInfo* part = &record; part != nullptr; part = part->nested().get()) {
        line += ": " + part->expanded_message().as_string();
    }
    return tarv::on_one_line(line) + '\n';
}

// Runs a step; tells about what it raises.
template <class Step>
Status guarded(Output& errors, Step step) {
    try {
        return step();
    } catch (const ErrorException& e) {
        errors.write(line_about(*e.error()));
    } catch (const std::bad_alloc&) {
        errors.write("tarv: out of memory\n");
    } catch (const std::exception& e) {
        errors.write("tarv: " + std::string(e.what()) + '\n');
    }
    return Status::some_failed;
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
    Output output = Output::standard_output();
    Output errors = Output::standard_error();
    Status status = guarded(errors, [&] { return run(argc, argv, output, errors); });
    // What was answered before a failure is good.
    const Status end = guarded(errors, [&] {
        output.flush();
        return Status::good;
    });
    if (end != Status::good) status = end;
    try {
        errors.flush();
    } catch (const ErrorException&) {
        // There is nobody left to tell.
    }
    return static_cast<int>(status);
}
