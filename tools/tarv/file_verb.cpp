#include "tools/tarv/file_verb.h"

#include <CLI/CLI.hpp>

#include <utility>

#include "tarvcore/config.h"
#include "tarvcore/error_exception.h"
#include "tarvcore/transforms.h"

TARVCORE_SOURCE_FILE("$Id: //tools/tarv/file_verb.cpp#1 $");

namespace tarv {

using tarvcore::ErrorInfo;
using tarvcore::HexTransform;

void FileVerb::add_options(CLI::App& app) {
    app.add_option("--file", file_, "Take this file's bytes (- for standard input), raw");
    app.add_flag("--hex", hex_, "Bytes of arguments and lines are hexadecimal digits");
}

bool FileVerb::run(const Request& request, Output& output, Output& errors) {
    if (file_.empty()) return LineVerb::run(request, output, errors);
    if (!request.inputs.empty()) throw UsageError("--file is the input: give no other");
    if (hex_ || request.json || request.crlf) {
        throw UsageError("--file is raw: it goes without --hex, --json and --crlf");
    }
    ByteSource source(file_);
    try {
        convert_file(source, output);
        return true;
    } catch (const tarvcore::ErrorException& e) {
        if (e.matches("error.tarv.input") || e.matches("error.tarv.output")) throw;
        // In order, where both streams lead to one place.
        output.flush();
        errors.write(trace_text(*e.error()));
        return false;
    }
}

ErrorInfo::Ptr FileVerb::read_bytes(std::string_view field, std::string* bytes) const {
    if (hex_) return HexTransform::decode_nothrow(field, bytes);
    *bytes = field;
    return {};
}

std::string FileVerb::shown(std::string bytes) const {
    return hex_ ? HexTransform::encode(bytes) : std::move(bytes);
}

}  // namespace tarv
